#include "pages.h"

#include "json_writer.h"

#include <algorithm>
#include <kalv/version.h>
#include <sstream>

namespace tool {

namespace {

constexpr std::size_t text_width = 80;

constexpr const char* exit_codes = R"(Exit codes:
  0  done, or found, or equal
  1  not found, different or not valid
  2  the command line makes no sense
  3  a file cannot be read
  4  a file cannot be written
)";

/// A paragraph in lines of the text's width, each behind an indentation.
std::string wrapped(const std::string& text, std::size_t indentation)
{
    std::istringstream words(text);
    std::string lines;
    std::string line;
    for (std::string word; words >> word;) {
        if (!line.empty() && indentation + line.size() + 1 + word.size() > text_width) {
            lines += std::string(indentation, ' ') + line + '\n';
            line.clear();
        }
        line += (line.empty() ? "" : " ") + word;
    }
    return lines + std::string(indentation, ' ') + line + '\n';
}

std::vector<std::string> paragraphs(const std::string& text)
{
    std::vector<std::string> all;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find("\n\n", begin), text.size());
        all.push_back(text.substr(begin, end - begin));
        begin = end + 2;
    }
    return all;
}

/// "-p, --path PATH"
std::string usage_of(const Option& option)
{
    std::string names = option.names;
    const std::size_t comma = names.find(',');
    if (comma != std::string::npos)
        names.insert(comma + 1, " ");
    return option.value.empty() ? names : names + ' ' + option.value;
}

std::string text_of(const Option& option)
{
    std::string text = option.text;
    for (const std::string& choice : option.choices)
        text += (&choice == &option.choices.front() ? " (" : ", ") + choice;
    return option.choices.empty() ? text : text + ')';
}

std::string list(const CommandList& commands, const std::string& group)
{
    std::size_t width = 0;
    const auto belongs = [&](const Command& command) {
        return group.empty() || command.name().rfind(group + ' ', 0) == 0;
    };
    for (const auto& command : commands)
        width = std::max(width, belongs(*command) ? command->name().size() : 0);
    std::string text;
    for (const auto& command : commands) {
        if (belongs(*command))
            text += "  " + command->name() + std::string(width + 2 - command->name().size(), ' ') +
                    command->summary() + '\n';
    }
    return text;
}

} // namespace

std::string overview(const CommandList& commands)
{
    return "kh looks into product files and other XML files, changes them and checks them.\n\n"
           "Usage: kh COMMAND [OPTION]... FILE...\n\nCommands:\n" +
           list(commands, "") +
           "\nkh help COMMAND, or kh COMMAND --help, tells more, with examples.\n"
           "kh --version prints the version.\n\n" +
           exit_codes;
}

std::string group_overview(const CommandList& commands, const std::string& group)
{
    const std::string text = list(commands, group);
    return text.empty() ? text : "Usage: kh COMMAND [OPTION]...\n\nCommands:\n" + text;
}

std::string describe(const CommandList& commands)
{
    std::string text;
    JsonWriter json(text);
    json.begin_array();
    for (const auto& command : commands) {
        json.begin_object().member("name", command->name()).member("synopsis", command->synopsis());
        json.member("summary", command->summary()).key("options").begin_array();
        for (const Option& option : command->options())
            json.value(option.names);
        json.end().key("examples").begin_array();
        for (const Example& example : command->examples())
            json.value(example.command);
        json.end().end();
    }
    json.end();
    return text + '\n';
}

std::string help(const Command& command)
{
    std::string text = "kh " + command.name() + ": " + command.summary() + "\n\nUsage: kh " + command.name() +
                       " [OPTION]... " + command.synopsis() + '\n';
    for (const std::string& paragraph : paragraphs(command.description()))
        text += '\n' + wrapped(paragraph, 0);
    text += "\nExamples:\n";
    for (const Example& example : command.examples())
        text += "  " + example.command + '\n' + wrapped(example.text, 6);
    text += "\nOptions:\n";
    for (const Option& option : command.options())
        text += "  " + usage_of(option) + '\n' + wrapped(text_of(option), 6);
    text += "  -h, --help\n      show this text\n\n";
    return text + exit_codes;
}

} // namespace tool
