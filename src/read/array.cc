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

template <class Values>
void gather_elements(Document& document, const char* element, Values& values, Operation& op) noexcept
{
    if (!values.array.start(op))
        return;
    for (;;) {
        TextTarget target = TextTarget::for_number(&values);
        const xmlNode* node = read_next_element(document, target, op.error_vector());
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
        if (!values.add(target.text(), op))
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
    const char* name = document.stack_name[document.array_position];
    for (; node; node = go_to_next_sibling(document, node, name)) {
        document.stack_index[document.array_position] = values.array.count();
        const char* text = text_below_array_node(fd, document, path, op);
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
