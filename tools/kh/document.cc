#include "document.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <kalv/file_handling.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace {

struct FreeBlock {
    void operator()(char* block) const { std::free(block); }
};
using Text = std::unique_ptr<char, FreeBlock>;

/// A number and the colon behind it, taken off the front of a text; 0 where there is none.
long take_number(std::string& text)
{
    const std::size_t digits = text.find_first_not_of("0123456789");
    if (digits == 0 || digits == std::string::npos || text[digits] != ':')
        return 0;
    const long number = kh_string_to_integer(text.c_str(), nullptr);
    text.erase(0, digits + 1);
    return number;
}

/// What the parser said, from the library's report, whose last line is "FILE:LINE:COLUMN: MESSAGE".
Failure reading_failure(const std::string& file, const KALV::KalvError& error)
{
    const std::string report = last_report();
    const std::string mark = "\n\t" + file + ':';
    const std::size_t line = report.rfind(mark);
    if (line != std::string::npos) {
        std::string text = report.substr(line + mark.size());
        Place place{file, take_number(text), 0};
        place.column = take_number(text);
        return {cannot_read, place, text.substr(text.find_first_not_of(' '))};
    }
    std::vector<long> codes;
    error.getCodes(codes);
    return {cannot_read, Place{file, 0, 0}, status_text(codes.front())};
}

} // namespace

std::string status_text(long status)
{
    char text[KH_MESSAGE_SIZE];
    kh_basic_error_msg(status, text);
    return std::strncmp(text, "KH: ", 4) == 0 ? text + 4 : text;
}

std::string last_report()
{
    std::string report(static_cast<std::size_t>(KH_last_report(nullptr, 0)), '\0');
    KH_last_report(report.data(), static_cast<long>(report.size()) + 1);
    return report;
}

std::string reason_not_to_open(const std::string& file)
{
    if (file.empty())
        return "a file has no empty name";
    struct stat status;
    if (stat(file.c_str(), &status) != 0)
        return std::strerror(errno);
    if (S_ISDIR(status.st_mode))
        return std::strerror(EISDIR);
    return access(file.c_str(), R_OK) != 0 ? std::strerror(errno) : "";
}

Document::Document(const std::string& file, Missing missing)
    : file_(file), is_new_(missing == is_created && access(file.c_str(), F_OK) != 0 && errno == ENOENT)
{
    const std::string reason = is_new_ ? "" : reason_not_to_open(file);
    if (!reason.empty())
        throw failure(cannot_read, reason);
    try {
        if (is_new_)
            xml_.create();
        else
            xml_.read(file);
    } catch (const KALV::KalvError& error) {
        throw reading_failure(file, error);
    }
    fd_ = xml_.getId();
}

void Document::check_path(const std::string& path)
{
    // The second "[*]" of a path is the tool's own.
    std::string checked = path;
    for (std::size_t star = checked.find("[*]"); star != std::string::npos; star = checked.find("[*]", star))
        checked.replace(star, 3, "[1]");
    long status = KH_OK;
    if (kh_tree_chop_path(&fd_, checked.c_str(), &status) == KH_ERR_PATH_LENGTH)
        throw Failure(usage,
                      "a path with more than " + std::to_string(KH_MAX_PATH_NODES) + " names: " + path);
    if (status != KH_OK)
        throw Failure(usage, "not a path: " + path);
}

std::string Document::absolute(const std::string& path, const std::string& start)
{
    if (!path.empty() && path.front() == '/')
        return path;
    if (!start.empty())
        return start + '/' + path;
    xml_.root();
    return '/' + xml_.currentElementName() + '/' + path;
}

Node Document::cursor() const
{
    return Node(global_current_status[fd_]->current);
}

Node Document::root() const
{
    return Node(global_current_status[fd_]->root);
}

kh_document Document::description()
{
    kh_document description;
    long status = KH_OK;
    if (kh_tree_describe(&fd_, &description, &status) != KH_OK)
        throw failure(cannot_read, status_text(status));
    return description;
}

bool Document::go_to(const std::string& path)
{
    long status = KH_OK;
    return kh_tree_go_to_path_node(&fd_, path.c_str(), &status) == KH_OK;
}

void Document::expand(const std::string& path, const std::function<void(const std::string& path)>& take)
{
    const std::size_t star = path.find("[*]");
    if (star == std::string::npos) {
        take(path);
        return;
    }
    const std::string before = path.substr(0, star);
    const std::string behind = path.substr(star + 3);
    if (!go_to(before))
        return;
    long count = 0;
    kh_tree_get_sibling_index(cursor().handle, &count, nullptr);
    for (long i = 1; i <= count; ++i) {
        std::string one = before;
        expand(one.append(1, '[').append(std::to_string(i)).append(1, ']').append(behind), take);
    }
}

std::vector<std::string> Document::expanded(const std::string& path)
{
    std::vector<std::string> paths;
    expand(absolute(path), [&](const std::string& one) { paths.push_back(one); });
    return paths;
}

std::optional<std::string> Document::value(const std::string& path)
{
    char* block = nullptr;
    long status = KH_OK;
    kh_tree_path_read_string_node_value(&fd_, path.c_str(), &block, &status);
    const Text text(block);
    switch (status) {
    case KH_OK:
        return text.get();
    case KH_ERR_NO_VALUE:
        return "";
    case KH_ERR_NOT_TERMINAL:
        if (cursor().holds_elements())
            throw failure(different, cursor(), path + ": holds elements, and so has no value of its own");
        return cursor().value();
    case KH_ERR_MEMORY:
        throw failure(cannot_read, status_text(status));
    default:
        return attribute_as_written(path);
    }
}

std::optional<std::string> Document::attribute_as_written(const std::string& path)
{
    const std::size_t name = path.rfind("/@");
    if (name == std::string::npos || !go_to(path.substr(0, name)))
        return std::nullopt;
    const std::optional<Attribute> attribute = attribute_of(cursor(), path.substr(name + 2));
    return attribute ? std::optional(attribute->value) : std::nullopt;
}

} // namespace tool
