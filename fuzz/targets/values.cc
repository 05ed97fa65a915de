// Values and formats: what is set is what the format prints in the C library, cut to 510 bytes, and is read back.
#include "document.h"
#include "texts.h"

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

const char* const text = "<Root><Item id='1'>1</Item></Root>";
constexpr std::size_t most_bytes = 510;

std::string digits(fuzz::Bytes& bytes)
{
    const int widths[] = {0, 1, 5, 12, 509, 511, 700};
    return bytes.ConsumeBool() ? std::to_string(bytes.PickValueInArray(widths)) : "";
}

/// A format with one conversion of a kind; `conversions` are the letters of the kind.
std::string format_of(fuzz::Bytes& bytes, const char* length, const std::string& conversions)
{
    const char* const pieces[] = {"", "x", "%%", "100 %% ", "<", "&amp;"};
    std::string result = std::string(bytes.PickValueInArray(pieces)) + "%";
    const char* const flags = "-+ #0";
    for (auto i = bytes.ConsumeIntegralInRange(0, 2); i > 0; --i)
        result += flags[bytes.ConsumeIntegralInRange(0, 4)];
    result += digits(bytes);
    if (bytes.ConsumeBool())
        result += "." + digits(bytes);
    result += length;
    result += conversions[bytes.ConsumeIntegralInRange<std::size_t>(0, conversions.size() - 1)];
    return result + bytes.PickValueInArray(pieces);
}

/// The values that the C library prints.
template <class Value>
std::string printed(const std::string& format, Value value)
{
    std::string result(4000, '\0');
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wformat-nonliteral"
    const int length = std::snprintf(result.data(), result.size(), format.c_str(), value);
#pragma clang diagnostic pop
    result.resize(static_cast<std::size_t>(length));
    return result;
}

std::string read(fuzz::Document& document, const char* path)
{
    fuzz::Text value;
    fuzz::status_of(kh_tree_path_read_string_node_value, document.fd(), path, value.out());
    return value.string();
}

/// What was set by a format that fits. Texts of which the element makes references are left to others.
void check_printed(fuzz::Document& document, const char* path, const std::string& expected, long status)
{
    fuzz::check_result(status == (expected.size() > most_bytes + 1 ? long{KH_WARN_LENGTH} : long{KH_OK}),
                       "a value that fits its format is set");
    if (fuzz::memory_fails() || (!std::strchr(path, '@') && expected.find('&') != std::string::npos))
        return;
    fuzz::check(read(document, path) == expected.substr(0, most_bytes),
                "a value is read as its format prints it");
}

void check_integer(fuzz::Document& document, const char* path, fuzz::Bytes& bytes)
{
    const long number = bytes.ConsumeIntegral<long>();
    const std::string format = format_of(bytes, "l", "dioxuX");
    const long status = document.edit(kh_tree_set_integer_node_value, path, &number, format.c_str());
    check_printed(document, path, printed(format, number), status);
    if (document.edit(kh_tree_set_integer_node_value, path, &number, "%ld") != KH_OK)
        return;
    long again = 0;
    const long read = fuzz::status_of(kh_tree_path_read_integer_node_value, document.fd(), path, &again);
    const bool is_at_the_end = number == LONG_MAX || number == LONG_MIN;
    fuzz::check_result(again == number && read == (is_at_the_end ? long{KH_ERR_RANGE} : long{KH_OK}),
                       "an integer is read as it was set");
}

void check_real(fuzz::Document& document, const char* path, fuzz::Bytes& bytes)
{
    const double number = bytes.ConsumeBool() ? bytes.ConsumeFloatingPoint<double>()
                                              : bytes.ConsumeFloatingPointInRange(-1e6, 1e6);
    const std::string format = format_of(bytes, "", "aAeEfFgG");
    const long status = document.edit(kh_tree_set_real_node_value, path, &number, format.c_str());
    check_printed(document, path, printed(format, number), status);
    if (document.edit(kh_tree_set_real_node_value, path, &number, "%.17g") != KH_OK)
        return;
    double again = 0;
    fuzz::status_of(kh_tree_path_read_real_node_value, document.fd(), path, &again);
    fuzz::check_result(again == number || (std::isnan(again) && std::isnan(number)),
                       "a real is read as it was set");
}

void check_text(fuzz::Document& document, const char* path, fuzz::Bytes& bytes)
{
    const std::string what = fuzz::value(bytes);
    if (document.edit(kh_tree_set_text, path, what.c_str()) == KH_OK)
        fuzz::check_result(read(document, path) == what, "a text is read as it was set");
    const std::string format = format_of(bytes, "", "s");
    const bool is_plain =
        what.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789 .-") == std::string::npos;
    const long status = document.edit(kh_tree_set_string_node_value, path, what.c_str(), format.c_str());
    if (is_plain)
        check_printed(document, path, printed(format, what.c_str()), status);
}

/// The most digits of any number in a format.
std::size_t most_digits(const std::string& format)
{
    std::size_t most = 0;
    std::size_t count = 0;
    for (const char c : format) {
        count = c >= '0' && c <= '9' ? count + 1 : 0;
        most = std::max(most, count);
    }
    return most;
}

/// Any text as a format: it is refused, or fits the value. A width of a thousand million takes the C library
/// seconds.
void check_format(fuzz::Document& document, const char* path, fuzz::Bytes& bytes)
{
    std::string format = bytes.ConsumeBool() ? "%" : "";
    for (auto i = bytes.ConsumeIntegralInRange(0, 6); i > 0; --i) {
        const char* const pieces[] = {"%", "l", "h",  "d", "s",  "f", ".", "*", "$", "1", "L",
                                      "n", "%", "ll", "j", "hh", "c", "p", "x", "-", "'", "m"};
        format += bytes.PickValueInArray(pieces);
    }
    if (bytes.ConsumeBool())
        format += fuzz::any_text(bytes, 20);
    const long integer = bytes.ConsumeIntegral<int>();
    const double real = 0.5;
    if (most_digits(format) > 5)
        return;
    document.edit(kh_tree_set_real_node_value, path, &real, format.c_str());
    document.edit(kh_tree_set_integer_node_value, path, &integer, format.c_str());
    document.edit(kh_tree_set_string_node_value, path, "text", format.c_str());
    long status = KH_OK;
    document.changes();
    {
        const torture::memory::Inside inside;
        kh_tree_set_node_value(document.fd(), path, "%ld", &status, integer);
    }
    fuzz::check_described(status);
}

/// The helpers on texts, which need no document.
void check_conversions(fuzz::Bytes& bytes)
{
    const std::string what = fuzz::value(bytes);
    char* end = nullptr;
    const long integer = std::strtol(what.c_str(), &end, 10);
    long status = KH_OK;
    fuzz::check(kh_string_to_integer(what.c_str(), &status) == integer, "an integer is what strtol finds");
    fuzz::check((status == KH_ERR_NOT_INTEGER) == (end == what.c_str()),
                "an integer is found where strtol does");
    const double real = std::strtod(what.c_str(), &end);
    const double found = kh_string_to_real(what.c_str(), &status);
    fuzz::check(found == real || (std::isnan(found) && std::isnan(real)), "a real is what strtod finds");
    fuzz::check((status == KH_ERR_NOT_REAL) == (end == what.c_str()), "a real is found where strtod does");

    const std::string delimiters = fuzz::any_text(bytes, 4);
    std::string room(what.size() + 1, '\0');
    std::vector<char*> tokens(what.size() + 1);
    long count = 0;
    kh_strtoken(what.c_str(), delimiters.c_str(), room.data(), tokens.data(), &count);
    std::size_t at = 0;
    for (long i = 0; i < count; ++i) {
        at = what.find_first_not_of(delimiters, at);
        const std::size_t behind = std::min(what.find_first_of(delimiters, at), what.size());
        fuzz::check(at < what.size() && what.substr(at, behind - at) == tokens[static_cast<std::size_t>(i)],
                    "tokens are the pieces between delimiters");
        at = behind;
    }
    fuzz::check(what.find_first_not_of(delimiters, at) == std::string::npos, "all tokens are found");
}

} // namespace

void fuzz::run(Bytes& bytes)
{
    Document document{std::string(text)};
    if (!document.is_open())
        return;
    for (int i = 0; i < 8 && bytes.remaining_bytes() > 0; ++i) {
        const char* path = bytes.ConsumeBool() ? "/Root/Item" : "/Root/Item/@id";
        switch (bytes.ConsumeIntegralInRange(0, 4)) {
        case 0:
            check_integer(document, path, bytes);
            break;
        case 1:
            check_real(document, path, bytes);
            break;
        case 2:
            check_text(document, path, bytes);
            break;
        case 3:
            check_format(document, path, bytes);
            break;
        default:
            check_conversions(bytes);
        }
    }
    if (bytes.ConsumeIntegralInRange(0, 3) == 3)
        check_round_trip(document);
}
