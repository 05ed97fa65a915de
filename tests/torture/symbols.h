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

/// Names of the methods of `KALV::XmlFile` that are not among those given.
std::set<std::string> missing_methods(const std::set<std::string>& names);

/// The methods that a source of this folder calls: what stands between a point and a bracket.
std::set<std::string> methods_called_in(const std::string& source);

} // namespace torture

#endif
