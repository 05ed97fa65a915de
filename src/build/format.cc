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

/// One of a few characters.
template <char... characters>
bool is_one_of(char c) noexcept
{
    return ((c == characters) || ...);
}
bool is_digit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

/// Takes the characters off the front that are of a kind.
template <class Kind>
std::string_view take(std::string_view& format, Kind is_of_the_kind) noexcept
{
    std::size_t length = 0;
    while (length < format.size() && is_of_the_kind(format[length]))
        ++length;
    const std::string_view taken = format.substr(0, length);
    format.remove_prefix(length);
    return taken;
}

/// Takes one conversion off a format, behind its "%".
Conversion take_conversion(std::string_view& format) noexcept
{
    take(format, is_one_of<'-', '+', ' ', '#', '0', '\''>);
    take(format, is_digit);
    if (format.substr(0, 1) == ".") {
        format.remove_prefix(1);
        take(format, is_digit);
    }
    const std::string_view length = take(format, is_one_of<'h', 'l', 'j', 'z', 't'>);
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
