// Does every job with the library and with what its users would pick instead, and prints how they compare.
//   --quick           shows in half a minute that every job works, on small files; its ratios tell little
//   --only=TEXT       the jobs whose name contains TEXT
//   --repetitions=N   instead of 9
#include "jobs.h"
#include "peers.h"

#include <cstdio>
#include <ctime>
#include <fstream>
#include <optional>
#include <thread>

namespace {

std::optional<bench::Settings> settings_from(int count, char** arguments)
{
    bench::Settings settings;
    for (int i = 1; i < count; ++i) {
        const std::string argument = arguments[i];
        const std::string value = argument.substr(argument.find('=') + 1);
        if (argument == "--quick") {
            settings.quick = true;
            settings.repetitions = 3;
            settings.seconds = 0.001;
        } else if (argument.rfind("--only=", 0) == 0) {
            settings.only = value;
        } else if (argument.rfind("--repetitions=", 0) == 0 && std::atoi(value.c_str()) > 0) {
            settings.repetitions = std::atoi(value.c_str());
        } else {
            std::fprintf(stderr, "usage: %s [--quick] [--only=TEXT] [--repetitions=N]\n", arguments[0]);
            return {};
        }
    }
    return settings;
}

void interleave_repetitions()
{
    char program[] = "compare";
    char interleave[] = "--benchmark_enable_random_interleaving=true";
    char* arguments[] = {program, interleave, nullptr};
    int count = 2;
    benchmark::Initialize(&count, arguments);
}

/// What the figures depend on besides the library.
void describe_machine()
{
    std::ifstream processors("/proc/cpuinfo");
    std::string line, model = "unknown processor";
    while (std::getline(processors, line)) {
        if (line.rfind("model name", 0) == 0)
            model = line.substr(line.find(':') + 2);
    }
    double load = 0;
    getloadavg(&load, 1);
    char day[16] = "";
    const std::time_t now = std::time(nullptr);
    std::strftime(day, sizeof day, "%Y-%m-%d", std::localtime(&now));
    std::printf("%s: %s, %u threads, load %.1f at the start; g++ %s, libxml2 %s\n\n", day, model.c_str(),
                std::thread::hardware_concurrency(), load, __VERSION__, LIBXML_DOTTED_VERSION);
}

/// The same work against itself: how far its ratio is from 1 tells what the others are worth.
void compare_with_itself(bench::Comparison& comparison, const bench::Files& files)
{
    const std::string file = files.medium().path;
    const auto open = [file] { return bench::LibXml2(file); };
    const auto check = [](const bench::LibXml2& document) { return bench::digest(count_elements(document)); };
    comparison.add({"the same work twice",
                    files.medium().size,
                    {bench::repeated(bench::by_hand, open, check), bench::repeated("itself", open, check)}});
}

} // namespace

int main(int count, char** arguments)
{
    const std::optional<bench::Settings> settings = settings_from(count, arguments);
    if (!settings)
        return 2;
    interleave_repetitions();
    bench::Comparison comparison(*settings);
    const bench::Files files(settings->quick);

    describe_machine();
    compare_memory(comparison, files);
    compare_with_itself(comparison, files);
    compare_opening_alone(comparison, files);
    {
        // Closing the last document shuts libxml2 down, which no other job is to pay for.
        const bench::Kalv another_document;
        compare_opening(comparison, files);
        compare_arrays(comparison, files);
        compare_paths(comparison, files);
        compare_searches(comparison, files);
        compare_conversions(comparison);
        compare_building(comparison);
        compare_writing(comparison, files);
        compare_methods(comparison, files);
        compare_threads(comparison, files);
    }
    return comparison.print() ? 0 : 1;
}
