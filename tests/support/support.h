// What the tests share: documents made from a text, reports caught, folders that go away.
#ifndef KALV_TESTS_SUPPORT_H
#define KALV_TESTS_SUPPORT_H

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <kalv/file_handling.h>
#include <libxml/tree.h>
#include <string>
#include <string_view>

namespace support {

/// A folder of its own, removed with all it holds.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    std::string path(std::string_view name) const { return (folder_ / name).string(); }
    /// Writes a file into the folder and returns its path.
    std::string file(std::string_view name, std::string_view content) const;
    /// How many entries the folder holds.
    std::size_t entries() const;

private:
    std::filesystem::path folder_;
};

std::string content_of(const std::string& file);

/// What a callback printed on standard error or standard output, caught into a file.
std::string written_to_stderr(const std::function<void()>& action);
std::string written_to_stdout(const std::function<void()>& action);

/// Verbose while it lives, silent afterwards.
struct Verbose {
    Verbose() { kh_verbose(); }
    ~Verbose() { kh_silent(); }
    Verbose(const Verbose&) = delete;
    Verbose& operator=(const Verbose&) = delete;
};

/// What a callback prints on standard error in verbose mode.
std::string report_of(const std::function<void()>& action);

/// An open document, made from a text (by way of a file) or empty; released with the object.
class Document {
public:
    Document();                              ///< kh_tree_create
    explicit Document(std::string_view xml); ///< kh_tree_init_parser on a file of that content
    static Document file(const std::string& name);
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    long fd = -1;
    long status = 0; ///< for `&document.status`
    kh_document_slot* slot() const { return global_current_status[fd]; }
    xmlNode* root() const { return slot()->root; }
    xmlNode* current() const { return slot()->current; }
    /// The name of the node under the cursor; "" for no node.
    std::string current_name() const;
    /// The cursor's path as the library writes it; the report's code where it cannot.
    std::string path() const;
    /// Moves the cursor; the test fails if that fails.
    void go_to(const char* path);
    /// The path stack as "name[index] name[index] ...", indices as stored.
    std::string stack() const;
    /// The bytes that kh_tree_write writes.
    std::string written();

private:
    explicit Document(long descriptor) : fd(descriptor) {}
    TemporaryFolder folder_;
};

/// A text of the library's, freed with the object.
struct Text {
    char* value = nullptr;
    Text() = default;
    ~Text() { free(value); }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    char** out() { return &value; }
    std::string string() const { return value ? value : "(null)"; }
};

/// A process locale whose numbers have a decimal comma, as long as it lives.
class CommaLocale {
public:
    CommaLocale();
    ~CommaLocale();
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;
    /// True when it could be made and no call has changed it since.
    bool is_set() const;

private:
    TemporaryFolder folder_;
};

/// As long as it lives, the process may do no more than any user: permissions hold for the superuser, too.
class Unprivileged {
public:
    Unprivileged();
    ~Unprivileged();
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

private:
    unsigned effective_user_;
};

/// A file of Debian's that nobody here wrote; skips the test when it is not installed.
std::string debian_file(const std::string& path);

} // namespace support

#endif
