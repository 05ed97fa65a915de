// Codes, their texts, and the one place that prints reports.
#include "frame/last_report.h"

#include <kalv/status.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>

int verb_flag = 0;

namespace {

// Entry i is the text of code -i. The last two texts are crossed with respect to the codes' use (a table that
// cannot be locked is reported with the text that speaks of unlocking): callers compare these texts.
constexpr const char* error_texts[] = {
    "KH: Everything is OK",
    "KH: Unknown error code",
    "KH: Generic error",
    "KH: Argument passed is NULL or out of range",
    "KH: Error while parsing a file",
    "KH: Error when trying to get the root element",
    "KH: Error when asking for memory",
    "KH: No XML document has been parsed or created",
    "KH: No element requested",
    "KH: Current node is not an element",
    "KH: The root node is NULL",
    "KH: No element found",
    "KH: Unable to convert to long type",
    "KH: Unable to convert to double type",
    "KH: The value returned is out of range",
    "KH: The element requested does not have attributes",
    "KH: The element requested is not a terminal node",
    "KH: Path length exceeds the maximum allowed",
    "KH: Path node name exceeds the maximum allowed",
    "KH: The maximum number of files has been reached. It is not possible to open more files",
    "KH: The current node is NULL",
    "KH: File descriptor out of range",
    "KH: Error when creating a new XML document",
    "KH: Root element already exists",
    "KH: Unable to create an element node",
    "KH: Unable to add a sibling node",
    "KH: Unable to remove an element node",
    "KH: Printing format provided is not valid",
    "KH: Unable to read an item. Invalid file format",
    "KH: Unable to save XML document into disk",
    "KH: The given path is not for an array",
    "KH: The element has no value",
    "KH: The header file contains unwanted tags",
    "KH: The file is not KLV or HDR type and must not contain any Header",
    "KH: The element is not a Header element and cannot be added",
    "KH: The filename is too long",
    "KH: The requested value has not been found",
    "KH: Could not lock other running threads",
    "KH: Could not unlock other blocked threads",
};

constexpr const char* warning_texts[] = {
    "KH: Everything is OK",
    "KH: The path goes up too much. Root already reached",
    "KH: Element or value length exceeds the maximum allowed",
    "KH: Generic warning",
    "KH: Header already exists",
};

constexpr long error_count = std::size(error_texts);
constexpr long warning_count = std::size(warning_texts);
static_assert(error_count == 39 && -KH_ERR_LOCK == error_count - 1, "one text for each error code");
static_assert(warning_count == 5 && KH_WARN_HEADER_EXISTS == warning_count - 1,
              "one text for each warning code");

template <std::size_t count>
constexpr bool all_fit(const char* const (&texts)[count])
{
    for (const char* text : texts)
        if (std::string_view(text).size() >= KH_MESSAGE_SIZE)
            return false;
    return true;
}
static_assert(all_fit(error_texts) && all_fit(warning_texts),
              "a text that did not fit would need a substitute");

bool known(long code)
{
    return code > -error_count && code < warning_count;
}

const char* text_of(long code)
{
    if (!known(code))
        return error_texts[-KH_ERR_UNKNOWN];
    return code < 0 ? error_texts[-code] : warning_texts[code];
}

// Other threads may switch at any time; which value a report then sees does not matter.
bool verbose()
{
    return __atomic_load_n(&verb_flag, __ATOMIC_RELAXED) == 1;
}

} // namespace

void kh_init_error(kh_error_record* rec)
{
    if (!rec)
        return;
    rec->code = 0;
    rec->message[0] = '\0';
    rec->length = 0;
}

long kh_set_error(long code, kh_error_record* rec)
{
    if (!rec)
        return 0;
    const std::string_view text = text_of(code);
    rec->code = known(code) ? code : long{KH_ERR_UNKNOWN};
    rec->length = static_cast<long>(text.copy(rec->message, KH_MESSAGE_SIZE - 1));
    rec->message[rec->length] = '\0';
    return rec->length;
}

void kh_add_error_info(const char* text, long len, kh_error_record* rec)
{
    if (!text || !rec || len < 0 || rec->length < 0 || rec->length >= KH_MESSAGE_SIZE ||
        len >= KH_MESSAGE_SIZE - rec->length)
        return;
    const std::size_t length = strnlen(text, static_cast<std::size_t>(len));
    std::memcpy(rec->message + rec->length, text, length);
    rec->length += static_cast<long>(length);
    rec->message[rec->length] = '\0';
}

long kh_handle_error(kh_error_record* rec, long code, long set, const char* format, ...)
{
    if (!rec)
        return code;
    if (set != 0)
        kh_set_error(code, rec);
    const std::size_t known_before = set != 0 ? 0 : strnlen(rec->message, KH_MESSAGE_SIZE);
    const long room = KH_MESSAGE_SIZE - 1 - rec->length;
    if (format && room > 0) {
        char detail[KH_MESSAGE_SIZE];
        va_list arguments;
        va_start(arguments, format);
        const int length = std::vsnprintf(
            detail, static_cast<std::size_t>(std::min<long>(room, KH_MESSAGE_SIZE)), format, arguments);
        va_end(arguments);
        kh_add_error_info(detail, std::min<long>(length, room - 1), rec);
    }
    const std::string_view added(rec->message + known_before,
                                 strnlen(rec->message + known_before, KH_MESSAGE_SIZE - known_before));
    set != 0 ? kh::begin_last_report(added) : kh::add_to_last_report(added);
    if (verbose())
        std::fprintf(stderr, "%s\n", rec->message);
    return code;
}

char* kh_basic_error_msg(long code, char* dst)
{
    return dst ? std::strcpy(dst, text_of(code)) : nullptr;
}

void KH_handle_xml_error(void*, const char* msg, ...)
{
    if (!verbose() || !msg)
        return;
    char text[1024];
    va_list arguments;
    va_start(arguments, msg);
    const int length = std::vsnprintf(text, sizeof text, msg, arguments);
    va_end(arguments);
    if (length > 0)
        std::fputs(text, stderr);
}

void kh_verbose(void)
{
    __atomic_store_n(&verb_flag, 1, __ATOMIC_RELAXED);
}

void kh_silent(void)
{
    __atomic_store_n(&verb_flag, 0, __ATOMIC_RELAXED);
}
