#include "command_line.h"

#include "command.h"
#include "completion.h"
#include "pages.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <kalv/version.h>
#include <new>

namespace tool {

namespace {

void print(const std::string& text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
        throw Failure(cannot_write, "standard output cannot be written");
}

int complain(const Failure& failure)
{
    std::fprintf(stderr, "%s\n", failure.message().c_str());
    return failure.code();
}

/// The command that the first words name; they are taken off. Null where there is none.
Command* find(const CommandList& commands, std::vector<std::string>& words)
{
    for (std::size_t count = std::min<std::size_t>(words.size(), 2); count > 0; --count) {
        const std::string name = count == 2 ? words[0] + ' ' + words[1] : words[0];
        for (const auto& command : commands) {
            if (command->name() != name)
                continue;
            words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(count));
            return command.get();
        }
    }
    return nullptr;
}

/// Lets the parser of the command line know an option.
struct Declare {
    CLI::App& parser;
    const Option& option;

    void operator()(bool* target) const { parser.add_flag(option.names, *target); }
    void operator()(std::vector<std::string>* target) const
    {
        parser.add_option(option.names, *target)->allow_extra_args(false);
    }
    template <class Target>
    void operator()(Target* target) const
    {
        CLI::Option* declared = parser.add_option(option.names, *target);
        if (!option.choices.empty())
            declared->check(CLI::IsMember(option.choices));
    }
};

/// Parses what stands behind the command's name. \return false where its help is asked for
bool parse(Command& command, std::vector<std::string> words)
{
    CLI::App parser;
    parser.set_help_flag();
    bool help = false;
    parser.add_flag("-h,--help", help);
    for (const Option& option : command.options())
        std::visit(Declare{parser, option}, option.target);
    parser.add_option("arguments", command.arguments());
    std::reverse(words.begin(), words.end()); // as the parser takes them
    try {
        parser.parse(words);
    } catch (const CLI::ParseError& error) {
        throw Failure(usage, std::string(error.what()) + "; see kh " + command.name() + " --help");
    }
    if (help)
        return false;
    if (command.arguments().size() < command.least_arguments())
        throw Failure(usage, command.name() + " needs " + command.synopsis());
    if (command.synopsis().empty() && !command.arguments().empty())
        throw Failure(usage, command.name() + " takes no argument: " + command.arguments().front());
    return true;
}

int run(std::vector<std::string> words)
{
    const CommandList commands = all_commands();
    const std::string first = words.empty() ? "help" : words.front();
    if (first == "--version") {
        print("kh " KH_VERSION_TEXT "\n");
        return done;
    }
    if (first == "--describe") {
        print(describe(commands));
        return done;
    }
    if (first == "--complete" && words.size() == 4) {
        print(complete(commands, words[1], words[2], words[3]));
        return done;
    }
    if (first == "--write-pages" && words.size() == 2) {
        write_pages(commands, words[1]);
        return done;
    }
    const bool asks_for_help = first == "help" || first == "-h" || first == "--help";
    if (asks_for_help && !words.empty())
        words.erase(words.begin());
    if (asks_for_help && words.empty()) {
        print(overview(commands));
        return done;
    }
    const std::string named = words.front();
    Command* command = find(commands, words);
    if (!command) {
        const std::string group = group_overview(commands, named);
        if (group.empty())
            throw Failure(usage, "no command called " + named + "; see kh help");
        if (!asks_for_help && (words.size() < 2 || (words[1] != "-h" && words[1] != "--help")))
            throw Failure(usage, "what of it?\n" + group);
        print(group);
        return done;
    }
    if (asks_for_help || !parse(*command, words)) {
        print(help(*command));
        return done;
    }
    return command->run();
}

} // namespace

int run_command_line(std::vector<std::string> words)
{
    try {
        return run(std::move(words));
    } catch (const Failure& failure) {
        return complain(failure);
    } catch (const std::bad_alloc&) {
        return complain(Failure(cannot_read, "memory ran out"));
    } catch (const std::exception& error) {
        return complain(Failure(cannot_read, error.what()));
    }
}

} // namespace tool
