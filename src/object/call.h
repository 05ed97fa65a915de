// How a method calls the procedural interface: texts go in, the status comes out, and every status but 0 is
// thrown, warnings included. Whatever the call allocated is freed on every way out.
#ifndef KALV_OBJECT_CALL_H
#define KALV_OBJECT_CALL_H

#include "frame/memory.h"
#include "frame/operation.h"
#include "read/value.h"

#include <cstring>
#include <functional>
#include <iterator>
#include <string>
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
    return read.name.empty() || is_whole(read.name);
}
template <class Pointer>
bool is_whole(Pointer) noexcept
{
    return true;
}

/// Calls a function with the arguments and a status word behind them. \return the status
template <class Function, class... Arguments>
[[gnu::always_inline]] inline long status_of(const char* method, Function function,
                                             const Arguments&... arguments)
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
[[gnu::always_inline]] inline long call(const char* method, Function function, const Arguments&... arguments)
{
    const long status = status_of(method, function, arguments...);
    if (status != KH_OK)
        throw_error(method, status);
    return status;
}

/// Receives a text that a call makes, and owns it.
class ReceivedText {
public:
    ReceivedText() = default;
    ReceivedText(const ReceivedText&) = delete;
    ReceivedText& operator=(const ReceivedText&) = delete;
    ~ReceivedText() { std::free(text_); }
    char** address() noexcept { return &text_; }

    std::string text() const { return text_ ? text_ : ""; }

private:
    char* text_ = nullptr;
};

/// Reads a value of type Number: `long` or `double`.
template <class Number, class Function, class... Arguments>
[[gnu::always_inline]] inline Number read_value(const char* method, Function read,
                                                const Arguments&... arguments)
{
    Number number = 0;
    call(method, read, arguments..., &number);
    return number;
}

/// The same for a value whose text may be known already.
template <class Number, class Function, class... Arguments>
[[gnu::always_inline]] inline Number read_known_value(const char* known, const char* method, Function read,
                                                      const Arguments&... arguments)
{
    Number number = 0;
    return take_number(known, &number) ? number : read_value<Number>(method, read, arguments...);
}

/// Reads a text, which is copied once, from where it stands.
template <class Function, class... Arguments>
std::string read_text(const char* method, Function read, const Arguments&... arguments)
{
    TextTarget target = TextTarget::in_place();
    call(method, read, arguments..., std::ref(target));
    return target.text();
}

/// Receives an array of numbers that a call stores.
template <class Number>
class ReceivedArray {
public:
    ReceivedArray() = default;
    ReceivedArray(const ReceivedArray&) = delete;
    ReceivedArray& operator=(const ReceivedArray&) = delete;
    ~ReceivedArray() { std::free(numbers_); }
    Number** address() noexcept { return &numbers_; }
    long* count() noexcept { return &count_; }

    /// Appends all or, where memory runs out, nothing.
    void append_to(std::vector<Number>& values) const
    {
        values.insert(values.end(), numbers_, numbers_ + count_);
    }

private:
    Number* numbers_ = nullptr;
    long count_ = 0;
};

/// Appends the numbers that a call reads.
template <class Number, class Function, class... Arguments>
void read_array(std::vector<Number>& values, const char* method, Function read, const Arguments&... arguments)
{
    ReceivedArray<Number> array;
    call(method, read, arguments..., array.address(), array.count());
    array.append_to(values);
}

/// Appends the texts that a call reads: all or, where anything fails, none.
template <class Function, class... Arguments>
void read_strings(std::vector<std::string>& values, const char* method, Function read,
                  const Arguments&... arguments)
{
    std::vector<std::string> strings;
    call(method, read, arguments..., std::ref(strings));
    values.insert(values.end(), std::make_move_iterator(strings.begin()),
                  std::make_move_iterator(strings.end()));
}

} // namespace kh

#endif
