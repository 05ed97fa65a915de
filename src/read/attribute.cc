// Values of attributes, on the element under the cursor or on the next one of a name.
#include "read/expand.h"
#include "read/value.h"
#include "tree/cursor.h"

#include <kalv/read.h>
#include <libxml/valid.h>

namespace kh {

namespace {

/// The default that the internal subset declares for an attribute; null where there is none.
const char* default_value(const xmlNode* element, const char* attribute, Operation& op) noexcept
{
    if (!element->doc->intSubset)
        return nullptr;
    const ParserCall call;
    const xmlAttribute* declaration =
        xmlGetDtdAttrDesc(element->doc->intSubset, element->name, to_xml(attribute));
    if (call.out_of_memory())
        op.fail(KH_ERR_MEMORY);
    return declaration ? from_xml(declaration->defaultValue) : nullptr;
}

/// The text of an attribute that is like most; null for every other.
const char* plain_text(const xmlAttr* attribute) noexcept
{
    const xmlNode* text = attribute->children;
    return !text || (!text->next && text->type == XML_TEXT_NODE) ? content_of(text) : nullptr;
}

/// The attribute's text, as xmlGetProp gives it; null where the element has no such attribute.
const char* attribute_text(const xmlNode* element, const char* name, std::string& expanded,
                           Operation& op) noexcept
{
    const xmlAttr* attribute = attribute_named(element, name);
    if (!attribute)
        return default_value(element, name, op);
    if (const char* text = plain_text(attribute))
        return text;
    op.guarded([&] {
        if (!expand(attribute->children, expanded))
            op.fail(KH_ERR_MEMORY);
    });
    return expanded.c_str();
}

template <class Number>
long read_attribute_number(const char* name, long* fd, const char* element, const char* attribute,
                           Number* value, long* ierr) noexcept
{
    const char* known = attribute && value ? known_attribute_text(fd, element, attribute) : nullptr;
    return read_known_number(known, name, value, ierr,
                             [fd, element, attribute](TextTarget& target, long* status) {
                                 read_attribute(fd, element, attribute, target, status);
                             });
}

} // namespace

const char* known_attribute_text(const long* fd, const char* element, const char* attribute) noexcept
{
    Document* document = find_document(fd);
    if (!document || !document->root || !document->current || !document->requested_tag ||
        (element && std::strcmp(element, document->requested_tag) != 0) ||
        !is_element_named(document->current, document->requested_tag))
        return nullptr;
    const xmlAttr* found = attribute_named(document->current, attribute);
    const char* text = found ? plain_text(found) : nullptr;
    if (text && element)
        document->visited = 0; // as the tag was asked for anew
    return text;
}

/// The text read that all variants share; it reports under the name of the text variant.
long read_attribute(long* fd, const char* element, const char* attribute, TextTarget& target,
                    long* ierr) noexcept
{
    Operation op("kh_tree_read_string_attribute", ierr);
    Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (!document->current)
        return op.fail(KH_ERR_NO_CURRENT);
    if (!attribute || target.missing())
        return op.null_argument();
    if (element && !set_requested_tag(*document, element))
        return op.fail(KH_ERR_MEMORY);
    if (!document->requested_tag)
        return op.fail(KH_ERR_NO_REQUEST);
    if (!is_element_named(document->current, document->requested_tag) && !TagSearch(*document).next())
        return op.fail(KH_ERR_NOT_FOUND);
    const char* text = attribute_text(document->current, attribute, target.expanded(), op);
    if (op.failed())
        return op.status();
    if (!text)
        return op.fail(KH_ERR_NO_ATTRIBUTE, ". Element name: %s, and attribute name: %s",
                       document->requested_tag, attribute);
    target.take(text, op.error_vector());
    return op.status() == KH_OK ? op.status() : op.pass_on();
}

} // namespace kh

long kh_tree_read_string_attribute(long* fd, const char* element, const char* attribute, char** value,
                                   long* ierr)
{
    kh::TextTarget target(value);
    return kh::read_attribute(fd, element, attribute, target, ierr);
}

long kh_tree_read_integer_attribute(long* fd, const char* element, const char* attribute, long* value,
                                    long* ierr)
{
    return kh::read_attribute_number("kh_tree_read_integer_attribute", fd, element, attribute, value, ierr);
}

long kh_tree_read_real_attribute(long* fd, const char* element, const char* attribute, double* value,
                                 long* ierr)
{
    return kh::read_attribute_number("kh_tree_read_real_attribute", fd, element, attribute, value, ierr);
}
