#include "frame/operation.h"

#include "frame/last_report.h"

#include <cstdarg>
#include <cstdio>

namespace kh {

namespace {

/// A detail, printed. The report takes at most 510 characters, so nothing that it could show is lost here.
struct Detail {
    Detail(const char* format, va_list arguments) noexcept
    {
        if (std::vsnprintf(text, sizeof text, format, arguments) < 0)
            text[0] = '\0';
    }
    char text[KH_MESSAGE_SIZE];
};

} // namespace

long Operation::fail(long code, const char* detail, ...) noexcept
{
    va_list arguments;
    va_start(arguments, detail);
    const Detail printed(detail, arguments);
    va_end(arguments);
    return store(kh_handle_error(report(), code, 1, "\n\tFunction: %s%s", name_, printed.text));
}

void Operation::explain(const char* text) noexcept
{
    add_to_last_report("\n\t");
    add_to_last_report(text);
}

void Operation::explain(const char* subject, const char* text) noexcept
{
    explain(subject);
    add_to_last_report(": ");
    add_to_last_report(text);
}

long Operation::pass_on(long code, const char* detail, ...) noexcept
{
    va_list arguments;
    va_start(arguments, detail);
    const Detail printed(detail, arguments);
    va_end(arguments);
    return store(kh_handle_error(report(), code, 0, "\n\tFunction: %s%s", name_, printed.text));
}

} // namespace kh
