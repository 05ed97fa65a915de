#include "build/content.h"

#include "build/node_list.h"
#include "build/validity.h"

#include <charconv>
#include <cstring>
#include <libxml/entities.h>
#include <string>
#include <string_view>

namespace kh {

namespace {

/// The character of "&#38;" or "&#x26;", given what stands between "&#" and ";"; 0 where that is no
/// character.
unsigned long referenced_character(std::string_view digits) noexcept
{
    const bool hexadecimal = digits.substr(0, 1) == "x";
    if (hexadecimal)
        digits.remove_prefix(1);
    unsigned long code_point = 0;
    const char* end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, code_point, hexadecimal ? 16 : 10);
    const bool complete = result.ec == std::errc() && result.ptr == end;
    return complete && is_xml_character(code_point) ? code_point : 0;
}

/// Turns a text into nodes: runs of text, and references between them.
class ContentBuilder {
public:
    explicit ContentBuilder(xmlDoc* document) noexcept : document_(document) {}

    bool build(std::string_view text)
    {
        while (!text.empty()) {
            const std::size_t run = std::min(text.find('&'), text.size());
            run_ += text.substr(0, run);
            text.remove_prefix(run);
            if (!text.empty() && !add_ampersand(text))
                return false;
        }
        return end_run();
    }

    NodeList& nodes() noexcept { return nodes_; }

private:
    /// Takes a reference, or the ampersand alone, off the front of the text.
    bool add_ampersand(std::string_view& text)
    {
        const std::size_t end = text.find(';');
        const std::string_view name = end == std::string_view::npos ? "" : text.substr(1, end - 1);
        const std::string_view reference = text.substr(0, name.size() + 2);
        if (name.substr(0, 1) == "#") {
            if (const unsigned long character = referenced_character(name.substr(1))) {
                char bytes[4];
                run_.append(bytes, write_utf8(character, bytes));
                text.remove_prefix(reference.size());
                return true;
            }
        } else if (is_xml_name(name)) {
            const xmlEntity* entity = xmlGetDocEntity(document_, to_xml(std::string(name).c_str()));
            if (entity && entity->etype != XML_EXTERNAL_GENERAL_UNPARSED_ENTITY) {
                text.remove_prefix(reference.size());
                return add_entity(entity, std::string(reference));
            }
        }
        run_ += '&';
        text.remove_prefix(1);
        return true;
    }

    bool add_entity(const xmlEntity* entity, const std::string& reference)
    {
        if (entity->etype != XML_INTERNAL_PREDEFINED_ENTITY)
            return end_run() && nodes_.add(XmlNode(xmlNewReference(document_, to_xml(reference.c_str()))));
        run_ += from_xml(entity->content);
        return true;
    }

    bool end_run()
    {
        if (run_.empty())
            return true;
        XmlNode node(xmlNewDocText(document_, to_xml(run_.c_str())));
        run_.clear();
        const bool complete = node && node->content;
        if (complete)
            nodes_.add(std::move(node));
        return complete;
    }

    xmlDoc* document_;
    std::string run_;
    NodeList nodes_;
};

} // namespace

bool set_element_content(xmlNode* element, const char* text)
{
    if (!std::strchr(text, '&'))
        return set_literal_content(element, text);
    const NodeCall call;
    ContentBuilder builder(element->doc);
    if (!builder.build(text) || call.out_of_memory())
        return false;
    builder.nodes().replace_children_of(element);
    return true;
}

bool set_literal_content(xmlNode* element, const char* text) noexcept
{
    const NodeCall call;
    NodeList nodes;
    if (*text) {
        XmlNode node(xmlNewDocText(element->doc, to_xml(text)));
        if (!node || !node->content || call.out_of_memory())
            return false;
        nodes.add(std::move(node));
    }
    nodes.replace_children_of(element);
    return true;
}

void replace_text(xmlNode* text, XmlText content) noexcept
{
    xmlNodeSetContent(text, nullptr); // frees what was there, wherever libxml2 keeps it
    text->content = content.release();
}

} // namespace kh
