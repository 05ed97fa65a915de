// The cursor: forward in document order, and the single steps that paths are made of.
#include "tree/cursor.h"

#include <kalv/cursor.h>

namespace kh {

xmlNode* next_node_beside(const xmlNode* node) noexcept
{
    for (; node; node = node->parent) {
        if (node->next)
            return node->next;
    }
    return nullptr;
}

xmlNode* next_node(const xmlNode* node) noexcept
{
    xmlNode* child = first_child(node);
    return child ? child : next_node_beside(node);
}

xmlNode* go_to_next_element(Document& document) noexcept
{
    if (!document.current)
        return nullptr;
    for (xmlNode* node = next_node(document.current); node; node = next_node(node)) {
        if (is_element(node)) {
            ++document.visited;
            return document.current = node;
        }
    }
    return nullptr;
}

xmlNode* TagSearch::next() noexcept
{
    xmlNode* node = document_.current;
    if (!node)
        return nullptr;
    ElementIndex& index = document_.element_index;
    const bool indexed = index.stands(document_.root);
    position_ = indexed ? index.known_position_of(node) : ElementIndex::none;
    // What is looked for is often near, where the way into the index would cost more than it saves.
    constexpr std::size_t near = 32;
    std::size_t seen = 0;
    while (position_ == ElementIndex::none && (node = next_node(node))) {
        fetch_behind(node);
        if (!is_element(node))
            continue;
        ++seen;
        if (matches_(node))
            break;
        if (indexed && seen == near)
            position_ = index.position_of(node);
    }
    document_.visited += static_cast<long>(seen);
    index.walked(seen);
    if (position_ != ElementIndex::none)
        return next_in_index();
    if (node)
        document_.current = node;
    return node;
}

xmlNode* TagSearch::next_in_index() noexcept
{
    ElementIndex& index = document_.element_index;
    if (number_ == ElementIndex::none && document_.requested_tag)
        number_ = index.number_of(document_.requested_tag);
    const ElementIndex::Position found = index.next_named(number_, position_ + 1);
    const bool is_there = found < index.count();
    document_.visited += found - position_ - (is_there ? 0 : 1);
    position_ = is_there ? found : ElementIndex::none;
    return is_there ? document_.current = index.node_at(found) : nullptr;
}

xmlNode* go_to_next_sibling(Document& document, const xmlNode* node, const char* name) noexcept
{
    NameMatch matches(name);
    return go_to_next_sibling(document, node, matches);
}

xmlNode* go_to_next_sibling(Document& document, const xmlNode* node, NameMatch& matches) noexcept
{
    for (xmlNode* sibling = node->next; sibling; sibling = sibling->next) {
        if (matches(sibling))
            return document.current = sibling;
    }
    return nullptr;
}

/// The same child as by walking, and the same move: to the last element of that name that the walk tries
/// behind the first child.
static xmlNode* go_to_indexed_child(Document& document, const xmlNode* node, const char* name,
                                    std::size_t index)
{
    ChildIndex::List& list = document.child_index.list(node, name);
    xmlNode* child = list.at(index);
    xmlNode* tried = child || list.all().empty() ? child : list.all().back();
    if (tried && tried != first_child(node))
        document.current = tried;
    return child;
}

xmlNode* go_to_child(Document& document, const xmlNode* node, const char* name, long index) noexcept
{
    xmlNode* child = first_child(node);
    if (!child)
        return nullptr;
    // Farther away, the index saves the walk, and leaves the cursor where the walk would have left it.
    constexpr long walking_distance = 8;
    if (accelerated && index >= walking_distance && node->doc == document.doc) {
        try {
            return go_to_indexed_child(document, node, name, static_cast<std::size_t>(index));
        } catch (const std::bad_alloc&) {
            // The walk needs no memory.
        }
    }
    // An index below 0 takes the first child, whatever it is: callers reach texts that way.
    if (index < 0)
        return child;
    NameMatch matches(name);
    for (const xmlNode* first = child; child; child = child->next) {
        if (!matches(child))
            continue;
        if (child != first)
            document.current = child;
        if (index-- == 0)
            return child;
    }
    return nullptr;
}

xmlAttr* attribute_named(const xmlNode* node, const char* name) noexcept
{
    xmlAttr* attribute = first_attribute(node);
    while (attribute && std::strcmp(from_xml(attribute->name), name) != 0)
        attribute = attribute->next;
    return attribute;
}

long distance_from_root(const Document& document, const xmlNode* node) noexcept
{
    long steps = 0;
    for (; node != document.root && node->parent; node = node->parent)
        ++steps;
    return steps;
}

bool set_requested_tag(Document& document, std::string_view name) noexcept
{
    char* tag = document.tag.reserve(name.size() + 1);
    if (!tag)
        return false;
    std::memcpy(tag, name.data(), name.size());
    tag[name.size()] = '\0';
    document.requested_tag = tag;
    document.tag_is_from_path = false;
    document.visited = 0;
    return true;
}

void clear_requested_tag(Document& document) noexcept
{
    document.requested_tag = nullptr;
    document.tag_is_from_path = false;
    document.visited = 0;
}

} // namespace kh

using kh::Document;
using kh::Operation;

long kh_tree_rewind(long* fd, long* ierr)
{
    Operation op("kh_tree_rewind", ierr);
    if (Document* document = document_with_root(op, fd))
        document->current = document->root;
    return op.status();
}

long kh_tree_go_to_element_node(long* fd, const char* name, long* ierr)
{
    Operation op("kh_tree_go_to_element_node", ierr);
    Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (name && !set_requested_tag(*document, name))
        return op.fail(KH_ERR_MEMORY);
    if (!document->requested_tag)
        return op.fail(KH_ERR_NO_REQUEST);
    if (!kh::TagSearch(*document).next())
        return op.fail(KH_ERR_NOT_FOUND);
    return op.status();
}

long kh_tree_go_to_next_element_node(long* fd, long* ierr)
{
    Operation op("kh_tree_go_to_next_element_node", ierr);
    Document* document = document_with_root(op, fd);
    if (document && !go_to_next_element(*document))
        op.fail(KH_ERR_NOT_FOUND);
    return op.status();
}

xmlNode* kh_tree_get_next_node(xmlNode* node)
{
    return node ? kh::next_node(node) : nullptr;
}

xmlNode* kh_tree_get_parent_next_node(xmlNode* node)
{
    return kh::next_node_beside(node);
}

xmlNode* kh_tree_get_next_element_node(long* fd, int mode)
{
    Document* document = kh::find_document(fd);
    if (!document)
        return nullptr;
    return mode == 1 ? go_to_next_element(*document) : kh::TagSearch(*document).next();
}

void kh_tree_set_requested_tag(long* fd, const char* name)
{
    Document* document = kh::find_document(fd);
    if (document && !(name && set_requested_tag(*document, name)))
        clear_requested_tag(*document);
}

long kh_tree_is_attribute(long* fd)
{
    const Document* document = kh::find_document(fd);
    return document && kh::ends_with_attribute(*document);
}

xmlNode* kh_tree_go_to_next_sibling(long* fd, xmlNode* node, const char* name)
{
    Document* document = kh::find_document(fd);
    return document && node && name ? go_to_next_sibling(*document, node, name) : nullptr;
}

xmlNode* kh_tree_go_to_child(long* fd, xmlNode* node, const char* name, long index)
{
    Document* document = kh::find_document(fd);
    return document && node && name ? go_to_child(*document, node, name, index) : nullptr;
}

xmlNode* kh_tree_go_to_parent(long* fd, xmlNode* node, long* ierr)
{
    Operation op("kh_tree_go_to_parent", ierr);
    const Document* document = document_with_root(op, fd);
    if (!document)
        return nullptr;
    if (!node) {
        op.null_argument();
        return nullptr;
    }
    if (node != document->root)
        return node->parent;
    op.fail(KH_WARN_ROOT_REACHED);
    return node;
}

xmlAttr* kh_tree_go_to_attribute(xmlNode* node, const char* at_name)
{
    return node && at_name && *at_name ? kh::attribute_named(node, at_name + 1) : nullptr;
}

long kh_tree_get_sibling_index(xmlNode* node, long* total, long* position)
{
    if (!node)
        return 0;
    const char* name = kh::name_of(node); // no element is named as a node without name
    long following = 0;
    long preceding = 0;
    for (const xmlNode* sibling = node->next; sibling; sibling = sibling->next)
        following += kh::is_element_named(sibling, name);
    for (const xmlNode* sibling = node->prev; sibling; sibling = sibling->prev)
        preceding += kh::is_element_named(sibling, name);
    if (total)
        *total = following + preceding + 1;
    if (position)
        *position = preceding + 1;
    return following + preceding + 1;
}

long kh_tree_distance_from_root(long* fd, xmlNode* node)
{
    const Document* document = kh::find_document(fd);
    return document && node ? distance_from_root(*document, node) : 0;
}
