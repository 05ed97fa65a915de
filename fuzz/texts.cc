#include "texts.h"

#include <cstring>
#include <iterator>

namespace fuzz {

const char* const small_document =
    "<Root xmlns='urn:d'>a<List id='1'><Item id='2'>42</Item><p:Item xmlns:p='urn:p'/><Item>"
    "<Item/><Title>t</Title></Item><!--c--></List><List><Item id='&lt;'>-1.5</Item><Item>x</Item></List>"
    "<Title a='b'>x &amp; y</Title></Root>";

namespace {

const char* const names[] = {"Item", "List",   "Title",   "Root",  "a",   "id",           "xml:lang", "xmlns",
                             "p:b",  "p:Item", "xmlns:q", "Notes", "b-c", "Fixed_Header", "File_Name"};

const char* const paths[] = {"/Root",
                             "/Root/List",
                             "/Root/List/Item[2]",
                             "/Root/List/Item[*]",
                             ".",
                             "..",
                             "/Root/List/Item[1]/@id",
                             "@id",
                             "Item",
                             "./Title",
                             "/Root/List/Item[0]",
                             "/Root//List[2]/./Item",
                             "../..",
                             "/Root/List/Item[*]/@id",
                             "/Root/List[*]/Item",
                             "List[*]/Item[2]",
                             "[0]",
                             "/Root/@xmlns"};

const char* const path_pieces[] = {"/",
                                   "[",
                                   "]",
                                   "@",
                                   "*",
                                   "..",
                                   ".",
                                   "1",
                                   "-2",
                                   "Item",
                                   "List",
                                   "[2]",
                                   "[*]",
                                   "@id",
                                   "/../",
                                   "p:",
                                   "[0]",
                                   "Title",
                                   "/Root",
                                   "/./",
                                   "//",
                                   "[ +1]",
                                   "x",
                                   "[2147483649]",
                                   "/a/a/a/a/a/a/a/a/a/a"};

const char* const values[] = {
    "text",  "42",  "-1.5e300", "a & b < c", "&who;", "&#65;", "",       "  ",
    "]]>",   "nan", "\xc3\xa4", "\t\n\r",    "&amp",  "\xff",  "&amp;x", "9223372036854775807",
    "0x1p3", "inf", "\"'",      "<b/>",      "1e999", " 7 ",   "\x01"};

const char* const attribute_names[] = {"id", "kind", "a", "p:b", "xml:lang", "xmlns:q", "xsi"};

template <std::size_t count>
std::string one_of(const char* const (&some)[count], Bytes& bytes, std::size_t other_size)
{
    const auto choice = bytes.ConsumeIntegralInRange<std::size_t>(0, count);
    return choice < count ? some[choice] : any_text(bytes, other_size);
}

/// A value as it stands in a document; at times one that must not stand there.
std::string written_value(Bytes& bytes)
{
    const std::string text = value(bytes);
    if (bytes.ConsumeIntegralInRange(0, 9) == 9)
        return text;
    std::string written;
    for (const char c : text) {
        if (c == '&' || c == '<' || c == '"' || c == '>')
            written += "&#" + std::to_string(static_cast<int>(c)) + ";";
        else
            written += static_cast<unsigned char>(c) < ' ' || static_cast<unsigned char>(c) == 0xff ? ' ' : c;
    }
    return written;
}

void append_attributes(std::string& text, Bytes& bytes)
{
    const auto chosen = bytes.ConsumeIntegralInRange<std::size_t>(0, 79);
    for (std::size_t i = 0; i < std::size(attribute_names); ++i)
        if (chosen >> i & 1U)
            text += std::string(" ") + attribute_names[i] + "=\"" + written_value(bytes) + "\"";
    if (chosen >= 76)
        text += " " + name(bytes) + "=\"&who;" + value(bytes) + "\"";
}

void append_content(std::string& text, std::vector<std::string>& open, Bytes& bytes)
{
    switch (bytes.ConsumeIntegralInRange(0, 10)) {
    case 0:
    case 1:
    case 2:
        open.push_back(name(bytes));
        text += "<" + open.back();
        append_attributes(text, bytes);
        text += ">";
        break;
    case 3:
    case 4:
        if (!open.empty()) {
            text += "</" + open.back() + ">";
            open.pop_back();
        }
        break;
    case 5:
        text += "<!-- comment -->";
        break;
    case 6:
        text += "<![CDATA[<raw>&]]>";
        break;
    case 7:
        text += "<?instruction text?>";
        break;
    case 8:
        text += bytes.ConsumeBool() ? "&who;" : "&two;&#228;&lt;";
        break;
    case 9:
        text += "<Item>" + std::to_string(bytes.ConsumeIntegral<short>()) + "</Item>\n";
        break;
    default:
        text += written_value(bytes);
    }
}

} // namespace

std::string any_text(Bytes& bytes, std::size_t size)
{
    const std::string text = bytes.ConsumeRandomLengthString(size);
    return text.c_str(); // up to the first zero byte
}

std::string name(Bytes& bytes)
{
    return one_of(names, bytes, 40);
}

std::string path(Bytes& bytes)
{
    std::string text = one_of(paths, bytes, 300);
    for (auto i = bytes.ConsumeIntegralInRange(-4, 6); i > 0; --i)
        text += one_of(path_pieces, bytes, 20);
    return text;
}

std::string value(Bytes& bytes)
{
    return one_of(values, bytes, 600);
}

std::string document_text(Bytes& bytes)
{
    const auto kind = bytes.ConsumeIntegralInRange(0, 15);
    if (kind == 0)
        return bytes.ConsumeRandomLengthString(4000);
    if (kind <= 3)
        return small_document;
    std::string text = bytes.ConsumeBool() ? "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" : "";
    if (bytes.ConsumeBool())
        text +=
            "<!DOCTYPE Root [<!ENTITY who \"some<b/>body\"><!ENTITY two \"2 &who; 2\"><!ATTLIST Item id ID "
            "#IMPLIED kind CDATA \"a\">]>";
    text += "<Root xmlns=\"urn:d\" xmlns:p=\"urn:p\"";
    append_attributes(text, bytes);
    text += ">";
    std::vector<std::string> open;
    for (auto i = bytes.ConsumeIntegralInRange(0, 60); i > 0 && bytes.remaining_bytes() > 0; --i)
        append_content(text, open, bytes);
    for (; !open.empty(); open.pop_back())
        text += "</" + open.back() + ">";
    return text + "</Root>";
}

} // namespace fuzz
