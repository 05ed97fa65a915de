// Arrays of values: of all elements of a name, or of all nodes that a path with "[*]" stands for.
//
// One loop for each of the two families; what differs between texts, integers and reals is what they are
// gathered in. Numbers are converted where the text stands. A text that is no number stops the conversion,
// but is reported only once all texts could be read: a text that cannot be read comes first.
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

/// Gathers numbers in an array that becomes the caller's at the end.
template <class Number>
class Numbers {
public:
    bool add(const char* text, Operation& op) noexcept
    {
        const Parsed<Number> number = bad_text_ ? Parsed<Number>() : parse<Number>(text);
        if (!bad_text_ && (!number.found || is_out_of_range(number.value)))
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

/// The value of an element that is like most: one text and nothing else. Null for every other, which takes
/// the way on which all is checked and reported.
const char* only_text(const xmlNode* element) noexcept
{
    const xmlNode* child = element->children;
    return child && !child->next && child->type == XML_TEXT_NODE ? content_of(child) : nullptr;
}

template <class Values>
void gather_elements(Document& document, const char* element, Values& values, Operation& op) noexcept
{
    if (!values.array.start(op))
        return;
    for (;;) {
        const xmlNode* node = go_to_next_element(document, Search::requested_tag);
        const char* text = node ? only_text(node) : nullptr;
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

/// Reads items that are like most: the path goes on with names alone, and each of them stands for the first
/// child of its name. Leaves everything else to the way on which all is checked and reported.
class PlainItems {
public:
    explicit PlainItems(const Document& document) noexcept
        : attribute_(ends_with_attribute(document) ? attribute_name(document) : nullptr)
    {
        const long end = document.stack_count - (attribute_ ? 1 : 0);
        for (long i = document.array_position + 1; i < end; ++i) {
            if (count_ == longest || document.stack_index[i] != 0 || *document.stack_name[i] == '.')
                plain_ = false;
            else
                names_[count_++] = NameMatch(document.stack_name[i]);
        }
    }

    /// The text of an item, and the element that it belongs to; a null text where the item is not plain.
    struct Found {
        const xmlNode* element;
        const char* text;
    };
    Found find(const xmlNode* item) noexcept
    {
        ahead_.reached(item);
        ahead_.fetch(item);
        const xmlNode* element = plain_ ? item : nullptr;
        for (long i = 0; element && i < count_; ++i) {
            element = first_child(element);
            ahead_.fetch(element);
            while (element && !names_[i](element))
                element = element->next;
        }
        if (!element)
            return {nullptr, nullptr};
        ahead_.fetch(element);
        if (attribute_) {
            const xmlAttr* attribute = attribute_named(element, attribute_);
            return {element, attribute ? content_of(attribute->children) : nullptr};
        }
        const char* text = only_text(element);
        ahead_.fetch(element->children);
        ahead_.fetch(text);
        return {element, text};
    }

private:
    static constexpr long longest = 4;
    const char* attribute_;
    bool plain_ = true;
    long count_ = 0;
    NameMatch names_[longest] = {NameMatch(""), NameMatch(""), NameMatch(""), NameMatch("")};
    FetchAhead ahead_;
};

template <class Values>
void gather_path(long* fd, Document& document, const char* path, Values& values, Operation& op) noexcept
{
    long index = 0;
    const xmlNode* node = kh_tree_go_to_stack_array_node(fd, &index, op.error_vector());
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
    NameMatch matches(document.stack_name[document.array_position]);
    PlainItems items(document);
    for (; node; node = go_to_next_sibling(document, node, matches)) {
        document.stack_index[document.array_position] = values.array.count();
        auto [element, text] = items.find(node);
        if (text)
            document.current = const_cast<xmlNode*>(element);
        else
            text = text_below_array_node(fd, document, path, op);
        if (!text)
            break;
        if (!values.add(text, op))
            return;
    }
    values.array.shrink(op);
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
