// Attribute values with their entity references replaced.
#ifndef KALV_READ_EXPAND_H
#define KALV_READ_EXPAND_H

#include "tree/xml.h"

#include <string>

namespace kh {

/// Appends the text of an attribute's nodes, entity references expanded, as xmlGetProp does, but in a time
/// that grows with the text alone. May throw std::bad_alloc. \return false when it passes 10,000,000 bytes
bool expand(const xmlNode* nodes, std::string& text);

} // namespace kh

#endif
