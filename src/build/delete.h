// Taking a node out of a document.
#ifndef KALV_BUILD_DELETE_H
#define KALV_BUILD_DELETE_H

#include "tree/document.h"

namespace kh {

/// Frees a node with all below it. The cursor must not stand there any more; a root leaves none behind.
void delete_node(Document& document, xmlNode* node) noexcept;

} // namespace kh

#endif
