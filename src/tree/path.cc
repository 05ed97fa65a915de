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
    document.path_on_stack = nullptr;
    document.stack_count = 0;
    document.absolute = 0;
    document.array_position = -1;
    document.tag_is_from_path = false;
}

void put_onto_stack(Document& document, KnownPath& path) noexcept
{
    for (long i = 0; i < path.count; ++i) {
        document.stack_name[i] = path.segments[i].name;
        document.stack_index[i] = path.segments[i].index;
    }
    document.stack_count = path.count;
    document.absolute = path.absolute;
    document.array_position = path.array_position;
    document.tag_is_from_path = false;
    document.path_on_stack = &path;
    path.used = ++document.paths_used;
}

/// Which characters end the name of a segment.
struct NameEnds {
    constexpr NameEnds() noexcept
    {
        for (const char c : {'\0', '/', '['})
            is_end[static_cast<unsigned char>(c)] = true;
    }
    constexpr bool operator[](unsigned char c) const noexcept { return is_end[c]; }
    bool is_end[0x100] = {};
};
constexpr NameEnds ends_name;

/// Takes a path apart, behind the segments that a known path has already.
class Chopping {
public:
    Chopping(KnownPath& path, const char* text) noexcept : path_(path), text_(text)
    {
        const char* next = text + (path.count > 0 ? path.segments[path.count - 1].end : 0);
        while (fits_ && *next)
            next = *next == '/' ? next + 1 : add(next);
        path.absolute = *text == '/';
    }

    bool fits_the_stack() const noexcept { return fits_; }
    bool has_one_array_at_most() const noexcept { return arrays_ <= 1; }

    /// Writes the names into a block, which they stay in.
    void name_segments(char* names, std::size_t size) const noexcept
    {
        std::memcpy(names, text_, size);
        for (long i = 0; i < path_.count; ++i) {
            KnownPath::Segment& segment = path_.segments[i];
            names[segment.name_end] = '\0';
            segment.name = names + segment.start;
        }
    }

private:
    /// \return the end of the segment
    const char* add(const char* start) noexcept
    {
        const char* name_end = start;
        while (!ends_name[static_cast<unsigned char>(*name_end)])
            ++name_end;
        const char* end = name_end;
        while (*end && *end != '/')
            ++end;
        fits_ = path_.count < KH_MAX_PATH_NODES;
        if (!fits_)
            return end;
        const bool has_brackets = *name_end == '[';
        const long index = has_brackets ? index_at(name_end + 1) : 0;
        if (has_brackets)
            path_.has_index = true;
        if (start[0] == '.' && start[1] == '.' && name_end - start == 2)
            path_.has_step_up = true;
        const auto offset = [this](const char* place) { return static_cast<std::size_t>(place - text_); };
        path_.segments[path_.count] = {nullptr, index, offset(start), offset(name_end), offset(end)};
        ++path_.count;
        return end;
    }

    /// The 0-based index that is written in brackets.
    long index_at(const char* written) noexcept
    {
        if (*written != '*')
            return index_of(written);
        ++arrays_;
        const long segment = path_.array_position = path_.count;
        // The array node keeps the index of the node before it: callers rely on it.
        return segment > 0 ? path_.segments[segment - 1].index : 0;
    }

    KnownPath& path_;
    const char* text_;
    bool fits_ = true;
    int arrays_ = 0;
};

/// The last name that is no attribute becomes the requested tag. \return false when memory runs out
bool copy_last_name(Document& document) noexcept
{
    const long last = document.stack_count - 1 - ends_with_attribute(document);
    if (last < 0)
        return true;
    if (!set_requested_tag(document, document.stack_name[last]))
        return false;
    document.tag_is_from_path = accelerated;
    return true;
}

/// The same where it may be so already.
inline bool request_last(Document& document) noexcept
{
    if (!document.tag_is_from_path)
        return copy_last_name(document);
    document.visited = 0;
    return true;
}

/// The same, with a report.
long request(Document& document, Operation& op) noexcept
{
    if (request_last(document))
        return op.status();
    empty_stack(document);
    return op.fail(KH_ERR_MEMORY);
}

/// Puts the known path onto the stack that a condition holds for; null if there is none.
template <class Condition>
KnownPath* put_known_path(Document& document, Condition holds) noexcept
{
    for (KnownPath& path : document.known_paths) {
        if (holds(path)) {
            put_onto_stack(document, path);
            return &path;
        }
    }
    return nullptr;
}

/// Puts a path onto the stack that is known, or differs from a known one in one index alone, as paths in a loop do.
bool put_known_path(Document& document, std::string_view text) noexcept
{
    return put_known_path(document, [&](const KnownPath& path) { return path.is_path(text); }) ||
           put_known_path(document, [&](KnownPath& path) { return path.take_index(text); });
}

/// The known path that gives way to another: one with "[*]", which is taken apart each time, or the one used longest ago.
KnownPath& path_to_replace(Document& document) noexcept
{
    if (document.path_on_stack && has_array_node(document))
        return *document.path_on_stack;
    return *std::min_element(
        std::begin(document.known_paths), std::end(document.known_paths),
        [](const KnownPath& one, const KnownPath& other) { return one.used < other.used; });
}

/// A path to be taken apart, with as many segments as a known one has.
KnownPath& begin_path(Document& document, std::string_view text) noexcept
{
    const KnownPath* like = document.known_paths;
    std::size_t most = 0;
    for (const KnownPath& known : document.known_paths) {
        const std::size_t common = accelerated ? common_length(known.text, text) : 0;
        if (common > most) {
            most = common;
            like = &known;
        }
    }
    KnownPath& path = path_to_replace(document);
    path.begin_like(*like, like->segments_shared_with(text, most));
    return path;
}

/// Room for the names of a path, whose text is kept; null when memory runs out.
char* room_for_names(KnownPath& path, std::string_view text) noexcept
{
    try {
        path.text = text;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    return path.block.reserve(text.size() + 1);
}

/// Takes a path apart onto the stack.
long chop(Document& document, const char* text, Operation& op) noexcept
{
    const std::size_t length = std::strlen(text);
    if (accelerated && put_known_path(document, {text, length}))
        return request(document, op);
    KnownPath& path = begin_path(document, {text, length});
    const bool bad_start = length > 1 && text[0] == '.' && text[1] != '.' && text[1] != '/';
    const Chopping chopping(path, text);
    const auto give_up = [&] {
        path.forget();
        empty_stack(document);
    };
    const auto refuse = [&](long code) {
        give_up();
        return op.fail(code, ". Bad path: %s", text);
    };
    if (!chopping.fits_the_stack() && !bad_start)
        return refuse(KH_ERR_PATH_LENGTH);
    if (bad_start || path.count == 0 || !chopping.has_one_array_at_most())
        return refuse(KH_ERR_ARGUMENT);
    char* names = room_for_names(path, {text, length});
    if (!names) {
        give_up();
        return op.fail(KH_ERR_MEMORY);
    }
    chopping.name_segments(names, length + 1);
    path.completed();
    put_onto_stack(document, path);
    return request(document, op);
}

/// The end of a walk over the whole stack: a last attribute is not walked.
long walk_end(const Document& document) noexcept
{
    return document.stack_count - ends_with_attribute(document);
}

/// One step of a walk, along an entry of the stack.
inline xmlNode* step(long* fd, Document& document, xmlNode* node, long entry, Operation& op) noexcept
{
    const char* name = document.stack_name[entry];
    if (name[0] != '.' || (name[1] != '\0' && !document.path_on_stack->is_step_up(entry)))
        return go_to_child(document, node, name, document.stack_index[entry]);
    if (name[1] == '\0')
        return node;
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
ElementIndex::Position position_of(ElementIndex& index, KnownPath::Step& step) noexcept
{
    if (step.position >= index.count() || index.node_at(step.position) != step.node)
        step.position = index.position_of(step.node);
    return step.position;
}

/// Gives a path the numbers of its names.
void number_names(KnownPath& path, const ElementIndex& index) noexcept
{
    if (path.numbered_for == index.generation())
        return;
    for (long i = 0; i < path.count; ++i)
        path.numbers[i] = index.number_of(path.segments[i].name);
    path.numbered_for = index.generation();
}

/// What the segments from `first` up to `end`, whose names have their numbers, lead to from a place in the index; `none`
/// for what is not there, or is no element of that name.
inline ElementIndex::Position follow_in_index(ElementIndex& index, ElementIndex::Position position,
                                              const KnownPath& path, long first, long end) noexcept
{
    for (long i = first; i < end && position != ElementIndex::none; ++i) {
        if (path.segments[i].index < 0 || path.numbers[i] == ElementIndex::none)
            return ElementIndex::none;
        position =
            index.child_at(position, path.numbers[i], static_cast<std::size_t>(path.segments[i].index));
    }
    return position;
}

/// The node that it leads to from a step, by the index alone, or null. The cursor stays. Only for paths in a loop: for
/// others, the way into the index would cost more than it saves.
xmlNode* find_in_index(Document& document, KnownPath& path, long first, long end) noexcept
{
    ElementIndex& index = document.element_index;
    if (first == end || !path.in_a_loop || !index.stands(document.root))
        return nullptr;
    number_names(path, index);
    const ElementIndex::Position parent = position_of(index, path.walked[first - 1]);
    const ElementIndex::Position found = follow_in_index(index, parent, path, first, end);
    if (found == ElementIndex::none)
        return nullptr;
    if (first == path.loop_segment) {
        path.loop_parent = parent;
        path.loop_generation = index.generation();
    }
    index.found(found);
    return index.node_at(found);
}

/// Follows the stack from the root, going on from where the last walk of the same segments got to.
xmlNode* walk_from_root(long* fd, Document& document, long end, Operation& op) noexcept
{
    KnownPath& path = *document.path_on_stack;
    xmlNode* const before = document.current;
    const long lasting = path.array_position == -1 ? end : std::min(end, path.array_position);
    if (path.walked_count == 0) {
        path.walked[0] = {document.root, nullptr, 0};
        path.walked_count = 1;
    }
    const long first = std::max(1L, std::min(path.walked_count, end));
    xmlNode* node = find_in_index(document, path, first, end);
    if (node)
        return document.current = node;
    node = path.walked[first - 1].node;
    document.current = path.walked[first - 1].tried;
    document.element_index.walked(first < end ? 1 : 0);
    for (long i = first; node && i < end; ++i) {
        node = step(fd, document, node, i, op);
        const bool lasts = node && i < lasting && is_element(node) && !path.is_step_up(i);
        if (lasts && i == path.walked_count && accelerated) {
            path.walked[i] = {node, document.current, ElementIndex::none};
            path.walked_count = i + 1;
        }
    }
    if (node)
        document.current = node;
    else if (!document.current)
        document.current = before;
    return node;
}

/// The list of children that a loop goes along, whose parent the walk has reached. May throw std::bad_alloc.
ChildIndex::List& loop_list(Document& document, KnownPath& path)
{
    const xmlNode* parent = path.walked[path.loop_segment - 1].node;
    if (!path.loop_list || path.loop_list->number() != path.loop_list_number ||
        path.loop_list->parent() != parent) {
        path.loop_list = &document.child_index.list(parent, path.segments[path.loop_segment].name);
        path.loop_list_number = path.loop_list->number();
    }
    return *path.loop_list;
}

/// What another turn of a loop leads to, by the list of children that it goes along; null for what takes more than
/// that. The cursor stays where that is null.
xmlNode* find_in_list(long* fd, Document& document, KnownPath& path, long end, Operation& op) noexcept
{
    const long segment = path.loop_segment;
    if (!path.in_a_loop || path.walked_count != segment || segment >= end ||
        document.element_index.stands(document.root))
        return nullptr;
    try {
        xmlNode* node = loop_list(document, path).at(static_cast<std::size_t>(path.segments[segment].index));
        if (node)
            path.ahead.reached(node);
        xmlNode* const before = document.current;
        for (long i = segment + 1; node && i < end; ++i) {
            path.ahead.fetch_node(node);
            path.ahead.fetch_node(first_child(node));
            node = step(fd, document, node, i, op);
        }
        document.current = node ? node : before;
        if (!node)
            return nullptr;
        path.ahead.fetch_node(node);
        path.ahead.fetch_node(first_child(node));
        document.element_index.walked(static_cast<std::size_t>(end - segment));
        return node;
    } catch (const std::bad_alloc&) {
        return nullptr; // the walk needs no memory
    }
}

/// Walks along a plain path, which has nothing to report.
[[gnu::noinline]] xmlNode* walk_silently(long* fd, Document& document, KnownPath& path, long end) noexcept
{
    Operation op("kh_tree_go_to_stack_node", nullptr);
    xmlNode* node = find_in_list(fd, document, path, end, op);
    return node ? node : walk_from_root(fd, document, end, op);
}

/// The same where another turn of a loop mostly takes a look into the index, or two.
[[gnu::always_inline]] inline xmlNode* walk_plain_path(long* fd, Document& document, KnownPath& path,
                                                       long end) noexcept
{
    ElementIndex& index = document.element_index;
    ElementIndex::Position found = ElementIndex::none;
    if (path.loop_generation != 0 && path.loop_generation == index.generation())
        found = follow_in_index(index, path.loop_parent, path, path.loop_segment, end);
    if (found == ElementIndex::none)
        return walk_silently(fd, document, path, end);
    index.found(found);
    return document.current = index.node_at(found);
}

/// True for a text that is a known path, or the next turn of its loop, which the path then becomes, and which is plain.
[[gnu::always_inline]] inline bool is_known(KnownPath& path, std::string_view text) noexcept
{
    return path.is_plain && ((path.in_a_loop && path.take_next_turn(text)) || path.is_path(text));
}

/// Puts a path onto the stack that is known, while another is there; null if there is none.
[[gnu::noinline]] KnownPath* put_other_path(Document& document, std::string_view text) noexcept
{
    return put_known_path(document, [&](KnownPath& path) { return is_known(path, text); });
}

/// Puts a path onto the stack that is known and plain, and whose last name can be requested; null for all else, and where
/// there is no root to walk from.
[[gnu::always_inline]] inline KnownPath* put_plain_path(Document& document, std::string_view text) noexcept
{
    if (!accelerated || !document.root)
        return nullptr;
    KnownPath* path = document.path_on_stack;
    if (path && is_known(*path, text))
        document.stack_index[path->loop_segment] = path->segments[path->loop_segment].index;
    else
        path = put_other_path(document, text);
    return path && request_last(document) && document.tag_is_from_path ? path : nullptr;
}

/// True where a walk along a path can begin, or has begun: at a root of that name.
inline bool has_its_root(const Document& document, const KnownPath& path) noexcept
{
    return path.walked_count > 0 || is_named(document.root, path.segments[0].name);
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
    const KnownPath* path = document.path_on_stack;
    if (!document.absolute || !path ||
        path->walked_count > 0 || // then a walk that began like this one got on
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
    const auto append = [&path](std::string_view text) {
        path.append(text);
        std::reverse(path.end() - static_cast<std::ptrdiff_t>(text.size()), path.end());
    };
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
    KnownPath* known = put_plain_path(document, path);
    if (!known || known->walked_count == 0)
        return nullptr;
    const long end = walk_end(document);
    if (known->walked_count >= end)
        return document.current = known->walked[end - 1].node;
    return known->in_a_loop ? walk_plain_path(fd, document, *known, end) : nullptr;
}

std::optional<xmlNode*> follow_known_path(long* fd, Document& document, std::string_view path) noexcept
{
    KnownPath* known = put_plain_path(document, path);
    if (!known || !has_its_root(document, *known))
        return std::nullopt;
    const long end = walk_end(document);
    if (known->walked_count >= end)
        return document.current = known->walked[end - 1].node;
    return walk_plain_path(fd, document, *known, end);
}

Document* go_to_path(Operation& op, long* fd, const char* path) noexcept
{
    Document* document = path ? find_document(fd) : nullptr;
    if (document && follow_known_path(fd, *document, path).value_or(nullptr))
        return document;
    kh_tree_go_to_path_node(fd, path, op.error_vector());
    if (!op.failed())
        return find_document(fd);
    op.pass_on();
    return nullptr;
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
    if (const auto node = follow_known_path(fd, *document, path))
        return *node ? op.status() : op.fail(KH_ERR_NOT_FOUND, ". Path: %s", path);
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
    document->path_on_stack->walked_count = std::min(document->path_on_stack->walked_count, position);
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
