// The cursor's moves, for those who have the document already.
#ifndef KALV_TREE_CURSOR_H
#define KALV_TREE_CURSOR_H

#include "tree/document.h"

#include <string_view>

namespace kh {

/// The node after a node in document order; null at the end of the document.
xmlNode* next_node(const xmlNode* node) noexcept;

/// The same for a walk that skips what is below the node.
xmlNode* next_node_beside(const xmlNode* node) noexcept;

/// Moves the cursor to the next element.
xmlNode* go_to_next_element(Document& document) noexcept;

/// Searches forward for elements of the requested tag.
class TagSearch {
public:
    explicit TagSearch(Document& document) noexcept
        : document_(document), matches_(document.requested_tag ? document.requested_tag : "")
    {
    }
    /// Moves the cursor to the next one; null, and no move, when none follows.
    xmlNode* next() noexcept;
    /// The text of the one found, where it is like most; null where it has to be read with care.
    const char* text() const noexcept
    {
        return position_ == ElementIndex::none ? only_text(document_.current)
                                               : document_.element_index.text_at(position_);
    }

private:
    xmlNode* next_in_index() noexcept;

    Document& document_;
    NameMatch matches_;
    ElementIndex::Position position_ = ElementIndex::none;
    ElementIndex::Name number_ = ElementIndex::none;
};

/// Moves the cursor to the next sibling element of a name; null, and no move, when there is none.
xmlNode* go_to_next_sibling(Document& document, const xmlNode* node, const char* name) noexcept;
xmlNode* go_to_next_sibling(Document& document, const xmlNode* node, NameMatch& matches) noexcept;

/// The child element of a name with a 0-based index; the cursor moves along the siblings tried.
xmlNode* go_to_child(Document& document, const xmlNode* node, const char* name, long index) noexcept;

/// The attribute of a local name; null for what is no element.
xmlAttr* attribute_named(const xmlNode* node, const char* name) noexcept;

/// True when the last path names an attribute, which walks leave to their callers.
inline bool ends_with_attribute(const Document& document) noexcept
{
    return document.stack_count > 0 && *document.stack_name[document.stack_count - 1] == '@';
}

/// Steps from a node up to the root, or to the top where the root is not above it.
long distance_from_root(const Document& document, const xmlNode* node) noexcept;

/// Makes a copy of a name the requested tag. \return false when memory runs out, and the old tag stays
bool set_requested_tag(Document& document, std::string_view name) noexcept;

/// Leaves no tag requested.
void clear_requested_tag(Document& document) noexcept;

} // namespace kh

#endif
