// What XML 1.0 allows in names and texts.
#ifndef KALV_BUILD_VALIDITY_H
#define KALV_BUILD_VALIDITY_H

#include <string_view>

namespace kh {

/// True for a character that may stand in a document.
bool is_xml_character(unsigned long code_point) noexcept;

/// True for UTF-8 without characters that XML forbids.
bool is_xml_text(std::string_view text) noexcept;

/// True for a name by the rule that libxml2 reads names with. Colons are free.
bool is_xml_name(std::string_view text) noexcept;

/// True for what can name an element or attribute, so that the file is read again.
bool is_node_name(std::string_view text) noexcept;

/// Writes a character as UTF-8. \return how many of the four bytes it takes
std::size_t write_utf8(unsigned long code_point, char* bytes) noexcept;

/// The length of a text that was cut off, without a character that the cut has split.
std::size_t length_of_whole_characters(std::string_view cut) noexcept;

} // namespace kh

#endif
