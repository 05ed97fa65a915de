// A child of a process with several threads has the one that forked. The lock of the table must not come into it
// locked by another one, for which every call that opens or releases a document would wait for ever.
#include <kalv/document.h>

#include <ctime>

namespace kh {

namespace {

thread_local bool is_held = false; ///< for the fork that this thread is about to do

/// No thread holds the lock for long. One that forks while it holds the lock itself keeps it, in its child, too.
void hold_lock() noexcept
{
    timespec end;
    clock_gettime(CLOCK_MONOTONIC, &end);
    ++end.tv_sec;
    is_held = pthread_mutex_clocklock(&parser_mutex, CLOCK_MONOTONIC, &end) == 0;
}

void give_lock_back() noexcept
{
    if (is_held)
        pthread_mutex_unlock(&parser_mutex);
}

/// Undone when the library is unloaded. It fails only without memory at the start of a process, and forks are as
/// they were without it.
[[gnu::constructor]] void hold_lock_during_forks() noexcept
{
    pthread_atfork(hold_lock, give_lock_back, give_lock_back);
}

} // namespace

} // namespace kh
