// Arrays of texts for callers in C++, which have vectors.
#ifndef KALV_READ_ARRAY_H
#define KALV_READ_ARRAY_H

#include <string>
#include <vector>

namespace kh {

/// What kh_tree_read_string_element_array() does, into an empty vector.
long read_element_strings(long* fd, const char* element, std::vector<std::string>& values,
                          long* ierr) noexcept;

/// What kh_tree_path_read_string_node_array() does, into an empty vector.
long read_path_strings(long* fd, const char* path, std::vector<std::string>& values, long* ierr) noexcept;

} // namespace kh

#endif
