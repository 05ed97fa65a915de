#include "tree.h"

#include <cstring>

namespace tool {

namespace {

std::string written(const char* prefix, const char* name)
{
    return *prefix ? std::string(prefix) + ':' + name : name;
}

/// What a text, CDATA section or reference stands for; a reference stays one.
std::string text_of(const Node& node)
{
    return node.kind == KH_NODE_REFERENCE ? std::string("&") + node.name + ';' : node.content;
}

/// The URI of a declaration, in which the library keeps these two characters escaped.
std::string unescaped(std::string_view uri)
{
    std::string text;
    while (!uri.empty()) {
        const bool ampersand = uri.substr(0, 5) == "&#38;";
        const bool less = uri.substr(0, 5) == "&#60;";
        text += ampersand ? '&' : less ? '<' : uri.front();
        uri.remove_prefix(ampersand || less ? 5 : 1);
    }
    return text;
}

} // namespace

bool Node::is_blank() const
{
    return kind == KH_NODE_TEXT && content[std::strspn(content, " \t\r\n")] == '\0';
}

bool Node::holds_elements() const
{
    for (Node child(first_child); child; child = Node(child.next)) {
        if (child.is_element())
            return true;
    }
    return false;
}

std::string Node::written_name() const
{
    return written(prefix, name);
}

std::string Node::value() const
{
    std::string text;
    for (Node child(first_child); child; child = Node(child.next)) {
        if (child.is_value())
            text += text_of(child);
    }
    return text;
}

std::vector<Attribute> attributes_of(const Node& element)
{
    std::vector<Attribute> attributes;
    kh_attribute attribute;
    for (long found = kh_node_first_attribute(element.handle, &attribute); found;
         found = kh_node_next_attribute(&attribute)) {
        const bool is_declaration = !attribute.first_child && attribute.value;
        std::string value;
        if (attribute.value)
            value = is_declaration ? unescaped(attribute.value) : attribute.value;
        for (Node piece(attribute.value ? nullptr : attribute.first_child); piece; piece = Node(piece.next))
            value += text_of(piece);
        attributes.push_back({written(attribute.prefix, attribute.name), std::move(value),
                              attribute.value ? nullptr : attribute.first_child});
    }
    return attributes;
}

std::optional<Attribute> attribute_of(const Node& element, const std::string& name)
{
    std::optional<Attribute> without_prefix;
    for (Attribute& attribute : attributes_of(element)) {
        if (attribute.name == name)
            return std::make_optional(std::move(attribute));
        if (!without_prefix && attribute.name.substr(attribute.name.find(':') + 1) == name)
            without_prefix = std::move(attribute);
    }
    return without_prefix;
}

Walker::Walker(struct _xmlNode* top, std::string path_of_top)
    : path_of_top_(std::move(path_of_top)), top_(top)
{
}

bool Walker::next()
{
    if (!begun_) {
        begun_ = true;
        if (top_)
            enter(top_);
        return top_;
    }
    if (levels_.empty())
        return false;
    const Node node = this->node();
    if (entering_ && node.first_child && !skipping_) {
        enter(node.first_child);
        return true;
    }
    skipping_ = false;
    if (entering_ && node.is_element()) {
        entering_ = false;
        return true;
    }
    path_.resize(levels_.back().path_size);
    levels_.pop_back();
    if (levels_.empty())
        return false;
    if (node.next)
        enter(node.next);
    else
        entering_ = false;
    return true;
}

void Walker::enter(struct _xmlNode* handle)
{
    const Node node(handle);
    const std::size_t path_size = path_.size();
    if (levels_.empty())
        path_ = path_of_top_;
    else if (node.is_element())
        path_.append(1, '/').append(node.name).append(index_of(node));
    levels_.push_back({node, path_size, nullptr});
    entering_ = true;
}

/// The index of an element that is written where it has siblings of its name.
std::string Walker::index_of(const Node& node)
{
    Level& level = levels_.back();
    if (!level.names) {
        level.names = std::make_unique<Names>();
        for (Node child(level.node.first_child); child; child = Node(child.next)) {
            if (child.is_element())
                ++(*level.names)[child.name].total;
        }
    }
    Count& count = (*level.names)[node.name];
    ++count.met;
    return count.total > 1 ? '[' + std::to_string(count.met) + ']' : std::string();
}

} // namespace tool
