// Whether anything is remembered between calls.
#ifndef KALV_TREE_ACCELERATED_H
#define KALV_TREE_ACCELERATED_H

namespace kh {

/// False in the build that tests compare the library with: there each call walks the tree anew, node by node.
#ifdef KALV_WALK_PLAINLY
constexpr bool accelerated = false;
#else
constexpr bool accelerated = true;
#endif

} // namespace kh

#endif
