// The IDs by which a document finds attributes. libxml2 allocates to take one away, and where it cannot, keeps
// one that leads to a freed attribute.
#ifndef KALV_BUILD_IDENTIFIER_H
#define KALV_BUILD_IDENTIFIER_H

#include "tree/xml.h"

namespace kh {

/// The attribute is no longer found by an ID of its own, except by the one given, if any.
void forget_identifier(xmlAttr* attribute, const xmlChar* kept = nullptr) noexcept;

/// The same for the attributes of a node and of all nodes below it.
void forget_identifiers(xmlNode* node) noexcept;

/// Finds an attribute by the ID that its new text will be. Until commit() it can be undone without memory,
/// and is undone when this object goes.
class NewIdentifier {
public:
    NewIdentifier() = default;
    ~NewIdentifier();
    NewIdentifier(const NewIdentifier&) = delete;
    NewIdentifier& operator=(const NewIdentifier&) = delete;

    /// Does nothing for an attribute that is no ID. As libxml2 has it, of two attributes with one ID the first
    /// is found. \param value stays until commit() \return false when memory runs out
    bool prepare(xmlAttr* attribute, const xmlChar* value) noexcept;

    /// Forgets the ID of the old text, which the attribute still has.
    void commit() noexcept;

private:
    xmlAttr* attribute_ = nullptr;
    const xmlChar* value_ = nullptr;
    xmlAttributeType type_before_ = xmlAttributeType();
    bool is_added_ = false;
};

} // namespace kh

#endif
