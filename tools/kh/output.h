// Standard output and messages: what commands print becomes JSON, tab-separated lines in a pipe, or an
// aligned and coloured table on a terminal.
#ifndef KALV_TOOLS_OUTPUT_H
#define KALV_TOOLS_OUTPUT_H

#include "command.h"
#include "json_writer.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

enum class Style { plain, bold, dim, name, path, number, good, bad };

/// The options of every command that prints.
struct OutputOptions {
    bool json = false;
    std::string color = "auto";

    void declare_color(Command& command);
    void declare(Command& command);
};

struct Column {
    std::string title;
    Style style = Style::plain;
    bool to_the_right = false;
};

/// One cell of a line: what would end the cell or the line is escaped as "\t", "\n", "\r", other control characters
/// as "\x1b" or the like, and "\" as "\\".
std::string escaped(std::string_view cell);

/// A number as text that reads back as that number.
std::string to_text(double number);

/// Whether a stream is a terminal that can move its cursor.
bool is_terminal(int descriptor);

/// Where everything ends up. Lines of cells arrive as text with tabs between the cells.
class Output {
public:
    explicit Output(const OutputOptions& options);
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    bool json() const { return json_; }
    bool on_terminal() const { return terminal_; }

    /// Lays lines out in columns on a terminal; without columns they are printed as they are.
    void set_columns(std::vector<Column> columns);
    void set_style(std::function<Style(const std::vector<std::string>& cells, std::size_t column)> style);

    void write(std::string_view text);
    /// Begins the next element of the JSON array that all output is.
    void begin_element();
    void message(const std::string& text);

    /// Called before anything is printed, so that a progress bar can make room.
    std::function<void()> before_printing;

    /// Prints what is left. \return whether all of it arrived
    bool finish();

private:
    void print(std::string_view text);
    void take_line(std::string_view line);
    void print_table();
    void print_line(const std::vector<std::string>& cells, const std::function<Style(std::size_t)>& style);
    Column column(std::size_t number) const;
    std::string coloured(const std::string& text, Style style) const;

    bool json_;
    bool terminal_;
    bool colour_;
    bool layout_ = false;
    bool failed_ = false;
    std::size_t elements_ = 0;
    std::vector<Column> columns_;
    std::function<Style(const std::vector<std::string>&, std::size_t)> style_;
    std::string rest_; ///< the beginning of a line whose end has not come yet
    std::vector<std::vector<std::string>> lines_;
    std::vector<std::size_t> widths_;
    bool titles_printed_ = false;
};

} // namespace tool

#endif
