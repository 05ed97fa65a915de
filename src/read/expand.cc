#include "read/expand.h"

#include <libxml/entities.h>
#include <unordered_map>
#include <vector>

namespace kh {

namespace {

/// Texts are libxml2's limit for an attribute at the longest; entities that multiply end there.
constexpr std::size_t longest_text = 10000000;

/// A part of the text that an entity gave. While it is being written its size is unknown, and an entity that
/// contains itself adds nothing.
struct Part {
    std::size_t start;
    std::size_t size;
};

/// A list of nodes under way, and the entity that it belongs to.
struct Level {
    const xmlNode* node;
    Part* part;
};

} // namespace

bool expand(const xmlNode* nodes, std::string& text)
{
    // Each entity is walked once; where it occurs again, its part of the text is copied.
    std::unordered_map<const xmlEntity*, Part> parts;
    std::vector<Level> levels{{nodes, nullptr}};
    while (!levels.empty()) {
        const xmlNode* node = levels.back().node;
        if (!node) {
            if (Part* part = levels.back().part)
                part->size = text.size() - part->start;
            levels.pop_back();
            continue;
        }
        levels.back().node = node->next;
        if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) {
            text += content_of(node);
        } else if (node->type == XML_ENTITY_REF_NODE) {
            const xmlEntity* entity = xmlGetDocEntity(node->doc, node->name);
            if (!entity) {
                text += content_of(node);
            } else if (const auto [known, is_new] = parts.try_emplace(entity, Part{text.size(), 0}); is_new) {
                levels.push_back({entity->children, &known->second});
            } else {
                const Part part = known->second;
                text.reserve(text.size() + part.size);
                text.append(text.data() + part.start, part.size);
            }
        }
        if (text.size() > longest_text)
            return false;
    }
    return true;
}

} // namespace kh
