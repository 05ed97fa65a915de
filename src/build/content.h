// The nodes that the text of an element's value becomes.
#ifndef KALV_BUILD_CONTENT_H
#define KALV_BUILD_CONTENT_H

#include "tree/xml.h"

namespace kh {

/// Replaces all children of an element by a text. An ampersand that begins a complete reference to a
/// predefined entity, a character, or an entity that the document declares is that reference; every other one
/// stands for itself. May throw std::bad_alloc, and nothing has changed. \return false when memory runs out,
/// and nothing has changed
bool set_element_content(xmlNode* element, const char* text);

/// The same for a text in which nothing is a reference.
bool set_literal_content(xmlNode* element, const char* text) noexcept;

/// Replaces what a text consists of.
void replace_text(xmlNode* text, XmlText content) noexcept;

} // namespace kh

#endif
