#include "build/edit.h"

#include <vector>

namespace {

using edit::in_memory;
using edit::outcome;
using edit::status;
using edit::written;
using support::Document;
using support::failure;
using support::missing_argument;
using support::Outcome;
using support::outcome_of;
using support::passed_on;
using support::success;
using support::untouched;

/// An element to add, and the document it makes before a write completes it.
struct Addition {
    std::string document, path, result;
};

void expect_additions(decltype(kh_tree_add_child)* add, const std::vector<Addition>& additions)
{
    for (const auto& [xml, path, result] : additions) {
        Document document(xml);
        EXPECT_NE(add(&document.fd, path.c_str(), "n", &document.status), 0) << xml;
        EXPECT_EQ(document.status, KH_OK) << xml;
        EXPECT_EQ(in_memory(document), result) << xml;
        EXPECT_EQ(document.current_name(), "n") << xml;
    }
}

TEST(CreateRoot, MakesTheRootAndPutsTheCursorOnIt)
{
    Document document;
    EXPECT_NE(kh_tree_create_root(&document.fd, "r", &document.status), 0);
    EXPECT_EQ(document.status, KH_OK);
    EXPECT_EQ(document.root(), document.current());
    EXPECT_EQ(document.root(), document.slot()->doc->children);
    EXPECT_EQ(document.current_name(), "r");
    EXPECT_EQ(document.root()->ns, nullptr);
    // The first child replaces this text with its own indentation.
    EXPECT_EQ(document.written(), "<?xml version=\"1.0\"?>\n<r>\n  </r>\n");
}

TEST(CreateRoot, LeavesARootThatIsThere)
{
    Document created;
    ASSERT_EQ(status(created, kh_tree_create_root, "first"), KH_OK);
    EXPECT_EQ(outcome(created, kh_tree_create_root, "second"),
              failure(KH_ERR_ROOT_EXISTS, "kh_tree_create_root"));
    EXPECT_EQ(written(created), "<first>\n  </first>");

    Document parsed("<first/>");
    EXPECT_EQ(status(parsed, kh_tree_create_root, "second"), KH_ERR_ROOT_EXISTS);
    EXPECT_EQ(kh_tree_create_root(&parsed.fd, "second", &parsed.status), KH_ERR_ROOT_EXISTS);
    EXPECT_EQ(written(parsed), "<first/>");
}

TEST(CreateRoot, RefusesBadDescriptors)
{
    for (const auto& [descriptor, code] :
         {std::pair{512L, KH_ERR_DESCRIPTOR}, {-1L, KH_ERR_DESCRIPTOR}, {511L, KH_ERR_NO_DOCUMENT}}) {
        long fd = descriptor;
        EXPECT_EQ(outcome_of([&](long* ierr) { kh_tree_create_root(&fd, "r", ierr); }),
                  failure(code, "kh_tree_create_root"));
    }
    EXPECT_EQ(outcome_of([](long* ierr) { kh_tree_create_root(nullptr, "r", ierr); }),
              missing_argument("kh_tree_create_root"));
}

TEST(CreateRoot, RefusesAMissingName)
{
    Document document;
    EXPECT_EQ(outcome(document, kh_tree_create_root, nullptr), missing_argument("kh_tree_create_root"));
    EXPECT_EQ(document.root(), nullptr);
    EXPECT_EQ(document.current(), nullptr);
}

TEST(CreateRoot, RefusesNamesThatXmlDoesNotAllow)
{
    Document document;
    for (const std::string name : edit::names_xml_refuses)
        EXPECT_EQ(outcome(document, kh_tree_create_root, name.c_str()),
                  failure(KH_ERR_ARGUMENT, "kh_tree_create_root", ". Node: " + name));
    EXPECT_EQ(document.root(), nullptr);
}

TEST(CreateRoot, TakesNamesWithColonsAndLetters)
{
    for (const std::string name : edit::names_xml_allows) {
        Document document;
        EXPECT_EQ(status(document, kh_tree_create_root, name.c_str()), KH_OK) << name;
        EXPECT_EQ(document.current_name(), name);
    }
}

TEST(Adding, IndentsABuiltDocumentByTwoSpacesALevel)
{
    Document document;
    ASSERT_EQ(status(document, kh_tree_create_root, "r"), KH_OK);
    ASSERT_EQ(status(document, kh_tree_add_child, ".", "a"), KH_OK);
    ASSERT_EQ(status(document, kh_tree_add_child, ".", "b"), KH_OK);
    EXPECT_EQ(document.written(), "<?xml version=\"1.0\"?>\n"
                                  "<r>\n"
                                  "  <a>\n"
                                  "    <b/>\n"
                                  "  </a>\n"
                                  "</r>\n");
    ASSERT_EQ(status(document, kh_tree_add_next_sibling, "/r/a", "c"), KH_OK);
    ASSERT_EQ(status(document, kh_tree_add_previous_sibling, "/r/a/b", "d"), KH_OK);
    ASSERT_EQ(status(document, kh_tree_add_child, "/r", "e"), KH_OK);
    ASSERT_EQ(status(document, kh_tree_add_child, "/r/c", "f"), KH_OK);
    EXPECT_EQ(document.written(), "<?xml version=\"1.0\"?>\n"
                                  "<r>\n"
                                  "  <a>\n"
                                  "    <d/>\n"
                                  "    <b/>\n"
                                  "  </a>\n"
                                  "  <c>\n"
                                  "    <f/>\n"
                                  "  </c>\n"
                                  "  <e/>\n"
                                  "</r>\n");
}

TEST(AddChild, AppendsOnALineOfItsOwn)
{
    expect_additions(kh_tree_add_child, {
                                            {"<r/>", "/r", "<r>\n  <n/></r>"},
                                            {"<r><a/></r>", "/r", "<r><a/>\n  <n/></r>"},
                                            {"<r><a/></r>", "/r/a", "<r><a>\n    <n/></a></r>"},
                                            {"<r><a/><a/></r>", "/r/a[2]", "<r><a/><a>\n    <n/></a></r>"},
                                            {"<r><!--c--></r>", "/r", "<r><!--c-->\n  <n/></r>"},
                                            {"<r><![CDATA[t]]></r>", "/r", "<r><![CDATA[t]]>\n  <n/></r>"},
                                        });
}

TEST(AddChild, ReplacesTheTextDirectlyBeforeIt)
{
    expect_additions(kh_tree_add_child,
                     {
                         {"<r>\n  <a/>\n</r>", "/r", "<r>\n  <a/>\n  <n/></r>"},
                         {"<r>\n  </r>", "/r", "<r>\n  <n/></r>"},
                         // Callers rely on it: an element that gets its first child loses its text.
                         {"<r>text</r>", "/r", "<r>\n  <n/></r>"},
                         {"<r>a<b/>c</r>", "/r", "<r>a<b/>\n  <n/></r>"},
                     });
}

TEST(AddChild, TakesTheNamespaceOfItsParent)
{
    expect_additions(kh_tree_add_child,
                     {
                         {"<r xmlns=\"u\"/>", "/r", "<r xmlns=\"u\">\n  <n/></r>"},
                         {"<p:r xmlns:p=\"u\"/>", "/r", "<p:r xmlns:p=\"u\">\n  <p:n/></p:r>"},
                     });
}

TEST(AddSibling, StandsBesideItsReference)
{
    expect_additions(kh_tree_add_next_sibling,
                     {
                         {"<r>\n  <a/>\n</r>", "/r/a", "<r>\n  <a/>\n  <n/>\n</r>"},
                         {"<r><a/></r>", "/r/a", "<r><a/>\n  <n/></r>"},
                         {"<r><a/><b/></r>", "/r/a", "<r><a/>\n  <n/><b/></r>"},
                         {"<r><a/>text</r>", "/r/a", "<r><a/>\n  <n/>text</r>"},
                         {"<r><a><b/></a></r>", "/r/a/b", "<r><a><b/>\n    <n/></a></r>"},
                         {"<r><a/><a/><a/></r>", "/r/a[2]", "<r><a/><a/>\n  <n/><a/></r>"},
                     });
    expect_additions(kh_tree_add_previous_sibling,
                     {
                         {"<r>\n  <a/>\n</r>", "/r/a", "<r>\n  <n/>\n  <a/>\n</r>"},
                         {"<r><a/></r>", "/r/a", "<r><n/>\n  <a/></r>"},
                         {"<r><a/><b/></r>", "/r/b", "<r><a/><n/>\n  <b/></r>"},
                         {"<r>text<a/></r>", "/r/a", "<r>text<n/>\n  <a/></r>"},
                         {"<r><a><b/></a></r>", "/r/a/b", "<r><a><n/>\n    <b/></a></r>"},
                     });
}

TEST(AddSibling, StandsBesideATextOrCommentToo)
{
    expect_additions(kh_tree_add_next_sibling, {
                                                   {"<r>text</r>", "/r/x[0]", "<r>text\n  <n/></r>"},
                                                   {"<r><!--c--></r>", "/r/x[0]", "<r><!--c-->\n  <n/></r>"},
                                               });
    expect_additions(kh_tree_add_previous_sibling,
                     {
                         {"<r>text</r>", "/r/x[0]", "<r><n/>\n  text</r>"},
                         {"<r><!--c--></r>", "/r/x[0]", "<r><n/>\n  <!--c--></r>"},
                     });
}

TEST(AddSibling, HasNoNamespace)
{
    expect_additions(kh_tree_add_next_sibling, {{"<p:r xmlns:p=\"u\"><p:a/></p:r>", "/r/a",
                                                 "<p:r xmlns:p=\"u\"><p:a/>\n  <n/></p:r>"}});
}

TEST(AddSibling, IsRefusedForTheRoot)
{
    struct Function {
        const char* name;
        decltype(kh_tree_add_next_sibling)* add;
    };
    for (const auto& [name, add] : {Function{"kh_tree_add_next_sibling", kh_tree_add_next_sibling},
                                    Function{"kh_tree_add_previous_sibling", kh_tree_add_previous_sibling}}) {
        Document document("<!--c--><r><a/></r>");
        Outcome expected = failure(KH_ERR_ADD_SIBLING, "kh_tree_add_sibling");
        expected.report += std::string("\n\tFunction: ") + name + ". Node: n\n";
        EXPECT_EQ(outcome(document, add, "/r", "n"), expected);
        EXPECT_EQ(add(&document.fd, "/r", "n", &document.status), KH_ERR_ADD_SIBLING);
        EXPECT_EQ(in_memory(document), "<!--c-->\n<r><a/></r>");
        EXPECT_EQ(document.current(), document.root());
    }
}

/// The worker of both: a node without parent goes beside another.
class AddSiblingNode : public testing::Test {
protected:
    AddSiblingNode() : added(xmlNewDocNode(document.slot()->doc, nullptr, BAD_CAST "n", nullptr)) {}
    xmlNode* reference() const { return document.root()->children; }
    Outcome insert(xmlNode* beside, xmlNode* (*function)(xmlNode*, xmlNode*))
    {
        return outcome(document, kh_tree_add_sibling, beside, added, function);
    }
    void expect_still_the_callers()
    {
        EXPECT_EQ(added->parent, nullptr);
        EXPECT_NE(document.current(), added);
        xmlFreeNode(added);
        EXPECT_EQ(written(document), "<r><a/>\n</r>");
    }

    Document document{"<r><a/></r>"};
    xmlNode* added;
};

TEST_F(AddSiblingNode, MovesTheCursorAndIndents)
{
    EXPECT_EQ(insert(reference(), xmlAddNextSibling), success);
    EXPECT_EQ(document.current(), added);
    EXPECT_EQ(in_memory(document), "<r><a/>\n  <n/></r>");
}

TEST_F(AddSiblingNode, LeavesTheNodeToTheCallerWhenItIsNotInserted)
{
    EXPECT_EQ(insert(reference(), [](xmlNode*, xmlNode*) -> xmlNode* { return nullptr; }),
              failure(KH_ERR_ADD_SIBLING, "kh_tree_add_sibling"));
    expect_still_the_callers();
}

TEST_F(AddSiblingNode, LeavesTheNodeToTheCallerWhenTheIndentationIsNotInserted)
{
    const auto only_elements = [](xmlNode* beside, xmlNode* node) -> xmlNode* {
        return node->type == XML_ELEMENT_NODE ? xmlAddNextSibling(beside, node) : nullptr;
    };
    EXPECT_EQ(insert(reference(), only_elements),
              failure(KH_ERR_ADD_SIBLING, "kh_tree_add_sibling", ". Error in the indentation"));
    expect_still_the_callers();
}

TEST_F(AddSiblingNode, RefusesTheRootAsReference)
{
    EXPECT_EQ(insert(document.root(), xmlAddPrevSibling), failure(KH_ERR_ADD_SIBLING, "kh_tree_add_sibling"));
    expect_still_the_callers();
}

TEST(AddSibling, RefusesATextBesideItself)
{
    Document document("<r>text<a/></r>");
    xmlNode* text = document.root()->children;
    EXPECT_EQ(outcome(document, kh_tree_add_sibling, text, text, xmlAddNextSibling),
              failure(KH_ERR_ADD_SIBLING, "kh_tree_add_sibling"));
    EXPECT_EQ(in_memory(document), "<r>text<a/></r>");
}

TEST_F(AddSiblingNode, RefusesMissingArguments)
{
    const Outcome missing = missing_argument("kh_tree_add_sibling");
    EXPECT_EQ(insert(nullptr, xmlAddNextSibling), missing);
    EXPECT_EQ(insert(reference(), nullptr), missing);
    EXPECT_EQ(outcome(document, kh_tree_add_sibling, reference(), nullptr, xmlAddNextSibling), missing);
    expect_still_the_callers();
}

TEST_F(AddSiblingNode, SurvivesBadDescriptors)
{
    for (const auto& [descriptor, code] : {std::pair{512L, -21L}, {-1L, -21L}, {511L, -7L}}) {
        long fd = descriptor;
        long result = untouched;
        kh_tree_add_sibling(&fd, reference(), added, xmlAddNextSibling, &result);
        EXPECT_EQ(result, code) << descriptor;
    }
    expect_still_the_callers();
}

TEST(AddAttribute, AddsItWithoutValueAndStaysOnTheElement)
{
    Document document("<r><a b=\"1\"/></r>");
    EXPECT_NE(kh_tree_add_attribute(&document.fd, "/r/a", "n", &document.status), 0);
    EXPECT_EQ(document.status, KH_OK);
    EXPECT_EQ(in_memory(document), "<r><a b=\"1\" n=\"\"/></r>");
    EXPECT_EQ(document.path(), "/r/a");
}

TEST(AddAttribute, LeavesOneOfTheSameWrittenNameAlone)
{
    struct Case {
        std::string document, name, result;
    };
    for (const auto& [xml, name, result] : std::vector<Case>{
             {"<r n=\"1\"/>", "n", "<r n=\"1\"/>"},
             {"<r xmlns:p=\"u\" p:n=\"1\"/>", "p:n", "<r xmlns:p=\"u\" p:n=\"1\"/>"},
             {"<r xmlns:p=\"u\" p:n=\"1\"/>", "n", "<r xmlns:p=\"u\" p:n=\"1\" n=\"\"/>"},
             {"<r xmlns:p=\"u\" n=\"1\"/>", "p:n", "<r xmlns:p=\"u\" n=\"1\" p:n=\"\"/>"},
             {"<r xml:lang=\"en\"/>", "xml:lang", "<r xml:lang=\"en\"/>"},
             {"<r xmlns=\"u\"/>", "xmlns", "<r xmlns=\"u\"/>"},
             {"<r xmlns:p=\"u\"/>", "xmlns:p", "<r xmlns:p=\"u\"/>"},
         }) {
        Document document(xml);
        EXPECT_NE(kh_tree_add_attribute(&document.fd, "/r", name.c_str(), &document.status), 0);
        EXPECT_EQ(document.status, KH_OK) << xml << " " << name;
        EXPECT_EQ(in_memory(document), result) << xml << " " << name;
    }
}

TEST(AddAttribute, AddedTwiceIsThereOnce)
{
    for (const char* name : {"n", "p:n", "xml:lang"}) {
        Document document("<r/>");
        EXPECT_EQ(status(document, kh_tree_add_attribute, ".", name), KH_OK);
        EXPECT_EQ(status(document, kh_tree_add_attribute, ".", name), KH_OK);
        EXPECT_EQ(in_memory(document), std::string("<r ") + name + "=\"\"/>");
    }
}

TEST(Adding, BelowATextIsRefused)
{
    Document document("<r>text</r>");
    EXPECT_EQ(outcome(document, kh_tree_add_child, "/r/x[0]", "n"),
              failure(KH_ERR_CREATE_NODE, "kh_tree_add_child", ". Node: n"));
    EXPECT_EQ(outcome(document, kh_tree_add_attribute, "/r/x[0]", "n"),
              failure(KH_ERR_NOT_ELEMENT, "kh_tree_add_attribute"));
    EXPECT_EQ(in_memory(document), "<r>text</r>");
}

/// The four functions that add something at a path.
struct Adder {
    const char* name;
    decltype(kh_tree_add_child)* add;
};

void PrintTo(const Adder& adder, std::ostream* stream)
{
    *stream << adder.name;
}

class Add : public testing::TestWithParam<Adder> {
protected:
    Outcome add(const char* path, const char* name) { return outcome(document, GetParam().add, path, name); }

    Document document{"<r>\n  <a/>\n</r>"};
};

TEST_P(Add, RefusesAMissingName)
{
    EXPECT_EQ(add("/r/a", nullptr), missing_argument(GetParam().name));
    EXPECT_EQ(document.path(), "/r") << "the path is not walked";
}

TEST_P(Add, RefusesNamesThatXmlDoesNotAllow)
{
    for (const std::string name : edit::names_xml_refuses)
        EXPECT_EQ(add("/r/a", name.c_str()), failure(KH_ERR_ARGUMENT, GetParam().name, ". Node: " + name));
    EXPECT_EQ(add("/r/nowhere", "a b").status, KH_ERR_ARGUMENT) << "the name comes before the path";
    EXPECT_EQ(document.path(), "/r");
    EXPECT_EQ(in_memory(document), "<r>\n  <a/>\n</r>");
}

TEST_P(Add, TakesNamesAsLongAsTheyCanBeRead)
{
    const std::string longest(10'000'000, 'n');
    EXPECT_EQ(add("/r/a", (longest + "n").c_str()).status, KH_ERR_ARGUMENT);
    EXPECT_EQ(in_memory(document), "<r>\n  <a/>\n</r>");
    EXPECT_EQ(add("/r/a", longest.c_str()), success);
    EXPECT_EQ(Document(document.written()).status, KH_OK);
}

TEST_P(Add, CutsTheReportOfALongBadName)
{
    EXPECT_EQ(add("/r/a", (" " + std::string(1000, 'x')).c_str()).report.size(), 511U);
}

TEST_P(Add, TakesNamesWithColonsAndLetters)
{
    for (const char* name : edit::names_xml_allows) {
        EXPECT_EQ(add("/r/a", name), success) << name;
        EXPECT_TRUE(edit::read_plainly(document.written())) << name;
    }
}

TEST_P(Add, PassesOnAPathThatLeadsNowhere)
{
    EXPECT_EQ(
        add("/r/b", "n"),
        passed_on(failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_path_node", ". Path: /r/b"), GetParam().name));
    EXPECT_EQ(GetParam().add(&document.fd, "/r/b", "n", nullptr), KH_ERR_NOT_FOUND);
    EXPECT_EQ(in_memory(document), "<r>\n  <a/>\n</r>");
}

TEST_P(Add, PassesOnAWrongRootThroughEveryLevel)
{
    const Outcome walk = failure(KH_ERR_ARGUMENT, "kh_tree_go_to_stack_node", ". Bad root element: x");
    EXPECT_EQ(add("/x/a", "n"), passed_on(passed_on(walk, "kh_tree_go_to_path_node"), GetParam().name));
}

TEST_P(Add, RefusesAMissingPath)
{
    EXPECT_EQ(add(nullptr, "n").status, KH_ERR_ARGUMENT);
}

TEST_P(Add, PassesOnTheDescriptorChecks)
{
    for (const auto& [descriptor, code] :
         {std::pair{512L, KH_ERR_DESCRIPTOR}, {-1L, KH_ERR_DESCRIPTOR}, {511L, KH_ERR_NO_DOCUMENT}}) {
        long fd = descriptor;
        EXPECT_EQ(outcome_of([&](long* ierr) { GetParam().add(&fd, ".", "n", ierr); }),
                  passed_on(failure(code, "kh_tree_go_to_path_node"), GetParam().name));
    }
    Document empty;
    EXPECT_EQ(outcome(empty, GetParam().add, ".", "n"),
              passed_on(failure(KH_ERR_NO_ROOT, "kh_tree_go_to_path_node"), GetParam().name));
    long result = untouched;
    GetParam().add(nullptr, ".", "n", &result);
    EXPECT_EQ(result, KH_ERR_ARGUMENT);
}

TEST_P(Add, ToleratesAMissingStatus)
{
    EXPECT_NE(GetParam().add(&document.fd, "/r/a", "n", nullptr), 0);
    EXPECT_TRUE(edit::contains(in_memory(document), "n"));
}

INSTANTIATE_TEST_SUITE_P(Every, Add,
                         testing::Values(Adder{"kh_tree_add_child", kh_tree_add_child},
                                         Adder{"kh_tree_add_next_sibling", kh_tree_add_next_sibling},
                                         Adder{"kh_tree_add_previous_sibling", kh_tree_add_previous_sibling},
                                         Adder{"kh_tree_add_attribute", kh_tree_add_attribute}),
                         [](const auto& adder) { return std::string(adder.param.name); });

TEST(AddChild, KeepsTheWarningOfAPathAboveTheRoot)
{
    Document document("<r/>");
    EXPECT_EQ(status(document, kh_tree_add_child, "..", "n"), KH_WARN_ROOT_REACHED);
    EXPECT_EQ(in_memory(document), "<r>\n  <n/></r>");
    EXPECT_EQ(document.path(), "/r/n");
}

TEST(AddChild, IndentsAtAnyDepth)
{
    constexpr std::size_t levels = 700; // 1,400 spaces
    Document document;
    ASSERT_EQ(status(document, kh_tree_create_root, "r"), KH_OK);
    std::string open = "<r>\n", close = "</r>";
    for (std::size_t level = 1; level < levels; ++level) {
        ASSERT_EQ(status(document, kh_tree_add_child, ".", "a"), KH_OK);
        const std::string indentation(2 * level, ' ');
        open += indentation + "<a>\n";
        close.insert(0, indentation + "</a>\n");
    }
    ASSERT_EQ(status(document, kh_tree_add_child, ".", "b"), KH_OK);
    ASSERT_EQ(status(document, kh_tree_add_next_sibling, ".", "c"), KH_OK);
    ASSERT_EQ(status(document, kh_tree_add_previous_sibling, ".", "d"), KH_OK);
    const std::string indentation(2 * levels, ' ');
    EXPECT_TRUE(written(document) ==
                open + indentation + "<b/>\n" + indentation + "<d/>\n" + indentation + "<c/>\n" + close);
}

TEST(Adding, WorksBelowAVeryDeepElement)
{
    Document document(edit::nested(edit::deep));
    ASSERT_EQ(status(document, kh_tree_go_to_element_node, "deepest"), KH_OK);
    ASSERT_EQ(status(document, kh_tree_add_next_sibling, ".", "n"), KH_OK);
    ASSERT_EQ(status(document, kh_tree_add_attribute, ".", "x"), KH_OK);
    EXPECT_TRUE(edit::contains(in_memory(document),
                               "<deepest/>\n" + std::string(2 * edit::deep, ' ') + "<n x=\"\"/>."));
}

TEST(AddSiblingBesideTheRoot, IsRefusedOfACommentBesideTheRoot)
{
    support::Document document("<!--c--><r/>");
    xmlNode* comment = document.slot()->doc->children;
    xmlNode* added = xmlNewNode(nullptr, BAD_CAST "second");
    EXPECT_EQ(support::outcome_of([&](long* ierr) {
                  kh_tree_add_sibling(&document.fd, comment, added, xmlAddNextSibling, ierr);
              }),
              support::failure(KH_ERR_ADD_SIBLING, "kh_tree_add_sibling"));
    xmlFreeNode(added);
    EXPECT_EQ(document.written(), "<?xml version=\"1.0\"?>\n<!--c-->\n<r/>\n");
}

TEST(CreateRoot, PutsANewRootBehindTheDocumentType)
{
    Document document("<!--c--><!DOCTYPE r [\n<!ENTITY e \"text\">\n]><r/>");
    ASSERT_EQ(status(document, kh_tree_remove_node, "/r"), KH_OK);
    ASSERT_EQ(status(document, kh_tree_create_root, "new"), KH_OK);
    EXPECT_TRUE(edit::read_plainly(document.written()));
    EXPECT_NE(document.written().find("]>\n<new>"), std::string::npos) << document.written();
}

TEST(AddSibling, MakesOneTextOfThoseThatMeet)
{
    const struct {
        decltype(xmlAddNextSibling)* insert;
        const char* expected;
    } joined[] = {{xmlAddNextSibling, "one two\n  "}, {xmlAddPrevSibling, "\n  two one"}};
    for (const auto& [insert, expected] : joined) {
        Document document("<r>one<a/></r>");
        xmlNode* text = document.root()->children;
        const bool is_behind = insert == xmlAddNextSibling;
        xmlNode* added = xmlNewDocText(document.slot()->doc, BAD_CAST(is_behind ? " two" : "two "));
        EXPECT_EQ(outcome(document, kh_tree_add_sibling, text, added, insert), success);
        EXPECT_EQ(document.current(), text);
        EXPECT_STREQ(reinterpret_cast<const char*>(text->content), expected);
        EXPECT_EQ(text->next, document.root()->last);
    }
}

TEST(AddSibling, TakesAReferenceThatStandsNowhere)
{
    Document document("<r/>");
    xmlNode* reference = xmlNewDocNode(document.slot()->doc, nullptr, BAD_CAST "a", nullptr);
    xmlNode* added = xmlNewDocNode(document.slot()->doc, nullptr, BAD_CAST "b", nullptr);
    EXPECT_EQ(outcome(document, kh_tree_add_sibling, reference, added, xmlAddNextSibling), success);
    ASSERT_NE(reference->next, nullptr);
    EXPECT_EQ(reference->next->type, XML_TEXT_NODE);
    EXPECT_EQ(reference->next->next, added);
    EXPECT_EQ(document.current(), added);
    document.slot()->current = document.root();
    xmlFreeNodeList(reference);
    EXPECT_EQ(in_memory(document), "<r/>");
}

} // namespace
