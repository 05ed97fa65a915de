// Every method of XmlFile against the function below it, on one document.
#include "jobs.h"
#include "peers.h"

#include <kalv/XmlFile.h>

namespace bench {

namespace {

constexpr const char* function = "its function";

/// A view of the object's own document, for the calls of the procedural interface.
class Calls {
public:
    explicit Calls(long fd) : fd_(fd) {}

    template <class Function, class... Arguments>
    long call(Function called, Arguments... arguments)
    {
        called(&fd_, arguments..., &status_);
        expect(status_ == KH_OK);
        return 0;
    }
    template <class Value, class Function, class... Arguments>
    Value value(Function called, Arguments... arguments)
    {
        Value result{};
        call(called, arguments..., &result);
        return result;
    }
    template <class Function, class... Arguments>
    std::string_view text(Function called, Arguments... arguments)
    {
        text_.reset(value<char*>(called, arguments...));
        return text_.get();
    }
    template <class Entry, class Function>
    Array<Entry> array(Function called, const char* name)
    {
        return Array<Entry>(called, &fd_, name);
    }
    long* fd() noexcept { return &fd_; }
    long status() const noexcept { return status_; }

private:
    long fd_;
    long status_ = KH_OK;
    Text text_;
};

/// The methods that read, on the items.
void compare_reads(Comparison& comparison, const File& file)
{
    KALV::XmlFile object(file.path);
    Calls calls(object.getId());
    const std::string path = "/Root/List/Item[2]/Value", name_path = "/Root/List/Item[2]/Name",
                      real_path = "/Root/List/Item[2]/Real", item = "Item", id = "id", value = "Value",
                      real = "Real", name = "Name", all_values = "/Root/List/Item[*]/Value",
                      all_reals = "/Root/List/Item[*]/Real", all_names = "/Root/List/Item[*]/Name";
    const auto add = [&](const char* method_name, auto method, auto procedural) {
        comparison.add({std::string("XmlFile::") + method_name,
                        file.size,
                        {repeated(library, method), repeated(function, procedural)},
                        {{function, 1.05}}});
    };
    const auto vector_of = [](auto example, auto read) {
        return [read] {
            std::vector<decltype(example)> values;
            read(values);
            return values;
        };
    };

    add(
        "getPathValueAsInt", [&] { return object.getPathValueAsInt(path); },
        [&] { return calls.value<long>(kh_tree_path_read_integer_node_value, path.c_str()); });
    add(
        "getPathValueAsReal", [&] { return object.getPathValueAsReal(real_path); },
        [&] { return calls.value<double>(kh_tree_path_read_real_node_value, real_path.c_str()); });
    add(
        "getPathValueAsString", [&] { return object.getPathValueAsString(name_path); },
        [&] { return calls.text(kh_tree_path_read_string_node_value, name_path.c_str()); });
    add(
        "toPath", [&] { return object.toPath(path); },
        [&] { return calls.call(kh_tree_go_to_path_node, path.c_str()); });
    add(
        "root", [&] { return object.root(); }, [&] { return calls.call(kh_tree_rewind); });
    add(
        "root, next", [&] { return object.root() + object.next(); },
        [&] { return calls.call(kh_tree_rewind) + calls.call(kh_tree_go_to_next_element_node); });
    add(
        "root, toElement", [&] { return object.root() + object.toElement(name); },
        [&] { return calls.call(kh_tree_rewind) + calls.call(kh_tree_go_to_element_node, name.c_str()); });
    add(
        "root, getElementValueAsInt",
        [&] {
            object.root();
            return object.getElementValueAsInt(value);
        },
        [&] {
            calls.call(kh_tree_rewind);
            return calls.value<long>(kh_tree_read_integer_element_value, value.c_str());
        });
    add(
        "root, getElementValueAsReal",
        [&] {
            object.root();
            return object.getElementValueAsReal(real);
        },
        [&] {
            calls.call(kh_tree_rewind);
            return calls.value<double>(kh_tree_read_real_element_value, real.c_str());
        });
    add(
        "root, getElementValueAsString",
        [&] {
            object.root();
            return object.getElementValueAsString(name);
        },
        [&] {
            calls.call(kh_tree_rewind);
            return calls.text(kh_tree_read_string_element_value, name.c_str());
        });
    object.toPath("/Root/List/Item[2]"); // where the cursor stays in what follows
    add(
        "getAttributeValueAsInt", [&] { return object.getAttributeValueAsInt(item, id); },
        [&] { return calls.value<long>(kh_tree_read_integer_attribute, item.c_str(), id.c_str()); });
    add(
        "getAttributeValueAsReal", [&] { return object.getAttributeValueAsReal(item, id); },
        [&] { return calls.value<double>(kh_tree_read_real_attribute, item.c_str(), id.c_str()); });
    add(
        "getAttributeValueAsString", [&] { return object.getAttributeValueAsString(item, id); },
        [&] { return calls.text(kh_tree_read_string_attribute, item.c_str(), id.c_str()); });
    add(
        "currentElementName", [&] { return object.currentElementName(); },
        [&] { return calls.text(kh_tree_get_current_element_name); });
    add(
        "currentPathName", [&] { return object.currentPathName(); },
        [&] {
            char text[64] = "";
            calls.call(kh_tree_get_path, static_cast<char*>(text));
            return std::string(text);
        });

    add("getPathArrayAsInt",
        vector_of(0L, [&](auto& values) { object.getPathArrayAsInt(all_values, values); }),
        [&] { return calls.array<long>(kh_tree_path_read_integer_node_array, all_values.c_str()); });
    add("getPathArrayAsReal",
        vector_of(0.0, [&](auto& values) { object.getPathArrayAsReal(all_reals, values); }),
        [&] { return calls.array<double>(kh_tree_path_read_real_node_array, all_reals.c_str()); });
    add("getPathArrayAsString",
        vector_of(std::string(), [&](auto& values) { object.getPathArrayAsString(all_names, values); }),
        [&] { return calls.array<char*>(kh_tree_path_read_string_node_array, all_names.c_str()); });
    add("getElementArrayAsInt",
        vector_of(0L, [&](auto& values) { object.getElementArrayAsInt(value, values); }),
        [&] { return calls.array<long>(kh_tree_read_integer_element_array, value.c_str()); });
    add("getElementArrayAsReal",
        vector_of(0.0, [&](auto& values) { object.getElementArrayAsReal(real, values); }),
        [&] { return calls.array<double>(kh_tree_read_real_element_array, real.c_str()); });
    add("getElementArrayAsString",
        vector_of(std::string(), [&](auto& values) { object.getElementArrayAsString(name, values); }),
        [&] { return calls.array<char*>(kh_tree_read_string_element_array, name.c_str()); });
    add(
        "findValueInPath", [&] { return object.findValueInPath(all_names, "Item 500"); },
        [&] {
            char found[64] = "";
            calls.call(kh_tree_find_string_value_path, all_names.c_str(), "Item 500",
                       static_cast<char*>(found));
            return std::string(found);
        });
    add(
        "root, findValueInElement",
        [&] {
            object.root();
            return object.findValueInElement(name, "Item 500");
        },
        [&] {
            char found[64] = "";
            calls.call(kh_tree_rewind);
            calls.call(kh_tree_find_string_value_element, name.c_str(), "Item 500",
                       static_cast<char*>(found));
            return std::string(found);
        });
    add(
        "read, clean",
        [&] {
            KALV::XmlFile other;
            other.read(file.path);
            return other.clean();
        },
        [&] {
            Kalv other(file.path);
            return 0;
        });
}

/// The methods that edit; each pair leaves the document as it was.
void compare_edits(Comparison& comparison, const File& file, const std::string& target)
{
    KALV::XmlFile object(file.path);
    Calls calls(object.getId());
    const std::string path = "/Root/List/Item[2]/Value", text_path = "/Root/List/Item[2]/Name",
                      added = "Added", added_path = "/Root/Added", root = "/Root", last = "/Root/Last",
                      text = "a text", integer_format = "%ld", real_format = "%.3f", schema = "schema.xsd";
    const auto add = [&](const char* method_name, auto method, auto procedural) {
        comparison.add({std::string("XmlFile::") + method_name,
                        file.size,
                        {repeated(library, method), repeated(function, procedural)},
                        {{function, 1.05}}});
    };
    const auto add_node = [&](auto called, const std::string& at) {
        called(calls.fd(), at.c_str(), added.c_str(), nullptr);
        return calls.call(kh_tree_remove_node, added_path.c_str());
    };
    const auto set_schema = [&](const char* reference, long mode) {
        KH_Set_Schema(calls.fd(), reference, &mode);
        return mode;
    };

    add(
        "setValue, text",
        [&] {
            object.setValue(text_path, text);
            return 0;
        },
        [&] { return calls.call(kh_tree_set_string_node_value, text_path.c_str(), text.c_str(), "%s"); });
    add(
        "setValue, integer",
        [&] {
            object.setValue(path, 4711, integer_format);
            return 0;
        },
        [&] {
            const long number = 4711;
            return calls.call(kh_tree_set_integer_node_value, path.c_str(), &number, integer_format.c_str());
        });
    add(
        "setValue, real",
        [&] {
            object.setValue(path, 47.11, real_format);
            return 0;
        },
        [&] {
            const double number = 47.11;
            return calls.call(kh_tree_set_real_node_value, path.c_str(), &number, real_format.c_str());
        });
    add(
        "addChild, removeNode",
        [&] {
            object.addChild(root, added);
            object.removeNode(added_path);
            return 0;
        },
        [&] { return add_node(kh_tree_add_child, root); });
    add(
        "addNext, removeNode",
        [&] {
            object.addNext(last, added);
            object.removeNode(added_path);
            return 0;
        },
        [&] { return add_node(kh_tree_add_next_sibling, last); });
    add(
        "addPrevious, removeNode",
        [&] {
            object.addPrevious(last, added);
            object.removeNode(added_path);
            return 0;
        },
        [&] { return add_node(kh_tree_add_previous_sibling, last); });
    add(
        "addAttribute, removeNode",
        [&] {
            object.addAttribute(last, added);
            object.removeNode("/Root/Last/@Added");
            return 0;
        },
        [&] {
            kh_tree_add_attribute(calls.fd(), last.c_str(), added.c_str(), nullptr);
            return calls.call(kh_tree_remove_node, "/Root/Last/@Added");
        });
    object.root();
    add(
        "setSchema, removeSchema",
        [&] {
            object.setSchema(schema, true);
            object.removeSchema(true);
            return 2;
        },
        [&] {
            set_schema(schema.c_str(), 0);
            return static_cast<int>(set_schema("", 2));
        });
    add(
        "create, createRoot, clean",
        [&] {
            KALV::XmlFile other;
            other.create();
            other.createRoot(added);
            return other.clean();
        },
        [&] {
            Kalv other;
            kh_tree_create_root(&other.fd, added.c_str(), &other.status);
            return 0L;
        });
    add(
        "write", [&] { return object.write(target); },
        [&] {
            kh_tree_write(calls.fd(), target.c_str(), nullptr);
            return 0L;
        });
}

} // namespace

void compare_methods(Comparison& comparison, const Files& files)
{
    compare_reads(comparison, files.medium());
    compare_edits(comparison, files.medium(), files.target("method.xml"));
}

} // namespace bench
