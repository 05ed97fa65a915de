// Setting values: a path, a format and a value become the text of an element or attribute.
#include "build/attribute.h"
#include "build/content.h"
#include "build/format.h"
#include "build/validity.h"
#include "frame/locale.h"
#include "tree/document.h"
#include "tree/path.h"

#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <kalv/build.h>
#include <kalv/path.h>
#include <limits>
#include <string_view>

namespace kh {

namespace {

/// A printed value: 510 bytes of it are kept.
struct Printed {
    char text[511];
    int length; ///< of the whole value; below 0 where it could not be printed

    Printed(const char* format, va_list value) noexcept : length(print(format, value))
    {
        if (length >= static_cast<int>(sizeof text))
            text[length_of_whole_characters({text, sizeof text - 1})] = '\0';
    }

    /// 511 characters are cut to 510 without a warning: callers rely on this bound.
    bool warns() const noexcept { return length > static_cast<int>(sizeof text); }

private:
    int print(const char* format, va_list value) noexcept
    {
        // The formats of most values need neither a locale nor the printing functions.
        const std::string_view plain = format;
        if (plain == "%s")
            return print(std::string_view(va_arg(value, const char*)));
        if (plain == "%d")
            return print(va_arg(value, int));
        if (plain == "%ld")
            return print(va_arg(value, long));
        const CLocale c_locale;
        return std::vsnprintf(text, sizeof text, format, value);
    }
    int print(std::string_view value) noexcept
    {
        if (value.size() > std::numeric_limits<int>::max())
            return -1;
        text[value.copy(text, sizeof text - 1)] = '\0';
        return static_cast<int>(value.size());
    }
    int print(long number) noexcept
    {
        char* const end = std::to_chars(text, text + sizeof text, number).ptr;
        *end = '\0';
        return static_cast<int>(end - text);
    }
};

bool can_be_set(const xmlNode* node) noexcept
{
    return is_element(node) || node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE;
}

bool set_text_content(xmlNode* node, const char* text) noexcept
{
    XmlText content(xmlStrdup(to_xml(text)));
    if (!content)
        return false;
    replace_text(node, std::move(content));
    return true;
}

/// Checks that the last path leads to something that can have a value.
bool check_target(Operation& op, const Document& document) noexcept
{
    const xmlNode* node = document.current;
    if (!ends_with_attribute(document) ? !can_be_set(node) : !is_element(node))
        op.fail(KH_ERR_NOT_ELEMENT);
    else if (ends_with_attribute(document) && !is_node_name(attribute_name(document)))
        op.fail(KH_ERR_ARGUMENT, ". Node: %s", attribute_name(document));
    return !op.failed();
}

bool check_text(Operation& op, const char* text) noexcept
{
    if (!is_xml_text(text))
        op.fail(KH_ERR_ARGUMENT, ". Value: %s", text);
    return !op.failed();
}

/// Checks a format and, where it prints a text, that text. `wanted` is the type of the value;
/// Conversion::none where only the format knows it.
bool check_format(Operation& op, const char* format, Conversion wanted, va_list value) noexcept
{
    const Conversion conversion = conversion_of(format);
    const bool fits = wanted == Conversion::none || conversion == Conversion::none || conversion == wanted;
    if (conversion == Conversion::invalid || !fits) {
        op.fail(KH_ERR_FORMAT, ". Format: %s", format);
        return false;
    }
    if (conversion != Conversion::text)
        return true;
    const char* text = va_arg(value, const char*);
    if (!text)
        op.null_argument();
    return text && check_text(op, text);
}

/// True where setting a value takes nothing away that a walk could have found.
bool is_leaf(const xmlNode* node) noexcept
{
    const xmlNode* child = first_child(node);
    return !child || (!child->next && child->type == XML_TEXT_NODE);
}

/// Sets the value of what the last path leads to; `set_content` is for elements. May throw std::bad_alloc.
template <class SetContent>
bool set(Document& document, const char* text, SetContent set_content)
{
    xmlNode* node = document.current;
    if (ends_with_attribute(document))
        return set_attribute(node, attribute_name(document), text);
    document.value_edited();
    if (!is_leaf(node)) {
        document.edited();
        document.child_index.emptying(node);
    }
    return is_element(node) ? set_content(node, text) : set_text_content(node, text);
}

/// Moves the cursor to what is to be set; the document, or null with a report.
Document* go_to_target(Operation& op, long* fd, const char* path) noexcept
{
    Document* document = go_to_path(op, fd, path);
    return document && check_target(op, *document) ? document : nullptr;
}

template <class SetContent>
void set_under_report(Operation& op, Document& document, const char* text, SetContent set_content) noexcept
{
    op.guarded([&] {
        if (!set(document, text, set_content))
            op.fail(KH_ERR_MEMORY);
    });
}

/// What all setters share; it reports under the name of the one whose value is variadic.
long set_value(long* fd, const char* path, const char* format, Conversion wanted, long* ierr,
               va_list value) noexcept
{
    Operation op("kh_tree_set_node_value", ierr);
    if (!fd || !format)
        return op.null_argument();
    Document* document = go_to_target(op, fd, path);
    if (!document)
        return op.status();
    va_list inspected;
    va_copy(inspected, value);
    const bool fits = check_format(op, format, wanted, inspected);
    va_end(inspected);
    if (!fits)
        return op.status();
    const Printed printed(format, value);
    if (printed.length < 0)
        return op.fail(KH_ERR_FORMAT, ". Format: %s", format);
    if (!check_text(op, printed.text))
        return op.status();
    if (printed.warns())
        op.fail(KH_WARN_LENGTH);
    set_under_report(op, *document, printed.text, set_element_content);
    return op.status();
}

long set_typed_value(long* fd, const char* path, const char* format, Conversion type, long* ierr,
                     ...) noexcept
{
    va_list value;
    va_start(value, ierr);
    const long status = set_value(fd, path, format, type, ierr, value);
    va_end(value);
    return status;
}

/// A typed setter; `argument` gives the value itself.
template <class Value, class Argument>
long set_typed(const char* function, long* fd, const char* path, const Value* value, const char* format,
               Conversion type, long* ierr, Argument argument) noexcept
{
    Operation op(function, ierr);
    if (!fd || !value || !format)
        return op.null_argument();
    set_typed_value(fd, path, format, type, op.error_vector(), argument(value));
    return op.failed() ? op.pass_on() : op.status();
}

} // namespace

} // namespace kh

long kh_tree_set_string_node_value(long* fd, const char* path, const char* value, const char* format,
                                   long* ierr)
{
    return kh::set_typed("kh_tree_set_string_node_value", fd, path, value, format, kh::Conversion::text, ierr,
                         [](const char* text) { return text; });
}

long kh_tree_set_integer_node_value(long* fd, const char* path, const long* value, const char* format,
                                    long* ierr)
{
    return kh::set_typed("kh_tree_set_integer_node_value", fd, path, value, format, kh::Conversion::integer,
                         ierr, [](const long* number) { return *number; });
}

long kh_tree_set_real_node_value(long* fd, const char* path, const double* value, const char* format,
                                 long* ierr)
{
    return kh::set_typed("kh_tree_set_real_node_value", fd, path, value, format, kh::Conversion::real, ierr,
                         [](const double* number) { return *number; });
}

long kh_tree_set_node_value(long* fd, const char* path, const char* format, long* ierr, ...)
{
    va_list value;
    va_start(value, ierr);
    const long status = kh::set_value(fd, path, format, kh::Conversion::none, ierr, value);
    va_end(value);
    return status;
}

long kh_tree_set_text(long* fd, const char* path, const char* text, long* ierr)
{
    kh::Operation op("kh_tree_set_text", ierr);
    if (!fd || !text)
        return op.null_argument();
    kh::Document* document = kh::go_to_target(op, fd, path);
    if (document && kh::check_text(op, text))
        kh::set_under_report(op, *document, text, kh::set_literal_content);
    return op.status();
}
