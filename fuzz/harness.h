// What each target is: a function on the bytes that libFuzzer hands over, and what must hold of what the library
// does with them.
#ifndef KALV_FUZZ_HARNESS_H
#define KALV_FUZZ_HARNESS_H

#include "torture/memory.h"

#include <cstdlib>
#include <functional>
#include <fuzzer/FuzzedDataProvider.h>
#include <initializer_list>
#include <kalv/XmlFile.h>
#include <kalv/file_handling.h>
#include <string>

namespace fuzz {

using Bytes = FuzzedDataProvider;

/// The target: defined once in each program.
void run(Bytes& bytes);

/// True in runs in which allocations fail. A call may then report that instead of what it would report, so
/// judges that know the result have nothing to say; those on what stays unchanged and sound still do.
bool memory_fails();

/// Ends the process, with a message, unless something holds.
void check(bool holds, const char* what);

/// Checks a result that is known where memory lasts.
inline void check_result(bool holds, const char* what)
{
    check(holds || memory_fails(), what);
}

/// Checks that a status is one that the library's calls report in a process whose locks work.
void check_described(long status);

/// The function behind a pointer, called in a place where allocations may fail. Its last argument is the
/// status word. \return the status
template <class Function, class... Arguments>
long status_of(Function* function, Arguments... arguments)
{
    long status = KH_OK;
    {
        const torture::memory::Inside inside;
        function(arguments..., &status);
    }
    check_described(status);
    return status;
}

/// A body that uses the object interface. \return the status that it throws
long status_of_object(const std::function<void()>& body);

/// A text that the library hands out.
class Text {
public:
    Text() = default;
    ~Text() { std::free(value_); }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;

    char** out() { return &value_; }
    bool is_null() const { return !value_; }
    std::string string() const { return value_ ? value_ : ""; }

private:
    char* value_ = nullptr;
};

/// An array that the library hands out, with the texts in it.
template <class Entry>
class Array {
public:
    Array() = default;
    ~Array()
    {
        if constexpr (std::is_pointer_v<Entry>)
            for (long i = 0; i < count_; ++i)
                std::free(entries_[i]);
        std::free(entries_);
    }
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;

    Entry** out() { return &entries_; }
    long* count_out() { return &count_; }
    long count() const { return count_; }
    Entry operator[](long i) const { return entries_[i]; }

private:
    Entry* entries_ = nullptr;
    long count_ = 0;
};

} // namespace fuzz

#endif
