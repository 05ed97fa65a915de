#include "frame/number.h"

#include "frame/locale.h"

#include <charconv>
#include <cstdlib>
#include <cstring>

namespace kh {

namespace {

bool is_space(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}
/// 10 or more for what is no digit.
unsigned digit_value(char c)
{
    return static_cast<unsigned char>(c) - unsigned{'0'};
}
bool is_digit(char c)
{
    return digit_value(c) < 10;
}

const char* skip_spaces(const char* text)
{
    while (is_space(*text))
        ++text;
    return text;
}

/// A number of many digits, which may overflow. Accumulated below zero, where a long reaches one further.
Parsed<long> parse_long_integer(const char* digit, bool negative) noexcept
{
    long value = 0;
    for (; is_digit(*digit); ++digit) {
        if (__builtin_mul_overflow(value, 10L, &value) ||
            __builtin_sub_overflow(value, long{*digit - '0'}, &value))
            return {negative ? LONG_MIN : LONG_MAX, true};
    }
    if (!negative && value == LONG_MIN)
        return {LONG_MAX, true};
    return {negative ? value : -value, true};
}

} // namespace

Parsed<long> parse_integer(const char* text) noexcept
{
    const char* digit = text;
    bool negative = false;
    if (!is_digit(*digit)) { // few numbers are signed, or behind spaces
        digit = skip_spaces(text);
        negative = *digit == '-';
        if (negative || *digit == '+')
            ++digit;
        if (!is_digit(*digit))
            return {0, false};
    }
    // No overflow is possible within eighteen digits, and few numbers have more.
    const char* const first = digit;
    unsigned long magnitude = 0;
    for (unsigned value; (value = digit_value(*digit)) < 10; ++digit)
        magnitude = 10 * magnitude + value;
    if (digit - first <= 18) {
        const auto value = static_cast<long>(magnitude);
        return {negative ? -value : value, true};
    }
    return parse_long_integer(first, negative);
}

Parsed<double> parse_real(const char* text) noexcept
{
    // from_chars reads what nearly all texts are, faster and to the same bits; signs of "+", hexadecimals,
    // "inf", "nan", and what over- or underflows are left to strtod.
    const char* start = skip_spaces(text);
    const char* digits = start + (*start == '-');
    if (is_digit(*digits) && digits[1] != 'x' && digits[1] != 'X') {
        double value = 0;
        const std::from_chars_result result = std::from_chars(start, digits + std::strlen(digits), value);
        if (result.ec == std::errc())
            return {value, true};
    }
    char* end = nullptr;
    const double value = strtod_l(start, &end, c_locale());
    return {value, end != start};
}

} // namespace kh
