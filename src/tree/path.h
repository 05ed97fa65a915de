// Paths, for those who have the document already.
#ifndef KALV_TREE_PATH_H
#define KALV_TREE_PATH_H

#include "tree/cursor.h"

namespace kh {

/// The name of the attribute that the last path ends with, without its "@".
const char* attribute_name(const Document& document) noexcept;

/// True when the last path has a node written "[*]".
bool has_array_node(const Document& document) noexcept;

/// What kh_tree_chop_path() and kh_tree_go_to_stack_node() do, and report in their names.
long chop_path(Document& document, const char* path, long* ierr) noexcept;
xmlNode* go_to_stack_node(long* fd, Document& document, long* ierr) noexcept;

/// What kh_tree_get_path() does; the path is the document's and stays until the next call. A null `path` is a
/// missing output.
long get_path(const long* fd, const char** path, long* ierr) noexcept;

} // namespace kh

#endif
