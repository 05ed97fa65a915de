// System calls that a signal may interrupt.
#ifndef KALV_FRAME_SYSTEM_H
#define KALV_FRAME_SYSTEM_H

#include <cerrno>

namespace kh {

/// Makes a system call, and makes it again when a signal interrupted it.
template <class Call>
auto uninterrupted(Call call) noexcept
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

} // namespace kh

#endif
