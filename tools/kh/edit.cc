#include "edit.h"

#include <kalv/build.h>
#include <kalv/status.h>

#include <filesystem>
#include <unistd.h>

namespace tool {

namespace {

/// What was built by functions that leave the indentation to be completed is saved with `write`.
using Save = long (*)(long*, const char*, long*);

void save(Document& document, Save write)
{
    long status = KH_OK;
    write(document.fd(), document.file().c_str(), &status);
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
                save(document, missing == Document::is_created ? kh_tree_write : kh_tree_save);
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
