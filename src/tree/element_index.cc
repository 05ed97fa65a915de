#include "tree/element_index.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace kh {

namespace {

/// Numbers names. Those of parsed elements are stored once for a document, so that most are known by their
/// place.
class Numbering {
public:
    using Numbers = std::map<std::string, ElementIndex::Name, std::less<>>;
    explicit Numbering(Numbers& numbers) noexcept : numbers_(numbers) {}

    /// May throw std::bad_alloc.
    ElementIndex::Name number_of(const xmlNode* element)
    {
        Known& known = known_[reinterpret_cast<std::uintptr_t>(element->name) % std::size(known_)];
        if (known.name != element->name || !known.name)
            known = {element->name,
                     numbers_.emplace(name_of(element), static_cast<ElementIndex::Name>(numbers_.size()))
                         .first->second};
        return known.number;
    }

private:
    struct Known {
        const xmlChar* name;
        ElementIndex::Name number;
    };
    Numbers& numbers_;
    Known known_[251] = {}; // a prime: names lie at round places
};

} // namespace

bool Mapping::resize(std::size_t size) noexcept
{
    if (size == size_)
        return true;
    void* block = nullptr;
    if (size == 0)
        munmap(start_, size_);
    else if (start_)
        block = mremap(start_, size_, size, MREMAP_MAYMOVE);
    else
        block = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED)
        return false;
    start_ = block;
    size_ = size;
    return true;
}

void ElementIndex::drop() noexcept
{
    walked_ = 0;
    worthwhile_ = expected_;
    if (elements_.capacity() == 0)
        return;
    count_ = 0;
    last_ = 0;
    elements_.resize(0);
    names_.resize(0);
    numbers_.clear();
    for (Children& list : lists_)
        list = {none, none, {}};
}

bool ElementIndex::has_room_for(std::size_t count, std::size_t most) noexcept
{
    if (count <= elements_.capacity())
        return true;
    const std::size_t capacity = std::min(std::max(few, 2 * count), most);
    return count <= most && elements_.resize(capacity) && names_.resize(capacity);
}

/// Walks the document and notes its elements, as long as they are not too many. May throw std::bad_alloc.
bool ElementIndex::note_all(xmlNode* root, std::size_t most)
{
    Numbering numbering(numbers_);
    std::size_t count = 0;
    // Where the end of an element will be noted stands meanwhile the position of the one around it.
    Position around = none;
    for (xmlNode* node = root;;) {
        fetch_behind(node);
        if (is_element(node)) {
            if (!has_room_for(count + 1, most))
                return false;
            names_[count] = numbering.number_of(node);
            elements_[count] = {node, only_text(node), around};
            around = static_cast<Position>(count++);
        }
        if (xmlNode* child = first_child(node)) {
            node = child;
            continue;
        }
        for (;; node = node->parent) {
            if (is_element(node))
                around = std::exchange(elements_[around].end, static_cast<Position>(count));
            if (node == root) {
                count_ = static_cast<Position>(count);
                return true;
            }
            if (node->next)
                break;
        }
        node = node->next;
    }
}

bool ElementIndex::make(xmlNode* root) noexcept
{
    const std::size_t walked = walked_;
    try {
        if (root && note_all(root, std::min<std::size_t>(walked, none))) {
            ++generation_;
            expect(count_);
            return true;
        }
    } catch (const std::bad_alloc&) {
        // Then callers walk.
    }
    drop();
    // All attempts together cost no more than the walks that led to them.
    walked_ = walked;
    worthwhile_ = 4 * walked;
    return false;
}

ElementIndex::Position ElementIndex::position_of(const xmlNode* element) noexcept
{
    constexpr int deepest = 64;
    constexpr int farthest = 256;
    const xmlNode* steps[deepest];
    int depth = 0;
    for (const xmlNode* node = element; node != node_at(0); node = node->parent) {
        if (!node || depth == deepest)
            return none;
        steps[depth++] = node;
    }
    Position position = 0;
    for (int tried = 0; depth > 0; --depth) {
        const Position end = end_at(position);
        for (++position; position < end && node_at(position) != steps[depth - 1];
             position = end_at(position)) {
            if (++tried == farthest)
                return none;
        }
        if (position >= end)
            return none;
    }
    return last_ = position;
}

ElementIndex::Name ElementIndex::number_of(const char* name) const noexcept
{
    const auto found = numbers_.find(name);
    return found == numbers_.end() ? none : found->second;
}

ElementIndex::Position ElementIndex::next_named(Name name, Position position) noexcept
{
    const Name* names = &names_[0];
    while (position < count_ && names[position] != name)
        ++position;
    if (position < count_)
        last_ = position;
    return position;
}

ElementIndex::Children& ElementIndex::children(Position parent, Name name)
{
    for (std::size_t tried = 0; tried < std::size(lists_); ++tried) {
        Children& list = lists_[last_list_];
        if (list.parent == parent && list.name == name)
            return list;
        last_list_ = (last_list_ + 1) % std::size(lists_);
    }
    // The one used last is the last to be replaced.
    last_list_ = (last_list_ + 1) % std::size(lists_);
    lists_[last_list_] = {parent, name, {}};
    return lists_[last_list_];
}

ElementIndex::Position ElementIndex::far_child_at(Position parent, Name name, std::size_t index) noexcept
{
    const Position end = end_at(parent);
    try {
        std::vector<Position>& positions = children(parent, name).positions;
        while (positions.size() <= index) {
            const Position from = positions.empty() ? parent + 1 : end_at(positions.back());
            const Position child = sibling_named(name, from, end);
            if (child >= end)
                return none;
            positions.push_back(child);
        }
        return positions[index];
    } catch (const std::bad_alloc&) {
        return none;
    }
}

} // namespace kh
