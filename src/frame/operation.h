// What every exported function shares: its report, the caller's status word, and passing a callee's status
// on.
#ifndef KALV_FRAME_OPERATION_H
#define KALV_FRAME_OPERATION_H

#include <kalv/status.h>
#include <new>
#include <optional>

namespace kh {

/// For the few functions that leave the caller's status as they find it.
struct KeepStatus {};

/// One call of an exported function: its public name, its report and the caller's status word.
///
/// The name is given as text, not as __func__: it belongs to the interface, and one function reports under
/// another's name. One report lives for the whole call, so what was reported before stands above a later
/// trace line.
class Operation {
public:
    Operation(const char* name, long* ierr) noexcept : Operation(name, ierr, KeepStatus())
    {
        *status_ = KH_OK;
    }
    Operation(const char* name, long* ierr, KeepStatus) noexcept
        : name_(name), status_(ierr ? ierr : &own_status_)
    {
    }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    long status() const noexcept { return *status_; }
    bool failed() const noexcept { return *status_ < 0; }
    /// The status word, for callees.
    long* error_vector() noexcept { return status_; }

    /// Reports a code: its text and this function's name, with a detail behind it if there is one. \return
    /// the code
    long fail(long code) noexcept
    {
        return store(kh_handle_error(report(), code, 1, "\n\tFunction: %s", name_));
    }
    [[gnu::format(printf, 3, 4)]] long fail(long code, const char* detail, ...) noexcept;
    /// Adds a line to the thread's last report alone: what verbose mode prints is compared by callers.
    void explain(const char* text) noexcept;
    void explain(const char* subject, const char* text) noexcept;
    long null_argument() noexcept { return fail(KH_ERR_ARGUMENT, ". Input argument is NULL"); }

    /// Passes on what a callee left in the status word: adds the trace line of this function. \return the
    /// status
    long pass_on() noexcept { return pass_on(*status_); }
    /// The same with another code than the callee's.
    long pass_on(long code) noexcept
    {
        return store(kh_handle_error(report(), code, 0, "\n\tFunction: %s", name_));
    }
    [[gnu::format(printf, 3, 4)]] long pass_on(long code, const char* detail, ...) noexcept;

    /// Runs what may run out of memory in a container of its own, and reports that.
    template <class Body>
    void guarded(Body body) noexcept
    {
        try {
            body();
        } catch (const std::bad_alloc&) {
            fail(KH_ERR_MEMORY);
        }
    }

private:
    /// The report, empty at first.
    kh_error_record* report() noexcept
    {
        if (!report_)
            kh_init_error(&report_.emplace());
        return &*report_;
    }
    long store(long reported) noexcept { return *status_ = reported; }

    const char* name_;
    long own_status_ = KH_OK;
    long* status_;
    std::optional<kh_error_record> report_; // most calls report nothing, and need not pay for it
};

} // namespace kh

#endif
