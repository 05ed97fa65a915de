// Nodes of a document by XPath: an oracle that shares no code with the library's own walks.
#ifndef KALV_TESTS_NODES_H
#define KALV_TESTS_NODES_H

#include "support/support.h"

#include <libxml/xpath.h>
#include <memory>
#include <vector>

namespace support {

/// The nodes that an expression selects, in document order; a relative one starts at `from`.
inline std::vector<xmlNode*> nodes_of(const Document& document, const std::string& xpath,
                                      xmlNode* from = nullptr)
{
    const std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
        xmlXPathNewContext(document.slot()->doc), xmlXPathFreeContext);
    if (from)
        context->node = from;
    const std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> result(
        xmlXPathEval(BAD_CAST xpath.c_str(), context.get()), xmlXPathFreeObject);
    if (!result || !result->nodesetval || result->nodesetval->nodeNr == 0)
        return {};
    return {result->nodesetval->nodeTab, result->nodesetval->nodeTab + result->nodesetval->nodeNr};
}

/// The first node that an expression selects, or null.
inline xmlNode* node_of(const Document& document, const std::string& xpath, xmlNode* from = nullptr)
{
    const std::vector<xmlNode*> nodes = nodes_of(document, xpath, from);
    return nodes.empty() ? nullptr : nodes.front();
}

} // namespace support

#endif
