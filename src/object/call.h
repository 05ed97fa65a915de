// How a method calls the procedural interface: texts go in, the status comes out, and every status but 0 is
// thrown, warnings included. Whatever the call allocated is freed on every way out.
#ifndef KALV_OBJECT_CALL_H
#define KALV_OBJECT_CALL_H

#include "frame/memory.h"
#include "frame/operation.h"

#include <cstring>
#include <iterator>
#include <string>
#include <type_traits>
#include <vector>

namespace kh {

/// Throws a KALV::KalvError that carries a method's name and a code.
[[noreturn]] void throw_error(const char* method, long code);

/// The name of an element or attribute in a read: the empty one is handed on as null.
struct ReadName {
    const std::string& name;
};

inline const char* handed_on(const std::string& text) noexcept
{
    return text.c_str();
}
inline const char* handed_on(ReadName read) noexcept
{
    return read.name.empty() ? nullptr : read.name.c_str();
}
template <class Pointer>
Pointer handed_on(Pointer pointer) noexcept
{
    return pointer;
}

/// False for a text with a zero byte in it, of which a call would see the beginning only.
inline bool is_whole(const std::string& text) noexcept
{
    return std::strlen(text.c_str()) == text.size(); // faster than to search for one
}
inline bool is_whole(ReadName read) noexcept
{
    return is_whole(read.name);
}
template <class Pointer>
bool is_whole(Pointer) noexcept
{
    return true;
}

/// Calls a function with the arguments and a status word behind them. \return the status
template <class Function, class... Arguments>
long status_of(const char* method, Function function, const Arguments&... arguments)
{
    long status = KH_OK;
    if ((is_whole(arguments) && ...))
        function(handed_on(arguments)..., &status);
    else
        Operation(method, &status).fail(KH_ERR_ARGUMENT);
    return status;
}

/// The same for a call that must succeed. \return 0
template <class Function, class... Arguments>
long call(const char* method, Function function, const Arguments&... arguments)
{
    const long status = status_of(method, function, arguments...);
    if (status != KH_OK)
        throw_error(method, status);
    return status;
}

/// Receives a value that a call stores: a number, or a text, which is owned.
template <class Value>
class Received {
public:
    Received() = default;
    Received(const Received&) = delete;
    Received& operator=(const Received&) = delete;
    ~Received()
    {
        if constexpr (std::is_pointer_v<Value>)
            std::free(value_);
    }
    Value* address() noexcept { return &value_; }

    auto result() const
    {
        if constexpr (std::is_pointer_v<Value>)
            return std::string(value_ ? value_ : "");
        else
            return value_;
    }

private:
    Value value_{};
};

/// Reads a value of type Value: `char*`, `long` or `double`.
template <class Value, class Function, class... Arguments>
auto read_value(const char* method, Function read, const Arguments&... arguments)
{
    Received<Value> received;
    call(method, read, arguments..., received.address());
    return received.result();
}

/// Receives an array that a call stores, and the texts in it.
template <class Entry>
class ReceivedArray {
public:
    ReceivedArray() = default;
    ReceivedArray(const ReceivedArray&) = delete;
    ReceivedArray& operator=(const ReceivedArray&) = delete;
    ~ReceivedArray()
    {
        if constexpr (std::is_pointer_v<Entry>)
            for (long i = 0; i < count_; ++i)
                std::free(entries_[i]);
        std::free(entries_);
    }
    Entry** address() noexcept { return &entries_; }
    long* count() noexcept { return &count_; }

    /// Appends all or, where memory runs out, nothing.
    template <class Value>
    void append_to(std::vector<Value>& values) const
    {
        if constexpr (std::is_same_v<Entry, Value>) {
            values.insert(values.end(), entries_, entries_ + count_);
        } else {
            // Made beside the vector: a text that failed inside it would cost the texts that it holds.
            std::vector<Value> made(entries_, entries_ + count_);
            values.insert(values.end(), std::make_move_iterator(made.begin()),
                          std::make_move_iterator(made.end()));
        }
    }

private:
    Entry* entries_ = nullptr;
    long count_ = 0;
};

/// Appends the array that a call reads.
template <class Entry, class Value, class Function, class... Arguments>
void read_array(std::vector<Value>& values, const char* method, Function read, const Arguments&... arguments)
{
    ReceivedArray<Entry> array;
    call(method, read, arguments..., array.address(), array.count());
    array.append_to(values);
}

} // namespace kh

#endif
