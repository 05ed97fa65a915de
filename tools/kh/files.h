// Doing the same with many files: which they are, what each of them gives, and in which order that is shown.
#ifndef KALV_TOOLS_FILES_H
#define KALV_TOOLS_FILES_H

#include "document.h"
#include "output.h"

#include <functional>
#include <string>
#include <vector>

namespace tool {

/// The options of every command that takes many files.
struct FileOptions {
    std::vector<std::string> conditions;
    bool keep_going = false;
    long jobs = 1;
    bool no_progress = false;
    /// The least code that ends the work, unless it is to go on. What is not found or not valid is an answer
    /// like any other, except where files are changed.
    ExitCode stops_at = usage;

    /// All of them; `declare_list` leaves out the filter, for names of files that need not exist.
    void declare(Command& command);
    void declare_list(Command& command);
};

/// What one file, or one name, gives. It is shown when those before it have been.
class Report {
public:
    using Flush = std::function<void(std::string& text, bool begins)>;
    /// \param many whether it is one of many files, whose lines begin with the file
    Report(std::string file, bool json, bool many, Flush flush)
        : file_(std::move(file)), is_json_(json), many_(many), flush_(std::move(flush)), json_(text_, 1)
    {
    }

    const std::string& file() const { return file_; }
    bool is_json() const { return is_json_; }

    /// A line of cells.
    void line(const std::vector<std::string>& cells);
    /// The same, behind the file where it is one of many.
    void row(std::vector<std::string> cells);
    /// Text as it is.
    void text(std::string_view text);
    /// The JSON of this file, one value.
    JsonWriter& json();

    /// Something is wrong with the file, and the work goes on.
    void fail(const Failure& failure);
    ExitCode code() const { return code_; }
    const std::vector<std::string>& messages() const { return messages_; }

    /// Hands out what has been written so far.
    void flush();

private:
    void flush_if_large();

    std::string file_;
    bool is_json_;
    bool many_;
    Flush flush_;
    std::string text_;
    JsonWriter json_;
    bool begun_ = false;
    ExitCode code_ = done;
    std::vector<std::string> messages_;
};

/// The columns of a table whose lines Report::row() makes.
std::vector<Column> columns_of(const std::vector<std::string>& files, std::vector<Column> columns);

/// The arguments, with the lines of standard input in the place of "-".
std::vector<std::string> expand_list(const std::vector<std::string>& arguments);

/// Calls `work` for each name, in as many threads as the options ask for. Results appear in the order of the
/// names, as if one were done after the other, and without `keep_going` nothing appears behind the first
/// failure. \return the gravest of all codes
ExitCode for_each_name(const std::vector<std::string>& names, const FileOptions& options, Output& output,
                       const std::function<ExitCode(Report&)>& work);

/// The same with each file opened, for those that meet the conditions.
ExitCode for_each_file(const std::vector<std::string>& arguments, const FileOptions& options, Output& output,
                       const std::function<ExitCode(Document&, Report&)>& work,
                       Document::Missing missing = Document::is_failure);

} // namespace tool

#endif
