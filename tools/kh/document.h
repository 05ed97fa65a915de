// An open file: its values and nodes by path, and failures in words that operators understand.
#ifndef KALV_TOOLS_DOCUMENT_H
#define KALV_TOOLS_DOCUMENT_H

#include "failure.h"
#include "tree.h"

#include <functional>
#include <kalv/XmlFile.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

class Document {
public:
    enum Missing { is_failure, is_created };

    /// Opens a file. Throws a Failure (cannot_read). One that does not exist can be begun as an empty
    /// document.
    explicit Document(const std::string& file, Missing missing = is_failure);

    const std::string& file() const { return file_; }
    /// True where there is no such file yet.
    bool is_new() const { return is_new_; }
    KALV::XmlFile& xml() { return xml_; }
    /// The descriptor's address, as the procedural interface takes it.
    long* fd() { return &fd_; }

    /// Throws a Failure (usage) where a text is no path.
    void check_path(const std::string& path);

    /// The path from the root that a path stands for which starts at an element, or else at the root.
    std::string absolute(const std::string& path, const std::string& start = {});

    /// Moves the cursor along a path. \return false where it leads nowhere
    bool go_to(const std::string& path);

    /// Calls `take` with the path of each node that a path with any number of "[*]" stands for, in document
    /// order; once, where it has none. The nodes need not exist, except for those that "[*]" stands for.
    void expand(const std::string& path, const std::function<void(const std::string& path)>& take);

    /// The paths from the root that a path stands for.
    std::vector<std::string> expanded(const std::string& path);

    /// The text of an element or attribute. None where there is no such element or attribute. Throws a
    /// Failure (different) for an element that holds elements.
    std::optional<std::string> value(const std::string& path);

    /// The path of the element under the cursor.
    std::string cursor_path() const { return xml_.currentPathName(); }

    /// The node under the cursor.
    Node cursor() const;
    Node root() const;
    /// What the document declares of itself, and its first node.
    kh_document description();

    /// A failure that concerns a node of this file.
    Failure failure(ExitCode code, const Node& node, const std::string& text) const
    {
        return {code, Place{file_, node.line, 0}, text};
    }
    /// A failure that concerns this file.
    Failure failure(ExitCode code, const std::string& text) const { return {code, Place{file_, 0, 0}, text}; }

private:
    /// The library finds attributes without their prefix, and no namespace declarations.
    std::optional<std::string> attribute_as_written(const std::string& path);

    std::string file_;
    bool is_new_ = false;
    KALV::XmlFile xml_;
    long fd_ = -1;
};

/// What the library reported last in this thread.
std::string last_report();

/// Why a file cannot be opened at all; empty where it can.
std::string reason_not_to_open(const std::string& file);

/// The text of a status, without the library's mark in front.
std::string status_text(long status);

} // namespace tool

#endif
