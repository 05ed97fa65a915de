// What the nodes of a document are, one by one.
#include <kalv/node.h>

#include "tree/document.h"

namespace kh {

namespace {

const char* text_or_empty(const xmlChar* text) noexcept
{
    return text ? from_xml(text) : "";
}

const char* prefix_of(const xmlNs* space) noexcept
{
    return space ? text_or_empty(space->prefix) : "";
}

long kind_of(const xmlNode* node) noexcept
{
    switch (node->type) {
    case XML_ELEMENT_NODE:
        return KH_NODE_ELEMENT;
    case XML_TEXT_NODE:
        return KH_NODE_TEXT;
    case XML_CDATA_SECTION_NODE:
        return KH_NODE_CDATA;
    case XML_ENTITY_REF_NODE:
        return KH_NODE_REFERENCE;
    case XML_COMMENT_NODE:
        return KH_NODE_COMMENT;
    case XML_PI_NODE:
        return KH_NODE_INSTRUCTION;
    case XML_DTD_NODE:
        return KH_NODE_DOCTYPE;
    default:
        return KH_NODE_OTHER;
    }
}

/// What libxml2 keeps in two bytes: its largest number stands for all from there on.
long line_of(const xmlNode* node) noexcept
{
    constexpr long unknown_from = 65535;
    const long line = node->type == XML_DTD_NODE ? 0 : xmlGetLineNo(node);
    return line > 0 && line < unknown_from ? line : 0;
}

void describe(const xmlNode* node, kh_node& description) noexcept
{
    const long kind = kind_of(node);
    const bool is_named = kind != KH_NODE_TEXT && kind != KH_NODE_CDATA && kind != KH_NODE_COMMENT;
    const bool has_content = kind >= KH_NODE_TEXT && kind <= KH_NODE_INSTRUCTION && kind != KH_NODE_REFERENCE;
    description.kind = kind;
    description.line = line_of(node);
    description.prefix = kind == KH_NODE_ELEMENT ? prefix_of(node->ns) : "";
    description.name = is_named && kind != KH_NODE_OTHER ? text_or_empty(node->name) : "";
    description.content = has_content ? content_of(node) : "";
    description.parent = node->parent && is_element(node->parent) ? node->parent : nullptr;
    description.first_child = kind == KH_NODE_ELEMENT ? node->children : nullptr;
    description.previous = node->prev;
    description.next = node->next;
}

void describe(const xmlNs* declaration, kh_attribute& description) noexcept
{
    description.prefix = declaration->prefix ? "xmlns" : "";
    description.name = declaration->prefix ? from_xml(declaration->prefix) : "xmlns";
    description.value = text_or_empty(declaration->href);
    description.first_child = nullptr;
}

void describe(const xmlAttr* attribute, kh_attribute& description) noexcept
{
    const xmlNode* child = attribute->children;
    const bool is_text = child && child->type == XML_TEXT_NODE && !child->next;
    description.prefix = prefix_of(attribute->ns);
    description.name = from_xml(attribute->name);
    description.value = !child ? "" : is_text ? content_of(child) : nullptr;
    description.first_child = attribute->children;
}

} // namespace

} // namespace kh

using kh::Document;
using kh::Operation;

long kh_node_describe(const xmlNode* node, kh_node* description)
{
    if (!node || !description)
        return 0;
    kh::describe(node, *description);
    return 1;
}

long kh_node_first_attribute(const xmlNode* element, kh_attribute* description)
{
    if (!element || !description || !kh::is_element(element))
        return 0;
    description->next_declaration = element->nsDef;
    description->next_attribute = element->properties;
    return kh_node_next_attribute(description);
}

long kh_node_next_attribute(kh_attribute* description)
{
    if (!description)
        return 0;
    if (const xmlNs* declaration = description->next_declaration) {
        description->next_declaration = declaration->next;
        kh::describe(declaration, *description);
    } else if (const xmlAttr* attribute = description->next_attribute) {
        description->next_attribute = attribute->next;
        kh::describe(attribute, *description);
    } else {
        return 0;
    }
    return 1;
}

long kh_tree_describe(long* fd, kh_document* description, long* ierr)
{
    Operation op("kh_tree_describe", ierr);
    const Document* document = open_document(op, fd);
    if (!document)
        return op.status();
    if (!description)
        return op.null_argument();
    const xmlDoc* doc = document->doc;
    description->version = kh::text_or_empty(doc->version);
    description->encoding = kh::text_or_empty(doc->encoding);
    description->standalone = doc->standalone;
    description->compressed = doc->compression > 0;
    description->first_node = doc->children;
    return op.status();
}

long kh_tree_get_doctype(long* fd, char** text, long* ierr)
{
    Operation op("kh_tree_get_doctype", ierr);
    const Document* document = open_document(op, fd);
    if (!document)
        return op.status();
    if (!text)
        return op.null_argument();
    *text = nullptr;
    auto* doctype = reinterpret_cast<xmlNode*>(document->doc->intSubset);
    if (!doctype)
        return op.fail(KH_ERR_NOT_FOUND);
    const kh::ParserCall call;
    struct FreeBuffer {
        void operator()(xmlBuffer* buffer) const noexcept { xmlBufferFree(buffer); }
    };
    const std::unique_ptr<xmlBuffer, FreeBuffer> buffer(xmlBufferCreate());
    const bool written = buffer && xmlNodeDump(buffer.get(), document->doc, doctype, 0, 0) >= 0;
    kh::Block<char> copy(written ? kh::copy_of(kh::from_xml(xmlBufferContent(buffer.get()))) : nullptr);
    if (!copy || call.out_of_memory())
        return op.fail(KH_ERR_MEMORY);
    *text = copy.release();
    return op.status();
}

long kh_tree_go_to_node(long* fd, xmlNode* node, long* ierr)
{
    Operation op("kh_tree_go_to_node", ierr);
    Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (!node)
        return op.null_argument();
    if (node->doc != document->doc)
        return op.fail(KH_ERR_ARGUMENT);
    document->current = node;
    return op.status();
}
