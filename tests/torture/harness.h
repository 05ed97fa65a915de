// What the torture programs share: figures, a budget of time, and points that are tried one by one in child
// processes, so that a crash or a hang at one point is a result like any other.
#ifndef KALV_TORTURE_HARNESS_H
#define KALV_TORTURE_HARNESS_H

#include "support/support.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace torture {

/// How long a program may take. Without KALV_TORTURE_SECONDS it takes as long as all points need.
class Budget {
public:
    Budget();

    /// True when the share of one of `parts` that are still to come is used up.
    class Share {
    public:
        bool is_used_up() const;

    private:
        friend class Budget;
        bool limited_ = false;
        std::chrono::steady_clock::time_point end_;
    };
    Share share(std::size_t parts) const;

    /// How long that is, in words.
    std::string told() const;

private:
    bool limited_;
    long seconds_ = 0;
    std::chrono::steady_clock::time_point end_;
};

/// One line of the result: how many points of all were right. One that is cut off by its time says so.
class Figure {
public:
    Figure(std::string name, const Budget& budget) : name_(std::move(name)), budget_(budget) {}

    void add(std::size_t right, std::size_t tried, std::size_t existing);
    void add(bool is_right) { add(is_right, 1, 1); }

    /// A point that is wrong, told on standard error.
    void wrong(const std::string& complaint);

    /// Points that are right but for what nobody can mend, as it is written down.
    void add_limited(std::size_t count, const std::string& limit);

    /// Prints the line. \return the program's exit code
    int print() const;

private:
    std::string name_;
    const Budget& budget_;
    std::size_t limited_ = 0;
    std::string limit_;
    std::size_t right_ = 0;
    std::size_t tried_ = 0;
    std::size_t existing_ = 0;
};

/// Tries a point. \return what is wrong with it; empty when it is right
using TryPoint = std::function<std::string(std::size_t point)>;

/// Tries the points below `count`, as many as the share of time allows, spread evenly over all. Standard
/// output goes nowhere; what a point prints on standard error makes it wrong.
void try_points(Figure& figure, const Budget::Share& share, const std::string& name, std::size_t count,
                const TryPoint& try_point);

/// For what tries a point: it met a limit that is written down, and is right otherwise.
void meet_limit(const char* limit);

/// Standard output of the library goes nowhere while this lives.
class QuietStandardOutput {
public:
    QuietStandardOutput();
    ~QuietStandardOutput();
    QuietStandardOutput(const QuietStandardOutput&) = delete;
    QuietStandardOutput& operator=(const QuietStandardOutput&) = delete;

private:
    int original_;
};

/// Names of the files in a folder that saves left behind.
std::vector<std::string> leftovers(const support::TemporaryFolder& folder);

/// How many file descriptors the process has open.
std::size_t open_descriptors();

} // namespace torture

#endif
