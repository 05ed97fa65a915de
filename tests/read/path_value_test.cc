// Values of the one node that a path names.
#include "read/read_support.h"

using namespace reading;
using namespace support;

namespace {

constexpr const char* function = Texts::node.name;

Outcome read_path(long fd, const char* path, char** value)
{
    return call_of([&](long* status) { return Texts::node.call(&fd, path, value, status); });
}

std::string value_at(const Document& document, const char* path)
{
    long fd = document.fd;
    return text_of([&](char** value, long* status) { Texts::node.call(&fd, path, value, status); });
}

const std::string lists =
    "<r top='t'><a><x>a1</x></a><b/><a id='two'><x>1</x><y>y</y><x>2</x><x>3</x></a></r>";

/// A path of as many steps to a child "a".
std::string steps(int count)
{
    std::string path;
    while (count-- > 0)
        path += "/a";
    return path;
}

/// A read that fails: where the cursor was, the path, what is reported, and where the cursor is then.
struct Failure {
    const char* from;
    const char* path;
    Outcome outcome;
    const char* cursor;
};

} // namespace

TEST(PathValue, IsThatOfTheNodeReached)
{
    struct Row {
        const char* from;
        const char* path;
        const char* value;
        const char* cursor;
    };
    const Row rows[] = {
        {"/r", "/r/a/x", "a1", "/r/a[1]/x"},
        {"/r", "/r/a[2]/x[3]", "3", "/r/a[2]/x[3]"},
        {"/r", "//r//a[2]/y/", "y", "/r/a[2]/y"},
        {"/r", "a[2]/x[2]", "2", "/r/a[2]/x[2]"},
        {"/r/a[2]", "x[2]", "2", "/r/a[2]/x[2]"},
        {"/r/a[2]/y", ".", "y", "/r/a[2]/y"},
        {"/r/a[2]/y", "./../x", "1", "/r/a[2]/x[1]"},
        {"/r/b", "../a[1]/x", "a1", "/r/a[1]/x"},
        {"/r/b", "/r/@top", "t", "/r"},
        {"/r", "a[2]/@id", "two", "/r/a[2]"},
        {"/r/a[2]", "@id", "two", "/r/a[2]"},
        {"/r/a[2]/y", "../@id", "two", "/r/a[2]"},
    };
    for (const auto& [from, path, expected, cursor] : rows) {
        SCOPED_TRACE(path);
        Document document(lists);
        document.go_to(from);
        Text value;
        EXPECT_EQ(read_path(document.fd, path, value.out()), success);
        EXPECT_EQ(value.string(), expected);
        EXPECT_EQ(document.path(), cursor);
    }
}

TEST(PathValue, ParsesThePathIntoTheStack)
{
    const Document document(lists);
    ASSERT_EQ(value_at(document, "/r/a[2]/x[3]"), "3");
    EXPECT_EQ(document.stack(), "r[0] a[1] x[2]");
    EXPECT_STREQ(document.slot()->requested_tag, "x");
    ASSERT_EQ(value_at(document, "/r/a[2]/@id"), "two");
    EXPECT_EQ(document.stack(), "r[0] a[1] @id[0]");
    EXPECT_STREQ(document.slot()->requested_tag, "a");
}

TEST(PathValue, OfAnAttributeIsTheContentOfItsFirstNode)
{
    const Document document("<!DOCTYPE r [<!ENTITY e 'val'><!ENTITY n 'A&e;B'>]>"
                            "<r split='1&e;2' whole='&e;' nested='&n;' empty='' plain='&lt;&#65;'/>");
    xmlNewProp(document.root(), reinterpret_cast<const xmlChar*>("nodeless"), nullptr);
    const std::pair<const char*, const char*> attributes[] = {{"@split", "1"},      {"@whole", "val"},
                                                              {"@nested", "A&e;B"}, {"@empty", ""},
                                                              {"@plain", "<A"},     {"@nodeless", ""}};
    for (auto [path, expected] : attributes)
        EXPECT_EQ(value_at(document, path), expected) << path;
}

TEST(PathValue, DoesNotSeeTheDefaultOfAnAttribute)
{
    const Document document("<!DOCTYPE r [<!ATTLIST r d CDATA 'default'>]><r/>");
    EXPECT_EQ(value_at(document, "/r/@d"), "status -11");
}

TEST(PathValue, ReportsWhyThereIsNoneAndStaysWhereTheWalkStopped)
{
    const std::string fifty_one = "/r" + steps(50);
    const auto not_found = [](const std::string& path) {
        return failure(KH_ERR_NOT_FOUND, function, ". Path: " + path);
    };
    const auto bad_path = [](long code, const std::string& path) {
        return passed_on(failure(code, "kh_tree_chop_path", ". Bad path: " + path), function);
    };
    const Failure failures[] = {
        {"/r", "/r/b/none", not_found("/r/b/none"), "/r/b"},
        {"/r", "/r/none", not_found("/r/none"), "/r"},
        {"/r/a[1]", "/r/a[2]/x[4]", not_found("/r/a[2]/x[4]"), "/r/a[2]/x[3]"},
        {"/r/b", "none", not_found("none"), "/r/b"},
        {"/r/b", "/r/a[2]/@none", not_found("/r/a[2]/@none"), "/r/a[2]"},
        {"/r/b", "/r/a[2]/@ID", not_found("/r/a[2]/@ID"), "/r/a[2]"},
        {"/r/b", "/q/a",
         passed_on(failure(KH_ERR_ARGUMENT, "kh_tree_go_to_stack_node", ". Bad root element: q"), function),
         "/r/b"},
        {"/r/b", "", bad_path(KH_ERR_ARGUMENT, ""), "/r/b"},
        {"/r/b", "/", bad_path(KH_ERR_ARGUMENT, "/"), "/r/b"},
        {"/r/b", ".x", bad_path(KH_ERR_ARGUMENT, ".x"), "/r/b"},
        {"/r/b", "/r/a[*]/x[*]", bad_path(KH_ERR_ARGUMENT, "/r/a[*]/x[*]"), "/r/b"},
        {"/r/b", fifty_one.c_str(), bad_path(KH_ERR_PATH_LENGTH, fifty_one), "/r/b"},
        {"/r/a[2]", "/r", failure(KH_ERR_NOT_TERMINAL, function, ". Element: r."), "/r"},
        {"/r", "b", failure(KH_ERR_NO_VALUE, function, ". Element: b."), "/r/b"},
    };
    for (const auto& [from, path, outcome, cursor] : failures) {
        SCOPED_TRACE(path);
        Document document(lists);
        document.go_to(from);
        Text value;
        value.value = strdup("earlier");
        EXPECT_EQ(read_path(document.fd, path, value.out()), outcome);
        EXPECT_EQ(value.string(), outcome.status == KH_ERR_NO_VALUE ? "" : "(null)")
            << "the earlier result is freed, and nothing takes its place";
        EXPECT_EQ(document.path(), cursor);
    }
}

TEST(PathValue, ReachesTheFiftiethNode)
{
    std::string xml = "end";
    for (int depth = 0; depth < 50; ++depth)
        xml = "<a>" + xml + "</a>";
    EXPECT_EQ(value_at(Document(xml), steps(50).c_str()), "end");
}

TEST(PathValue, NeedsAnOutputAndThenAPathAndKeepsTheEarlierResult)
{
    const Document document(lists);
    EXPECT_EQ(read_path(document.fd, nullptr, nullptr), missing_argument(function));
    Text value;
    value.value = strdup("earlier");
    EXPECT_EQ(read_path(document.fd, nullptr, value.out()), failure(KH_ERR_NO_REQUEST, function));
    EXPECT_EQ(value.string(), "earlier");
    for_each_bad_descriptor([&](long fd, long code) {
        EXPECT_EQ(read_path(fd, "/r", value.out()), failure(code, function));
        EXPECT_EQ(value.string(), "earlier");
    });
}

TEST(PathValue, ReleasesTheEarlierResult)
{
    const Document document("<r a='" + std::string(500, 'v') + "'><x/>text</r>");
    Text value;
    expect_no_block_left_by([&] {
        long fd = document.fd;
        long status = 0;
        for (const char* path : {"/r/@a", "/r/@a", "/r/x", "/r", "/r/@a", "/q", "/r/@a", "/", "/r/x[*]"})
            Texts::node.call(&fd, path, value.out(), &status);
    });
}

// Callers rely on a path with "[*]" being reported and then read all the same, with the index of the node
// before.
TEST(PathValue, OfAnArrayPathIsReportedAndThenReadWithTheIndexBefore)
{
    const auto complaint = [](const std::string& path) {
        return failure(KH_ERR_ARGUMENT, function, ". Bad path for : " + path);
    };
    const std::pair<const char*, const char*> rows[] = {
        {"/r/a[*]/x", "a1"}, {"/r/a[2]/x[*]", "2"}, {"a[*]/x", "a1"}, {"/r/a[*]/@id", "(null)"}};
    for (auto [path, expected] : rows) {
        SCOPED_TRACE(path);
        const Document document(lists);
        Text value;
        const Outcome read = read_path(document.fd, path, value.out());
        EXPECT_EQ(value.string(), expected);
        EXPECT_EQ(read, value.value ? overcome(complaint(path))
                                    : then(complaint(path), failure(KH_ERR_NOT_FOUND, function,
                                                                    ". Path: " + std::string(path))));
    }
}

TEST(PathValue, OfAnArrayPathWithAWrongRootTracesBelowTheComplaint)
{
    const Document document(lists);
    const Outcome complaint = failure(KH_ERR_ARGUMENT, function, ". Bad path for : /q/a[*]");
    const Outcome wrong_root = failure(KH_ERR_ARGUMENT, "kh_tree_go_to_stack_node", ". Bad root element: q");
    // The record still holds the complaint when the walk's failure is passed on, so both are printed.
    const std::string both = complaint.report.substr(0, complaint.report.size() - 1);
    Text value;
    EXPECT_EQ(read_path(document.fd, "/q/a[*]", value.out()),
              then(then(complaint, wrong_root), passed_on(Outcome{KH_ERR_ARGUMENT, both}, function)));
    EXPECT_EQ(value.value, nullptr);
}

TEST(PathValue, AboveTheRootComesWithAWarning)
{
    Document document("<r><x>1</x></r>");
    document.go_to("/r/x");
    const Outcome warning =
        passed_on(failure(KH_WARN_ROOT_REACHED, "kh_tree_go_to_parent"), "kh_tree_go_to_stack_node");
    Text value;
    EXPECT_EQ(read_path(document.fd, "../../x", value.out()), warning);
    EXPECT_EQ(value.string(), "1");

    // A conversion sets the status anew, so numbers come without it.
    long number = 77;
    EXPECT_EQ(call_of([&](long* status) {
                  return kh_tree_path_read_integer_node_value(&document.fd, "../../x", &number, status);
              }),
              overcome(warning));
    EXPECT_EQ(number, 1);
}

TEST(PathValue, OfARealFileIsWhatTheParserHolds)
{
    const std::string file = debian_file("/usr/share/X11/xkb/rules/base.xml");
    if (file.empty())
        GTEST_SKIP() << "xkb-data is not installed";
    const Document document = Document::file(file);
    const std::string layout = "/xkbConfigRegistry/layoutList/layout";
    const auto names = contents_of(document, layout + "/configItem/name");
    ASSERT_GT(names.size(), 50u);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string path = layout + "[" + std::to_string(i + 1) + "]/configItem/name";
        ASSERT_EQ(value_at(document, path.c_str()), names[i]) << path;
        ASSERT_EQ(document.path(), path);
    }
    EXPECT_EQ(value_at(document, "/xkbConfigRegistry/@version"),
              contents_of(document, "/xkbConfigRegistry/@version").front());
}
