// The cursor: searches in document order, the single steps that paths are made of, and positions.
#include "support/nodes.h"
#include "support/outcome.h"

namespace {

using support::Document;
using support::failure;
using support::missing_argument;
using support::node_of;
using support::nodes_of;
using support::outcome_of;
using support::success;
using support::untouched;

std::string tag_of(const Document& document)
{
    const char* const tag = document.slot()->requested_tag;
    return tag ? tag : "(none)";
}

/// A document with elements A on three levels, numbered in document order.
class Cursor : public testing::Test {
protected:
    support::Outcome find(const char* name)
    {
        return outcome_of([&](long* ierr) { kh_tree_go_to_element_node(&document.fd, name, ierr); });
    }
    support::Outcome step()
    {
        return outcome_of([&](long* ierr) { kh_tree_go_to_next_element_node(&document.fd, ierr); });
    }
    xmlNode* node(const std::string& xpath) { return node_of(document, xpath); }
    xmlNode* numbered(int n) { return node("//*[@n='" + std::to_string(n) + "']"); }
    long visited() const { return document.slot()->visited; }

    Document document{
        "<R>text<A n='1'/><B><A n='2'><A n='3'/></A>more</B><!--comment--><A n='4'/><C/></R><!--end-->"};
};

TEST_F(Cursor, RewindGoesToTheRootAndKeepsTagAndCount)
{
    find("A");
    EXPECT_EQ(outcome_of([&](long* ierr) { EXPECT_EQ(kh_tree_rewind(&document.fd, ierr), 0); }), success);
    EXPECT_EQ(document.current(), document.root());
    EXPECT_EQ(tag_of(document), "A");
    EXPECT_EQ(visited(), 1);
}

TEST_F(Cursor, FindsTheElementsOfANameInDocumentOrder)
{
    EXPECT_EQ(find("A"), success);
    EXPECT_EQ(document.current(), numbered(1));
    const long visited_at[] = {1, 3, 4, 5};
    for (int n = 2; n <= 4; ++n) {
        EXPECT_EQ(visited(), visited_at[n - 2]);
        EXPECT_EQ(find(nullptr), success);
        EXPECT_EQ(document.current(), numbered(n));
    }
    EXPECT_EQ(visited(), visited_at[3]);
    EXPECT_EQ(find(nullptr), failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_element_node"));
    EXPECT_EQ(document.current(), numbered(4)) << "a failed search leaves the cursor";
    EXPECT_EQ(visited(), 6) << "the last element was stepped over";
    EXPECT_EQ(tag_of(document), "A");
}

TEST_F(Cursor, CountsFromZeroAgainWhenANameIsGiven)
{
    find("A");
    find("A");
    EXPECT_EQ(document.current(), numbered(2));
    EXPECT_EQ(visited(), 2);
}

TEST_F(Cursor, NeverFindsTheElementItStandsOn)
{
    EXPECT_EQ(find("R"), failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_element_node"));
    EXPECT_EQ(document.current(), document.root());
    EXPECT_EQ(tag_of(document), "R");
    EXPECT_EQ(visited(), 6) << "all elements below the root";
}

TEST_F(Cursor, DoesNotFindANameThatOccursOnlyBeforeIt)
{
    find("C");
    xmlNode* const before = document.current();
    EXPECT_EQ(find("B"), failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_element_node"));
    EXPECT_EQ(document.current(), before);
}

TEST_F(Cursor, ComparesNamesByteForByte)
{
    for (const char* name : {"a", "", "AA", "text", "comment", "A ", "n"}) {
        EXPECT_EQ(find(name), failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_element_node")) << name;
        EXPECT_EQ(document.current(), document.root());
    }
}

TEST_F(Cursor, NeedsARequestedTag)
{
    EXPECT_EQ(find(nullptr), failure(KH_ERR_NO_REQUEST, "kh_tree_go_to_element_node"));
    EXPECT_EQ(document.current(), document.root());
}

TEST_F(Cursor, TakesItsOwnRequestedTagForAName)
{
    find("A");
    EXPECT_EQ(find(document.slot()->requested_tag), success);
    EXPECT_EQ(document.current(), numbered(2));
    kh_tree_set_requested_tag(&document.fd, document.slot()->requested_tag);
    EXPECT_EQ(tag_of(document), "A");
}

TEST_F(Cursor, StepsToEveryElementInDocumentOrder)
{
    kh_tree_set_requested_tag(&document.fd, "C");
    long count = 0;
    for (const xmlNode* element : nodes_of(document, "/R//*")) {
        EXPECT_EQ(step(), success);
        EXPECT_EQ(document.current(), element);
        EXPECT_EQ(visited(), ++count);
    }
    const xmlNode* const last = document.current();
    EXPECT_EQ(step(), failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_next_element_node"));
    EXPECT_EQ(document.current(), last);
    EXPECT_EQ(visited(), count);
    EXPECT_EQ(tag_of(document), "C") << "a step asks for no name";
}

TEST_F(Cursor, SearchesReturnTheElementFound)
{
    kh_tree_set_requested_tag(&document.fd, "A");
    EXPECT_EQ(kh_tree_get_next_element_node(&document.fd, 1), numbered(1));
    EXPECT_EQ(kh_tree_get_next_element_node(&document.fd, 1), node("/R/B"));
    for (const int mode : {0, 2, -1}) {
        kh_tree_rewind(&document.fd, &document.status);
        EXPECT_EQ(kh_tree_get_next_element_node(&document.fd, mode), numbered(1)) << "mode " << mode;
        EXPECT_EQ(document.current(), numbered(1));
    }
}

TEST_F(Cursor, SearchesFindNothingWithoutACursorOrATag)
{
    EXPECT_EQ(kh_tree_get_next_element_node(&document.fd, 0), nullptr) << "no tag";
    EXPECT_EQ(document.current(), document.root());
    document.slot()->current = nullptr;
    EXPECT_EQ(kh_tree_get_next_element_node(&document.fd, 0), nullptr);
    EXPECT_EQ(kh_tree_get_next_element_node(&document.fd, 1), nullptr);
    EXPECT_EQ(find("A"), failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_element_node"));
    EXPECT_EQ(step(), failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_next_element_node"));
    EXPECT_EQ(document.current(), nullptr);
}

TEST_F(Cursor, SetsTheRequestedTagAndResetsTheCount)
{
    step();
    char name[] = "Tag";
    kh_tree_set_requested_tag(&document.fd, name);
    name[0] = '?';
    EXPECT_EQ(tag_of(document), "Tag") << "a copy";
    EXPECT_EQ(visited(), 0);
    step();
    kh_tree_set_requested_tag(&document.fd, nullptr);
    EXPECT_EQ(document.slot()->requested_tag, nullptr);
    EXPECT_EQ(visited(), 0);
    EXPECT_EQ(find(nullptr).status, KH_ERR_NO_REQUEST);
}

TEST_F(Cursor, TakesARequestedTagOfAnyLength)
{
    const std::string name(100000, 'x');
    kh_tree_set_requested_tag(&document.fd, name.c_str());
    EXPECT_EQ(tag_of(document), name);
}

TEST(NextNode, FollowsDocumentOrderAndLeavesTheRoot)
{
    const Document document("<!--before--><R>a<A><B/>b<!--c--></A><?pi data?><![CDATA[d]]></R><!--end-->");
    std::vector<xmlNode*> walked;
    for (xmlNode* node = document.slot()->doc->children; node; node = kh_tree_get_next_node(node))
        walked.push_back(node);
    EXPECT_EQ(walked, nodes_of(document, "/descendant::node()"));
    EXPECT_EQ(walked.back(), document.root()->next) << "the comment behind the root";
}

TEST(NextNode, OfTheParentsIsTheNearestFollowingSibling)
{
    const Document document("<R><A><B><C/></B></A><D/></R><!--end-->");
    xmlNode* const d = node_of(document, "/R/D");
    for (const char* below : {"//C", "//B", "//A"})
        EXPECT_EQ(kh_tree_get_parent_next_node(node_of(document, below)), d) << below;
    EXPECT_EQ(kh_tree_get_parent_next_node(d), document.root()->next) << "the root is no bound";
    EXPECT_EQ(kh_tree_get_parent_next_node(document.root()->next), nullptr);
}

TEST(NextNode, OfNothingIsNothing)
{
    EXPECT_EQ(kh_tree_get_next_node(nullptr), nullptr);
    EXPECT_EQ(kh_tree_get_parent_next_node(nullptr), nullptr);
}

TEST(NextNode, OfADetachedElementEndsAtItsTop)
{
    xmlNode* const element = xmlNewNode(nullptr, BAD_CAST "A");
    EXPECT_EQ(kh_tree_get_next_node(element), nullptr);
    xmlNode* const child = xmlNewChild(element, nullptr, BAD_CAST "B", nullptr);
    EXPECT_EQ(kh_tree_get_next_node(element), child);
    EXPECT_EQ(kh_tree_get_next_node(child), nullptr);
    xmlFreeNode(element);
}

TEST(NextNode, StepsThroughDocumentsOfAnyDepth)
{
    constexpr int depth = 2000;
    std::string text;
    for (int i = 0; i < depth; ++i)
        text += "<A>";
    for (int i = 0; i < depth; ++i)
        text += "</A>";
    Document document(text);
    xmlNode* last = nullptr;
    long count = 0;
    for (xmlNode* node = document.root(); node; node = kh_tree_get_next_node(node), ++count)
        last = node;
    EXPECT_EQ(count, depth);
    EXPECT_EQ(kh_tree_distance_from_root(&document.fd, last), depth - 1);
}

TEST(Search, FindsTheRootFromBeforeIt)
{
    Document document("<!--before--><R/>");
    document.slot()->current = document.slot()->doc->children;
    kh_tree_go_to_element_node(&document.fd, "R", &document.status);
    EXPECT_EQ(document.status, 0);
    EXPECT_EQ(document.current(), document.root());
    EXPECT_EQ(document.slot()->visited, 1);
}

TEST(Search, ComparesNamesWithoutTheirPrefix)
{
    Document document("<R xmlns:a='urn:a' xmlns:b='urn:b'><a:X/><b:X/></R>");
    for (const xmlNode* element : nodes_of(document, "/R/*")) {
        kh_tree_go_to_element_node(&document.fd, "X", &document.status);
        EXPECT_EQ(document.current(), element);
    }
    kh_tree_go_to_element_node(&document.fd, "a:X", &document.status);
    EXPECT_EQ(document.status, KH_ERR_NOT_FOUND);
}

/// An entity reference, which libxml2 links to its declaration: a walk into it would end in the document
/// type.
class EntityReference : public testing::Test {
protected:
    Document document{"<!DOCTYPE R [<!ENTITY e '<E>&f;</E>'><!ENTITY f 'text'>]><R>&e;<A/></R>"};
    xmlNode* const reference = document.root()->children;
};

TEST_F(EntityReference, HasNoNodeBelowItForAnyMove)
{
    ASSERT_EQ(reference->type, XML_ENTITY_REF_NODE);
    EXPECT_EQ(kh_tree_get_next_node(reference), node_of(document, "/R/A"));
    EXPECT_EQ(kh_tree_go_to_child(&document.fd, reference, "E", 0), nullptr);
    EXPECT_EQ(kh_tree_go_to_child(&document.fd, reference, "E", -1), nullptr);
}

TEST_F(EntityReference, IsPassedByASearch)
{
    kh_tree_go_to_element_node(&document.fd, "E", &document.status);
    EXPECT_EQ(document.status, KH_ERR_NOT_FOUND);
    EXPECT_EQ(document.slot()->visited, 1) << "the element A alone";
    EXPECT_EQ(document.current(), document.root());
    kh_tree_go_to_next_element_node(&document.fd, &document.status);
    EXPECT_EQ(document.current_name(), "A");
}

TEST_F(EntityReference, IsReachedAsAFirstChildOfAnyKind)
{
    EXPECT_EQ(kh_tree_go_to_child(&document.fd, document.root(), "A", -1), reference);
}

TEST(IsAttribute, TellsWhetherTheLastPathEndsWithOne)
{
    Document document("<R><A id='1'/></R>");
    EXPECT_EQ(kh_tree_is_attribute(&document.fd), 0) << "no path yet";
    const struct {
        const char* path;
        long answer;
    } rows[] = {{"/R/A/@id", 1}, {"/R/A", 0},     {"@id", 1}, {"@id/A", 0},
                {"A@id", 0},     {"@none[2]", 1}, {"", 0}};
    for (const auto& row : rows) {
        kh_tree_chop_path(&document.fd, row.path, &document.status);
        EXPECT_EQ(kh_tree_is_attribute(&document.fd), row.answer) << row.path;
    }
}

/// Steps from one node to another by name.
class Step : public testing::Test {
protected:
    Document document{"<R>t<A id='1'/>t<B/><A id='2'/><!--c--><text/><comment/><A id='3'/></R>"};
    xmlNode* a(int n) { return node_of(document, "/R/A[" + std::to_string(n) + "]"); }
    xmlNode* sibling(xmlNode* node, const char* name)
    {
        return kh_tree_go_to_next_sibling(&document.fd, node, name);
    }
    xmlNode* child(const char* name, long index)
    {
        kh_tree_rewind(&document.fd, &document.status);
        return kh_tree_go_to_child(&document.fd, document.root(), name, index);
    }
};

TEST_F(Step, ToTheNextSiblingMovesTheCursor)
{
    EXPECT_EQ(sibling(document.root()->children, "A"), a(1)) << "from a text";
    EXPECT_EQ(document.current(), a(1));
    EXPECT_EQ(sibling(a(1), "A"), a(2));
    EXPECT_EQ(document.current(), a(2));
}

TEST_F(Step, ToASiblingThatDoesNotFollowLeavesTheCursor)
{
    EXPECT_EQ(sibling(a(3), "A"), nullptr);
    EXPECT_EQ(sibling(a(2), "B"), nullptr);
    EXPECT_EQ(sibling(a(1), "a"), nullptr);
    EXPECT_EQ(document.current(), document.root());
}

TEST_F(Step, ToASiblingConsidersElementsAlone)
{
    EXPECT_EQ(sibling(a(1), "text"), node_of(document, "/R/text")) << "libxml2 names its text nodes \"text\"";
    EXPECT_EQ(sibling(a(1), "comment"), node_of(document, "/R/comment"));
}

TEST_F(Step, ToASiblingNeedsANodeAndAName)
{
    EXPECT_EQ(sibling(nullptr, "A"), nullptr);
    EXPECT_EQ(sibling(a(1), nullptr), nullptr);
    EXPECT_EQ(document.current(), document.root());
}

TEST_F(Step, ToAChildTakesTheIndexAmongTheElementsOfTheName)
{
    for (int index = 0; index < 3; ++index) {
        EXPECT_EQ(child("A", index), a(index + 1));
        EXPECT_EQ(document.current(), a(index + 1)) << "the cursor moves along the siblings tried";
    }
    EXPECT_EQ(child("text", 0), node_of(document, "/R/text"));
}

TEST_F(Step, ToTheVeryFirstChildLeavesTheCursor)
{
    Document plain("<R><A/><B/></R>");
    EXPECT_EQ(kh_tree_go_to_child(&plain.fd, plain.root(), "A", 0), plain.root()->children);
    EXPECT_EQ(plain.current(), plain.root());
}

TEST_F(Step, ToAMissingChildLeavesTheCursorOnTheLastSiblingTried)
{
    const struct {
        const char* name;
        long index;
        xmlNode* cursor;
    } rows[] = {{"A", 3, a(3)},
                {"A", 1L << 40, a(3)},
                {"B", 1, node_of(document, "/R/B")},
                {"Z", 0, document.root()},
                {"Z", 7, document.root()},
                {"", 0, document.root()}};
    for (const auto& row : rows) {
        EXPECT_EQ(child(row.name, row.index), nullptr) << row.name << ' ' << row.index;
        EXPECT_EQ(document.current(), row.cursor) << row.name << ' ' << row.index;
    }
}

TEST_F(Step, ToAMissingChildBehindAMatchingFirstOneLeavesTheCursor)
{
    Document plain("<R><A/><B/></R>");
    EXPECT_EQ(kh_tree_go_to_child(&plain.fd, plain.root(), "A", 1), nullptr);
    EXPECT_EQ(plain.current(), plain.root()) << "the first child is looked at without moving";
}

// Callers rely on a negative index to reach a text.
TEST_F(Step, ToANegativeIndexIsTheFirstChildOfAnyKind)
{
    for (const long index : {-1L, -2L, -2147483648L}) {
        EXPECT_EQ(child("A", index), document.root()->children);
        EXPECT_EQ(child("Z", index), document.root()->children);
        EXPECT_EQ(document.current(), document.root());
    }
}

TEST_F(Step, ToAChildNeedsANodeWithChildrenAndAName)
{
    for (const long index : {-1L, 0L, 1L}) {
        EXPECT_EQ(kh_tree_go_to_child(&document.fd, nullptr, "A", index), nullptr);
        EXPECT_EQ(kh_tree_go_to_child(&document.fd, a(1), "A", index), nullptr) << "no children";
    }
    EXPECT_EQ(kh_tree_go_to_child(&document.fd, document.root(), nullptr, 0), nullptr);
    EXPECT_EQ(document.current(), document.root());
}

TEST_F(Step, ToTheParentLeavesTheCursor)
{
    document.go_to("/R/B");
    const xmlNode* const before = document.current();
    EXPECT_EQ(outcome_of([&](long* ierr) {
                  EXPECT_EQ(kh_tree_go_to_parent(&document.fd, a(2), ierr), document.root());
              }),
              success);
    EXPECT_EQ(document.current(), before);
}

TEST_F(Step, ToTheParentOfTheRootWarnsAndStays)
{
    EXPECT_EQ(outcome_of([&](long* ierr) {
                  EXPECT_EQ(kh_tree_go_to_parent(&document.fd, document.root(), ierr), document.root());
              }),
              failure(KH_WARN_ROOT_REACHED, "kh_tree_go_to_parent"));
    EXPECT_EQ(document.current(), document.root());
}

TEST_F(Step, ToTheParentNeedsANode)
{
    EXPECT_EQ(outcome_of(
                  [&](long* ierr) { EXPECT_EQ(kh_tree_go_to_parent(&document.fd, nullptr, ierr), nullptr); }),
              missing_argument("kh_tree_go_to_parent"));
}

TEST(GoToAttribute, SkipsOneCharacterWhateverItIs)
{
    const Document document("<R id='1' x='2' xmlns:p='urn:p' p:y='3'>t</R>");
    xmlNode* const root = document.root();
    const struct {
        const char* name;
        const char* found;
    } rows[] = {{"@id", "id"}, {"@x", "x"},       {"/x", "x"},      {"xx", "x"},
                {"@y", "y"},   {"id", nullptr},   {"x", nullptr},   {"@", nullptr},
                {"", nullptr}, {"@p:y", nullptr}, {"@ID", nullptr}, {"@i", nullptr}};
    for (const auto& row : rows) {
        const xmlAttr* const attribute = kh_tree_go_to_attribute(root, row.name);
        EXPECT_STREQ(attribute ? reinterpret_cast<const char*>(attribute->name) : nullptr, row.found)
            << row.name;
    }
    EXPECT_EQ(kh_tree_go_to_attribute(root, nullptr), nullptr);
    EXPECT_EQ(kh_tree_go_to_attribute(nullptr, "@id"), nullptr);
    EXPECT_EQ(kh_tree_go_to_attribute(root->children, "@id"), nullptr) << "a text";
}

TEST(SiblingIndex, CountsTheElementsOfTheSameName)
{
    const Document document("<R xmlns:p='urn:p'>t<A/><B/>t<A/><!--A--><p:A/><text/></R>");
    const struct {
        const char* xpath;
        long total, position;
    } rows[] = {{"/R", 1, 1},      {"/R/B", 1, 1},    {"/R/*[1]", 3, 1},
                {"/R/*[3]", 3, 2}, {"/R/*[4]", 3, 3}, {"/R/text", 1, 1}};
    for (const auto& row : rows) {
        long total = untouched, position = untouched;
        EXPECT_EQ(kh_tree_get_sibling_index(node_of(document, row.xpath), &total, &position), row.total);
        EXPECT_EQ(total, row.total) << row.xpath;
        EXPECT_EQ(position, row.position) << row.xpath;
    }
}

TEST(SiblingIndex, CountsANodeWithoutNameAsTheOnlyOne)
{
    const Document document("<R><![CDATA[one]]><A/><![CDATA[two]]></R>");
    for (const xmlNode* node : {document.root()->children, document.root()->last}) {
        ASSERT_EQ(node->type, XML_CDATA_SECTION_NODE);
        long total = untouched, position = untouched;
        EXPECT_EQ(kh_tree_get_sibling_index(const_cast<xmlNode*>(node), &total, &position), 1);
        EXPECT_EQ(total, 1);
        EXPECT_EQ(position, 1);
    }
}

TEST(SiblingIndex, ToleratesNullArguments)
{
    const Document document("<R><A/><A/></R>");
    EXPECT_EQ(kh_tree_get_sibling_index(node_of(document, "/R/A[2]"), nullptr, nullptr), 2);
    long total = 0, position = 0;
    EXPECT_EQ(kh_tree_get_sibling_index(nullptr, &total, &position), 0);
}

TEST(DistanceFromRoot, CountsTheStepsUpToTheRoot)
{
    Document document("<R><A><B>t</B></A></R>");
    const struct {
        const char* xpath;
        long distance;
    } rows[] = {{"/R", 0}, {"/R/A", 1}, {"/R/A/B", 2}, {"/R/A/B/text()", 3}};
    for (const auto& row : rows)
        EXPECT_EQ(kh_tree_distance_from_root(&document.fd, node_of(document, row.xpath)), row.distance)
            << row.xpath;
    EXPECT_EQ(kh_tree_distance_from_root(&document.fd, nullptr), 0);
}

TEST(DistanceFromRoot, StopsAtTheTopOfANodeThatIsNotBelowIt)
{
    Document document("<R/>");
    xmlNode* const element = xmlNewNode(nullptr, BAD_CAST "A");
    xmlNode* const child = xmlNewChild(element, nullptr, BAD_CAST "B", nullptr);
    EXPECT_EQ(kh_tree_distance_from_root(&document.fd, element), 0);
    EXPECT_EQ(kh_tree_distance_from_root(&document.fd, child), 1);
    xmlFreeNode(element);
}

// Beyond a few, children are found without a walk; the cursor tells no difference.
TEST_F(Step, ToAMissingFarChildMovesAsAWalkDoes)
{
    EXPECT_EQ(child("Z", 20), nullptr);
    EXPECT_EQ(document.current(), document.root()) << "no child of that name";
    EXPECT_EQ(child("A", 20), nullptr);
    EXPECT_EQ(document.current(), a(3)) << "the last one tried";
    Document plain("<R><A/><B/></R>");
    EXPECT_EQ(kh_tree_go_to_child(&plain.fd, plain.root(), "A", 20), nullptr);
    EXPECT_EQ(plain.current(), plain.root()) << "the first child is looked at without moving";
}

} // namespace
