// Arrays of all elements of a name, and of all nodes that a path with "[*]" names.
#include "read/read_support.h"

using namespace reading;
using namespace support;

namespace {

// The two families: the function of each kind, what it is asked for, and how it reports an element's failure.
struct ByName {
    static constexpr const char* elements = "x";
    template <class Kind>
    static constexpr auto function = Kind::element_array;
    static Outcome nothing_found(const char* reader)
    {
        return failure(KH_ERR_NOT_FOUND, reader, ". Element: x");
    }
    static Outcome bad_element(const char* reader, long code)
    {
        return passed_on(passed_on(failure(code, "kh_tree_get_current_element_value", ". Element: x."),
                                   "kh_tree_read_next_element"),
                         reader);
    }
    static constexpr bool allocates_before_it_searches = true;
};
struct ByPath {
    static constexpr const char* elements = "/r/x[*]";
    template <class Kind>
    static constexpr auto function = Kind::node_array;
    static Outcome nothing_found(const char* reader) { return failure(KH_ERR_NOT_FOUND, reader); }
    static Outcome bad_element(const char* reader, long code)
    {
        return failure(code, reader, ". Element: x.");
    }
    static constexpr bool allocates_before_it_searches = false;
};

template <class KindOfValue, class Family>
struct Variant {
    using Kind = KindOfValue;
    static constexpr auto text = Family::template function<Texts>;
    static constexpr auto function = Family::template function<Kind>;
    static constexpr const char* elements = Family::elements;
    static constexpr bool leaves_empty_array = Family::allocates_before_it_searches && !Kind::are_numbers;

    static Outcome read(long fd, Array<Kind>& array, const char* what = elements)
    {
        return call_of(
            [&](long* status) { return function.call(&fd, what, &array.values, &array.count, status); });
    }
    /// What the function of texts reports, as it is seen by this one.
    static Outcome seen(const Outcome& outcome) { return seen_by<Kind>(outcome, function.name); }
    static Outcome failed(long code) { return seen(failure(code, text.name)); }
    static Outcome nothing_found() { return seen(Family::nothing_found(text.name)); }
    static Outcome bad_element(long code) { return seen(Family::bad_element(text.name, code)); }

    /// The values of elements that hold 1, 2, ...
    static auto numbered(long count)
    {
        decltype(Array<Kind>().all()) values;
        for (long i = 1; i <= count; ++i)
            if constexpr (Kind::are_numbers)
                values.push_back(static_cast<typename Kind::Value>(i));
            else
                values.push_back(std::to_string(i));
        return values;
    }
};

template <class Variant>
class ArrayRead : public testing::Test {
};
using Variants = testing::Types<Variant<Texts, ByName>, Variant<Integers, ByName>, Variant<Reals, ByName>,
                                Variant<Texts, ByPath>, Variant<Integers, ByPath>, Variant<Reals, ByPath>>;
TYPED_TEST_SUITE(ArrayRead, Variants, );

template <class Variant>
class NumberArray : public testing::Test {
};
using NumberVariants = testing::Types<Variant<Integers, ByName>, Variant<Reals, ByName>,
                                      Variant<Integers, ByPath>, Variant<Reals, ByPath>>;
TYPED_TEST_SUITE(NumberArray, NumberVariants, );

std::string elements_up_to(long count)
{
    std::string xml = "<r>";
    for (long i = 1; i <= count; ++i)
        xml += "<x>" + std::to_string(i) + "</x>";
    return xml + "</r>";
}

/// Two values, and a third element that has none to give.
const std::pair<const char*, long> broken_off[] = {
    {"<r><x>1</x><x>2</x><x></x><x>4</x><x>5</x></r>", KH_ERR_NO_VALUE},
    {"<r><x>1</x><x>2</x><x>3<y/></x><x>4</x><x>5</x></r>", KH_ERR_NOT_TERMINAL}};

using TextsByName = Variant<Texts, ByName>;
using TextsByPath = Variant<Texts, ByPath>;

std::vector<std::string> texts_of(const Document& document, const char* path)
{
    Array<Texts> array;
    EXPECT_EQ(TextsByPath::read(document.fd, array, path), success) << path;
    return array.all();
}

using Strings = std::vector<std::string>;

} // namespace

// ---- All six functions

TYPED_TEST(ArrayRead, HoldsEveryValueInOrderAndIsCutToItsCount)
{
    for (long number : {1L, 2L, 99L, 100L, 101L, 199L, 200L, 201L, 250L, 400L, 401L}) {
        SCOPED_TRACE(number);
        const Document document(elements_up_to(number));
        Array<typename TypeParam::Kind> array;
        EXPECT_EQ(TypeParam::read(document.fd, array), success);
        ASSERT_EQ(array.count, number);
        EXPECT_EQ(array.all(), TypeParam::numbered(number));
        EXPECT_TRUE(has_room_for(array.values, number));
        EXPECT_EQ(document.path(), number == 1 ? "/r/x" : "/r/x[" + std::to_string(number) + "]");
        EXPECT_STREQ(document.slot()->requested_tag, "x");
    }
}

TYPED_TEST(ArrayRead, ResizesTheArrayOfAnEarlierCall)
{
    const Document many(elements_up_to(300));
    const Document few(elements_up_to(3));
    Array<typename TypeParam::Kind> array;
    for (const Document* document : {&many, &few, &many}) {
        array.free_entries();
        ASSERT_EQ(TypeParam::read(document->fd, array), success);
        EXPECT_EQ(array.all(), TypeParam::numbered(document == &few ? 3 : 300));
        EXPECT_TRUE(has_room_for(array.values, array.count));
    }
}

TYPED_TEST(ArrayRead, ReportsAnElementWithoutValueAndTellsHowManyCameBefore)
{
    for (auto [xml, code] : broken_off) {
        SCOPED_TRACE(xml);
        const Document document(xml);
        Array<typename TypeParam::Kind> array;
        EXPECT_EQ(TypeParam::read(document.fd, array), TypeParam::bad_element(code));
        EXPECT_EQ(array.count, 2);
        EXPECT_EQ(document.path(), "/r/x[3]");
        if (TypeParam::Kind::are_numbers) {
            EXPECT_EQ(array.values, nullptr) << "texts that were not all read are not converted";
        } else {
            EXPECT_EQ(array.all(), TypeParam::numbered(2));
            EXPECT_TRUE(has_room_for(array.values, 2));
        }
    }
}

TYPED_TEST(ArrayRead, ThatFailsOnTheFirstElementIsNotCut)
{
    const Document document("<r><x></x><x>2</x></r>");
    Array<typename TypeParam::Kind> array;
    EXPECT_EQ(TypeParam::read(document.fd, array), TypeParam::bad_element(KH_ERR_NO_VALUE));
    EXPECT_EQ(array.count, 0);
    if (TypeParam::Kind::are_numbers)
        EXPECT_EQ(array.values, nullptr);
    else
        EXPECT_TRUE(has_room_for(array.values, 100));
}

TYPED_TEST(ArrayRead, ReportsThatThereIsNoElement)
{
    const Document document("<r><y>1</y></r>");
    Array<typename TypeParam::Kind> array;
    EXPECT_EQ(TypeParam::read(document.fd, array), TypeParam::nothing_found());
    EXPECT_EQ(array.count, 0);
    EXPECT_EQ(document.current(), document.root());
    if (TypeParam::leaves_empty_array)
        EXPECT_TRUE(has_room_for(array.values, 100)) << "callers free it";
    else
        EXPECT_EQ(array.values, nullptr);
}

TYPED_TEST(ArrayRead, ChecksTheDescriptorFirst)
{
    for_each_bad_descriptor([](long fd, long code) {
        Array<typename TypeParam::Kind> array;
        array.count = 7;
        EXPECT_EQ(TypeParam::read(fd, array), TypeParam::failed(code));
        EXPECT_EQ(array.count, 0);
        EXPECT_EQ(array.values, nullptr);
        EXPECT_EQ(TypeParam::read(fd, array, nullptr), TypeParam::failed(code));
    });
}

TYPED_TEST(ArrayRead, NeedsItsArguments)
{
    Document document(elements_up_to(3));
    const auto outcome = [](long* fd, const char* what, auto* values, long* count) {
        return call_of(
            [&](long* status) { return TypeParam::function.call(fd, what, values, count, status); });
    };
    Array<typename TypeParam::Kind> array;
    decltype(&array.values) no_values = nullptr;
    const Outcome refused = TypeParam::seen(missing_argument(TypeParam::text.name));
    array.count = 7;
    EXPECT_EQ(outcome(&document.fd, TypeParam::elements, no_values, &array.count), refused);
    EXPECT_EQ(array.count, 0);
    EXPECT_EQ(outcome(&document.fd, nullptr, no_values, &array.count), refused);
    EXPECT_EQ(outcome(&document.fd, TypeParam::elements, &array.values, nullptr), refused);
    EXPECT_EQ(outcome(nullptr, TypeParam::elements, &array.values, &array.count), refused);
    EXPECT_EQ(outcome(&document.fd, nullptr, &array.values, &array.count),
              TypeParam::failed(KH_ERR_NO_REQUEST));
    EXPECT_EQ(array.values, nullptr);
    EXPECT_EQ(array.count, 0);
    EXPECT_EQ(document.slot()->requested_tag, nullptr);
}

TYPED_TEST(ArrayRead, LeavesNoBlockBehind)
{
    const std::string text(500, 'x');
    const Document whole("<r><x>1" + text + "</x><x>2" + text + "</x></r>");
    const Document unconvertible("<r><x>1</x><x>" + text + "</x></r>");
    const Document empty_element("<r><x>" + text + "</x><x/></r>");
    const Document none("<r/>");
    expect_no_block_left_by([&] {
        for (const Document* document : {&whole, &unconvertible, &empty_element, &none}) {
            long fd = document->fd;
            long status = 0;
            Array<typename TypeParam::Kind> array;
            TypeParam::function.call(&fd, TypeParam::elements, &array.values, &array.count, &status);
        }
    });
}

// ---- Conversion

TYPED_TEST(NumberArray, StopsAtTheFirstTextThatDoesNotConvert)
{
    using Kind = typename TypeParam::Kind;
    struct Refused {
        const char* text;
        long code;
        typename Kind::Value stored;
    };
    const Refused texts[] = {{"two", Kind::no_number, 0},
                             {Kind::too_large, KH_ERR_RANGE, Kind::too_large_gives}};
    for (const auto& [text, code, stored] : texts) {
        SCOPED_TRACE(text);
        const Document document("<r><x>1</x><x>" + std::string(text) + "</x><x>three</x></r>");
        Array<Kind> array;
        EXPECT_EQ(TypeParam::read(document.fd, array),
                  passed_on(failure(code, Kind::convert.name, ". Value: " + std::string(text)),
                            TypeParam::function.name));
        ASSERT_EQ(array.count, 3);
        ASSERT_NE(array.values, nullptr);
        EXPECT_EQ(array.values[0], 1);
        EXPECT_EQ(array.values[1], stored);
        EXPECT_GE(malloc_usable_size(array.values), 3 * sizeof(typename Kind::Value));
    }
}

TYPED_TEST(NumberArray, KeepsTheEarlierArrayWhenTheTextsCannotBeRead)
{
    const Document whole(elements_up_to(3));
    Array<typename TypeParam::Kind> array;
    ASSERT_EQ(TypeParam::read(whole.fd, array), success);
    const auto* earlier = array.values;
    const Document broken(broken_off[0].first);
    EXPECT_EQ(TypeParam::read(broken.fd, array).status, KH_ERR_NO_VALUE);
    EXPECT_EQ(array.values, earlier);
    EXPECT_EQ(array.values[2], 3);
}

// ---- Arrays by name

TEST(ArrayByName, StartsAtTheRootWhichIsNotInIt)
{
    Document document("<x><y><x>1</x></y><x>2</x><z/></x>");
    document.go_to("/x/z");
    Array<Texts> array;
    EXPECT_EQ(TextsByName::read(document.fd, array), success);
    EXPECT_EQ(array.all(), (Strings{"1", "2"}));
    EXPECT_EQ(document.path(), "/x/x");
    EXPECT_EQ(document.slot()->visited, 4) << "the search for a third one went on to the end";
}

TEST(ArrayByName, OfARealFileIsWhatTheParserHolds)
{
    const std::string file = debian_file("/usr/share/X11/xkb/rules/base.xml");
    if (file.empty())
        GTEST_SKIP() << "xkb-data is not installed";
    const Document document = Document::file(file);
    for (const char* name : {"name", "description", "iso639Id", "vendor"}) {
        Array<Texts> array;
        EXPECT_EQ(TextsByName::read(document.fd, array, name), success);
        EXPECT_EQ(array.all(), contents_of(document, "//" + std::string(name)));
        EXPECT_GT(array.count, 100) << name;
    }
}

// ---- Arrays by path

TEST(ArrayByPath, FollowsTheRestOfThePathBelowEachNode)
{
    Document document(
        "<r><x n='1'><v>a</v><w><v>A</v></w></x><other/><x n='2'><v>b</v><v>b2</v><w><v>B</v></w></x>"
        "<x n='3'><v>c</v><w><v>C</v></w></x></r>");
    const std::pair<const char*, Strings> rows[] = {
        {"/r/x[*]/v", {"a", "b", "c"}},
        {"/r/x[*]/w/v", {"A", "B", "C"}},
        {"/r/x[*]/./w/../v[1]", {"a", "b", "c"}},
        {"/r/x[*]/@n", {"1", "2", "3"}},
        {"/r/x[2]/v[*]", {"b", "b2"}},
        {"x[*]/v", {"a", "b", "c"}},
        {"other/../x[*]/@n", {"1", "2", "3"}},
        {"/r[*]/x[3]/v", {"c"}},
    };
    for (const auto& [path, expected] : rows) {
        document.go_to("/r");
        EXPECT_EQ(texts_of(document, path), expected) << path;
    }
}

TEST(ArrayByPath, LeavesTheCursorOnTheLastNodeReadAndItsIndexInTheStack)
{
    const Document document("<r><x><v>a</v></x><x><v>b</v></x><y/></r>");
    EXPECT_EQ(texts_of(document, "/r/x[*]/v"), (Strings{"a", "b"}));
    EXPECT_EQ(document.path(), "/r/x[2]/v");
    EXPECT_EQ(document.stack(), "r[0] x[1] v[0]");
    EXPECT_EQ(document.slot()->array_position, 1);
    EXPECT_STREQ(document.slot()->requested_tag, "v");
}

TEST(ArrayByPath, BreaksOffWhereTheRestOfThePathLeadsNowhere)
{
    const auto reader = Texts::node_array.name;
    struct Row {
        const char* path;
        Outcome outcome;
        Strings values;
        const char* cursor;
    };
    const auto not_found = [&](const std::string& path) {
        return failure(KH_ERR_NOT_FOUND, reader, ". Path: " + path);
    };
    const auto bad_element = [&](long code) { return failure(code, reader, ". Element: v."); };
    const Row rows[] = {
        {"/r/x[*]/missing", not_found("/r/x[*]/missing"), {"1", "2"}, "/r/x[3]"},
        {"/r/x[*]/@a", not_found("/r/x[*]/@a"), {"1", "2"}, "/r/x[3]"},
        {"/r/x[*]/v", bad_element(KH_ERR_NO_VALUE), {"1", "2"}, "/r/x[3]/v"},
        {"/r/y[*]/v", bad_element(KH_ERR_NOT_TERMINAL), {"1"}, "/r/y[2]/v"},
        {"/r/x[*]/none", not_found("/r/x[*]/none"), {}, "/r/x[1]"},
        {"/r/x[*]/@none", not_found("/r/x[*]/@none"), {}, "/r/x[1]"},
    };
    const std::string xml =
        "<r><x a='1'><missing>1</missing><v>1</v></x><x a='2'><missing>2</missing><v>2</v></x>"
        "<x><v/></x><x a='4'><missing>4</missing><v>4</v></x>"
        "<y><v>1</v></y><y><v>2<w/></v></y><y><v>3</v></y></r>";
    for (const auto& [path, outcome, values, cursor] : rows) {
        SCOPED_TRACE(path);
        const Document document(xml);
        Array<Texts> array;
        EXPECT_EQ(TextsByPath::read(document.fd, array, path), outcome);
        EXPECT_EQ(array.all(), values);
        EXPECT_EQ(document.path(), cursor);
        EXPECT_TRUE(has_room_for(array.values, values.empty() ? 100 : array.count));
    }
}

TEST(ArrayByPath, RefusesAPathThatNamesNoArray)
{
    const auto reader = Texts::node_array.name;
    const auto bad_path = [&](const std::string& path) {
        return passed_on(failure(KH_ERR_ARGUMENT, "kh_tree_chop_path", ". Bad path: " + path), reader);
    };
    const std::pair<const char*, Outcome> rows[] = {
        {"/r/x", failure(KH_ERR_ARGUMENT, reader, ". Bad path for array: /r/x")},
        {"/r/x[1]/@a", failure(KH_ERR_ARGUMENT, reader, ". Bad path for array: /r/x[1]/@a")},
        {"/r/x[*]/v[*]", bad_path("/r/x[*]/v[*]")},
        {"", bad_path("")},
        {".x[*]", bad_path(".x[*]")},
        {"/q/x[*]",
         passed_on(failure(KH_ERR_ARGUMENT, "kh_tree_go_to_stack_array_node", ". Bad root element: q"),
                   reader)},
        {"/r/none[*]/v", failure(KH_ERR_NOT_FOUND, reader)},
        {"/r/none/x[*]", failure(KH_ERR_NOT_FOUND, reader)},
    };
    for (const auto& [path, outcome] : rows) {
        SCOPED_TRACE(path);
        const Document document(elements_up_to(3));
        Array<Texts> array;
        EXPECT_EQ(TextsByPath::read(document.fd, array, path), outcome);
        EXPECT_EQ(array.count, 0);
        EXPECT_EQ(array.values, nullptr);
        EXPECT_EQ(document.current(), document.root());
    }
}

TEST(ArrayByPath, OfAttributesHoldsTheContentOfTheirFirstNode)
{
    const Document document("<!DOCTYPE r [<!ENTITY e 'val'>]>"
                            "<r><x a='1&e;2'/><x a='&e;'/><x a=''/><x/></r>");
    xmlNewProp(document.root()->last, reinterpret_cast<const xmlChar*>("a"), nullptr);
    EXPECT_EQ(texts_of(document, "/r/x[*]/@a"), (Strings{"1", "val", "", ""}));
}

TEST(ArrayByPath, AboveTheRootComesWithAWarning)
{
    Document document(elements_up_to(2));
    document.go_to("/r/x");
    Array<Texts> array;
    EXPECT_EQ(TextsByPath::read(document.fd, array, "../../x[*]").status, KH_WARN_ROOT_REACHED);
    EXPECT_EQ(array.all(), (Strings{"1", "2"}));
}

TEST(ArrayByPath, OfARealFileIsWhatTheParserHolds)
{
    const std::string file = debian_file("/usr/share/X11/xkb/rules/base.xml");
    if (file.empty())
        GTEST_SKIP() << "xkb-data is not installed";
    const Document document = Document::file(file);
    const std::pair<const char*, const char*> paths[] = {
        {"/xkbConfigRegistry/modelList/model[*]/configItem/name",
         "/xkbConfigRegistry/modelList/model/configItem/name"},
        {"/xkbConfigRegistry/layoutList/layout[*]/configItem/description",
         "/xkbConfigRegistry/layoutList/layout/configItem/description"},
        {"/xkbConfigRegistry/layoutList/layout[2]/variantList/variant[*]/configItem/name",
         "/xkbConfigRegistry/layoutList/layout[2]/variantList/variant/configItem/name"},
        {"/xkbConfigRegistry/optionList/group[*]/@allowMultipleSelection",
         "/xkbConfigRegistry/optionList/group/@allowMultipleSelection"}};
    for (auto [path, expression] : paths) {
        const auto expected = contents_of(document, expression);
        EXPECT_GT(expected.size(), 1u) << path;
        EXPECT_EQ(texts_of(document, path), expected);
    }
}

TEST(ArrayAtTheRoot, HoldsItsValueHoweverOftenItIsRead)
{
    support::Document document("<r a='1'>2</r>");
    for (int i = 0; i < 500; ++i) {
        for (const auto& [path, expected] : {std::pair{"/r[*]/@a", 1L}, {"/r[*]", 2L}}) {
            long* values = nullptr;
            long count = 0;
            ASSERT_EQ(kh_tree_path_read_integer_node_array(&document.fd, path, &values, &count, nullptr),
                      KH_OK);
            ASSERT_EQ(std::vector<long>(values, values + count), std::vector<long>{expected});
            free(values);
        }
    }
}

TEST(ArrayOfALongPath, HoldsEveryValue)
{
    const auto item = [](const std::string& value) {
        return "<x><a><b><c><d><e f='" + value + "'>" + value + "</e></d></c></b></a></x>";
    };
    support::Document document("<r>" + item("1") + item("2") + item("3") + "</r>");
    for (const char* path : {"/r/x[*]/a/b/c/d/e", "/r/x[*]/a/b/c/d/e/@f"}) {
        long* values = nullptr;
        long count = 0;
        EXPECT_EQ(kh_tree_path_read_integer_node_array(&document.fd, path, &values, &count, nullptr), KH_OK);
        EXPECT_EQ(std::vector<long>(values, values + count), (std::vector<long>{1, 2, 3})) << path;
        free(values);
    }
}
