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

/// The text at the end of the last path, where there is one; null, without a report, where there is none.
const char* find_text_at_path_end(const Document& document, const xmlNode* node) noexcept
{
    if (ends_with_attribute(document)) {
        const xmlAttr* attribute = attribute_named(node, attribute_name(document));
        return attribute ? content_of(attribute->children) : nullptr;
    }
    if (const char* text = document.element_index.known_text_of(node))
        return text;
    const xmlNode* child = first_child(node);
    return child && !child->next ? content_of(child) : nullptr;
}

/// Reads the text at the end of a path, of which it may be known already, and reports under a name that is not that of
/// any function that callers call.
long read_path_text(long* fd, const char* path, const char* known, TextTarget& target, long* ierr) noexcept
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
    const xmlNode* node = known ? nullptr : follow(fd, *document, path, op);
    const char* text = node ? text_at_path_end(*document, node, path, op) : known;
    if (op.status() == KH_ERR_NO_VALUE && !target.take_nothing())
        return op.fail(KH_ERR_MEMORY);
    if (!text)
        return op.status();
    target.take(text, op.error_vector());
    return op.failed() ? op.pass_on() : op.status();
}

template <class Number>
long read_path_number(const char* name, long* fd, const char* path, Number* value, long* ierr) noexcept
{
    const char* known = path && value ? known_path_text(fd, path) : nullptr;
    return read_known_number(known, name, value, ierr, [fd, path](TextTarget& target, long* status) {
        read_path_text(fd, path, nullptr, target, status);
    });
}

} // namespace

const char* known_path_text(long* fd, std::string_view path) noexcept
{
    Document* document = find_document(fd);
    const xmlNode* node = document ? go_to_known_node(fd, *document, path) : nullptr;
    return node ? find_text_at_path_end(*document, node) : nullptr;
}

/// The text read that all variants share.
long read_path(long* fd, const char* path, TextTarget& target, long* ierr) noexcept
{
    const char* known = path && !target.missing() ? known_path_text(fd, path) : nullptr;
    return read_path_text(fd, path, known, target, ierr);
}

const char* text_at_path_end(const Document& document, const xmlNode* node, const char* path,
                             Operation& op) noexcept
{
    const char* text = find_text_at_path_end(document, node);
    if (text)
        return text;
    if (ends_with_attribute(document))
        op.fail(KH_ERR_NOT_FOUND, ". Path: %s", path);
    else
        op.fail(first_child(node) ? KH_ERR_NOT_TERMINAL : KH_ERR_NO_VALUE, ". Element: %s.", name_of(node));
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
