#include "comparison.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

namespace bench {

namespace {

/// Keeps the time of one iteration for each repetition of each benchmark.
class Times : public benchmark::BenchmarkReporter {
public:
    explicit Times(Clock clock) : clock_(clock) {}
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration)
                seconds_[run.run_name.function_name].push_back(
                    (clock_ == Clock::cpu ? run.cpu_accumulated_time : run.real_accumulated_time) /
                    static_cast<double>(run.iterations));
        }
    }
    const std::vector<double>& of(const std::string& name) { return seconds_[name]; }

private:
    Clock clock_;
    std::map<std::string, std::vector<double>> seconds_;
};

double quantile(std::vector<double> values, double part)
{
    std::sort(values.begin(), values.end());
    const double position = part * static_cast<double>(values.size() - 1);
    const auto below = static_cast<std::size_t>(position);
    const std::size_t above = std::min(below + 1, values.size() - 1);
    return values[below] + (position - static_cast<double>(below)) * (values[above] - values[below]);
}

double median(const std::vector<double>& values)
{
    return quantile(values, 0.5);
}

/// Half the distance between the quartiles, as a part of the median.
double spread(const std::vector<double>& values)
{
    return (quantile(values, 0.75) - quantile(values, 0.25)) / 2 / median(values);
}

std::string formatted(const char* format, double value)
{
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string duration(double seconds)
{
    if (seconds < 1e-6)
        return formatted("%.3g ns", seconds * 1e9);
    if (seconds < 1e-3)
        return formatted("%.3g us", seconds * 1e6);
    return seconds < 1 ? formatted("%.3g ms", seconds * 1e3) : formatted("%.3g s", seconds);
}

/// Does the job once with every contender. \return the name of one whose values differ; empty where none does
std::string disagreeing(const Job& job)
{
    std::optional<std::uint64_t> expected;
    for (const Contender& contender : job.contenders) {
        try {
            const std::uint64_t values = contender.values();
            if (values != expected.value_or(values))
                return contender.name;
            expected = values;
        } catch (const std::exception& error) {
            return contender.name + " (" + error.what() + ")";
        }
    }
    return {};
}

} // namespace

std::optional<double> Comparison::add(const Job& job)
{
    if (!wants(job.name))
        return {};
    std::fprintf(stderr, "%s, %s\n", job.name.c_str(), job.size.c_str());
    if (const std::string name = disagreeing(job); !name.empty()) {
        all_agree_ = false;
        leave_out(job.name, job.size, "other values than the first: " + name);
        return {};
    }
    benchmark::ClearRegisteredBenchmarks();
    for (const Contender& contender : job.contenders) {
        auto* registered = benchmark::RegisterBenchmark(contender.name.c_str(), contender.run);
        registered->Repetitions(settings_.repetitions);
        if (job.iterations > 0)
            registered->Iterations(job.iterations);
        else
            registered->MinTime(settings_.seconds);
        if (job.clock == Clock::wall)
            registered->UseRealTime();
    }
    Times times(job.clock);
    benchmark::RunSpecifiedBenchmarks(&times);
    std::vector<std::vector<double>> seconds;
    for (const Contender& contender : job.contenders)
        seconds.push_back(times.of(contender.name));
    add_rows(job, seconds);
    return median(seconds.front());
}

void Comparison::add_rows(const Job& job, const std::vector<std::vector<double>>& seconds)
{
    const double own = median(seconds.front());
    for (std::size_t i = 1; i < seconds.size(); ++i) {
        const std::string& peer = job.contenders[i].name;
        const auto goal = std::find_if(job.goals.begin(), job.goals.end(),
                                       [&](const Goal& candidate) { return candidate.peer == peer; });
        rows_.push_back({job.name, job.size, duration(own), peer, own / median(seconds[i]),
                         std::hypot(spread(seconds.front()), spread(seconds[i])),
                         goal == job.goals.end() ? std::nullopt : std::optional<double>(goal->ratio)});
    }
}

void Comparison::add(const std::string& job, const std::string& size, const std::string& figure,
                     const std::string& peer, double ratio, std::optional<double> goal)
{
    rows_.push_back({job, size, figure, peer, ratio, {}, goal});
}

void Comparison::leave_out(const std::string& job, const std::string& size, const std::string& reason)
{
    rows_.push_back({job, size, reason, "", {}, {}, {}});
}

bool Comparison::print() const
{
    const auto number = [](const char* format, std::optional<double> value) {
        return value ? formatted(format, *value) : std::string();
    };
    std::printf("| job | size | this library | peer | ratio | noise | goal | met |\n"
                "|---|---|--:|---|--:|--:|--:|---|\n");
    std::vector<double> noise;
    int goals = 0;
    int met = 0;
    for (const Row& row : rows_) {
        const bool good = row.goal && row.ratio && *row.ratio <= *row.goal;
        goals += row.goal ? 1 : 0;
        met += good ? 1 : 0;
        if (row.noise)
            noise.push_back(*row.noise);
        std::printf(
            "| %s | %s | %s | %s | %s | %s | %s | %s |\n", row.job.c_str(), row.size.c_str(),
            row.figure.c_str(), row.peer.c_str(), number("%.3g", row.ratio).c_str(),
            number("%.1f %%", row.noise ? std::optional<double>(*row.noise * 100) : std::nullopt).c_str(),
            number("%g", row.goal).c_str(),
            !row.goal ? ""
            : good    ? "yes"
                      : "no");
    }
    std::printf("\n%d of %d goals met.", met, goals);
    if (!noise.empty())
        std::printf(
            " Noise of a ratio: %.1f %% in the median, %.1f %% in nine of ten lines, %.1f %% at worst.",
            median(noise) * 100, quantile(noise, 0.9) * 100, quantile(noise, 1) * 100);
    std::printf("\n");
    return all_agree_;
}

} // namespace bench
