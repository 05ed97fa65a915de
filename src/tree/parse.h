// From a file, or from nothing, to a tree.
#ifndef KALV_TREE_PARSE_H
#define KALV_TREE_PARSE_H

#include "tree/xml.h"

#include <string_view>

namespace kh {

/// What a parse tells beside the tree.
struct ParseOutcome {
    /// What was wrong with the input, as "FILE:LINE:COLUMN: MESSAGE", or shorter where less is known.
    char problem[512] = "";
    /// How many elements were met.
    std::size_t elements = 0;
};

/// Parses a file; null when it cannot be read or is not well-formed. "-" is standard input.
XmlDocument parse_file(const char* file_name, ParseOutcome& outcome) noexcept;

/// Parses the bytes of a file that stand in memory.
XmlDocument parse_memory(std::string_view bytes, ParseOutcome& outcome) noexcept;

/// A document without nodes; null when memory runs out. Its names will be shared as those of parsed ones are.
XmlDocument new_document() noexcept;

/// Frees a document, and may keep its dictionary for the next one: that one mostly has the same names.
void free_parsed(XmlDocument document) noexcept;

/// The one that is kept stays when the process ends: in a forked child, freeing it could wait for ever for a lock of
/// libxml2's that another thread held.
void leave_spare_dictionary() noexcept;

} // namespace kh

#endif
