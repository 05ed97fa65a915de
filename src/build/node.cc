// Inserting and deleting exactly one node.
#include <kalv/node.h>

#include "build/delete.h"
#include "build/identifier.h"
#include "build/link.h"
#include "build/validity.h"

#include <cstring>

namespace kh {

void delete_node(Document& document, xmlNode* node) noexcept
{
    document.edited();
    document.child_index.removing(node);
    if (node == document.root)
        document.root = nullptr;
    forget_identifiers(node);
    xmlUnlinkNode(node);
    xmlFreeNode(node);
}

namespace {

xmlNs* default_namespace(const Document& document, xmlNode* element) noexcept
{
    return element == document.last_inserted.element ? document.last_inserted.space
                                                     : search_namespace(element, nullptr);
}

/// An element in the namespace that its prefix, or the default declaration, gives it below `parent`.
XmlNode new_element_below(const Document& document, xmlNode* parent, const char* name) noexcept
{
    int length = 0;
    const xmlChar* local_name = xmlSplitQName3(to_xml(name), &length);
    const XmlText prefix(local_name ? xmlStrndup(to_xml(name), length) : nullptr);
    if (local_name && !prefix)
        return nullptr;
    xmlNs* space = prefix ? search_namespace(parent, prefix.get()) : default_namespace(document, parent);
    return XmlNode(
        xmlNewDocRawNode(parent->doc, space, space && local_name ? local_name : to_xml(name), nullptr));
}

XmlNode new_node_below(const Document& document, xmlNode* parent, long kind, const char* text) noexcept
{
    const NodeCall call;
    XmlNode node = kind == KH_NODE_ELEMENT ? new_element_below(document, parent, text)
                                           : XmlNode(xmlNewDocText(parent->doc, to_xml(text)));
    const bool complete = node && (kind == KH_NODE_ELEMENT || node->content) && !call.out_of_memory();
    return complete ? std::move(node) : nullptr;
}

bool check_insertion(Operation& op, const Document& document, const xmlNode* parent, const xmlNode* before,
                     long kind, const char* text) noexcept
{
    const bool is_new_element = kind == KH_NODE_ELEMENT;
    if (!parent || !text)
        op.null_argument();
    else if (parent->doc != document.doc || (before && before->parent != parent) ||
             (!is_new_element && kind != KH_NODE_TEXT))
        op.fail(KH_ERR_ARGUMENT);
    else if (!is_element(parent))
        op.fail(KH_ERR_NOT_ELEMENT);
    else if (is_new_element ? !is_node_name(text) : !is_xml_text(text))
        op.fail(KH_ERR_ARGUMENT, is_new_element ? ". Node: %s" : ". Value: %s", text);
    return !op.failed();
}

bool is_within(const xmlNode* node, const xmlNode* other) noexcept
{
    while (node && node != other)
        node = node->parent;
    return node;
}

} // namespace

} // namespace kh

using kh::Document;
using kh::Operation;

xmlNode* kh_tree_insert_node(long* fd, xmlNode* parent, xmlNode* before, long kind, const char* text,
                             long* ierr)
{
    Operation op("kh_tree_insert_node", ierr);
    Document* document = document_with_root(op, fd);
    if (!document || !kh::check_insertion(op, *document, parent, before, kind, text) || !parent)
        return nullptr;
    kh::XmlNode node = kh::new_node_below(*document, parent, kind, text);
    if (!node) {
        op.fail(KH_ERR_CREATE_NODE);
        return nullptr;
    }
    document->edited();
    if (before)
        document->child_index.inserted_before(before);
    xmlNode* inserted = kh::link_node(parent, before, *node.release());
    if (kind == KH_NODE_ELEMENT && !std::strchr(text, ':'))
        document->last_inserted = {inserted, inserted->ns};
    return inserted;
}

long kh_tree_delete_node(long* fd, xmlNode* node, long* ierr)
{
    Operation op("kh_tree_delete_node", ierr);
    Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (!node)
        return op.null_argument();
    if (node->doc != document->doc)
        return op.fail(KH_ERR_ARGUMENT);
    kh_node description;
    kh_node_describe(node, &description);
    if (description.kind == KH_NODE_OTHER || description.kind == KH_NODE_DOCTYPE)
        return op.fail(KH_ERR_REMOVE_NODE);
    if (kh::is_within(document->current, node))
        document->current = description.parent;
    kh::delete_node(*document, node);
    return op.status();
}
