// The header's items: written and read one by one and all at once.
#include "product/calls.h"

#include "support/nodes.h"

#include <array>
#include <climits>
#include <cstring>
#include <vector>

namespace {

using namespace product;
using namespace support;

constexpr const char* set_item_name = "kh_tree_set_fixed_header_item";
constexpr const char* set_items_name = "kh_tree_set_fixed_header_items";
constexpr const char* get_item_name = "kh_tree_get_fixed_header_item";
constexpr const char* get_items_name = "kh_tree_get_fixed_header_items";

/// A tag, the element it stands in, and how "ab" (a number: 7) is stored.
struct Item {
    const char* tag;
    const char* parent;
    const char* stored;
    bool is_number = false;
};

const Item items[] = {
    {"File_Name", "Fixed_Header", "ab"},
    {"File_Description", "Fixed_Header", "ab"},
    {"Notes", "Fixed_Header", "ab"},
    {"Mission", "Fixed_Header", "ab"},
    {"File_Class", "Fixed_Header", "ab"},
    {"File_Type", "Fixed_Header", "        ab"},
    {"Validity_Start", "Validity_Period", "                     ab"},
    {"Validity_Stop", "Validity_Period", "                     ab"},
    {"File_Version", "Fixed_Header", "0007", true},
    {"KVSTD_Version", "Fixed_Header", "ab"},
    {"System", "Source", "ab"},
    {"Creator", "Source", "ab"},
    {"Creator_Version", "Source", "ab"},
    {"Creation_Date", "Source", "                     ab"},
};

/// A document with an empty header of format version 3, which has all fourteen items.
struct HeaderDocument : Document {
    HeaderDocument()
    {
        long file_type = 30;
        kh_tree_create_header(&fd, &file_type, &status);
        EXPECT_EQ(status, KH_OK);
    }
};

Outcome set_item(Document& document, const char* item, const char* value)
{
    return outcome(document, kh_tree_set_fixed_header_item, item, value);
}

/// The content of the first element of a name, seen by libxml2; "(none)" without one.
std::string content(const Document& document, const std::string& tag)
{
    const xmlNode* node = node_of(document, "//" + tag);
    const std::unique_ptr<xmlChar, decltype(xmlFree)> text(node ? xmlNodeGetContent(node) : nullptr, xmlFree);
    return text ? reinterpret_cast<const char*>(text.get()) : "(none)";
}

/// The thirteen values of a call on all items.
struct Values {
    std::array<const char*, 12> texts = {"name",  "description", "notes",  "mission", "class",   "type",
                                         "start", "stop",        "system", "creator", "version", "date"};
    long file_version = 12;
    bool has_version = true;

    long set(long* fd, long* status) const
    {
        return kh_tree_set_fixed_header_items(fd, texts[0], texts[1], texts[2], texts[3], texts[4], texts[5],
                                              texts[6], texts[7], has_version ? &file_version : nullptr,
                                              texts[8], texts[9], texts[10], texts[11], status);
    }
    Outcome set(Document& document) const
    {
        return outcome(document, [&](long* fd, long* status) { return set(fd, status); });
    }
};

const char* const text_tags[] = {"File_Name",  "File_Description", "Notes",           "Mission",
                                 "File_Class", "File_Type",        "Validity_Start",  "Validity_Stop",
                                 "System",     "Creator",          "Creator_Version", "Creation_Date"};

/// The contents of the twelve texts and, at the end, of File_Version.
std::vector<std::string> contents(const Document& document)
{
    std::vector<std::string> all;
    for (const char* tag : text_tags)
        all.push_back(content(document, tag));
    all.push_back(content(document, "File_Version"));
    return all;
}

std::string blanks(std::size_t count)
{
    return std::string(count, ' ');
}

const std::vector<std::string> stored_values = {"name",
                                                "description",
                                                "notes",
                                                "mission",
                                                "class",
                                                blanks(6) + "type",
                                                blanks(18) + "start",
                                                blanks(19) + "stop",
                                                "system",
                                                "creator",
                                                "version",
                                                blanks(19) + "date",
                                                "0012"};

/// The outputs of a call that reads all items.
struct Outputs {
    std::array<char*, 12> texts{};
    long file_version = untouched;

    Outputs() = default;
    ~Outputs()
    {
        for (char* text : texts)
            free(text);
    }
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;

    Outcome get(long* fd)
    {
        return outcome_at(fd, kh_tree_get_fixed_header_items, &texts[0], &texts[1], &texts[2], &texts[3],
                          &texts[4], &texts[5], &texts[6], &texts[7], &file_version, &texts[8], &texts[9],
                          &texts[10], &texts[11]);
    }
    std::vector<std::string> strings() const
    {
        std::vector<std::string> all;
        for (const char* text : texts)
            all.push_back(text ? text : "(null)");
        return all;
    }
};

const std::vector<std::string> twelve_empty(12);

Outcome no_element(const std::string& function)
{
    return failure(KH_ERR_NOT_FOUND, function);
}

/// What a read of an element by name reports that does not follow.
const Outcome unread =
    passed_on(no_element("kh_tree_go_to_element_node"), "kh_tree_read_string_element_value");

/// What the reads of all items report in a document without any of them.
Outcome nothing_read(const Outcome& of_one)
{
    Outcome all = success;
    for (const Item& item : items) {
        if (std::string(item.tag) == "KVSTD_Version")
            continue;
        all.report += of_one.report;
        if (item.is_number)
            all.report += "\n\tFunction: kh_tree_read_integer_element_value\n";
    }
    return all;
}

} // namespace

// ---- Writing one item

TEST(SetHeaderItem, PrintsEachWithItsFormat)
{
    for (const Item& item : items) {
        SCOPED_TRACE(item.tag);
        HeaderDocument document;
        EXPECT_EQ(set_item(document, item.tag, item.is_number ? "7" : "ab"), success);
        EXPECT_EQ(content(document, std::string(item.parent) + "/" + item.tag), item.stored);
        EXPECT_EQ(document.current(), node_of(document, "//" + std::string(item.tag)));
        for (const Item& other : items) {
            if (other.tag != item.tag) {
                EXPECT_EQ(content(document, other.tag), "") << other.tag;
            }
        }
    }
}

TEST(SetHeaderItem, NeverCutsAtTheFormatsWidth)
{
    HeaderDocument document;
    const std::string text(40, 'x');
    for (const char* tag : {"File_Type", "Validity_Start", "Validity_Stop", "Creation_Date"}) {
        EXPECT_EQ(set_item(document, tag, text.c_str()), success);
        EXPECT_EQ(content(document, tag), text);
    }
    EXPECT_EQ(set_item(document, "File_Type", "abc"), success);
    EXPECT_EQ(content(document, "File_Type"), blanks(7) + "abc");
    EXPECT_EQ(set_item(document, "File_Type", ""), success);
    EXPECT_EQ(content(document, "File_Type"), blanks(10));
}

TEST(SetHeaderItem, TakesTheVersionAsA32BitNumber)
{
    const std::pair<const char*, const char*> versions[] = {
        {"12", "0012"},
        {"1", "0001"},
        {"0", "0000"},
        {"12345", "12345"},
        {"  7x", "0007"},
        {"-1", "-001"},
        {"+3", "0003"},
        {"", "0000"},
        {"x", "0000"},
        {"0x10", "0000"},
        {"2147483647", "2147483647"},
        {"2147483648", "-2147483648"},
        {"4294967295", "-001"},
        {"4294967297", "0001"},
        {"9223372036854775807", "-001"},
        {"99999999999999999999", "-001"},
        {"-99999999999999999999", "0000"},
    };
    for (const auto& [value, stored] : versions) {
        HeaderDocument document;
        EXPECT_EQ(set_item(document, "File_Version", value), success) << value;
        EXPECT_EQ(content(document, "File_Version"), stored) << value;
    }
}

TEST(SetHeaderItem, TakesTheFirstElementOfTheNameBelowTheRoot)
{
    Document document("<Notes><a><Notes>1</Notes></a><Fixed_Header><Notes>2</Notes></Fixed_Header></Notes>");
    document.go_to("/Notes/Fixed_Header/Notes"); // wherever the cursor stands
    EXPECT_EQ(set_item(document, "Notes", "new"), success);
    EXPECT_EQ(cursor(document), "/Notes/a/Notes");
    EXPECT_EQ(in_memory(document),
              "<?xml version=\"1.0\"?>\n<Notes><a><Notes>new</Notes></a><Fixed_Header><Notes>2</Notes>"
              "</Fixed_Header></Notes>\n");
}

TEST(SetHeaderItem, ReplacesAllThatTheElementHolds)
{
    Document document("<r><Notes>old<b/>er</Notes></r>");
    EXPECT_EQ(set_item(document, "Notes", "A & B <c>"), success);
    EXPECT_EQ(in_memory(document), "<?xml version=\"1.0\"?>\n<r><Notes>A &amp; B &lt;c&gt;</Notes></r>\n");
}

// Callers rely on reaching elements that way which are no items.
TEST(SetHeaderItem, LeavesAnElementOfAnotherNameAloneWithSuccess)
{
    Document document("<r><Other>1</Other></r>");
    EXPECT_EQ(set_item(document, "Other", "2"), success);
    EXPECT_EQ(content(document, "Other"), "1");
    EXPECT_EQ(cursor(document), "/r/Other");
}

TEST(SetHeaderItem, ReportsAnElementThatIsNotThere)
{
    const Outcome missing = in_turn(no_element("kh_tree_go_to_element_node"), no_element(set_item_name));
    HeaderDocument document;
    const std::string before = in_memory(document);
    for (const char* name :
         {"Other", "", "file_name", "File_Name ", "File_Nam", "Variable_Heade", "Earth_Observation_File"}) {
        EXPECT_EQ(set_item(document, name, "1"), missing) << name;
        EXPECT_EQ(document.current(), document.root());
    }
    EXPECT_EQ(in_memory(document), before);
    Document without("<r><a/></r>");
    EXPECT_EQ(set_item(without, "File_Name", "1"), missing);
}

TEST(SetHeaderItem, KeepsTheWarningOfAValueThatWasCut)
{
    HeaderDocument document;
    const std::string long_text(600, 'x');
    EXPECT_EQ(set_item(document, "Notes", long_text.c_str()),
              failure(KH_WARN_LENGTH, "kh_tree_set_node_value"));
    EXPECT_EQ(content(document, "Notes"), long_text.substr(0, 510));
    EXPECT_EQ(set_item(document, "Notes", long_text.substr(0, 511).c_str()), success);
}

TEST(SetHeaderItem, ReportsAValueThatCannotBeSetAsABadFormat)
{
    HeaderDocument document;
    for (const char* value : {"\xff", "a\x01"}) {
        EXPECT_EQ(set_item(document, "Notes", value),
                  in_turn(passed_on(failure(KH_ERR_ARGUMENT, "kh_tree_set_node_value",
                                            ". Value: " + std::string(value)),
                                    "kh_tree_set_string_node_value"),
                          failure(KH_ERR_FORMAT, set_item_name)));
        EXPECT_EQ(content(document, "Notes"), "");
    }
}

TEST(SetHeaderItem, NeedsItemAndValue)
{
    HeaderDocument document;
    EXPECT_EQ(set_item(document, nullptr, "1"), missing_argument(set_item_name));
    EXPECT_EQ(set_item(document, "Notes", nullptr), missing_argument(set_item_name));
    EXPECT_EQ(document.current_name(), "Variable_Header");
}

TEST(SetHeaderItem, ChecksTheDescriptor)
{
    for (long fd : {512L, -1L})
        EXPECT_EQ(outcome_at(&fd, kh_tree_set_fixed_header_item, nullptr, nullptr),
                  failure(KH_ERR_DESCRIPTOR, set_item_name));
    EXPECT_EQ(outcome_at(nullptr, kh_tree_set_fixed_header_item, "Notes", "1"),
              missing_argument(set_item_name));
}

TEST(SetHeaderItem, GoesOnWithAnEmptySlotUntilAStepFails)
{
    long fd = 511;
    const Outcome empty_slot = failure(KH_ERR_NO_DOCUMENT, set_item_name);
    for (const Item& item : items)
        EXPECT_EQ(outcome_at(&fd, kh_tree_set_fixed_header_item, item.tag, "1"),
                  in_turn(empty_slot, failure(KH_ERR_NO_DOCUMENT, "kh_tree_rewind"),
                          failure(KH_ERR_NO_DOCUMENT, "kh_tree_go_to_element_node"),
                          no_element(set_item_name)));
    for (const char* name : {"Other", "", "file_name", "File_Name "})
        EXPECT_EQ(outcome_at(&fd, kh_tree_set_fixed_header_item, name, "1"),
                  in_turn(empty_slot, failure(KH_ERR_NOT_HEADER_ITEM, set_item_name)));
    EXPECT_EQ(outcome_at(&fd, kh_tree_set_fixed_header_item, "Other", nullptr),
              in_turn(empty_slot, missing_argument(set_item_name)));
}

TEST(SetHeaderItem, FindsNothingInADocumentWithoutRoot)
{
    Document document;
    for (const char* name : {"Notes", "Other"})
        EXPECT_EQ(set_item(document, name, "1"),
                  in_turn(failure(KH_ERR_NO_ROOT, "kh_tree_rewind"),
                          failure(KH_ERR_NO_ROOT, "kh_tree_go_to_element_node"), no_element(set_item_name)));
}

// ---- Writing all items

TEST(SetHeaderItems, WritesThirteen)
{
    HeaderDocument document;
    EXPECT_EQ(Values().set(document), success);
    EXPECT_EQ(contents(document), stored_values);
    EXPECT_EQ(content(document, "KVSTD_Version"), "");
    EXPECT_EQ(document.current_name(), "Creation_Date");
}

TEST(SetHeaderItems, CanBeReadBackFromTheFile)
{
    HeaderDocument document;
    Values values;
    values.texts[2] = "\xc3\xa9 & <b>";
    values.texts[5] = "TYPE_ABCDE";
    values.texts[6] = values.texts[7] = values.texts[11] = "2031-01-02T03:04:05.678";
    ASSERT_EQ(values.set(document), success);
    Document again(document.written());
    Outputs outputs;
    EXPECT_EQ(outputs.get(&again.fd), success);
    EXPECT_EQ(outputs.strings(), std::vector<std::string>(values.texts.begin(), values.texts.end()));
    EXPECT_EQ(outputs.file_version, 12);
}

TEST(SetHeaderItems, NarrowsTheVersion)
{
    for (const auto& [version, stored] : {std::pair{0L, "0000"},
                                          {-5L, "-005"},
                                          {4294967298L, "0002"},
                                          {LONG_MAX, "-001"},
                                          {LONG_MIN, "0000"},
                                          {LONG_MIN + 1, "0001"}}) {
        HeaderDocument document;
        Values values;
        values.file_version = version;
        EXPECT_EQ(values.set(document), success);
        EXPECT_EQ(content(document, "File_Version"), stored) << version;
    }
}

TEST(SetHeaderItems, StopAtTheFirstFailure)
{
    HeaderDocument document;
    ASSERT_EQ(status(document, kh_tree_remove_node, "/*/*/Fixed_Header/File_Class"), KH_ERR_ARGUMENT);
    ASSERT_EQ(status(document, kh_tree_remove_node,
                     "/Earth_Observation_File/Earth_Observation_Header/Fixed_Header/File_Class"),
              KH_OK);
    EXPECT_EQ(Values().set(document),
              in_turn(no_element("kh_tree_go_to_element_node"), no_element(set_item_name),
                      failure(KH_ERR_FORMAT, set_items_name)));
    EXPECT_EQ(contents(document), (std::vector<std::string>{"name", "description", "notes", "mission",
                                                            "(none)", "", "", "", "", "", "", "", ""}));
}

TEST(SetHeaderItems, ReportAMissingTextAsABadFormat)
{
    for (std::size_t missing = 0; missing < 12; ++missing) {
        SCOPED_TRACE(missing);
        HeaderDocument document;
        Values values;
        values.texts[missing] = nullptr;
        EXPECT_EQ(values.set(document),
                  in_turn(missing_argument(set_item_name), failure(KH_ERR_FORMAT, set_items_name)));
        const std::vector<std::string> written = contents(document);
        for (std::size_t i = 0; i < 12; ++i)
            EXPECT_EQ(written[i], i < missing ? stored_values[i] : "");
        EXPECT_EQ(written[12], missing < 8 ? "" : "0012");
    }
}

TEST(SetHeaderItems, NeedTheVersionBeforeAnythingIsWritten)
{
    HeaderDocument document;
    Values values;
    values.has_version = false;
    EXPECT_EQ(values.set(document), missing_argument(set_items_name));
    EXPECT_EQ(content(document, "File_Name"), "");
}

TEST(SetHeaderItems, KeepTheWarningOfAnyValueThatWasCut)
{
    const std::string long_text(600, 'x');
    for (const std::size_t item : {std::size_t{0}, std::size_t{2}, std::size_t{11}}) {
        SCOPED_TRACE(item);
        HeaderDocument document;
        Values values;
        values.texts[item] = long_text.c_str();
        EXPECT_EQ(values.set(document), failure(KH_WARN_LENGTH, "kh_tree_set_node_value"));
        std::vector<std::string> expected = stored_values;
        expected[item] = long_text.substr(0, 510);
        EXPECT_EQ(contents(document), expected) << "what follows is written";
    }
    HeaderDocument document;
    Values values;
    values.texts[2] = long_text.c_str();
    values.texts[9] = nullptr;
    EXPECT_EQ(values.set(document).status, KH_ERR_FORMAT) << "a failure comes before a warning";
}

TEST(SetHeaderItems, CheckTheDescriptor)
{
    for (long fd : {512L, -1L})
        EXPECT_EQ(outcome_at(&fd, [](long* slot, long* status) { return Values().set(slot, status); }),
                  failure(KH_ERR_DESCRIPTOR, set_items_name));
    EXPECT_EQ(outcome_at(nullptr, [](long* slot, long* status) { return Values().set(slot, status); }),
              missing_argument(set_items_name));
}

TEST(SetHeaderItems, FailAtTheFirstItemWithoutADocumentOrRoot)
{
    const auto steps = [](long code) {
        return in_turn(failure(code, "kh_tree_rewind"), failure(code, "kh_tree_go_to_element_node"),
                       no_element(set_item_name), failure(KH_ERR_FORMAT, set_items_name));
    };
    long fd = 511;
    EXPECT_EQ(outcome_at(&fd, [](long* slot, long* status) { return Values().set(slot, status); }),
              in_turn(failure(KH_ERR_NO_DOCUMENT, set_items_name),
                      failure(KH_ERR_NO_DOCUMENT, "kh_tree_rewind"),
                      failure(KH_ERR_NO_DOCUMENT, set_item_name), steps(KH_ERR_NO_DOCUMENT)));
    Values without_version;
    without_version.has_version = false;
    EXPECT_EQ(outcome_at(&fd, [&](long* slot, long* status) { return without_version.set(slot, status); }),
              in_turn(failure(KH_ERR_NO_DOCUMENT, set_items_name), missing_argument(set_items_name)));

    Document document;
    EXPECT_EQ(Values().set(document),
              in_turn(failure(KH_ERR_NO_ROOT, "kh_tree_rewind"), steps(KH_ERR_NO_ROOT)));
}

// ---- Reading one item

TEST(GetHeaderItem, ReadsEach)
{
    HeaderDocument document;
    for (const Item& item : items) {
        SCOPED_TRACE(item.tag);
        ASSERT_EQ(set_item(document, item.tag, item.is_number ? "7" : "ab"), success);
        char room[21] = "";
        Text text;
        text.value = nullptr;
        char* number = room;
        char** value = item.is_number ? &number : text.out();
        EXPECT_EQ(outcome(document, kh_tree_get_fixed_header_item, item.tag, value), success);
        EXPECT_STREQ(*value, item.is_number ? "7" : item.stored);
        EXPECT_EQ(document.current(), node_of(document, "//" + std::string(item.tag)));
    }
}

TEST(GetHeaderItem, PrintsTheVersionIntoTheCallersRoom)
{
    for (const auto& [stored, printed] : {std::pair{"0012", "12"},
                                          {"-001", "-1"},
                                          {" 7x", "7"},
                                          {"-9223372036854775807", "-9223372036854775807"},
                                          {"4294967297", "4294967297"}}) {
        Document document("<r><File_Version>" + std::string(stored) + "</File_Version></r>");
        char room[22];
        std::memset(room, '#', sizeof room);
        char* value = room;
        EXPECT_EQ(outcome(document, kh_tree_get_fixed_header_item, "File_Version", &value), success);
        EXPECT_EQ(value, room);
        EXPECT_STREQ(room, printed);
        EXPECT_EQ(room[21], '#') << "21 characters are enough";
    }
}

TEST(GetHeaderItem, StartsAtTheRoot)
{
    Document document("<r><Notes>1</Notes><Notes>2</Notes></r>");
    for (int i = 0; i < 2; ++i) {
        Text text;
        EXPECT_EQ(outcome(document, kh_tree_get_fixed_header_item, "Notes", text.out()), success);
        EXPECT_EQ(text.string(), "1");
        EXPECT_EQ(cursor(document), "/r/Notes[1]");
    }
}

TEST(GetHeaderItem, LeavesTheEarlierBlockToTheCaller)
{
    Document document("<r><Notes>1</Notes></r>");
    Text earlier;
    earlier.value = strdup("earlier");
    Text text;
    text.value = earlier.value;
    EXPECT_EQ(status(document, kh_tree_get_fixed_header_item, "Notes", text.out()), KH_OK);
    EXPECT_EQ(earlier.string(), "earlier");
    EXPECT_EQ(text.string(), "1");
}

TEST(GetHeaderItem, ReportsAnItemWithoutValueAsSuch)
{
    const Outcome empty =
        passed_on(failure(KH_ERR_NO_VALUE, "kh_tree_get_current_element_value", ". Element: Notes."),
                  "kh_tree_read_string_element_value");
    Document document("<r><Notes/><File_Version></File_Version></r>");
    Text text;
    EXPECT_EQ(outcome(document, kh_tree_get_fixed_header_item, "Notes", text.out()),
              in_turn(empty, failure(KH_ERR_NO_VALUE, get_item_name)));
    EXPECT_EQ(text.string(), "") << "an empty text comes all the same";
    EXPECT_EQ(cursor(document), "/r/Notes");

    char room[21] = "as before";
    char* value = room;
    EXPECT_EQ(status(document, kh_tree_get_fixed_header_item, "File_Version", &value), KH_ERR_NO_VALUE);
    EXPECT_STREQ(room, "as before");
}

TEST(GetHeaderItem, ReportsEveryOtherFailureAsABadFile)
{
    Document document("<r><Notes>1<b/></Notes><File_Version>x</File_Version></r>");
    const Outcome bad_file = failure(KH_ERR_READ_ITEM, get_item_name);
    Text text;
    EXPECT_EQ(outcome(document, kh_tree_get_fixed_header_item, "Creator", text.out()),
              in_turn(unread, bad_file));
    EXPECT_EQ(outcome(document, kh_tree_get_fixed_header_item, "Notes", text.out()),
              in_turn(passed_on(failure(KH_ERR_NOT_TERMINAL, "kh_tree_get_current_element_value",
                                        ". Element: Notes."),
                                "kh_tree_read_string_element_value"),
                      bad_file));
    EXPECT_EQ(text.value, nullptr);

    char room[21] = "as before";
    char* value = room;
    EXPECT_EQ(outcome(document, kh_tree_get_fixed_header_item, "File_Version", &value),
              in_turn(passed_on(failure(KH_ERR_NOT_INTEGER, "kh_string_to_integer", ". Value: x"),
                                "kh_tree_read_integer_element_value"),
                      bad_file));
    EXPECT_STREQ(room, "as before");
}

TEST(GetHeaderItem, ReadsNothingForAnotherName)
{
    Document document("<r><Other>1</Other></r>");
    for (const char* name : {"Other", "none", "", "file_name", "File_Versio"}) {
        Text text;
        EXPECT_EQ(outcome(document, kh_tree_get_fixed_header_item, name, text.out()), success) << name;
        EXPECT_EQ(text.value, nullptr);
    }
}

TEST(GetHeaderItem, NeedsItemAndOutput)
{
    HeaderDocument document;
    Text text;
    EXPECT_EQ(outcome(document, kh_tree_get_fixed_header_item, nullptr, text.out()),
              missing_argument(get_item_name));
    EXPECT_EQ(outcome(document, kh_tree_get_fixed_header_item, "Notes", nullptr),
              missing_argument(get_item_name));
    EXPECT_EQ(outcome(document, kh_tree_get_fixed_header_item, "File_Version", text.out()),
              missing_argument(get_item_name))
        << "no room for the number";
    EXPECT_EQ(document.current_name(), "Variable_Header");
}

TEST(GetHeaderItem, ChecksTheDescriptor)
{
    Text text;
    for (long fd : {512L, -1L})
        EXPECT_EQ(outcome_at(&fd, kh_tree_get_fixed_header_item, nullptr, nullptr),
                  failure(KH_ERR_DESCRIPTOR, get_item_name));
    EXPECT_EQ(outcome_at(nullptr, kh_tree_get_fixed_header_item, "Notes", text.out()),
              missing_argument(get_item_name));
}

TEST(GetHeaderItem, GoesOnWithAnEmptySlotUntilAStepFails)
{
    long fd = 511;
    const Outcome empty_slot = failure(KH_ERR_NO_DOCUMENT, get_item_name);
    char room[21] = "as before";
    for (const Item& item : items) {
        Text text;
        char* number = room;
        Outcome read = failure(KH_ERR_NO_DOCUMENT, "kh_tree_read_string_element_value");
        if (item.is_number)
            read = passed_on(read, "kh_tree_read_integer_element_value");
        EXPECT_EQ(
            outcome_at(&fd, kh_tree_get_fixed_header_item, item.tag, item.is_number ? &number : text.out()),
            in_turn(empty_slot, failure(KH_ERR_NO_DOCUMENT, "kh_tree_rewind"), read,
                    failure(KH_ERR_READ_ITEM, get_item_name)));
        EXPECT_EQ(text.value, nullptr);
    }
    EXPECT_STREQ(room, "as before");
    Text text;
    EXPECT_EQ(outcome_at(&fd, kh_tree_get_fixed_header_item, "Other", text.out()),
              in_turn(empty_slot, failure(KH_ERR_NOT_HEADER_ITEM, get_item_name)));
    EXPECT_EQ(outcome_at(&fd, kh_tree_get_fixed_header_item, nullptr, text.out()),
              in_turn(empty_slot, missing_argument(get_item_name)));
}

TEST(GetHeaderItem, ReportsADocumentWithoutRootAsABadFile)
{
    Document document;
    Text text;
    EXPECT_EQ(outcome(document, kh_tree_get_fixed_header_item, "Notes", text.out()),
              in_turn(failure(KH_ERR_NO_ROOT, "kh_tree_rewind"),
                      failure(KH_ERR_NO_ROOT, "kh_tree_read_string_element_value"),
                      failure(KH_ERR_READ_ITEM, get_item_name)));
}

// ---- Reading all items

TEST(GetHeaderItems, ReadsThirteen)
{
    HeaderDocument document;
    ASSERT_EQ(Values().set(document), success);
    ASSERT_EQ(set_item(document, "KVSTD_Version", "1.0"), success);
    Outputs outputs;
    EXPECT_EQ(outputs.get(&document.fd), success);
    EXPECT_EQ(outputs.strings(), std::vector<std::string>(stored_values.begin(), stored_values.end() - 1));
    EXPECT_EQ(outputs.file_version, 12);
    EXPECT_EQ(document.current_name(), "Creation_Date");
}

TEST(GetHeaderItems, AreEmptyInADocumentWithoutHeader)
{
    Document document("<r><a>1</a></r>");
    document.go_to("/r/a");
    Outputs outputs;
    EXPECT_EQ(outputs.get(&document.fd), nothing_read(unread));
    EXPECT_EQ(outputs.strings(), twelve_empty);
    EXPECT_EQ(outputs.file_version, untouched);
    EXPECT_EQ(document.current(), document.root());
}

TEST(GetHeaderItems, AreEmptyWhereTheyCannotBeRead)
{
    HeaderDocument empty;
    Outputs of_empty;
    EXPECT_EQ(of_empty.get(&empty.fd).status, KH_OK);
    EXPECT_EQ(of_empty.strings(), twelve_empty);
    EXPECT_EQ(of_empty.file_version, untouched);

    Document document("<r><File_Name>1<b/></File_Name><Notes>notes</Notes><Mission><b/><b/></Mission>"
                      "<File_Version>x</File_Version><Creator>creator</Creator></r>");
    Outputs outputs;
    EXPECT_EQ(outputs.get(&document.fd).status, KH_OK);
    EXPECT_EQ(outputs.strings(),
              (std::vector<std::string>{"", "", "notes", "", "", "", "", "", "", "creator", "", ""}));
    EXPECT_EQ(outputs.file_version, 0) << "what the conversion gave";
}

// Each read goes on from the one before.
TEST(GetHeaderItems, AreReadInTheHeadersOrder)
{
    Document document("<r><Creator>creator</Creator><File_Name>name</File_Name><System>system</System>"
                      "<Notes>notes</Notes></r>");
    Outputs outputs;
    EXPECT_EQ(outputs.get(&document.fd).status, KH_OK);
    EXPECT_EQ(outputs.strings(),
              (std::vector<std::string>{"name", "", "notes", "", "", "", "", "", "", "", "", ""}));
    EXPECT_EQ(cursor(document), "/r/Notes");
}

TEST(GetHeaderItems, LeaveEarlierBlocksToTheCaller)
{
    Document document("<r><File_Name>name</File_Name></r>");
    Outputs earlier;
    Outputs outputs;
    for (std::size_t i = 0; i < earlier.texts.size(); ++i)
        outputs.texts[i] = earlier.texts[i] = strdup("earlier");
    EXPECT_EQ(outputs.get(&document.fd).status, KH_OK);
    EXPECT_EQ(earlier.strings(), std::vector<std::string>(12, "earlier"));
    EXPECT_EQ(outputs.strings()[0], "name");
}

// Callers put a second zero behind the empty text.
TEST(GetHeaderItems, GiveEmptyTextsOfTwoBytes)
{
    Document document("<r><Notes/></r>");
    Outputs outputs;
    ASSERT_EQ(outputs.get(&document.fd).status, KH_OK);
    for (char* text : outputs.texts) {
        EXPECT_EQ(text[0], '\0');
        text[1] = '\0';
    }
}

TEST(GetHeaderItems, ReportADocumentWithoutRoot)
{
    Document document;
    Outputs outputs;
    const Outcome no_root = passed_on(failure(KH_ERR_NO_ROOT, "kh_tree_rewind"), get_items_name);
    Outcome expected =
        in_turn(no_root, nothing_read(failure(KH_ERR_NO_ROOT, "kh_tree_read_string_element_value")));
    expected.status = KH_ERR_NO_ROOT;
    EXPECT_EQ(outputs.get(&document.fd), expected);
    EXPECT_EQ(outputs.strings(), twelve_empty);
    EXPECT_EQ(outputs.file_version, untouched);
}

TEST(GetHeaderItems, ReportAnEmptySlotWithEmptyTexts)
{
    long fd = 511;
    Outputs outputs;
    EXPECT_EQ(outputs.get(&fd).status, KH_ERR_NO_DOCUMENT);
    EXPECT_EQ(outputs.strings(), twelve_empty);
    EXPECT_EQ(outputs.file_version, untouched);
}

TEST(GetHeaderItems, CheckTheDescriptorAndLeaveTheOutputs)
{
    for (long fd : {512L, -1L}) {
        Outputs outputs;
        EXPECT_EQ(outputs.get(&fd), failure(KH_ERR_DESCRIPTOR, get_items_name));
        EXPECT_EQ(outputs.strings(), std::vector<std::string>(12, "(null)"));
    }
    Outputs outputs;
    EXPECT_EQ(outputs.get(nullptr), missing_argument(get_items_name));
}

TEST(GetHeaderItems, NeedEveryOutput)
{
    HeaderDocument document;
    for (int missing = 0; missing < 13; ++missing) {
        SCOPED_TRACE(missing);
        Outputs outputs;
        std::array<char**, 12> out;
        for (std::size_t i = 0; i < out.size(); ++i)
            out[i] = static_cast<int>(i) == missing ? nullptr : &outputs.texts[i];
        EXPECT_EQ(outcome(document, kh_tree_get_fixed_header_items, out[0], out[1], out[2], out[3], out[4],
                          out[5], out[6], out[7], missing == 12 ? nullptr : &outputs.file_version, out[8],
                          out[9], out[10], out[11]),
                  missing_argument(get_items_name));
        EXPECT_EQ(outputs.strings(), std::vector<std::string>(12, "(null)"));
    }
}
