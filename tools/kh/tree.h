// The nodes of a document, in their order and with their paths.
#ifndef KALV_TOOLS_TREE_H
#define KALV_TOOLS_TREE_H

#include <kalv/node.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tool {

/// A node and its description.
struct Node : kh_node {
    Node() : Node(nullptr) {}
    explicit Node(struct _xmlNode* node) : kh_node(), handle(node) { kh_node_describe(node, this); }

    explicit operator bool() const { return handle != nullptr; }
    bool is_element() const { return kind == KH_NODE_ELEMENT; }
    /// True for what makes up a value: text, CDATA section, reference.
    bool is_value() const
    {
        return kind == KH_NODE_TEXT || kind == KH_NODE_CDATA || kind == KH_NODE_REFERENCE;
    }
    /// True for a text of blanks and line ends alone: the indentation, in most files.
    bool is_blank() const;
    bool holds_elements() const;
    /// The name with its prefix, as it is written.
    std::string written_name() const;
    /// What the texts, CDATA sections and references directly below hold; references stay what they are.
    std::string value() const;

    struct _xmlNode* handle = nullptr;
};

/// An attribute or namespace declaration, with the name that is written.
struct Attribute {
    std::string name;
    std::string value;       ///< references stay what they are, "&name;"
    struct _xmlNode* pieces; ///< the texts and references of a value with references; else null
};

std::vector<Attribute> attributes_of(const Node& element);

/// The attribute that is written with a name or, where there is none, has it without prefix.
std::optional<Attribute> attribute_of(const Node& element, const std::string& name);

/// Walks through a node and all below it in document order, without recursion, and knows the path of each
/// element.
class Walker {
public:
    explicit Walker(struct _xmlNode* top, std::string path_of_top = {});

    /// Goes on. Each node is entered once and, if it is an element, left once. \return false at the end
    bool next();
    /// Keeps the next step from going below the element that was just entered.
    void skip() { skipping_ = true; }

    bool entering() const { return entering_; }
    const Node& node() const { return levels_.back().node; }
    /// How far the node is below the top.
    std::size_t depth() const { return levels_.size() - 1; }
    /// The path of the node, or of the element around one that is none.
    const std::string& path() const { return path_; }

private:
    struct Count {
        long total = 0;
        long met = 0;
    };
    using Names = std::unordered_map<std::string_view, Count>;
    struct Level {
        Node node;
        std::size_t path_size;        ///< of the path of the element above
        std::unique_ptr<Names> names; ///< of the children
    };

    void enter(struct _xmlNode* node);
    std::string index_of(const Node& node);

    std::vector<Level> levels_;
    std::string path_;
    std::string path_of_top_;
    struct _xmlNode* top_;
    bool begun_ = false;
    bool entering_ = false;
    bool skipping_ = false;
};

} // namespace tool

#endif
