// Attributes by the name that stands in the file: "xsi:x" is one name, and "xmlns" and "xmlns:p" name the
// element's namespace declarations. No element ever gets two of one name, which no parser would read.
#ifndef KALV_BUILD_ATTRIBUTE_H
#define KALV_BUILD_ATTRIBUTE_H

#include "tree/xml.h"

namespace kh {

/// The attribute that is written with a name; null where there is none.
xmlAttr* attribute_written(const xmlNode* element, const char* name) noexcept;

/// The namespace declaration that is written with a name; null where there is none.
xmlNs* declaration_written(const xmlNode* element, const char* name) noexcept;

/// Sets an attribute, or the URI of a declaration; makes the attribute when the element lacks it.
/// \return false when memory runs out, and nothing has changed
bool set_attribute(xmlNode* element, const char* name, const char* value) noexcept;

/// Sets the attribute of a local name in a namespace, taking the place of one that is written alike. May
/// throw std::bad_alloc, and nothing has changed.
bool set_attribute_in(xmlNode* element, xmlNs* space, const char* local_name, const char* value);

/// Overwrites the URI of a namespace declaration in place.
bool set_uri(xmlNs* declaration, const char* uri) noexcept;

/// Makes the namespace URIs that an element declares fit to be written: the parser leaves a "<" in them, and the
/// serialiser writes it as it stands, which no parser reads. \return false when memory runs out
bool escape_declarations(const xmlNode* element) noexcept;

} // namespace kh

#endif
