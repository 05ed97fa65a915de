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

/// Why a file cannot be opened at all; empty where it can.
std::string reason_not_to_open(const std::string& file)
{
    struct stat status;
    if (stat(file.c_str(), &status) != 0)
        return std::strerror(errno);
    if (S_ISDIR(status.st_mode))
        return std::strerror(EISDIR);
    return access(file.c_str(), R_OK) != 0 ? std::strerror(errno) : "";
}

} // namespace

std::string status_text(long status)
{
    char text[KH_MESSAGE_SIZE];
    kh_basic_error_msg(status, text);
    return std::strncmp(text, "KH: ", 4) == 0 ? text + 4 : text;
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
        std::vector<long> codes;
        error.getCodes(codes);
        throw failure(cannot_read,
                      codes.front() == KH_ERR_PARSE ? "not well-formed XML" : status_text(codes.front()));
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
    kh_tree_get_sibling_index(global_current_status[fd_]->current, &count, nullptr);
    for (long i = 1; i <= count; ++i) {
        std::string one = before;
        expand(one.append(1, '[').append(std::to_string(i)).append(1, ']').append(behind), take);
    }
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
        throw failure(different, path + ": holds more than one text");
    case KH_ERR_MEMORY:
        throw failure(cannot_read, status_text(status));
    default:
        return std::nullopt;
    }
}

} // namespace tool
