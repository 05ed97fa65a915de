// How a command ends, and what it says when something is wrong.
#ifndef KALV_TOOLS_FAILURE_H
#define KALV_TOOLS_FAILURE_H

#include <stdexcept>
#include <string>
#include <string_view>

namespace tool {

/// The exit codes, the graver the higher. Scripts rely on the numbers.
enum ExitCode {
    done = 0,      ///< Done, or found, or equal.
    different = 1, ///< Not found, or different, or not valid.
    usage = 2,     ///< The command line makes no sense.
    cannot_read = 3,
    cannot_write = 4
};

inline ExitCode graver(ExitCode one, ExitCode other)
{
    return one < other ? other : one;
}

/// Where in a file something is wrong; 0 stands for an unknown line or column.
struct Place {
    std::string file;
    long line = 0;
    long column = 0;
};

/// Appends a character; one that would end a line or change the terminal is written as an escape, such as "\\n".
void append_visible(std::string& text, char c);

/// Thrown where a file cannot be worked on.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, Place place, const std::string& text)
        : std::runtime_error(text), code_(code), place_(std::move(place))
    {
    }
    /// One that concerns no file.
    Failure(ExitCode code, const std::string& text) : Failure(code, Place(), text) {}

    ExitCode code() const { return code_; }
    const Place& place() const { return place_; }

    /// "file:line:column: text" on one line, as far as the place is known.
    std::string message() const;

private:
    ExitCode code_;
    Place place_;
};

} // namespace tool

#endif
