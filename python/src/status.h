// Statuses as exceptions and warnings of the package.
#ifndef KALV_PYTHON_STATUS_H
#define KALV_PYTHON_STATUS_H

#include <kalv/KalvError.h>
#include <pybind11/pybind11.h>
#include <string>
#include <utility>

namespace kalv_python {

/// Thrown by what runs without the interpreter; becomes a `kalv.KalvError` outside.
struct Failure {
    long code;
};

/// Raises `kalv.KalvError`, with the calling thread's last report.
[[noreturn]] void raise_error(const std::string& function, long code);

/// Raises `kalv.InUseError`.
[[noreturn]] void raise_in_use();

/// Shows a `kalv.KalvWarning` for a status other than 0; where the caller made warnings errors, raises it.
void warn_of(const std::string& function, long code);

/// The code that an error of the library carries.
long code_of(const KALV::KalvError& error);

/// Runs what throws the library's errors, under the name that Python knows.
template <class Action>
auto translated(const std::string& function, Action&& action)
{
    long code = 0;
    try {
        return std::forward<Action>(action)();
    } catch (const Failure& failure) {
        code = failure.code;
    } catch (const KALV::KalvError& error) {
        code = code_of(error);
    }
    raise_error(function, code);
}

/// Adds `Status`.
void define_status(pybind11::module_& module);

} // namespace kalv_python

#endif
