// Arrays of values: of all elements of a name, or of all nodes that a path with "[*]" stands for.
//
// One loop for each of the two families; what differs between texts, integers and reals is what they are
// gathered in. Numbers are converted where the text stands. A text that is no number stops the conversion,
// but is reported only once all texts could be read: a text that cannot be read comes first.
#include "read/array.h"

#include "read/growing_array.h"
#include "read/value.h"
#include "tree/cursor.h"
#include "tree/path.h"

#include <kalv/path.h>
#include <kalv/read.h>

namespace kh {

namespace {

/// Gathers texts in the caller's array.
class Texts {
public:
    explicit Texts(char**& values) noexcept : array(values) {}

    bool add(const char* text, Operation& op) noexcept
    {
        char* copy = nullptr;
        if (kh_strncpy(&copy, text, op.error_vector()) == KH_OK)
            return array.add(copy, op);
        op.pass_on();
        array.shrink(op);
        return false;
    }

    GrowingArray<char*> array;
};

/// Gathers texts in a vector.
class Strings {
public:
    explicit Strings(std::vector<std::string>& values) noexcept : array{values} {}

    bool add(const char* text, Operation& op) noexcept
    {
        op.guarded([&] { array.values.emplace_back(text); });
        return !op.failed();
    }

    struct {
        std::vector<std::string>& values;

        bool start(Operation&) const noexcept { return true; }
        bool shrink(Operation&) const noexcept { return true; }
        long count() const noexcept { return static_cast<long>(values.size()); }
    } array;
};

/// Gathers numbers in an array that becomes the caller's at the end.
template <class Number>
class Numbers {
public:
    bool add(const char* text, Operation& op) noexcept
    {
        const Parsed<Number> number = bad_text_ ? Parsed<Number>() : parse<Number>(text);
        if (!bad_text_ && !is_number(number))
            bad_text_ = text;
        return array.add(number.value, op);
    }

    /// Replaces what the caller's output held; reports the text that is no number, if there is one.
    void deliver(Number*& values, Operation& op) noexcept
    {
        std::free(values);
        values = values_;
        *op.error_vector() = KH_OK;
        if (!bad_text_)
            return;
        converted<Number>(bad_text_, op.error_vector());
        op.pass_on();
    }

    GrowingArray<Number> array{values_};

private:
    Number* values_ = nullptr;
    const char* bad_text_ = nullptr;
};

/// Sets the count on entry and on every way out.
class Count {
public:
    explicit Count(long* count) noexcept : count_(count) { set(0); }
    bool missing() const noexcept { return !count_; }
    void set(long count) noexcept
    {
        if (count_)
            *count_ = count;
    }

private:
    long* count_;
};

template <class Values>
void gather_elements(Document& document, const char* element, Values& values, Operation& op) noexcept
{
    if (!values.array.start(op))
        return;
    TagSearch search(document);
    for (;;) {
        const xmlNode* node = search.next();
        const char* text = node && accelerated ? search.text() : nullptr;
        if (node && !text) {
            TextTarget target = TextTarget::for_number(&values);
            read_found_element(document, target, op.error_vector());
            text = target.text();
        }
        const bool failed = op.failed();
        if (!node || failed) {
            if (!values.array.shrink(op))
                return;
            if (failed)
                op.pass_on();
            else if (values.array.count() == 0)
                op.fail(KH_ERR_NOT_FOUND, ". Element: %s", element);
            return;
        }
        if (!values.add(text, op))
            return;
    }
}

template <class Values>
long read_elements(long* fd, const char* element, bool has_output, Values& values, long* count,
                   long* ierr) noexcept
{
    Operation op("kh_tree_read_string_element_array", ierr);
    Count result(count);
    Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (!has_output || result.missing()) {
        op.null_argument();
    } else if (!element) {
        op.fail(KH_ERR_NO_REQUEST);
    } else if (!set_requested_tag(*document, element)) {
        op.fail(KH_ERR_MEMORY);
    } else {
        document->current = document->root;
        gather_elements(*document, element, values, op);
        result.set(values.array.count());
    }
    return op.status();
}

/// The text of one node of the array level, from the cursor, which stands on it. Null, with a report, ends
/// the read.
const char* text_below_array_node(long* fd, Document& document, const char* path, Operation& op) noexcept
{
    const xmlNode* node = kh_tree_go_to_stack_from_array_node(fd, op.error_vector());
    if (op.failed())
        op.pass_on();
    else if (!node)
        op.fail(KH_ERR_NOT_FOUND, ". Path: %s", path);
    return op.failed() ? nullptr : text_at_path_end(document, node, path, op);
}

/// The way from an item of an array to its value, where it is like most: names alone, each of which stands
/// for the first child of its name, and at last perhaps an attribute.
struct PlainPath {
    static constexpr long longest = 4;
    const char* names[longest];
    long count = 0;
    const char* attribute = nullptr;
    bool is_plain = accelerated;

    explicit PlainPath(const Document& document) noexcept
    {
        if (ends_with_attribute(document))
            attribute = attribute_name(document);
        const long end = document.stack_count - (attribute ? 1 : 0);
        for (long i = document.array_position + 1; i < end && is_plain; ++i) {
            is_plain = count < longest && document.stack_index[i] == 0 && *document.stack_name[i] != '.';
            if (is_plain)
                names[count++] = document.stack_name[i];
        }
    }
};

/// What an item's path leads to. A null text is for the way on which all is checked and reported.
struct PlainValue {
    xmlNode* element = nullptr;
    const char* text = nullptr;
};

PlainValue attribute_of(xmlNode* element, const char* name) noexcept
{
    const xmlAttr* attribute = attribute_named(element, name);
    return {element, attribute ? content_of(attribute->children) : nullptr};
}

/// The items of an array, along the tree.
class ItemsInTree {
public:
    ItemsInTree(Document& document, const PlainPath& path, xmlNode* first) noexcept
        : document_(document), path_(path), item_(first),
          is_item_(document.stack_name[document.array_position])
    {
        for (long i = 0; i < path.count; ++i)
            is_step_[i] = NameMatch(path.names[i]);
    }
    ~ItemsInTree() { document_.element_index.walked(looked_at_); }
    ItemsInTree(const ItemsInTree&) = delete;
    ItemsInTree& operator=(const ItemsInTree&) = delete;

    xmlNode* item() const noexcept { return item_; }
    bool go_to_next() noexcept
    {
        do {
            item_ = item_->next;
        } while (item_ && !is_item_(item_));
        return item_;
    }

    PlainValue value() noexcept
    {
        ++looked_at_;
        ahead_.reached(item_);
        ahead_.fetch(item_);
        xmlNode* element = item_;
        for (long i = 0; element && i < path_.count; ++i) {
            element = first_child(element);
            ahead_.fetch(element);
            while (element && !is_step_[i](element))
                element = element->next;
            ++looked_at_;
        }
        if (!element)
            return {};
        ahead_.fetch(element);
        if (path_.attribute)
            return attribute_of(element, path_.attribute);
        const char* text = only_text(element);
        ahead_.fetch(element->children);
        ahead_.fetch(text);
        return {element, text};
    }

private:
    Document& document_;
    const PlainPath& path_;
    xmlNode* item_;
    NameMatch is_item_;
    NameMatch is_step_[PlainPath::longest] = {NameMatch(""), NameMatch(""), NameMatch(""), NameMatch("")};
    FetchAhead ahead_;
    std::size_t looked_at_ = 0;
};

/// The same items along the index of elements.
class ItemsInIndex {
public:
    using Position = ElementIndex::Position;
    ItemsInIndex(const Document& document, const PlainPath& path, Position first, Position around) noexcept
        : index_(document.element_index), path_(path), position_(first), end_(index_.end_at(around)),
          name_(index_.number_of(document.stack_name[document.array_position]))
    {
        for (long i = 0; i < path.count; ++i)
            steps_[i] = index_.number_of(path.names[i]);
    }

    xmlNode* item() const noexcept { return index_.node_at(position_); }
    bool go_to_next() noexcept
    {
        position_ = index_.sibling_named(name_, index_.end_at(position_), end_);
        return position_ < end_;
    }

    PlainValue value() const noexcept
    {
        Position position = position_;
        for (long i = 0; i < path_.count; ++i) {
            const Position end = index_.end_at(position);
            position = index_.sibling_named(steps_[i], position + 1, end);
            if (position >= end)
                return {};
        }
        xmlNode* element = index_.node_at(position);
        return path_.attribute ? attribute_of(element, path_.attribute)
                               : PlainValue{element, index_.text_at(position)};
    }

private:
    const ElementIndex& index_;
    const PlainPath& path_;
    Position position_;
    Position end_;
    ElementIndex::Name name_;
    ElementIndex::Name steps_[PlainPath::longest] = {};
};

template <class Items, class Values>
void gather_items(long* fd, Document& document, const char* path, bool is_plain, Items& items, Values& values,
                  Operation& op) noexcept
{
    do {
        document.stack_index[document.array_position] = values.array.count();
        auto [element, text] = is_plain ? items.value() : PlainValue();
        document.current = text ? element : items.item();
        if (!text)
            text = text_below_array_node(fd, document, path, op);
        if (!text)
            break;
        if (!values.add(text, op))
            return;
    } while (items.go_to_next());
    values.array.shrink(op);
}

template <class Values>
void gather_path(long* fd, Document& document, const char* path, Values& values, Operation& op) noexcept
{
    long index = 0;
    xmlNode* node = kh_tree_go_to_stack_array_node(fd, &index, op.error_vector());
    if (op.failed()) {
        op.pass_on();
        return;
    }
    if (!node) {
        op.fail(KH_ERR_NOT_FOUND);
        return;
    }
    if (!values.array.start(op))
        return;
    const PlainPath plain(document);
    ElementIndex& elements = document.element_index;
    const bool indexed = plain.is_plain && elements.stands(document.root);
    const auto first = indexed ? elements.position_of(node) : ElementIndex::none;
    const auto around = indexed ? elements.position_of(node->parent) : ElementIndex::none;
    if (first != ElementIndex::none && around != ElementIndex::none) {
        ItemsInIndex items(document, plain, first, around);
        gather_items(fd, document, path, plain.is_plain, items, values, op);
    } else {
        ItemsInTree items(document, plain, node);
        gather_items(fd, document, path, plain.is_plain, items, values, op);
    }
}

template <class Values>
long read_path_nodes(long* fd, const char* path, bool has_output, Values& values, long* count,
                     long* ierr) noexcept
{
    Operation op("kh_tree_path_read_string_node_array", ierr);
    Count result(count);
    Document* document = document_with_root(op, fd);
    if (!document)
        return op.status();
    if (!has_output || result.missing()) {
        op.null_argument();
    } else if (!path) {
        op.fail(KH_ERR_NO_REQUEST);
    } else if (kh_tree_chop_path(fd, path, op.error_vector()); op.failed()) {
        op.pass_on();
    } else if (!has_array_node(*document)) {
        op.fail(KH_ERR_ARGUMENT, ". Bad path for array: %s", path);
    } else {
        gather_path(fd, *document, path, values, op);
        result.set(values.array.count());
    }
    return op.status();
}

/// A number variant: the read of the texts, and the numbers made of them.
template <class Number, class ReadTexts>
long read_numbers(const char* name, Number** output, long* ierr, ReadTexts read_texts) noexcept
{
    Operation op(name, ierr);
    Numbers<Number> numbers;
    read_texts(numbers, output != nullptr, op.error_vector());
    if (output && !op.failed()) {
        numbers.deliver(*output, op);
        return op.status();
    }
    if (output && numbers.array.lost()) {
        std::free(*output);
        *output = nullptr;
    }
    numbers.array.discard();
    return op.pass_on();
}

template <class Number>
long read_element_numbers(const char* name, long* fd, const char* element, Number** output, long* count,
                          long* ierr) noexcept
{
    return read_numbers(name, output, ierr, [&](Numbers<Number>& numbers, bool has_output, long* status) {
        read_elements(fd, element, has_output, numbers, count, status);
    });
}

template <class Number>
long read_path_numbers(const char* name, long* fd, const char* path, Number** output, long* count,
                       long* ierr) noexcept
{
    return read_numbers(name, output, ierr, [&](Numbers<Number>& numbers, bool has_output, long* status) {
        read_path_nodes(fd, path, has_output, numbers, count, status);
    });
}

} // namespace

long read_element_strings(long* fd, const char* element, std::vector<std::string>& values,
                          long* ierr) noexcept
{
    Strings strings(values);
    long count = 0;
    return read_elements(fd, element, true, strings, &count, ierr);
}

long read_path_strings(long* fd, const char* path, std::vector<std::string>& values, long* ierr) noexcept
{
    Strings strings(values);
    long count = 0;
    return read_path_nodes(fd, path, true, strings, &count, ierr);
}

} // namespace kh

long kh_tree_read_string_element_array(long* fd, const char* element, char*** values, long* count, long* ierr)
{
    char** none = nullptr;
    kh::Texts texts(values ? *values : none);
    return kh::read_elements(fd, element, values != nullptr, texts, count, ierr);
}

long kh_tree_read_integer_element_array(long* fd, const char* element, long** values, long* count, long* ierr)
{
    return kh::read_element_numbers("kh_tree_read_integer_element_array", fd, element, values, count, ierr);
}

long kh_tree_read_real_element_array(long* fd, const char* element, double** values, long* count, long* ierr)
{
    return kh::read_element_numbers("kh_tree_read_real_element_array", fd, element, values, count, ierr);
}

long kh_tree_path_read_string_node_array(long* fd, const char* path, char*** values, long* count, long* ierr)
{
    char** none = nullptr;
    kh::Texts texts(values ? *values : none);
    return kh::read_path_nodes(fd, path, values != nullptr, texts, count, ierr);
}

long kh_tree_path_read_integer_node_array(long* fd, const char* path, long** values, long* count, long* ierr)
{
    return kh::read_path_numbers("kh_tree_path_read_integer_node_array", fd, path, values, count, ierr);
}

long kh_tree_path_read_real_node_array(long* fd, const char* path, double** values, long* count, long* ierr)
{
    return kh::read_path_numbers("kh_tree_path_read_real_node_array", fd, path, values, count, ierr);
}
