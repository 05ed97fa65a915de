#include "command.h"

namespace tool {

Command::Command(std::string name, std::string synopsis, std::size_t least_arguments, std::string summary,
                 std::string description)
    : name_(std::move(name)), synopsis_(std::move(synopsis)), least_arguments_(least_arguments),
      summary_(std::move(summary)), description_(std::move(description))
{
}

Option& Command::option(const std::string& names, const std::string& value, Option::Target target,
                        const std::string& text)
{
    options_.push_back({names, value, text, target, Completion::nothing, {}});
    return options_.back();
}

Option& Command::flag(const std::string& names, bool& target, const std::string& text)
{
    return option(names, "", &target, text);
}

void Command::example(const std::string& command, const std::string& text)
{
    examples_.push_back({command, text});
}

CommandList all_commands()
{
    CommandList commands;
    add_info(commands);
    add_ls(commands);
    add_get(commands);
    add_find(commands);
    add_set(commands);
    add_cp(commands);
    add_header(commands);
    add_name(commands);
    add_schema(commands);
    add_fmt(commands);
    add_diff(commands);
    add_dump(commands);
    add_load(commands);
    return commands;
}

} // namespace tool
