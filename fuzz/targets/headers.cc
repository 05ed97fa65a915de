// The fixed header: items are read as they were set, also from the file, and nothing else changes.
#include "document.h"
#include "texts.h"

#include <algorithm>

namespace {

struct Item {
    const char* tag;
    std::size_t width; ///< to which texts are aligned on the right
};
const Item items[] = {{"File_Name", 0}, {"File_Description", 0}, {"Notes", 0},
                      {"Mission", 0},   {"File_Class", 0},       {"File_Type", 10},
                      {"System", 0},    {"Validity_Start", 23},  {"Validity_Stop", 23},
                      {"Creator", 0},   {"Creator_Version", 0},  {"Creation_Date", 23}};

constexpr std::size_t most_bytes = 510;

void check_text_item(fuzz::Document& document, const Item& item, const std::string& text)
{
    const long set = document.edit(kh_tree_set_fixed_header_item, item.tag, text.c_str());
    fuzz::Text read;
    const long got = fuzz::status_of(kh_tree_get_fixed_header_item, document.fd(), item.tag, read.out());
    if (set != KH_OK || fuzz::memory_fails())
        return;
    const std::size_t blanks = item.width > text.size() ? item.width - text.size() : 0;
    const std::string expected = (std::string(blanks, ' ') + text).substr(0, most_bytes);
    if (expected.empty())
        fuzz::check(got == KH_ERR_NO_VALUE && read.string().empty(), "an empty item has no value");
    else if (expected.find('&') == std::string::npos)
        fuzz::check(got == KH_OK && read.string() == expected, "an item is read as it was set");
}

void check_version(fuzz::Document& document, const std::string& text)
{
    const long set = document.edit(kh_tree_set_fixed_header_item, "File_Version", text.c_str());
    char room[21] = "unchanged";
    char* out = room;
    const long got = fuzz::status_of(kh_tree_get_fixed_header_item, document.fd(), "File_Version", &out);
    fuzz::check(out == room, "a number is read into the caller's room");
    if (set != KH_OK || fuzz::memory_fails())
        return;
    const long number = static_cast<int>(std::strtol(text.c_str(), nullptr, 10));
    fuzz::check(got == KH_OK && std::strtol(room, nullptr, 10) == number, "a version is read as it was set");
}

void check_all_items(fuzz::Document& document, fuzz::Bytes& bytes)
{
    const std::string text = fuzz::value(bytes);
    const long version = bytes.ConsumeIntegral<int>();
    const char* all = text.c_str();
    document.changes();
    const long set = fuzz::status_of(kh_tree_set_fixed_header_items, document.fd(), all, all, all, all, all,
                                     all, all, all, &version, all, all, all, all);
    document.described();
    fuzz::Text texts[12];
    long read_version = 4711;
    fuzz::status_of(kh_tree_get_fixed_header_items, document.fd(), texts[0].out(), texts[1].out(),
                    texts[2].out(), texts[3].out(), texts[4].out(), texts[5].out(), texts[6].out(),
                    texts[7].out(), &read_version, texts[8].out(), texts[9].out(), texts[10].out(),
                    texts[11].out());
    if (set != KH_OK || fuzz::memory_fails())
        return;
    fuzz::check(read_version == version, "the version is read with the others");
    fuzz::check(text.find('&') != std::string::npos || texts[0].string() == text.substr(0, most_bytes),
                "the items are read together");
}

} // namespace

void fuzz::run(Bytes& bytes)
{
    const bool is_new = bytes.ConsumeIntegralInRange(0, 3) > 0;
    Document document(is_new ? std::string("<a/>") : document_text(bytes));
    if (!document.is_open())
        return;
    if (is_new && status_of(kh_tree_remove_node, document.fd(), ".") != KH_OK)
        return;
    const long types[] = {0, 1, 4, 10, 14, 30, 31, 34, 2, 3};
    const long type = bytes.ConsumeBool() ? bytes.PickValueInArray(types) : bytes.ConsumeIntegral<long>();
    long extension = type;
    const long made = status_of(kh_tree_create_header, document.fd(), &extension);
    check(extension == type % 10, "the extension type is handed back");
    document.described();
    const bool has_header = type % 10 == 0 || type % 10 == 1 || type % 10 == 4;
    if (is_new)
        check_result(made == (has_header ? long{KH_OK} : long{KH_ERR_NO_HEADER_TYPE}),
                     "an empty document gets the header of its type");
    if (!document.has_root())
        return;
    for (int i = 0; i < 5 && bytes.remaining_bytes() > 0; ++i) {
        const auto chosen = bytes.ConsumeIntegralInRange<std::size_t>(0, std::size(items) + 2);
        if (chosen < std::size(items))
            check_text_item(document, items[chosen], value(bytes));
        else if (chosen == std::size(items))
            check_version(document, value(bytes));
        else if (chosen == std::size(items) + 1)
            document.edit(kh_tree_set_fixed_header_item, "Variable_Header", "ignored");
        else
            document.edit(kh_tree_set_fixed_header_item, name(bytes).c_str(), "ignored");
    }
    check_all_items(document, bytes);
    if (bytes.ConsumeIntegralInRange(0, 3) == 3)
        check_round_trip(document);
}
