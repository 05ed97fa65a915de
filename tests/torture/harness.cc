#include "torture/harness.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <numeric>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

/// For builds with the address sanitizer: an array that is larger than any memory is refused, as without it.
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}

namespace torture {

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned seconds_for_a_point = 60;
constexpr std::size_t most_complaints = 20; ///< of one set of points; more of them say no more

/// What a child tells its parent, also when it dies.
struct Progress {
    std::size_t tried;
    std::size_t right;
    std::size_t complaints;
    std::size_t limited;
    char limit[200];
};

Progress* current_progress = nullptr; ///< of this process, which tries points

Progress* shared_progress()
{
    void* memory = mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::runtime_error("no shared memory");
    return new (memory) Progress();
}

/// The i-th of `count` points in an order that is spread evenly wherever it is cut off.
std::size_t spread(std::size_t i, std::size_t count)
{
    std::size_t step = static_cast<std::size_t>(0.618 * static_cast<double>(count)) | 1;
    while (std::gcd(step, count) != 1)
        step += 2;
    return i * step % count;
}

/// Standard error of a child, into a file that shows whether something was printed.
class CaughtStandardError {
public:
    CaughtStandardError() : file_(std::tmpfile())
    {
        if (!file_ || dup2(fileno(file_), STDERR_FILENO) < 0)
            throw std::runtime_error("standard error cannot be caught");
    }

    std::string take()
    {
        struct stat status = {};
        fstat(fileno(file_), &status);
        std::string text(static_cast<std::size_t>(status.st_size), '\0');
        const ssize_t count = pread(fileno(file_), text.data(), text.size(), 0);
        text.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (ftruncate(fileno(file_), 0) == 0)
            lseek(fileno(file_), 0, SEEK_SET);
        return text;
    }

private:
    FILE* file_;
};

/// The life of a child: tries points until all are done or the time is used up.
[[noreturn]] void live(Progress& progress, const Budget::Share& share, const std::string& name,
                       std::size_t count, const TryPoint& try_point)
{
    FILE* complaints = fdopen(dup(STDERR_FILENO), "w");
    CaughtStandardError caught;
    const QuietStandardOutput quiet;
    current_progress = &progress;
    while (progress.tried < count && !share.is_used_up()) {
        const std::size_t point = spread(progress.tried, count);
        alarm(seconds_for_a_point);
        std::string complaint = try_point(point);
        if (const std::string printed = caught.take(); !printed.empty())
            complaint += "printed: " + printed;
        ++progress.tried;
        progress.right += complaint.empty();
        if (!complaint.empty() && ++progress.complaints <= most_complaints) {
            std::fprintf(complaints, "%s, point %zu: %s\n", name.c_str(), point, complaint.c_str());
            std::fflush(complaints);
        }
    }
    _exit(EXIT_SUCCESS);
}

} // namespace

Budget::Budget()
{
    const char* seconds = std::getenv("KALV_TORTURE_SECONDS");
    limited_ = seconds && *seconds;
    if (limited_)
        seconds_ = std::atol(seconds);
    end_ = Clock::now() + std::chrono::seconds(seconds_);
}

std::string Budget::told() const
{
    return std::to_string(seconds_) + " s";
}

Budget::Share Budget::share(std::size_t parts) const
{
    Share share;
    share.limited_ = limited_;
    const Clock::time_point now = Clock::now();
    if (limited_)
        share.end_ = now + (end_ - now) / static_cast<long>(std::max<std::size_t>(parts, 1));
    return share;
}

bool Budget::Share::is_used_up() const
{
    return limited_ && Clock::now() >= end_;
}

void Figure::add(std::size_t right, std::size_t tried, std::size_t existing)
{
    right_ += right;
    tried_ += tried;
    existing_ += existing;
}

void Figure::wrong(const std::string& complaint)
{
    add(false);
    std::fprintf(stderr, "%s: %s\n", name_.c_str(), complaint.c_str());
}

void Figure::add_limited(std::size_t count, const std::string& limit)
{
    limited_ += count;
    if (count > 0)
        limit_ = limit;
}

int Figure::print() const
{
    std::printf("%s %zu of %zu", name_.c_str(), right_, existing_);
    if (tried_ < existing_)
        std::printf(", as far as %s reach", budget_.told().c_str());
    if (right_ < tried_)
        std::printf(", and %zu are wrong", tried_ - right_);
    if (limited_ > 0)
        std::printf("; %zu times %s", limited_, limit_.c_str());
    std::printf("\n");
    return right_ == tried_ && tried_ > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

void meet_limit(const char* limit)
{
    if (!current_progress)
        return;
    ++current_progress->limited;
    std::snprintf(current_progress->limit, sizeof current_progress->limit, "%s", limit);
}

void try_points(Figure& figure, const Budget::Share& share, const std::string& name, std::size_t count,
                const TryPoint& try_point)
{
    Progress* progress = shared_progress();
    for (bool done = false; !done;) {
        const pid_t child = fork();
        if (child == 0)
            live(*progress, share, name, count, try_point);
        int status = 0;
        done = child < 0 || waitpid(child, &status, 0) != child || status == 0;
        if (done)
            break;
        const std::size_t point = spread(progress->tried++, count);
        if (++progress->complaints <= most_complaints)
            std::fprintf(stderr, "%s, point %zu: the process ended with %s %d\n", name.c_str(), point,
                         WIFSIGNALED(status) ? "signal" : "exit code",
                         WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
    }
    figure.add(progress->right, progress->tried, count);
    figure.add_limited(progress->limited, progress->limit);
    munmap(progress, sizeof *progress);
}

QuietStandardOutput::QuietStandardOutput() : original_(dup(STDOUT_FILENO))
{
    std::fflush(stdout);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
}

QuietStandardOutput::~QuietStandardOutput()
{
    std::fflush(stdout);
    dup2(original_, STDOUT_FILENO);
    close(original_);
}

std::vector<std::string> leftovers(const support::TemporaryFolder& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path("")))
        if (entry.path().filename().string().rfind(".kalv-", 0) == 0)
            names.push_back(entry.path().string());
    return names;
}

std::size_t open_descriptors()
{
    using Entries = std::filesystem::directory_iterator;
    return static_cast<std::size_t>(std::distance(Entries("/proc/self/fd"), Entries()));
}

} // namespace torture
