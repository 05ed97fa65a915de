// Paths that were taken apart, and where they led: the same path again, or one much like it, need be neither taken
// apart nor walked anew.
#ifndef KALV_TREE_KNOWN_PATH_H
#define KALV_TREE_KNOWN_PATH_H

#include "frame/compare.h"
#include "frame/memory.h"
#include "tree/child_index.h"
#include "tree/element_index.h"

#include <kalv/document.h>
#include <string>
#include <string_view>

namespace kh {

/// Reads digits, no more than need no care. \return how many
inline std::size_t read_digits(std::string_view path, std::size_t start, long& number) noexcept
{
    constexpr std::size_t most = 9;
    const char* const digits = path.data() + start;
    const std::size_t end = std::min(path.size() - start, most);
    std::size_t count = 0;
    long read = 0; // kept in a register, which a caller's variable is not
    for (; count < end; ++count) {
        const unsigned digit = static_cast<unsigned char>(digits[count]) - unsigned{'0'};
        if (digit > 9)
            break;
        read = 10 * read + digit;
    }
    number = read;
    return count;
}

/// One such path. Its text, segments and names belong to each other; what a walk found is left by walks.
struct KnownPath {
    struct Segment {
        char* name; ///< in the block
        long index; ///< 0-based
        // Where it stands in the text.
        std::size_t start;
        std::size_t name_end;
        std::size_t end; ///< at a "/", or at the end of the path
    };
    /// What a segment led to, from the root, as long as nothing has been edited since.
    struct Step {
        xmlNode* node;
        xmlNode* tried; ///< where the walk up to here left the cursor; null where it was not moved
        ElementIndex::Position position; ///< the node's in the index, where that was asked for
    };

    std::string text; ///< as it was written; empty for none
    Segment segments[KH_MAX_PATH_NODES];
    long count = 0;
    bool absolute = false;
    bool has_index = false;   ///< some segment may have brackets
    bool has_step_up = false; ///< some segment may be ".."
    long array_position = -1; ///< of the segment written "[*]"; -1 if there is none
    ReusedBlock block;        ///< the names, one behind the other

    /// Where the first segments led from the root. None for a path from the cursor.
    Step walked[KH_MAX_PATH_NODES];
    long walked_count = 0;

    /// The numbers that the index has for the names, and which index that was.
    ElementIndex::Name numbers[KH_MAX_PATH_NODES];
    unsigned long numbered_for = 0;

    /// True for a path from the root without "[*]" and steps up, which are taken anew each time, and may report.
    bool is_plain = false;
    /// True when the path, which is plain, came to differ in one index alone behind the root, as in a loop over a list.
    bool in_a_loop = false;
    long loop_segment = 0; ///< the one with that index
    /// The list of children that the loop goes along, and its number, once a turn was found there.
    ChildIndex::List* loop_list = nullptr;
    unsigned long loop_list_number = 0;
    FetchAhead ahead; ///< along that list
    /// Where the index has the parent of the list, and which index that is, once a turn of the loop was found there.
    ElementIndex::Position loop_parent = ElementIndex::none;
    unsigned long loop_generation = 0;

    unsigned long used = 0; ///< when it was put onto the stack last

    /// True for a text that is this path.
    bool is_path(std::string_view other) const noexcept
    {
        return array_position == -1 && other.size() == text.size() && !text.empty() &&
               is_same(other.data(), text.data(), text.size());
    }

    /// Becomes the next turn of its loop: a path that differs in the loop's index alone. False, and no change, for all
    /// else.
    bool take_next_turn(std::string_view other) noexcept;

    /// Becomes a path that differs in one index, whichever that is. False, and no change, where it differs otherwise.
    bool take_index(std::string_view other) noexcept;

    /// How many segments another path has in common with this one, from the start on, as far as the texts are the same.
    long segments_shared_with(std::string_view other, std::size_t common) const noexcept;

    /// Becomes a path that begins with segments of another, which may be this one.
    void begin_like(const KnownPath& other, long shared) noexcept;

    /// Its segments are complete.
    void completed() noexcept { is_plain = absolute && array_position == -1 && !has_step_up; }

    bool is_step_up(long segment) const noexcept
    {
        const char* name = segments[segment].name;
        return name[0] == '.' && name[1] == '.' && name[2] == '\0';
    }

    /// Is no path any more.
    void forget() noexcept;

private:
    void loop_along(long segment) noexcept;
    long segment_with_index_at(std::size_t place) const noexcept;
    bool replace_index(std::string_view other, long segment, std::size_t length, long number) noexcept;
    /// Changes an index, which walks then follow from there on.
    void set_index(long segment, long number) noexcept
    {
        segments[segment].index = number - 1;
        walked_count = std::min(walked_count, segment);
    }
};

[[gnu::always_inline]] inline bool KnownPath::take_next_turn(std::string_view other) noexcept
{
    const Segment& changing = segments[loop_segment];
    const std::size_t start = changing.name_end + 1;
    const std::size_t tail = text.size() - changing.end + 1; // from the bracket on
    char* const own = text.data();
    if (other.size() <= start + tail || !is_same(other.data(), own, start) ||
        !is_same(other.data() + other.size() - tail, own + changing.end - 1, tail))
        return false;
    const std::size_t digits = other.size() - tail - start;
    long number = 0;
    if (read_digits(other, start, number) != digits || number == 0)
        return false;
    if (start + digits + 1 != changing.end)
        return replace_index(other, loop_segment, digits + 1, number);
    for (std::size_t i = start; i < start + digits; ++i)
        own[i] = other[i];
    set_index(loop_segment, number);
    return true;
}

} // namespace kh

#endif
