// A document as a text: everything that a later call could see of it, and whether the tree is sound.
#ifndef KALV_TORTURE_DESCRIBE_H
#define KALV_TORTURE_DESCRIBE_H

#include <kalv/document.h>
#include <string>

namespace torture {

/// Stands in a description where the tree is not sound, and in no text of a document.
constexpr char broken_mark = '\x1f';

/// The tree: all nodes with names, namespaces, contents and links.
std::string described(const struct _xmlDoc* document);

/// Where a slot stands: cursor, path stack and requested tag.
std::string described_position(const kh_document_slot& slot);

/// All open documents.
std::string described_trees();
std::string described_positions();

} // namespace torture

#endif
