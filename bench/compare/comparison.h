// Jobs, the contenders that do them, and the table of how they compare.
//
// A contender is timed only after it got the same values as all others. The repetitions of a job's contenders
// are interleaved at random, so that whatever else the machine does meets all of them alike.
#ifndef KALV_BENCH_COMPARISON_H
#define KALV_BENCH_COMPARISON_H

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace bench {

/// FNV-1a over a number, a text, or a range of these.
template <class Value>
std::uint64_t digest(const Value& value, std::uint64_t hash = 0xcbf29ce484222325U)
{
    if constexpr (std::is_integral_v<Value>) {
        const auto same_width = static_cast<long long>(value);
        return digest(std::string_view(reinterpret_cast<const char*>(&same_width), sizeof same_width), hash);
    } else if constexpr (std::is_floating_point_v<Value>) {
        return digest(std::string_view(reinterpret_cast<const char*>(&value), sizeof value), hash);
    } else if constexpr (std::is_convertible_v<Value, std::string_view>) {
        for (const char character : std::string_view(value))
            hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001b3U;
        return (hash ^ 0x100U) * 0x100000001b3U; // a text's end, so that "ab" "c" is not "a" "bc"
    } else {
        for (const auto& entry : value)
            hash = digest(entry, hash);
        return hash;
    }
}

struct DigestOfValue {
    template <class Value>
    std::uint64_t operator()(const Value& value) const
    {
        return digest(value);
    }
};

/// One way to do a job.
struct Contender {
    std::string name;
    std::function<std::uint64_t()> values; ///< does the job once, and digests what it got
    std::function<void(benchmark::State&)> run;
};

/// Does the whole job again and again; what the work returns is destroyed within the time.
template <class Work, class Check = DigestOfValue>
Contender repeated(std::string name, Work work, Check check = {})
{
    return {std::move(name), [work, check]() mutable { return check(work()); },
            [work](benchmark::State& state) mutable {
                for ([[maybe_unused]] auto _ : state) {
                    auto value = work();
                    benchmark::DoNotOptimize(value);
                }
            }};
}

/// Reads a document that was opened just before, and not read yet. Opening and closing are not timed.
template <class Document, class Read>
Contender on_fresh(std::string name, std::string file, Read read)
{
    return {std::move(name),
            [file, read] {
                Document document(file);
                return digest(read(document));
            },
            [file, read](benchmark::State& state) {
                for ([[maybe_unused]] auto _ : state) {
                    state.PauseTiming();
                    {
                        Document document(file);
                        state.ResumeTiming();
                        auto value = read(document);
                        benchmark::DoNotOptimize(value);
                        state.PauseTiming();
                    }
                    state.ResumeTiming();
                }
            }};
}

/// A document that is opened when it is first needed, and stays open as long as the contender.
template <class Document>
class Standing {
public:
    explicit Standing(std::string file) : state_(std::make_shared<State>())
    {
        state_->file = std::move(file);
    }
    Document& operator*() const
    {
        if (!state_->document)
            state_->document = std::make_unique<Document>(state_->file);
        return *state_->document;
    }

private:
    struct State {
        std::string file;
        std::unique_ptr<Document> document;
    };
    std::shared_ptr<State> state_;
};

/// Reads a document that has been read several times before.
template <class Document, class Read>
Contender on_standing(std::string name, std::string file, Read read)
{
    Standing<Document> document(std::move(file));
    return {std::move(name),
            [document, read] {
                constexpr int reads_before = 3;
                for (int i = 0; i < reads_before; ++i)
                    benchmark::DoNotOptimize(read(*document));
                return digest(read(*document));
            },
            [document, read](benchmark::State& state) {
                Document& opened = *document;
                for ([[maybe_unused]] auto _ : state) {
                    auto value = read(opened);
                    benchmark::DoNotOptimize(value);
                }
            }};
}

/// Reads one of `count` values of a standing document at a time: read(document, position). Starts anywhere,
/// so that a read whose cost depends on the position is not measured at the cheap ones.
template <class Document, class Read>
Contender at_positions(std::string name, std::string file, std::size_t count, Read read)
{
    Standing<Document> document(std::move(file));
    return {std::move(name),
            [document, count, read] {
                const std::size_t step = count / 100 + 1;
                std::vector<std::uint64_t> digests;
                for (std::size_t position = 0; position < count; position += step)
                    digests.push_back(digest(read(*document, position)));
                return digest(digests);
            },
            [document, count, read](benchmark::State& state) {
                static std::mt19937 generator; // the same positions in every run
                std::size_t position = generator() % count;
                Document& opened = *document;
                for ([[maybe_unused]] auto _ : state) {
                    auto value = read(opened, position);
                    benchmark::DoNotOptimize(value);
                    if (++position == count)
                        position = 0;
                }
            }};
}

/// The largest ratio to a peer that is good enough.
struct Goal {
    std::string peer;
    double ratio;
};

enum class Clock { cpu, wall };

/// What is to be done. The first contender is compared with each of the others.
struct Job {
    std::string name;
    std::string size;
    std::vector<Contender> contenders;
    std::vector<Goal> goals = {};
    long iterations = 0; ///< in each repetition; 0: as many as fill the time
    Clock clock = Clock::cpu;
};

struct Settings {
    bool quick = false;
    std::string only; ///< jobs whose name contains this
    int repetitions = 9;
    double seconds = 0.1; ///< of each repetition
};

class Comparison {
public:
    explicit Comparison(Settings settings) : settings_(std::move(settings)) {}

    const Settings& settings() const noexcept { return settings_; }
    bool wants(const std::string& job) const { return job.find(settings_.only) != std::string::npos; }

    /// Does a job with all its contenders. \return the seconds that the first takes; none where the job was
    /// left out, or the contenders do not agree
    std::optional<double> add(const Job& job);

    /// Adds a line for something measured elsewhere, such as memory.
    void add(const std::string& job, const std::string& size, const std::string& figure,
             const std::string& peer, double ratio, std::optional<double> goal);

    /// Adds a line for a job that would take too long.
    void leave_out(const std::string& job, const std::string& size, const std::string& reason);

    /// Prints the table as Markdown. \return whether all contenders agreed
    bool print() const;

private:
    struct Row {
        std::string job, size, figure, peer;
        std::optional<double> ratio, noise, goal;
    };
    void add_rows(const Job& job, const std::vector<std::vector<double>>& seconds);

    Settings settings_;
    std::vector<Row> rows_;
    bool all_agree_ = true;
};

} // namespace bench

#endif
