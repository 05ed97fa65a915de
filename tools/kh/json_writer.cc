#include "json_writer.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace tool {

namespace {

/// True where a text needs no escapes: most do not, and quotes around it are then enough.
bool is_plain(std::string_view text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return c >= ' ' && c < 0x7f && c != '"' && c != '\\'; });
}

std::string as_json(const nlohmann::json& value)
{
    return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace

void append_json_text(std::string& out, std::string_view text)
{
    if (is_plain(text))
        out.append(1, '"').append(text).append(1, '"');
    else
        out += as_json(text);
}

JsonWriter& JsonWriter::begin(char opening, char closing, bool on_one_line)
{
    begin_value();
    out_ += opening;
    levels_.push_back({closing, on_one_line || (!levels_.empty() && levels_.back().on_one_line), true});
    return *this;
}

JsonWriter& JsonWriter::end()
{
    const Level level = levels_.back();
    levels_.pop_back();
    if (!level.empty && !level.on_one_line)
        new_line();
    out_ += level.closing;
    return *this;
}

JsonWriter& JsonWriter::key(std::string_view name)
{
    begin_value();
    append_json_text(out_, name);
    out_ += ": ";
    after_key_ = true;
    return *this;
}

JsonWriter& JsonWriter::value(std::string_view text)
{
    begin_value();
    append_json_text(out_, text);
    return *this;
}

JsonWriter& JsonWriter::value(double number)
{
    return literal(as_json(number));
}

JsonWriter& JsonWriter::literal(std::string_view text)
{
    begin_value();
    out_ += text;
    return *this;
}

/// What stands between a value, or a key, and the one before it.
void JsonWriter::begin_value()
{
    if (after_key_ || levels_.empty()) {
        after_key_ = false;
        return;
    }
    Level& level = levels_.back();
    if (!level.empty)
        out_ += level.on_one_line ? ", " : ",";
    level.empty = false;
    if (!level.on_one_line)
        new_line();
}

void JsonWriter::new_line()
{
    out_ += '\n';
    constexpr std::size_t deepest = 40; // the blanks of a deep document would be longer than all the rest
    out_.append(2 * std::min(outer_ + levels_.size(), deepest), ' ');
}

} // namespace tool
