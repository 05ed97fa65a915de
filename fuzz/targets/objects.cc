// The object interface beside the procedural one: on two documents of the same bytes, each method and the function
// behind it have the same status, the same result and the same effect.
#include "document.h"
#include "texts.h"

#include "torture/describe.h"

#include <cstdio>

namespace {

/// A document twice: as an object, and as a descriptor.
class Twins {
public:
    Twins(const std::string& text, fuzz::Bytes& bytes) : plain_(text), bytes_(bytes)
    {
        const long status = fuzz::status_of_object([&] { object_.readMemory(text); });
        fuzz::check_result(status == plain_.status(), "an object reads what the functions read");
        is_open_ = status == KH_OK && plain_.is_open();
    }

    bool is_open() const { return is_open_; }

    /// One call on both.
    void call(const std::string& path, const std::string& name)
    {
        const char* where = path.c_str();
        const char* what = name.c_str();
        const char* asked = name.empty() ? nullptr : what;
        switch (bytes_.ConsumeIntegralInRange(0, 27)) {
        case 0:
            return both([&] { object_.root(); }, kh_tree_rewind);
        case 1:
            return both([&] { object_.next(); }, kh_tree_go_to_next_element_node);
        case 2:
            return both([&] { object_.toElement(name); }, kh_tree_go_to_element_node, what);
        case 3:
            return both([&] { object_.toPath(path); }, kh_tree_go_to_path_node, where);
        case 4:
            return texts([&] { return object_.currentElementName(); }, kh_tree_get_current_element_name);
        case 5:
            return texts([&] { return object_.getElementValueAsString(name); },
                         kh_tree_read_string_element_value, asked);
        case 6:
            return numbers<long>([&] { return object_.getElementValueAsInt(name); },
                                 kh_tree_read_integer_element_value, asked);
        case 7:
            return numbers<double>([&] { return object_.getElementValueAsReal(name); },
                                   kh_tree_read_real_element_value, asked);
        case 8:
            return texts([&] { return object_.getAttributeValueAsString(name, "id"); },
                         kh_tree_read_string_attribute, asked, "id");
        case 9:
            return numbers<long>([&] { return object_.getAttributeValueAsInt(name, "id"); },
                                 kh_tree_read_integer_attribute, asked, "id");
        case 10:
            return texts([&] { return object_.getPathValueAsString(path); },
                         kh_tree_path_read_string_node_value, where);
        case 11:
            return numbers<long>([&] { return object_.getPathValueAsInt(path); },
                                 kh_tree_path_read_integer_node_value, where);
        case 12:
            return numbers<double>([&] { return object_.getPathValueAsReal(path); },
                                   kh_tree_path_read_real_node_value, where);
        case 13:
            return arrays<std::string, char*>(
                [&](auto& values) { object_.getElementArrayAsString(name, values); },
                kh_tree_read_string_element_array, asked);
        case 14:
            return arrays<long, long>([&](auto& values) { object_.getElementArrayAsInt(name, values); },
                                      kh_tree_read_integer_element_array, asked);
        case 15:
            return arrays<double, double>([&](auto& values) { object_.getElementArrayAsReal(name, values); },
                                          kh_tree_read_real_element_array, asked);
        case 16:
            return arrays<std::string, char*>(
                [&](auto& values) { object_.getPathArrayAsString(path, values); },
                kh_tree_path_read_string_node_array, where);
        case 17:
            return arrays<long, long>([&](auto& values) { object_.getPathArrayAsInt(path, values); },
                                      kh_tree_path_read_integer_node_array, where);
        case 18:
            return both([&] { object_.createRoot(name); }, kh_tree_create_root, what);
        case 19:
            return both([&] { object_.addChild(path, name); }, kh_tree_add_child, where, what);
        case 20:
            return both([&] { object_.addNext(path, name); }, kh_tree_add_next_sibling, where, what);
        case 21:
            return both([&] { object_.addPrevious(path, name); }, kh_tree_add_previous_sibling, where, what);
        case 22:
            return both([&] { object_.addAttribute(path, name); }, kh_tree_add_attribute, where, what);
        case 23:
            return both([&] { object_.removeNode(path); }, kh_tree_remove_node, where);
        case 24: {
            const std::string text = fuzz::value(bytes_);
            return both([&] { object_.setValue(path, text); }, kh_tree_set_string_node_value, where,
                        text.c_str(), "%s");
        }
        case 25: {
            const long number = bytes_.ConsumeIntegral<long>();
            return both([&] { object_.setValue(path, number, "%ld"); }, kh_tree_set_integer_node_value, where,
                        &number, "%ld");
        }
        case 26: {
            const std::string text = fuzz::value(bytes_);
            return both([&] { object_.setFixedHeaderItem(name, text); }, kh_tree_set_fixed_header_item, what,
                        text.c_str());
        }
        default:
            return others(path, name);
        }
    }

    /// Compares everything that later calls could see.
    void compare_documents() const
    {
        const kh_document_slot& slot = *global_current_status[object_.getId()];
        const std::string tree = torture::described(slot.doc);
        fuzz::check(tree.find(torture::broken_mark) == std::string::npos, "the tree is sound");
        fuzz::check_result(tree == plain_.described(), "methods have their functions' effect");
        fuzz::check_result(torture::described_position(slot) == torture::described_position(plain_.slot()),
                           "methods move as their functions move");
    }

private:
    static void compare(long thrown, long status)
    {
        if (thrown != status && !fuzz::memory_fails())
            std::fprintf(stderr, "thrown %ld, status %ld\n", thrown, status);
        fuzz::check_result(thrown == status, "a method has its function's status");
    }

    template <class Method, class Function, class... Arguments>
    void both(Method method, Function* function, Arguments... arguments)
    {
        const long thrown = fuzz::status_of_object(method);
        compare(thrown, fuzz::status_of(function, plain_.fd(), arguments...));
    }

    template <class Method, class Function, class... Arguments>
    void texts(Method method, Function* function, Arguments... arguments)
    {
        std::string found;
        fuzz::Text text;
        const long thrown = fuzz::status_of_object([&] { found = method(); });
        const long status = fuzz::status_of(function, plain_.fd(), arguments..., text.out());
        compare(thrown, status);
        fuzz::check_result(status != KH_OK || found == text.string(), "a method has its function's text");
    }

    template <class Number, class Method, class Function, class... Arguments>
    void numbers(Method method, Function* function, Arguments... arguments)
    {
        Number found = 0;
        Number number = 0;
        const long thrown = fuzz::status_of_object([&] { found = method(); });
        const long status = fuzz::status_of(function, plain_.fd(), arguments..., &number);
        compare(thrown, status);
        fuzz::check_result(status != KH_OK || found == number || found != found,
                           "a method has its function's number");
    }

    template <class Value, class Entry, class Method, class Function, class... Arguments>
    void arrays(Method method, Function* function, Arguments... arguments)
    {
        std::vector<Value> found(1);
        fuzz::Array<Entry> array;
        const long thrown = fuzz::status_of_object([&] { method(found); });
        const long status =
            fuzz::status_of(function, plain_.fd(), arguments..., array.out(), array.count_out());
        compare(thrown, status);
        const std::size_t count = thrown == KH_OK ? static_cast<std::size_t>(array.count()) : 0;
        fuzz::check_result(found.size() == 1 + count, "a method appends its function's array, or nothing");
        for (std::size_t i = 0; i < count && !fuzz::memory_fails(); ++i)
            fuzz::check(found[1 + i] == array[static_cast<long>(i)] || found[1 + i] != found[1 + i],
                        "a method appends its function's values");
    }

    /// Calls that differ too much to be compared, on an object of its own.
    void others(const std::string& path, const std::string& name)
    {
        KALV::XmlFile file;
        std::vector<std::string> found;
        std::vector<double> reals;
        fuzz::status_of_object([&] {
            file.create();
            file.createHeader(bytes_.ConsumeIntegralInRange(0L, 40L));
            file.getFixedHeader();
            file.setSchema(name, bytes_.ConsumeBool());
            file.removeSchema(bytes_.ConsumeBool());
        });
        fuzz::status_of_object([&] { file.getStringValuesFromList(path, name, found); });
        fuzz::status_of_object([&] { file.getPathArrayAsReal(path, reals); });
        fuzz::status_of_object([&] { file.findValueInPath(path, name); });
        fuzz::status_of_object([&] { file.findValueInElement(name, path); });
        fuzz::status_of_object([&] { file.addChild(path, name, true); });
        std::string written;
        const long status = fuzz::status_of_object([&] { written = file.toString(); });
        fuzz::check(status != KH_OK || fuzz::plain_tree(written), "what an object writes is well-formed");
        const KALV::XmlFile moved(std::move(file));
        fuzz::check(file.getId() == -1, "an object that was moved from holds no document");
        torture::memory::fail_never();
    }

    fuzz::Document plain_;
    KALV::XmlFile object_;
    fuzz::Bytes& bytes_;
    bool is_open_ = false;
};

} // namespace

void fuzz::run(Bytes& bytes)
{
    Twins twins(document_text(bytes), bytes);
    for (int i = 0; twins.is_open() && i < 10 && bytes.remaining_bytes() > 0; ++i) {
        const std::string where = path(bytes);
        twins.call(where, bytes.ConsumeIntegralInRange(0, 15) == 15 ? "" : name(bytes));
    }
    if (twins.is_open())
        twins.compare_documents();
}
