#include "torture/session.h"

#include "torture/describe.h"
#include "torture/symbols.h"

#include <algorithm>
#include <libxml/tree.h>
#include <zlib.h>

namespace torture {

Call& Call::operator<<(const xmlNode* node)
{
    return *this << (node ? reinterpret_cast<const char*>(node->name) : nullptr);
}

void Call::remember(const void* function)
{
    if (names_)
        names_->insert(name_of(function));
}

Step Session::described(const Call& call) const
{
    return {call.status, call.result, described_positions(), described_trees(), files()};
}

/// What a file holds, which may be compressed.
static std::string inflated_content_of(const std::string& name)
{
    std::string content;
    const gzFile file = gzopen(name.c_str(), "rb");
    for (int count = 1; file && count > 0;) {
        char piece[8192];
        count = gzread(file, piece, sizeof piece);
        content.append(piece, static_cast<std::size_t>(std::max(count, 0)));
    }
    gzclose(file);
    return content;
}

std::string Session::files() const
{
    std::string text;
    for (const std::string& file : watched_)
        text += inflated_content_of(file) + '\0';
    return text;
}

void Session::watch(const std::string& file)
{
    watched_.push_back(file);
    files_ = files();
}

bool Session::goes_on_as(const Step& right, const Call& call)
{
    if (call.status != right.status || call.result != right.result)
        return false;
    files_ = right.files;
    ++next_;
    return true;
}

std::string Session::trees()
{
    return described_trees();
}

static bool operator==(const Step& left, const Step& right)
{
    return left.status == right.status && left.result == right.result && left.positions == right.positions &&
           left.trees == right.trees && left.files == right.files;
}

/// A description or a file without its indentation.
static std::string unindented(std::string text)
{
    const auto is_blank = [](char c) { return c == ' ' || c == '\n'; };
    text.erase(std::remove_if(text.begin(), text.end(), is_blank), text.end());
    const std::string blank_node = "3'text'''";
    for (std::size_t at = 0; (at = text.find(blank_node, at)) != std::string::npos;)
        text.erase(at, blank_node.size());
    return text;
}

static bool may_be_left(Leaves leaves, const std::string& is, const std::string& before,
                        const std::string& right)
{
    if (is == before || leaves == Leaves::remains)
        return true;
    const std::string plain = unindented(is);
    return leaves == Leaves::indentation && (plain == unindented(before) || plain == unindented(right));
}

bool Session::judge(const Step& step, const Failure& failure, const std::string& files_before)
{
    const Step& right = right_->at(next_);
    if (step == right) {
        ++next_;
        return false;
    }
    const Leaves in_files = failure.leaves == Leaves::remains ? Leaves::nothing : failure.leaves;
    const bool is_described = std::count(failure.codes.begin(), failure.codes.end(), step.status) > 0;
    if (!is_described)
        complain(step.status == right.status ? "silently different" : "status is not described", step, right);
    else if (!may_be_left(failure.leaves, step.trees, trees_before(), right.trees))
        complain("failed, and changed the document", step, {0, "", "", trees_before(), ""});
    else if (!may_be_left(in_files, step.files, files_before, right.files))
        complain("failed, and changed the file", step, {0, "", "", "", files_before});
    lost_ =
        !complaint_.empty() || failing_ == memory::Failing::from_then_on || failure.leaves == Leaves::remains;
    return !lost_;
}

void Session::judge_repeated(const Step& step)
{
    const Step& right = right_->at(next_++);
    files_ = step.files;
    if (step == right)
        return;
    lost_ = true;
    complain("different when repeated after a failure", step, right);
}

static std::string difference(const char* of, const std::string& is, const std::string& right)
{
    if (is == right)
        return "";
    const auto start = std::mismatch(is.begin(), is.end(), right.begin(), right.end()).first - is.begin();
    const auto from = static_cast<std::size_t>(std::max<std::ptrdiff_t>(start - 30, 0));
    return std::string("\n    ") + of + " ..." + is.substr(std::min(from, is.size()), 120) + "\n    not " +
           right.substr(std::min(from, right.size()), 120);
}

void Session::complain(const std::string& what, const Step& step, const Step& right)
{
    complaint_ += "step " + std::to_string(next_) + " " + what + ", status " + std::to_string(step.status) +
                  difference("result", step.result, right.result) +
                  difference("position", step.positions, right.positions) +
                  difference("tree", step.trees, right.trees) + difference("file", step.files, right.files);
}

} // namespace torture
