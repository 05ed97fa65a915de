// Attributes of the element under the cursor or of the next one of a name.
#include "read/read_support.h"

#include <ctime>

using namespace reading;
using namespace support;

namespace {

constexpr const char* function = "kh_tree_read_string_attribute";

Outcome read_attribute(long fd, const char* element, const char* attribute, char** value)
{
    return call_of(
        [&](long* status) { return kh_tree_read_string_attribute(&fd, element, attribute, value, status); });
}

std::string attribute_of(const Document& document, const char* element, const char* attribute)
{
    long fd = document.fd;
    return text_of([&](char** value, long* status) {
        kh_tree_read_string_attribute(&fd, element, attribute, value, status);
    });
}

std::string repeated(const std::string& piece, int times)
{
    std::string text;
    text.reserve(piece.size() * static_cast<std::size_t>(times));
    while (times-- > 0)
        text += piece;
    return text;
}

/// A document whose attribute "a" has a value with references to an entity "e" of 1000 bytes.
std::string with_entity_in_attribute(const std::string& value)
{
    return "<!DOCTYPE r [<!ENTITY e '" + std::string(1000, 'v') + "'>]><r a='" + value + "'/>";
}

} // namespace

TEST(Attribute, IsTheCursorElementsOwnWhenItHasTheName)
{
    const Document document("<r a='root'><r a='inner'/></r>");
    EXPECT_EQ(attribute_of(document, "r", "a"), "root");
    EXPECT_EQ(attribute_of(document, "r", "a"), "root") << "a repeated read stays on the element";
    EXPECT_EQ(document.current(), document.root());
    EXPECT_EQ(document.slot()->visited, 0);
}

TEST(Attribute, IsElseTheNextElementsOfTheName)
{
    const Document document("<r a='root'><y/><x a='1'/><x a='2'/></r>");
    EXPECT_EQ(attribute_of(document, "x", "a"), "1");
    EXPECT_EQ(document.current_name(), "x");
    EXPECT_EQ(document.slot()->visited, 2);
    EXPECT_EQ(document.path(), "/r/x[1]");
}

TEST(Attribute, BelongsToTheElementJustReadForANullName)
{
    Document document("<r><x a='1'>one</x><x a='2'>two</x></r>");
    const auto next_x = [&] {
        return text_of([&](char** value, long* status) {
            kh_tree_read_string_element_value(&document.fd, "x", value, status);
        });
    };
    ASSERT_EQ(next_x(), "one");
    EXPECT_EQ(attribute_of(document, nullptr, "a"), "1");
    ASSERT_EQ(next_x(), "two");
    EXPECT_EQ(attribute_of(document, nullptr, "a"), "2");
    ASSERT_EQ(kh_tree_rewind(&document.fd, &document.status), KH_OK);
    EXPECT_EQ(attribute_of(document, nullptr, "a"), "1") << "the cursor's element has another name";
}

TEST(Attribute, IsNotSoughtOnANodeThatIsNoElement)
{
    const Document document("<r>words<text a='1'/></r>");
    document.slot()->current = document.root()->children;
    EXPECT_EQ(attribute_of(document, "text", "a"), "1");
}

TEST(Attribute, NeedsATag)
{
    const Document document("<r a='1'/>");
    Text value;
    EXPECT_EQ(read_attribute(document.fd, nullptr, "a", value.out()), failure(KH_ERR_NO_REQUEST, function));
    EXPECT_EQ(value.value, nullptr);
}

TEST(Attribute, ReportsThatNoElementOfTheNameFollows)
{
    const Document document("<r a='1'><x a='1'/></r>");
    Text value;
    EXPECT_EQ(read_attribute(document.fd, "y", "a", value.out()), failure(KH_ERR_NOT_FOUND, function));
    EXPECT_EQ(value.value, nullptr);
    EXPECT_EQ(document.current(), document.root());
    EXPECT_STREQ(document.slot()->requested_tag, "y");
}

TEST(Attribute, ReportsElementAndNameWhenItIsAbsent)
{
    const Document document("<r><x b='1' xmlns='urn:x'/><x a='2'/></r>");
    for (const char* absent : {"a", "A", "xmlns", ""}) {
        Text value;
        EXPECT_EQ(read_attribute(document.fd, "x", absent, value.out()),
                  failure(KH_ERR_NO_ATTRIBUTE, function,
                          ". Element name: x, and attribute name: " + std::string(absent)));
        EXPECT_EQ(value.value, nullptr);
        EXPECT_EQ(document.path(), "/r/x[1]") << "the next element of the name is not asked";
    }
}

TEST(Attribute, NeedsACursorANameAndAnOutput)
{
    const Document document("<r a='1'/>");
    Text value;
    EXPECT_EQ(read_attribute(document.fd, "r", nullptr, value.out()), missing_argument(function));
    EXPECT_EQ(read_attribute(document.fd, "r", "a", nullptr), missing_argument(function));
    EXPECT_EQ(document.slot()->requested_tag, nullptr) << "refused before the tag is set";

    document.slot()->current = nullptr;
    EXPECT_EQ(read_attribute(document.fd, "r", nullptr, value.out()), failure(KH_ERR_NO_CURRENT, function));
    EXPECT_EQ(value.value, nullptr);
    long fd = document.fd;
    long number = 77;
    EXPECT_EQ(
        call_of([&](long* status) { return kh_tree_read_integer_attribute(&fd, "r", "a", &number, status); }),
        passed_on(failure(KH_ERR_NO_CURRENT, function), "kh_tree_read_integer_attribute"));
    EXPECT_EQ(number, 77);
}

TEST(Attribute, CountsFromZeroAgainWhereItsElementIsNamed)
{
    Document document("<r><x a='1'/></r>");
    long number = 0;
    for (const char* element : {"x", "x", static_cast<const char*>(nullptr)}) {
        kh_tree_rewind(&document.fd, nullptr);
        kh_tree_go_to_element_node(&document.fd, "x", nullptr);
        EXPECT_EQ(document.slot()->visited, 1);
        EXPECT_EQ(kh_tree_read_integer_attribute(&document.fd, element, "a", &number, nullptr), KH_OK);
        EXPECT_EQ(number, 1);
        EXPECT_EQ(document.slot()->visited, element ? 0 : 1);
    }
}

TEST(Attribute, ComesWithItsEntitiesExpanded)
{
    const Document document(
        "<!DOCTYPE r [<!ENTITY e 'val'><!ENTITY n 'A&e;B'><!ATTLIST r d CDATA 'default'>]>"
        "<r xmlns:p='urn:p' one='1&e;2' nested='&n;' plain='&lt;&#65;&amp;' empty='' p:q='5'"
        " blanks=' a\n b '/>");
    const std::pair<const char*, const char*> expected[] = {
        {"one", "1val2"}, {"nested", "AvalB"}, {"plain", "<A&"},    {"empty", ""},
        {"d", "default"}, {"q", "5"},          {"blanks", " a  b "}};
    for (auto [name, value] : expected)
        EXPECT_EQ(attribute_of(document, "r", name), value) << name;
}

TEST(Attribute, WithoutAnyNodeIsTheEmptyText)
{
    const Document document("<r/>");
    xmlNewProp(document.root(), reinterpret_cast<const xmlChar*>("a"), nullptr);
    EXPECT_EQ(attribute_of(document, "r", "a"), "");
}

TEST(Attribute, IsExpandedUpToTenMillionBytes)
{
    const std::string references = repeated("&e;", 10000);
    const Document at_limit(with_entity_in_attribute(references));
    EXPECT_EQ(attribute_of(at_limit, "r", "a").size(), 10000000u);

    const Document beyond(with_entity_in_attribute(references + "w"));
    long fd = beyond.fd;
    Text value;
    long status = 0;
    EXPECT_EQ(kh_tree_read_string_attribute(&fd, "r", "a", value.out(), &status), KH_ERR_MEMORY);
    EXPECT_EQ(value.value, nullptr);
}

TEST(Attribute, WithoutEntitiesHasNoLimit)
{
    const std::string text(11000000, 'v');
    const Document document("<r a='" + text + "'/>");
    EXPECT_TRUE(attribute_of(document, "r", "a") == text);
}

// Seeking the end of the text so far for every piece would take minutes.
TEST(Attribute, IsExpandedInLinearTime)
{
    const Document document("<!DOCTYPE r [<!ENTITY e '0123456789'>]><r a='" + repeated("&e;", 900000) +
                            "'/>");
    const std::clock_t begin = std::clock();
    EXPECT_EQ(attribute_of(document, "r", "a").size(), 9000000u);
    EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, 10);
}

TEST(Attribute, LeavesNoBlockBehind)
{
    const Document document("<r a='" + std::string(500, 'v') + "'/>");
    expect_no_block_left_by([&] {
        attribute_of(document, "r", "a");
        attribute_of(document, "r", "none");
        attribute_of(document, "none", "a");
        attribute_of(document, "r", nullptr);
    });
}

TEST(Attribute, LeavesOutEntitiesThatNobodyDeclares)
{
    const Document document("<!DOCTYPE r SYSTEM 'not there'><r a='x&e;y'/>");
    EXPECT_EQ(attribute_of(document, "r", "a"), "xy");
}
