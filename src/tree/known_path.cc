#include "tree/known_path.h"

#include "frame/compare.h"

#include <algorithm>
#include <new>

namespace kh {

namespace {

/// The length of "NUMBER]" at the end of a segment, with a number that needs no care; 0 for all else.
std::size_t length_of_plain_index(std::string_view path, std::size_t start, long& number) noexcept
{
    const std::size_t digits = read_digits(path, start, number);
    const std::size_t end = start + digits;
    const bool closed = path.substr(end, 1) == "]" && (end + 1 == path.size() || path[end + 1] == '/');
    return closed && digits > 0 ? digits + 1 : 0;
}

} // namespace

bool KnownPath::take_index(std::string_view other) noexcept
{
    if (!has_index || array_position != -1 || text.empty() || other.empty() || other.back() != text.back())
        return false;
    const std::size_t common = common_length(text, other);
    const long segment = common < other.size() ? segment_with_index_at(common) : -1;
    if (segment < 0)
        return false;
    const std::size_t start = segments[segment].name_end + 1;
    const std::string_view own = text;
    long number = 0;
    const std::size_t own_length = length_of_plain_index(own, start, number);
    const std::size_t length = length_of_plain_index(other, start, number);
    if (own_length == 0 || length == 0 || own.substr(start + own_length) != other.substr(start + length) ||
        !replace_index(other, segment, length, number))
        return false;
    loop_along(segment);
    return true;
}

long KnownPath::segments_shared_with(std::string_view other, std::size_t common) const noexcept
{
    const bool ends_there = common == other.size() || other[common] == '/';
    const long last = array_position == -1 ? count : array_position; // an array node's index changes in walks
    long shared = 0;
    while (shared < last && (segments[shared].end < common || (segments[shared].end == common && ends_there)))
        ++shared;
    return shared;
}

void KnownPath::begin_like(const KnownPath& other, long shared) noexcept
{
    if (&other != this) {
        std::copy_n(other.segments, shared, segments);
        std::copy_n(other.walked, std::min(other.walked_count, shared), walked);
    }
    count = shared;
    has_index = other.has_index && shared > 0;
    has_step_up = other.has_step_up && shared > 0;
    array_position = -1;
    walked_count = std::min(other.walked_count, shared);
    numbered_for = 0;
    is_plain = false;
    loop_along(0);
}

void KnownPath::forget() noexcept
{
    text.clear();
    begin_like(*this, 0);
}

void KnownPath::loop_along(long segment) noexcept
{
    in_a_loop = is_plain && segment > 0;
    loop_segment = segment;
    loop_list = nullptr;
    loop_generation = 0;
}

/// The segment that has a character in its brackets; -1 if none has.
long KnownPath::segment_with_index_at(std::size_t place) const noexcept
{
    long segment = count - 1;
    while (segment >= 0 && segments[segment].name_end >= place)
        --segment;
    return segment >= 0 && place < segments[segment].end ? segment : -1;
}

/// Changes an index to the one of a length, and "]" behind it, that another path has there. False, and no change,
/// without memory.
bool KnownPath::replace_index(std::string_view other, long segment, std::size_t length, long number) noexcept
{
    const std::size_t start = segments[segment].name_end + 1;
    const std::size_t old_length = segments[segment].end - start;
    try {
        text.replace(start, old_length, other, start, length);
    } catch (const std::bad_alloc&) {
        return false;
    }
    segments[segment].end += length - old_length;
    for (long i = segment + 1; length != old_length && i < count; ++i) {
        segments[i].start += length - old_length;
        segments[i].name_end += length - old_length;
        segments[i].end += length - old_length;
    }
    set_index(segment, number);
    return true;
}

} // namespace kh
