// What calls hand out: values and arrays, owned until they are the interpreter's.
#ifndef KALV_PYTHON_RESULTS_H
#define KALV_PYTHON_RESULTS_H

#include <cstdlib>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <type_traits>
#include <utility>

namespace kalv_python {

inline pybind11::str as_str(const char* text)
{
    auto made = pybind11::reinterpret_steal<pybind11::str>(PyUnicode_FromString(text));
    if (!made)
        throw pybind11::error_already_set();
    return made;
}

/// A value that a call stores: a number, or a text, which is owned.
template <class Stored>
class Received {
public:
    Received() = default;
    Received(Received&& other) noexcept : value_(std::exchange(other.value_, Stored())) {}
    Received(const Received&) = delete;
    Received& operator=(const Received&) = delete;
    Received& operator=(Received&&) = delete;
    ~Received()
    {
        if constexpr (std::is_pointer_v<Stored>)
            std::free(value_);
    }
    Stored* address() noexcept { return &value_; }

    pybind11::object in_python() const
    {
        if constexpr (std::is_pointer_v<Stored>)
            return as_str(value_ ? value_ : "");
        else
            return pybind11::cast(value_);
    }

private:
    Stored value_{};
};

/// An array that a call stores, owned with the texts in it.
template <class Stored>
class Array {
public:
    Array() = default;
    Array(Array&& other) noexcept
        : entries_(std::exchange(other.entries_, nullptr)), count_(std::exchange(other.count_, 0))
    {
    }
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;
    Array& operator=(Array&&) = delete;
    ~Array()
    {
        if constexpr (std::is_pointer_v<Stored>)
            for (Stored text : *this)
                std::free(text);
        std::free(entries_);
    }
    Stored** address() noexcept { return &entries_; }
    long* count() noexcept { return &count_; }
    const Stored* begin() const noexcept { return entries_; }
    const Stored* end() const noexcept { return entries_ + count_; }

    /// A list of texts; or an array of numpy's, which takes over the block and frees it with the last array
    /// that shows it.
    pybind11::object in_python()
    {
        if constexpr (std::is_pointer_v<Stored>) {
            pybind11::list list;
            for (const char* text : *this)
                list.append(as_str(text));
            return list;
        } else {
            if (!entries_)
                return pybind11::array_t<Stored>(0);
            const pybind11::capsule owner(entries_, std::free);
            return pybind11::array_t<Stored>(std::exchange(count_, 0), std::exchange(entries_, nullptr),
                                             owner);
        }
    }

private:
    Stored* entries_ = nullptr;
    long count_ = 0;
};

/// Texts as an array of numpy's own kind, in which all are as wide as the longest.
pybind11::array text_array(const Array<char*>& texts);

} // namespace kalv_python

namespace pybind11::detail {

template <class Result>
struct result_caster {
    static handle cast(Result&& result, return_value_policy, handle) { return result.in_python().release(); }
};
template <class Stored>
struct type_caster<kalv_python::Received<Stored>> : result_caster<kalv_python::Received<Stored>> {
    static constexpr auto name = make_caster<Stored>::name;
};
template <class Stored>
struct type_caster<kalv_python::Array<Stored>> : result_caster<kalv_python::Array<Stored>> {
    static constexpr auto name = const_name<std::is_pointer_v<Stored>>("list[str]", "numpy.ndarray");
};

} // namespace pybind11::detail

#endif
