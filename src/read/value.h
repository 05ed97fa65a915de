// What single reads share: where the text of a value goes, and the numbers made of it.
#ifndef KALV_READ_VALUE_H
#define KALV_READ_VALUE_H

#include "frame/memory.h"
#include "frame/number.h"
#include "frame/operation.h"
#include "tree/document.h"

#include <kalv/text.h>
#include <string>
#include <string_view>
#include <utility>

namespace kh {

/// Where the text of a value goes: into a fresh block of the caller's, or nowhere, for a conversion that
/// reads it where it stands.
class TextTarget {
public:
    /// Copies into `*copy`; null is a missing output.
    explicit TextTarget(char** copy) noexcept : copy_(copy), missing_(!copy) {}
    /// Leaves the text where it stands, for an output of a number.
    static TextTarget for_number(const void* output) noexcept { return TextTarget(!output); }
    /// The same for whoever takes text() before the next call.
    static TextTarget in_place() noexcept { return TextTarget(false); }
    TextTarget(const TextTarget&) = delete;
    TextTarget& operator=(const TextTarget&) = delete;

    bool missing() const noexcept { return missing_; }
    const char* text() const noexcept { return text_; }

    /// Takes a text that stays valid while the target lives.
    void take(const char* text, long* ierr) noexcept
    {
        text_ = text;
        if (copy_)
            kh_strncpy(copy_, text, ierr);
    }

    /// Takes what the caller's output held away from it. It is freed with this object only: the path that is
    /// being read may lie in it.
    void replace_previous() noexcept
    {
        if (copy_)
            previous_.reset(std::exchange(*copy_, nullptr));
    }

    /// Takes the empty text that callers get, and free, where there is no value. \return false without memory
    bool take_nothing() noexcept { return !copy_ || (*copy_ = empty_text().release()); }

    /// Room for a text that stands nowhere, since it had to be expanded.
    std::string& expanded() noexcept { return expanded_; }

private:
    explicit TextTarget(bool missing) noexcept : missing_(missing) {}

    char** copy_ = nullptr;
    const char* text_ = nullptr;
    bool missing_;
    Block<char> previous_;
    std::string expanded_;
};

/// Stores the number of a text. False, and nothing stored, where there is no text, or none that converts without a
/// report.
template <class Number>
[[gnu::always_inline]] inline bool take_number(const char* text, Number* value) noexcept
{
    if (!text)
        return false;
    const Parsed<Number> number = parse<Number>(text);
    if (is_number(number))
        *value = number.value;
    return is_number(number);
}

/// Reads a text and stores its number. What the conversion yields is stored beside its code, too; where the
/// text cannot be read, the number stays as it is. A warning of the text's does not outlast the conversion.
template <class Number, class ReadText>
[[gnu::noinline]] long read_number(const char* name, Number* value, long* ierr, ReadText read_text) noexcept
{
    Operation op(name, ierr);
    TextTarget target = TextTarget::for_number(value);
    read_text(target, op.error_vector());
    if (op.failed())
        return op.pass_on();
    const Parsed<Number> number = parse<Number>(target.text());
    *value = number.value;
    if (is_number(number))
        return *op.error_vector() = KH_OK;
    converted<Number>(target.text(), op.error_vector());
    return op.pass_on();
}

/// The same for a text that may be known already.
template <class Number, class ReadText>
long read_known_number(const char* known, const char* name, Number* value, long* ierr,
                       ReadText read_text) noexcept
{
    if (!take_number(known, value))
        return read_number(name, value, ierr, read_text);
    if (ierr)
        *ierr = KH_OK;
    return KH_OK;
}

/// What kh_tree_read_string_element_value() does, into a target.
long read_element(long* fd, const char* element, TextTarget& target, long* ierr) noexcept;

/// What kh_tree_read_string_attribute() does, into a target.
long read_attribute(long* fd, const char* element, const char* attribute, TextTarget& target,
                    long* ierr) noexcept;

/// What kh_tree_path_read_string_node_value() does, into a target. It reports under a name that is not that
/// function's: callers compare these reports.
long read_path(long* fd, const char* path, TextTarget& target, long* ierr) noexcept;

/// The text at the end of a path that need not be taken apart, because it is one of the last or another turn of
/// a loop. All is then as after read_path(). Null where it has to be, or where there is something to report: then
/// read_path() is to be called.
const char* known_path_text(long* fd, std::string_view path) noexcept;

/// The text of an attribute, where the element under the cursor is the one asked for and has it. All is then as after
/// read_attribute(). Null for all else: then read_attribute() is to be called.
const char* known_attribute_text(const long* fd, const char* element, const char* attribute) noexcept;

/// What kh_tree_get_current_element_name() does; the name stays the element's. A null `name` is a missing output.
long get_current_name(const long* fd, const char** name, long* ierr) noexcept;

/// Reads the value of the element under the cursor, as kh_tree_read_next_element() does and reports it.
void read_found_element(const Document& document, TextTarget& target, long* ierr) noexcept;

/// The text at the end of the last path, on the node that the path reached: its attribute, or its only
/// child's content. Null, with a report, where there is none.
const char* text_at_path_end(const Document& document, const xmlNode* node, const char* path,
                             Operation& op) noexcept;

} // namespace kh

#endif
