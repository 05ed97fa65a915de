// From a file to a tree.
#ifndef KALV_TREE_PARSE_H
#define KALV_TREE_PARSE_H

#include "tree/xml.h"

namespace kh {

/// Parses a file; null when it cannot be read or is not well-formed. "-" is standard input.
XmlDocument parse_file(const char* file_name) noexcept;

} // namespace kh

#endif
