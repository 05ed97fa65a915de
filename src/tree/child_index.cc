#include "tree/child_index.h"

#include <algorithm>
#include <limits>

namespace kh {

namespace {

const xmlNode* next_element(const xmlNode* node) noexcept
{
    while (node && !is_element(node))
        node = node->next;
    return node;
}

/// Whether `node` is `other` or stands below it. The climb is short in every document but a hostile one;
/// there the answer is the careful one.
bool may_be_within(const xmlNode* node, const xmlNode* other) noexcept
{
    constexpr int longest_climb = 1000;
    for (int steps = 0; node && steps < longest_climb; ++steps, node = node->parent) {
        if (node == other)
            return true;
    }
    return node != nullptr;
}

} // namespace

void ChildIndex::List::extend(std::size_t size)
{
    NameMatch matches(name_.c_str());
    FetchAhead ahead;
    const xmlNode* element = next_element(scanned_ ? scanned_->next : first_child(parent_));
    for (; element && nodes_.size() < size; element = next_element(element->next)) {
        ahead.reached(element);
        ahead.fetch_node(element);
        ahead.fetch_node(element->next);
        if (matches(element))
            nodes_.push_back(const_cast<xmlNode*>(element));
        scanned_ = element;
    }
}

const std::vector<xmlNode*>& ChildIndex::List::all()
{
    extend(std::numeric_limits<std::size_t>::max());
    return nodes_;
}

std::size_t ChildIndex::List::position_of(const xmlNode* child)
{
    // Callers mostly ask for the one they asked for last, or for the next.
    for (std::size_t i = last_position_; i < std::min(last_position_ + 2, all().size()); ++i) {
        if (nodes_[i] == child)
            return last_position_ = i;
    }
    for (std::size_t i = positions_.size(); i < nodes_.size(); ++i)
        positions_.emplace(nodes_[i], i);
    const auto found = positions_.find(child);
    return found == positions_.end() ? nodes_.size() : last_position_ = found->second;
}

ChildIndex::List& ChildIndex::list(const xmlNode* parent, const char* name)
{
    if (last_used_->is_of(parent, name))
        return *last_used_;
    ++uses_;
    List* oldest = lists_.data();
    for (List& list : lists_) {
        if (list.is_of(parent, name)) {
            list.used_ = uses_;
            return *(last_used_ = &list);
        }
        if (list.used_ < oldest->used_)
            oldest = &list;
    }
    List fresh;
    fresh.name_ = name;
    fresh.parent_ = parent;
    fresh.number_ = ++made_;
    fresh.used_ = uses_;
    *oldest = std::move(fresh);
    return *(last_used_ = oldest);
}

void ChildIndex::inserted_behind(const xmlNode* sibling) noexcept
{
    // Behind what a list has seen, it will come upon the new node by itself.
    for (List& list : lists_) {
        if (list.parent_ == sibling->parent && list.scanned_ && list.scanned_ != sibling)
            list = List();
    }
}

void ChildIndex::forget(const xmlNode* parent) noexcept
{
    for (List& list : lists_) {
        if (list.parent_ == parent)
            list = List();
    }
}

void ChildIndex::removing(const xmlNode* node) noexcept
{
    if (is_element(node))
        forget(node->parent);
    emptying(node);
}

void ChildIndex::emptying(const xmlNode* node) noexcept
{
    for (List& list : lists_) {
        if (list.parent_ && may_be_within(list.parent_, node))
            list = List();
    }
}

} // namespace kh
