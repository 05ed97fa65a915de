// Numbers at the start of a text, with the acceptance of strtol and strtod in the "C" locale.
#ifndef KALV_FRAME_NUMBER_H
#define KALV_FRAME_NUMBER_H

#include <climits>
#include <cmath>

namespace kh {

/// A number and whether there was one; as strtol and strtod, an overflow yields the largest number of its
/// sign.
template <class Number>
struct Parsed {
    Number value;
    bool found;
};

Parsed<long> parse_integer(const char* text) noexcept;
Parsed<double> parse_real(const char* text) noexcept;

template <class Number>
Parsed<Number> parse(const char* text) noexcept;
template <>
inline Parsed<long> parse<long>(const char* text) noexcept
{
    return parse_integer(text);
}
template <>
inline Parsed<double> parse<double>(const char* text) noexcept
{
    return parse_real(text);
}

/// The largest long spelled out is refused like an overflow: callers rely on that.
inline bool is_out_of_range(long value) noexcept
{
    return value == LONG_MAX || value == LONG_MIN;
}
inline bool is_out_of_range(double value) noexcept
{
    return std::isinf(value);
}

/// True for what converts without a report.
template <class Number>
bool is_number(const Parsed<Number>& parsed) noexcept
{
    return parsed.found && !is_out_of_range(parsed.value);
}

/// The exported conversion for a type of number, which reports.
template <class Number>
Number converted(const char* text, long* ierr) noexcept;
template <>
long converted<long>(const char* text, long* ierr) noexcept;
template <>
double converted<double>(const char* text, long* ierr) noexcept;

} // namespace kh

#endif
