// The element under the cursor, and elements found by name.
#include "read/read_support.h"

using namespace reading;
using namespace support;

namespace {

Outcome read_name(long fd, char** name)
{
    return call_of([&](long* status) { return kh_tree_get_current_element_name(&fd, name, status); });
}

Outcome read_current(long fd, char** value)
{
    return call_of([&](long* status) { return kh_tree_get_current_element_value(&fd, value, status); });
}

Outcome read_element(long fd, const char* element, char** value)
{
    return call_of(
        [&](long* status) { return kh_tree_read_string_element_value(&fd, element, value, status); });
}

/// Reads the next element of the requested tag; `node` receives the element.
Outcome read_next(long fd, char** value, xmlNode** node = nullptr)
{
    return call_of([&](long* status) {
        xmlNode* found = kh_tree_read_next_element(&fd, value, status);
        if (node)
            *node = found;
        return *status;
    });
}

std::string next_value(const Document& document, const char* element)
{
    long fd = document.fd;
    return text_of(
        [&](char** value, long* status) { kh_tree_read_string_element_value(&fd, element, value, status); });
}

/// A block of the caller's, as an earlier read would have left it.
char* earlier_result()
{
    return strdup("earlier");
}

const std::string three = "<r><a/><x>1</x><b><x>2</x></b><x>3</x></r>";

} // namespace

// ---- The name under the cursor

TEST(CurrentElementName, IsTheCursorsAndLeavesItThere)
{
    const Document document("<r><p:x xmlns:p='urn:p'/></r>");
    Text name;
    EXPECT_EQ(read_name(document.fd, name.out()), success);
    EXPECT_EQ(name.string(), "r");
    EXPECT_EQ(document.current(), document.root());

    document.slot()->current = document.root()->children;
    EXPECT_EQ(read_name(document.fd, name.out()), success);
    EXPECT_EQ(name.string(), "x") << "a name comes without its prefix";
}

TEST(CurrentElementName, ReleasesTheEarlierResult)
{
    const std::string long_name(1000, 'n');
    const Document document("<" + long_name + "/>");
    Text name;
    expect_no_block_left_by([&] {
        long fd = document.fd;
        long status = 0;
        kh_tree_get_current_element_name(&fd, name.out(), &status);
    });
    EXPECT_EQ(name.string(), long_name);
}

TEST(CurrentElementName, RefusesANullOutput)
{
    const Document document("<r/>");
    EXPECT_EQ(read_name(document.fd, nullptr), missing_argument("kh_tree_get_current_element_name"));
}

TEST(CurrentElementName, ReportsANullCursor)
{
    const Document document("<r/>");
    document.slot()->current = nullptr;
    Text name;
    EXPECT_EQ(read_name(document.fd, name.out()),
              failure(KH_ERR_NO_CURRENT, "kh_tree_get_current_element_name"));
    EXPECT_EQ(name.value, nullptr);
}

TEST(CurrentElementName, ReportsACursorThatIsNoElementAndKeepsTheEarlierResult)
{
    for (const char* child : {"text", "<![CDATA[data]]>", "<!-- comment -->", "<?instruction data?>"}) {
        SCOPED_TRACE(child);
        const Document document("<r>" + std::string(child) + "</r>");
        document.slot()->current = document.root()->children;
        Text name;
        name.value = earlier_result();
        EXPECT_EQ(read_name(document.fd, name.out()),
                  failure(KH_ERR_NOT_ELEMENT, "kh_tree_get_current_element_name"));
        EXPECT_EQ(name.string(), "earlier");
    }
}

// ---- The value under the cursor

TEST(CurrentElementValue, LeavesCursorTagAndCountAlone)
{
    const Document document(three);
    ASSERT_EQ(next_value(document, "x"), "1");
    const xmlNode* cursor = document.current();
    Text value;
    EXPECT_EQ(read_current(document.fd, value.out()), success);
    EXPECT_EQ(value.string(), "1");
    EXPECT_EQ(document.current(), cursor);
    EXPECT_STREQ(document.slot()->requested_tag, "x");
    EXPECT_EQ(document.slot()->visited, 2);
}

TEST(CurrentElementValue, NamesTheNodeThatIsNoElement)
{
    const std::pair<const char*, const char*> nodes[] = {
        {"words", "text"}, {"<!-- c -->", "comment"}, {"<?target data?>", "target"}};
    for (auto [child, name] : nodes) {
        const Document document("<r>" + std::string(child) + "</r>");
        document.slot()->current = document.root()->children;
        Text value;
        EXPECT_EQ(read_current(document.fd, value.out()),
                  failure(KH_ERR_NOT_ELEMENT, "kh_tree_get_current_element_value",
                          ". Element: " + std::string(name) + "."));
        EXPECT_EQ(value.value, nullptr);
    }
}

TEST(CurrentElementValue, IsAnEmptyTextForAnElementWithoutChild)
{
    const Document document("<r></r>");
    Text value;
    EXPECT_EQ(read_current(document.fd, value.out()),
              failure(KH_ERR_NO_VALUE, "kh_tree_get_current_element_value", ". Element: r."));
    EXPECT_EQ(value.string(), "");
}

TEST(CurrentElementValue, IsNotWrittenForAnElementWithTwoChildren)
{
    for (const char* children : {"1<y/>", "<y/>1", "<y/><y/>", "a<![CDATA[b]]>", "1<!-- one -->"}) {
        SCOPED_TRACE(children);
        const Document document("<r>" + std::string(children) + "</r>");
        char* value = earlier_result();
        EXPECT_EQ(read_current(document.fd, &value),
                  failure(KH_ERR_NOT_TERMINAL, "kh_tree_get_current_element_value", ". Element: r."));
        EXPECT_STREQ(value, "earlier");
        free(value);
    }
}

TEST(CurrentElementValue, RefusesANullOutput)
{
    const Document document("<r>1</r>");
    EXPECT_EQ(read_current(document.fd, nullptr), missing_argument("kh_tree_get_current_element_value"));
}

TEST(CurrentElementValue, ReportsANullCursor)
{
    const Document document("<r>1</r>");
    document.slot()->current = nullptr;
    Text value;
    EXPECT_EQ(read_current(document.fd, value.out()),
              failure(KH_ERR_NO_CURRENT, "kh_tree_get_current_element_value"));
    EXPECT_EQ(value.value, nullptr);
}

// Callers keep several results by reusing one pointer, and free each themselves.
TEST(TextReads, LeaveTheEarlierBlockToTheCaller)
{
    const Document document("<r><x a='1'>1</x></r>");
    long fd = document.fd;
    long status = 0;
    const std::function<void(char**)> reads[] = {
        [&](char** value) { kh_tree_read_string_element_value(&fd, "x", value, &status); },
        [&](char** value) { kh_tree_get_current_element_value(&fd, value, &status); },
        [&](char** value) { kh_tree_read_string_attribute(&fd, "x", "a", value, &status); },
        [&](char** value) {
            kh_tree_rewind(&fd, &status);
            kh_tree_read_next_element(&fd, value, &status);
        }};
    for (const auto& read : reads) {
        char* earlier = earlier_result();
        Text value;
        value.value = earlier;
        read(value.out());
        EXPECT_EQ(value.string(), "1");
        EXPECT_STREQ(earlier, "earlier");
        free(earlier);
    }
}

// ---- The next element of the requested tag

TEST(NextElement, WalksTheElementsOfTheTagAndEndsWithoutAStatus)
{
    const Document document(three);
    long fd = document.fd;
    kh_tree_set_requested_tag(&fd, "x");
    for (const char* expected : {"1", "2", "3"}) {
        Text value;
        xmlNode* node = nullptr;
        EXPECT_EQ(read_next(fd, value.out(), &node), success);
        EXPECT_EQ(value.string(), expected);
        EXPECT_EQ(node, document.current());
    }
    const xmlNode* last = document.current();
    Text value;
    xmlNode* node = document.root();
    EXPECT_EQ(read_next(fd, value.out(), &node), success);
    EXPECT_EQ(node, nullptr);
    EXPECT_EQ(value.value, nullptr);
    EXPECT_EQ(document.current(), last);
}

TEST(NextElement, PassesOnWhatItsValueReports)
{
    const Document document("<r><x/><x>1<y/></x><x>3</x></r>");
    long fd = document.fd;
    kh_tree_set_requested_tag(&fd, "x");
    const auto unreadable = [](long code) {
        return passed_on(failure(code, "kh_tree_get_current_element_value", ". Element: x."),
                         "kh_tree_read_next_element");
    };
    xmlNode* node = nullptr;
    Text empty;
    EXPECT_EQ(read_next(fd, empty.out(), &node), unreadable(KH_ERR_NO_VALUE));
    EXPECT_EQ(empty.string(), "");
    EXPECT_EQ(node, document.root()->children);

    Text unwritten;
    EXPECT_EQ(read_next(fd, unwritten.out(), &node), unreadable(KH_ERR_NOT_TERMINAL));
    EXPECT_EQ(unwritten.value, nullptr);
    EXPECT_EQ(node, document.current());

    Text third;
    EXPECT_EQ(read_next(fd, third.out()), success) << "a failure ends nothing";
    EXPECT_EQ(third.string(), "3");
}

TEST(NextElement, IsNoneWithoutARequestedTag)
{
    const Document document(three);
    Text value;
    xmlNode* node = document.root();
    EXPECT_EQ(read_next(document.fd, value.out(), &node), success);
    EXPECT_EQ(node, nullptr);
}

TEST(NextElement, SurvivesABadDescriptorAndNullArguments)
{
    for_each_bad_descriptor([](long fd, long code) {
        Text value;
        xmlNode* node = nullptr;
        EXPECT_EQ(read_next(fd, value.out(), &node), failure(code, "kh_tree_read_next_element"));
        EXPECT_EQ(node, nullptr);
        EXPECT_EQ(value.value, nullptr);
    });
    long status = 99;
    Text value;
    EXPECT_EQ(kh_tree_read_next_element(nullptr, value.out(), &status), nullptr);
    EXPECT_EQ(status, KH_ERR_ARGUMENT);

    const Document document(three);
    long fd = document.fd;
    kh_tree_set_requested_tag(&fd, "x");
    kh_tree_read_next_element(&fd, nullptr, &status);
    EXPECT_EQ(status, KH_ERR_ARGUMENT);
}

// ---- Elements found by name

TEST(ElementValue, YieldsTheOccurrencesInDocumentOrderAndThenReports)
{
    const Document document(three);
    for (const char* expected : {"1", "2", "3"})
        EXPECT_EQ(next_value(document, "x"), expected);
    const xmlNode* last = document.current();
    Text value;
    EXPECT_EQ(read_element(document.fd, "x", value.out()),
              passed_on(failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_element_node"),
                        "kh_tree_read_string_element_value"));
    EXPECT_EQ(value.value, nullptr);
    EXPECT_EQ(document.current(), last);
}

TEST(ElementValue, TakesTheTagOfThePreviousReadForANullName)
{
    const Document document(three);
    ASSERT_EQ(next_value(document, "x"), "1");
    EXPECT_EQ(document.slot()->visited, 2) << "the elements stepped over, and the one found";
    EXPECT_EQ(next_value(document, nullptr), "2");
    EXPECT_EQ(document.slot()->visited, 4) << "a null name goes on counting";
    EXPECT_EQ(next_value(document, "x"), "3");
    EXPECT_EQ(document.slot()->visited, 1) << "a name starts the count again";
}

TEST(ElementValue, ReportsThatNoTagWasEverRequested)
{
    const Document document(three);
    Text value;
    EXPECT_EQ(read_element(document.fd, nullptr, value.out()),
              passed_on(failure(KH_ERR_NO_REQUEST, "kh_tree_go_to_element_node"),
                        "kh_tree_read_string_element_value"));
    EXPECT_EQ(document.current(), document.root());
}

TEST(ElementValue, FindsOnlyWhatFollowsTheCursor)
{
    Document document("<r><x>1</x><y>2</y></r>");
    ASSERT_EQ(next_value(document, "y"), "2");
    EXPECT_EQ(next_value(document, "x"), "status -11");
    EXPECT_EQ(document.current_name(), "y");
    EXPECT_STREQ(document.slot()->requested_tag, "x") << "the tag is kept, also of a search that failed";
    ASSERT_EQ(kh_tree_rewind(&document.fd, &document.status), KH_OK);
    EXPECT_EQ(next_value(document, nullptr), "1");
}

TEST(ElementValue, NeverFindsTheElementUnderTheCursor)
{
    const Document root_alone("<x>root</x>");
    EXPECT_EQ(next_value(root_alone, "x"), "status -11");
    const Document nested("<x><x>inner</x></x>");
    EXPECT_EQ(next_value(nested, "x"), "inner");
}

TEST(ElementValue, ComparesNamesByteForByte)
{
    const Document document("<r><X>1</X><xx>2</xx><x>3</x></r>");
    EXPECT_EQ(next_value(document, "x"), "3");
}

TEST(ElementValue, DoesNotSearchInsideAnEntity)
{
    const Document document("<!DOCTYPE r [<!ENTITY e '<x>inside</x>'>]><r>&e;<x>outside</x></r>");
    EXPECT_EQ(next_value(document, "x"), "outside");
    EXPECT_EQ(next_value(document, "x"), "status -11");
}

TEST(ElementValue, PassesOnAnElementWithoutValueAndStaysOnIt)
{
    const Document document("<r><x></x></r>");
    Text value;
    EXPECT_EQ(read_element(document.fd, "x", value.out()),
              passed_on(failure(KH_ERR_NO_VALUE, "kh_tree_get_current_element_value", ". Element: x."),
                        "kh_tree_read_string_element_value"));
    EXPECT_EQ(value.string(), "");
    EXPECT_EQ(document.current_name(), "x");
}

TEST(ElementValue, PassesOnAnElementWithTwoChildrenAndStaysOnIt)
{
    const Document document("<r><x>1<y/></x></r>");
    Text value;
    EXPECT_EQ(read_element(document.fd, "x", value.out()),
              passed_on(failure(KH_ERR_NOT_TERMINAL, "kh_tree_get_current_element_value", ". Element: x."),
                        "kh_tree_read_string_element_value"));
    EXPECT_EQ(value.value, nullptr);
    EXPECT_EQ(document.current_name(), "x");
}

TEST(ElementValue, RefusesANullOutputBeforeItSearches)
{
    const Document document(three);
    EXPECT_EQ(read_element(document.fd, "x", nullptr), missing_argument("kh_tree_read_string_element_value"));
    EXPECT_EQ(document.current(), document.root());
    EXPECT_EQ(document.slot()->requested_tag, nullptr);
}

// ---- What a value is, whichever way it is read

struct Content {
    const char* child;
    const char* value;
};

TEST(Content, OfTheOnlyChildIsTheValueForEveryRead)
{
    const Content contents[] = {{"1", "1"},
                                {" \n spaced\t", " \n spaced\t"},
                                {"a&amp;b&#65;&lt;", "a&bA<"},
                                {"<![CDATA[a<b&c]]>", "a<b&c"},
                                {"<!-- c -->", " c "},
                                {"<?target some data?>", "some data"},
                                {"<y>inner</y>", ""},
                                {"<y/>", ""},
                                {"&flat;", "replacement"},
                                {"&nested;", "A&amp;B&flat;"},
                                {"&undeclared;", ""},
                                {"\xC3\xA9\xE2\x82\xAC", "\xC3\xA9\xE2\x82\xAC"}};
    using Read = std::function<long(long* fd, char** value, long* status)>;
    const auto only_entry = [](const auto& array, long fd, const char* what, char** value, long* status) {
        Array<Texts> read;
        array.call(&fd, what, &read.values, &read.count, status);
        *value = read.count == 1 ? strdup(read.values[0]) : nullptr;
        return *status;
    };
    const std::pair<const char*, Read> reads[] = {
        {"by name", [](long* fd, char** value,
                       long* status) { return kh_tree_read_string_element_value(fd, "x", value, status); }},
        {"current",
         [](long* fd, char** value, long* status) {
             kh_tree_go_to_element_node(fd, "x", status);
             return kh_tree_get_current_element_value(fd, value, status);
         }},
        {"next",
         [](long* fd, char** value, long* status) {
             kh_tree_set_requested_tag(fd, "x");
             kh_tree_read_next_element(fd, value, status);
             return *status;
         }},
        {"by path",
         [](long* fd, char** value, long* status) {
             return kh_tree_path_read_string_node_value(fd, "/r/x", value, status);
         }},
        {"array by name",
         [&](long* fd, char** value, long* status) {
             return only_entry(Texts::element_array, *fd, "x", value, status);
         }},
        {"array by path", [&](long* fd, char** value, long* status) {
             return only_entry(Texts::node_array, *fd, "/r/x[*]", value, status);
         }}};
    for (const auto& [child, expected] : contents)
        for (const auto& [way, read] : reads) {
            SCOPED_TRACE(std::string(child) + " " + way);
            const Document document("<!DOCTYPE r SYSTEM 'none.dtd' [<!ENTITY flat 'replacement'>"
                                    "<!ENTITY nested 'A&amp;B&flat;'>]><r><x>" +
                                    std::string(child) + "</x></r>");
            Text value;
            EXPECT_EQ(call_of([&, &call = read](long* status) {
                          long fd = document.fd;
                          return call(&fd, value.out(), status);
                      }),
                      success);
            EXPECT_EQ(value.string(), expected);
        }
}

TEST(CurrentElement, ReportsABadDescriptor)
{
    const auto expect_failure = [](long* fd, const Outcome& name_failure, const Outcome& value_failure) {
        Text text;
        EXPECT_EQ(
            call_of([&](long* status) { return kh_tree_get_current_element_name(fd, text.out(), status); }),
            name_failure);
        EXPECT_EQ(
            call_of([&](long* status) { return kh_tree_get_current_element_value(fd, text.out(), status); }),
            value_failure);
        EXPECT_EQ(text.value, nullptr);
    };
    for_each_bad_descriptor([&](long fd, long code) {
        expect_failure(&fd, failure(code, "kh_tree_get_current_element_name"),
                       failure(code, "kh_tree_get_current_element_value"));
    });
    expect_failure(nullptr, missing_argument("kh_tree_get_current_element_name"),
                   missing_argument("kh_tree_get_current_element_value"));
}

TEST(TextReads, TolerateANullStatusWord)
{
    const Document document(three);
    long fd = document.fd;
    Text value;
    EXPECT_EQ(kh_tree_read_string_element_value(&fd, "x", value.out(), nullptr), KH_OK);
    EXPECT_EQ(value.string(), "1");
    EXPECT_EQ(kh_tree_get_current_element_name(&fd, value.out(), nullptr), KH_OK);
    EXPECT_EQ(value.string(), "x");
    EXPECT_EQ(kh_tree_read_string_element_value(&fd, "none", value.out(), nullptr), KH_ERR_NOT_FOUND);
    EXPECT_EQ(kh_tree_read_string_attribute(&fd, "x", "none", value.out(), nullptr), KH_ERR_NO_ATTRIBUTE);
}
