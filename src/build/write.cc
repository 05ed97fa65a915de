// Completing the indentation of a document, and writing it.
#include "build/attribute.h"
#include "build/indentation.h"
#include "build/save.h"
#include "tree/cursor.h"

#include <kalv/build.h>

#include <cerrno>
#include <cstring>

namespace kh {

namespace {

/// Puts the closing tag of a last child's parent on a line of its own.
bool indent_closing_tag(const NodeCall& call, xmlNode* last_child, long depth, Operation& op) noexcept
{
    XmlNode indentation = new_indentation(call, last_child->doc, 2 * depth - 2);
    if (!indentation)
        op.fail(KH_ERR_CREATE_NODE, "%s", indentation_detail);
    else if (!xmlAddNextSibling(last_child, indentation.get()))
        op.fail(KH_ERR_ADD_SIBLING, "%s", indentation_detail);
    else
        static_cast<void>(indentation.release());
    return !op.failed();
}

/// What is to be done at each node before what is below it.
bool prepare(const xmlNode* node, Operation& op) noexcept
{
    fetch_behind(node);
    if (is_element(node) && node->nsDef && !escape_declarations(node))
        op.fail(KH_ERR_MEMORY);
    return !op.failed();
}

/// Escapes what no parser reads, or reads as something else. \return false when memory ran out before everything
/// was done
bool escape_all(const xmlNode* root) noexcept
{
    const xmlNode* const end = next_node_beside(root);
    for (const xmlNode* node = root; node != end; node = next_node(node)) {
        if (is_element(node) && !escape_declarations(node))
            return false;
    }
    return true;
}

/// Walks the siblings from `node` on, each after all that is below it. An element that a text follows gets
/// nothing, so that a second pass adds nothing.
void format_siblings(const Document& document, xmlNode* node, Operation& op) noexcept
{
    const NodeCall call;
    const xmlNode* const top = node->parent;
    long depth = distance_from_root(document, node);
    for (;;) {
        if (node == document.root) // reached from a comment before it
            depth = 0;
        if (!prepare(node, op))
            return;
        while (xmlNode* child = first_child(node)) {
            node = child;
            ++depth;
            if (!prepare(node, op))
                return;
        }
        for (;;) {
            if (is_element(node) && !node->next) {
                if (node == document.root || !indent_closing_tag(call, node, depth, op))
                    return;
            }
            if (node->next)
                break;
            if (node->parent == top)
                return;
            node = node->parent;
            --depth;
        }
        node = node->next;
    }
}

enum class Indentation { completed, kept };

/// Saves, with its indentation completed or as it is.
/// \param target the file's name; empty for memory, null where the caller gave none
/// \return how many bytes were written, or a code
template <class Save>
long write(const char* function, long* fd, Indentation indentation, long* ierr, const char* target,
           Save save_document) noexcept
{
    Operation op(function, ierr);
    Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (!target)
        return op.null_argument();
    const bool completes = indentation == Indentation::completed;
    if (completes && !document->is_formatted) {
        kh_tree_traverse_and_format(fd, document->root, op.error_vector());
        document->is_formatted = accelerated && !op.failed();
    }
    if (op.failed())
        op.pass_on(); // and the document is saved all the same
    if ((!completes || op.failed()) && !escape_all(document->root))
        return op.fail(KH_ERR_SAVE);
    long bytes = -1;
    errno = 0;
    try {
        bytes = save_document(document->doc);
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
    }
    if (bytes >= 0)
        return bytes;
    const int error = errno;
    op.fail(KH_ERR_SAVE);
    if (*target && error != 0)
        op.explain(target, strerrordesc_np(error));
    return op.status();
}

} // namespace

} // namespace kh

long kh_tree_traverse_and_format(long* fd, xmlNode* node, long* ierr)
{
    kh::Operation op("kh_tree_traverse_and_format", ierr);
    const kh::Document* document = kh::document_with_root(op, fd);
    if (!document)
        return op.status();
    if (!node)
        return op.null_argument();
    kh::format_siblings(*document, node, op);
    return op.status();
}

long kh_tree_write(long* fd, const char* file_name, long* ierr)
{
    return kh::write("kh_tree_write", fd, kh::Indentation::completed, ierr, file_name,
                     [&](xmlDoc* document) { return kh::save(document, file_name); });
}

long kh_tree_save(long* fd, const char* file_name, long* ierr)
{
    return kh::write("kh_tree_save", fd, kh::Indentation::kept, ierr, file_name,
                     [&](xmlDoc* document) { return kh::save(document, file_name); });
}

long kh_tree_write_memory(long* fd, char** data, long* size, long* ierr)
{
    return kh::write("kh_tree_write_memory", fd, kh::Indentation::completed, ierr,
                     data && size ? "" : nullptr, [&](xmlDoc* document) {
                         kh::Block<char> bytes = kh::save_to_memory(document, *size);
                         *data = bytes.release();
                         return *size;
                     });
}
