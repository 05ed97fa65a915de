// Printing formats of callers: which are safe to hand to vsnprintf, and for what type of value.
#ifndef KALV_BUILD_FORMAT_H
#define KALV_BUILD_FORMAT_H

namespace kh {

/// What the conversion of a format prints.
enum class Conversion {
    invalid, ///< more than one conversion, an unknown one, or one that needs further arguments
    none,    ///< a constant text
    text,
    integer,
    real
};

Conversion conversion_of(const char* format) noexcept;

} // namespace kh

#endif
