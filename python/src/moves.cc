// The cursor: its moves, and what stands where.
#include "document.h"

#include <kalv/cursor.h>
#include <kalv/node.h>
#include <kalv/path.h>
#include <kalv/read.h>
#include <unordered_map>
#include <vector>

namespace kalv_python {

namespace {

kh_node described(const _xmlNode* node)
{
    kh_node description{};
    kh_node_describe(node, &description);
    return description;
}

kh_node cursor(const Call& call)
{
    return described(global_current_status[call.fd]->current);
}

/// The first element from a node on; null where there is none.
_xmlNode* first_element(_xmlNode* node)
{
    kh_node description{};
    while (kh_node_describe(node, &description) && description.kind != KH_NODE_ELEMENT)
        node = description.next;
    return node;
}

/// The paths of the elements below the one at a path. An index is written where the names are not unique, as
/// in the path of the cursor.
std::vector<std::string> child_paths(Call& call, Text path)
{
    call.run(kh_tree_go_to_path_node, path.c_str());
    const std::string parent = call.file.currentPathName() + "/";
    std::vector<std::string> names;
    std::unordered_map<std::string, long> count;
    _xmlNode* child = first_element(cursor(call).first_child);
    while (child) {
        const kh_node description = described(child);
        names.emplace_back(description.name);
        ++count[names.back()];
        child = first_element(description.next);
    }

    std::unordered_map<std::string, long> position;
    std::vector<std::string> paths;
    for (const std::string& name : names) {
        const std::string index = "[" + std::to_string(++position[name]) + "]";
        paths.push_back(parent + name + (count[name] > 1 ? index : ""));
    }
    return paths;
}

/// The method of the object interface prints a line where there is no sibling, and checks nothing.
bool next_sibling(Call& call)
{
    call.file.currentElementName();
    _xmlNode* const sibling = first_element(cursor(call).next);
    if (sibling)
        call.run(kh_tree_go_to_node, sibling);
    return sibling != nullptr;
}

/// Elements of the package, each a path in its document.
py::object as_element(const py::object& document, const std::string& path)
{
    return py::module_::import("kalv._element").attr("Element")(document, path);
}

py::object element(const py::object& self, Text path)
{
    return as_element(self, perform(self.cast<Document&>(), "XmlFile.element", [&](Call& call) {
                          call.run(kh_tree_go_to_path_node, path.c_str());
                          return call.file.currentPathName();
                      }));
}

py::list children(const py::object& self, Text path)
{
    py::list elements;
    for (const std::string& child : perform(self.cast<Document&>(), "XmlFile.children",
                                            [&](Call& call) { return child_paths(call, path); }))
        elements.append(as_element(self, child));
    return elements;
}

} // namespace

void define_moves(Methods& methods)
{
    methods.add(
        "root", +[](Call& call) { call.run(kh_tree_rewind); }, "Moves to the root element.");
    methods.add(
        "next", +[](Call& call) { call.run(kh_tree_go_to_next_element_node); },
        "Moves forward, in the order of the file, to the next element.");
    methods.add(
        "to_element", +[](Call& call, Text name) { call.run(kh_tree_go_to_element_node, name.c_str()); },
        py::arg("name"), "Moves forward, in the order of the file, to the next element of a name.");
    methods.add(
        "to_path", +[](Call& call, Text path) { call.run(kh_tree_go_to_path_node, path.c_str()); },
        py::arg("path"),
        R"(Moves along a path: from the root if it begins with "/", else from the cursor.

>>> doc = kalv.XmlFile.from_bytes(b"<List><Item><Value>1</Value></Item><Item><Value>2</Value></Item></List>")
>>> doc.to_path("/List/Item[2]")
>>> doc["Value"]
'2'
>>> doc.current_path_name()
'/List/Item[2]/Value'
)");
    methods.add("next_sibling", &next_sibling,
                R"(Moves to the next element beside the one under the cursor. Returns whether there is one.

>>> doc = kalv.XmlFile.from_bytes(b"<List><Item>1</Item><Item>2</Item></List>")
>>> doc.to_path("/List/Item")
>>> doc.next_sibling(), doc.current_path_name(), doc.next_sibling()
(True, '/List/Item[2]', False)
)");
    methods.add(
        "current_element_name", +[](Call& call) { return call.file.currentElementName(); },
        "The name of the element under the cursor, without prefix.");
    methods.add(
        "current_path_name", +[](Call& call) { return call.file.currentPathName(); },
        "The path of the element under the cursor.");
    methods.type.def("element", &element, py::arg("path"), R"(The element at a path, where the cursor moves.

>>> doc = kalv.XmlFile.from_bytes(b"<List><Item>1</Item></List>")
>>> doc.element("Item")
Element('/List/Item')
)");
    methods.type.def(
        "children", &children, py::arg("path") = ".",
        R"(The elements directly below the one at a path, as they are now. The cursor moves there.

>>> doc = kalv.XmlFile.from_bytes(b"<List><Item id='a'>1</Item><Item id='b'>2</Item><Sum>3</Sum></List>")
>>> [child.path for child in doc.children("/List")]
['/List/Item[1]', '/List/Item[2]', '/List/Sum']
)");
}

} // namespace kalv_python
