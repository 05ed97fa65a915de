// Documents as the judges see them, through libxml2 alone.
#ifndef KALV_FUZZ_TREE_H
#define KALV_FUZZ_TREE_H

#include "harness.h"

#include <libxml/tree.h>
#include <memory>
#include <vector>

namespace fuzz {

struct FreeTree {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using Tree = std::unique_ptr<xmlDoc, FreeTree>;

/// Reads with libxml2. \return null where it is not well-formed
Tree plain_tree(const std::string& bytes);

inline const char* chars(const xmlChar* text)
{
    return text ? reinterpret_cast<const char*>(text) : "";
}

/// All elements in the order of the document; the root is the first.
std::vector<xmlNode*> elements(const xmlDoc* document);

/// What reads tell of an element: its value, or why it has none.
struct Value {
    long status;
    std::string text;
};
Value value_of(const xmlNode* element);

/// The path that leads to an element below the root.
std::string path_of(const xmlNode* element, const xmlNode* root);

/// The attribute of a name without prefix; null where there is none.
const xmlAttr* attribute_of(const xmlNode* element, const std::string& name);

/// The texts and references that an attribute's value is made of.
std::string written_value_of(const xmlAttr* attribute);

/// In an open document some characters stand as references in the URIs of declarations; libxml2 is not consistent there.
std::string without_references(std::string text);

/// A document: what stays when it is written and read again. Texts that meet are one, declarations of namespaces have
/// no order, names are as they are written, and attributes that are declared as tokens have no blanks but those between
/// the tokens.
std::string outline(const xmlDoc* document);
/// An element with what is below it, which may move to another document: the same but for the tokens.
std::string outline(const xmlNode* node);

} // namespace fuzz

#endif
