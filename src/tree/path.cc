// The path language: a path text becomes the slot's stack of names and 0-based indices; walks follow it.
//     path    = ["/"] segment { "/" segment }       "/a//b" is "/a/b"
//     segment = name [ "[" index "]" ] | "." | ".." | "@" name
// A refused path leaves the stack empty.
#include "tree/path.h"

#include "frame/number.h"
#include "tree/cursor.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <kalv/cursor.h>
#include <kalv/path.h>
#include <string_view>

namespace kh {

namespace {

/// The index that a text behind "[" stands for, cut to 32 bits as callers have always seen it. Whatever
/// follows the number ends it, so the text needs no end of its own.
long index_of(const char* written) noexcept
{
    const auto number = static_cast<std::uint64_t>(parse_integer(written).value);
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number - 1));
}

void empty_stack(Document& document) noexcept
{
    document.walked_count = 0;
    document.stack_count = 0;
    document.absolute = 0;
    document.array_position = -1;
    document.tag_is_from_path = false;
    document.in_a_loop = false;
    document.loop_generation = 0;
}

/// Takes a path apart onto the stack, behind the segments that it shares with the one there.
class Chopping {
public:
    Chopping(Document& document, const char* path, long shared) noexcept : document_(document), path_(path)
    {
        document.stack_count = shared;
        document.array_position = -1;
        const char* next = path + (shared > 0 ? document.extents[shared - 1].end : 0);
        while (fits_ && *next)
            next = *next == '/' ? next + 1 : add(next);
    }

    bool fits_the_stack() const noexcept { return fits_; }
    bool has_one_array_at_most() const noexcept { return arrays_ <= 1; }

    /// Writes the names into a block, which they stay in.
    void name_segments(char* names, std::size_t size) const noexcept
    {
        std::memcpy(names, path_, size);
        for (long i = 0; i < document_.stack_count; ++i) {
            names[document_.extents[i].name_end] = '\0';
            document_.stack_name[i] = names + document_.extents[i].start;
        }
    }

private:
    /// \return the end of the segment
    const char* add(const char* start) noexcept
    {
        const char* bracket = nullptr;
        const char* end = start;
        for (; *end && *end != '/'; ++end) {
            if (*end == '[' && !bracket)
                bracket = end;
        }
        const long segment = document_.stack_count;
        fits_ = segment < KH_MAX_PATH_NODES;
        if (!fits_)
            return end;
        document_.stack_index[segment] = bracket ? index_at(bracket + 1) : 0;
        const auto offset = [this](const char* place) { return static_cast<std::size_t>(place - path_); };
        document_.extents[segment] = {offset(start), offset(bracket ? bracket : end), offset(end)};
        ++document_.stack_count;
        return end;
    }

    /// The 0-based index that is written in brackets.
    long index_at(const char* written) noexcept
    {
        if (*written != '*')
            return index_of(written);
        ++arrays_;
        const long segment = document_.array_position = document_.stack_count;
        // The array node keeps the index of the node before it: callers rely on it.
        return segment > 0 ? document_.stack_index[segment - 1] : 0;
    }

    Document& document_;
    const char* path_;
    bool fits_ = true;
    int arrays_ = 0;
};

/// The last name that is no attribute becomes the requested tag.
long request(Document& document, Operation& op) noexcept
{
    const long last = document.stack_count - 1 - ends_with_attribute(document);
    if (last >= 0 && document.tag_is_from_path) {
        document.visited = 0;
        return op.status();
    }
    if (last >= 0 && !set_requested_tag(document, document.stack_name[last])) {
        empty_stack(document);
        return op.fail(KH_ERR_MEMORY);
    }
    document.tag_is_from_path = accelerated && last >= 0;
    return op.status();
}

/// Some characters as one number, which compares them all at once.
template <class Word = std::uint64_t>
Word word_at(const char* text) noexcept
{
    Word word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

std::size_t common_length(std::string_view one, std::string_view other) noexcept
{
    constexpr std::size_t step = sizeof(std::uint64_t);
    const std::size_t length = std::min(one.size(), other.size());
    std::size_t common = 0;
    while (common + step <= length && word_at(one.data() + common) == word_at(other.data() + common))
        common += step;
    while (common < length && one[common] == other[common])
        ++common;
    return common;
}

/// Whether texts of a length, at least that of a word, are the same.
template <class Word>
bool same_words(const char* one, const char* other, std::size_t length) noexcept
{
    const std::size_t last = length - sizeof(Word); // may overlap the one before
    for (std::size_t i = 0; i < last; i += sizeof(Word)) {
        if (word_at<Word>(one + i) != word_at<Word>(other + i))
            return false;
    }
    return word_at<Word>(one + last) == word_at<Word>(other + last);
}

/// The same for any length: paths are short, and a call of memcmp() costs more than most of them.
inline bool is_same(const char* one, const char* other, std::size_t length) noexcept
{
    if (length >= sizeof(std::uint64_t))
        return same_words<std::uint64_t>(one, other, length);
    if (length >= sizeof(std::uint32_t))
        return same_words<std::uint32_t>(one, other, length);
    return std::string_view(one, length) == std::string_view(other, length);
}

/// How many characters a path has in common with the one on the stack, from the start on.
std::size_t common_with_stack(const Document& document, std::string_view path) noexcept
{
    return accelerated && document.stack_count > 0 ? common_length(document.chopped_path, path) : 0;
}

/// How many segments that makes. An array node's index changes as it is walked.
long shared_segments(const Document& document, std::string_view path, std::size_t common) noexcept
{
    const long last = document.array_position == -1 ? document.stack_count : document.array_position;
    const bool ends_there = common == path.size() || path[common] == '/';
    long count = 0;
    while (count < last &&
           (document.extents[count].end < common || (document.extents[count].end == common && ends_there)))
        ++count;
    return count;
}

/// The segment of the path on the stack that has a character in its brackets; -1 if none has.
long segment_with_index_at(const Document& document, std::size_t place) noexcept
{
    long segment = document.stack_count - 1;
    while (segment >= 0 && document.extents[segment].name_end >= place)
        --segment;
    return segment >= 0 && place < document.extents[segment].end ? segment : -1;
}

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

/// The length of "NUMBER]" at the end of a segment, with a number that needs no care; 0 for all else.
std::size_t length_of_plain_index(std::string_view path, std::size_t start, long& number) noexcept
{
    const std::size_t digits = read_digits(path, start, number);
    const std::size_t end = start + digits;
    const bool closed = path.substr(end, 1) == "]" && (end + 1 == path.size() || path[end + 1] == '/');
    return closed && digits > 0 ? digits + 1 : 0;
}

bool is_step_up(const Document& document, long entry) noexcept
{
    const char* name = document.stack_name[entry];
    return name[0] == '.' && name[1] == '.' && name[2] == '\0';
}

/// A step up is taken anew in each walk: it sets the caller's status, and may report.
bool has_step_up(const Document& document) noexcept
{
    for (long i = 0; i < document.stack_count; ++i) {
        if (is_step_up(document, i))
            return true;
    }
    return false;
}

/// Changes an index on the stack, which walks then follow from there on.
void set_index(Document& document, long segment, long number) noexcept
{
    document.stack_index[segment] = number - 1;
    document.walked_count = std::min(document.walked_count, segment);
}

/// Changes the index in the path on the stack to the one of a length, and "]" behind it, that a path has there. False,
/// and no change, without memory.
bool replace_index(Document& document, std::string_view path, long segment, std::size_t length,
                   long number) noexcept
{
    Document::Extent* const extents = document.extents;
    const std::size_t start = extents[segment].name_end + 1;
    const std::size_t old_length = extents[segment].end - start;
    try {
        document.chopped_path.replace(start, old_length, path, start, length);
    } catch (const std::bad_alloc&) {
        return false;
    }
    extents[segment].end += length - old_length;
    for (long i = segment + 1; length != old_length && i < document.stack_count; ++i) {
        extents[i].start += length - old_length;
        extents[i].name_end += length - old_length;
        extents[i].end += length - old_length;
    }
    set_index(document, segment, number);
    return true;
}

/// Puts a path onto the stack that differs in one index alone from the one there, as paths in a loop do. False,
/// and no change, where it differs otherwise.
bool change_index(Document& document, std::string_view path, std::size_t common) noexcept
{
    const std::string_view old_path = document.chopped_path;
    if (common == path.size() || path.back() != old_path.back())
        return false;
    const long segment = document.array_position == -1 ? segment_with_index_at(document, common) : -1;
    if (segment < 0)
        return false;
    const std::size_t start = document.extents[segment].name_end + 1;
    long number = 0;
    const std::size_t old_length = length_of_plain_index(old_path, start, number);
    const std::size_t length = length_of_plain_index(path, start, number);
    if (old_length == 0 || length == 0 || old_path.substr(start + old_length) != path.substr(start + length))
        return false;
    if (!replace_index(document, path, segment, length, number))
        return false;
    document.in_a_loop = document.absolute && segment > 0 && !has_step_up(document);
    document.loop_segment = segment;
    document.loop_generation = 0;
    return true;
}

/// Remembers the path that the stack holds; without memory it will be taken apart again.
void remember_path(Document& document, std::string_view path) noexcept
{
    try {
        document.chopped_path = path;
    } catch (const std::bad_alloc&) {
        document.chopped_path.clear();
    }
}

/// Takes a path apart that begins with segments that stand on the stack already.
long chop(Document& document, std::string_view text, long shared, Operation& op) noexcept
{
    const char* path = text.data();
    const auto refuse = [&](long code) {
        empty_stack(document);
        return op.fail(code, ". Bad path: %s", path);
    };
    const bool bad_start = text.size() > 1 && text[0] == '.' && text[1] != '.' && text[1] != '/';
    const Chopping chopping(document, path, shared);
    if (!chopping.fits_the_stack() && !bad_start)
        return refuse(KH_ERR_PATH_LENGTH);
    if (bad_start || document.stack_count == 0 || !chopping.has_one_array_at_most())
        return refuse(KH_ERR_ARGUMENT);
    char* names = document.path_names.reserve(text.size() + 1);
    if (!names) {
        empty_stack(document);
        return op.fail(KH_ERR_MEMORY);
    }
    chopping.name_segments(names, text.size() + 1);
    remember_path(document, text);
    document.absolute = *path == '/';
    document.walked_count = std::min(document.walked_count, shared);
    document.numbered_for = 0;
    document.in_a_loop = false;
    document.loop_generation = 0;
    document.tag_is_from_path = false;
    return request(document, op);
}

/// The same for a path that may be the one on the stack, or much like it: callers often ask for paths that
/// differ in the last steps, in an index, or not at all.
long chop(Document& document, const char* path, Operation& op) noexcept
{
    const std::string_view text = path;
    const std::size_t common = common_with_stack(document, text);
    const bool is_on_stack = common > 0 && common == text.size() && common == document.chopped_path.size();
    if ((is_on_stack && document.array_position == -1) ||
        (common > 0 && change_index(document, text, common)))
        return request(document, op);
    return chop(document, text, shared_segments(document, text, common), op);
}

/// The end of a walk over the whole stack: a last attribute is not walked.
long walk_end(const Document& document) noexcept
{
    return document.stack_count - ends_with_attribute(document);
}

/// One step of a walk, along an entry of the stack.
xmlNode* step(long* fd, Document& document, xmlNode* node, long entry, Operation& op) noexcept
{
    const char* name = document.stack_name[entry];
    if (name[0] == '.' && name[1] == '\0')
        return node;
    if (!is_step_up(document, entry))
        return go_to_child(document, node, name, document.stack_index[entry]);
    node = kh_tree_go_to_parent(fd, node, op.error_vector());
    if (op.status() != KH_OK)
        op.pass_on();
    return node;
}

/// Follows the entries from `first` up to `end`; the cursor moves to the node reached. Null, without a
/// report, where there is no such node.
xmlNode* walk(long* fd, Document& document, xmlNode* node, long first, long end, Operation& op) noexcept
{
    for (long i = first; node && i < end; ++i)
        node = step(fd, document, node, i, op);
    if (node)
        document.current = node;
    return node;
}

/// Where in the index a walk begins that goes on from a step; `none` where that is not known.
ElementIndex::Position position_of(ElementIndex& index, Document::Step& step) noexcept
{
    if (step.position >= index.count() || index.node_at(step.position) != step.node)
        step.position = index.position_of(step.node);
    return step.position;
}

/// The numbers of the names on the stack.
const ElementIndex::Name* stack_numbers(Document& document) noexcept
{
    const ElementIndex& index = document.element_index;
    if (document.numbered_for != index.generation()) {
        for (long i = 0; i < document.stack_count; ++i)
            document.stack_number[i] = index.number_of(document.stack_name[i]);
        document.numbered_for = index.generation();
    }
    return document.stack_number;
}

/// What the entries from `first` up to `end`, with the numbers of their names, lead to from a place in the index; `none`
/// for what is not there, or is no element of that name.
inline ElementIndex::Position follow_in_index(Document& document, ElementIndex::Position position,
                                              const ElementIndex::Name* numbers, long first,
                                              long end) noexcept
{
    for (long i = first; i < end && position != ElementIndex::none; ++i) {
        if (document.stack_index[i] < 0 || numbers[i] == ElementIndex::none)
            return ElementIndex::none;
        position = document.element_index.child_at(position, numbers[i],
                                                   static_cast<std::size_t>(document.stack_index[i]));
    }
    return position;
}

/// The node that it leads to from a step, by the index alone, or null. The cursor stays. Only for paths in a loop: for
/// others, the way into the index would cost more than it saves.
xmlNode* find_in_index(Document& document, Document::Step& start, long first, long end) noexcept
{
    ElementIndex& index = document.element_index;
    if (first == end || !document.in_a_loop || !index.stands(document.root))
        return nullptr;
    const ElementIndex::Position parent = position_of(index, start);
    const ElementIndex::Position found =
        follow_in_index(document, parent, stack_numbers(document), first, end);
    if (found == ElementIndex::none)
        return nullptr;
    if (first == document.loop_segment) {
        document.loop_parent = parent;
        document.loop_generation = index.generation();
    }
    index.found(found);
    return index.node_at(found);
}

/// The node that the path on the stack, which has names to walk, led to; null where its walk left no such trace.
xmlNode* walked_before(const Document& document) noexcept
{
    const long end = walk_end(document);
    return document.walked_count >= end ? document.walked[end - 1].node : nullptr;
}

/// Puts another turn of a loop onto the stack: a path that differs from the one there in the loop's index alone. False,
/// and no change, for all else.
inline bool put_next_turn(Document& document, std::string_view path) noexcept
{
    const long segment = document.loop_segment;
    const Document::Extent& extent = document.extents[segment];
    const std::size_t start = extent.name_end + 1;
    const std::size_t tail = document.chopped_path.size() - extent.end + 1; // from the bracket on
    char* const last = document.chopped_path.data();
    if (path.size() <= start + tail || !is_same(path.data(), last, start) ||
        !is_same(path.data() + path.size() - tail, last + extent.end - 1, tail))
        return false;
    const std::size_t digits = path.size() - tail - start;
    long number = 0;
    if (read_digits(path, start, number) != digits || number == 0)
        return false;
    if (start + digits + 1 != extent.end)
        return replace_index(document, path, segment, digits + 1, number);
    for (std::size_t i = start; i < start + digits; ++i)
        last[i] = path[i];
    set_index(document, segment, number);
    return true;
}

/// Follows the stack from the root, going on from where the last walk of the same entries got to.
xmlNode* walk_from_root(long* fd, Document& document, long end, Operation& op) noexcept
{
    xmlNode* const before = document.current;
    const long lasting = document.array_position == -1 ? end : std::min(end, document.array_position);
    if (document.walked_count == 0) {
        document.walked[0] = {document.root, nullptr, 0};
        document.walked_count = 1;
    }
    const long first = std::max(1L, std::min(document.walked_count, end));
    Document::Step& start = document.walked[first - 1];
    xmlNode* node = find_in_index(document, start, first, end);
    if (node)
        return document.current = node;
    node = start.node;
    document.current = start.tried;
    document.element_index.walked(first < end ? 1 : 0);
    for (long i = first; node && i < end; ++i) {
        node = step(fd, document, node, i, op);
        const bool lasts = node && i < lasting && is_element(node) && !is_step_up(document, i);
        if (lasts && i == document.walked_count && accelerated) {
            document.walked[i] = {node, document.current, ElementIndex::none};
            document.walked_count = i + 1;
        }
    }
    if (node)
        document.current = node;
    else if (!document.current)
        document.current = before;
    return node;
}

/// The same for another turn of a loop, which mostly takes a look into the index, or two.
inline xmlNode* walk_next_turn(long* fd, Document& document) noexcept
{
    ElementIndex& index = document.element_index;
    const long end = walk_end(document);
    ElementIndex::Position found = ElementIndex::none;
    if (document.loop_generation != 0 && document.loop_generation == index.generation())
        found = follow_in_index(document, document.loop_parent, document.stack_number, document.loop_segment,
                                end);
    if (found == ElementIndex::none) {
        Operation op("kh_tree_go_to_stack_node", nullptr); // reports nothing: no step of a loop leads up
        return walk_from_root(fd, document, end, op);
    }
    index.found(found);
    return index.node_at(found);
}

/// True where all siblings of a node are few.
bool has_near_ends(const xmlNode* node) noexcept
{
    constexpr int few = 32;
    int count = 0;
    for (const xmlNode* sibling = node->next; sibling && count < few; sibling = sibling->next)
        ++count;
    for (const xmlNode* sibling = node->prev; sibling && count < few; sibling = sibling->prev)
        ++count;
    return count < few || !node->parent;
}

/// False, with a report, for an absolute path that begins with another name than the root's. Walks of such a
/// path return the root.
bool begins_at_root(const Document& document, Operation& op) noexcept
{
    const bool was_seen =
        document.walked_count > 0; // a walk of this path, or one that begins like it, got on
    if (!document.absolute || was_seen || document.stack_count == 0 ||
        is_named(document.root, document.stack_name[0]))
        return true;
    op.fail(KH_ERR_ARGUMENT, ". Bad root element: %s", document.stack_name[0]);
    return false;
}

/// Walks from the start of the path, the root or the cursor, up to `end`.
xmlNode* walk_from_start(long* fd, Document& document, long end, Operation& op) noexcept
{
    return document.absolute ? walk_from_root(fd, document, end, op)
                             : walk(fd, document, document.current, 0, end, op);
}

/// How many siblings of its name an element has, itself included, and its 1-based place among them. Where they
/// are many, the index of children saves counting them each time. May throw std::bad_alloc.
void count_siblings(Document& document, xmlNode* element, long& total, long& position)
{
    if (accelerated && !has_near_ends(element)) {
        ChildIndex::List& list = document.child_index.list(element->parent, from_xml(element->name));
        position = static_cast<long>(list.position_of(element)) + 1;
        total = static_cast<long>(list.all().size());
        if (position <= total)
            return;
    }
    kh_tree_get_sibling_index(element, &total, &position);
}

/// Writes the absolute path of an element below the root. May throw std::bad_alloc.
void write_path(Document& document, xmlNode* element, std::string& path)
{
    // From the end, so that a step up appends to it.
    path.clear();
    const auto append = [&path](std::string_view text) { path.append(text.rbegin(), text.rend()); };
    for (xmlNode* node = element; node && node != document.root; node = node->parent) {
        if (!is_element(node))
            continue;
        long total = 0;
        long position = 0;
        count_siblings(document, node, total, position);
        if (total > 1) {
            char digits[24];
            const char* end = std::to_chars(std::begin(digits), std::end(digits), position).ptr;
            append("]");
            append({digits, static_cast<std::size_t>(end - digits)});
            append("[");
        }
        append(from_xml(node->name));
        append("/");
    }
    append(from_xml(document.root->name));
    append("/");
    std::reverse(path.begin(), path.end());
}

} // namespace

xmlNode* go_to_known_node(long* fd, Document& document, std::string_view path) noexcept
{
    if (!document.tag_is_from_path || document.walked_count == 0)
        return nullptr;
    xmlNode* node = nullptr;
    if (document.in_a_loop && put_next_turn(document, path))
        node = walk_next_turn(fd, document);
    else if (!has_array_node(document) && !path.empty() && path == document.chopped_path)
        node = walked_before(document);
    if (!node)
        return nullptr;
    document.visited = 0;
    return document.current = node;
}

long chop_path(Document& document, const char* path, long* ierr) noexcept
{
    Operation op("kh_tree_chop_path", ierr);
    return path ? chop(document, path, op) : op.null_argument();
}

xmlNode* go_to_stack_node(long* fd, Document& document, long* ierr) noexcept
{
    Operation op("kh_tree_go_to_stack_node", ierr);
    if (!begins_at_root(document, op))
        return document.root;
    return walk_from_start(fd, document, walk_end(document), op);
}

long get_path(const long* fd, const char** path, long* ierr) noexcept
{
    Operation op("kh_tree_get_path", ierr);
    Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (!path)
        return op.null_argument();
    if (!document->current)
        return op.fail(KH_ERR_NO_CURRENT);
    if (!is_element(document->current))
        return op.fail(KH_ERR_NOT_ELEMENT);
    op.guarded([&] {
        write_path(*document, document->current, document->cursor_path);
        *path = document->cursor_path.c_str();
    });
    return op.status();
}

} // namespace kh

using kh::Document;
using kh::go_to_known_node;
using kh::KeepStatus;
using kh::Operation;

long kh_tree_chop_path(long* fd, const char* path, long* ierr)
{
    Operation op("kh_tree_chop_path", ierr);
    Document* document = open_document(op, fd);
    return document ? chop_path(*document, path, ierr) : op.status();
}

xmlNode* kh_tree_go_to_stack_node(long* fd, long* ierr)
{
    Operation op("kh_tree_go_to_stack_node", ierr);
    Document* document = document_with_root(op, fd);
    return document ? go_to_stack_node(fd, *document, ierr) : nullptr;
}

long kh_tree_go_to_path_node(long* fd, const char* path, long* ierr)
{
    Operation op("kh_tree_go_to_path_node", ierr);
    Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (!path)
        return op.null_argument();
    if (go_to_known_node(fd, *document, path))
        return op.status();
    chop_path(*document, path, op.error_vector());
    if (op.failed())
        return op.pass_on();
    const xmlNode* node = go_to_stack_node(fd, *document, op.error_vector());
    if (op.failed())
        return op.pass_on();
    if (!node)
        return op.fail(KH_ERR_NOT_FOUND, ". Path: %s", path);
    return op.status(); // 0, or the warning that ".." met the root
}

xmlNode* kh_tree_go_to_stack_array_node(long* fd, long* k, long* ierr)
{
    Operation op("kh_tree_go_to_stack_array_node", ierr, KeepStatus());
    Document* document = document_with_root(op, fd);
    if (!document)
        return nullptr;
    if (!k) {
        op.null_argument();
        return nullptr;
    }
    if (*k < 0) {
        op.fail(KH_ERR_ARGUMENT, ". Bad index: %ld", *k);
        return nullptr;
    }
    const long position = document->array_position;
    if (position < 0 || position >= document->stack_count) {
        op.fail(KH_ERR_NOT_ARRAY, ". Position of the array elements in the stack: %ld", 0L);
        return nullptr;
    }
    if (!kh::begins_at_root(*document, op))
        return document->root;
    document->stack_index[position] = *k;
    document->walked_count = std::min(document->walked_count, position);
    return kh::walk_from_start(fd, *document, position + 1, op);
}

xmlNode* kh_tree_go_to_stack_from_array_node(long* fd, long* ierr)
{
    Operation op("kh_tree_go_to_stack_from_array_node", ierr, KeepStatus());
    Document* document = document_with_root(op, fd);
    if (!document)
        return nullptr;
    if (document->array_position < 0) {
        // The position shown is always 0: callers compare this text.
        op.fail(KH_ERR_NOT_ARRAY, ". Position of the array elements in the stack: %ld", 0L);
        return nullptr;
    }
    return kh::walk(fd, *document, document->current, document->array_position + 1, kh::walk_end(*document),
                    op);
}

long kh_tree_get_path(long* fd, char* out, long* ierr)
{
    const char* path = nullptr;
    const long status = kh::get_path(fd, out ? &path : nullptr, ierr);
    if (status == KH_OK && path)
        std::strcpy(out, path);
    return status;
}
