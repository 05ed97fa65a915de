#include "condition.h"

#include <algorithm>

namespace tool {

namespace {

bool holds(Document& document, const Condition& condition)
{
    document.check_path(condition.path);
    bool found = false;
    document.expand(document.absolute(condition.path), [&](const std::string& path) {
        const std::optional<std::string> value = document.value(path);
        found = found || (condition.kind == Condition::exists ? value.has_value() : value == condition.value);
    });
    return found == (condition.kind != Condition::differs);
}

} // namespace

Assignment parse_assignment(const std::string& text)
{
    const std::size_t sign = text.find('=');
    if (sign == std::string::npos)
        return {text, "", false};
    return {text.substr(0, sign), text.substr(sign + 1), true};
}

std::vector<Condition> parse_conditions(const std::vector<std::string>& texts)
{
    std::vector<Condition> conditions;
    for (const std::string& text : texts) {
        Assignment assignment = parse_assignment(text);
        Condition::Kind kind = assignment.has_value ? Condition::equals : Condition::exists;
        if (assignment.has_value && !assignment.path.empty() && assignment.path.back() == '!') {
            assignment.path.pop_back();
            kind = Condition::differs;
        }
        conditions.push_back({kind, assignment.path, assignment.value});
    }
    return conditions;
}

bool meets(Document& document, const std::vector<Condition>& conditions)
{
    return std::all_of(conditions.begin(), conditions.end(),
                       [&](const Condition& condition) { return holds(document, condition); });
}

} // namespace tool
