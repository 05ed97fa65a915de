// What methods take: texts and file names as the interpreter holds them, without a copy where it has one.
#ifndef KALV_PYTHON_ARGUMENTS_H
#define KALV_PYTHON_ARGUMENTS_H

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <string>
#include <variant>

namespace kalv_python {

namespace py = pybind11;

/// A `str` as UTF-8, without a zero byte in it. Lives as long as the argument that it was taken from.
class Text {
public:
    Text() = default;
    explicit Text(const char* text) : text_(text) {}
    const char* c_str() const noexcept { return text_; }
    bool empty() const noexcept { return *text_ == '\0'; }
    std::string string() const { return text_; }

private:
    const char* text_ = "";
};

/// The name of a file: a `str`, `bytes` or any path, as the file system spells it.
struct FileName {
    std::string bytes;
};

/// Bytes of any object that shows its memory, which stays in place as long as this lives.
class Bytes {
public:
    Bytes() = default;
    Bytes(const Bytes&) = delete;
    Bytes& operator=(const Bytes&) = delete;
    Bytes(Bytes&& other) noexcept : view_(other.view_) { other.view_ = {}; }
    Bytes& operator=(Bytes&&) = delete;
    ~Bytes() { PyBuffer_Release(&view_); }
    bool show(py::handle object) { return PyObject_GetBuffer(object.ptr(), &view_, PyBUF_SIMPLE) == 0; }
    const char* data() const noexcept { return static_cast<const char*>(view_.buf); }
    std::size_t size() const noexcept { return static_cast<std::size_t>(view_.len); }

private:
    Py_buffer view_{};
};

/// A value to set, already taken out of its object: a text, an integer or a real.
using Value = std::variant<Text, long, double>;

} // namespace kalv_python

namespace pybind11::detail {

template <>
struct type_caster<kalv_python::Text> {
    PYBIND11_TYPE_CASTER(kalv_python::Text, const_name("str"));
    bool load(handle source, bool)
    {
        if (!PyUnicode_Check(source.ptr()))
            return false;
        Py_ssize_t size = 0;
        const char* text = PyUnicode_AsUTF8AndSize(source.ptr(), &size);
        if (!text)
            throw error_already_set();
        if (std::char_traits<char>::length(text) != static_cast<std::size_t>(size))
            throw value_error("embedded null character");
        value = kalv_python::Text(text);
        return true;
    }
};

template <>
struct type_caster<kalv_python::FileName> {
    PYBIND11_TYPE_CASTER(kalv_python::FileName, const_name("str | bytes | os.PathLike"));
    bool load(handle source, bool)
    {
        PyObject* bytes = nullptr;
        if (!PyUnicode_FSConverter(source.ptr(), &bytes))
            throw error_already_set();
        value.bytes = reinterpret_steal<pybind11::bytes>(bytes);
        return true;
    }
};

template <>
struct type_caster<kalv_python::Bytes> {
    static constexpr auto name = const_name("bytes");
    bool load(handle source, bool)
    {
        if (!value_.show(source))
            throw error_already_set();
        return true;
    }
    template <class>
    using cast_op_type = kalv_python::Bytes&;
    operator kalv_python::Bytes&() { return value_; }

private:
    kalv_python::Bytes value_;
};

template <>
struct type_caster<kalv_python::Value> {
    PYBIND11_TYPE_CASTER(kalv_python::Value, const_name("str | int | float"));
    bool load(handle source, bool convert)
    {
        PyObject* object = source.ptr();
        if (PyUnicode_Check(object)) {
            make_caster<kalv_python::Text> text;
            text.load(source, convert);
            value = cast_op<kalv_python::Text>(text);
        } else if (PyIndex_Check(object)) {
            const auto index = reinterpret_steal<pybind11::object>(PyNumber_Index(object));
            value = index ? PyLong_AsLong(index.ptr()) : -1;
        } else if (PyNumber_Check(object)) {
            value = PyFloat_AsDouble(object);
        } else {
            return false;
        }
        if (PyErr_Occurred())
            throw error_already_set();
        return true;
    }
};

} // namespace pybind11::detail

#endif
