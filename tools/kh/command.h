// What a command is: one description, from which its options are parsed and its --help, its manual page and
// the completion of the shell are made.
#ifndef KALV_TOOLS_COMMAND_H
#define KALV_TOOLS_COMMAND_H

#include "failure.h"

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tool {

/// What the shell offers where an argument is typed.
enum class Completion { nothing, file, path, folder };

struct Option {
    using Target = std::variant<bool*, std::string*, std::optional<std::string>*, std::vector<std::string>*,
                                long*, double*>;

    std::string names; ///< "-p,--path"
    std::string value; ///< what stands for its value in texts; empty for a flag
    std::string text;
    Target target;
    Completion completion = Completion::nothing;
    std::vector<std::string> choices; ///< the only values that it takes; empty: any
};

struct Example {
    std::string command;
    std::string text;
};

class Command {
public:
    virtual ~Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    /// Does the work. May throw a Failure.
    virtual ExitCode run() = 0;

    /// One word or two, such as "get" or "header show".
    const std::string& name() const { return name_; }
    /// What its arguments are, such as "FILE [PATH]...".
    const std::string& synopsis() const { return synopsis_; }
    const std::string& summary() const { return summary_; }
    /// Paragraphs, separated by empty lines.
    const std::string& description() const { return description_; }
    const std::vector<Option>& options() const { return options_; }
    const std::vector<Example>& examples() const { return examples_; }

    std::vector<std::string>& arguments() { return arguments_; }
    std::size_t least_arguments() const { return least_arguments_; }

    /// Adds an option. Groups of options that several commands have add themselves with it.
    Option& option(const std::string& names, const std::string& value, Option::Target target,
                   const std::string& text);
    Option& flag(const std::string& names, bool& target, const std::string& text);

protected:
    Command(std::string name, std::string synopsis, std::size_t least_arguments, std::string summary,
            std::string description);

    void example(const std::string& command, const std::string& text);

private:
    std::string name_;
    std::string synopsis_;
    std::size_t least_arguments_;
    std::string summary_;
    std::string description_;
    std::vector<Option> options_;
    std::vector<Example> examples_;
    std::vector<std::string> arguments_;
};

using CommandList = std::vector<std::unique_ptr<Command>>;

/// All commands, in the order in which texts show them.
CommandList all_commands();

// What each of the files of commands adds to the list.
void add_info(CommandList& commands);
void add_ls(CommandList& commands);
void add_find(CommandList& commands);
void add_get(CommandList& commands);
void add_set(CommandList& commands);
void add_cp(CommandList& commands);
void add_header(CommandList& commands);
void add_name(CommandList& commands);
void add_schema(CommandList& commands);
void add_fmt(CommandList& commands);
void add_diff(CommandList& commands);
void add_dump(CommandList& commands);
void add_load(CommandList& commands);

} // namespace tool

#endif
