// Nodes that are to become the children of another.
#ifndef KALV_BUILD_NODE_LIST_H
#define KALV_BUILD_NODE_LIST_H

#include "build/identifier.h"

namespace kh {

/// A list of nodes without parent; frees what has not become anybody's children.
class NodeList {
public:
    /// \return false for null: memory ran out where the node was made
    bool add(XmlNode node) noexcept
    {
        if (!node)
            return false;
        node->prev = last_;
        if (last_)
            last_->next = node.get();
        else
            first_.reset(node.get());
        last_ = node.release();
        return true;
    }

    /// Takes the place of the children of an element or attribute.
    void replace_children_of(xmlNode* parent) noexcept
    {
        for (xmlNode* node = parent->children; node; node = node->next)
            forget_identifiers(node);
        xmlFreeNodeList(parent->children);
        parent->children = first_.release();
        parent->last = last_;
        for (xmlNode* node = parent->children; node; node = node->next)
            node->parent = parent;
    }

private:
    struct FreeNodes {
        void operator()(xmlNode* first) const noexcept { xmlFreeNodeList(first); }
    };
    std::unique_ptr<xmlNode, FreeNodes> first_;
    xmlNode* last_ = nullptr;
};

} // namespace kh

#endif
