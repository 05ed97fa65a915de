#include "torture/describe.h"

#include <libxml/hash.h>
#include <libxml/tree.h>
#include <libxml/valid.h>
#include <map>
#include <set>

namespace torture {

namespace {

std::string text_of(const void* text)
{
    return text ? "'" + std::string(static_cast<const char*>(text)) + "'" : "-";
}

class Description {
public:
    explicit Description(const xmlDoc* document) : document_(document)
    {
        text_ += "document " + text_of(document->version) + text_of(document->encoding) +
                 text_of(document->URL) + std::to_string(document->standalone) +
                 std::to_string(document->compression);
        children(reinterpret_cast<const xmlNode*>(document), document->children, document->last);
        for (const xmlNs* space = document->oldNs; space; space = space->next)
            if (!space->href || !space->prefix)
                broken("shared namespace");
        identifiers();
    }

    std::string&& take() { return std::move(text_); }

private:
    void broken(const char* what) { text_ += std::string(" BROKEN:") + what; }

    void children(const xmlNode* parent, const xmlNode* first, const xmlNode* last)
    {
        const xmlNode* previous = nullptr;
        for (const xmlNode* node = first; node; previous = node, node = node->next) {
            if (node->parent != parent)
                broken("parent");
            if (node->prev != previous)
                broken("previous");
            if (node->doc != document_)
                broken("document");
            one(node);
        }
        if (last != previous)
            broken("last");
    }

    void one(const xmlNode* node)
    {
        text_ += "\n" + std::to_string(node->type) + text_of(node->name);
        switch (node->type) {
        case XML_ELEMENT_NODE:
            names(node);
            text_ += " {";
            children(node, node->children, node->last);
            text_ += " }";
            break;
        case XML_DTD_NODE:
            subset(reinterpret_cast<const xmlDtd*>(node));
            break;
        case XML_ENTITY_DECL:
            entity(reinterpret_cast<const xmlEntity*>(node));
            break;
        case XML_ATTRIBUTE_DECL:
            declaration(reinterpret_cast<const xmlAttribute*>(node));
            break;
        case XML_ENTITY_REF_NODE:
            if (node->children != reinterpret_cast<xmlNode*>(xmlGetDocEntity(document_, node->name)))
                broken("entity");
            break;
        case XML_ELEMENT_DECL:
            break;
        default:
            text_ += text_of(node->content);
        }
    }

    void name_space(const xmlNs* space)
    {
        if (space)
            text_ += " in " + text_of(space->prefix) + text_of(space->href);
    }

    void names(const xmlNode* element)
    {
        name_space(element->ns);
        for (const xmlNs* space = element->nsDef; space; space = space->next)
            text_ += " declares" + text_of(space->prefix) + text_of(space->href);
        const xmlAttr* previous = nullptr;
        for (const xmlAttr* attribute = element->properties; attribute;
             previous = attribute, attribute = attribute->next) {
            if (attribute->parent != element || attribute->prev != previous || attribute->doc != document_)
                broken("attribute");
            text_ += " @" + text_of(attribute->name) + std::to_string(attribute->atype);
            name_space(attribute->ns);
            children(reinterpret_cast<const xmlNode*>(attribute), attribute->children, attribute->last);
            if (attribute->atype == XML_ATTRIBUTE_ID)
                identifier(attribute);
        }
    }

    void identifier(const xmlAttr* attribute)
    {
        xmlChar* value = xmlNodeListGetString(attribute->doc, attribute->children, 1);
        if (xmlGetID(attribute->doc, value ? value : BAD_CAST "") != attribute)
            text_ += " not found by its ID";
        xmlFree(value);
        identified_.insert(attribute);
    }

    /// The attributes that the document finds by an ID; each is in the tree.
    void identifiers()
    {
        std::map<std::string, const xmlAttr*> found;
        const auto add = [](void* payload, void* to, const xmlChar* value) {
            const auto* identifier = static_cast<const xmlID*>(payload);
            (*static_cast<decltype(found)*>(to))[reinterpret_cast<const char*>(value)] = identifier->attr;
        };
        xmlHashScan(static_cast<xmlHashTable*>(document_->ids), add, &found);
        for (const auto& [value, attribute] : found) {
            text_ += " ID'" + value + "'";
            if (identified_.count(attribute) == 0)
                broken("identifier");
        }
    }

    void subset(const xmlDtd* subset)
    {
        text_ += text_of(subset->ExternalID) + text_of(subset->SystemID) + " [";
        children(reinterpret_cast<const xmlNode*>(subset), subset->children, subset->last);
        text_ += " ]";
    }

    void entity(const xmlEntity* entity)
    {
        text_ += std::to_string(entity->etype) + text_of(entity->orig) + text_of(entity->content) +
                 text_of(entity->SystemID);
        const bool is_parameter =
            entity->etype == XML_INTERNAL_PARAMETER_ENTITY || entity->etype == XML_EXTERNAL_PARAMETER_ENTITY;
        if (!is_parameter && xmlGetDocEntity(document_, entity->name) != entity)
            broken("entity table");
        children(reinterpret_cast<const xmlNode*>(entity), entity->children, entity->last);
    }

    void declaration(const xmlAttribute* attribute)
    {
        text_ += text_of(attribute->elem) + std::to_string(attribute->atype) +
                 std::to_string(attribute->def) + text_of(attribute->defaultValue);
        for (const xmlEnumeration* value = attribute->tree; value; value = value->next)
            text_ += text_of(value->name);
        if (!attribute->prefix &&
            xmlGetDtdAttrDesc(attribute->parent, attribute->elem, attribute->name) != attribute)
            broken("attribute table");
    }

    const xmlDoc* document_;
    std::set<const xmlAttr*> identified_;
    std::string text_;
};

/// The way from the top to a node, as the places among siblings.
std::string place_of(const xmlNode* node)
{
    std::string place;
    for (; node; node = node->parent) {
        long preceding = 0;
        for (const xmlNode* before = node->type == XML_DOCUMENT_NODE ? nullptr : node->prev; before;
             before = before->prev)
            ++preceding;
        place = "/" + std::to_string(preceding) + place;
    }
    return place;
}

template <class Describe>
std::string of_all_slots(Describe describe)
{
    std::string text;
    for (const kh_document_slot* slot : global_current_status) {
        text += slot ? "slot " : "";
        text += slot ? describe(*slot) : std::string();
    }
    return text;
}

} // namespace

std::string described(const xmlDoc* document)
{
    return document ? Description(document).take() : "nothing";
}

std::string described_position(const kh_document_slot& slot)
{
    std::string text = text_of(slot.file_name) + place_of(slot.root) + place_of(slot.current) +
                       text_of(slot.requested_tag) + std::to_string(slot.absolute) +
                       std::to_string(slot.array_position);
    for (long i = 0; i < slot.stack_count; ++i)
        text += text_of(slot.stack_name[i]) + std::to_string(slot.stack_index[i]);
    return text;
}

std::string described_trees()
{
    return of_all_slots([](const kh_document_slot& slot) { return described(slot.doc); });
}

std::string described_positions()
{
    return of_all_slots(described_position);
}

} // namespace torture
