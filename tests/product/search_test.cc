// The search for a value, by element name and by path.
#include "product/calls.h"

#include <vector>

namespace {

using namespace product;
using namespace support;

constexpr const char* element_search = "kh_tree_find_string_value_element";
constexpr const char* path_search = "kh_tree_find_string_value_path";

const std::string three_items = "<r><Item>a</Item><Item>b</Item><Item>b</Item></r>";
const std::string list = "<Root><List><Item><Name>a</Name></Item><Item><Name>b</Name></Item><Other/>"
                         "<Item id='x'><Name>c</Name></Item><Item id='y'><Name>c</Name></Item></List></Root>";

using Search = decltype(kh_tree_find_string_value_element);

/// What a search leaves: its status, its report and the path.
struct Found {
    Outcome outcome = success;
    std::string path;
};

Found search(Document& document, Search* function, const char* where, const char* value)
{
    Found found;
    std::string buffer(1 << 16, '\0');
    buffer.replace(0, 9, "untouched");
    found.outcome = outcome(document, function, where, value, buffer.data());
    found.path = buffer.c_str();
    return found;
}

/// The path found; the report where the search fails.
std::string by_element(Document& document, const char* name, const char* value)
{
    const Found found = search(document, kh_tree_find_string_value_element, name, value);
    return found.outcome.status == KH_OK ? found.path : std::to_string(found.outcome.status);
}

std::string by_path(Document& document, const char* path, const char* value)
{
    const Found found = search(document, kh_tree_find_string_value_path, path, value);
    return found.outcome.status == KH_OK ? found.path : std::to_string(found.outcome.status);
}

/// A search that fails: its outcome, an untouched path and the cursor where it was.
void expect_failure(Document& document, Search* function, const char* where, const char* value,
                    const Outcome& expected)
{
    const xmlNode* before = document.current();
    const Found found = search(document, function, where, value);
    EXPECT_EQ(found.outcome, expected) << where;
    EXPECT_EQ(found.path, "untouched") << where;
    EXPECT_EQ(document.current(), before) << where;
}

Outcome no_further(const std::string& function)
{
    return passed_on(failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_element_node"), function);
}

const Outcome end_of_elements = no_further("kh_tree_read_string_element_value");

} // namespace

// ---- By element name

TEST(FindValueByElement, GoesFromMatchToMatch)
{
    Document document(three_items);
    const Found first = search(document, kh_tree_find_string_value_element, "Item", "b");
    EXPECT_EQ(first.outcome, success);
    EXPECT_EQ(first.path, "/r/Item[2]");
    EXPECT_EQ(cursor(document), "/r/Item[2]");
    EXPECT_EQ(by_element(document, "Item", "b"), "/r/Item[3]");
    EXPECT_EQ(cursor(document), "/r/Item[3]");
    expect_failure(document, kh_tree_find_string_value_element, "Item", "b",
                   passed_on({end_of_elements.status, end_of_elements.report}, element_search));
}

TEST(FindValueByElement, DoesNotRewind)
{
    Document document(three_items);
    document.go_to("/r/Item[1]");
    EXPECT_EQ(by_element(document, "Item", "a"), "-36") << "the element under the cursor is not looked at";
    EXPECT_EQ(cursor(document), "/r/Item[1]");
}

TEST(FindValueByElement, FindsElementsAtAnyDepth)
{
    Document document("<r><a><Item>1</Item><b><Item>2</Item></b></a><Item>3</Item></r>");
    EXPECT_EQ(by_element(document, "Item", "2"), "/r/a/b/Item");
    EXPECT_EQ(by_element(document, "Item", "3"), "/r/Item");
}

TEST(FindValueByElement, ComparesWholeValuesByteForByte)
{
    Document document("<r><x>b </x><x>B</x><x>bb</x><x> b</x><x>\xc3\xa9</x><x>a&amp;b</x><x>b</x></r>");
    EXPECT_EQ(by_element(document, "x", "b"), "/r/x[7]");
    kh_tree_rewind(&document.fd, &document.status);
    EXPECT_EQ(by_element(document, "x", "\xc3\xa9"), "/r/x[5]");
    EXPECT_EQ(by_element(document, "x", "a&b"), "/r/x[6]");
}

TEST(FindValueByElement, ReportsThatNoValueMatches)
{
    Document document(three_items);
    document.go_to("/r/Item[2]");
    expect_failure(document, kh_tree_find_string_value_element, "Item", "z",
                   in_turn(end_of_elements, failure(KH_ERR_VALUE_NOT_FOUND, element_search)));
}

TEST(FindValueByElement, PassesOnThatNoElementIsThere)
{
    Document document(three_items);
    for (const char* name : {"none", "r", ""})
        expect_failure(document, kh_tree_find_string_value_element, name, "a",
                       passed_on(end_of_elements, element_search));
}

TEST(FindValueByElement, StopsAtAValueThatCannotBeRead)
{
    const Outcome empty =
        passed_on(failure(KH_ERR_NO_VALUE, "kh_tree_get_current_element_value", ". Element: x."),
                  "kh_tree_read_string_element_value");
    Document at_once("<r><x/><x>b</x></r>");
    expect_failure(at_once, kh_tree_find_string_value_element, "x", "b", passed_on(empty, element_search));
    expect_failure(at_once, kh_tree_find_string_value_element, "x", "", passed_on(empty, element_search));

    Document later("<r><x>a</x><x/><x>b</x></r>");
    expect_failure(later, kh_tree_find_string_value_element, "x", "b",
                   in_turn(empty, failure(KH_ERR_VALUE_NOT_FOUND, element_search)));

    Document mixed("<r><x>a<y/></x><x>a</x></r>");
    expect_failure(mixed, kh_tree_find_string_value_element, "x", "a",
                   passed_on(passed_on(failure(KH_ERR_NOT_TERMINAL, "kh_tree_get_current_element_value",
                                               ". Element: x."),
                                       "kh_tree_read_string_element_value"),
                             element_search));
}

// An element whose only child is an element has the empty text.
TEST(FindValueByElement, FindsTheEmptyText)
{
    Document document("<r><x>a</x><x><y/></x></r>");
    EXPECT_EQ(by_element(document, "x", ""), "/r/x[2]");
}

TEST(FindValueByElement, WritesPathsOfAnyLength)
{
    std::string open, close, path;
    for (int i = 0; i < 300; ++i) {
        open += "<level" + std::to_string(i) + ">";
        close = "</level" + std::to_string(i) + ">" + close;
        path += "/level" + std::to_string(i);
    }
    Document document(open + "<x>a</x>" + close);
    EXPECT_EQ(by_element(document, "x", "a"), path + "/x");
}

TEST(FindValueByElement, MayTakeTheNameOfTheSearchBefore)
{
    Document document(three_items);
    ASSERT_EQ(by_element(document, "Item", "a"), "/r/Item[1]");
    EXPECT_EQ(by_element(document, document.slot()->requested_tag, "b"), "/r/Item[2]");
}

TEST(FindValueByElement, FindsNothingFromANullCursor)
{
    Document document(three_items);
    document.slot()->current = nullptr;
    expect_failure(document, kh_tree_find_string_value_element, "Item", "a",
                   passed_on(end_of_elements, element_search));
}

// ---- By path

TEST(FindValueByPath, NumbersTheFirstMatch)
{
    Document document(list);
    const Found found = search(document, kh_tree_find_string_value_path, "/Root/List/Item[*]/Name", "c");
    EXPECT_EQ(found.outcome, success);
    EXPECT_EQ(found.path, "/Root/List/Item[3]/Name");
    EXPECT_EQ(by_path(document, "/Root/List/Item[*]/Name", "a"), "/Root/List/Item[1]/Name");
}

TEST(FindValueByPath, GivesAPathThatLeadsThere)
{
    Document document(list);
    const std::string path = by_path(document, "/Root/List/Item[*]/Name", "b");
    Text value;
    EXPECT_EQ(status(document, kh_tree_path_read_string_node_value, path.c_str(), value.out()), KH_OK);
    EXPECT_EQ(value.string(), "b");
}

TEST(FindValueByPath, TakesEveryFormOfPath)
{
    Document document("<Root><List><A>0</A><A><Item>1</Item><Item>2</Item></A></List></Root>");
    document.go_to("/Root/List");
    EXPECT_EQ(by_path(document, "A[2]/Item[*]", "2"), "A[2]/Item[2]");
    document.go_to("/Root/List");
    EXPECT_EQ(by_path(document, "./A[2]/../A[2]/Item[*]", "1"), "./A[2]/../A[2]/Item[1]");
    EXPECT_EQ(by_path(document, "//Root//List/A[2]/Item[*]/", "2"), "//Root//List/A[2]/Item[2]/");
    EXPECT_EQ(by_path(document, "/Root/List/A[2]/Item[*", "2"), "/Root/List/A[2]/Item[2");
    EXPECT_EQ(by_path(document, "/Root/List/A[2][*]/Item[*]", "2"), "/Root/List/A[2][*]/Item[2]");
    EXPECT_EQ(by_path(document, "/Root/List/A[2]*/Item[*]*", "2"), "/Root/List/A[2]*/Item[2]*");
}

TEST(FindValueByPath, FindsAttributes)
{
    Document document("<r><i a='1'>9</i><i a='2'>8</i></r>");
    EXPECT_EQ(by_path(document, "/r/i[*]/@a", "2"), "/r/i[2]/@a");
    EXPECT_EQ(by_path(document, "/r/i[*]/@a", "8"), "-36");
}

TEST(FindValueByPath, LeavesTheCursorWhereTheArrayReadDoes)
{
    Document document(list);
    Document reference(list);
    ASSERT_EQ(by_path(document, "/Root/List/Item[*]/Name", "a"), "/Root/List/Item[1]/Name");
    char** values = nullptr;
    long count = 0;
    ASSERT_EQ(
        status(reference, kh_tree_path_read_string_node_array, "/Root/List/Item[*]/Name", &values, &count),
        KH_OK);
    for (long i = 0; i < count; ++i)
        free(values[i]);
    free(values);
    EXPECT_EQ(cursor(document), cursor(reference));
}

TEST(FindValueByPath, ReportsThatNoValueMatches)
{
    Document document(list);
    document.go_to("/Root/List/Other");
    for (const char* value : {"z", "", "C", "c "})
        expect_failure(document, kh_tree_find_string_value_path, "/Root/List/Item[*]/Name", value,
                       failure(KH_ERR_VALUE_NOT_FOUND, path_search));
}

TEST(FindValueByPath, PassesOnWhatTheArrayReadReports)
{
    const std::string reader = "kh_tree_path_read_string_node_array";
    Document document(list);
    document.go_to("/Root/List/Other");
    expect_failure(document, kh_tree_find_string_value_path, "/Root/List/Item/Name", "a",
                   passed_on(failure(KH_ERR_ARGUMENT, reader, ". Bad path for array: /Root/List/Item/Name"),
                             path_search));
    expect_failure(document, kh_tree_find_string_value_path, "/Root/List/None[*]", "a",
                   passed_on(failure(KH_ERR_NOT_FOUND, reader), path_search));
    expect_failure(document, kh_tree_find_string_value_path, "/Root/List[*]/Item[*]", "a",
                   passed_on(passed_on(failure(KH_ERR_ARGUMENT, "kh_tree_chop_path",
                                               ". Bad path: /Root/List[*]/Item[*]"),
                                       reader),
                             path_search));
    // The array read goes to the end before anything is compared.
    Document with_gap("<r><i>a</i><i/><i>b</i></r>");
    expect_failure(with_gap, kh_tree_find_string_value_path, "/r/i[*]", "a",
                   passed_on(failure(KH_ERR_NO_VALUE, reader, ". Element: i."), path_search));
}

// A warning is no success.
TEST(FindValueByPath, PassesOnThatThePathWentAboveTheRoot)
{
    Document document("<r><i>a</i></r>");
    document.go_to("/r/i");
    expect_failure(document, kh_tree_find_string_value_path, "../../i[*]", "a",
                   passed_on(passed_on(failure(KH_WARN_ROOT_REACHED, "kh_tree_go_to_parent"),
                                       "kh_tree_go_to_stack_array_node"),
                             path_search));
}

TEST(FindValueByPath, CountsBeyondTheFirstBlockOfTheArray)
{
    std::string xml = "<r>";
    for (int i = 1; i <= 250; ++i)
        xml += "<i>" + std::to_string(i) + "</i>";
    Document document(xml + "</r>");
    EXPECT_EQ(by_path(document, "/r/i[*]", "250"), "/r/i[250]");
    EXPECT_EQ(by_path(document, "/r/i[*]", "251"), "-36");
}

TEST(FindValueByPath, MayWriteOverItsPath)
{
    Document document(list);
    char buffer[64] = "/Root/List/Item[*]/Name";
    EXPECT_EQ(status(document, kh_tree_find_string_value_path, buffer, "b", buffer), KH_OK);
    EXPECT_STREQ(buffer, "/Root/List/Item[2]/Name");
}

// ---- Both

struct EitherSearch {
    const char* name;
    Search* function;
};

class FindValue : public testing::TestWithParam<EitherSearch> {};

TEST_P(FindValue, ChecksTheDescriptor)
{
    const auto [name, function] = GetParam();
    char path[64] = "untouched";
    for (const auto& [descriptor, code] :
         {std::pair{512L, KH_ERR_DESCRIPTOR}, {-1L, KH_ERR_DESCRIPTOR}, {511L, KH_ERR_NO_DOCUMENT}}) {
        long fd = descriptor;
        EXPECT_EQ(outcome_at(&fd, function, nullptr, nullptr, nullptr), failure(code, name));
        EXPECT_EQ(outcome_at(&fd, function, "/r/i[*]", "a", path), failure(code, name));
    }
    Document empty;
    EXPECT_EQ(outcome(empty, function, "/r/i[*]", "a", path), failure(KH_ERR_NO_ROOT, name));
    EXPECT_EQ(outcome_at(nullptr, function, "/r/i[*]", "a", path), missing_argument(name));
    EXPECT_STREQ(path, "untouched");
}

TEST_P(FindValue, NeedsItsArguments)
{
    const auto [name, function] = GetParam();
    Document document("<r><i>a</i></r>");
    ASSERT_EQ(by_element(document, "i", "a"), "/r/i"); // a tag that was requested before is no name
    char path[64] = "untouched";
    EXPECT_EQ(outcome(document, function, nullptr, "a", path), missing_argument(name));
    EXPECT_EQ(outcome(document, function, "/r/i[*]", nullptr, path), missing_argument(name));
    EXPECT_EQ(outcome(document, function, "/r/i[*]", "a", nullptr), missing_argument(name));
    EXPECT_STREQ(path, "untouched");
    EXPECT_EQ(cursor(document), "/r/i");
}

INSTANTIATE_TEST_SUITE_P(Either, FindValue,
                         testing::Values(EitherSearch{element_search, kh_tree_find_string_value_element},
                                         EitherSearch{path_search, kh_tree_find_string_value_path}),
                         [](const auto& search) { return std::string(search.param.name); });
