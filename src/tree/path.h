// Paths, for those who have the document already.
#ifndef KALV_TREE_PATH_H
#define KALV_TREE_PATH_H

#include "tree/cursor.h"

#include <string>

namespace kh {

/// The name of the attribute that the last path ends with, without its "@".
const char* attribute_name(const Document& document) noexcept;

/// True when the last path has a node written "[*]".
bool has_array_node(const Document& document) noexcept;

/// The absolute path of an element below the root. May throw std::bad_alloc.
std::string path_of(Document& document, xmlNode* element);

} // namespace kh

#endif
