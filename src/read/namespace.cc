// The namespaces in scope at a node.
#include "read/growing_array.h"
#include "tree/document.h"

#include <algorithm>
#include <kalv/cursor.h>
#include <kalv/path.h>
#include <kalv/read.h>
#include <set>
#include <string_view>
#include <vector>

namespace kh {

namespace {

using Namespaces = std::vector<const xmlNs*>;

/// The namespaces in scope at a node as xmlGetNsList lists them, its own first and each prefix once, but in a
/// time that grows with their number alone. May throw std::bad_alloc.
Namespaces namespaces_in_scope(const xmlNode* node)
{
    Namespaces found;
    std::set<std::string_view> prefixes;
    for (; node; node = node->parent) {
        if (!is_element(node))
            continue;
        for (const xmlNs* item = node->nsDef; item; item = item->next) {
            if (prefixes.insert(item->prefix ? from_xml(item->prefix) : "").second)
                found.push_back(item);
        }
    }
    return found;
}

/// Adds a copy of a text that may be missing, in a block of two bytes at least.
bool add_text(GrowingArray<char*>& array, const xmlChar* text, Operation& op) noexcept
{
    const std::size_t length = text ? std::strlen(from_xml(text)) : 0;
    Block<char> copy(static_cast<char*>(std::calloc(std::max<std::size_t>(length + 1, 2), 1)));
    if (!copy) {
        op.fail(KH_ERR_MEMORY);
        return false;
    }
    if (text)
        std::memcpy(copy.get(), text, length);
    return array.add(copy.release(), op);
}

bool list_namespaces(const Document& document, GrowingArray<char*>& prefixes, GrowingArray<char*>& uris,
                     Operation& op) noexcept
{
    Namespaces list;
    op.guarded([&] { list = namespaces_in_scope(document.current); });
    if (op.failed())
        return false;
    if (list.empty()) {
        op.fail(KH_ERR_VALUE_NOT_FOUND);
        return true;
    }
    if (!prefixes.start(op) || !uris.start(op))
        return false;
    for (const xmlNs* item : list) {
        if (!add_text(prefixes, item->prefix, op) || !add_text(uris, item->href, op))
            return false;
    }
    return prefixes.shrink(op) && uris.shrink(op);
}

/// Moves the cursor along a path, or else to the next element of that name.
bool go_to(long* fd, const char* name_or_path, Operation& op) noexcept
{
    kh_tree_go_to_path_node(fd, name_or_path, op.error_vector());
    if (op.failed())
        kh_tree_go_to_element_node(fd, name_or_path, op.error_vector());
    return !op.failed();
}

void free_strings_and_cell(long count, char*** cell) noexcept
{
    if (!cell || !*cell)
        return;
    for (long i = 0; i < count; ++i) {
        std::free((*cell)[i]);
        (*cell)[i] = nullptr;
    }
    std::free(cell);
}

} // namespace

} // namespace kh

long kh_tree_get_namespace(long* fd, const char* name_or_path, long* count, char*** prefixes, char*** uris,
                           long* ierr)
{
    kh::Operation op("kh_tree_get_namespace", ierr);
    if (count)
        *count = 0;
    if (!fd || !count || !prefixes || !uris)
        return op.null_argument();
    if (name_or_path && *name_or_path && !kh::go_to(fd, name_or_path, op))
        return op.fail(KH_ERR_VALUE_NOT_FOUND);
    const kh::Document* document = kh::document_with_root(op, fd);
    if (!document)
        return op.status();
    kh::GrowingArray<char*> prefix_array(*prefixes);
    kh::GrowingArray<char*> uri_array(*uris);
    if (kh::list_namespaces(*document, prefix_array, uri_array, op)) {
        *count = prefix_array.count();
    } else {
        prefix_array.discard();
        uri_array.discard();
    }
    return op.status();
}

void KH_free_memory_get_namespace(long count, char*** prefixes, char*** uris)
{
    kh::free_strings_and_cell(count, prefixes);
    kh::free_strings_and_cell(count, uris);
}
