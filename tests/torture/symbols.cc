#include "torture/symbols.h"

#include <dlfcn.h>
#include <fstream>

namespace torture {

std::string name_of(const void* function)
{
    Dl_info info;
    return dladdr(function, &info) && info.dli_sname ? info.dli_sname : "";
}

std::set<std::string> missing_functions(const std::set<std::string>& names)
{
    std::set<std::string> missing;
    std::ifstream list(KALV_EXPORTED_SYMBOLS);
    for (std::string kind, name; list >> kind >> name;)
        if (kind == "T" && (name.rfind("kh_", 0) == 0 || name.rfind("KH_", 0) == 0) && !names.count(name))
            missing.insert(name);
    return missing;
}

} // namespace torture
