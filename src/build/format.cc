#include "build/format.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace kh {

namespace {

struct Rule {
    std::string_view conversions;
    Conversion conversion;
    std::string_view lengths[9]; ///< length modifiers under which it takes the value that it is given
};

constexpr Rule rules[] = {
    {"s", Conversion::text, {""}},
    {"dioxuX", Conversion::integer, {"", "hh", "h", "l", "ll", "j", "z", "t"}},
    {"aAeEfFgG", Conversion::real, {"", "l"}},
};

/// Takes the characters off the front that belong to a set.
std::string_view take(std::string_view& format, std::string_view set) noexcept
{
    const std::size_t length = std::min(format.find_first_not_of(set), format.size());
    const std::string_view taken = format.substr(0, length);
    format.remove_prefix(length);
    return taken;
}

/// Takes one conversion off a format, behind its "%".
Conversion take_conversion(std::string_view& format) noexcept
{
    constexpr std::string_view digits = "0123456789";
    take(format, "-+ #0'");
    take(format, digits);
    if (format.substr(0, 1) == ".") {
        format.remove_prefix(1);
        take(format, digits);
    }
    const std::string_view length = take(format, "hljzt");
    if (format.empty())
        return Conversion::invalid;
    const char letter = format[0];
    format.remove_prefix(1);
    for (const Rule& rule : rules) {
        if (rule.conversions.find(letter) == std::string_view::npos)
            continue;
        const bool fits =
            std::find(std::begin(rule.lengths), std::end(rule.lengths), length) != std::end(rule.lengths);
        return fits ? rule.conversion : Conversion::invalid;
    }
    return Conversion::invalid;
}

} // namespace

Conversion conversion_of(const char* text) noexcept
{
    Conversion found = Conversion::none;
    std::string_view format = text;
    for (;;) {
        format.remove_prefix(std::min(format.find('%'), format.size()));
        if (format.empty())
            return found;
        format.remove_prefix(1);
        if (format.substr(0, 1) == "%") {
            format.remove_prefix(1);
            continue;
        }
        const Conversion conversion = take_conversion(format);
        if (conversion == Conversion::invalid || found != Conversion::none)
            return Conversion::invalid;
        found = conversion;
    }
}

} // namespace kh
