// Files read again by libxml2 alone, without the library.
#ifndef KALV_TESTS_PLAIN_H
#define KALV_TESTS_PLAIN_H

#include <libxml/parser.h>
#include <memory>
#include <string>

namespace support {

using PlainDocument = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

/// A text read by libxml2, entities substituted; null if it is not well-formed.
inline PlainDocument read_plainly(const std::string& xml)
{
    constexpr int options =
        XML_PARSE_NOENT | XML_PARSE_HUGE | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
    return {xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr, options), xmlFreeDoc};
}

inline std::string text_of(const xmlChar* text)
{
    return text ? reinterpret_cast<const char*>(text) : "(null)";
}

} // namespace support

#endif
