#include "output.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace tool {

namespace {

/// Lines that are kept to find the widths of columns; those behind them use the widths found.
constexpr std::size_t most_lines_kept = 10000;

/// Wider cells do not widen their column: they would push everything else off the screen.
constexpr std::size_t widest_column = 100;

/// How many characters a text has.
std::size_t width_of(std::string_view text)
{
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::vector<std::string> split(std::string_view line, char separator)
{
    std::vector<std::string> cells;
    for (std::size_t begin = 0; begin <= line.size();) {
        const std::size_t end = std::min(line.find(separator, begin), line.size());
        cells.emplace_back(line.substr(begin, end - begin));
        begin = end + 1;
    }
    return cells;
}

const char* escape_sequence(Style style)
{
    switch (style) {
    case Style::bold:
        return "\x1b[1m";
    case Style::dim:
        return "\x1b[2m";
    case Style::name:
        return "\x1b[35m";
    case Style::path:
        return "\x1b[36m";
    case Style::number:
        return "\x1b[33m";
    case Style::good:
        return "\x1b[32m";
    case Style::bad:
        return "\x1b[31m";
    case Style::plain:
        break;
    }
    return "";
}

} // namespace

void OutputOptions::declare_color(Command& command)
{
    command
        .option("--color", "WHEN", &color,
                "colour the output: on a terminal, always or never (the variable NO_COLOR, too)")
        .choices = {"auto", "always", "never"};
}

void OutputOptions::declare(Command& command)
{
    command.flag("--json", json, "print JSON: an array with an object for each file");
    declare_color(command);
}

std::string escaped(std::string_view cell)
{
    std::string text;
    text.reserve(cell.size());
    for (const char c : cell) {
        if (c == '\\')
            text += "\\\\";
        else
            append_visible(text, c);
    }
    return text;
}

std::string to_text(double number)
{
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

bool is_terminal(int descriptor)
{
    const char* type = std::getenv("TERM");
    return isatty(descriptor) != 0 && type && std::strcmp(type, "dumb") != 0;
}

Output::Output(const OutputOptions& options)
    : json_(options.json), terminal_(isatty(STDOUT_FILENO) != 0 && !options.json),
      colour_(!options.json &&
              (options.color == "always" ||
               (options.color == "auto" && is_terminal(STDOUT_FILENO) && !std::getenv("NO_COLOR"))))
{
}

void Output::set_columns(std::vector<Column> columns)
{
    columns_ = std::move(columns);
    layout_ = terminal_ || colour_;
}

void Output::set_style(std::function<Style(const std::vector<std::string>&, std::size_t)> style)
{
    style_ = std::move(style);
}

void Output::begin_element()
{
    print(elements_++ == 0 ? "[\n  " : ",\n  ");
}

void Output::write(std::string_view text)
{
    if (!layout_) {
        print(text);
        return;
    }
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        rest_ += text.substr(0, end);
        take_line(rest_);
        rest_.clear();
        text.remove_prefix(end + 1);
    }
    rest_ += text;
}

void Output::message(const std::string& text)
{
    if (before_printing)
        before_printing();
    std::fflush(stdout);
    std::fprintf(stderr, "%s\n", text.c_str());
}

void Output::print(std::string_view text)
{
    if (before_printing)
        before_printing();
    failed_ = failed_ || std::fwrite(text.data(), 1, text.size(), stdout) != text.size();
}

void Output::take_line(std::string_view line)
{
    lines_.push_back(split(line, '\t'));
    const std::vector<std::string>& cells = lines_.back();
    if (widths_.size() < cells.size())
        widths_.resize(cells.size());
    for (std::size_t i = 0; i < cells.size(); ++i)
        widths_[i] = std::max(widths_[i], std::min(width_of(cells[i]), widest_column));
    if (lines_.size() >= most_lines_kept)
        print_table();
}

void Output::print_table()
{
    if (terminal_ && !titles_printed_ && columns_.size() > 1 && !lines_.empty()) {
        std::vector<std::string> titles;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            titles.push_back(columns_[i].title);
            if (i < widths_.size())
                widths_[i] = std::max(widths_[i], width_of(columns_[i].title));
        }
        print_line(titles, [](std::size_t) { return Style::bold; });
    }
    titles_printed_ = true;
    for (const std::vector<std::string>& cells : lines_)
        print_line(cells, [&](std::size_t i) { return style_ ? style_(cells, i) : column(i).style; });
    lines_.clear();
}

void Output::print_line(const std::vector<std::string>& cells, const std::function<Style(std::size_t)>& style)
{
    std::string text;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::size_t room = i < widths_.size() ? widths_[i] : 0;
        const std::string padding(terminal_ ? room - std::min(room, width_of(cells[i])) : 0, ' ');
        const bool last = i + 1 == cells.size();
        if (column(i).to_the_right)
            text += padding;
        text += coloured(cells[i], style(i));
        if (!last)
            text += (column(i).to_the_right ? "" : padding) + (terminal_ ? "  " : "\t");
    }
    print(text + '\n');
}

Column Output::column(std::size_t number) const
{
    return number < columns_.size() ? columns_[number] : Column();
}

std::string Output::coloured(const std::string& text, Style style) const
{
    if (!colour_ || style == Style::plain || text.empty())
        return text;
    return escape_sequence(style) + text + "\x1b[0m";
}

bool Output::finish()
{
    if (!rest_.empty()) {
        take_line(rest_);
        rest_.clear();
    }
    if (layout_)
        print_table();
    if (json_)
        print(elements_ == 0 ? "[]\n" : "\n]\n");
    return std::fflush(stdout) == 0 && !failed_;
}

} // namespace tool
