#include "pages.h"

#include "completion.h"
#include "json_writer.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <kalv/version.h>
#include <sstream>

namespace tool {

namespace {

constexpr std::size_t text_width = 80;

constexpr const char* purpose =
    "kh looks into product files and other XML files, changes them and checks them.";

constexpr const char* exit_codes[] = {"done, or found, or equal", "not found, different or not valid",
                                      "the command line makes no sense", "a file cannot be read",
                                      "a file cannot be written"};

std::string exit_code_list()
{
    std::string text = "Exit codes:\n";
    int code = 0;
    for (const char* meaning : exit_codes)
        text += "  " + std::to_string(code++) + "  " + meaning + '\n';
    return text;
}

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

/// A text as the manual's language takes it: "-" would become a hyphen, and a "." that begins a line a request.
std::string as_manual(const std::string& text)
{
    std::string escaped = !text.empty() && (text.front() == '.' || text.front() == '\'') ? "\\&" : "";
    for (const char c : text) {
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += "\\-";
        else
            escaped += c;
    }
    return escaped;
}

std::string page_name(const Command& command)
{
    std::string name = "kh-" + command.name();
    std::replace(name.begin(), name.end(), ' ', '-');
    return name;
}

std::string manual_head(const std::string& name, const std::string& summary)
{
    std::string capitals = name;
    std::transform(name.begin(), name.end(), capitals.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return ".TH " + as_manual(capitals) + " 1 \"\" \"kh " KH_VERSION_TEXT "\" \"User Commands\"\n.SH NAME\n" +
           as_manual(name) + " \\- " + as_manual(summary) + '\n';
}

std::string manual_exit_codes()
{
    std::string text = ".SH \"EXIT STATUS\"\n";
    int code = 0;
    for (const char* meaning : exit_codes)
        text += ".TP\n.B " + std::to_string(code++) + '\n' + as_manual(meaning) + '\n';
    return text;
}

std::string manual_page(const Command& command)
{
    std::string text = manual_head(page_name(command), command.summary());
    text += ".SH SYNOPSIS\n.B kh " + as_manual(command.name()) + "\n[OPTION]... " +
            as_manual(command.synopsis()) + '\n';
    text += ".SH DESCRIPTION\n";
    for (const std::string& paragraph : paragraphs(command.description()))
        text += ".PP\n" + as_manual(paragraph) + '\n';
    text += ".SH OPTIONS\n";
    for (const Option& option : command.options())
        text += ".TP\n.B " + as_manual(usage_of(option)) + '\n' + as_manual(text_of(option)) + '\n';
    text += ".TP\n.B \\-h, \\-\\-help\nshow a help text\n" + manual_exit_codes() + ".SH EXAMPLES\n";
    for (const Example& example : command.examples())
        text += ".TP\n" + as_manual(example.text) + ":\n.EX\n" + as_manual(example.command) + "\n.EE\n";
    return text + ".SH \"SEE ALSO\"\n.BR kh (1)\n";
}

std::string manual_page(const CommandList& commands)
{
    std::string text =
        manual_head("kh", "look into product files and other XML files, change and check them");
    text += ".SH SYNOPSIS\n.B kh\nCOMMAND [OPTION]... FILE...\n.SH DESCRIPTION\n" + as_manual(purpose) +
            "\nEach command has a page of its own.\n.SH COMMANDS\n";
    for (const auto& command : commands)
        text +=
            ".TP\n.BR " + as_manual(page_name(*command)) + " (1)\n" + as_manual(command->summary()) + '\n';
    return text + manual_exit_codes();
}

void write_file(const std::filesystem::path& file, const std::string& text)
{
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file);
    stream << text;
    stream.close();
    if (!stream)
        throw Failure(cannot_write, Place{file.string(), 0, 0}, "cannot be written");
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
    return std::string(purpose) + "\n\nUsage: kh COMMAND [OPTION]... FILE...\n\nCommands:\n" +
           list(commands, "") +
           "\nkh help COMMAND, or kh COMMAND --help, tells more, with examples.\n"
           "kh --version prints the version.\n\n" +
           exit_code_list();
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
    return text + exit_code_list();
}

void write_pages(const CommandList& commands, const std::string& folder)
{
    const std::filesystem::path manual = std::filesystem::path(folder) / "man" / "man1";
    write_file(manual / "kh.1", manual_page(commands));
    for (const auto& command : commands)
        write_file(manual / (page_name(*command) + ".1"), manual_page(*command));
    write_file(std::filesystem::path(folder) / "bash-completion" / "completions" / "kh", bash_completion());
}

} // namespace tool
