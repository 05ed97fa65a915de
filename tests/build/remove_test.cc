#include "build/edit.h"

#include <libxml/hash.h>
#include <vector>

namespace {

using edit::in_memory;
using edit::outcome;
using edit::status;
using edit::written;
using support::Document;
using support::failure;
using support::passed_on;
using support::success;

struct Removal {
    std::string document, path, result, cursor;
};

void expect_removals(const std::vector<Removal>& removals)
{
    for (const auto& [xml, path, result, cursor] : removals) {
        Document document(xml);
        EXPECT_EQ(status(document, kh_tree_remove_node, path.c_str()), KH_OK) << xml << " " << path;
        EXPECT_EQ(in_memory(document), result) << xml << " " << path;
        EXPECT_EQ(document.path(), cursor) << xml << " " << path;
    }
}

TEST(RemoveNode, RemovesAnElementWithItsIndentation)
{
    expect_removals({
        {"<r>\n  <a/>\n  <b/>\n</r>", "/r/a", "<r>\n  <b/>\n</r>", "/r"},
        {"<r>\n  <a/>\n  <b/>\n</r>", "/r/b", "<r>\n  <a/>\n</r>", "/r"},
        {"<r><a>\n    <b/></a></r>", "/r/a/b", "<r><a/></r>", "/r/a"},
        {"<r><a><b>text<c/></b></a></r>", "/r/a", "<r/>", "/r"},
        {"<r><a/><a/></r>", "/r/a[2]", "<r><a/></r>", "/r"},
    });
}

TEST(RemoveNode, TakesATextDirectlyBeforeForIndentation)
{
    expect_removals({
        {"<r>text<a/></r>", "/r/a", "<r/>", "/r"},
        {"<r>a<b/>c</r>", "/r/b", "<r>c</r>", "/r"},
        {"<r><!--c--><a/></r>", "/r/a", "<r><!--c--></r>", "/r"},
        {"<r><![CDATA[t]]><a/></r>", "/r/a", "<r><![CDATA[t]]></r>", "/r"},
    });
}

TEST(RemoveNode, RemovesAFirstNodeOfAnyKind)
{
    expect_removals({
        {"<r>text</r>", "/r/x[0]", "<r/>", "/r"},
        {"<r><!--c-->text</r>", "/r/x[0]", "<r>text</r>", "/r"},
        {"<r><?p i?><a/></r>", "/r/x[0]", "<r><a/></r>", "/r"},
        {"<!DOCTYPE r [<!ENTITY e \"t\">]><r>&e;<a/></r>", "/r/x[0]",
         "<!DOCTYPE r [\n<!ENTITY e \"t\">\n]>\n<r><a/></r>", "/r"},
    });
}

TEST(RemoveNode, RemovesAnAttributeAndStaysOnItsElement)
{
    expect_removals({
        {"<r a=\"1\" b=\"2\"/>", "/r/@a", "<r b=\"2\"/>", "/r"},
        {"<r><a x=\"1\">text</a></r>", "/r/a/@x", "<r><a>text</a></r>", "/r/a"},
        {"<r a=\"\"/>", "@a", "<r/>", "/r"},
    });
}

TEST(RemoveNode, RemovesRelativeToTheCursor)
{
    Document document("<r><a><b><c/></b></a><d/></r>");
    document.go_to("/r/a/b/c");
    EXPECT_EQ(status(document, kh_tree_remove_node, ".."), KH_OK);
    EXPECT_EQ(document.path(), "/r/a");
    EXPECT_EQ(status(document, kh_tree_remove_node, "."), KH_OK);
    EXPECT_EQ(document.path(), "/r");
    EXPECT_EQ(in_memory(document), "<r><d/></r>");
}

TEST(RemoveNode, ReportsAnAbsentAttributeWithoutItsSign)
{
    Document document("<r><a x=\"1\"/></r>");
    EXPECT_EQ(outcome(document, kh_tree_remove_node, "/r/a/@y"),
              failure(KH_ERR_NOT_FOUND, "kh_tree_remove_node", ". Attribute name: y"));
    EXPECT_EQ(document.path(), "/r/a");
    EXPECT_EQ(outcome(document, kh_tree_remove_node, "/r/@"),
              failure(KH_ERR_NOT_FOUND, "kh_tree_remove_node", ". Attribute name: "));
    EXPECT_EQ(in_memory(document), "<r><a x=\"1\"/></r>");
}

TEST(RemoveNode, FindsNoAttributeOnAText)
{
    Document document("<r>text</r>");
    EXPECT_EQ(status(document, kh_tree_remove_node, "/r/x[0]/@y"), KH_ERR_NOT_FOUND);
}

// Only the document type gives the attribute: there is nothing on the element that could go.
TEST(RemoveNode, CannotRemoveADefaultOfTheDocumentType)
{
    Document document("<!DOCTYPE r [<!ATTLIST r d CDATA \"v\">]><r/>");
    const std::string before = in_memory(document);
    const long code = status(document, kh_tree_remove_node, "/r/@d");
    EXPECT_TRUE(code == KH_ERR_NOT_FOUND || code == KH_ERR_REMOVE_NODE) << code;
    EXPECT_EQ(in_memory(document), before);
}

TEST(RemoveNode, PassesOnWhatThePathReports)
{
    Document document("<r><a/></r>");
    EXPECT_EQ(outcome(document, kh_tree_remove_node, "/r/b"),
              passed_on(failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_path_node", ". Path: /r/b"),
                        "kh_tree_remove_node"));
    EXPECT_EQ(outcome(document, kh_tree_remove_node, ".x"),
              passed_on(passed_on(failure(KH_ERR_ARGUMENT, "kh_tree_chop_path", ". Bad path: .x"),
                                  "kh_tree_go_to_path_node"),
                        "kh_tree_remove_node"));
    EXPECT_EQ(status(document, kh_tree_remove_node, nullptr), KH_ERR_ARGUMENT);
    EXPECT_EQ(in_memory(document), "<r><a/></r>");
    EXPECT_EQ(kh_tree_remove_node(&document.fd, "/r/b", nullptr), KH_ERR_NOT_FOUND);
    EXPECT_EQ(kh_tree_remove_node(nullptr, "/r/a", nullptr), KH_ERR_ARGUMENT);

    long unused = 511;
    EXPECT_EQ(support::outcome_of([&](long* ierr) { kh_tree_remove_node(&unused, "/r", ierr); }),
              passed_on(failure(KH_ERR_NO_DOCUMENT, "kh_tree_go_to_path_node"), "kh_tree_remove_node"));
}

TEST(RemoveNode, LeavesNoBlankLine)
{
    Document document;
    ASSERT_EQ(status(document, kh_tree_create_root, "r"), KH_OK);
    for (const char* name : {"a", "b", "c"})
        ASSERT_EQ(status(document, kh_tree_add_child, "/r", name), KH_OK);
    ASSERT_EQ(status(document, kh_tree_remove_node, "/r/b"), KH_OK);
    EXPECT_EQ(written(document), "<r>\n  <a/>\n  <c/>\n</r>");
    ASSERT_EQ(status(document, kh_tree_remove_node, "/r/c"), KH_OK);
    EXPECT_EQ(written(document), "<r>\n  <a/>\n</r>");
    ASSERT_EQ(status(document, kh_tree_remove_node, "/r/a"), KH_OK);
    EXPECT_EQ(written(document), "<r>\n</r>");
    ASSERT_EQ(status(document, kh_tree_add_child, "/r", "d"), KH_OK);
    EXPECT_EQ(written(document), "<r>\n  <d/>\n</r>");
}

TEST(RemoveRoot, LeavesADocumentWithoutRootAndCursor)
{
    for (const char* path : {"/r", ".", "/r/a/.."}) {
        Document document("<r><a/></r>");
        EXPECT_EQ(outcome(document, kh_tree_remove_node, path), success) << path;
        EXPECT_EQ(document.root(), nullptr);
        EXPECT_EQ(document.current(), nullptr);
        EXPECT_EQ(status(document, kh_tree_rewind), KH_ERR_NO_ROOT);
        EXPECT_EQ(status(document, kh_tree_add_child, ".", "n"), KH_ERR_NO_ROOT);
        EXPECT_EQ(status(document, kh_tree_remove_node, "."), KH_ERR_NO_ROOT);
        EXPECT_EQ(status(document, kh_tree_go_to_next_element_node), KH_ERR_NO_ROOT);
        EXPECT_EQ(status(document, kh_tree_write, "/dev/null"), KH_ERR_NO_ROOT);
    }
}

TEST(RemoveRoot, MakesRoomForANewOne)
{
    Document document("<r><a/></r>");
    ASSERT_EQ(status(document, kh_tree_remove_node, "/r"), KH_OK);
    EXPECT_EQ(status(document, kh_tree_create_root, "s"), KH_OK);
    EXPECT_EQ(document.path(), "/s");
    EXPECT_EQ(status(document, kh_tree_add_child, ".", "b"), KH_OK);
    EXPECT_EQ(written(document), "<s>\n  <b/>\n</s>");
}

TEST(RemoveRoot, KeepsWhatStandsBesideIt)
{
    Document document("<!--before--><r/><!--after-->");
    ASSERT_EQ(status(document, kh_tree_remove_node, "/r"), KH_OK);
    ASSERT_EQ(status(document, kh_tree_create_root, "s"), KH_OK);
    const std::string text = document.written();
    for (const char* part : {"<!--before-->", "<s>\n  </s>", "<!--after-->"})
        EXPECT_TRUE(edit::contains(text, part)) << part << " in " << text;
    EXPECT_TRUE(edit::read_plainly(text));
}

TEST(RemoveNode, RemovesAVeryDeepTree)
{
    Document document("<r>" + edit::nested(edit::deep) + "</r>");
    ASSERT_EQ(status(document, kh_tree_go_to_element_node, "deepest"), KH_OK);
    EXPECT_EQ(status(document, kh_tree_remove_node, "."), KH_OK);
    EXPECT_EQ(status(document, kh_tree_remove_node, "/r/a"), KH_OK);
    EXPECT_EQ(in_memory(document), "<r/>");
}

/// By how many IDs a document finds attributes.
int count_identifiers(const Document& document)
{
    return xmlHashSize(static_cast<xmlHashTable*>(document.slot()->doc->ids));
}

TEST(RemoveNode, LeavesNoIdBehindHoweverItIsWritten)
{
    for (const char* id : {"x", "a &#38; b", "&amp;", "&e;", "x&e;y", "&#65;", "&lt;"}) {
        const std::string xml =
            std::string("<!DOCTYPE r [<!ENTITY e 't'><!ATTLIST i id ID #IMPLIED>]><r><i id='") + id +
            "'/></r>";
        for (const char* path : {"/r/i", "/r/i/@id"}) {
            Document document(xml);
            ASSERT_EQ(count_identifiers(document), 1) << id;
            EXPECT_EQ(status(document, kh_tree_remove_node, path), KH_OK) << id;
            EXPECT_EQ(count_identifiers(document), 0) << id << " " << path;
        }
        Document document(xml);
        EXPECT_EQ(status(document, kh_tree_set_text, "/r/i/@id", "other"), KH_OK) << id;
        EXPECT_EQ(count_identifiers(document), 1) << id;
    }
}

// A parser takes blanks at the ends and doubled ones out of an ID; one that is set keeps them.
TEST(RemoveNode, LeavesNoIdBehindThatWasSetWithBlanks)
{
    for (const char* id : {" ", "  ", " a", "a ", "a  b", "a b", "a&#32; b", " &amp; "}) {
        for (const char* path : {"/r/i", "/r/i/@id"}) {
            Document document("<!DOCTYPE r [<!ATTLIST i id ID #IMPLIED>]><r><i id='x'/></r>");
            EXPECT_EQ(status(document, kh_tree_set_text, "/r/i/@id", id), KH_OK);
            EXPECT_EQ(count_identifiers(document), 1) << '"' << id << '"';
            EXPECT_EQ(status(document, kh_tree_remove_node, path), KH_OK);
            EXPECT_EQ(count_identifiers(document), 0) << '"' << id << "\" " << path;
        }
    }
}

} // namespace
