// The system calls of the process by which it opens and writes files, replaced: they can be listed, made to
// fail, cut short, and made the last thing that the process does.
#ifndef KALV_TORTURE_CALLS_H
#define KALV_TORTURE_CALLS_H

#include <cstddef>
#include <string>
#include <vector>

namespace torture::calls {

enum class Effect {
    fails,       ///< the call fails with an error
    is_short,    ///< half of the bytes are read or written
    kills,       ///< the process is killed before the call
    kills_within ///< ... and half of the bytes were written; where the call writes none, after it
};

/// What happens to one call.
struct Fault {
    std::size_t number; ///< of the call, from 0
    Effect effect;
    int error;         ///< errno of a call that fails
    bool from_then_on; ///< later calls of the same name fail too
};

/// A call that was made: its name, and the file that it names, if any.
struct Made {
    std::string name;
    std::string file;
};

/// Runs what makes calls, and lists them.
template <class Body>
std::vector<Made> made_by(Body body);

/// Runs what makes calls, one of which suffers a fault.
template <class Body>
void with_fault(const Fault& fault, Body body);

/// The two sides of the templates.
void begin(const Fault* fault);
std::vector<Made> end();

template <class Body>
std::vector<Made> made_by(Body body)
{
    begin(nullptr);
    body();
    return end();
}

template <class Body>
void with_fault(const Fault& fault, Body body)
{
    begin(&fault);
    body();
    end();
}

} // namespace torture::calls

#endif
