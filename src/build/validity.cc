#include "build/validity.h"

#include <algorithm>
#include <iterator>

namespace kh {

namespace {

struct Range {
    unsigned long first;
    unsigned long last;
};

template <std::size_t count>
constexpr bool is_in(const Range (&ranges)[count], unsigned long code_point) noexcept
{
    for (const Range& range : ranges) {
        if (code_point >= range.first && code_point <= range.last)
            return true;
    }
    return false;
}

constexpr Range characters[] = {
    {0x20, 0xD7FF}, {0x9, 0xA}, {0xD, 0xD}, {0xE000, 0xFFFD}, {0x10000, 0x10FFFF}};

constexpr Range name_starts[] = {
    {'a', 'z'},       {'A', 'Z'},       {'_', '_'},       {':', ':'},
    {0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
    {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};

constexpr Range further_name_characters[] = {
    {'0', '9'}, {'-', '.'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

/// Which ASCII characters can stand where: most names are of them alone.
struct AsciiTable {
    constexpr AsciiTable() noexcept
    {
        for (unsigned long c = 0; c < 0x80; ++c) {
            starts_name[c] = is_in(name_starts, c);
            is_in_name[c] = starts_name[c] || is_in(further_name_characters, c);
            is_plain[c] = is_in_name[c] && c != ':';
        }
    }
    bool starts_name[0x80] = {};
    bool is_in_name[0x80] = {};
    bool is_plain[0x100] = {};
};
constexpr AsciiTable ascii;

constexpr unsigned long no_character = ~0UL;

bool is_printable(char c) noexcept
{
    return c >= ' ' && c <= '~';
}

bool is_name_start(unsigned long code_point) noexcept
{
    return code_point < 0x80 ? ascii.starts_name[code_point] : is_in(name_starts, code_point);
}

bool is_name_character(unsigned long code_point) noexcept
{
    return code_point < 0x80 ? ascii.is_in_name[code_point]
                             : is_in(name_starts, code_point) || is_in(further_name_characters, code_point);
}

/// How many bytes the character has that a byte begins; 0 for a byte that begins none.
std::size_t sequence_length(char first) noexcept
{
    const auto byte = static_cast<unsigned char>(first);
    if (byte < 0x80)
        return 1;
    if (byte < 0xC2)
        return 0;
    return byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : byte < 0xF5 ? 4 : 0;
}

/// Takes the first character off a text; no_character where the text is not UTF-8.
inline unsigned long take_character(std::string_view& text) noexcept
{
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80) {
        text.remove_prefix(1);
        return first;
    }
    constexpr unsigned long smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const std::size_t length = sequence_length(text[0]);
    if (length == 0 || length > text.size())
        return no_character;
    unsigned long code_point = first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0U) != 0x80)
            return no_character;
        code_point = (code_point << 6) | (byte & 0x3FU);
    }
    text.remove_prefix(length);
    return code_point >= smallest[length] ? code_point : no_character;
}

/// For a text that is not empty. By value: what is taken off stays the caller's.
bool starts_name(std::string_view text) noexcept
{
    return is_name_start(take_character(text));
}

/// XML allows a name whose third part, behind two colons, begins like no name, as "a:b:1"; libxml2 reads no file with
/// one.
bool is_unreadable(std::string_view name) noexcept
{
    const std::size_t first = name.find(':');
    const std::size_t second = first == 0 || first == name.npos ? name.npos : name.find(':', first + 1);
    if (second == name.npos || second == first + 1)
        return false;
    const std::string_view rest = name.substr(second + 1);
    return starts_name(name.substr(first + 1)) && !rest.empty() && !starts_name(rest);
}

/// True for a name like most, of ASCII alone and without colons.
bool is_plain_name(std::string_view text) noexcept
{
    const auto at = [text](std::size_t place) { return static_cast<unsigned char>(text[place]); };
    if (text.empty() || !ascii.is_plain[at(0)] || !ascii.starts_name[at(0)])
        return false;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (!ascii.is_plain[at(i)])
            return false;
    }
    return true;
}

} // namespace

bool is_xml_character(unsigned long code_point) noexcept
{
    return is_in(characters, code_point);
}

bool is_xml_text(std::string_view text) noexcept
{
    for (;;) {
        while (!text.empty() && is_printable(text[0])) // most are
            text.remove_prefix(1);
        if (text.empty())
            return true;
        if (!is_xml_character(take_character(text)))
            return false;
    }
}

bool is_xml_name(std::string_view text) noexcept
{
    if (text.empty() || !is_name_start(take_character(text)))
        return false;
    while (!text.empty()) {
        if (!is_name_character(take_character(text)))
            return false;
    }
    return true;
}

bool is_node_name(std::string_view text) noexcept
{
    constexpr std::size_t longest = 10'000'000; // that libxml2 reads
    return text.size() <= longest && (is_plain_name(text) || (is_xml_name(text) && !is_unreadable(text)));
}

std::size_t write_utf8(unsigned long code_point, char* bytes) noexcept
{
    if (code_point < 0x80) {
        bytes[0] = static_cast<char>(code_point);
        return 1;
    }
    const std::size_t length = code_point < 0x800 ? 2 : code_point < 0x10000 ? 3 : 4;
    for (std::size_t i = length - 1; i > 0; --i) {
        bytes[i] = static_cast<char>(0x80 | (code_point & 0x3F));
        code_point >>= 6;
    }
    bytes[0] = static_cast<char>((0xF00U >> length) | code_point);
    return length;
}

std::size_t length_of_whole_characters(std::string_view cut) noexcept
{
    std::size_t start = cut.size();
    while (start > 0 && (static_cast<unsigned char>(cut[start - 1]) & 0xC0U) == 0x80)
        --start;
    if (start == 0)
        return cut.size();
    --start;
    return start + sequence_length(cut[start]) > cut.size() ? start : cut.size();
}

} // namespace kh
