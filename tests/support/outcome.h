// What a call leaves behind, as one value: a test compares status and report in one line.
#ifndef KALV_TESTS_OUTCOME_H
#define KALV_TESTS_OUTCOME_H

#include "support/support.h"

#include <ostream>

namespace support {

struct Outcome {
    long status;
    std::string report; ///< in verbose mode
};

inline bool operator==(const Outcome& a, const Outcome& b)
{
    return a.status == b.status && a.report == b.report;
}

inline std::ostream& operator<<(std::ostream& stream, const Outcome& outcome)
{
    return stream << outcome.status << " with the report \"" << outcome.report << '"';
}

/// What a status word holds before a call: no code of the library's, so that a call which leaves it alone is
/// seen.
constexpr long untouched = 77;

/// Runs a call that takes the address of a status word.
template <class Call>
Outcome outcome_of(Call call)
{
    Outcome outcome{untouched, ""};
    outcome.report = report_of([&] { call(&outcome.status); });
    return outcome;
}

/// The library's own report, without what the parser or a sanitizer printed before it.
inline Outcome own_report(Outcome outcome)
{
    outcome.report.erase(0, outcome.report.find("KH: "));
    return outcome;
}

inline const Outcome success{0, ""};

/// A function that finds a failure itself. A record holds 510 characters at most.
inline Outcome failure(long code, const std::string& function, const std::string& detail = "")
{
    char text[KH_MESSAGE_SIZE];
    kh_basic_error_msg(code, text);
    return {code, (text + ("\n\tFunction: " + function) + detail).substr(0, 510) + "\n"};
}

inline Outcome missing_argument(const std::string& function)
{
    return failure(KH_ERR_ARGUMENT, function, ". Input argument is NULL");
}

/// A function that passes on what another one reported.
inline Outcome passed_on(const Outcome& inner, const std::string& function)
{
    return {inner.status, inner.report + "\n\tFunction: " + function + "\n"};
}

} // namespace support

#endif
