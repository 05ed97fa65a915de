#include "tree.h"

#include <algorithm>
#include <cstring>
#include <libxml/parser.h>
#include <libxml/valid.h>
#include <set>

namespace fuzz {

namespace {

bool is_element(const xmlNode* node)
{
    return node->type == XML_ELEMENT_NODE;
}

bool is_named(const xmlNode* node, const xmlChar* name)
{
    return is_element(node) && xmlStrEqual(node->name, name);
}

std::string qualified(const xmlNs* space, const xmlChar* name)
{
    return space && space->prefix ? std::string(chars(space->prefix)) + ":" + chars(name) : chars(name);
}

void replace_all(std::string& text, const std::string& from, const std::string& to)
{
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
}

/// True where the internal subset gives an attribute a type other than CDATA.
bool is_tokenized(const xmlNode* element, const std::string& name)
{
    xmlDtd* subset = element->doc ? element->doc->intSubset : nullptr;
    if (!subset)
        return false;
    const std::string element_name = qualified(element->ns, element->name);
    const std::size_t prefix_size = std::min(name.find(':'), name.size());
    const bool has_prefix = prefix_size < name.size();
    const std::string prefix = name.substr(0, prefix_size);
    const std::string local_name = has_prefix ? name.substr(prefix_size + 1) : name;
    const xmlAttribute* declared =
        xmlGetDtdQAttrDesc(subset, BAD_CAST element_name.c_str(), BAD_CAST local_name.c_str(),
                           has_prefix ? BAD_CAST prefix.c_str() : nullptr);
    return declared && declared->atype != XML_ATTRIBUTE_CDATA;
}

/// Every parser takes the first and the last blanks away, and leaves one of those that meet.
std::string normalized(const std::string& value)
{
    std::string text;
    for (const char c : value)
        if (c != ' ' || (!text.empty() && text.back() != ' '))
            text += c;
    if (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

class Outline {
public:
    explicit Outline(bool is_read_again) : is_read_again_(is_read_again) {}

    void level(const xmlNode* first)
    {
        for (const xmlNode* node = first; node; node = node->next)
            one(node);
        end_text();
    }

    void one(const xmlNode* node)
    {
        if (node->type != kind_of_text_)
            end_text();
        switch (node->type) {
        case XML_ELEMENT_NODE:
            element(node);
            break;
        case XML_TEXT_NODE:
        case XML_CDATA_SECTION_NODE:
            kind_of_text_ = node->type;
            text_ += chars(node->content);
            break;
        case XML_COMMENT_NODE:
            result += std::string("<!--") + chars(node->content) + "-->";
            break;
        case XML_PI_NODE:
            result += std::string("<?") + chars(node->name) + " " + chars(node->content) + "?>";
            break;
        case XML_ENTITY_REF_NODE:
            result += std::string("&") + chars(node->name) + ";";
            break;
        case XML_DTD_NODE:
            result += std::string("<!DOCTYPE ") + chars(node->name) + ">";
            break;
        default:
            result += "?";
        }
    }

    std::string result;

private:
    void end_text()
    {
        if (kind_of_text_ == XML_CDATA_SECTION_NODE && is_read_again_) {
            // A reference would stand for itself there, and parsers read each line end as a line feed.
            replace_all(text_, "\r\n", "\n");
            replace_all(text_, "\r", "\n");
        }
        if (!text_.empty())
            result += (kind_of_text_ == XML_TEXT_NODE ? "'" : "[") + text_ + "'";
        text_.clear();
        kind_of_text_ = XML_TEXT_NODE;
    }

    /// Small documents: their depth is no danger to the stack.
    void element(const xmlNode* node)
    {
        result += "<" + qualified(node->ns, node->name);
        std::set<std::string> declarations;
        for (const xmlNs* space = node->nsDef; space; space = space->next)
            declare(declarations, space->prefix ? std::string("xmlns:") + chars(space->prefix) : "xmlns",
                    chars(space->href));
        std::string attributes;
        for (const xmlAttr* attribute = node->properties; attribute; attribute = attribute->next) {
            const std::string name = qualified(attribute->ns, attribute->name);
            const std::string written = written_value_of(attribute);
            const std::string value =
                is_read_again_ && is_tokenized(node, name) ? normalized(written) : written;
            if (name == "xmlns" || name.compare(0, 6, "xmlns:") == 0)
                declare(declarations, name, value);
            else
                attributes += " " + name + "='" + value + "'";
        }
        for (const std::string& declaration : declarations)
            result += declaration;
        result += attributes + ">";
        level(node->children);
        result += "</>";
    }

    /// A prefix that stands for nothing is not read.
    static void declare(std::set<std::string>& declarations, const std::string& name, const std::string& uri)
    {
        if (name == "xmlns" || !uri.empty())
            declarations.insert(" " + name + "='" + without_references(uri) + "'");
    }

    bool is_read_again_;
    std::string text_;
    xmlElementType kind_of_text_ = XML_TEXT_NODE;
};

} // namespace

Tree plain_tree(const std::string& bytes)
{
    const bool declares_entities = bytes.find("<!ENTITY") != std::string::npos;
    const int limits = declares_entities ? 0 : XML_PARSE_HUGE;
    return Tree(xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr,
                              limits | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
}

std::vector<xmlNode*> elements(const xmlDoc* document)
{
    std::vector<xmlNode*> found;
    const auto* top = reinterpret_cast<const xmlNode*>(document);
    xmlNode* node = xmlDocGetRootElement(document);
    while (node) {
        if (is_element(node))
            found.push_back(node);
        if (is_element(node) && node->children) {
            node = node->children;
            continue;
        }
        while (node != top && !node->next)
            node = node->parent;
        node = node == top ? nullptr : node->next;
    }
    return found;
}

Value value_of(const xmlNode* element)
{
    const xmlNode* child = element->children;
    if (!child)
        return {KH_ERR_NO_VALUE, ""};
    if (child->next)
        return {KH_ERR_NOT_TERMINAL, ""};
    return {KH_OK, is_element(child) ? "" : chars(child->content)};
}

std::string path_of(const xmlNode* element, const xmlNode* root)
{
    std::string path;
    for (const xmlNode* node = element; node != root; node = node->parent) {
        long before = 0;
        long behind = 0;
        for (const xmlNode* sibling = node->prev; sibling; sibling = sibling->prev)
            before += is_named(sibling, node->name);
        for (const xmlNode* sibling = node->next; sibling; sibling = sibling->next)
            behind += is_named(sibling, node->name);
        std::string segment = std::string("/") + chars(node->name);
        if (before + behind > 0)
            segment += "[" + std::to_string(before + 1) + "]";
        path.insert(0, segment);
    }
    return std::string("/") + chars(root->name) + path;
}

const xmlAttr* attribute_of(const xmlNode* element, const std::string& name)
{
    const xmlAttr* attribute = is_element(element) ? element->properties : nullptr;
    while (attribute && name != chars(attribute->name))
        attribute = attribute->next;
    return attribute;
}

std::string written_value_of(const xmlAttr* attribute)
{
    std::string value;
    for (const xmlNode* part = attribute->children; part; part = part->next)
        value += part->type == XML_ENTITY_REF_NODE ? std::string("&") + chars(part->name) + ";"
                                                   : chars(part->content);
    return value;
}

std::string without_references(std::string text)
{
    replace_all(text, "&#60;", "<");
    replace_all(text, "&#9;", "\t");
    replace_all(text, "&#10;", "\n");
    replace_all(text, "&#13;", "\r");
    replace_all(text, "&#38;", "&");
    return text;
}

std::string outline(const xmlDoc* document)
{
    Outline outline(true);
    outline.level(document->children);
    return std::move(outline.result);
}

std::string outline(const xmlNode* node)
{
    Outline outline(false);
    outline.one(node);
    return std::move(outline.result);
}

} // namespace fuzz
