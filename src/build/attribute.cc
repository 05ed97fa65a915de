#include "build/attribute.h"

#include <algorithm>
#include <cstring>
#include <libxml/valid.h>
#include <string>
#include <string_view>

namespace kh {

namespace {

bool is_written(const xmlChar* prefix, const xmlChar* local_name, std::string_view name) noexcept
{
    if (prefix) {
        const std::string_view text = from_xml(prefix);
        if (name.substr(0, text.size()) != text || name.substr(text.size(), 1) != ":")
            return false;
        name.remove_prefix(text.size() + 1);
    }
    return name == from_xml(local_name);
}

/// Gives an attribute a new text and frees the old one. The text is made before anything changes.
bool set_text(xmlAttr* attribute, const char* value) noexcept
{
    xmlNode* text = xmlNewDocText(attribute->doc, to_xml(value));
    if (!text || !text->content) {
        xmlFreeNode(text);
        return false;
    }
    if (attribute->atype == XML_ATTRIBUTE_ID)
        xmlRemoveID(attribute->doc, attribute);
    xmlFreeNodeList(attribute->children);
    attribute->children = text;
    attribute->last = text;
    text->parent = reinterpret_cast<xmlNode*>(attribute);
    if (xmlIsID(attribute->doc, attribute->parent, attribute) == 1)
        xmlAddID(nullptr, attribute->doc, to_xml(value), attribute);
    return true;
}

/// Adds an attribute with a text.
bool add_attribute(xmlNode* element, xmlNs* space, const xmlChar* local_name, const char* value) noexcept
{
    const ParserCall call;
    xmlAttr* attribute = xmlNewNsProp(element, space, local_name, nullptr);
    if (attribute && !call.out_of_memory() && set_text(attribute, value))
        return true;
    if (attribute)
        xmlRemoveProp(attribute);
    return false;
}

/// The namespace that the prefix of a name stands for at an element; null for a name without prefix and for
/// one whose prefix is not declared. `local_name` becomes what follows the prefix.
xmlNs* namespace_of(xmlNode* element, const char* name, const xmlChar*& local_name) noexcept
{
    int length = 0;
    const xmlChar* local = xmlSplitQName3(to_xml(name), &length);
    if (!local)
        return nullptr;
    const XmlText prefix(xmlStrndup(to_xml(name), length));
    xmlNs* space = prefix ? xmlSearchNs(element->doc, element, prefix.get()) : nullptr;
    if (space)
        local_name = local;
    return space;
}

/// The attribute of a local name in a namespace, whichever prefix it is written with: an element has one.
xmlAttr* attribute_in(const xmlNode* element, const xmlNs& space, const xmlChar* local_name) noexcept
{
    xmlAttr* attribute = first_attribute(element);
    while (attribute && !(attribute->ns && xmlStrEqual(attribute->ns->href, space.href) &&
                          xmlStrEqual(attribute->name, local_name)))
        attribute = attribute->next;
    return attribute;
}

/// A URI as libxml2 keeps it in declarations, which it writes without escaping anything.
XmlText escaped_uri(std::string_view uri, std::string_view special) noexcept
{
    const auto is_special = [special](char c) { return special.find(c) != std::string_view::npos; };
    const auto escapes = std::count_if(uri.begin(), uri.end(), is_special);
    constexpr std::string_view ampersand = "&#38;";
    constexpr std::string_view less = "&#60;";
    const std::size_t size = uri.size() + static_cast<std::size_t>(escapes) * (ampersand.size() - 1);
    XmlText text(static_cast<xmlChar*>(xmlMalloc(size + 1)));
    if (!text)
        return nullptr;
    char* end = reinterpret_cast<char*>(text.get());
    for (const char& c : uri)
        end += (!is_special(c) ? std::string_view(&c, 1)
                : c == '&'     ? ampersand
                               : less)
                   .copy(end, ampersand.size());
    *end = '\0';
    return text;
}

bool replace_uri(xmlNs* declaration, XmlText uri) noexcept
{
    if (!uri)
        return false;
    xmlFree(const_cast<xmlChar*>(declaration->href));
    declaration->href = uri.release();
    return true;
}

} // namespace

xmlAttr* attribute_written(const xmlNode* element, const char* name) noexcept
{
    xmlAttr* attribute = first_attribute(element);
    while (attribute && !is_written(attribute->ns ? attribute->ns->prefix : nullptr, attribute->name, name))
        attribute = attribute->next;
    return attribute;
}

xmlNs* declaration_written(const xmlNode* element, const char* name) noexcept
{
    static const xmlChar* const xmlns = to_xml("xmlns");
    xmlNs* declaration = is_element(element) ? element->nsDef : nullptr;
    while (declaration && !(declaration->prefix ? is_written(xmlns, declaration->prefix, name)
                                                : is_written(nullptr, xmlns, name)))
        declaration = declaration->next;
    return declaration;
}

bool set_uri(xmlNs* declaration, const char* uri) noexcept
{
    return replace_uri(declaration, escaped_uri(uri, "&<"));
}

bool escape_declarations(const xmlNode* element) noexcept
{
    for (xmlNs* declaration = element->nsDef; declaration; declaration = declaration->next) {
        const char* uri = declaration->href ? from_xml(declaration->href) : "";
        if (std::strchr(uri, '<') && !replace_uri(declaration, escaped_uri(uri, "<")))
            return false;
    }
    return true;
}

bool set_attribute(xmlNode* element, const char* name, const char* value) noexcept
{
    if (xmlNs* declaration = declaration_written(element, name))
        return set_uri(declaration, value);
    if (xmlAttr* attribute = attribute_written(element, name))
        return set_text(attribute, value);
    const ParserCall call;
    const xmlChar* local_name = to_xml(name);
    xmlNs* space = namespace_of(element, name, local_name);
    if (call.out_of_memory())
        return false;
    xmlAttr* attribute = space ? attribute_in(element, *space, local_name) : nullptr;
    if (!attribute)
        return add_attribute(element, space, local_name, value);
    if (!set_text(attribute, value))
        return false;
    attribute->ns = space;
    return true;
}

bool set_attribute_in(xmlNode* element, xmlNs* space, const char* local_name, const char* value)
{
    const std::string prefix = space->prefix ? std::string(from_xml(space->prefix)) + ":" : std::string();
    xmlAttr* attribute = attribute_written(element, (prefix + local_name).c_str());
    return attribute ? set_text(attribute, value) : add_attribute(element, space, to_xml(local_name), value);
}

} // namespace kh
