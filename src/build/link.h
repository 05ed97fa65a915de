// Linking a node into a tree.
#ifndef KALV_BUILD_LINK_H
#define KALV_BUILD_LINK_H

#include "tree/xml.h"

namespace kh {

/// Links a node that is in no tree yet before another one, or as the last child. libxml2's own functions make one text
/// of two, and may run out of memory over it.
inline xmlNode* link_node(xmlNode* parent, xmlNode* before, xmlNode& node) noexcept
{
    node.parent = parent;
    node.next = before;
    node.prev = before ? before->prev : parent->last;
    (node.prev ? node.prev->next : parent->children) = &node;
    return (before ? before->prev : parent->last) = &node;
}

} // namespace kh

#endif
