// All elements of a document in the order of its text, so that reads of many need not walk the tree.
#ifndef KALV_TREE_ELEMENT_INDEX_H
#define KALV_TREE_ELEMENT_INDEX_H

#include "tree/accelerated.h"
#include "tree/xml.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace kh {

/// Memory in a mapping of its own: a block of many megabytes among the nodes would make freeing them slower.
class Mapping {
public:
    Mapping() = default;
    ~Mapping() { resize(0); }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;

    /// False when memory runs out, and all stays as it is.
    bool resize(std::size_t size) noexcept;
    std::size_t size() const noexcept { return size_; }
    void* start() const noexcept { return start_; }

private:
    void* start_ = nullptr;
    std::size_t size_ = 0;
};

template <class Entry>
class MappedArray {
public:
    bool resize(std::size_t capacity) noexcept { return mapping_.resize(capacity * sizeof(Entry)); }
    std::size_t capacity() const noexcept { return mapping_.size() / sizeof(Entry); }
    Entry& operator[](std::size_t index) noexcept { return static_cast<Entry*>(mapping_.start())[index]; }
    const Entry& operator[](std::size_t index) const noexcept
    {
        return static_cast<const Entry*>(mapping_.start())[index];
    }

private:
    Mapping mapping_;
};

/// The index of a document's elements. It is made once walks have looked at as many elements as there are, so
/// that a program that reads a few values never pays for it, and any edit drops it. Without memory there is
/// none, and callers walk.
class ElementIndex {
public:
    using Position = std::uint32_t; ///< of an element in the document; the root is at 0
    using Name = std::uint32_t;     ///< the number of a name
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    /// How many elements there may be, so that no attempt at the index is made too early.
    void expect(std::size_t elements) noexcept { worthwhile_ = expected_ = std::max(elements, few); }

    /// A walk that the index would have saved has looked at some elements.
    void walked(std::size_t elements) noexcept { walked_ += accelerated ? elements : 0; }

    /// True when the index stands, made now if it is worth it.
    bool stands(xmlNode* root) noexcept { return count_ > 0 || (walked_ >= worthwhile_ && make(root)); }

    /// Something is edited.
    void drop() noexcept;

    Position count() const noexcept { return count_; }
    /// Where an element stands; `none` for what is none, or would take long to find.
    Position position_of(const xmlNode* element) noexcept;
    /// The same for the root and the element that was found last; `none` for every other.
    Position known_position_of(const xmlNode* element) const noexcept
    {
        return element == node_at(last_) ? last_ : element == node_at(0) ? 0 : none;
    }

    /// The text of the element that was found last, if it is like most; null for every other.
    const char* known_text_of(const xmlNode* element) const noexcept
    {
        return count_ > 0 && element == node_at(last_) ? text_at(last_) : nullptr;
    }

    /// Another number each time that the index is made; 0 while there is none.
    unsigned long generation() const noexcept { return count_ > 0 ? generation_ : 0; }

    /// The number of a name; `none` for one that no element has.
    Name number_of(const char* name) const noexcept;
    xmlNode* node_at(Position position) const noexcept { return elements_[position].node; }
    /// The value of an element that is one text and nothing else; null for every other.
    const char* text_at(Position position) const noexcept { return elements_[position].text; }
    /// The position behind an element and all that is below it.
    Position end_at(Position position) const noexcept { return elements_[position].end; }

    /// The first of a name from a position on, in document order; `count()` if there is none.
    Position next_named(Name name, Position position) noexcept;
    /// The same among siblings; `end` if there is none.
    Position sibling_named(Name name, Position position, Position end) const noexcept
    {
        while (position < end && names_[position] != name)
            position = end_at(position);
        return position;
    }
    /// The child element of a name with a 0-based index; `none` where that would need care.
    Position child_at(Position parent, Name name, std::size_t index) noexcept
    {
        const Children& last = lists_[last_list_];
        if (last.parent == parent && last.name == name && index < last.positions.size())
            return last.positions[index];
        return index < near ? near_child_at(parent, name, index) : far_child_at(parent, name, index);
    }
    /// An element at this position was found.
    void found(Position position) noexcept { last_ = position; }

private:
    struct Element {
        xmlNode* node;
        const char* text;
        Position end;
    };
    /// The children of one name, as far as they were asked for.
    struct Children {
        Position parent;
        Name name;
        std::vector<Position> positions;
    };
    Children& children(Position parent, Name name);
    Position near_child_at(Position parent, Name name, std::size_t index) const noexcept
    {
        const Position end = end_at(parent);
        Position child = sibling_named(name, parent + 1, end);
        for (; index > 0 && child < end; --index)
            child = sibling_named(name, end_at(child), end);
        return child < end ? child : none;
    }
    Position far_child_at(Position parent, Name name, std::size_t index) noexcept;
    bool make(xmlNode* root) noexcept;
    bool note_all(xmlNode* root, std::size_t most);
    bool has_room_for(std::size_t count, std::size_t most) noexcept;

    MappedArray<Element> elements_;
    MappedArray<Name> names_; ///< apart, as most are only looked at for their names
    std::map<std::string, Name, std::less<>> numbers_;
    Children lists_[4] = {}; ///< those asked for last
    std::size_t last_list_ = 0;
    unsigned long generation_ = 0;
    Position count_ = 0;
    Position last_ = 0; ///< that was found
    std::size_t walked_ = 0;
    static constexpr std::size_t few = 256;
    static constexpr std::size_t near = 8; ///< children that need no list
    std::size_t expected_ = few;
    std::size_t worthwhile_ = few;
};

} // namespace kh

#endif
