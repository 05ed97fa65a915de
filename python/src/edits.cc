// Building and editing.
#include "document.h"

#include <kalv/build.h>
#include <memory>

namespace kalv_python {

namespace {

/// Sets a value. Without a format nothing of it is lost: a text is taken as it is, an integer keeps all its
/// digits, and a real reads back as the same number.
struct Setter {
    Call& call;
    const char* path;
    Text format;

    void operator()(Text text) const
    {
        if (format.empty())
            call.run(kh_tree_set_text, path, text.c_str());
        else
            call.run(kh_tree_set_string_node_value, path, text.c_str(), format.c_str());
    }
    void operator()(long integer) const
    {
        call.run(kh_tree_set_integer_node_value, path, &integer, format.empty() ? "%ld" : format.c_str());
    }
    void operator()(double real) const
    {
        if (!format.empty()) {
            call.run(kh_tree_set_real_node_value, path, &real, format.c_str());
            return;
        }
        const std::unique_ptr<char, void (*)(void*)> text(
            PyOS_double_to_string(real, 'r', 0, Py_DTSF_ADD_DOT_0, nullptr), PyMem_Free);
        if (!text)
            throw py::error_already_set();
        call.run(kh_tree_set_text, path, text.get());
    }
};

void set_value(Call& call, const char* path, const Value& value, Text format)
{
    std::visit(Setter{call, path, format}, value);
}

/// Adds a node, and sets its value where one is given.
template <long (*add)(long*, const char*, const char*, long*)>
void add_node(Call& call, Text path, Text name, const std::optional<Value>& value, Text format)
{
    call.run(add, path.c_str(), name.c_str());
    if (value)
        set_value(call, add == kh_tree_add_attribute ? ("./@" + name.string()).c_str() : ".", *value, format);
}

/// Adds the four methods that add a node.
template <long (*add)(long*, const char*, const char*, long*)>
void define_adder(Methods& methods, const char* name, const char* documentation)
{
    methods.add(name, &add_node<add>, py::arg("path"), py::arg("name"), py::arg("value") = py::none(),
                py::arg("format") = "", documentation);
}

} // namespace

void define_edits(Methods& methods)
{
    methods.add(
        "create_root", +[](Call& call, Text name) { call.run(kh_tree_create_root, name.c_str()); },
        py::arg("name"), "Gives an empty document its root element, where the cursor then stands.");
    define_adder<kh_tree_add_child>(
        methods, "add_child",
        R"(Adds an element as last child of the one at a path, with a value if one is given. The cursor moves
to it.

>>> doc = kalv.XmlFile().create()
>>> doc.create_root("List")
>>> doc.add_child(".", "Item", 0.1)
>>> doc.add_next(".", "Item", 0.1, "%.3f")
>>> doc["/List/Item[1]"], doc["/List/Item[2]"]
('0.1', '0.100')
)");
    define_adder<kh_tree_add_next_sibling>(
        methods, "add_next", "Adds an element right after the one at a path, else as `add_child`.");
    define_adder<kh_tree_add_previous_sibling>(
        methods, "add_previous", "Adds an element right before the one at a path, else as `add_child`.");
    define_adder<kh_tree_add_attribute>(methods, "add_attribute",
                                        "Adds an attribute to the element at a path, where the cursor moves. "
                                        "One that is there already stays.");

    const auto define_set = [&](const char* name, const char* documentation) {
        methods.add(
            name,
            +[](Call& call, Text path, const Value& value, Text format) {
                set_value(call, path.c_str(), value, format);
            },
            py::arg("path"), py::arg("value"), py::arg("format") = "", documentation);
    };
    define_set("set_value",
               R"(Sets the text of the element or attribute at a path, where the cursor moves.

Without a format, a text is set as it is, an integer with all its digits, and a real with as many as it takes to read
the same number back. A format is that of printf and must fit the value: "%s", "%ld" or "%.3f". With one, 510 bytes are
kept at most, with a warning where a text is cut, and what looks like a reference in a text is one, as "&amp;".

>>> doc = kalv.XmlFile.from_bytes(b"<List><Item/></List>")
>>> doc.set_value("/List/Item", 2.5, "%.2f")
>>> doc["/List/Item"]
'2.50'
)");
    methods.add(
        "__setitem__",
        +[](Call& call, Text path, const Value& value) { set_value(call, path.c_str(), value, Text()); },
        py::arg("path"), py::arg("value"), "As `set_value` without a format.");

    const auto remove = +[](Call& call, Text path) { call.run(kh_tree_remove_node, path.c_str()); };
    methods.add(
        "remove_node", remove, py::arg("path"),
        "Removes the attribute at a path, or the element with all below it. The cursor moves to the parent.");
    methods.add("__delitem__", remove, py::arg("path"), "As `remove_node`.");
    methods.add(
        "copy_node",
        +[](Call& call, Text path, const FileName& source_file, Text source_path) {
            const InterpreterReleased released;
            call.run(kh_copy_node, path.c_str(), source_file.bytes.c_str(), source_path.c_str());
        },
        py::arg("path"), py::arg("source_file"), py::arg("source_path"),
        "Appends a copy of a node of another file, with all below it, to the element at a path.");
    methods.add(
        "set_schema",
        +[](Call& call, Text schema, bool version) { call.file.setSchema(schema.string(), version); },
        py::arg("schema"), py::arg("version") = true,
        "Sets the schema reference of the element under the cursor, by default with the schema's version.");
    methods.add(
        "remove_schema", +[](Call& call, bool everything) { call.file.removeSchema(everything); },
        py::arg("everything") = false,
        R"(Removes the schema reference of the element under the cursor; with `everything`, all its declarations
and attributes.)");
}

} // namespace kalv_python
