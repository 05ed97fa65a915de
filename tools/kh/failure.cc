#include "failure.h"

namespace tool {

void append_visible(std::string& text, char c)
{
    constexpr const char* digits = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\t')
        text += "\\t";
    else if (c == '\n')
        text += "\\n";
    else if (c == '\r')
        text += "\\r";
    else if (byte < ' ' || byte == 0x7FU)
        text.append("\\x").append(1, digits[byte >> 4U]).append(1, digits[byte & 0xFU]);
    else
        text += c;
}

std::string Failure::message() const
{
    if (place_.file.empty())
        return std::string("kh: ") + what();
    std::string message;
    for (const char c : place_.file)
        append_visible(message, c);
    if (place_.line > 0) {
        message += ':' + std::to_string(place_.line);
        if (place_.column > 0)
            message += ':' + std::to_string(place_.column);
    }
    message += ": ";
    for (const char c : std::string_view(what()))
        append_visible(message, c);
    return message;
}

} // namespace tool
