// The path language: a path text becomes the slot's stack, walks follow it, and a cursor's path can be
// written.
#include "support/nodes.h"
#include "support/outcome.h"

#include <cstring>
#include <random>

namespace {

using support::Document;
using support::failure;
using support::missing_argument;
using support::node_of;
using support::nodes_of;
using support::Outcome;
using support::outcome_of;
using support::passed_on;
using support::success;
using support::untouched;

Outcome chop(Document& document, const char* path)
{
    return outcome_of([&](long* ierr) { kh_tree_chop_path(&document.fd, path, ierr); });
}

Outcome go_to(Document& document, const char* path)
{
    return outcome_of([&](long* ierr) { kh_tree_go_to_path_node(&document.fd, path, ierr); });
}

std::string repeated(const std::string& piece, int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += piece;
    return text;
}

TEST(ChopPath, FillsTheStack)
{
    const struct {
        std::string path;
        int absolute;
        long array_position;
        std::string stack, tag;
    } rows[] = {
        {"A", 0, -1, "A[0]", "A"},
        {"/R", 1, -1, "R[0]", "R"},
        {"/R/A[2]/@id", 1, -1, "R[0] A[1] @id[0]", "A"},
        {"a//b", 0, -1, "a[0] b[0]", "b"},
        {"//R///A/", 1, -1, "R[0] A[0]", "A"},
        {"A/", 0, -1, "A[0]", "A"},
        {"x:A/B-1.c", 0, -1, "x:A[0] B-1.c[0]", "B-1.c"},
        {"\xc3\xa4/ b ", 0, -1, "\xc3\xa4[0]  b [0]", " b "},
        // steps
        {".", 0, -1, ".[0]", "."},
        {"..", 0, -1, "..[0]", ".."},
        {"./x", 0, -1, ".[0] x[0]", "x"},
        {"./", 0, -1, ".[0]", "."},
        {"..x", 0, -1, "..x[0]", "..x"},
        {"../../B", 0, -1, "..[0] ..[0] B[0]", "B"},
        {"/.x", 1, -1, ".x[0]", ".x"},
        {"A/.x", 0, -1, "A[0] .x[0]", ".x"},
        // indices
        {"A[1]", 0, -1, "A[0]", "A"},
        {"A[12]/B[3]/C", 0, -1, "A[11] B[2] C[0]", "C"},
        {"A[2]junk/B", 0, -1, "A[1] B[0]", "B"},
        {"A[2", 0, -1, "A[1]", "A"},
        {"A[2][3]", 0, -1, "A[1]", "A"},
        {"A[ 2]", 0, -1, "A[1]", "A"},
        {"A[2x]", 0, -1, "A[1]", "A"},
        {"A[0]", 0, -1, "A[-1]", "A"},
        {"A[x]", 0, -1, "A[-1]", "A"},
        {"A[]", 0, -1, "A[-1]", "A"},
        {"A[", 0, -1, "A[-1]", "A"},
        {"A[-3]", 0, -1, "A[-4]", "A"},
        {"A[x*]", 0, -1, "A[-1]", "A"},
        {"A]2", 0, -1, "A]2[0]", "A]2"},
        // An index is cut to 32 bits and extended by its sign.
        {"A[2147483648]", 0, -1, "A[2147483647]", "A"},
        {"A[2147483649]", 0, -1, "A[-2147483648]", "A"},
        {"A[4294967296]", 0, -1, "A[-1]", "A"},
        {"A[4294967297]", 0, -1, "A[0]", "A"},
        {"A[9223372036854775807]", 0, -1, "A[-2]", "A"},
        {"A[99999999999999999999]", 0, -1, "A[-2]", "A"},
        {"A[-99999999999999999999]", 0, -1, "A[-1]", "A"},
        // array nodes
        {"/R/A[*]/B", 1, 1, "R[0] A[0] B[0]", "B"},
        {"/R/A[*]", 1, 1, "R[0] A[0]", "A"},
        {"A[*]/B", 0, 0, "A[0] B[0]", "B"},
        {"A[*", 0, 0, "A[0]", "A"},
        {"A[*junk/B[2]", 0, 0, "A[0] B[1]", "B"},
        // Callers rely on the index of the node before, which an array node keeps.
        {"A[3]/B[*]", 0, 1, "A[2] B[2]", "B"},
        {"A[3]/B[*]/C", 0, 1, "A[2] B[2] C[0]", "C"},
        {"A[3]/B/C[*]", 0, 2, "A[2] B[0] C[0]", "C"},
        {"A[0]/B[*]", 0, 1, "A[-1] B[-1]", "B"},
        // attributes
        {"A/@id[2]", 0, -1, "A[0] @id[1]", "A"},
        {"A[*]/@id", 0, 0, "A[0] @id[0]", "A"},
        {"@id/A", 0, -1, "@id[0] A[0]", "A"},
    };
    Document document("<R/>");
    for (const auto& row : rows) {
        EXPECT_EQ(chop(document, row.path.c_str()), success) << row.path;
        EXPECT_EQ(document.slot()->absolute, row.absolute) << row.path;
        EXPECT_EQ(document.slot()->array_position, row.array_position) << row.path;
        EXPECT_EQ(document.stack(), row.stack) << row.path;
        EXPECT_STREQ(document.slot()->requested_tag, row.tag.c_str()) << row.path;
        EXPECT_EQ(document.current(), document.root()) << "the cursor stays";
    }
}

TEST(ChopPath, LeavesTheRequestedTagForOneAttributeAlone)
{
    Document document("<R/>");
    EXPECT_EQ(chop(document, "@id"), success);
    EXPECT_EQ(document.stack(), "@id[0]");
    EXPECT_EQ(document.slot()->requested_tag, nullptr);
    kh_tree_set_requested_tag(&document.fd, "Tag");
    for (const char* path : {"@id", "/@id"}) {
        EXPECT_EQ(chop(document, path), success);
        EXPECT_STREQ(document.slot()->requested_tag, "Tag");
    }
}

TEST(ChopPath, RequestsTheLastElementAndCountsFromZero)
{
    Document document("<R><A/><B/></R>");
    kh_tree_go_to_next_element_node(&document.fd, &document.status);
    ASSERT_EQ(document.slot()->visited, 1);
    chop(document, "/R/B/@id");
    EXPECT_EQ(document.slot()->visited, 0);
    kh_tree_go_to_element_node(&document.fd, nullptr, &document.status);
    EXPECT_EQ(document.current_name(), "B");
}

TEST(ChopPath, WorksOnADocumentWithoutARoot)
{
    Document document;
    EXPECT_EQ(chop(document, "/R/A[2]"), success);
    EXPECT_EQ(document.stack(), "R[0] A[1]");
}

TEST(ChopPath, TakesItsOwnRequestedTagForAPath)
{
    Document document("<R/>");
    chop(document, "/R/Name");
    EXPECT_EQ(chop(document, document.slot()->requested_tag), success);
    EXPECT_EQ(document.stack(), "Name[0]");
}

TEST(ChopPath, TakesNamesOfAnyLength)
{
    const std::string name(100000, 'n');
    Document document("<R/>");
    EXPECT_EQ(chop(document, ("/R/" + name + "[2]").c_str()), success);
    EXPECT_EQ(document.stack(), "R[0] " + name + "[1]");
}

TEST(ChopPath, TakesFiftyNodes)
{
    Document document("<R/>");
    for (const std::string& path : {"/R" + repeated("/a", 49), "/R" + repeated("//a", 48) + "/@id"}) {
        EXPECT_EQ(chop(document, path.c_str()), success) << path;
        EXPECT_EQ(document.slot()->stack_count, 50);
    }
}

/// A refused path: nothing of it stays in the slot, nor of the path before.
class RefusedPath : public testing::Test {
protected:
    void refuses(const std::string& path, long code)
    {
        ASSERT_EQ(chop(document, "/R/Before[*]/B"), success);
        EXPECT_EQ(chop(document, path.c_str()), failure(code, "kh_tree_chop_path", ". Bad path: " + path));
        EXPECT_EQ(document.stack(), "") << path;
        EXPECT_EQ(document.slot()->stack_count, 0) << path;
        EXPECT_EQ(document.slot()->absolute, 0) << path;
        EXPECT_EQ(document.slot()->array_position, -1) << path;
        EXPECT_STREQ(document.slot()->requested_tag, "B") << path;
        EXPECT_EQ(document.current(), document.root()) << path;
    }
    Document document{"<R><A/></R>"};
};

TEST_F(RefusedPath, BeginsWithAPointThatIsNoStep)
{
    for (const char* path : {".x", ".[2]", ".x/A", ".@id", ". "})
        refuses(path, KH_ERR_ARGUMENT);
}

TEST_F(RefusedPath, HasTwoArrayNodes)
{
    for (const char* path : {"/R/A[*]/B[*]", "A[*]/B/C[*]/D", "A[*]/B[*]/C[*]"})
        refuses(path, KH_ERR_ARGUMENT);
}

TEST_F(RefusedPath, HasNoNode)
{
    for (const char* path : {"", "/", "///"})
        refuses(path, KH_ERR_ARGUMENT);
}

TEST_F(RefusedPath, HasMoreThanFiftyNodes)
{
    refuses("/R" + repeated("/a", 50), KH_ERR_PATH_LENGTH);
    refuses(repeated("../", 51), KH_ERR_PATH_LENGTH);
    refuses(repeated("a/", 50) + "@id", KH_ERR_PATH_LENGTH);
    refuses(repeated("a/", 101), KH_ERR_PATH_LENGTH);
    refuses(repeated("a/", 100000), KH_ERR_PATH_LENGTH);
}

TEST_F(RefusedPath, IsCutInTheReport)
{
    const Outcome outcome = chop(document, ("." + std::string(1000, 'x')).c_str());
    EXPECT_EQ(outcome.report.size(), 511u) << "510 characters and a newline";
}

TEST_F(RefusedPath, IsNull)
{
    EXPECT_EQ(chop(document, nullptr), missing_argument("kh_tree_chop_path"));
}

TEST_F(RefusedPath, IsPassedOnByAMove)
{
    for (const char* path : {".x", "A[*]/B[*]", "", "/"}) {
        EXPECT_EQ(go_to(document, path),
                  passed_on(failure(KH_ERR_ARGUMENT, "kh_tree_chop_path", std::string(". Bad path: ") + path),
                            "kh_tree_go_to_path_node"))
            << path;
        EXPECT_EQ(document.current(), document.root());
    }
    EXPECT_EQ(go_to(document, nullptr), missing_argument("kh_tree_go_to_path_node"));
}

/// Moves in a document that has texts between its elements, which most files have.
class Move : public testing::Test {
protected:
    xmlNode* node(const std::string& xpath) { return node_of(document, xpath); }
    Outcome move(const std::string& path) { return go_to(document, path.c_str()); }
    void start_at(const std::string& xpath) { document.slot()->current = node(xpath); }
    Outcome walk(xmlNode* expected)
    {
        return outcome_of(
            [&](long* ierr) { EXPECT_EQ(kh_tree_go_to_stack_node(&document.fd, ierr), expected); });
    }
    static Outcome not_found(const std::string& path)
    {
        return failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_path_node", ". Path: " + path);
    }

    Document document{"<R>\n"
                      "  <A id='1'><B>one</B></A>\n"
                      "  <C/>\n"
                      "  <A id='2'><B>two</B><B>three</B></A>\n"
                      "  <D><A/></D>\n"
                      "</R>"};
};

TEST_F(Move, ReachesTheNodeOfThePath)
{
    const struct {
        const char *start, *path, *reached;
    } rows[] = {
#include "cases/moves.inc"
    };
    for (const auto& row : rows) {
        start_at(row.start);
        EXPECT_EQ(move(row.path), success) << row.path;
        ASSERT_NE(node(row.reached), nullptr);
        EXPECT_EQ(document.current(), node(row.reached)) << row.path << " from " << row.start;
        // The walk alone, along the stack that the move left.
        start_at(row.start);
        EXPECT_EQ(walk(node(row.reached)), success) << row.path;
        EXPECT_EQ(document.current(), node(row.reached)) << row.path;
    }
}

TEST_F(Move, ThatLeadsNowhereLeavesTheCursorOnTheLastSiblingTried)
{
    const struct {
        const char *start, *path, *cursor;
    } rows[] = {
#include "cases/moves_nowhere.inc"
    };
    for (const auto& row : rows) {
        start_at(row.start);
        EXPECT_EQ(move(row.path), not_found(row.path));
        EXPECT_EQ(document.current(), node(row.cursor)) << row.path << " from " << row.start;
        start_at(row.start);
        EXPECT_EQ(walk(nullptr), success) << "a walk has no error of its own for " << row.path;
        EXPECT_EQ(document.current(), node(row.cursor)) << row.path;
    }
}

TEST_F(Move, ToAnotherRootIsRefused)
{
    const struct {
        const char *path, *first;
    } rows[] = {{"/Z", "Z"},   {"/A/B", "A"},   {"/r", "r"},     {"/../R", ".."},
                {"/./R", "."}, {"/@id", "@id"}, {"/Z[3]/A", "Z"}};
    for (const auto& row : rows) {
        start_at("/R/C");
        const Outcome refused = failure(KH_ERR_ARGUMENT, "kh_tree_go_to_stack_node",
                                        std::string(". Bad root element: ") + row.first);
        EXPECT_EQ(move(row.path), passed_on(refused, "kh_tree_go_to_path_node"));
        EXPECT_EQ(document.current(), node("/R/C")) << row.path;
        EXPECT_EQ(document.slot()->absolute, 1);
        EXPECT_EQ(walk(document.root()), refused) << "the root is returned";
        EXPECT_EQ(document.current(), node("/R/C")) << row.path;
    }
}

TEST_F(Move, AboveTheRootWarnsAndGoesOn)
{
    const Outcome warned =
        passed_on(failure(KH_WARN_ROOT_REACHED, "kh_tree_go_to_parent"), "kh_tree_go_to_stack_node");
    const struct {
        const char *start, *path, *reached;
    } rows[] = {
#include "cases/moves_above_root.inc"
    };
    for (const auto& row : rows) {
        start_at(row.start);
        EXPECT_EQ(move(row.path), warned) << row.path << " is a success, which adds no line of its own";
        EXPECT_EQ(document.current(), node(row.reached)) << row.path;
        start_at(row.start);
        EXPECT_EQ(walk(node(row.reached)), warned) << row.path;
    }
}

TEST_F(Move, AboveTheRootLeavesItsWarningOnlyAtTheLastStepUp)
{
    EXPECT_EQ(move("../A[2]/..").status, 0);
    EXPECT_EQ(document.current(), document.root());
    EXPECT_EQ(move("../A[2]/../..").status, KH_WARN_ROOT_REACHED);
    EXPECT_EQ(document.current(), document.root());
}

TEST_F(Move, AboveTheRootThatLeadsNowhereIsNotFound)
{
    EXPECT_EQ(move("../Z").status, KH_ERR_NOT_FOUND);
    EXPECT_EQ(document.current(), document.root());
}

TEST_F(Move, WithoutACursorFindsNothingByARelativePath)
{
    for (const char* path : {"A", ".", "..", "@id"}) {
        document.slot()->current = nullptr;
        EXPECT_EQ(move(path).status, KH_ERR_NOT_FOUND) << path;
        EXPECT_EQ(document.current(), nullptr);
    }
    EXPECT_EQ(move("/R/C"), success);
    EXPECT_EQ(document.current(), node("/R/C"));
}

TEST_F(Move, TakesItsOwnRequestedTagForAPath)
{
    document.go_to("/R/A");
    document.go_to("/R");
    kh_tree_set_requested_tag(&document.fd, "C");
    EXPECT_EQ(move(document.slot()->requested_tag), success);
    EXPECT_EQ(document.current(), node("/R/C"));
}

TEST_F(Move, ReportsAPathThatLiesInTheSlotAsItWasGiven)
{
    chop(document, "first/missing");
    EXPECT_EQ(go_to(document, document.slot()->stack_name[1]),
              failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_path_node", ". Path: missing"));
    kh_tree_set_requested_tag(&document.fd, "A/missing");
    EXPECT_EQ(go_to(document, document.slot()->requested_tag),
              failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_path_node", ". Path: A/missing"));
}

TEST_F(Move, LeavesStackAndTagForLaterReads)
{
    move("/R/A[2]/B[3]");
    EXPECT_EQ(document.stack(), "R[0] A[1] B[2]") << "also where the path leads nowhere";
    EXPECT_STREQ(document.slot()->requested_tag, "B");
    EXPECT_EQ(document.slot()->absolute, 1);
    move("./@id");
    EXPECT_EQ(document.stack(), ".[0] @id[0]");
    EXPECT_STREQ(document.slot()->requested_tag, ".");
    EXPECT_EQ(document.slot()->absolute, 0);
}

TEST(MoveInEntities, TakesAReferenceForALeaf)
{
    Document document("<!DOCTYPE R [<!ENTITY e '<E/>'>]><R>&e;<A/></R>");
    document.go_to("/R/E[0]");
    EXPECT_EQ(document.current(), document.root()->children);
    for (const char* path : {"E", "E[0]", "/R/E"}) {
        EXPECT_EQ(go_to(document, path).status, KH_ERR_NOT_FOUND) << path;
        EXPECT_EQ(document.current(), document.root()->children) << path;
    }
    document.go_to("..");
    EXPECT_EQ(document.current(), document.root());
}

TEST(MoveInNamespaces, ComparesNamesWithoutTheirPrefix)
{
    Document document("<p:R xmlns:p='urn:p'><p:A/><A p:id='1'/></p:R>");
    EXPECT_EQ(go_to(document, "/R/A[2]/@id"), success);
    EXPECT_EQ(document.current(), node_of(document, "/*/*[2]"));
    EXPECT_EQ(go_to(document, "/p:R").status, KH_ERR_ARGUMENT);
    EXPECT_EQ(go_to(document, "/R/p:A").status, KH_ERR_NOT_FOUND);
}

/// Walks in two halves: up to an array node and on from there.
class ArrayWalk : public testing::Test {
protected:
    xmlNode* node(const std::string& xpath) { return node_of(document, xpath); }

    /// The status word holds what it held before where a walk does not set it.
    Outcome to_array(long k, xmlNode* expected)
    {
        return outcome_of(
            [&](long* ierr) { EXPECT_EQ(kh_tree_go_to_stack_array_node(&document.fd, &k, ierr), expected); });
    }
    Outcome from_array(xmlNode* expected)
    {
        return outcome_of([&](long* ierr) {
            EXPECT_EQ(kh_tree_go_to_stack_from_array_node(&document.fd, ierr), expected);
        });
    }

    const Outcome status_untouched{untouched, ""};
    Document document{"<R>\n  <A id='1'><B/></A>\n  <A id='2'><C/></A>\n  <A id='3'><B/><B/></A>\n</R>"};
};

TEST_F(ArrayWalk, TakesTheIndexOfTheCaller)
{
    chop(document, "/R/A[*]/B");
    for (long k = 0; k < 3; ++k) {
        xmlNode* const element = node("/R/A[" + std::to_string(k + 1) + "]");
        EXPECT_EQ(to_array(k, element), status_untouched);
        EXPECT_EQ(document.current(), element);
        EXPECT_EQ(document.stack(), "R[0] A[" + std::to_string(k) + "] B[0]") << "the index is stored";
        xmlNode* const below = node_of(document, "B", element);
        EXPECT_EQ(from_array(below), status_untouched);
        EXPECT_EQ(document.current(), below ? below : element);
    }
    EXPECT_EQ(to_array(3, nullptr), status_untouched) << "the end of the array is no error";
    EXPECT_EQ(document.current(), node("/R/A[3]"));
    EXPECT_EQ(document.stack(), "R[0] A[3] B[0]");
}

TEST_F(ArrayWalk, StartsAtTheCursorForARelativePath)
{
    chop(document, "A[*]/B[2]");
    EXPECT_EQ(to_array(2, node("/R/A[3]")), status_untouched);
    EXPECT_EQ(from_array(node("/R/A[3]/B[2]")), status_untouched);
    EXPECT_EQ(to_array(0, nullptr), status_untouched) << "below the cursor there is no A";
}

TEST_F(ArrayWalk, StaysAtTheArrayNodeWhereNothingFollows)
{
    for (const char* path : {"/R/A[*]", "/R/A[*]/@id"}) {
        chop(document, path);
        EXPECT_EQ(to_array(1, node("/R/A[2]")), status_untouched);
        EXPECT_EQ(from_array(node("/R/A[2]")), status_untouched) << path;
        EXPECT_EQ(document.current(), node("/R/A[2]"));
    }
}

TEST_F(ArrayWalk, AtTheRootStaysThere)
{
    chop(document, "/R[*]/A[2]");
    EXPECT_EQ(to_array(5, document.root()), status_untouched);
    EXPECT_EQ(document.current(), document.root());
    EXPECT_EQ(from_array(node("/R/A[2]")), status_untouched);
}

TEST_F(ArrayWalk, RefusesANegativeOrMissingIndex)
{
    chop(document, "/R/A[*]");
    EXPECT_EQ(to_array(-1, nullptr),
              failure(KH_ERR_ARGUMENT, "kh_tree_go_to_stack_array_node", ". Bad index: -1"));
    EXPECT_EQ(outcome_of([&](long* ierr) {
                  EXPECT_EQ(kh_tree_go_to_stack_array_node(&document.fd, nullptr, ierr), nullptr);
              }),
              missing_argument("kh_tree_go_to_stack_array_node"));
    EXPECT_EQ(document.current(), document.root());
    EXPECT_EQ(document.stack(), "R[0] A[0]");
}

TEST_F(ArrayWalk, RefusesAnotherRoot)
{
    document.go_to("/R/A[2]");
    chop(document, "/Z/A[*]");
    EXPECT_EQ(to_array(0, document.root()),
              failure(KH_ERR_ARGUMENT, "kh_tree_go_to_stack_array_node", ". Bad root element: Z"));
    EXPECT_EQ(document.current(), node("/R/A[2]"));
    EXPECT_EQ(to_array(5, document.root()).status, KH_ERR_ARGUMENT);
    EXPECT_EQ(document.stack(), "Z[0] A[0]") << "the index is written behind the check";
}

TEST_F(ArrayWalk, NeedsAnArrayNode)
{
    const char* const detail = ". Position of the array elements in the stack: 0";
    for (const char* path : {"/R/A[2]/B", "A", ".x"}) {
        chop(document, path);
        EXPECT_EQ(to_array(0, nullptr), failure(KH_ERR_NOT_ARRAY, "kh_tree_go_to_stack_array_node", detail))
            << path;
        EXPECT_EQ(from_array(nullptr),
                  failure(KH_ERR_NOT_ARRAY, "kh_tree_go_to_stack_from_array_node", detail))
            << path;
        EXPECT_EQ(document.current(), document.root());
    }
}

TEST_F(ArrayWalk, NeedsAPathAtAll)
{
    EXPECT_EQ(to_array(0, nullptr).status, KH_ERR_NOT_ARRAY) << "the position 0 of a fresh slot is none";
    EXPECT_EQ(document.current(), document.root());
}

TEST_F(ArrayWalk, PassesAWarningOn)
{
    chop(document, "../A[*]/../..");
    EXPECT_EQ(to_array(1, node("/R/A[2]")), passed_on(failure(KH_WARN_ROOT_REACHED, "kh_tree_go_to_parent"),
                                                      "kh_tree_go_to_stack_array_node"));
    EXPECT_EQ(from_array(document.root()), passed_on(failure(KH_WARN_ROOT_REACHED, "kh_tree_go_to_parent"),
                                                     "kh_tree_go_to_stack_from_array_node"));
}

/// What kh_tree_get_path writes, or the code that it reports.
std::string path_of(Document& document, std::size_t room = 4096)
{
    std::string text(room, '\0');
    document.status = untouched;
    kh_tree_get_path(&document.fd, text.data(), &document.status);
    return document.status == 0 ? text.c_str() : "status " + std::to_string(document.status);
}

TEST(GetPath, WritesAnIndexWhereSiblingsShareTheName)
{
    Document document("<R>t<A/><L><I/>t<I><V/></I><!--I--><W/><I/></L><text/><p:A xmlns:p='urn:p'/></R>");
    const struct {
        const char *xpath, *path;
    } rows[] = {{"/R", "/R"},
                {"/R/A", "/R/A[1]"},
                {"/R/L", "/R/L"},
                {"/R/L/I[1]", "/R/L/I[1]"},
                {"/R/L/I[2]/V", "/R/L/I[2]/V"},
                {"/R/L/I[3]", "/R/L/I[3]"},
                {"/R/L/W", "/R/L/W"},
                {"/R/text", "/R/text"},
                {"/R/*[last()]", "/R/A[2]"}};
    for (const auto& row : rows) {
        document.slot()->current = node_of(document, row.xpath);
        EXPECT_EQ(path_of(document), row.path);
        EXPECT_EQ(document.current(), node_of(document, row.xpath)) << "the cursor stays";
    }
}

TEST(GetPath, NeedsACursorOnAnElement)
{
    Document document("<R>t</R>");
    char path[] = "unchanged";
    const auto outcome = [&] {
        return outcome_of([&](long* ierr) { kh_tree_get_path(&document.fd, path, ierr); });
    };
    document.go_to("/R/text[0]");
    EXPECT_EQ(outcome(), failure(KH_ERR_NOT_ELEMENT, "kh_tree_get_path"));
    document.slot()->current = nullptr;
    EXPECT_EQ(outcome(), failure(KH_ERR_NO_CURRENT, "kh_tree_get_path"));
    EXPECT_STREQ(path, "unchanged");
}

TEST(GetPath, RefusesANullOutput)
{
    Document document("<R/>");
    EXPECT_EQ(outcome_of([&](long* ierr) { kh_tree_get_path(&document.fd, nullptr, ierr); }),
              missing_argument("kh_tree_get_path"));
}

TEST(GetPath, HasNoLimitOfLengthDepthOrIndex)
{
    constexpr int depth = 1000;
    const std::string name(300, 'n');
    const std::string text = "<R>" + repeated("<I/>", 1500) + repeated("<" + name + ">", depth) +
                             repeated("</" + name + ">", depth) + "</R>";
    Document document(text);
    document.slot()->current = node_of(document, "//I[1500]");
    EXPECT_EQ(path_of(document), "/R/I[1500]");
    document.slot()->current = nodes_of(document, "//*").back();
    EXPECT_EQ(path_of(document, 2 * text.size()), "/R" + repeated("/" + name, depth));
}

/// Every element's path leads back to it.
void expect_paths_lead_back(Document& document)
{
    for (xmlNode* element : nodes_of(document, "//*")) {
        document.slot()->current = element;
        const std::string path = path_of(document);
        kh_tree_rewind(&document.fd, &document.status);
        kh_tree_go_to_path_node(&document.fd, path.c_str(), &document.status);
        ASSERT_EQ(document.status, 0) << path;
        ASSERT_EQ(document.current(), element) << path;
    }
}

/// A document of a few names, so that siblings share them, with texts and comments in between.
std::string random_document(unsigned seed)
{
    static const char* const names[] = {"A", "B", "text", "Item", "x-1.y"};
    static const char* const leaves[] = {"text", "<!--A-->", "\n  ", "<?A b?>", "<![CDATA[<A>]]>", "&amp;"};
    std::mt19937 random(seed);
    std::string text = "<Root>";
    std::vector<const char*> open;
    for (int i = 0; i < 400; ++i) {
        switch (random() % 5) {
        case 0:
        case 1:
            if (open.size() < 40) {
                open.push_back(names[random() % std::size(names)]);
                text += std::string("<") + open.back() + ">";
            }
            break;
        case 2:
        case 3:
            if (!open.empty()) {
                text += std::string("</") + open.back() + ">";
                open.pop_back();
            }
            break;
        default:
            text += leaves[random() % std::size(leaves)];
        }
    }
    for (; !open.empty(); open.pop_back())
        text += std::string("</") + open.back() + ">";
    return text + "</Root>";
}

class RandomDocument : public testing::TestWithParam<unsigned> {
protected:
    Document document{random_document(GetParam())};
};

TEST_P(RandomDocument, HasPathsThatLeadBack)
{
    expect_paths_lead_back(document);
}

TEST_P(RandomDocument, HasTheChildrenThatXPathFinds)
{
    for (xmlNode* element : nodes_of(document, "//*")) {
        for (const char* name : {"A", "text", "Item", "none"}) {
            for (int index = 1; index <= 3; ++index) {
                const std::string step = std::string(name) + "[" + std::to_string(index) + "]";
                xmlNode* const expected = node_of(document, step, element);
                document.slot()->current = element;
                kh_tree_go_to_path_node(&document.fd, step.c_str(), &document.status);
                ASSERT_EQ(document.status, expected ? KH_OK : KH_ERR_NOT_FOUND) << step;
                if (expected) {
                    ASSERT_EQ(document.current(), expected) << step;
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Generated, RandomDocument, testing::Range(1u, 21u));

class DebianDocument : public testing::TestWithParam<const char*> {};

TEST_P(DebianDocument, HasPathsThatLeadBack)
{
    const std::string name = support::debian_file(GetParam());
    if (name.empty())
        GTEST_SKIP() << GetParam() << " is not installed";
    Document document = Document::file(name);
    expect_paths_lead_back(document);
}

INSTANTIATE_TEST_SUITE_P(Installed, DebianDocument,
                         testing::Values("/usr/share/X11/xkb/rules/base.xml",
                                         "/usr/share/mime/packages/freedesktop.org.xml"),
                         [](const auto& file) {
                             return std::string(file.index == 0 ? "Keyboards" : "MimeTypes");
                         });

} // namespace
