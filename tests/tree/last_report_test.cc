// What KH_last_report gives a program that prints nothing itself.
#include "support/outcome.h"

#include <thread>

namespace {

using support::Document;
using support::TemporaryFolder;

std::string last_report()
{
    std::string text(static_cast<std::size_t>(KH_last_report(nullptr, 0)) + 1, '?');
    KH_last_report(text.data(), static_cast<long>(text.size()));
    EXPECT_EQ(text.back(), '\0');
    text.pop_back();
    return text;
}

TEST(LastReport, HoldsTheFailureAndTheTraceLinesInSilentMode)
{
    Document document("<R><A>x</A></R>");
    long value = 0;
    EXPECT_EQ(support::written_to_stderr(
                  [&] { kh_tree_path_read_integer_node_value(&document.fd, "/R/A", &value, nullptr); }),
              "");
    EXPECT_EQ(last_report(), "KH: Unable to convert to long type\n\tFunction: kh_string_to_integer. Value: x"
                             "\n\tFunction: kh_tree_path_read_integer_node_value");
}

TEST(LastReport, IsReplacedByTheNextFailureAndKeptBySuccess)
{
    Document document("<R><A>1</A></R>");
    kh_tree_go_to_path_node(&document.fd, "/R/Z", nullptr);
    kh_tree_go_to_path_node(&document.fd, "/R/Y", nullptr);
    const std::string expected = "KH: No element found\n\tFunction: kh_tree_go_to_path_node. Path: /R/Y";
    EXPECT_EQ(last_report(), expected);
    document.go_to("/R/A");
    EXPECT_EQ(last_report(), expected);
}

TEST(LastReport, IsCutToTheBuffer)
{
    Document document("<R/>");
    kh_tree_go_to_path_node(&document.fd, nullptr, nullptr);
    const long length = KH_last_report(nullptr, 100);
    char text[] = "untouched";
    EXPECT_EQ(KH_last_report(text, 0), length);
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(KH_last_report(text, 4), length);
    EXPECT_STREQ(text, "KH:");
}

TEST(LastReport, BelongsToTheThread)
{
    Document document("<R/>");
    kh_tree_go_to_path_node(&document.fd, "/R/mine", nullptr);
    long empty = -1;
    std::string other;
    std::thread([&] {
        empty = KH_last_report(nullptr, 0);
        kh_tree_go_to_path_node(&document.fd, "/R/other", nullptr);
        other = last_report();
    }).join();
    EXPECT_EQ(empty, 0);
    EXPECT_NE(other.find("/R/other"), std::string::npos);
    EXPECT_NE(last_report().find("/R/mine"), std::string::npos);
}

TEST(LastReport, TellsWhereAFileIsNotWellFormed)
{
    const TemporaryFolder folder;
    const std::string name = folder.file("bad.xml", "<R>\n  <A></B>\n</R>\n");
    long status = 0;
    const std::string verbose = support::report_of([&] { kh_tree_init_parser(name.c_str(), &status); });
    const std::string report =
        "KH: Error while parsing a file\n\tFunction: kh_tree_init_parser. File: " + name;
    EXPECT_EQ(last_report(),
              report + "\n\t" + name + ":2:10: Opening and ending tag mismatch: A line 2 and B");
    EXPECT_EQ(verbose.substr(verbose.rfind("KH: ")), report + "\n") << "what is printed stays as it was";
}

TEST(LastReport, TellsWhyAFileCannotBeRead)
{
    const TemporaryFolder folder;
    const struct {
        std::string name, reason;
    } rows[] = {
        {folder.path("none.xml"), "No such file or directory"},
        {folder.path(""), "Is a directory"},
        {folder.file("cut.gz", std::string_view("\x1f\x8b\x08\0\0\0\0\0\0\3", 10)),
         "compressed bytes are damaged, cut short, or inflate without end"},
    };
    for (const auto& [name, reason] : rows) {
        long status = 0;
        kh_tree_init_parser(name.c_str(), &status);
        EXPECT_EQ(status, KH_ERR_PARSE);
        EXPECT_EQ(last_report(), "KH: Error while parsing a file\n\tFunction: kh_tree_init_parser. File: " +
                                     name + "\n\t" + name + ": " + reason);
    }
}

TEST(LastReport, TellsWhyAFileCannotBeSaved)
{
    const TemporaryFolder folder;
    Document document("<R/>");
    const struct {
        std::string name, reason;
    } rows[] = {
        {folder.path("missing/file.xml"), "No such file or directory"},
        {folder.path(""), "Is a directory"},
        {"/dev/full", "No space left on device"},
    };
    for (const auto& row : rows) {
        const std::string verbose =
            support::report_of([&] { kh_tree_save(&document.fd, row.name.c_str(), nullptr); });
        const std::string report = "KH: Unable to save XML document into disk\n\tFunction: kh_tree_save";
        EXPECT_EQ(last_report(), report + "\n\t" + row.name + ": " + row.reason);
        EXPECT_EQ(verbose.substr(verbose.rfind("KH: ")), report + "\n") << "what is printed stays as it was";
    }
}

} // namespace
