// The whitespace that puts every element on a line of its own, two spaces a level.
#ifndef KALV_BUILD_INDENTATION_H
#define KALV_BUILD_INDENTATION_H

#include "tree/xml.h"

namespace kh {

/// A text node of a newline and `spaces` spaces; null when memory runs out, which the caller's guard takes the
/// message of.
XmlNode new_indentation(const NodeCall& guard, xmlDoc* document, long spaces) noexcept;

/// Takes a node away that is a text: the indentation of what stands behind it. Null does nothing.
void remove_if_text(xmlNode* node) noexcept;

/// The detail of every report about indentation that could not be made or inserted.
constexpr const char* indentation_detail = ". Error in the indentation";

} // namespace kh

#endif
