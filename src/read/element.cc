// Values of elements: of the one under the cursor, and of those that a name finds behind it.
#include "read/value.h"
#include "tree/cursor.h"

#include <kalv/cursor.h>
#include <kalv/read.h>

namespace kh {

namespace {

long read_current_element(const Document& document, TextTarget& target, long* ierr) noexcept
{
    Operation op("kh_tree_get_current_element_value", ierr);
    const xmlNode* node = document.current;
    if (!node)
        return op.fail(KH_ERR_NO_CURRENT);
    if (!is_element(node))
        return op.fail(KH_ERR_NOT_ELEMENT, ". Element: %s.", name_of(node));
    const xmlNode* child = node->children;
    if (!child) {
        op.fail(KH_ERR_NO_VALUE, ". Element: %s.", name_of(node));
        return target.take_nothing() ? op.status() : op.fail(KH_ERR_MEMORY);
    }
    if (child->next)
        return op.fail(KH_ERR_NOT_TERMINAL, ". Element: %s.", name_of(node));
    target.take(content_of(child), op.error_vector());
    return op.status() == KH_OK ? op.status() : op.pass_on();
}

template <class Number>
long read_element_number(const char* name, long* fd, const char* element, Number* value, long* ierr) noexcept
{
    return read_number(name, value, ierr,
                       [&](TextTarget& target, long* status) { read_element(fd, element, target, status); });
}

} // namespace

/// The text read that all variants share; it reports under the name of the text variant.
long read_element(long* fd, const char* element, TextTarget& target, long* ierr) noexcept
{
    Operation op("kh_tree_read_string_element_value", ierr);
    Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (target.missing())
        return op.null_argument();
    kh_tree_go_to_element_node(fd, element, op.error_vector());
    if (op.failed())
        return op.pass_on();
    read_current_element(*document, target, op.error_vector());
    return op.failed() ? op.pass_on() : op.status();
}

long get_current_name(const long* fd, const char** name, long* ierr) noexcept
{
    Operation op("kh_tree_get_current_element_name", ierr);
    const Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (!name)
        return op.null_argument();
    if (!document->current)
        return op.fail(KH_ERR_NO_CURRENT);
    if (!is_element(document->current))
        return op.fail(KH_ERR_NOT_ELEMENT);
    *name = name_of(document->current);
    return op.status();
}

void read_found_element(const Document& document, TextTarget& target, long* ierr) noexcept
{
    Operation op("kh_tree_read_next_element", ierr);
    if (read_current_element(document, target, op.error_vector()) != KH_OK)
        op.pass_on();
}

} // namespace kh

using kh::Document;
using kh::Operation;
using kh::TextTarget;

long kh_tree_get_current_element_name(long* fd, char** name, long* ierr)
{
    const char* text = nullptr;
    const long status = kh::get_current_name(fd, name ? &text : nullptr, ierr);
    if (status != KH_OK || !text)
        return status;
    kh::Block<char> copy = kh::copy_of(text);
    if (!copy)
        return Operation("kh_tree_get_current_element_name", ierr).fail(KH_ERR_MEMORY);
    std::free(*name);
    *name = copy.release();
    return status;
}

long kh_tree_get_current_element_value(long* fd, char** value, long* ierr)
{
    Operation op("kh_tree_get_current_element_value", ierr);
    const Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    TextTarget target(value);
    return target.missing() ? op.null_argument()
                            : kh::read_current_element(*document, target, op.error_vector());
}

xmlNode* kh_tree_read_next_element(long* fd, char** value, long* ierr)
{
    Operation op("kh_tree_read_next_element", ierr);
    Document* document = document_with_root(op, fd);
    if (!document)
        return nullptr;
    TextTarget target(value);
    if (target.missing()) {
        op.null_argument();
        return nullptr;
    }
    xmlNode* element = kh::TagSearch(*document).next();
    if (element)
        read_found_element(*document, target, op.error_vector());
    return element;
}

long kh_tree_read_string_element_value(long* fd, const char* element, char** value, long* ierr)
{
    TextTarget target(value);
    return kh::read_element(fd, element, target, ierr);
}

long kh_tree_read_integer_element_value(long* fd, const char* element, long* value, long* ierr)
{
    return kh::read_element_number("kh_tree_read_integer_element_value", fd, element, value, ierr);
}

long kh_tree_read_real_element_value(long* fd, const char* element, double* value, long* ierr)
{
    return kh::read_element_number("kh_tree_read_real_element_value", fd, element, value, ierr);
}
