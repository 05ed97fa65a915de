#include <kalv/text.h>

#include "frame/memory.h"
#include "frame/number.h"
#include "frame/operation.h"

#include <cstring>

namespace kh {

namespace {

template <class Number>
Number convert(const char* function_name, long no_number, const char* text, long* ierr) noexcept
{
    Operation op(function_name, ierr);
    if (!text) {
        op.null_argument();
        return 0;
    }
    const Parsed<Number> number = parse<Number>(text);
    if (!number.found)
        op.fail(no_number, ". Value: %s", text);
    else if (is_out_of_range(number.value))
        op.fail(KH_ERR_RANGE, ". Value: %s", text);
    return number.value;
}

} // namespace

template <>
long converted<long>(const char* text, long* ierr) noexcept
{
    return kh_string_to_integer(text, ierr);
}
template <>
double converted<double>(const char* text, long* ierr) noexcept
{
    return kh_string_to_real(text, ierr);
}

} // namespace kh

using kh::Block;
using kh::KeepStatus;
using kh::Operation;

long kh_strncpy(char** dst, const char* src, long* ierr)
{
    long unchanged = KH_OK;
    Operation op("kh_strncpy", &unchanged);
    if (!dst)
        op.null_argument();
    else if (!(*dst = kh::copy_of(src ? src : "").release()))
        op.fail(KH_ERR_MEMORY);
    if (op.failed() && ierr)
        *ierr = op.status();
    return op.status();
}

long kh_string_to_integer(const char* s, long* ierr)
{
    return kh::convert<long>("kh_string_to_integer", KH_ERR_NOT_INTEGER, s, ierr);
}

double kh_string_to_real(const char* s, long* ierr)
{
    return kh::convert<double>("kh_string_to_real", KH_ERR_NOT_REAL, s, ierr);
}

void kh_strtoken(const char* src, const char* delims, char* buf, char** tokens, long* count)
{
    if (!count)
        return;
    *count = 0;
    if (!src || !delims || !buf || !tokens)
        return;
    bool inside = false;
    for (;; ++src, ++buf) {
        const char next = *src; // callers may split a text where it stands
        const bool delimiter = next == '\0' || std::strchr(delims, next);
        *buf = delimiter ? '\0' : next;
        if (!delimiter && !inside)
            tokens[(*count)++] = buf;
        inside = !delimiter;
        if (next == '\0')
            return;
    }
}

long KH_alloc_array(long n, long size, void** array, const char* function_name, long* ierr)
{
    Operation op(function_name ? function_name : "KH_alloc_array", ierr, KeepStatus());
    if (!array || !function_name) {
        op.null_argument();
        return 0;
    }
    long bytes = 0;
    const bool possible = n >= 0 && size >= 0 && !__builtin_mul_overflow(n, size, &bytes);
    // One byte at least: an empty array is a block like any other, not the null that reports a failure.
    void* resized =
        possible ? std::realloc(*array, bytes > 0 ? static_cast<std::size_t>(bytes) : 1) : nullptr;
    if (!resized) {
        std::free(*array);
        op.fail(KH_ERR_MEMORY);
    }
    *array = resized;
    return 0;
}
