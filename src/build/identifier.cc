#include "build/identifier.h"

#include "tree/cursor.h"

#include <libxml/hash.h>
#include <libxml/valid.h>
#include <string_view>
#include <utility>

namespace kh {

namespace {

constexpr auto no_type = xmlAttributeType(); ///< of an attribute that no declaration is known for

xmlHashTable* identifiers_of(const xmlDoc* document) noexcept
{
    return static_cast<xmlHashTable*>(document->ids);
}

void free_identifier(void* payload, const xmlChar*)
{
    auto* identifier = static_cast<xmlID*>(payload);
    xmlFree(const_cast<xmlChar*>(identifier->value));
    xmlFree(identifier);
}

bool finds(const xmlAttr* attribute, const xmlChar* value) noexcept
{
    return xmlGetID(attribute->doc, value) == attribute;
}

/// The value of an ID that leads to an attribute, found without allocating.
class IdentifierSearch {
public:
    IdentifierSearch(const xmlAttr* attribute, const xmlChar* except) noexcept
        : attribute_(attribute), except_(except)
    {
        xmlHashScan(identifiers_of(attribute->doc), look_at, this);
    }
    const xmlChar* found() const noexcept { return found_; }

private:
    static void look_at(void* payload, void* self, const xmlChar*)
    {
        const auto* identifier = static_cast<const xmlID*>(payload);
        auto* search = static_cast<IdentifierSearch*>(self);
        if (identifier->attr == search->attribute_ &&
            !(search->except_ && xmlStrEqual(identifier->value, search->except_)))
            search->found_ = identifier->value;
    }

    const xmlAttr* attribute_;
    const xmlChar* except_;
    const xmlChar* found_ = nullptr;
};

/// True where libxml2 may have read the ID as another text than it looks for: it keeps one as it was written, with
/// its ampersands, references and blanks, and looks for what that stands for, without blanks at the ends and doubled
/// ones.
bool is_written_otherwise(const xmlAttr* attribute) noexcept
{
    const xmlNode* node = attribute->children;
    if (!node || node->next || node->type != XML_TEXT_NODE)
        return node;
    const std::string_view text = content_of(node);
    return text.find_first_not_of(' ') != 0 || text.find_last_not_of(' ') != text.size() - 1 ||
           text.find("  ") != text.npos || text.find('&') != text.npos;
}

} // namespace

void forget_identifier(xmlAttr* attribute, const xmlChar* kept) noexcept
{
    if (attribute->atype != XML_ATTRIBUTE_ID)
        return;
    const ParserCall call;
    // Where memory runs out libxml2 cannot put the old text together, and all IDs are looked through.
    if (xmlRemoveID(attribute->doc, attribute) != 0 &&
        (call.out_of_memory() || is_written_otherwise(attribute))) {
        if (const xmlChar* value = IdentifierSearch(attribute, kept).found())
            xmlHashRemoveEntry(identifiers_of(attribute->doc), value, free_identifier);
    }
    attribute->atype = no_type;
}

void forget_identifiers(xmlNode* node) noexcept
{
    if (xmlHashSize(identifiers_of(node->doc)) <= 0)
        return;
    const xmlNode* end = next_node_beside(node);
    for (xmlNode* inner = node; inner != end; inner = next_node(inner)) {
        for (xmlAttr* attribute = first_attribute(inner); attribute; attribute = attribute->next)
            forget_identifier(attribute);
    }
}

NewIdentifier::~NewIdentifier()
{
    if (is_added_)
        xmlHashRemoveEntry(identifiers_of(attribute_->doc), value_, free_identifier);
    if (attribute_)
        attribute_->atype = type_before_;
}

bool NewIdentifier::prepare(xmlAttr* attribute, const xmlChar* value) noexcept
{
    const ParserCall call;
    attribute_ = attribute;
    value_ = value;
    type_before_ = attribute->atype;
    if (xmlIsID(attribute->doc, attribute->parent, attribute) == 1 && !finds(attribute, value)) {
        xmlAddID(nullptr, attribute->doc, value, attribute);
        is_added_ = finds(attribute, value);
    }
    return !call.out_of_memory();
}

void NewIdentifier::commit() noexcept
{
    xmlAttr* attribute = std::exchange(attribute_, nullptr);
    const bool is_added = std::exchange(is_added_, false);
    if (!is_added && finds(attribute, value_))
        return; // the ID stays the same
    attribute->atype = type_before_;
    forget_identifier(attribute, is_added ? value_ : nullptr);
    attribute->atype = is_added ? XML_ATTRIBUTE_ID : no_type;
}

} // namespace kh
