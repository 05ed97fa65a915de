// The header's skeleton: every type of file and format version, byte for byte, and what stands in its way.
#include "product/calls.h"

#include "support/nodes.h"

#include <vector>

namespace {

using namespace product;
using namespace support;

const std::string declaration = "<?xml version=\"1.0\"?>\n";

/// A header element as it is written, at an indentation.
std::string header(const std::string& name, bool has_kvstd_version, const std::string& indentation)
{
    const std::vector<std::pair<int, std::string>> lines = {
        {0, "<" + name + ">"},    {1, "<Fixed_Header>"},
        {2, "<File_Name/>"},      {2, "<File_Description/>"},
        {2, "<Notes/>"},          {2, "<Mission/>"},
        {2, "<File_Class/>"},     {2, "<File_Type/>"},
        {2, "<Validity_Period>"}, {3, "<Validity_Start/>"},
        {3, "<Validity_Stop/>"},  {2, "</Validity_Period>"},
        {2, "<File_Version/>"},   {2, has_kvstd_version ? "<KVSTD_Version/>" : ""},
        {2, "<Source>"},          {3, "<System/>"},
        {3, "<Creator/>"},        {3, "<Creator_Version/>"},
        {3, "<Creation_Date/>"},  {2, "</Source>"},
        {1, "</Fixed_Header>"},   {1, "<Variable_Header/>"},
        {0, "</" + name + ">"},
    };
    std::string text;
    for (const auto& [depth, line] : lines)
        if (!line.empty())
            text += indentation + std::string(static_cast<std::size_t>(2 * depth), ' ') + line + "\n";
    return text;
}

std::string full_file(const std::string& root, const std::string& header_name, bool has_kvstd_version,
                      const std::string& rest = "")
{
    return declaration + "<" + root + ">\n" + header(header_name, has_kvstd_version, "  ") + rest + "</" +
           root + ">\n";
}

const std::string default_file = full_file("Orvanto_File", "Orvanto_Header", false);

Outcome create(Document& document, long file_type)
{
    return outcome(document, kh_tree_create_header, &file_type);
}

/// What a walk to a path reports that does not exist.
Outcome no_path(const std::string& path)
{
    return failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_path_node", ". Path: " + path);
}

Outcome refused_root(const std::string& name)
{
    return passed_on(failure(KH_ERR_ARGUMENT, "kh_tree_go_to_stack_node", ". Bad root element: " + name),
                     "kh_tree_go_to_path_node");
}

const Outcome no_element_child = failure(KH_ERR_NOT_FOUND, "kh_tree_go_to_next_element_node");

struct NewFile {
    long file_type;
    std::string content;
    std::string cursor;
};

} // namespace

TEST(CreateHeader, WritesEveryTypeAndFormatVersionByteForByte)
{
    const std::string newer_file = full_file("Earth_Observation_File", "Earth_Observation_Header", true);
    const std::string default_path = "/Orvanto_File/Orvanto_Header/Variable_Header";
    const std::string newer_path = "/Earth_Observation_File/Earth_Observation_Header/Variable_Header";
    const NewFile files[] = {
        {0, default_file, default_path},
        {4, default_file, default_path},
        {10, default_file, default_path},
        {24, default_file, default_path},
        {40, default_file, default_path},
        {300, default_file, default_path},
        {-30, default_file, default_path},
        {30, newer_file, newer_path},
        {34, newer_file, newer_path},
        {1, declaration + header("Orvanto_Header", false, ""), "/Orvanto_Header/Variable_Header"},
        {21, declaration + header("Orvanto_Header", false, ""), "/Orvanto_Header/Variable_Header"},
        {31, declaration + header("Earth_Observation_Header", true, ""),
         "/Earth_Observation_Header/Variable_Header"},
    };
    for (const NewFile& file : files) {
        SCOPED_TRACE(file.file_type);
        Document document;
        long file_type = file.file_type;
        long code = untouched;
        EXPECT_EQ(kh_tree_create_header(&document.fd, &file_type, &code), KH_OK);
        EXPECT_EQ(code, KH_OK);
        EXPECT_EQ(file_type, file.file_type % 10) << "the extension type alone is left";
        EXPECT_EQ(cursor(document), file.cursor);
        EXPECT_EQ(document.written(), file.content);
        EXPECT_EQ(document.written(), file.content) << "a second write adds nothing";
    }
}

TEST(CreateHeader, IsReadAlikeByLibxml2Alone)
{
    Document document;
    ASSERT_EQ(create(document, 30).status, KH_OK);
    const std::string text = document.written();
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> plain(
        xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, XML_PARSE_NOBLANKS),
        xmlFreeDoc);
    ASSERT_TRUE(plain);
    std::string elements;
    const xmlNode* node = xmlDocGetRootElement(plain.get());
    for (int depth = 0; node;) {
        EXPECT_EQ(node->type, XML_ELEMENT_NODE);
        elements += std::to_string(depth) + reinterpret_cast<const char*>(node->name) + " ";
        if (node->children) {
            node = node->children;
            ++depth;
            continue;
        }
        while (node && !node->next) {
            node = depth > 0 ? node->parent : nullptr;
            --depth;
        }
        if (node)
            node = node->next;
    }
    EXPECT_EQ(elements,
              "0Earth_Observation_File 1Earth_Observation_Header 2Fixed_Header 3File_Name "
              "3File_Description 3Notes 3Mission 3File_Class 3File_Type 3Validity_Period "
              "4Validity_Start 4Validity_Stop 3File_Version 3KVSTD_Version 3Source 4System 4Creator "
              "4Creator_Version 4Creation_Date 2Variable_Header ");
}

TEST(CreateHeader, SucceedsWithTheReportsOfWhatItLookedFor)
{
    Document full;
    EXPECT_EQ(create(full, 0), in_turn(failure(KH_ERR_NO_ROOT, "kh_tree_go_to_path_node"),
                                       no_path("/Orvanto_File/Orvanto_Header"), no_element_child, success));
    Document header_only;
    EXPECT_EQ(create(header_only, 31),
              in_turn(failure(KH_ERR_NO_ROOT, "kh_tree_go_to_path_node"),
                      no_path("/Earth_Observation_Header/Fixed_Header"), no_element_child, success));
}

TEST(CreateHeader, ChangesNothingInADocumentThatHasOne)
{
    struct Existing {
        long file_type;
        const char* function;
        std::string header_path;
    };
    const Existing cases[] = {
        {0, "KH_tree_create_header_EOF", "/Orvanto_File/Orvanto_Header"},
        {4, "KH_tree_create_header_EOF", "/Orvanto_File/Orvanto_Header"},
        {34, "KH_tree_create_header_EOF", "/Earth_Observation_File/Earth_Observation_Header"},
        {1, "KH_tree_create_header_HDR", "/Orvanto_Header/Fixed_Header"},
        {31, "KH_tree_create_header_HDR", "/Earth_Observation_Header/Fixed_Header"},
    };
    for (const auto& [file_type, function, header_path] : cases) {
        SCOPED_TRACE(file_type);
        Document document;
        ASSERT_EQ(create(document, file_type).status, KH_OK);
        const std::string before = in_memory(document);
        EXPECT_EQ(create(document, file_type), failure(KH_WARN_HEADER_EXISTS, function));
        EXPECT_EQ(in_memory(document), before);
        EXPECT_EQ(cursor(document), header_path);
    }
}

TEST(CreateHeader, ReturnsTheWarningOfAHeaderThatExists)
{
    Document document;
    long file_type = 0;
    ASSERT_EQ(kh_tree_create_header(&document.fd, &file_type, nullptr), KH_OK);
    EXPECT_EQ(kh_tree_create_header(&document.fd, &file_type, nullptr), KH_WARN_HEADER_EXISTS);
    EXPECT_EQ(nodes_of(document, "//Orvanto_Header").size(), 1u);
}

// The first call leaves the extension type alone in the variable.
TEST(CreateHeader, FailsWhenTheVariableOfTheFirstCallIsUsedAgain)
{
    Document document;
    long file_type = 30;
    ASSERT_EQ(kh_tree_create_header(&document.fd, &file_type, &document.status), KH_OK);
    const std::string before = in_memory(document);
    EXPECT_EQ(outcome(document, kh_tree_create_header, &file_type),
              in_turn(refused_root("Orvanto_File"), failure(KH_ERR_ROOT_EXISTS, "kh_tree_create_root"),
                      failure(KH_ERR_CREATE_NODE, "KH_tree_create_header_EOF"),
                      failure(KH_ERR_CREATE_NODE, "kh_tree_create_header")));
    EXPECT_EQ(in_memory(document), before);
}

TEST(CreateHeader, IsTheFirstChildOfARootThatHasChildren)
{
    Document document("<Orvanto_File>\n  <!-- data --><Data>\n    <Value>1</Value>\n  </Data>\n  <More/>\n"
                      "</Orvanto_File>");
    document.go_to("/Orvanto_File/More"); // wherever the cursor stands
    EXPECT_EQ(create(document, 0), in_turn(no_path("/Orvanto_File/Orvanto_Header"), success));
    EXPECT_EQ(document.written(),
              declaration + "<Orvanto_File>\n  <!-- data -->" +
                  header("Orvanto_Header", false, "  ").substr(2) +
                  "  <Data>\n    <Value>1</Value>\n  </Data>\n  <More/>\n</Orvanto_File>\n");
}

TEST(CreateHeader, IsAddedToARootWithoutElements)
{
    for (const char* file : {"<Orvanto_File/>", "<Orvanto_File>\n</Orvanto_File>"}) {
        Document document(file);
        EXPECT_EQ(create(document, 4).status, KH_OK);
        EXPECT_EQ(document.written(), default_file);
    }
    Document with_comment("<Orvanto_File><!-- none --></Orvanto_File>");
    EXPECT_EQ(create(with_comment, 4).status, KH_OK);
    EXPECT_EQ(cursor(with_comment), "/Orvanto_File/Orvanto_Header/Variable_Header");

    Document header_only("<Orvanto_Header/>");
    EXPECT_EQ(create(header_only, 1).status, KH_OK);
    EXPECT_EQ(header_only.written(), declaration + header("Orvanto_Header", false, ""));
}

TEST(CreateHeader, RefusesADocumentOfAnotherRoot)
{
    for (const auto& [file_type, root, function] :
         {std::tuple{0L, "Orvanto_File", "KH_tree_create_header_EOF"},
          {34L, "Earth_Observation_File", "KH_tree_create_header_EOF"},
          {1L, "Orvanto_Header", "KH_tree_create_header_HDR"},
          {31L, "Earth_Observation_Header", "KH_tree_create_header_HDR"}}) {
        SCOPED_TRACE(file_type);
        Document document("<Other><Data/></Other>");
        const std::string before = in_memory(document);
        EXPECT_EQ(create(document, file_type),
                  in_turn(refused_root(root), failure(KH_ERR_ROOT_EXISTS, "kh_tree_create_root"),
                          failure(KH_ERR_CREATE_NODE, function),
                          failure(KH_ERR_CREATE_NODE, "kh_tree_create_header")));
        EXPECT_EQ(in_memory(document), before);
    }
}

// A header-only file is no place for a header beside other elements; the items made so far stay.
TEST(CreateHeader, FailsInAHeaderOnlyFileWhoseRootHasAChild)
{
    const std::string expected = "<Orvanto_Header><Data><File_Name/><File_Description/><Notes/><Mission/>"
                                 "<File_Class/><File_Type/><Validity_Period><Validity_Start/><Validity_Stop/>"
                                 "</Validity_Period></Data><More/></Orvanto_Header>";
    const Outcome inner = in_turn(no_path("/Orvanto_Header/Fixed_Header"),
                                  no_path("/Orvanto_Header/Fixed_Header/Validity_Period"),
                                  failure(KH_ERR_NOT_FOUND, "KH_tree_create_header_HDR"));
    const auto without_blanks = [](const Document& document) {
        std::string text = in_memory(document).substr(declaration.size());
        text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == ' ' || c == '\n'; }),
                   text.end());
        return text;
    };

    Document variant("<Orvanto_Header><Data/><More/></Orvanto_Header>");
    EXPECT_EQ(outcome(variant, KH_tree_create_header_HDR, "Orvanto_Header", 0L), inner);
    EXPECT_EQ(without_blanks(variant), expected);

    Document document("<Orvanto_Header><Data/><More/></Orvanto_Header>");
    EXPECT_EQ(create(document, 1), in_turn(inner, failure(KH_ERR_CREATE_NODE, "kh_tree_create_header")));
    EXPECT_EQ(without_blanks(document), expected);
}

TEST(CreateHeader, FindsTheHeaderOfAHeaderOnlyFileBehindOtherElements)
{
    Document document("<Orvanto_Header><Data/><Fixed_Header/></Orvanto_Header>");
    EXPECT_EQ(create(document, 1), failure(KH_WARN_HEADER_EXISTS, "KH_tree_create_header_HDR"));
    EXPECT_EQ(cursor(document), "/Orvanto_Header/Fixed_Header");
}

TEST(CreateHeader, RefusesTypesWithoutHeader)
{
    for (const long file_type : {2L, 3L, 5L, 6L, 7L, 8L, 9L, 32L, 33L, -1L, -4L, -31L}) {
        SCOPED_TRACE(file_type);
        Document document;
        long variable = file_type;
        EXPECT_EQ(outcome(document, kh_tree_create_header, &variable),
                  failure(KH_ERR_NO_HEADER_TYPE, "kh_tree_create_header"));
        EXPECT_EQ(variable, file_type % 10);
        EXPECT_EQ(document.root(), nullptr);
    }
}

TEST(CreateHeader, ReportsABadDescriptorAfterSplittingTheType)
{
    for (long fd : {512L, -1L, 1000000L}) {
        long file_type = 32;
        EXPECT_EQ(outcome_at(&fd, kh_tree_create_header, &file_type),
                  failure(KH_ERR_DESCRIPTOR, "kh_tree_create_header"));
        EXPECT_EQ(file_type, 2);
    }
    long file_type = 30;
    EXPECT_EQ(outcome_at(nullptr, kh_tree_create_header, &file_type),
              missing_argument("kh_tree_create_header"));
    long fd = 512;
    EXPECT_EQ(outcome_at(&fd, kh_tree_create_header, nullptr), missing_argument("kh_tree_create_header"));
}

// The empty slot is reported, and the steps that follow decide the status.
TEST(CreateHeader, GoesOnWithAnEmptySlotUntilAStepFails)
{
    const Outcome empty_slot = failure(KH_ERR_NO_DOCUMENT, "kh_tree_create_header");
    const Outcome no_steps = in_turn(failure(KH_ERR_NO_DOCUMENT, "kh_tree_go_to_path_node"),
                                     failure(KH_ERR_NO_DOCUMENT, "kh_tree_create_root"));
    long fd = 511;
    long file_type = 0;
    EXPECT_EQ(outcome_at(&fd, kh_tree_create_header, &file_type),
              in_turn(empty_slot, no_steps, failure(KH_ERR_CREATE_NODE, "KH_tree_create_header_EOF"),
                      failure(KH_ERR_CREATE_NODE, "kh_tree_create_header")));
    file_type = 31;
    EXPECT_EQ(outcome_at(&fd, kh_tree_create_header, &file_type),
              in_turn(empty_slot, no_steps, failure(KH_ERR_CREATE_NODE, "KH_tree_create_header_HDR"),
                      failure(KH_ERR_CREATE_NODE, "kh_tree_create_header")));
    file_type = 2;
    EXPECT_EQ(outcome_at(&fd, kh_tree_create_header, &file_type),
              in_turn(empty_slot, failure(KH_ERR_NO_HEADER_TYPE, "kh_tree_create_header")));
}

TEST(CreateHeaderVariants, UseTheNamesAndVersionGiven)
{
    Document full;
    EXPECT_EQ(status(full, KH_tree_create_header_EOF, "r", "h", 3L), KH_OK);
    EXPECT_EQ(full.written(), full_file("r", "h", true));
    Document older;
    EXPECT_EQ(status(older, KH_tree_create_header_EOF, "r", "h", 4L), KH_OK);
    EXPECT_EQ(older.written(), full_file("r", "h", false));
    Document header_only;
    EXPECT_EQ(status(header_only, KH_tree_create_header_HDR, "h", 3L), KH_OK);
    EXPECT_EQ(header_only.written(), declaration + header("h", true, ""));

    const std::string long_name(5000, 'n');
    Document long_names;
    EXPECT_EQ(status(long_names, KH_tree_create_header_EOF, long_name.c_str(), "h", 0L), KH_OK);
    EXPECT_EQ(long_names.written(), full_file(long_name, "h", false));
}

TEST(CreateHeaderVariants, ReportNamesThatNoElementCanHave)
{
    Document no_root;
    EXPECT_EQ(status(no_root, KH_tree_create_header_EOF, "1", "h", 0L), KH_ERR_CREATE_NODE);
    EXPECT_EQ(no_root.root(), nullptr);
    EXPECT_EQ(status(no_root, KH_tree_create_header_HDR, "1", 0L), KH_ERR_CREATE_NODE);
    EXPECT_EQ(no_root.root(), nullptr);

    for (const char* name : {"1", "a b", "h[*]", "[*]/[*]"}) {
        Document document;
        EXPECT_EQ(status(document, KH_tree_create_header_EOF, "r", name, 0L), KH_ERR_CREATE_NODE) << name;
        EXPECT_EQ(in_memory(document), declaration + "<r>\n  </r>\n") << "the root that was made stays";
    }
}

TEST(CreateHeaderVariants, NeedEveryArgument)
{
    Document document;
    EXPECT_EQ(outcome(document, KH_tree_create_header_EOF, nullptr, "h", 0L),
              missing_argument("KH_tree_create_header_EOF"));
    EXPECT_EQ(outcome(document, KH_tree_create_header_EOF, "r", nullptr, 0L),
              missing_argument("KH_tree_create_header_EOF"));
    EXPECT_EQ(outcome_at(nullptr, KH_tree_create_header_EOF, "r", "h", 0L),
              missing_argument("KH_tree_create_header_EOF"));
    EXPECT_EQ(outcome(document, KH_tree_create_header_HDR, nullptr, 0L),
              missing_argument("KH_tree_create_header_HDR"));
    EXPECT_EQ(outcome_at(nullptr, KH_tree_create_header_HDR, "h", 0L),
              missing_argument("KH_tree_create_header_HDR"));
    EXPECT_EQ(document.root(), nullptr);
}

TEST(CreateHeaderVariants, SurviveBadDescriptors)
{
    for (const auto& [descriptor, code] :
         {std::pair{512L, KH_ERR_DESCRIPTOR}, {-1L, KH_ERR_DESCRIPTOR}, {511L, KH_ERR_NO_DOCUMENT}}) {
        long fd = descriptor;
        const Outcome steps =
            in_turn(failure(code, "kh_tree_go_to_path_node"), failure(code, "kh_tree_create_root"));
        EXPECT_EQ(outcome_at(&fd, KH_tree_create_header_EOF, "r", "h", 0L),
                  in_turn(steps, failure(KH_ERR_CREATE_NODE, "KH_tree_create_header_EOF")));
        EXPECT_EQ(outcome_at(&fd, KH_tree_create_header_HDR, "h", 0L),
                  in_turn(steps, failure(KH_ERR_CREATE_NODE, "KH_tree_create_header_HDR")));
    }
}
