#include "wanted.h"

#include <kalv/status.h>
#include <kalv/text.h>

namespace tool {

namespace {

/// Takes the type off the end of a text: "Height:r" is Height, as a real.
Wanted with_type(const std::string& text)
{
    const std::string ending = text.size() > 2 ? text.substr(text.size() - 2) : "";
    const std::string path = text.substr(0, text.size() - ending.size());
    if (ending == ":i")
        return {Wanted::integer, path, text};
    if (ending == ":r")
        return {Wanted::real, path, text};
    if (ending == ":s")
        return {Wanted::text, path, text};
    return {Wanted::text, text, text};
}

} // namespace

std::vector<Wanted> parse_wanted(const std::vector<std::string>& texts)
{
    std::vector<Wanted> all;
    for (const std::string& text : texts) {
        for (std::size_t begin = 0; begin <= text.size();) {
            const std::size_t end = std::min(text.find(',', begin), text.size());
            if (end == begin)
                throw Failure(usage, "an empty path: \"" + text + '"');
            all.push_back(with_type(text.substr(begin, end - begin)));
            begin = end + 1;
        }
    }
    return all;
}

Value::Value(const Document& document, const std::string& path, Wanted::Type type, std::string text)
{
    long status = KH_OK;
    if (type == Wanted::integer)
        value_ = kh_string_to_integer(text.c_str(), &status);
    else if (type == Wanted::real)
        value_ = kh_string_to_real(text.c_str(), &status);
    if (status == KH_ERR_RANGE)
        throw document.failure(cannot_read, path + ": a number out of range: \"" + text + '"');
    if (status != KH_OK)
        throw document.failure(cannot_read,
                               path + (type == Wanted::integer ? ": no integer: \"" : ": no real: \"") +
                                   text + '"');
    if (type == Wanted::text)
        value_ = std::move(text);
}

std::string Value::text() const
{
    if (const auto* text = std::get_if<std::string>(&value_))
        return *text;
    if (const auto* integer = std::get_if<long>(&value_))
        return std::to_string(*integer);
    const auto* real = std::get_if<double>(&value_);
    return real ? to_text(*real) : "";
}

void Value::write(JsonWriter& json) const
{
    if (const auto* text = std::get_if<std::string>(&value_))
        json.value(*text);
    else if (const auto* integer = std::get_if<long>(&value_))
        json.value(*integer);
    else if (const auto* real = std::get_if<double>(&value_))
        json.value(*real);
    else
        json.null();
}

Value read_value(Document& document, const std::string& path, Wanted::Type type)
{
    std::optional<std::string> text = document.value(path);
    return text ? Value(document, path, type, std::move(*text)) : Value();
}

void declare_wanted(Command& command, std::vector<std::string>& texts, const std::string& text)
{
    command.option("-p,--path", "PATH[:TYPE],...", &texts, text).completion = Completion::path;
}

} // namespace tool
