#include "edit.h"

#include <kalv/build.h>
#include <kalv/status.h>

#include <filesystem>
#include <unistd.h>

namespace tool {

namespace {

/// Keeps the file that stands there now under another name, complete or not at all.
void keep_old(const Document& document, const std::string& suffix)
{
    if (document.is_new() || suffix.empty())
        return;
    const std::string backup = document.file() + suffix;
    const std::string unfinished = backup + '.' + std::to_string(getpid());
    std::error_code error;
    std::filesystem::copy_file(document.file(), unfinished, error);
    if (!error)
        std::filesystem::rename(unfinished, backup, error);
    if (!error)
        return;
    std::error_code ignored;
    std::filesystem::remove(unfinished, ignored);
    throw Failure(cannot_write, Place{backup, 0, 0}, error.message());
}

void save(Document& document)
{
    long status = KH_OK;
    kh_tree_write(document.fd(), document.file().c_str(), &status);
    if (status != KH_OK)
        throw document.failure(cannot_write, "cannot be written; the file is as it was");
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

void EditOptions::declare(Command& command)
{
    command.flag("-n,--dry-run", dry_run, "show what would change, and change nothing");
    command.flag("-v,--verbose", verbose, "show what changes");
    command.option("-b,--backup", "SUFFIX", &backup,
                   "keep the old file under its name with SUFFIX behind it");
    files.stops_at = different;
    files.declare(command);
    output.declare_color(command);
}

ExitCode edit_files(const std::vector<std::string>& arguments, const EditOptions& options,
                    const std::function<std::vector<Change>(Document&)>& edit, Document::Missing missing)
{
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
                keep_old(document, options.backup);
                save(document);
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
