#include "status.h"

#include <cstring>
#include <kalv/status.h>
#include <pybind11/stl.h>
#include <vector>

namespace kalv_python {

namespace py = pybind11;

namespace {

/// What statuses become in Python. Never released: an error can be raised when no module can be imported any more.
struct Classes {
    py::object status;
    py::object error;
    py::object in_use;
    py::object warn;
};
const Classes* classes = nullptr;

/// The calling thread's last report. What it quotes of a document need not be whole characters.
py::str last_report()
{
    char report[8193]; // which holds every report
    KH_last_report(report, sizeof report);
    return py::reinterpret_steal<py::str>(
        PyUnicode_DecodeUTF8(report, static_cast<Py_ssize_t>(std::strlen(report)), "replace"));
}

/// What the classes of kalv._errors are made from.
py::tuple described(const std::string& function, long code)
{
    char message[KH_MESSAGE_SIZE];
    kh_basic_error_msg(code, message);
    return py::make_tuple(classes->status(code), message, function, last_report());
}

} // namespace

void raise_error(const std::string& function, long code)
{
    const py::object error = classes->error(*described(function, code));
    PyErr_SetObject(classes->error.ptr(), error.ptr());
    throw py::error_already_set();
}

void raise_in_use()
{
    PyErr_SetString(classes->in_use.ptr(), "the document is in use by another thread");
    throw py::error_already_set();
}

void warn_of(const std::string& function, long code)
{
    if (code != KH_OK)
        classes->warn(*described(function, code));
}

long code_of(const KALV::KalvError& error)
{
    std::vector<long> codes;
    error.getCodes(codes);
    codes.push_back(KH_ERR_UNKNOWN); // for an error without any
    return codes.front();
}

void define_status(py::module_& module)
{
#define KALV_STATUS(name)                                                                                    \
    {                                                                                                        \
#name, KH_##name                                                                                     \
    }
    const std::vector<std::pair<const char*, long>> members = {
        KALV_STATUS(OK),
        KALV_STATUS(ERR_UNKNOWN),
        KALV_STATUS(ERR_GENERIC),
        KALV_STATUS(ERR_ARGUMENT),
        KALV_STATUS(ERR_PARSE),
        KALV_STATUS(ERR_ROOT_ELEMENT),
        KALV_STATUS(ERR_MEMORY),
        KALV_STATUS(ERR_NO_DOCUMENT),
        KALV_STATUS(ERR_NO_REQUEST),
        KALV_STATUS(ERR_NOT_ELEMENT),
        KALV_STATUS(ERR_NO_ROOT),
        KALV_STATUS(ERR_NOT_FOUND),
        KALV_STATUS(ERR_NOT_INTEGER),
        KALV_STATUS(ERR_NOT_REAL),
        KALV_STATUS(ERR_RANGE),
        KALV_STATUS(ERR_NO_ATTRIBUTE),
        KALV_STATUS(ERR_NOT_TERMINAL),
        KALV_STATUS(ERR_PATH_LENGTH),
        KALV_STATUS(ERR_PATH_NODE_LENGTH),
        KALV_STATUS(ERR_TABLE_FULL),
        KALV_STATUS(ERR_NO_CURRENT),
        KALV_STATUS(ERR_DESCRIPTOR),
        KALV_STATUS(ERR_CREATE_DOCUMENT),
        KALV_STATUS(ERR_ROOT_EXISTS),
        KALV_STATUS(ERR_CREATE_NODE),
        KALV_STATUS(ERR_ADD_SIBLING),
        KALV_STATUS(ERR_REMOVE_NODE),
        KALV_STATUS(ERR_FORMAT),
        KALV_STATUS(ERR_READ_ITEM),
        KALV_STATUS(ERR_SAVE),
        KALV_STATUS(ERR_NOT_ARRAY),
        KALV_STATUS(ERR_NO_VALUE),
        KALV_STATUS(ERR_HEADER_TAGS),
        KALV_STATUS(ERR_NO_HEADER_TYPE),
        KALV_STATUS(ERR_NOT_HEADER_ITEM),
        KALV_STATUS(ERR_FILE_NAME_LENGTH),
        KALV_STATUS(ERR_VALUE_NOT_FOUND),
        KALV_STATUS(ERR_UNUSED_LOCK),
        KALV_STATUS(ERR_LOCK),
        KALV_STATUS(WARN_ROOT_REACHED),
        KALV_STATUS(WARN_LENGTH),
        KALV_STATUS(WARN_GENERIC),
        KALV_STATUS(WARN_HEADER_EXISTS),
    };
#undef KALV_STATUS
    const py::object enumeration = py::module_::import("enum").attr("IntEnum");
    const py::object status = enumeration("Status", members, py::arg("module") = "kalv");
    status.attr("__doc__") = "The codes of errors, which are negative, and of warnings.";
    module.attr("Status") = status;
    const py::module_ errors = py::module_::import("kalv._errors");
    classes = new Classes{status, errors.attr("KalvError"), errors.attr("InUseError"), errors.attr("warn")};
}

} // namespace kalv_python
