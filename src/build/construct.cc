// Roots, children, siblings and attributes, and their removal. Nodes are made before the tree changes, so
// that a failure changes nothing.
#include "build/attribute.h"
#include "build/content.h"
#include "build/delete.h"
#include "build/indentation.h"
#include "build/link.h"
#include "build/validity.h"
#include "tree/cursor.h"
#include "tree/path.h"

#include <kalv/build.h>
#include <kalv/path.h>
#include <utility>

namespace kh {

namespace {

/// What the adding functions return on success: callers only look whether it is 0.
long handle(const xmlNode* node) noexcept
{
    return reinterpret_cast<long>(node);
}

bool check_arguments(Operation& op, const long* fd, const char* name) noexcept
{
    if (!fd || !name)
        op.null_argument();
    else if (!is_node_name(name))
        op.fail(KH_ERR_ARGUMENT, ". Node: %s", name);
    return !op.failed();
}

/// The document's first child; a document type has to stand before it.
void link_root(xmlDoc* document, xmlNode* root) noexcept
{
    if (document->intSubset)
        xmlAddNextSibling(reinterpret_cast<xmlNode*>(document->intSubset), root);
    else if (document->children)
        xmlAddPrevSibling(document->children, root);
    else
        xmlAddChild(reinterpret_cast<xmlNode*>(document), root);
}

/// A new element without namespace, in no tree yet.
XmlNode new_element(const NodeCall& call, xmlDoc* document, xmlNs* space, const char* name,
                    const char* content) noexcept
{
    XmlNode element(xmlNewDocRawNode(document, space, to_xml(name), to_xml(content)));
    const bool complete = element && !call.out_of_memory() && (!content || element->children);
    return complete ? std::move(element) : nullptr;
}

XmlText joined(const xmlNode* text, const xmlChar* more, bool is_behind) noexcept
{
    return XmlText(is_behind ? xmlStrncatNew(text->content, more, -1)
                             : xmlStrncatNew(more, text->content, -1));
}

/// What a text becomes when a node and its indentation are put beside it: texts that meet become one. It is
/// made before the tree changes; libxml2 would lose the text where memory runs out over it. Without memory it
/// is null, or lacks something.
XmlText joined_text(const xmlNode* text, const xmlNode* added, const xmlNode* indentation,
                    bool is_behind) noexcept
{
    if (added->type != XML_TEXT_NODE)
        return joined(text, indentation->content, is_behind);
    const XmlText both = joined(added, indentation->content, is_behind);
    return both ? joined(text, both.get(), is_behind) : nullptr;
}

using Insert = xmlNode* (*)(xmlNode*, xmlNode*);

long add_sibling(const char* function, long* fd, const char* path, const char* name, Insert insert,
                 long* ierr) noexcept
{
    Operation op(function, ierr);
    if (!check_arguments(op, fd, name))
        return op.status();
    const Document* document = go_to_path(op, fd, path);
    if (!document)
        return op.status();
    const NodeCall call;
    XmlNode sibling = new_element(call, document->doc, nullptr, name, nullptr);
    if (!sibling)
        return op.fail(KH_ERR_CREATE_NODE, ". Node: %s", name);
    kh_tree_add_sibling(fd, document->current, sibling.get(), insert, op.error_vector());
    if (op.failed())
        return op.pass_on(op.status(), ". Node: %s", name);
    return handle(sibling.release());
}

void remove_element(Document& document, xmlNode* node) noexcept
{
    remove_if_text(node->prev); // its indentation
    document.current = node == document.root ? nullptr : node->parent;
    delete_node(document, node);
}

} // namespace

} // namespace kh

using kh::Document;
using kh::NodeCall;
using kh::Operation;
using kh::XmlNode;

long kh_tree_create_root(long* fd, const char* name, long* ierr)
{
    Operation op("kh_tree_create_root", ierr);
    Document* document = open_document(op, fd);
    if (!document || !kh::check_arguments(op, fd, name))
        return op.status();
    if (document->root)
        return op.fail(KH_ERR_ROOT_EXISTS);
    // The first child takes the place of this text with its own indentation.
    const NodeCall call;
    XmlNode root = kh::new_element(call, document->doc, nullptr, name, "\n  ");
    if (!root)
        return op.fail(KH_ERR_CREATE_NODE);
    document->edited();
    kh::link_root(document->doc, root.get());
    document->root = root.release();
    document->current = document->root;
    return kh::handle(document->root);
}

long kh_tree_add_child(long* fd, const char* path, const char* name, long* ierr)
{
    Operation op("kh_tree_add_child", ierr);
    if (!kh::check_arguments(op, fd, name))
        return op.status();
    Document* document = go_to_path(op, fd, path);
    if (!document)
        return op.status();
    xmlNode* parent = document->current;
    const NodeCall call;
    XmlNode child =
        kh::is_element(parent) ? kh::new_element(call, document->doc, parent->ns, name, nullptr) : nullptr;
    if (!child)
        return op.fail(KH_ERR_CREATE_NODE, ". Node: %s", name);
    XmlNode indentation =
        kh::new_indentation(call, document->doc, 2 * distance_from_root(*document, parent) + 2);
    if (!indentation)
        return op.fail(KH_ERR_CREATE_NODE, "%s", kh::indentation_detail);
    document->value_edited(); // with a new last child, walks lead to the same elements as before
    kh::remove_if_text(parent->last);
    kh::link_node(parent, nullptr, *indentation.release());
    document->current = kh::link_node(parent, nullptr, *child.release());
    return kh::handle(document->current);
}

long kh_tree_add_next_sibling(long* fd, const char* path, const char* name, long* ierr)
{
    return kh::add_sibling("kh_tree_add_next_sibling", fd, path, name, xmlAddNextSibling, ierr);
}

long kh_tree_add_previous_sibling(long* fd, const char* path, const char* name, long* ierr)
{
    return kh::add_sibling("kh_tree_add_previous_sibling", fd, path, name, xmlAddPrevSibling, ierr);
}

long kh_tree_add_sibling(long* fd, xmlNode* reference, xmlNode* added, xmlNode* (*insert)(xmlNode*, xmlNode*),
                         long* ierr)
{
    Operation op("kh_tree_add_sibling", ierr);
    Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (!reference || !added || !insert)
        return op.null_argument();
    if (reference->parent && reference->parent == document->root->parent) // a document has one root
        return op.fail(KH_ERR_ADD_SIBLING);
    const NodeCall call;
    XmlNode indentation =
        kh::new_indentation(call, document->doc, 2 * distance_from_root(*document, reference));
    const bool is_behind = insert == xmlAddNextSibling;
    const bool is_beside_text = reference->type == XML_TEXT_NODE;
    kh::XmlText text(indentation && is_beside_text
                         ? kh::joined_text(reference, added, indentation.get(), is_behind)
                         : nullptr);
    if (!indentation || (is_beside_text && !text) || call.out_of_memory())
        return op.fail(KH_ERR_CREATE_NODE, "%s", kh::indentation_detail);
    document->edited();
    if (is_behind)
        document->child_index.inserted_behind(reference);
    else
        document->child_index.inserted_before(reference);
    const bool is_joined = text && added->type == XML_TEXT_NODE && added != reference;
    xmlNode* inserted = is_joined ? reference : insert(reference, added);
    if (!inserted)
        return op.fail(KH_ERR_ADD_SIBLING);
    xmlNode* previous = document->current;
    document->current = inserted;
    if (text) {
        kh::replace_text(reference, std::move(text));
        if (is_joined) {
            xmlUnlinkNode(added);
            xmlFreeNode(added);
        }
        return kh::handle(inserted);
    }
    if (insert(reference, indentation.get()) && !call.out_of_memory()) {
        static_cast<void>(indentation.release());
        return kh::handle(inserted);
    }
    xmlUnlinkNode(indentation.get());
    xmlUnlinkNode(inserted);
    document->current = previous;
    return op.fail(KH_ERR_ADD_SIBLING, "%s", kh::indentation_detail);
}

long kh_tree_add_attribute(long* fd, const char* path, const char* name, long* ierr)
{
    Operation op("kh_tree_add_attribute", ierr);
    if (!kh::check_arguments(op, fd, name))
        return op.status();
    const Document* document = go_to_path(op, fd, path);
    if (!document)
        return op.status();
    xmlNode* element = document->current;
    if (!kh::is_element(element))
        return op.fail(KH_ERR_NOT_ELEMENT);
    if (kh::attribute_written(element, name) || kh::declaration_written(element, name))
        return kh::handle(element);
    const NodeCall call;
    xmlAttr* attribute = xmlNewProp(element, kh::to_xml(name), nullptr);
    if (attribute && !call.out_of_memory())
        return kh::handle(element);
    if (attribute)
        xmlRemoveProp(attribute);
    return op.fail(KH_ERR_MEMORY);
}

long kh_tree_remove_node(long* fd, const char* path, long* ierr)
{
    Operation op("kh_tree_remove_node", ierr);
    if (!fd)
        return op.null_argument();
    Document* document = go_to_path(op, fd, path);
    if (!document)
        return op.status();
    if (!ends_with_attribute(*document)) {
        kh::remove_element(*document, document->current);
        return op.status();
    }
    const char* name = attribute_name(*document);
    xmlAttr* attribute = kh::attribute_named(document->current, name);
    if (!attribute)
        return op.fail(KH_ERR_NOT_FOUND, ". Attribute name: %s", name);
    if (!kh::remove_attribute(attribute))
        return op.fail(KH_ERR_REMOVE_NODE, ". Path: %s", path);
    return op.status();
}
