#include "indentation.h"

#include <algorithm>
#include <kalv/status.h>

namespace tool {

namespace {

constexpr const char* usual_unit = "  ";

Node insert(Document& document, const Node& parent, const Node& before, long kind, const std::string& text)
{
    long status = KH_OK;
    const Node node(
        kh_tree_insert_node(document.fd(), parent.handle, before.handle, kind, text.c_str(), &status));
    if (!node && status == KH_ERR_ARGUMENT)
        throw Failure(usage, "no name that XML allows: " + text);
    if (!node)
        throw document.failure(cannot_write, parent, status_text(status));
    return node;
}

void remove(Document& document, const Node& node)
{
    long status = KH_OK;
    if (kh_tree_delete_node(document.fd(), node.handle, &status) != KH_OK)
        throw document.failure(cannot_write, node, status_text(status));
}

Node last_child(const Node& parent)
{
    Node last;
    for (Node child(parent.first_child); child; child = Node(child.next))
        last = child;
    return last;
}

/// The line end and blanks before an element; empty where it does not stand on a line of its own.
std::string margin_of(const Node& element)
{
    if (!element.parent)
        return "\n";
    const Node before(element.previous);
    if (!before || !before.is_blank())
        return "";
    const std::string blanks = before.content;
    const std::size_t line_end = blanks.rfind('\n');
    return line_end == std::string::npos ? "" : blanks.substr(line_end);
}

/// The margin that the element children of a parent have; empty where they have none.
std::string margin_of_children(const Node& parent)
{
    for (Node child(parent.first_child); child; child = Node(child.next)) {
        if (child.is_element())
            return margin_of(child);
    }
    return "";
}

/// The blanks of one level, as far as the elements above show them.
std::string unit_around(const Node& element)
{
    for (Node node = element; node.parent; node = Node(node.parent)) {
        const std::string outer = margin_of(Node(node.parent));
        const std::string inner = margin_of(node);
        if (!outer.empty() && inner.size() > outer.size() && inner.compare(0, outer.size(), outer) == 0)
            return inner.substr(outer.size());
    }
    const Node root = element;
    const std::string first = root.parent ? "" : margin_of_children(root);
    return first.size() > 1 ? first.substr(1) : usual_unit;
}

bool holds_text(const Node& element)
{
    for (Node child(element.first_child); child; child = Node(child.next)) {
        if (child.is_value() && !child.is_blank())
            return true;
    }
    return false;
}

bool preserves_blanks(const Node& element)
{
    const std::vector<Attribute> attributes = attributes_of(element);
    return std::any_of(attributes.begin(), attributes.end(), [](const Attribute& attribute) {
        return attribute.name == "xml:space" && attribute.value == "preserve";
    });
}

/// Blanks between elements mean nothing; beside a text, and alone in an element, they may be data.
bool is_to_be_indented(const Node& element)
{
    if (holds_text(element) || preserves_blanks(element))
        return false;
    for (Node child(element.first_child); child; child = Node(child.next)) {
        if (!child.is_value())
            return true;
    }
    return false;
}

/// Makes the blanks before a child, or before the closing tag, what they are to be.
long set_margin(Document& document, const Node& parent, const Node& child, const std::string& margin)
{
    Node before = child ? Node(child.previous) : last_child(parent);
    if (before && before.is_blank() && before.content == margin)
        return 0;
    while (before && before.is_blank()) {
        const Node earlier(before.previous);
        remove(document, before);
        before = earlier;
    }
    insert(document, parent, child, KH_NODE_TEXT, margin);
    return 1;
}

} // namespace

Node insert_indented(Document& document, const Node& parent, const Node& before, const std::string& name)
{
    const std::string outer = margin_of(parent);
    const bool is_first = !parent.holds_elements();
    std::string margin;
    std::string closing;
    if (!holds_text(parent) && !is_first) {
        margin = margin_of_children(parent);
    } else if (!holds_text(parent) && !outer.empty()) {
        margin = outer + unit_around(parent);
        closing = outer;
    }
    Node place = before;
    const Node last = last_child(parent);
    if (!before && !margin.empty() && last && last.is_blank()) {
        place = last; // the blanks before the closing tag stay there
        closing.clear();
    }
    const Node element = insert(document, parent, place, KH_NODE_ELEMENT, name);
    if (margin.empty())
        return element;
    const bool takes_margin_of_place = place && !place.is_blank();
    insert(document, parent, takes_margin_of_place ? place : element, KH_NODE_TEXT, margin);
    if (!closing.empty())
        insert(document, parent, Node(), KH_NODE_TEXT, closing);
    return Node(element.handle);
}

void indent_appended(Document& document, const Node& element)
{
    const Node parent(element.parent);
    if (holds_text(parent))
        return;
    const std::string outer = margin_of(parent);
    std::string margin;
    for (Node child(parent.first_child); child && margin.empty(); child = Node(child.next)) {
        if (child.is_element() && child.handle != element.handle)
            margin = margin_of(child);
    }
    if (margin.empty() && !(outer.empty() || Node(element.previous)))
        margin = outer + unit_around(parent);
    if (margin.empty())
        return;
    set_margin(document, parent, element, margin);
    set_margin(document, parent, Node(), outer.empty() ? "\n" : outer);
    indent(document, Node(element.handle), margin, unit_around(parent));
}

void delete_indented(Document& document, const Node& element)
{
    const Node parent(element.parent);
    const Node before(element.previous);
    const Node behind(element.next);
    const bool only_blanks_before = !before || (before.is_blank() && !before.previous);
    const bool only_blanks_behind = !behind || (behind.is_blank() && !behind.next);
    remove(document, element);
    if (before && before.is_blank() && !holds_text(parent))
        remove(document, before);
    if (behind && behind.is_blank() && only_blanks_before && only_blanks_behind)
        remove(document, behind);
}

long indent(Document& document, const Node& top, const std::string& margin, const std::string& unit)
{
    struct Level {
        Node element;
        Node next; ///< the child that comes next
        std::string margin;
    };
    long changes = 0;
    std::vector<Level> levels;
    const auto begin = [&](const Node& element, const std::string& own_margin) {
        if (element.is_element() && is_to_be_indented(element))
            levels.push_back({element, Node(element.first_child), own_margin});
    };
    begin(top, margin);
    while (!levels.empty()) {
        Level& level = levels.back();
        while (level.next && level.next.is_value())
            level.next = Node(level.next.next);
        if (!level.next) {
            changes += set_margin(document, Node(level.element.handle), Node(), level.margin);
            levels.pop_back();
            continue;
        }
        const Node child = level.next;
        const std::string inner = level.margin + unit;
        changes += set_margin(document, Node(level.element.handle), child, inner);
        level.next = Node(Node(child.handle).next);
        begin(Node(child.handle), inner);
    }
    return changes;
}

} // namespace tool
