// Which files a command takes: "-w PATH=VALUE".
#ifndef KALV_TOOLS_CONDITION_H
#define KALV_TOOLS_CONDITION_H

#include "document.h"

namespace tool {

/// A path and a value that are written as one text, "PATH=VALUE". Paths hold no "=".
struct Assignment {
    std::string path;
    std::string value;
    bool has_value = false;
};

Assignment parse_assignment(const std::string& text);

struct Condition {
    enum Kind { exists, equals, differs } kind;
    std::string path;
    std::string value;
};

std::vector<Condition> parse_conditions(const std::vector<std::string>& texts);

/// True where all conditions hold. A path with "[*]" has a value where one of its nodes has it.
bool meets(Document& document, const std::vector<Condition>& conditions);

} // namespace tool

#endif
