#include "torture/symbols.h"

#include "support/support.h"

#include <algorithm>
#include <dlfcn.h>
#include <fstream>
#include <iterator>
#include <regex>

namespace torture {

std::string name_of(const void* function)
{
    Dl_info info;
    return dladdr(function, &info) && info.dli_sname ? info.dli_sname : "";
}

static bool is_function(const std::string& name)
{
    return name.rfind("kh_", 0) == 0 || name.rfind("KH_", 0) == 0;
}

/// The names of the exported functions that a filter lets through.
template <class Filter>
static std::set<std::string> exported(Filter filter)
{
    std::set<std::string> names;
    std::ifstream list(KALV_EXPORTED_SYMBOLS);
    for (std::string kind, name, rest; list >> kind >> name && std::getline(list, rest);)
        if (kind == "T")
            filter(name, names);
    return names;
}

static std::set<std::string> difference(const std::set<std::string>& all, const std::set<std::string>& some)
{
    std::set<std::string> missing;
    std::set_difference(all.begin(), all.end(), some.begin(), some.end(),
                        std::inserter(missing, missing.end()));
    return missing;
}

std::set<std::string> missing_functions(const std::set<std::string>& names)
{
    return difference(exported([](const std::string& name, std::set<std::string>& functions) {
                          if (is_function(name))
                              functions.insert(name);
                      }),
                      names);
}

std::set<std::string> missing_methods(const std::set<std::string>& names)
{
    return difference(
        exported([](const std::string& name, std::set<std::string>& methods) {
            std::smatch match;
            if (std::regex_search(name, match, std::regex("^KALV::XmlFile::([a-z]\\w*)\\b(?!=)")))
                methods.insert(match[1]);
        }),
        names);
}

std::set<std::string> methods_called_in(const std::string& source)
{
    const std::string text = support::content_of(KALV_TORTURE_SOURCES + source);
    const std::regex method_call("\\.(\\w+)\\(");
    std::set<std::string> methods;
    for (std::sregex_iterator at(text.begin(), text.end(), method_call); at != std::sregex_iterator(); ++at)
        methods.insert((*at)[1]);
    return methods;
}

} // namespace torture
