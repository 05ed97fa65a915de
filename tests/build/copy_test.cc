#include "build/edit.h"

#include <algorithm>
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
using support::TemporaryFolder;

class CopyNode : public testing::Test {
protected:
    void SetUp() override { open_before = edit::open_documents(); }

    /// Writes the source file and copies from it.
    Outcome copy(Document& document, const char* path, const std::string& source, const char* source_path)
    {
        const Outcome result =
            outcome(document, kh_copy_node, path, folder.file("source.xml", source).c_str(), source_path);
        EXPECT_EQ(edit::open_documents(), open_before + 1) << "the source is closed again";
        return result;
    }

    TemporaryFolder folder;
    long open_before = 0;
};

TEST_F(CopyNode, AppendsTheSubtreeWithoutIndentation)
{
    Document document("<r><b/></r>");
    document.go_to("/r/b");
    EXPECT_EQ(copy(document, "/r", "<s><a x=\"1\">text<b/><!--c--><?p i?><![CDATA[<]]></a></s>", "/s/a"),
              success);
    EXPECT_EQ(in_memory(document), "<r><b/><a x=\"1\">text<b/><!--c--><?p i?><![CDATA[<]]></a></r>");
    EXPECT_EQ(document.path(), "/r") << "the cursor is on the target";
}

TEST_F(CopyNode, CopiesARootOrOneOfSeveral)
{
    Document document("<r><b/><b/></r>");
    EXPECT_EQ(copy(document, "/r/b[2]", "<s>\n  <a/>\n</s>", "/s"), success);
    EXPECT_EQ(copy(document, "/r/b", "<s><a>1</a><a>2</a></s>", "/s/a[2]"), success);
    EXPECT_EQ(in_memory(document), "<r><b><a>2</a></b><b><s>\n  <a/>\n</s></b></r>");
}

TEST_F(CopyNode, StartsBothPathsAtTheRoot)
{
    Document document("<r><b/></r>");
    document.go_to("/r/b");
    EXPECT_EQ(copy(document, ".", "<s><a/></s>", "a"), success);
    EXPECT_EQ(in_memory(document), "<r><b/><a/></r>");
}

TEST_F(CopyNode, DropsTheWarningOfAPathAboveTheRoot)
{
    Document document("<r/>");
    EXPECT_EQ(copy(document, "..", "<s/>", "..").status, KH_OK);
    EXPECT_EQ(in_memory(document), "<r><s/></r>");
}

TEST_F(CopyNode, GetsItsClosingTagsIndentedByTheWrite)
{
    Document document("<r/>");
    EXPECT_EQ(copy(document, "/r", "<s><a>t<b/></a></s>", "/s/a"), success);
    EXPECT_EQ(written(document), "<r><a>t<b/>\n  </a>\n</r>");
}

TEST_F(CopyNode, TakesItsNamespacesAlong)
{
    struct Case {
        std::string target, source;
    };
    for (const auto& [target, source] : std::vector<Case>{
             {"<r/>", "<s xmlns:p=\"urn:u\"><p:a p:x=\"1\"/></s>"},
             {"<r xmlns:p=\"urn:u\"/>", "<s xmlns:p=\"urn:u\"><p:a p:x=\"1\"/></s>"},
             {"<r xmlns:p=\"urn:other\"/>", "<s xmlns:p=\"urn:u\"><p:a p:x=\"1\"/></s>"},
             {"<r/>", "<s><p:a xmlns:p=\"urn:u\" p:x=\"1\"/></s>"},
             {"<r/>", "<s xmlns=\"urn:u\" xmlns:p=\"urn:u\"><a p:x=\"1\"/></s>"},
         }) {
        Document document(target);
        EXPECT_EQ(copy(document, "/r", source, "/s/a"), success);
        const edit::PlainDocument read = edit::read_plainly(document.written());
        ASSERT_TRUE(read) << source;
        const xmlNode* copied = xmlFirstElementChild(xmlDocGetRootElement(read.get()));
        ASSERT_TRUE(copied && copied->ns) << source;
        EXPECT_EQ(edit::text_of(copied->ns->href), "urn:u") << source;
        ASSERT_TRUE(copied->properties && copied->properties->ns) << source;
        EXPECT_EQ(edit::text_of(copied->properties->ns->href), "urn:u") << source;
    }
}

TEST_F(CopyNode, TakesTheNamespacesOfDescendantsAlong)
{
    Document document("<r/>");
    EXPECT_EQ(copy(document, "/r", "<s xmlns:p=\"urn:u\"><a><b><p:c/></b></a></s>", "/s/a"), success);
    const edit::PlainDocument read = edit::read_plainly(document.written());
    ASSERT_TRUE(read);
    const xmlNode* node = xmlDocGetRootElement(read.get());
    for (int level = 0; level < 3; ++level)
        ASSERT_TRUE((node = xmlFirstElementChild(const_cast<xmlNode*>(node))));
    ASSERT_TRUE(node->ns);
    EXPECT_EQ(edit::text_of(node->ns->href), "urn:u");
}

TEST_F(CopyNode, ReplacesEntitiesThatTheTargetDoesNotDeclare)
{
    struct Case {
        std::string declarations, element, result;
    };
    for (const auto& [declarations, element, result] : std::vector<Case>{
             {"<!ENTITY e \"text\">", "<a>x&e;y</a>", "<a>xtexty</a>"},
             {"<!ENTITY e \"<b>1</b>\">", "<a>x&e;y</a>", "<a>x<b>1</b>y</a>"},
             {"<!ENTITY f \"in\"><!ENTITY e \"&f;ner\">", "<a>&e;</a>", "<a>inner</a>"},
             {"<!ENTITY f \"in\"><!ENTITY e \"&f;ner\">", "<a x=\"&e;\"/>", "<a x=\"inner\"/>"},
         }) {
        Document document("<r/>");
        EXPECT_EQ(copy(document, "/r", "<!DOCTYPE s [" + declarations + "]><s>" + element + "</s>", "/s/a"),
                  success);
        EXPECT_EQ(in_memory(document), "<r>" + result + "</r>");
        EXPECT_TRUE(edit::read_plainly(document.written())) << element;
    }
}

TEST_F(CopyNode, KeepsEntitiesThatTheTargetDeclares)
{
    const std::string type = "<!DOCTYPE r [\n<!ENTITY e \"text\">\n]>\n";
    Document document(type + "<r/>");
    EXPECT_EQ(copy(document, "/r", "<!DOCTYPE s [<!ENTITY e \"text\">]><s><a x=\"&e;\">&e;</a></s>", "/s/a"),
              success);
    EXPECT_EQ(in_memory(document), type + "<r><a x=\"&e;\">&e;</a></r>");
}

TEST_F(CopyNode, CopiesFromTheFileOfTheDocumentItself)
{
    const std::string file = folder.file("own.xml", "<r><a><b/></a></r>");
    long fd = -1, code = 0;
    fd = kh_tree_init_parser(file.c_str(), &code);
    ASSERT_EQ(code, KH_OK);
    EXPECT_EQ(kh_copy_node(&fd, "/r", file.c_str(), "/r/a", &code), KH_OK);
    EXPECT_EQ(kh_copy_node(&fd, "/r/a/b", file.c_str(), "/r", &code), KH_OK)
        << "the target is below the node";
    kh_tree_write(&fd, file.c_str(), &code);
    EXPECT_EQ(edit::without_frame(support::content_of(file)),
              "<r><a><b><r><a><b/>\n        </a>\n      </r>\n    </b>\n  </a><a><b/>\n  </a>\n</r>");
    EXPECT_EQ(kh_tree_cleanup_parser(&fd, &code), KH_OK);
    EXPECT_EQ(edit::open_documents(), open_before);
}

TEST_F(CopyNode, ReportsEitherPathThatLeadsNowhere)
{
    Document document("<r/>");
    const auto not_found = [](const std::string& path) {
        return passed_on(failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_path_node", ". Path: " + path),
                         "kh_copy_node");
    };
    EXPECT_EQ(copy(document, "/r/b", "<s/>", "/s"), not_found("/r/b"));
    EXPECT_EQ(copy(document, "/r", "<s/>", "/s/a"), not_found("/s/a"));
    EXPECT_EQ(in_memory(document), "<r/>");
}

TEST_F(CopyNode, ReportsAnyFailureOfAPathAsNotFound)
{
    Document document("<r/>");
    for (const char* bad : {"/x", ".x", "", "/a[*]/b[*]"}) {
        EXPECT_EQ(copy(document, bad, "<s/>", "/s").status, KH_ERR_NOT_FOUND) << bad;
        EXPECT_EQ(copy(document, "/r", "<s/>", bad).status, KH_ERR_NOT_FOUND) << bad;
    }
    EXPECT_EQ(in_memory(document), "<r/>");
}

TEST_F(CopyNode, ReportsASourceThatCannotBeRead)
{
    Document document("<r/>");
    for (const std::string& file :
         {folder.path("missing.xml"), folder.file("broken.xml", "<s>"), folder.path("")}) {
        const Outcome result = outcome(document, kh_copy_node, "/r", file.c_str(), "/s");
        EXPECT_EQ(result.status, KH_ERR_PARSE) << file;
        // The source's record is the callee's: only the detail line is added.
        EXPECT_TRUE(edit::ends_with(
            result.report,
            passed_on(failure(KH_ERR_PARSE, "kh_tree_init_parser", ". File: " + file), "kh_copy_node")
                .report))
            << result.report;
    }
    EXPECT_EQ(edit::open_documents(), open_before + 1);
}

TEST_F(CopyNode, ReportsAFullTableAsASourceThatCannotBeRead)
{
    const std::string source = folder.file("source.xml", "<s/>");
    std::vector<std::unique_ptr<Document>> documents;
    documents.push_back(std::make_unique<Document>("<r/>"));
    while (edit::open_documents() < KH_MAX_DOCUMENTS)
        documents.push_back(std::make_unique<Document>());
    EXPECT_EQ(status(*documents.front(), kh_copy_node, "/r", source.c_str(), "/s"), KH_ERR_PARSE);
}

TEST_F(CopyNode, RefusesATargetThatIsNoElement)
{
    Document document("<r>text</r>");
    EXPECT_EQ(copy(document, "/r/x[0]", "<s/>", "/s"), failure(KH_ERR_NOT_ELEMENT, "kh_copy_node"));
    EXPECT_EQ(in_memory(document), "<r>text</r>");
}

TEST_F(CopyNode, RefusesMissingTexts)
{
    Document document("<r/>");
    const std::string source = folder.file("source.xml", "<s/>");
    const Outcome missing = missing_argument("kh_copy_node");
    EXPECT_EQ(outcome(document, kh_copy_node, nullptr, source.c_str(), "/s"), missing);
    EXPECT_EQ(outcome(document, kh_copy_node, "/r", nullptr, "/s"), missing);
    EXPECT_EQ(outcome(document, kh_copy_node, "/r", source.c_str(), nullptr), missing);
    EXPECT_EQ(in_memory(document), "<r/>");
}

TEST_F(CopyNode, PassesOnTheDescriptorChecks)
{
    const std::string source = folder.file("source.xml", "<s/>");
    for (const auto& [descriptor, code] :
         {std::pair{512L, KH_ERR_DESCRIPTOR}, {-1L, KH_ERR_DESCRIPTOR}, {511L, KH_ERR_NO_DOCUMENT}}) {
        long fd = descriptor;
        EXPECT_EQ(outcome_of([&](long* ierr) { kh_copy_node(&fd, "/r", source.c_str(), "/s", ierr); }),
                  passed_on(failure(code, "kh_tree_rewind"), "kh_copy_node"));
    }
    Document empty;
    EXPECT_EQ(outcome(empty, kh_copy_node, "/r", source.c_str(), "/s"),
              passed_on(failure(KH_ERR_NO_ROOT, "kh_tree_rewind"), "kh_copy_node"));
    EXPECT_EQ(kh_copy_node(nullptr, "/r", source.c_str(), "/s", nullptr), KH_ERR_ARGUMENT);
}

TEST_F(CopyNode, ReturnsItsStatus)
{
    Document document("<r/>");
    const std::string source = folder.file("source.xml", "<s/>");
    EXPECT_EQ(kh_copy_node(&document.fd, "/r", source.c_str(), "/s", nullptr), KH_OK);
    EXPECT_EQ(kh_copy_node(&document.fd, "/x", source.c_str(), "/s", nullptr), KH_ERR_NOT_FOUND);
}

TEST_F(CopyNode, CopiesAVeryDeepTree)
{
    const std::string tree = edit::nested(edit::deep);
    Document document("<r/>");
    EXPECT_EQ(copy(document, "/r", "<s>" + tree + "</s>", "/s/a"), success);
    EXPECT_TRUE(in_memory(document) == "<r>" + tree + "</r>");
    EXPECT_TRUE(written(document) == "<r>" + tree + "\n</r>");
}

TEST_F(CopyNode, CopiesManySiblings)
{
    std::string tree = "<a>";
    for (int i = 0; i < 100000; ++i)
        tree += "<b/>.";
    tree += "</a>";
    Document document("<r/>");
    EXPECT_EQ(copy(document, "/r", "<s>" + tree + "</s>", "/s/a"), success);
    EXPECT_TRUE(in_memory(document) == "<r>" + tree + "</r>");
}

TEST_F(CopyNode, LeavesOutEntitiesThatNobodyDeclares)
{
    Document document("<r/>");
    EXPECT_EQ(copy(document, "/r", "<!DOCTYPE s SYSTEM \"not there\"><s><a x=\"1&e;2\">3&e;4</a></s>", "/s/a")
                  .status,
              KH_OK);
    EXPECT_EQ(in_memory(document), "<r><a x=\"12\">34</a></r>");
}

TEST_F(CopyNode, KeepsNamespacesThatAnEntityTakesFromAroundItsReference)
{
    const std::string source = "<!DOCTYPE s [<!ENTITY e \"<b/><p:c/>\">]>"
                               "<s xmlns='urn:s' xmlns:p='urn:p'><a>&e;</a></s>";
    Document document("<r/>");
    EXPECT_EQ(copy(document, "/r", source, "/s/a").status, KH_OK);
    EXPECT_EQ(in_memory(document), "<r><a xmlns=\"urn:s\" xmlns:p=\"urn:p\"><b/><p:c/></a></r>");
    const xmlNode* b = document.slot()->root->children->children;
    ASSERT_TRUE(b->ns && b->next->ns);
    EXPECT_STREQ(reinterpret_cast<const char*>(b->ns->href), "urn:s");
    EXPECT_STREQ(reinterpret_cast<const char*>(b->next->ns->href), "urn:p");
    EXPECT_EQ(b->nsDef, nullptr);
}

TEST_F(CopyNode, KeepsNamespacesThatOneOfSeveralEntitiesHas)
{
    const std::string source =
        "<!DOCTYPE s [<!ENTITY e \"<p:c xmlns:q='urn:q' q:x='1'/>\"><!ENTITY f \"<b>&e;</b>\">]>"
        "<s xmlns:p='urn:p'><a>&f;</a></s>";
    Document document("<r/>");
    EXPECT_EQ(copy(document, "/r", source, "/s/a").status, KH_OK);
    EXPECT_EQ(in_memory(document),
              "<r><a xmlns:p=\"urn:p\"><b><p:c xmlns:q=\"urn:q\" q:x=\"1\"/></b></a></r>");
}

TEST_F(CopyNode, KeepsAPrefixInAnEntityThatNobodyDeclares)
{
    Document document("<r/>");
    EXPECT_EQ(copy(document, "/r", "<!DOCTYPE s [<!ENTITY e \"<p:c/>\">]><s><a>&e;</a></s>", "/s/a").status,
              KH_OK);
    EXPECT_EQ(in_memory(document), "<r><a><p:c/></a></r>");
}

// The parser reads an entity once, at its first reference, and knows the prefix there.
TEST_F(CopyNode, LosesAPrefixThatOnlyTheFirstReferenceOfAnEntityDeclares)
{
    Document document("<r/>");
    EXPECT_EQ(copy(document, "/r",
                   "<!DOCTYPE s [<!ENTITY e \"<p:c/>\">]><s><a xmlns:p='urn:p'>&e;</a><b>&e;</b></s>", "/s/b")
                  .status,
              KH_OK);
    EXPECT_EQ(in_memory(document), "<r><b><c/></b></r>");
}

} // namespace
