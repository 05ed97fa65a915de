// Compares the command kh with the least that a C++ program over the library does for the same, on a large file: the
// processor time, and the memory that stays in use at once.
// Usage: command KH [MEGABYTES [FOLDER]]
#include <kalv/XmlFile.h>
#include <kalv/build.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

const std::string list = "/Earth_Observation_File/Data_Block/List";

/// A product file of about that size: items of three values each.
void write_product(const std::string& name, long megabytes)
{
    std::FILE* file = std::fopen(name.c_str(), "w");
    if (!file)
        throw std::runtime_error(name + " cannot be written");
    std::fputs("<?xml version=\"1.0\"?>\n<Earth_Observation_File>\n  <Earth_Observation_Header>\n    "
               "<Fixed_Header>\n"
               "      <File_Name>large</File_Name>\n    </Fixed_Header>\n  </Earth_Observation_Header>\n"
               "  <Data_Block type=\"xml\">\n    <List>\n",
               file);
    for (long i = 0; std::ftell(file) < megabytes * 1'000'000; ++i)
        std::fprintf(
            file,
            "      <Item id=\"%ld\">\n        <Orbit>%ld</Orbit>\n        <Height unit=\"km\">%.3f</Height>\n"
            "        <Remark>first &amp; best of item %ld</Remark>\n      </Item>\n",
            i, i + 1000, 700.0 + 0.001 * static_cast<double>(i), i);
    std::fputs("    </List>\n  </Data_Block>\n</Earth_Observation_File>\n", file);
    if (std::fclose(file) != 0)
        throw std::runtime_error(name + " cannot be written");
}

struct Cost {
    double seconds = 0; ///< of the processor, for program and system
    double megabytes = 0;
};

/// What a process of its own takes; its output is thrown away.
Cost cost_of(const std::function<void()>& work, int good_code = 0)
{
    std::cout.flush();
    const pid_t child = fork();
    if (child < 0)
        throw std::runtime_error("no process can be made");
    if (child == 0) {
        const int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, STDOUT_FILENO);
        work();
        _exit(0);
    }
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != good_code)
        throw std::runtime_error("the work failed");
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return {seconds(usage.ru_utime) + seconds(usage.ru_stime), static_cast<double>(usage.ru_maxrss) / 1000};
}

std::function<void()> run(std::vector<std::string> words)
{
    return [words = std::move(words)]() mutable {
        std::vector<char*> arguments;
        for (std::string& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        execv(arguments[0], arguments.data());
        _exit(127);
    };
}

void compare(const std::string& name, const std::function<void()>& library,
             const std::vector<std::string>& command, int good_code = 0)
{
    const Cost least = cost_of(library);
    const Cost cost = cost_of(run(command), good_code);
    std::printf("%-34s %6.2f s %6.2f s  x %4.2f   %6.0f MB %6.0f MB  x %4.2f\n", name.c_str(), least.seconds,
                cost.seconds, cost.seconds / least.seconds, least.megabytes, cost.megabytes,
                cost.megabytes / least.megabytes);
}

void compare_all(const std::string& kh, const std::string& file, const std::string& folder)
{
    const std::string copy = folder + "/copy.xml";
    const std::string saved = folder + "/saved.xml";
    const std::string dump = folder + "/dump.json";
    const auto open_file = [&] { const KALV::XmlFile xml(file); };
    const auto open_two = [&] {
        const KALV::XmlFile one(file);
        const KALV::XmlFile other(copy);
    };
    const auto read_array = [&] {
        KALV::XmlFile xml(file);
        std::vector<double> heights;
        xml.getPathArrayAsReal(list + "/Item[*]/Height", heights);
    };
    const auto save = [&] {
        KALV::XmlFile xml(file);
        long fd = xml.getId();
        long status = 0;
        kh_tree_save(&fd, saved.c_str(), &status);
    };
    const auto edit = [&](const std::string& name, std::vector<std::string> command) {
        std::filesystem::copy_file(file, copy, std::filesystem::copy_options::overwrite_existing);
        command.insert(command.begin(), kh);
        compare(name, save, command);
    };

    std::printf("%-34s %s\n", "", " library  command              library   command");
    compare("header show, to opening it", open_file, {kh, "header", "show", file});
    compare("get of one value, to opening it", open_file, {kh, "get", file, list + "/Item[2]/Height"});
    compare("get of all heights, to the array", read_array, {kh, "get", file, list + "/Item[*]/Height:r"});
    compare("info, to opening it", open_file, {kh, "info", file});
    compare("ls of everything, to opening it", open_file, {kh, "ls", file});
    compare("find, to opening it", open_file, {kh, "find", "--name", "Height", "--contains", "700.5", file});
    compare("dump, to opening it", open_file, {kh, "dump", file});
    edit("set of one value, to saving it", {"set", copy, list + "/Item[2]/Height=1"});
    compare("diff, to opening both", open_two, {kh, "diff", file, copy}, 1);
    edit("set of all heights, to saving it", {"set", copy, list + "/Item[*]/Height=1"});
    edit("fmt, to saving it", {"fmt", "--indent", "1", copy});
    const std::string shell = "exec " + kh + " dump " + file + " > " + dump;
    cost_of(run({"/bin/sh", "-c", shell}));
    compare("load, to saving it", save, {kh, "load", dump, copy});
}

} // namespace

int main(int argc, char** argv)
{
    try {
        if (argc < 2)
            throw std::runtime_error("usage: command KH [MEGABYTES [FOLDER]]");
        const long megabytes = argc > 2 ? std::strtol(argv[2], nullptr, 10) : 100;
        const std::filesystem::path base = argc > 3 ? argv[3] : std::filesystem::temp_directory_path();
        const std::string folder = base / ("kh-bench-" + std::to_string(getpid()));
        std::filesystem::create_directory(folder);
        const std::string file = folder + "/large.xml";
        int code = 0;
        try {
            write_product(file, megabytes);
            std::printf("a file of %ld MB: processor time and memory\n", megabytes);
            compare_all(std::filesystem::absolute(argv[1]), file, folder);
        } catch (const std::exception& error) {
            std::cerr << error.what() << '\n';
            code = 1;
        }
        std::filesystem::remove_all(folder);
        return code;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 2;
    }
}
