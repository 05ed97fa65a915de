#include "frame/last_report.h"

#include "frame/memory.h"

#include <kalv/status.h>

#include <algorithm>
#include <pthread.h>

namespace kh {

namespace {

/// A failure's text and the trace lines of its callers. What does not fit is left out.
struct LastReport {
    static constexpr std::size_t room = 8192;
    std::size_t length;
    char text[room];

    void add(std::string_view piece) noexcept { length += piece.copy(text + length, room - length); }
    std::string_view view() const noexcept { return {text, length}; }
};

/// Where each thread's report is. A key of the thread library costs threads that report nothing no memory,
/// and takes none of the little that a library loaded late can have of thread-local storage.
class LastReports {
public:
    LastReports() noexcept : has_key_(pthread_key_create(&key_, std::free) == 0) {}
    // Threads may outlast this object, so the key stays.

    LastReport* of_this_thread() const noexcept
    {
        return has_key_ ? static_cast<LastReport*>(pthread_getspecific(key_)) : nullptr;
    }

    /// The same, made when there is none yet; null when memory runs out.
    LastReport* made_for_this_thread() const noexcept
    {
        if (LastReport* report = of_this_thread())
            return report;
        Block<LastReport> fresh(static_cast<LastReport*>(std::malloc(sizeof(LastReport))));
        if (!fresh || !has_key_ || pthread_setspecific(key_, fresh.get()) != 0)
            return nullptr;
        fresh->length = 0;
        return fresh.release();
    }

private:
    pthread_key_t key_{};
    bool has_key_;
};

const LastReports& last_reports() noexcept
{
    static const LastReports reports;
    return reports;
}

} // namespace

void begin_last_report(std::string_view text) noexcept
{
    if (LastReport* report = last_reports().made_for_this_thread()) {
        report->length = 0;
        report->add(text);
    }
}

void add_to_last_report(std::string_view text) noexcept
{
    if (LastReport* report = last_reports().made_for_this_thread())
        report->add(text);
}

} // namespace kh

long KH_last_report(char* text, long size)
{
    const kh::LastReport* report = kh::last_reports().of_this_thread();
    const std::string_view all = report ? report->view() : std::string_view();
    if (text && size > 0)
        text[all.copy(text, static_cast<std::size_t>(size - 1))] = '\0';
    return static_cast<long>(all.size());
}
