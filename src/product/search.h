// Searches for a value, with the path found as a string of any length.
#ifndef KALV_PRODUCT_SEARCH_H
#define KALV_PRODUCT_SEARCH_H

#include <string>

namespace kh {

/// What kh_tree_find_string_value_element() does. A null `path` is a missing output.
long find_string_value_element(long* fd, const char* element_name, const char* value, std::string* path,
                               long* ierr) noexcept;

/// What kh_tree_find_string_value_path() does. A null `path` is a missing output.
long find_string_value_path(long* fd, const char* array_path, const char* value, std::string* path,
                            long* ierr) noexcept;

} // namespace kh

#endif
