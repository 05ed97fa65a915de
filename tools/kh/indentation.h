// Where elements are added or removed, and when a whole file is indented: the blanks between the elements.
#ifndef KALV_TOOLS_INDENTATION_H
#define KALV_TOOLS_INDENTATION_H

#include "document.h"

namespace tool {

/// Inserts an element so that it stands as its neighbours do: on a line of its own where the file is indented.
/// \param before the child of `parent` that will follow, or the blanks before it; no node: it becomes the last
/// child
Node insert_indented(Document& document, const Node& parent, const Node& before, const std::string& name);

/// Puts an element that was appended as last child where insert_indented() would have put it, and what is below
/// it, too.
void indent_appended(Document& document, const Node& element);

/// Deletes an element and the blanks that stood before it.
void delete_indented(Document& document, const Node& element);

/// Indents an element and all below it: each child of an element that holds no text stands on a line of its own.
/// What stands below xml:space="preserve" stays as it is.
/// \param margin what stands before the element's closing tag: a line end and blanks
/// \param unit   the blanks of one level
/// \return how many places were changed
long indent(Document& document, const Node& top, const std::string& margin, const std::string& unit);

} // namespace tool

#endif
