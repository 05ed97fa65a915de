// Paths, for those who have the document already.
#ifndef KALV_TREE_PATH_H
#define KALV_TREE_PATH_H

#include "tree/cursor.h"

#include <optional>

namespace kh {

/// The name of the attribute that the last path ends with, without its "@".
inline const char* attribute_name(const Document& document) noexcept
{
    return document.stack_name[document.stack_count - 1] + 1;
}

/// True when the last path has a node written "[*]".
inline bool has_array_node(const Document& document) noexcept
{
    return document.array_position != -1;
}

/// Moves the cursor to the node that a path leads to, where the path need not be taken apart: because it is one of
/// the last paths, or differs from one in an index alone, as in a loop. All is then as after chop_path() and
/// go_to_stack_node(). Null where it has to be, or where there is no such node: then these two are to be called, and
/// report.
xmlNode* go_to_known_node(long* fd, Document& document, std::string_view path) noexcept;

/// Moves the cursor along a path that need not be taken apart, though it may have to be walked. All is then as after
/// kh_tree_go_to_path_node(); null where the path leads nowhere. Nothing for a path that has to be taken apart, or that
/// has something to report.
std::optional<xmlNode*> follow_known_path(long* fd, Document& document, std::string_view path) noexcept;

/// Moves the cursor along a path for another call, in whose status word kh_tree_go_to_path_node() reports. \return the
/// document; null, with the trace line of that call, where the path leads nowhere
Document* go_to_path(Operation& op, long* fd, const char* path) noexcept;

/// What kh_tree_chop_path() and kh_tree_go_to_stack_node() do, and report in their names.
long chop_path(Document& document, const char* path, long* ierr) noexcept;
xmlNode* go_to_stack_node(long* fd, Document& document, long* ierr) noexcept;

/// What kh_tree_get_path() does; the path is the document's and stays until the next call. A null `path` is a
/// missing output.
long get_path(const long* fd, const char** path, long* ierr) noexcept;

} // namespace kh

#endif
