// The interpreter's lock.
#ifndef KALV_PYTHON_INTERPRETER_H
#define KALV_PYTHON_INTERPRETER_H

#include <pybind11/pybind11.h>
#include <unistd.h>

namespace kalv_python {

/// Lets other threads run in the interpreter, as long as this lives.
///
/// A thread that comes back when the interpreter has ended is ended, too, by an unwinding of its stack that must not
/// leave a destructor, and objects that it would let go are no more. It stays here until the process ends.
class InterpreterReleased {
public:
    InterpreterReleased() : state_(PyEval_SaveThread()) {}
    InterpreterReleased(const InterpreterReleased&) = delete;
    InterpreterReleased& operator=(const InterpreterReleased&) = delete;
    ~InterpreterReleased()
    {
        try {
            PyEval_RestoreThread(state_);
        } catch (...) {
            for (;;)
                pause();
        }
    }

private:
    PyThreadState* state_;
};

} // namespace kalv_python

#endif
