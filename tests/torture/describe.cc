#include "torture/describe.h"

#include <libxml/hash.h>
#include <libxml/tree.h>
#include <libxml/valid.h>
#include <map>
#include <set>

namespace torture {

namespace {

/// Appends piece by piece, without a text for each: documents are described before and after each call.
class Description {
public:
    explicit Description(const xmlDoc* document) : document_(document)
    {
        add("document ", document->version, document->encoding, document->URL, document->standalone,
            document->compression);
        children(reinterpret_cast<const xmlNode*>(document), document->children, document->last);
        for (const xmlNs* space = document->oldNs; space; space = space->next)
            if (!space->href || !space->prefix)
                broken("shared namespace");
        identifiers();
    }

    std::string&& take() { return std::move(text_); }

private:
    void add_one(const char* text) { text_ += text; }
    void add_one(const xmlChar* text)
    {
        if (text)
            text_.append("'").append(reinterpret_cast<const char*>(text)).append("'");
        else
            text_ += "-";
    }
    void add_one(int number) { text_ += std::to_string(number); }

    template <class... Pieces>
    void add(Pieces... pieces)
    {
        (add_one(pieces), ...);
    }

    void broken(const char* what)
    {
        text_ += broken_mark;
        add(" BROKEN:", what);
    }

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
        add("\n", int{node->type}, node->name);
        switch (node->type) {
        case XML_ELEMENT_NODE:
            names(node);
            add(" {");
            children(node, node->children, node->last);
            add(" }");
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
            add(node->content);
        }
    }

    void name_space(const xmlNs* space)
    {
        if (space)
            add(" in ", space->prefix, space->href);
    }

    void names(const xmlNode* element)
    {
        name_space(element->ns);
        for (const xmlNs* space = element->nsDef; space; space = space->next)
            add(" declares", space->prefix, space->href);
        const xmlAttr* previous = nullptr;
        for (const xmlAttr* attribute = element->properties; attribute;
             previous = attribute, attribute = attribute->next) {
            if (attribute->parent != element || attribute->prev != previous || attribute->doc != document_)
                broken("attribute");
            add(" @", attribute->name, int{attribute->atype});
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
            add(" not found by its ID");
        xmlFree(value);
        identified_.insert(attribute);
    }

    /// The attributes that the document finds by an ID; each is in the tree.
    void identifiers()
    {
        std::map<std::string, const xmlAttr*> found;
        const auto keep = [](void* payload, void* to, const xmlChar* value) {
            const auto* identifier = static_cast<const xmlID*>(payload);
            (*static_cast<decltype(found)*>(to))[reinterpret_cast<const char*>(value)] = identifier->attr;
        };
        xmlHashScan(static_cast<xmlHashTable*>(document_->ids), keep, &found);
        for (const auto& [value, attribute] : found) {
            add(" ID", BAD_CAST value.c_str());
            if (identified_.count(attribute) == 0)
                broken("identifier");
        }
    }

    void subset(const xmlDtd* subset)
    {
        add(subset->ExternalID, subset->SystemID, " [");
        children(reinterpret_cast<const xmlNode*>(subset), subset->children, subset->last);
        add(" ]");
    }

    void entity(const xmlEntity* entity)
    {
        add(int{entity->etype}, entity->orig, entity->content, entity->SystemID);
        const bool is_parameter =
            entity->etype == XML_INTERNAL_PARAMETER_ENTITY || entity->etype == XML_EXTERNAL_PARAMETER_ENTITY;
        if (!is_parameter && xmlGetDocEntity(document_, entity->name) != entity)
            broken("entity table");
        children(reinterpret_cast<const xmlNode*>(entity), entity->children, entity->last);
    }

    void declaration(const xmlAttribute* attribute)
    {
        add(attribute->elem, int{attribute->atype}, int{attribute->def}, attribute->defaultValue);
        for (const xmlEnumeration* value = attribute->tree; value; value = value->next)
            add(value->name);
        // libxml2 does not find one whose name ends with a colon, as "p:".
        const bool ends_with_colon = attribute->name[xmlStrlen(attribute->name) - 1] == ':';
        if (!attribute->prefix && !ends_with_colon &&
            xmlGetDtdAttrDesc(attribute->parent, attribute->elem, attribute->name) != attribute)
            broken("attribute table");
    }

    const xmlDoc* document_;
    std::set<const xmlAttr*> identified_;
    std::string text_;
};

std::string text_of(const void* text)
{
    return text ? "'" + std::string(static_cast<const char*>(text)) + "'" : "-";
}

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
