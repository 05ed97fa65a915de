#include "build/indentation.h"

#include <algorithm>

namespace kh {

XmlNode new_indentation(const NodeCall&, xmlDoc* document, long spaces) noexcept
{
    const auto size = static_cast<std::size_t>(std::max(spaces, 0L)) + 1;
    XmlNode text(xmlNewDocText(document, nullptr));
    XmlText content(static_cast<xmlChar*>(xmlMallocAtomic(size + 1)));
    if (!text || !content)
        return nullptr;
    std::memset(content.get(), ' ', size);
    content.get()[0] = '\n';
    content.get()[size] = '\0';
    text->content = content.release();
    return text;
}

void remove_if_text(xmlNode* node) noexcept
{
    if (!node || node->type != XML_TEXT_NODE)
        return;
    xmlUnlinkNode(node);
    xmlFreeNode(node);
}

} // namespace kh
