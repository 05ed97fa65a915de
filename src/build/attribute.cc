#include "build/attribute.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

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

/// The namespace that the prefix of a name stands for at an element; null for a name without prefix and for
/// one whose prefix is not declared. `local_name` becomes what follows the prefix.
xmlNs* namespace_of(xmlNode* element, const char* name, const xmlChar*& local_name) noexcept
{
    int length = 0;
    const xmlChar* local = xmlSplitQName3(to_xml(name), &length);
    if (!local)
        return nullptr;
    const XmlText prefix(xmlStrndup(to_xml(name), length));
    xmlNs* space = prefix ? search_namespace(element, prefix.get()) : nullptr;
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

/// What libxml2 writes in the URI of a declaration as it stands, though no parser reads it so: a "<" not at all, and
/// a tab or a line break as a blank.
constexpr const char* misread_in_uri = "<\t\n\r";
/// The same for a URI that has not been parsed, in which an ampersand stands for itself.
constexpr const char* special_in_uri = "&<\t\n\r";

/// A URI with references in place of some characters.
XmlText escaped_uri(std::string_view uri, std::string_view special) noexcept
{
    const auto is_special = [special](char c) { return special.find(c) != std::string_view::npos; };
    const auto escapes = std::count_if(uri.begin(), uri.end(), is_special);
    constexpr std::size_t longest = std::string_view("&#38;").size();
    const std::size_t size = uri.size() + static_cast<std::size_t>(escapes) * (longest - 1);
    XmlText text(static_cast<xmlChar*>(xmlMalloc(size + 1)));
    if (!text)
        return nullptr;
    char* end = reinterpret_cast<char*>(text.get());
    for (const char c : uri) {
        if (is_special(c)) {
            *end++ = '&';
            *end++ = '#';
            end = std::to_chars(end, end + 2, static_cast<int>(c)).ptr;
            *end++ = ';';
        } else {
            *end++ = c;
        }
    }
    *end = '\0';
    return text;
}

/// An element's attributes stand in the order in which it got them.
void link_last(xmlAttr* attribute) noexcept
{
    xmlAttr** link = &attribute->parent->properties;
    while (*link) {
        attribute->prev = *link;
        link = &(*link)->next;
    }
    *link = attribute;
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

bool escape_declarations(const xmlNode* element) noexcept
{
    for (xmlNs* declaration = element->nsDef; declaration; declaration = declaration->next) {
        const char* uri = declaration->href ? from_xml(declaration->href) : "";
        if (std::strpbrk(uri, misread_in_uri) && !replace_uri(declaration, escaped_uri(uri, misread_in_uri)))
            return false;
    }
    return true;
}

bool NewValue::make_uri(xmlNs* declaration, const char* uri) noexcept
{
    declaration_ = declaration;
    uri_ = escaped_uri(uri, special_in_uri);
    return uri_ != nullptr;
}

bool NewValue::make_text(xmlAttr* attribute, const char* value) noexcept
{
    attribute_ = attribute;
    text_.reset(xmlNewDocText(attribute->doc, to_xml(value)));
    return text_ && text_->content && identifier_.prepare(attribute, text_->content);
}

bool NewValue::make_attribute(xmlNode* element, xmlNs* space, const xmlChar* local_name,
                              const char* value) noexcept
{
    added_.reset(xmlNewDocProp(element->doc, local_name, nullptr));
    if (!added_ || !added_->name)
        return false;
    added_->parent = element;
    added_->ns = space;
    return make_text(added_.get(), value);
}

bool NewValue::make(xmlNode* element, const char* name, const char* value) noexcept
{
    if (xmlNs* declaration = declaration_written(element, name))
        return make_uri(declaration, value);
    if (xmlAttr* attribute = attribute_written(element, name))
        return make_text(attribute, value);
    const NodeCall call;
    const xmlChar* local_name = to_xml(name);
    xmlNs* space = namespace_of(element, name, local_name);
    if (call.out_of_memory())
        return false;
    space_ = space;
    xmlAttr* attribute = space ? attribute_in(element, *space, local_name) : nullptr;
    return attribute ? make_text(attribute, value) : make_attribute(element, space, local_name, value);
}

bool NewValue::make_in(xmlNode* element, xmlNs* space, const char* local_name, const char* value)
{
    const std::string prefix = space->prefix ? std::string(from_xml(space->prefix)) + ":" : std::string();
    xmlAttr* attribute = attribute_written(element, (prefix + local_name).c_str());
    if (!attribute)
        attribute = attribute_in(element, *space, to_xml(local_name));
    return attribute ? make_text(attribute, value)
                     : make_attribute(element, space, to_xml(local_name), value);
}

void NewValue::put_in() noexcept
{
    if (uri_)
        replace_uri(declaration_, std::move(uri_));
    if (!text_)
        return;
    identifier_.commit();
    if (space_)
        attribute_->ns = space_;
    if (xmlAttr* added = added_.release())
        link_last(added);
    xmlFreeNodeList(attribute_->children);
    text_->parent = reinterpret_cast<xmlNode*>(attribute_);
    attribute_->children = attribute_->last = text_.release();
}

bool set_attribute(xmlNode* element, const char* name, const char* value) noexcept
{
    NewValue new_value;
    if (!new_value.make(element, name, value))
        return false;
    new_value.put_in();
    return true;
}

bool remove_attribute(xmlAttr* attribute) noexcept
{
    forget_identifier(attribute);
    return xmlRemoveProp(attribute) == 0;
}

RemovedAttribute::RemovedAttribute(xmlAttr* attribute) noexcept : attribute_(attribute)
{
    if (!attribute)
        return;
    link_to() = attribute->next;
    if (attribute->next)
        attribute->next->prev = attribute->prev;
}

RemovedAttribute::~RemovedAttribute()
{
    if (!attribute_)
        return;
    link_to() = attribute_;
    if (attribute_->next)
        attribute_->next->prev = attribute_;
}

/// What leads to the attribute in its place.
xmlAttr*& RemovedAttribute::link_to() const noexcept
{
    return attribute_->prev ? attribute_->prev->next : attribute_->parent->properties;
}

void RemovedAttribute::drop() noexcept
{
    if (!attribute_)
        return;
    forget_identifier(attribute_);
    xmlFreeProp(std::exchange(attribute_, nullptr));
}

} // namespace kh
