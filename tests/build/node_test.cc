#include "build/edit.h"
#include "support/nodes.h"

namespace {

using edit::in_memory;
using edit::outcome;
using edit::status;
using support::Document;
using support::failure;
using support::missing_argument;
using support::node_of;
using support::outcome_of;
using support::success;
using support::Text;

constexpr auto insert = kh_tree_insert_node;

TEST(InsertNode, InsertsExactlyThat)
{
    Document document("<r>text<a/>more</r>");
    xmlNode* root = document.root();
    xmlNode* a = node_of(document, "/r/a");
    EXPECT_NE(insert(&document.fd, root, a, KH_NODE_ELEMENT, "b", &document.status), nullptr);
    EXPECT_NE(insert(&document.fd, root, nullptr, KH_NODE_ELEMENT, "c", &document.status), nullptr);
    EXPECT_NE(insert(&document.fd, root, root->children, KH_NODE_TEXT, "<&>", &document.status), nullptr);
    EXPECT_NE(insert(&document.fd, a, nullptr, KH_NODE_TEXT, "in", &document.status), nullptr);
    EXPECT_EQ(in_memory(document), "<r>&lt;&amp;&gt;text<b/><a>in</a>more<c/></r>");
    EXPECT_EQ(document.path(), "/r") << "the cursor stays";
}

TEST(InsertNode, LinksWhatItInserts)
{
    Document document("<r/>");
    xmlNode* root = document.root();
    xmlNode* second = insert(&document.fd, root, nullptr, KH_NODE_ELEMENT, "b", nullptr);
    xmlNode* first = insert(&document.fd, root, second, KH_NODE_ELEMENT, "a", nullptr);
    xmlNode* third = insert(&document.fd, root, nullptr, KH_NODE_TEXT, "t", nullptr);
    EXPECT_EQ(root->children, first);
    EXPECT_EQ(root->last, third);
    EXPECT_EQ(first->next, second);
    EXPECT_EQ(second->prev, first);
    EXPECT_EQ(second->next, third);
    EXPECT_EQ(third->prev, second);
    EXPECT_EQ(third->parent, root);
}

TEST(InsertNode, TakesTheNamespaceThatTheNameHasThere)
{
    Document document("<r xmlns=\"u\" xmlns:p=\"v\"/>");
    const xmlNode* plain = insert(&document.fd, document.root(), nullptr, KH_NODE_ELEMENT, "a", nullptr);
    const xmlNode* prefixed = insert(&document.fd, document.root(), nullptr, KH_NODE_ELEMENT, "p:a", nullptr);
    const xmlNode* undeclared =
        insert(&document.fd, document.root(), nullptr, KH_NODE_ELEMENT, "q:a", nullptr);
    ASSERT_TRUE(plain->ns && prefixed->ns);
    EXPECT_EQ(edit::text_of(plain->ns->href), "u");
    EXPECT_EQ(edit::text_of(prefixed->ns->href), "v");
    EXPECT_EQ(edit::text_of(prefixed->name), "a");
    EXPECT_EQ(edit::text_of(undeclared->name), "q:a");
    EXPECT_EQ(in_memory(document), "<r xmlns=\"u\" xmlns:p=\"v\"><a/><p:a/><q:a/></r>");
}

TEST(InsertNode, IsFoundByPathsThatWereWalkedBefore)
{
    Document document("<r><a>1</a><a>2</a></r>");
    Text before, after;
    EXPECT_EQ(kh_tree_path_read_string_node_value(&document.fd, "/r/a[2]", before.out(), nullptr), KH_OK);
    xmlNode* inserted =
        insert(&document.fd, document.root(), document.root()->children, KH_NODE_ELEMENT, "a", nullptr);
    insert(&document.fd, inserted, nullptr, KH_NODE_TEXT, "0", nullptr);
    EXPECT_EQ(kh_tree_path_read_string_node_value(&document.fd, "/r/a[2]", after.out(), nullptr), KH_OK);
    EXPECT_EQ(before.string() + after.string(), "21");
}

TEST(InsertNode, GivesElementsBelowEachOtherTheDefaultNamespace)
{
    Document document("<r xmlns=\"u\"/>");
    xmlNode* node = document.root();
    for (int level = 0; level < 3; ++level) {
        node = insert(&document.fd, node, nullptr, KH_NODE_ELEMENT, "a", nullptr);
        EXPECT_EQ(node->ns, document.root()->ns) << level;
    }
    EXPECT_EQ(in_memory(document), "<r xmlns=\"u\"><a><a><a/></a></a></r>");
}

TEST(InsertNode, SeesTheDefaultNamespaceAsItIsNow)
{
    Document document("<p:r xmlns='u' xmlns:p='v'/>");
    xmlNode* a = insert(&document.fd, document.root(), nullptr, KH_NODE_ELEMENT, "a", nullptr);
    EXPECT_STREQ(reinterpret_cast<const char*>(a->ns->href), "u");
    const long everything = 2;
    kh_tree_rewind(&document.fd, nullptr);
    KH_Set_Schema(&document.fd, "Some_0102.XSD", &everything);
    EXPECT_EQ(insert(&document.fd, a, nullptr, KH_NODE_ELEMENT, "b", nullptr)->ns, nullptr);
}

TEST(InsertNode, RefusesWhatMakesNoDocument)
{
    Document document("<r><a/>text</r>"), other("<r/>");
    xmlNode* root = document.root();
    xmlNode* a = node_of(document, "/r/a");
    const auto refused = [&](xmlNode* parent, xmlNode* before, long kind, const char* text,
                             const support::Outcome& expected) {
        EXPECT_EQ(outcome_of([&](long* status) {
                      EXPECT_EQ(insert(&document.fd, parent, before, kind, text, status), nullptr);
                  }),
                  expected);
    };
    const std::string name = "kh_tree_insert_node";
    refused(nullptr, nullptr, KH_NODE_ELEMENT, "b", missing_argument(name));
    refused(root, nullptr, KH_NODE_ELEMENT, nullptr, missing_argument(name));
    refused(other.root(), nullptr, KH_NODE_ELEMENT, "b", failure(KH_ERR_ARGUMENT, name));
    refused(a, a, KH_NODE_ELEMENT, "b", failure(KH_ERR_ARGUMENT, name));
    refused(a->next, nullptr, KH_NODE_ELEMENT, "b", failure(KH_ERR_NOT_ELEMENT, name));
    refused(root, a, KH_NODE_ELEMENT, "1b", failure(KH_ERR_ARGUMENT, name, ". Node: 1b"));
    refused(root, a, KH_NODE_TEXT, "\x01", failure(KH_ERR_ARGUMENT, name, ". Value: \x01"));
    for (const long kind : {KH_NODE_OTHER, KH_NODE_CDATA, KH_NODE_COMMENT, KH_NODE_DOCTYPE})
        refused(root, a, kind, "b", failure(KH_ERR_ARGUMENT, name));
    EXPECT_EQ(in_memory(document), "<r><a/>text</r>");
}

TEST(DeleteNode, DeletesExactlyThat)
{
    Document document("<!--first--><r>one<a/>two<b>three</b><!--c--></r>");
    EXPECT_EQ(outcome(document, kh_tree_delete_node, node_of(document, "/r/a")), success);
    EXPECT_EQ(outcome(document, kh_tree_delete_node, node_of(document, "/r/b/text()")), success);
    EXPECT_EQ(outcome(document, kh_tree_delete_node, node_of(document, "/comment()")), success);
    EXPECT_EQ(outcome(document, kh_tree_delete_node, node_of(document, "/r/comment()")), success);
    EXPECT_EQ(in_memory(document), "<r>onetwo<b/></r>");
}

TEST(DeleteNode, LeavesTheCursorUnlessItStandsThere)
{
    Document document("<r><a><b><c/></b></a><d/></r>");
    document.go_to("/r/a/b/c");
    EXPECT_EQ(status(document, kh_tree_delete_node, node_of(document, "/r/d")), KH_OK);
    EXPECT_EQ(document.path(), "/r/a/b/c");
    EXPECT_EQ(status(document, kh_tree_delete_node, node_of(document, "/r/a/b")), KH_OK);
    EXPECT_EQ(document.path(), "/r/a");
}

TEST(DeleteNode, IsNotFoundAgain)
{
    Document document("<r><a>1</a><a>2</a></r>");
    Text before, after;
    EXPECT_EQ(kh_tree_path_read_string_node_value(&document.fd, "/r/a[1]", before.out(), nullptr), KH_OK);
    EXPECT_EQ(status(document, kh_tree_delete_node, node_of(document, "/r/a[1]")), KH_OK);
    EXPECT_EQ(kh_tree_path_read_string_node_value(&document.fd, "/r/a[1]", after.out(), nullptr), KH_OK);
    EXPECT_EQ(before.string() + after.string(), "12");
    EXPECT_EQ(kh_tree_path_read_string_node_value(&document.fd, "/r/a[2]", after.out(), nullptr),
              KH_ERR_NOT_FOUND);
}

TEST(DeleteNode, LeavesADocumentThatCanGetANewRoot)
{
    Document document("<r><a/></r>");
    document.go_to("/r/a");
    EXPECT_EQ(status(document, kh_tree_delete_node, document.root()), KH_OK);
    EXPECT_EQ(status(document, kh_tree_rewind), KH_ERR_NO_ROOT);
    EXPECT_NE(kh_tree_create_root(&document.fd, "new", nullptr), 0);
    EXPECT_EQ(document.path(), "/new");
}

TEST(DeleteNode, RefusesWhatIsNoNodeOfTheDocument)
{
    Document document("<!DOCTYPE r><r a=\"1\"/>"), other("<r/>");
    const std::string name = "kh_tree_delete_node";
    EXPECT_EQ(outcome(document, kh_tree_delete_node, nullptr), missing_argument(name));
    EXPECT_EQ(outcome(document, kh_tree_delete_node, other.root()), failure(KH_ERR_ARGUMENT, name));
    for (void* node :
         {static_cast<void*>(document.slot()->doc), static_cast<void*>(document.slot()->doc->intSubset),
          static_cast<void*>(document.root()->properties)})
        EXPECT_EQ(outcome(document, kh_tree_delete_node, static_cast<xmlNode*>(node)),
                  failure(KH_ERR_REMOVE_NODE, name));
    EXPECT_EQ(in_memory(document), "<!DOCTYPE r>\n<r a=\"1\"/>");
}

TEST(SetText, TakesAnyLengthAndIsLiteral)
{
    const std::string value = "&amp; &e; 100% <" + std::string(100000, 'x') + ">";
    Document document("<!DOCTYPE r [<!ENTITY e \"t\">]><r><a><b/></a></r>");
    for (const char* path : {"/r/a", "/r/a/@n", "/r/@xmlns"}) {
        Text read;
        EXPECT_EQ(outcome(document, kh_tree_set_text, path, value.c_str()), success);
        if (path != std::string("/r/@xmlns")) {
            EXPECT_EQ(kh_tree_path_read_string_node_value(&document.fd, path, read.out(), nullptr), KH_OK);
            EXPECT_EQ(read.string(), value);
        }
    }
    EXPECT_NE(edit::read_plainly(document.written()), nullptr);
}

TEST(SetText, EmptiesAnElementAndAnAttribute)
{
    Document document("<r a=\"1\"><b/>text</r>");
    EXPECT_EQ(status(document, kh_tree_set_text, "/r", ""), KH_OK);
    EXPECT_EQ(status(document, kh_tree_set_text, "/r/@a", ""), KH_OK);
    EXPECT_EQ(in_memory(document), "<r a=\"\"/>");
}

TEST(SetText, RefusesAsTheOtherSettersDo)
{
    Document document("<r><a>1</a></r>");
    const std::string name = "kh_tree_set_text";
    EXPECT_EQ(outcome(document, kh_tree_set_text, "/r/a", nullptr), missing_argument(name));
    EXPECT_EQ(outcome(document, kh_tree_set_text, "/r/a", "\x01"),
              failure(KH_ERR_ARGUMENT, name, ". Value: \x01"));
    EXPECT_EQ(outcome(document, kh_tree_set_text, "/r/a/@1", "v"),
              failure(KH_ERR_ARGUMENT, name, ". Node: 1"));
    EXPECT_EQ(status(document, kh_tree_set_text, "/r/b", "v"), KH_ERR_NOT_FOUND);
    EXPECT_EQ(in_memory(document), "<r><a>1</a></r>");
}

TEST(Save, KeepsTheIndentation)
{
    Document document("<r><a><b/></a>\n\t<c/></r>");
    const support::TemporaryFolder folder;
    const std::string file = folder.path("saved.xml");
    EXPECT_EQ(outcome(document, kh_tree_save, file.c_str()), success);
    EXPECT_EQ(edit::without_frame(support::content_of(file)), "<r><a><b/></a>\n\t<c/></r>");
    EXPECT_EQ(edit::written(document), "<r><a><b/>\n  </a>\n\t<c/>\n</r>") << "a write still completes it";
}

TEST(Save, ReportsAsAWriteDoes)
{
    Document document("<r/>");
    EXPECT_EQ(outcome(document, kh_tree_save, nullptr), missing_argument("kh_tree_save"));
    EXPECT_EQ(support::own_report(outcome(document, kh_tree_save, "/nowhere/at/all")),
              failure(KH_ERR_SAVE, "kh_tree_save"));
    Document empty;
    EXPECT_EQ(status(empty, kh_tree_save, "file"), KH_ERR_NO_ROOT);
}

TEST(InsertAndDeleteNode, CheckTheirDescriptor)
{
    Document document("<r/>");
    for (const auto& [descriptor, code] :
         {std::pair{512L, KH_ERR_DESCRIPTOR}, {-1L, KH_ERR_DESCRIPTOR}, {511L, KH_ERR_NO_DOCUMENT}}) {
        long fd = descriptor;
        EXPECT_EQ(outcome_of([&](long* ierr) {
                      EXPECT_EQ(insert(&fd, document.root(), nullptr, KH_NODE_ELEMENT, "a", ierr), nullptr);
                  }),
                  failure(code, "kh_tree_insert_node"));
        EXPECT_EQ(outcome_of([&](long* ierr) { kh_tree_delete_node(&fd, document.root(), ierr); }),
                  failure(code, "kh_tree_delete_node"));
    }
    EXPECT_EQ(in_memory(document), "<r/>");
}

} // namespace
