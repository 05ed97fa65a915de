// Changing files: what was changed is shown or saved, and a file is always the whole old or the whole new
// one.
#ifndef KALV_TOOLS_EDIT_H
#define KALV_TOOLS_EDIT_H

#include "files.h"

namespace tool {

/// The options of every command that changes files.
struct EditOptions {
    FileOptions files;
    OutputOptions output;
    bool dry_run = false;
    bool verbose = false;
    std::string backup;

    void declare(Command& command);
    /// The same without what is for many files.
    void declare_for_one(Command& command);
};

/// One change, for those who want to see it.
struct Change {
    std::string path;
    std::optional<std::string> before; ///< none for something new
    std::optional<std::string> after;  ///< none for something removed
};

/// Changes each of the files that meet the conditions. `edit` tells what it changed; without a change the
/// file stays as it is. A file that does not exist is begun as an empty document where `missing` says so.
ExitCode edit_files(const std::vector<std::string>& arguments, const EditOptions& options,
                    const std::function<std::vector<Change>(Document&)>& edit,
                    Document::Missing missing = Document::is_failure);

/// What saves a document: kh_tree_save, or kh_tree_write for what was built by functions that leave the
/// indentation to be completed.
using Save = long (*)(long*, const char*, long*);

/// Saves a document, complete or not at all. Throws a Failure (cannot_write).
void save_file(long* fd, const std::string& file, Save write);

/// Keeps a file that exists under its name with a suffix behind it, complete or not at all. Without a suffix nothing
/// is kept.
void keep_old(const std::string& file, const std::string& suffix);

/// Throws the Failure for a status of an editing call; a cut value is one, too.
void check_edit(const Document& document, const std::string& path, long status);

/// A value as the library's setters for elements take it so that it reads back as it is here: they take
/// references for what they stand for.
std::string as_content(const std::string& value);

} // namespace tool

#endif
