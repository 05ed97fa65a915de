#include "edit.h"

#include "interruption.h"

#include <kalv/build.h>
#include <kalv/status.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace tool {

namespace {

/// Why the last call of the library could not save a file.
std::string reason_not_saved(const std::string& file)
{
    const std::string report = last_report();
    const std::string mark = "\n\t" + file + ": ";
    const std::size_t line = report.rfind(mark);
    return line == std::string::npos ? "cannot be written" : report.substr(line + mark.size());
}

/// The library writes a file in place where it cannot put a new one beside it. What fails then leaves half a
/// file.
void refuse_to_write_in_place(const std::string& file)
{
    std::error_code error;
    const std::filesystem::path target = std::filesystem::canonical(file, error);
    if (error || !std::filesystem::is_regular_file(target, error))
        return;
    const std::string folder = target.parent_path().string();
    if (access(folder.c_str(), W_OK) != 0)
        throw Failure(cannot_write, Place{file, 0, 0},
                      "cannot be replaced as a whole: " + folder + ": " + std::strerror(errno));
}

void show(const std::vector<Change>& changes, Report& report)
{
    for (const Change& change : changes) {
        if (change.before)
            report.line({"-", report.file(), change.path, *change.before});
        if (change.after)
            report.line({"+", report.file(), change.path, *change.after});
    }
}

} // namespace

void save_file(long* fd, const std::string& file, Save write)
{
    refuse_to_write_in_place(file);
    long status = KH_OK;
    write(fd, file.c_str(), &status);
    if (status != KH_OK)
        throw Failure(cannot_write, Place{file, 0, 0}, reason_not_saved(file) + "; the file is as it was");
}

void keep_old(const std::string& file, const std::string& suffix)
{
    if (suffix.empty() || !std::filesystem::exists(file))
        return;
    const std::string backup = file + suffix;
    const std::string unfinished = backup + '.' + std::to_string(getpid());
    std::error_code error;
    std::filesystem::copy_file(file, unfinished, error);
    if (!error)
        std::filesystem::rename(unfinished, backup, error);
    if (!error)
        return;
    std::error_code ignored;
    std::filesystem::remove(unfinished, ignored);
    throw Failure(cannot_write, Place{backup, 0, 0}, error.message());
}

void EditOptions::declare_for_one(Command& command)
{
    command.flag("-n,--dry-run", dry_run, "show what would change, and change nothing");
    command.flag("-v,--verbose", verbose, "show what changes");
    command.option("-b,--backup", "SUFFIX", &backup,
                   "keep the old file under its name with SUFFIX behind it");
    output.declare_color(command);
}

void EditOptions::declare(Command& command)
{
    declare_for_one(command);
    files.stops_at = different;
    files.declare(command);
}

ExitCode edit_files(const std::vector<std::string>& arguments, const EditOptions& options,
                    const std::function<std::vector<Change>(Document&)>& edit, Document::Missing missing)
{
    // A file that is being changed is changed to the end, also where nobody reads any more what is shown.
    std::signal(SIGPIPE, SIG_IGN);
    defer_interruptions();
    Output output(options.output);
    if (options.dry_run || options.verbose) {
        output.set_columns({{""}, {"file", Style::name}, {"path", Style::path}, {"value"}});
        output.set_style([](const std::vector<std::string>& cells, std::size_t column) {
            return column == 1 || column == 2 ? Style::plain
                   : cells.front() == "-"     ? Style::bad
                                              : Style::good;
        });
    }
    return for_each_file(
        arguments, options.files, output,
        [&](Document& document, Report& report) {
            const std::vector<Change> changes = edit(document);
            if (options.dry_run || options.verbose)
                show(changes, report);
            if (!options.dry_run && !changes.empty()) {
                keep_old(document.file(), options.backup);
                save_file(document.fd(), document.file(),
                          missing == Document::is_created ? kh_tree_write : kh_tree_save);
            }
            return done;
        },
        missing);
}

void check_edit(const Document& document, const std::string& path, long status)
{
    switch (status) {
    case KH_OK:
        return;
    case KH_ERR_NOT_FOUND:
        throw document.failure(different, path + ": not found");
    case KH_WARN_LENGTH:
        throw document.failure(cannot_write, path + ": the value is too long: more than 510 bytes");
    case KH_ERR_ARGUMENT:
        throw document.failure(cannot_write, path + ": a name or text that XML does not allow");
    case KH_ERR_NOT_ELEMENT:
        throw document.failure(cannot_write, path + ": not an element");
    default:
        throw document.failure(cannot_write, path + ": " + status_text(status));
    }
}

std::string as_content(const std::string& value)
{
    std::string content;
    for (const char c : value) {
        if (c == '&')
            content += "&amp;";
        else
            content += c;
    }
    return content;
}

} // namespace tool
