// Values at the end of a path.
#include "read/value.h"
#include "tree/cursor.h"
#include "tree/path.h"

#include <kalv/path.h>
#include <kalv/read.h>

namespace kh {

namespace {

/// The node that a path leads to; null, with a report, where there is none.
const xmlNode* follow(long* fd, Document& document, const char* path, Operation& op) noexcept
{
    chop_path(document, path, op.error_vector());
    if (op.failed()) {
        op.pass_on();
        return nullptr;
    }
    // Reported, and then read all the same with the index that the array node has: callers rely on it.
    if (has_array_node(document))
        op.fail(KH_ERR_ARGUMENT, ". Bad path for : %s", path);
    const xmlNode* node = go_to_stack_node(fd, document, op.error_vector());
    if (op.failed()) {
        op.pass_on();
        return nullptr;
    }
    if (!node)
        op.fail(KH_ERR_NOT_FOUND, ". Path: %s", path);
    return node;
}

template <class Number>
long read_path_number(const char* name, long* fd, const char* path, Number* value, long* ierr) noexcept
{
    Operation op(name, ierr);
    return read_number(op, value,
                       [&](TextTarget& target, long* status) { read_path(fd, path, target, status); });
}

} // namespace

/// The text read that all variants share.
long read_path(long* fd, const char* path, TextTarget& target, long* ierr) noexcept
{
    Operation op("kh_tree_path_read_string_element_value", ierr);
    Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (target.missing())
        return op.null_argument();
    if (!path)
        return op.fail(KH_ERR_NO_REQUEST);
    target.replace_previous();
    const xmlNode* node = go_to_known_node(fd, *document, path, op);
    if (!node)
        node = follow(fd, *document, path, op);
    if (!node)
        return op.status();
    const char* text = text_at_path_end(*document, node, path, op);
    if (op.status() == KH_ERR_NO_VALUE && !target.take_nothing())
        return op.fail(KH_ERR_MEMORY);
    if (!text)
        return op.status();
    target.take(text, op.error_vector());
    return op.failed() ? op.pass_on() : op.status();
}

const char* text_at_path_end(const Document& document, const xmlNode* node, const char* path,
                             Operation& op) noexcept
{
    if (ends_with_attribute(document)) {
        const xmlAttr* attribute = attribute_named(node, attribute_name(document));
        if (attribute)
            return content_of(attribute->children);
        op.fail(KH_ERR_NOT_FOUND, ". Path: %s", path);
        return nullptr;
    }
    if (const char* text = document.element_index.known_text_of(node))
        return text;
    const xmlNode* child = first_child(node);
    if (child && !child->next)
        return content_of(child);
    op.fail(child ? KH_ERR_NOT_TERMINAL : KH_ERR_NO_VALUE, ". Element: %s.", name_of(node));
    return nullptr;
}

} // namespace kh

long kh_tree_path_read_string_node_value(long* fd, const char* path, char** value, long* ierr)
{
    kh::TextTarget target(value);
    return kh::read_path(fd, path, target, ierr);
}

long kh_tree_path_read_integer_node_value(long* fd, const char* path, long* value, long* ierr)
{
    return kh::read_path_number("kh_tree_path_read_integer_node_value", fd, path, value, ierr);
}

long kh_tree_path_read_real_node_value(long* fd, const char* path, double* value, long* ierr)
{
    return kh::read_path_number("kh_tree_path_read_real_node_value", fd, path, value, ierr);
}
