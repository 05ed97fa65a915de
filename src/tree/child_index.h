// Where the n-th child of a name is, without walking to it again.
#ifndef KALV_TREE_CHILD_INDEX_H
#define KALV_TREE_CHILD_INDEX_H

#include "tree/xml.h"

#include <array>
#include <string>
#include <unordered_map>
#include <vector>

namespace kh {

/// Lists of the child elements of one name, for the few parents that were asked about last. A list reaches as
/// far as the walk that it saved has gone and goes on from there, so that it never costs more than that walk,
/// and children that are appended need no telling. Every other edit has to be told. Without memory there is
/// no list, and callers walk.
class ChildIndex {
public:
    /// The children of one name, in document order.
    class List {
    public:
        /// The child with a 0-based index; null when there are fewer. May throw std::bad_alloc.
        xmlNode* at(std::size_t index)
        {
            if (index >= nodes_.size())
                extend(index + 1);
            return index < nodes_.size() ? nodes_[index] : nullptr;
        }
        /// The parent; null for a list that was dropped.
        const xmlNode* parent() const noexcept { return parent_; }
        /// Another number for each list that is made; 0 for one that was dropped.
        unsigned long number() const noexcept { return number_; }
        /// All of them. May throw std::bad_alloc.
        const std::vector<xmlNode*>& all();
        /// The 0-based index of one of them; their number for any other node. May throw std::bad_alloc.
        std::size_t position_of(const xmlNode* child);

    private:
        friend class ChildIndex;
        bool is_of(const xmlNode* parent, const char* name) const noexcept
        {
            return parent_ == parent && std::strcmp(name_.c_str(), name) == 0;
        }
        void extend(std::size_t size);

        const xmlNode* parent_ = nullptr;
        std::string name_;
        std::vector<xmlNode*> nodes_;
        const xmlNode* scanned_ = nullptr; ///< the last element child that was looked at
        std::unordered_map<const xmlNode*, std::size_t> positions_;
        std::size_t last_position_ = 0;
        unsigned long number_ = 0;
        unsigned long used_ = 0;
    };

    /// The list for a parent and a name. May throw std::bad_alloc.
    List& list(const xmlNode* parent, const char* name);

    /// A node was inserted behind a sibling, or before it.
    void inserted_behind(const xmlNode* sibling) noexcept;
    void inserted_before(const xmlNode* sibling) noexcept { forget(sibling->parent); }

    /// A node is about to be removed with all below it.
    void removing(const xmlNode* node) noexcept;

    /// All nodes below a node are about to be removed.
    void emptying(const xmlNode* node) noexcept;

private:
    void forget(const xmlNode* parent) noexcept;

    std::array<List, 8> lists_;
    List* last_used_ = lists_.data();
    unsigned long made_ = 0;
    unsigned long uses_ = 0;
};

} // namespace kh

#endif
