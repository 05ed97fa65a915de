// Values: single ones, arrays of them, and searches.
#include "document.h"
#include "results.h"

#include <kalv/read.h>
#include <vector>

namespace kalv_python {

namespace {

/// The functions that read values of a type, and what Python calls the type.
template <class Stored>
struct Reads;

template <>
struct Reads<char*> {
    static constexpr auto suffix = "string", description = "text";
    static constexpr auto element = kh_tree_read_string_element_value;
    static constexpr auto attribute = kh_tree_read_string_attribute;
    static constexpr auto path = kh_tree_path_read_string_node_value;
    static constexpr auto element_array = kh_tree_read_string_element_array;
    static constexpr auto path_array = kh_tree_path_read_string_node_array;
};
template <>
struct Reads<long> {
    static constexpr auto suffix = "int", description = "integer";
    static constexpr auto element = kh_tree_read_integer_element_value;
    static constexpr auto attribute = kh_tree_read_integer_attribute;
    static constexpr auto path = kh_tree_path_read_integer_node_value;
    static constexpr auto element_array = kh_tree_read_integer_element_array;
    static constexpr auto path_array = kh_tree_path_read_integer_node_array;
};
template <>
struct Reads<double> {
    static constexpr auto suffix = "real", description = "real";
    static constexpr auto element = kh_tree_read_real_element_value;
    static constexpr auto attribute = kh_tree_read_real_attribute;
    static constexpr auto path = kh_tree_path_read_real_node_value;
    static constexpr auto element_array = kh_tree_read_real_element_array;
    static constexpr auto path_array = kh_tree_path_read_real_node_array;
};

/// The name of an element in a read; the empty one is the name asked for before.
const char* asked_for(Text name)
{
    return name.empty() ? nullptr : name.c_str();
}

template <class Stored, class Function, class... Names>
Received<Stored> read(Call& call, Function function, Names... names)
{
    Received<Stored> value;
    call.run(function, names..., value.address());
    return value;
}

template <class Stored, class Function>
Array<Stored> read_array(Call& call, Function function, const char* name)
{
    Array<Stored> array;
    const InterpreterReleased released;
    call.run(function, name, array.address(), array.count());
    return array;
}

/// The reads of the object interface, for one type of value.
template <class Stored>
void define_typed_reads(Methods& methods)
{
    using Functions = Reads<Stored>;
    const std::string suffix = std::string("_as_") + Functions::suffix;
    const auto documented = [](const std::string& text) {
        return "As " + (Functions::description + (": " + text));
    };

    methods.add(
        "get_element_value" + suffix,
        +[](Call& call, Text element) { return read<Stored>(call, Functions::element, asked_for(element)); },
        py::arg("element"),
        documented(
            "the value of the next element of a name behind the cursor, which moves there. An empty name is "
            "the one asked for before.")
            .c_str());
    methods.add(
        "get_attribute_value" + suffix,
        +[](Call& call, Text element, Text attribute) {
            return read<Stored>(call, Functions::attribute, asked_for(element), asked_for(attribute));
        },
        py::arg("element"), py::arg("attribute"),
        documented(
            "an attribute of the element under the cursor if that has the name, else of the next one that "
            "has it; the cursor moves there. An empty name is the one asked for before.")
            .c_str());
    methods.add(
        "get_path_value" + suffix,
        +[](Call& call, Text path) { return read<Stored>(call, Functions::path, path.c_str()); },
        py::arg("path"),
        documented("the value of the element or attribute at a path, along which the cursor moves.").c_str());
    methods.add(
        "get_element_array" + suffix,
        +[](Call& call, Text element) {
            return read_array<Stored>(call, Functions::element_array, element.c_str());
        },
        py::arg("element"), documented("the values of all elements of a name.").c_str());
    methods.add(
        "get_path_array" + suffix,
        +[](Call& call, Text path) { return read_array<Stored>(call, Functions::path_array, path.c_str()); },
        py::arg("path"),
        documented("the values of all nodes that a path with one \"[*]\" stands for.").c_str());
}

bool is_missing(long code)
{
    return code == KH_ERR_NOT_FOUND || code == KH_ERR_NO_ATTRIBUTE || code == KH_ERR_NO_VALUE;
}

/// The value at a path, or the default where there is none; `...` stands for no default.
template <class Stored>
py::object value_or(Document& document, const char* function, Text path, const py::object& otherwise)
{
    bool found = true;
    const Received<Stored> value = perform(document, function, [&](Call& call) {
        Received<Stored> read;
        found = call.attempt(Reads<Stored>::path, path.c_str(), read.address());
        if (!found && (otherwise.is(py::ellipsis()) || !is_missing(call.status)))
            throw Failure{call.status};
        if (!found)
            call.status = KH_OK;
        return read;
    });
    return found ? value.in_python() : otherwise;
}

bool contains(Call& call, Text path)
{
    Received<char*> value;
    const bool found = call.attempt(kh_tree_path_read_string_node_value, path.c_str(), value.address());
    const long code = std::exchange(call.status, KH_OK);
    if (!found && code != KH_ERR_NOT_TERMINAL && !is_missing(code))
        throw Failure{code};
    return found || code == KH_ERR_NO_VALUE || code == KH_ERR_NOT_TERMINAL;
}

template <class Stored>
Array<Stored> path_array(Document& document, Text path)
{
    return perform(document, "XmlFile.values", [&](Call& call) {
        return read_array<Stored>(call, Reads<Stored>::path_array, path.c_str());
    });
}

py::array converted(const py::array& array, const py::dtype& type)
{
    return array.attr("astype")(type, py::arg("copy") = false);
}

/// Integers in a type of another width, where numpy would cut those that do not fit.
py::array converted_integers(const py::array& integers, const py::dtype& type)
{
    py::array result = converted(integers, type);
    if (!result.is(integers) &&
        !py::module_::import("numpy").attr("array_equal")(integers, result).cast<bool>()) {
        PyErr_SetString(PyExc_OverflowError, "a value does not fit the dtype");
        throw py::error_already_set();
    }
    return result;
}

/// Numbers are read as such. All else is numpy's conversion of the texts.
py::object values(Document& document, Text path, const py::object& dtype)
{
    const py::dtype type = py::dtype::from_args(dtype);
    switch (type.kind()) {
    case 'f':
        return converted(path_array<double>(document, path).in_python(), type);
    case 'i':
    case 'u':
        return converted_integers(path_array<long>(document, path).in_python(), type);
    case 'O':
        return py::module_::import("numpy").attr("array")(path_array<char*>(document, path).in_python(),
                                                          type);
    default:
        return converted(text_array(path_array<char*>(document, path)), type);
    }
}

std::vector<std::string> list_values(Call& call, Text list_path, Text item)
{
    std::vector<std::string> values;
    call.file.getStringValuesFromList(list_path.string(), item.string(), values);
    return values;
}

} // namespace

void define_reads(Methods& methods)
{
    define_typed_reads<char*>(methods);
    define_typed_reads<long>(methods);
    define_typed_reads<double>(methods);

    auto& type = methods.type;
    type.def(
        "__getitem__",
        [](Document& document, Text path) {
            return value_or<char*>(document, "XmlFile[]", path, py::ellipsis());
        },
        py::arg("path"), "The text of the element or attribute at a path, along which the cursor moves.");
    methods.add("__contains__", &contains, py::arg("path"),
                "Whether a path leads to an element or attribute.");
    type.def(
        "get",
        [](Document& document, Text path, const py::object& otherwise) {
            return value_or<char*>(document, "XmlFile.get", path, otherwise);
        },
        py::arg("path"), py::arg("default") = py::none(),
        R"(The text at a path, or the default where there is no value.

>>> doc = kalv.XmlFile.from_bytes(b"<List><Item id='a'>1</Item><Item/></List>")
>>> doc.get("/List/Item[1]/@id"), doc.get("/List/Item[2]"), doc.get("/List/None", "none")
('a', None, 'none')
)");
    type.def(
        "get_str",
        [](Document& document, Text path, const py::object& otherwise) {
            return value_or<char*>(document, "XmlFile.get_str", path, otherwise);
        },
        py::arg("path"), py::arg("default") = py::ellipsis(),
        "The text at a path. Where there is no value: the default, or without one an error.");
    type.def(
        "get_int",
        [](Document& document, Text path, const py::object& otherwise) {
            return value_or<long>(document, "XmlFile.get_int", path, otherwise);
        },
        py::arg("path"), py::arg("default") = py::ellipsis(),
        R"(The integer at a path. Where there is no value: the default, or without one an error.

>>> doc = kalv.XmlFile.from_bytes(b"<List count='2'><Item>1.5</Item></List>")
>>> doc.get_int("/List/@count"), doc.get_int("/List/@size", 0)
(2, 0)
)");
    type.def(
        "get_float",
        [](Document& document, Text path, const py::object& otherwise) {
            return value_or<double>(document, "XmlFile.get_float", path, otherwise);
        },
        py::arg("path"), py::arg("default") = py::ellipsis(),
        R"(The real at a path. Where there is no value: the default, or without one an error.

>>> doc = kalv.XmlFile.from_bytes(b"<List count='2'><Item>1.5</Item></List>")
>>> doc.get_float("/List/Item")
1.5
)");
    type.def(
        "values", &values, py::arg("path"), py::arg("dtype") = py::type::of(py::float_()),
        R"(The values of all nodes that a path with one "[*]" stands for, as an array of numpy's. The array is
the block that the library read them into: no value becomes an object. The interpreter's lock is released while
they are read.

Reals and integers are read as such; any other dtype is numpy's conversion of the texts.

>>> doc = kalv.XmlFile.from_bytes(b"<List><Item day='2031-05-01'>1.5</Item><Item day='2031-05-02'>2</Item></List>")
>>> doc.values("/List/Item[*]")
array([1.5, 2. ])
>>> doc.values("/List/Item[*]/@day", dtype="datetime64[D]")
array(['2031-05-01', '2031-05-02'], dtype='datetime64[D]')
)");
    methods.add(
        "get_string_values_from_list", &list_values, py::arg("list_path"), py::arg("item"),
        R"(The texts of a list: from the element at a path on, the next element of a name as often as the
attribute "count" of that element says.)");
    methods.add(
        "find_value_in_element",
        +[](Call& call, Text element, Text value) {
            return call.file.findValueInElement(element.string(), value.string());
        },
        py::arg("element"), py::arg("value"),
        "The path of the first element of a name behind the cursor that has a value. The cursor moves "
        "there.");
    methods.add(
        "find_value_in_path",
        +[](Call& call, Text path, Text value) {
            const InterpreterReleased released;
            return call.file.findValueInPath(path.string(), value.string());
        },
        py::arg("path"), py::arg("value"),
        R"(The path of the first node with a value, of those that a path with "[*]" stands for.

>>> doc = kalv.XmlFile.from_bytes(b"<List><Item><Id>a</Id></Item><Item><Id>b</Id></Item></List>")
>>> doc.find_value_in_path("/List/Item[*]/Id", "b")
'/List/Item[2]/Id'
)");
}

} // namespace kalv_python
