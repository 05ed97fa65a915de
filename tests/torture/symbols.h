// The exported functions by their names.
#ifndef KALV_TORTURE_SYMBOLS_H
#define KALV_TORTURE_SYMBOLS_H

#include <set>
#include <string>

namespace torture {

/// The exported name of a function.
std::string name_of(const void* function);

/// Names of the exported functions of the procedural interface that are not among those given.
std::set<std::string> missing_functions(const std::set<std::string>& names);

} // namespace torture

#endif
