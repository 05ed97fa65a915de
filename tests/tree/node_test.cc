#include "support/nodes.h"
#include "support/outcome.h"

#include <libxml/parser.h>

namespace {

using support::Document;
using support::failure;
using support::missing_argument;
using support::node_of;
using support::outcome_of;
using support::success;
using support::Text;

constexpr const char* sample = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" standalone=\"yes\"?>\n"
                               "<?sheet of style?>\n"
                               "<!DOCTYPE r [\n<!ENTITY e \"text\">\n]>\n"
                               "<r xmlns=\"u\" xmlns:p=\"v?a&amp;b\" a=\"1\" p:b=\"x&e;y\" c=\"\">text"
                               "<!--remark--><![CDATA[<data>]]>&e;\n<p:e/></r>\n"
                               "<!--end-->";

kh_node described(const xmlNode* node)
{
    kh_node description;
    EXPECT_EQ(kh_node_describe(node, &description), 1);
    return description;
}

kh_document described(Document& document)
{
    kh_document description;
    EXPECT_EQ(kh_tree_describe(&document.fd, &description, &document.status), KH_OK);
    return description;
}

/// A node in one line: its kind, prefix, name, content and line.
std::string text_of(const kh_node& node)
{
    return std::to_string(node.kind) + " " + node.prefix + "|" + node.name + "|" + node.content + "|" +
           std::to_string(node.line);
}

TEST(DescribeNode, TellsWhatEachNodeIs)
{
    Document document(sample);
    std::vector<std::string> nodes;
    for (xmlNode* node = described(document).first_node; node;) {
        const kh_node description = described(node);
        nodes.push_back(text_of(description));
        node = description.first_child ? description.first_child : description.next;
        if (!node && description.parent)
            node = described(description.parent).next;
    }
    EXPECT_EQ(nodes, (std::vector<std::string>{"6 |sheet|of style|2", "7 |r||0", "1 |r||6", "2 ||text|6",
                                               "5 ||remark|6", "3 ||<data>|6", "4 |e||6", "2 ||\n|7",
                                               "1 p|e||7", "5 ||end|8"}));
}

TEST(DescribeNode, LinksNodesWithTheirNeighbours)
{
    Document document(sample);
    const kh_node root = described(document.root());
    EXPECT_EQ(root.parent, nullptr);
    const kh_node text = described(root.first_child);
    EXPECT_EQ(text.parent, document.root());
    EXPECT_EQ(text.previous, nullptr);
    EXPECT_EQ(described(text.next).previous, root.first_child);
    EXPECT_EQ(described(root.next).next, nullptr);
}

TEST(DescribeNode, NeverLeadsIntoADocumentTypeOrAnEntity)
{
    Document document(sample);
    EXPECT_EQ(described(reinterpret_cast<xmlNode*>(document.slot()->doc->intSubset)).first_child, nullptr);
    for (kh_node node = described(document.root()->children); node.next; node = described(node.next)) {
        if (node.kind == KH_NODE_REFERENCE) {
            EXPECT_EQ(node.first_child, nullptr);
        }
    }
}

TEST(DescribeNode, KnowsNoOtherNodes)
{
    Document document(sample);
    EXPECT_EQ(described(reinterpret_cast<xmlNode*>(document.slot()->doc)).kind, KH_NODE_OTHER);
    EXPECT_EQ(described(reinterpret_cast<xmlNode*>(document.root()->properties)).kind, KH_NODE_OTHER);
    kh_node untouched = {-1, -1, "", "", "", nullptr, nullptr, nullptr, nullptr};
    EXPECT_EQ(kh_node_describe(nullptr, &untouched), 0);
    EXPECT_EQ(untouched.kind, -1);
    EXPECT_EQ(kh_node_describe(document.root(), nullptr), 0);
}

TEST(DescribeNode, KnowsNoLineWhereLibxml2KeepsNone)
{
    Document document("<r>" + std::string(65533, '\n') + "<a/>\n<b/>\n<c/></r>");
    EXPECT_EQ(described(node_of(document, "/r/a")).line, 65534);
    EXPECT_EQ(described(node_of(document, "/r/b")).line, 0);
    EXPECT_EQ(described(node_of(document, "/r/c")).line, 0);
    kh_tree_add_child(&document.fd, "/r", "d", nullptr);
    EXPECT_EQ(described(document.current()).line, 0);
}

TEST(DescribeAttributes, GivesDeclarationsAndThenAttributes)
{
    Document document(sample);
    std::vector<std::string> attributes;
    kh_attribute attribute;
    for (long found = kh_node_first_attribute(document.root(), &attribute); found;
         found = kh_node_next_attribute(&attribute))
        attributes.push_back(std::string(attribute.prefix) + "|" + attribute.name + "|" +
                             (attribute.value ? attribute.value : "(references)"));
    EXPECT_EQ(attributes,
              (std::vector<std::string>{"|xmlns|u", "xmlns|p|v?a&#38;b", "|a|1", "p|b|(references)", "|c|"}));
    EXPECT_EQ(std::string(attribute.name), "c") << "what was described last stays";
}

TEST(DescribeAttributes, GivesTheTextsAndReferencesOfAValue)
{
    Document document(sample);
    kh_attribute attribute;
    ASSERT_EQ(kh_node_first_attribute(document.root(), &attribute), 1);
    EXPECT_EQ(attribute.first_child, nullptr);
    while (std::string(attribute.name) != "b")
        ASSERT_EQ(kh_node_next_attribute(&attribute), 1);
    const kh_node text = described(attribute.first_child);
    const kh_node reference = described(text.next);
    EXPECT_EQ(text_of(text), "2 ||x|0");
    EXPECT_EQ(text.parent, nullptr);
    EXPECT_EQ(text_of(reference).substr(0, 5), "4 |e|");
    EXPECT_EQ(text_of(described(reference.next)), "2 ||y|0");
}

TEST(DescribeAttributes, GivesNothingForWhatHasNone)
{
    Document document("<r>text</r>");
    kh_attribute attribute;
    EXPECT_EQ(kh_node_first_attribute(document.root(), &attribute), 0);
    EXPECT_EQ(kh_node_first_attribute(document.root()->children, &attribute), 0);
    EXPECT_EQ(kh_node_first_attribute(nullptr, &attribute), 0);
    EXPECT_EQ(kh_node_first_attribute(document.root(), nullptr), 0);
    EXPECT_EQ(kh_node_next_attribute(nullptr), 0);
}

TEST(DescribeDocument, TellsWhatItDeclares)
{
    Document document(sample);
    const kh_document description = described(document);
    EXPECT_STREQ(description.version, "1.0");
    EXPECT_STREQ(description.encoding, "ISO-8859-1");
    EXPECT_EQ(description.standalone, 1);
    EXPECT_EQ(description.compressed, 0);
}

TEST(DescribeDocument, TellsWhatItDoesNotDeclare)
{
    Document plain("<r/>");
    EXPECT_STREQ(described(plain).encoding, "");
    EXPECT_EQ(described(plain).standalone, -1);
    Document declared("<?xml version=\"1.0\"?><r/>");
    EXPECT_EQ(described(declared).standalone, -2);
    Document no("<?xml version=\"1.0\" standalone=\"no\"?><r/>");
    EXPECT_EQ(described(no).standalone, 0);
    Document empty;
    EXPECT_EQ(described(empty).first_node, nullptr);
}

TEST(Doctype, IsWhatWillBeWritten)
{
    Document document(sample);
    Text text;
    EXPECT_EQ(kh_tree_get_doctype(&document.fd, text.out(), &document.status), KH_OK);
    EXPECT_EQ(text.string(), "<!DOCTYPE r [\n<!ENTITY e \"text\">\n]>");
    EXPECT_NE(document.written().find(text.string()), std::string::npos);
}

TEST(Doctype, IsNotFoundWhereThereIsNone)
{
    Document document("<r/>");
    char* text = reinterpret_cast<char*>(&document);
    EXPECT_EQ(outcome_of([&](long* status) { kh_tree_get_doctype(&document.fd, &text, status); }),
              failure(KH_ERR_NOT_FOUND, "kh_tree_get_doctype"));
    EXPECT_EQ(text, nullptr);
}

TEST(GoToNode, MovesTheCursor)
{
    Document document("<r><a/><a><b/></a></r>");
    EXPECT_EQ(outcome_of([&](long* status) {
                  kh_tree_go_to_node(&document.fd, node_of(document, "/r/a[2]/b"), status);
              }),
              success);
    EXPECT_EQ(document.path(), "/r/a[2]/b");
}

TEST(GoToNode, RefusesNodesOfOtherDocuments)
{
    Document document("<r><a/></r>"), other("<r/>");
    document.go_to("/r/a");
    EXPECT_EQ(outcome_of([&](long* status) { kh_tree_go_to_node(&document.fd, other.root(), status); }),
              failure(KH_ERR_ARGUMENT, "kh_tree_go_to_node"));
    EXPECT_EQ(document.path(), "/r/a");
}

TEST(NodeFunctions, CheckTheirDescriptor)
{
    for (auto [number, code] : {std::pair{512L, -21L}, {-1L, -21L}, {511L, -7L}}) {
        long fd = number;
        kh_document document;
        char* text = nullptr;
        xmlNode node = {};
        EXPECT_EQ(kh_tree_describe(&fd, &document, nullptr), code);
        EXPECT_EQ(kh_tree_get_doctype(&fd, &text, nullptr), code);
        EXPECT_EQ(kh_tree_go_to_node(&fd, &node, nullptr), code);
    }
    Document empty;
    xmlNode node = {};
    EXPECT_EQ(kh_tree_go_to_node(&empty.fd, &node, nullptr), KH_ERR_NO_ROOT);
}

TEST(NodeFunctions, ReportNullArguments)
{
    Document document("<r/>");
    EXPECT_EQ(outcome_of([&](long* status) { kh_tree_describe(nullptr, nullptr, status); }),
              missing_argument("kh_tree_describe"));
    EXPECT_EQ(outcome_of([&](long* status) { kh_tree_describe(&document.fd, nullptr, status); }),
              missing_argument("kh_tree_describe"));
    EXPECT_EQ(outcome_of([&](long* status) { kh_tree_get_doctype(&document.fd, nullptr, status); }),
              missing_argument("kh_tree_get_doctype"));
    EXPECT_EQ(outcome_of([&](long* status) { kh_tree_go_to_node(&document.fd, nullptr, status); }),
              missing_argument("kh_tree_go_to_node"));
}

TEST(DescribeAttributes, TellsAnEmptyValueFromOneOfReferences)
{
    Document document("<!DOCTYPE r [<!ENTITY e \"text\">]><r a=\"&e;y\"/>");
    ASSERT_EQ(kh_tree_add_attribute(&document.fd, "/r", "b", nullptr) > 0, true);
    kh_attribute attribute;
    ASSERT_EQ(kh_node_first_attribute(document.root(), &attribute), 1);
    EXPECT_STREQ(attribute.name, "a");
    EXPECT_EQ(attribute.value, nullptr);
    EXPECT_EQ(text_of(described(attribute.first_child)).substr(0, 5), "4 |e|");
    ASSERT_EQ(kh_node_next_attribute(&attribute), 1);
    EXPECT_STREQ(attribute.name, "b");
    EXPECT_STREQ(attribute.value, "");
    EXPECT_EQ(attribute.first_child, nullptr);
}

TEST(GoToNode, TakesTheDocumentItselfWhichHasNoName)
{
    Document document("<r a='1'/>");
    auto* top = reinterpret_cast<xmlNode*>(document.slot()->doc);
    ASSERT_EQ(kh_tree_go_to_node(&document.fd, top, &document.status), KH_OK);
    Text value;
    EXPECT_EQ(
        outcome_of([&](long* ierr) { kh_tree_get_current_element_value(&document.fd, value.out(), ierr); }),
        failure(KH_ERR_NOT_ELEMENT, "kh_tree_get_current_element_value", ". Element: ."));
    EXPECT_EQ(outcome_of([&](long* ierr) {
                  kh_tree_read_string_attribute(&document.fd, "r", "a", value.out(), ierr);
              }),
              success)
        << "the next element of the name is read";
    EXPECT_EQ(value.string(), "1");
    long total = 0, position = 0;
    EXPECT_EQ(kh_tree_get_sibling_index(top, &total, &position), 1);
    EXPECT_EQ(total, 1);
    EXPECT_EQ(position, 1);
}

} // namespace
