// Paths, for those who have the document already.
#ifndef KALV_TREE_PATH_H
#define KALV_TREE_PATH_H

#include "tree/cursor.h"

#include <cstring>
#include <string>

namespace kh {

/// The name of the attribute that the last path ends with, without its "@".
const char* attribute_name(const Document& document) noexcept;

/// True when the last path has a node written "[*]".
bool has_array_node(const Document& document) noexcept;

/// What kh_tree_get_path() does, for a path of any length. A null `path` is a missing output.
long get_path(const long* fd, std::string* path, long* ierr) noexcept;

/// Runs a call that writes a path into a string, for a caller who provides the room instead.
template <class Call>
long written_into(char* room, Call call) noexcept
{
    std::string path;
    const long status = call(room ? &path : nullptr);
    if (room && status == KH_OK)
        std::strcpy(room, path.c_str());
    return status;
}

} // namespace kh

#endif
