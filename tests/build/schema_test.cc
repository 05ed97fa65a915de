#include "build/edit.h"

#include <vector>

namespace {

using edit::in_memory;
using edit::written;
using support::content_of;
using support::Document;
using support::failure;
using support::missing_argument;
using support::Outcome;
using support::outcome_of;
using support::passed_on;
using support::success;
using support::TemporaryFolder;

const std::string family = KALV_SCHEMA_BASE_FAMILY;
const std::string tarvek = KALV_SCHEMA_BASE_TARVEK;
const std::string instance = "http://www.w3.org/2001/XMLSchema-instance";
const std::string xsi = " xmlns:xsi=\"" + instance + "\"";

std::string location(const std::string& value)
{
    return " xsi:schemaLocation=\"" + value + "\"";
}
std::string version(const std::string& value)
{
    return " schemaVersion=\"" + value + "\"";
}
std::string space(const std::string& uri)
{
    return " xmlns=\"" + uri + "\"";
}

void set_schema(Document& document, const std::string& schema, long mode)
{
    KH_Set_Schema(&document.fd, schema.c_str(), &mode);
}

struct Setting {
    std::string document, schema;
    long mode;
    std::string result;
};

/// The document in memory afterwards; written, it must be a file that parses.
void expect_settings(const std::vector<Setting>& settings)
{
    for (const auto& [xml, schema, mode, result] : settings) {
        Document document(xml);
        set_schema(document, schema, mode);
        EXPECT_EQ(in_memory(document), result) << xml << " mode " << mode;
        EXPECT_TRUE(edit::read_plainly(document.written())) << xml << " mode " << mode;
    }
}

/// An attribute that the root has after a round through a file; "(null)" for none.
std::string root_item(Document& document, const char* name, const char* uri = nullptr)
{
    const edit::PlainDocument read = edit::read_plainly(document.written());
    if (!read)
        return "not parsed";
    xmlNode* root = xmlDocGetRootElement(read.get());
    const std::unique_ptr<xmlChar, decltype(xmlFree)> value(
        uri ? xmlGetNsProp(root, BAD_CAST name, BAD_CAST uri) : xmlGetNoNsProp(root, BAD_CAST name), xmlFree);
    return edit::text_of(value.get());
}

std::string root_namespace(Document& document)
{
    const edit::PlainDocument read = edit::read_plainly(document.written());
    const xmlNode* root = read ? xmlDocGetRootElement(read.get()) : nullptr;
    return root && root->ns ? edit::text_of(root->ns->href) : "(null)";
}

std::size_t occurrences(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

TEST(SetSchema, SetsLocationVersionAndDefaultNamespace)
{
    const std::string name = "KALV_0203.XSD", all = xsi + location(family + " " + name);
    expect_settings({
        {"<r/>", name, 0, "<r" + all + version("2.3") + space(family) + "/>"},
        {"<r/>", name, 1, "<r" + all + space(family) + "/>"},
        {"<r id=\"1\"><a/></r>", name, 1,
         "<r" + xsi + " id=\"1\"" + location(family + " " + name) + space(family) + "><a/></r>"},
    });
}

TEST(SetSchema, WorksOnACreatedDocument)
{
    for (const long mode : {0L, 1L}) {
        Document document;
        ASSERT_EQ(edit::status(document, kh_tree_create_root, "r"), KH_OK);
        set_schema(document, "KALV_0102.XSD", mode);
        ASSERT_EQ(edit::status(document, kh_tree_add_child, ".", "a"), KH_OK);
        EXPECT_EQ(written(document), "<r" + xsi + location(family + " KALV_0102.XSD") +
                                         (mode == 0 ? version("1.2") : "") + space(family) +
                                         ">\n  <a/>\n</r>");
    }
}

TEST(SetSchema, TakesTheNamespaceFromTheTextOrABase)
{
    const auto both = [](const std::string& place, const std::string& uri) {
        return "<r" + xsi + location(place) + space(uri) + "/>";
    };
    expect_settings({
        {"<r/>", "a.xsd", 1, both(family + " a.xsd", family)},
        {"<r/>", "TARVEK_SCHEMAS/a.xsd", 1, both(tarvek + " TARVEK_SCHEMAS/a.xsd", tarvek)},
        {"<r/>", "my_TARVEK_SCHEMAS_a.xsd", 1, both(tarvek + " my_TARVEK_SCHEMAS_a.xsd", tarvek)},
        {"<r/>", "tarvek_schemas/a.xsd", 1, both(family + " tarvek_schemas/a.xsd", family)},
        {"<r/>", "urn:own a.xsd", 1, both("urn:own a.xsd", "urn:own")},
        {"<r/>", "urn:own TARVEK_SCHEMAS/a.xsd", 1, both("urn:own TARVEK_SCHEMAS/a.xsd", "urn:own")},
        {"<r/>", "urn:own a.xsd urn:b b.xsd", 1, both("urn:own a.xsd urn:b b.xsd", "urn:own")},
        {"<r/>", "", 1, both(family + " ", family)},
    });
    const std::string uri = "urn:" + std::string(1000, 'u');
    expect_settings({{"<r/>", uri + " a.xsd", 1, both(uri + " a.xsd", uri)}});
}

TEST(SetSchema, ReadsTheVersionFromTheLastEightCharacters)
{
    struct Case {
        const char *schema, *version;
    };
    for (const auto& [schema, expected] : std::vector<Case>{
             {"KALV_0203.XSD", "2.3"},
             {"0203.XSD", "2.3"},
             {"KALV_1112.XSD", "11.12"},
             {"KALV_0000.XSD", "0.0"},
             // Two fields are enough, whatever they hold and whatever follows.
             {"urn:own file.xsd", "0.0"},
             {"KALV_0203.xsd", "2.3"},
             {"KALV_02031234", "2.3"},
             {"x+1-2.XSD", "1.-2"},
             {"x1a2b.XSD", "1.2"},
             {"urn:own a.xsd", "0.0"},
             // Shorter texts are read whole.
             {"12.XSD", "12.0"},
             {"123", "12.3"},
             {"12", "(null)"},
             {"1", "(null)"},
             {"", "(null)"},
             {"urn:own  ", "0.0"},
             {"x         1", "(null)"},
         }) {
        Document document("<r/>");
        set_schema(document, schema, 0);
        EXPECT_EQ(root_item(document, "schemaVersion"), expected) << schema;
    }
}

TEST(SetSchema, LeavesAnOldVersionWhereTheTextHasNone)
{
    expect_settings({{"<r schemaVersion=\"9.9\"/>", "1", 0,
                      "<r" + xsi + version("9.9") + location(family + " 1") + space(family) + "/>"}});
}

TEST(SetSchema, ReplacesWhatThereWas)
{
    const std::string name = "KALV_0203.XSD", place = family + " " + name;
    expect_settings({
        {"<r schemaVersion=\"9.9\"/>", name, 0,
         "<r" + xsi + version("2.3") + location(place) + space(family) + "/>"},
        {"<r schemaVersion=\"9.9\"/>", name, 1,
         "<r" + xsi + version("9.9") + location(place) + space(family) + "/>"},
        {"<r" + xsi + location("old old.xsd") + "/>", name, 1,
         "<r" + xsi + location(place) + space(family) + "/>"},
        {"<r xmlns=\"urn:old\"/>", name, 1, "<r" + space(family) + xsi + location(place) + "/>"},
    });
}

TEST(SetSchema, OverwritesTheNamespaceOfARootThatDeclaresXsi)
{
    const std::string name = "KALV_0203.XSD", place = family + " " + name;
    expect_settings({
        // No namespace of its own: an attribute.
        {"<r" + xsi + "/>", name, 0, "<r" + xsi + location(place) + version("2.3") + space(family) + "/>"},
        {"<r" + xsi + space("urn:old") + "/>", name, 0,
         "<r" + xsi + space(family) + location(place) + version("2.3") + "/>"},
        // Whatever its prefix.
        {"<p:r" + xsi + " xmlns:p=\"urn:old\"/>", name, 1,
         "<p:r" + xsi + " xmlns:p=\"" + family + "\"" + location(place) + "/>"},
        // A new declaration of xsi leaves the root's namespace alone.
        {"<p:r xmlns:p=\"urn:old\"/>", name, 1,
         "<p:r xmlns:p=\"urn:old\"" + xsi + location(place) + space(family) + "/>"},
    });
}

// Callers rely on it: the first declaration of the root serves for the location, whichever it is.
TEST(SetSchema, PutsTheLocationIntoTheFirstDeclaredNamespace)
{
    const std::string name = "KALV_0203.XSD", place = family + " " + name;
    expect_settings({
        {"<r" + space("urn:old") + xsi + "/>", name, 0,
         "<r" + space(family) + xsi + " schemaLocation=\"" + place + "\"" + version("2.3") + "/>"},
        {"<p:r xmlns:p=\"urn:old\"" + xsi + "/>", name, 1,
         "<p:r xmlns:p=\"" + family + "\"" + xsi + " p:schemaLocation=\"" + place + "\"/>"},
        {"<r" + space("urn:old") + xsi + location("old old.xsd") + "/>", name, 1,
         "<r" + space(family) + xsi + " schemaLocation=\"" + place + "\"/>"},
    });
}

TEST(SetSchema, ReplacesTheLocationUnderAnotherPrefixOfItsNamespace)
{
    const std::string prefixes = " xmlns:p=\"urn:p\" xmlns:q=\"urn:p\"" + xsi;
    expect_settings({
        {"<r" + prefixes + " q:schemaLocation=\"old\"/>", "urn:n f.xsd", 1,
         "<r" + prefixes + " q:schemaLocation=\"urn:n f.xsd\" xmlns=\"urn:n\"/>"},
    });
}

// Callers rely on it: an attribute's name stands where its namespace belongs.
TEST(SetSchema, RemovesAttributesOfANamespaceCalledLikeTheLocation)
{
    const std::string odd = "<r xmlns:q=\"schemaLocation\" q:schemaVersion=\"9\" q:xmlns=\"8\"/>";
    const std::string place = location(family + " a_0203.XSD");
    expect_settings({
        {odd, "a_0203.XSD", 0,
         "<r xmlns:q=\"schemaLocation\"" + xsi + place + version("2.3") + space(family) + "/>"},
        {odd, "a_0203.XSD", 1,
         "<r xmlns:q=\"schemaLocation\"" + xsi + " q:schemaVersion=\"9\"" + place + space(family) + "/>"},
    });
}

TEST(SetSchema, RemovesEverythingInModeTwo)
{
    expect_settings({
        {"<r/>", "", 2, "<r/>"},
        {"<r" + xsi + location("u v") + version("1.2") + space("urn:u") + "/>", "", 2, "<r/>"},
        {"<r" + space("urn:u") + xsi + location("u v") + "/>", "", 2, "<r/>"},
        {"<r id=\"1\" xmlns:p=\"urn:p\" p:x=\"1\">text</r>", "", 2, "<r>text</r>"},
        {"<r" + xsi + "><a id=\"1\" xmlns:q=\"urn:q\"/></r>", "a.xsd", 2,
         "<r><a xmlns:q=\"urn:q\" id=\"1\"/></r>"},
    });
}

TEST(SetSchema, RemovesOnlyTheLocationInModeThree)
{
    expect_settings({
        {"<r" + xsi + " id=\"1\"" + location("u v") + version("1.2") + "/>", "", 3,
         "<r" + xsi + " id=\"1\"" + version("1.2") + "/>"},
        {"<r" + space("urn:u") + xsi + location("u v") + "/>", "", 3, "<r" + space("urn:u") + xsi + "/>"},
        {"<r" + xsi + "/>", "", 3, "<r" + xsi + "/>"},
    });
}

// Callers rely on it: without a declaration of xsi the attributes go too.
TEST(SetSchema, RemovesEverythingInModeThreeWithoutXsi)
{
    expect_settings({
        {"<r id=\"1\"/>", "", 3, "<r/>"},
        {"<r" + space("urn:u") + version("1.2") + ">text</r>", "", 3, "<r>text</r>"},
    });
}

TEST(SetSchema, KeepsDetachedDeclarationsValid)
{
    for (const long mode : {2L, 3L}) {
        Document document("<p:r xmlns:p=\"urn:p\"><p:a p:x=\"1\"/></p:r>");
        set_schema(document, "", mode);
        EXPECT_EQ(in_memory(document), "<p:r><p:a p:x=\"1\"/></p:r>");
        EXPECT_EQ(edit::status(document, kh_tree_add_child, "/r/a", "b"), KH_OK);
        EXPECT_TRUE(edit::contains(in_memory(document), "<p:b/>"));
        EXPECT_EQ(edit::status(document, kh_tree_remove_node, "/r"), KH_OK);
    }
}

TEST(SetSchema, DoesNotTakeADetachedDeclarationForTheNamespace)
{
    Document document("<r" + space("urn:old") + "/>");
    set_schema(document, "", 2);
    set_schema(document, "urn:one one_0102.XSD", 0);
    EXPECT_EQ(in_memory(document),
              "<r" + xsi + location("urn:one one_0102.XSD") + version("1.2") + space("urn:one") + "/>");
    set_schema(document, "urn:two two_0304.XSD", 0);
    EXPECT_EQ(root_namespace(document), "urn:two");
    EXPECT_EQ(root_item(document, "schemaLocation", instance.c_str()), "urn:two two_0304.XSD");
    EXPECT_EQ(root_item(document, "schemaVersion"), "3.4");
}

TEST(SetSchema, CanBeSetAgain)
{
    for (const std::string& xml :
         {std::string("<r/>"), "<r" + xsi + "/>", "<r" + xsi + space("urn:old") + "/>",
          std::string("<r schemaVersion=\"9\"/>")}) {
        Document document(xml);
        for (const char* uri : {"urn:one", "urn:two", "urn:two"}) {
            set_schema(document, std::string(uri) + " a_0203.XSD", 0);
            EXPECT_EQ(root_namespace(document), uri) << xml;
            EXPECT_EQ(root_item(document, "schemaLocation", instance.c_str()),
                      std::string(uri) + " a_0203.XSD");
            EXPECT_EQ(root_item(document, "schemaVersion"), "2.3");
        }
        set_schema(document, "", 2);
        EXPECT_EQ(in_memory(document), "<r/>");
    }
}

TEST(SetSchema, DoublesNoAttributeOrDeclaration)
{
    for (const std::string name :
         {"xmlns", "xmlns:xsi", "xsi:schemaLocation", "schemaVersion", "schemaLocation"}) {
        for (const long mode : {0L, 1L, 2L, 3L}) {
            Document document;
            ASSERT_EQ(edit::status(document, kh_tree_create_root, "r"), KH_OK);
            ASSERT_EQ(edit::status(document, kh_tree_add_attribute, ".", name.c_str()), KH_OK);
            ASSERT_EQ(
                edit::status(document, kh_tree_set_string_node_value, ("@" + name).c_str(), "urn:x", "%s"),
                KH_OK);
            set_schema(document, "urn:u a_0203.XSD", mode);
            const std::string text = document.written();
            EXPECT_TRUE(edit::read_plainly(text)) << text;
            EXPECT_LE(occurrences(text, " " + name + "="), 1U) << text;
        }
    }
}

TEST(SetSchema, WritesAUriWithMarkupEscaped)
{
    for (const std::string uri : {"urn:a?x=1&y=2", "urn:a<b", "urn:a\"b", "urn:a&amp;b"}) {
        for (const std::string& xml :
             {std::string("<r/>"), "<r" + xsi + space("urn:old") + "/>", "<r" + space("urn:old") + "/>"}) {
            Document document(xml);
            set_schema(document, uri + " a_0203.XSD", 0);
            EXPECT_EQ(root_namespace(document), uri) << document.written();
            EXPECT_EQ(root_item(document, "schemaLocation", instance.c_str()), uri + " a_0203.XSD");
        }
    }
}

TEST(SetSchema, WorksOnTheElementUnderTheCursor)
{
    Document document("<r" + xsi + "><a/></r>");
    document.go_to("/r/a");
    set_schema(document, "urn:u a.xsd", 1);
    EXPECT_EQ(in_memory(document),
              "<r" + xsi + "><a" + xsi + location("urn:u a.xsd") + space("urn:u") + "/></r>");
    EXPECT_EQ(document.path(), "/r/a");
    set_schema(document, "", 2);
    EXPECT_EQ(in_memory(document), "<r" + xsi + "><a/></r>");
}

TEST(SetSchema, DoesNothingWithoutAnElementAndWithBadArguments)
{
    Document document("<r>text</r>");
    const long good = 0;
    const auto untouched_by = [&](const std::function<void()>& action) {
        EXPECT_EQ(support::report_of(action), "");
        EXPECT_EQ(in_memory(document), "<r>text</r>");
    };
    for (const long mode : {-1L, 4L, 1000L})
        untouched_by([&] { set_schema(document, "a.xsd", mode); });
    untouched_by([&] { KH_Set_Schema(nullptr, "a.xsd", &good); });
    untouched_by([&] { KH_Set_Schema(&document.fd, nullptr, &good); });
    untouched_by([&] { KH_Set_Schema(&document.fd, "a.xsd", nullptr); });
    for (const long descriptor : {512L, -1L, 511L}) {
        long fd = descriptor;
        untouched_by([&] { KH_Set_Schema(&fd, "a.xsd", &good); });
    }
    document.go_to("/r/x[0]");
    for (const long mode : {0L, 1L, 2L, 3L})
        untouched_by([&] { set_schema(document, "a.xsd", mode); });
    Document empty;
    set_schema(empty, "a.xsd", 0);
    EXPECT_EQ(empty.root(), nullptr);
}

/// kh_set_schema on a file: opened, set, written back, closed.
class SchemaOfFile : public testing::Test {
protected:
    void SetUp() override { open_before = edit::open_documents(); }
    Outcome set(const std::string& name, const char* schema, long mode)
    {
        return outcome_of([&](long* ierr) { kh_set_schema(name.c_str(), schema, &mode, ierr); });
    }
    std::string content() { return edit::without_frame(content_of(file)); }

    TemporaryFolder folder;
    std::string file = folder.file("file.xml", "<r><a/></r>");
    long open_before = 0;
};

TEST_F(SchemaOfFile, SetsAndRemovesTheReferences)
{
    EXPECT_EQ(set(file, "urn:u a_0203.XSD", 0), success);
    EXPECT_EQ(content(),
              "<r" + xsi + location("urn:u a_0203.XSD") + version("2.3") + space("urn:u") + "><a/>\n</r>");
    EXPECT_EQ(set(file, "", 3).status, KH_OK);
    EXPECT_EQ(content(), "<r" + xsi + space("urn:u") + version("2.3") + "><a/>\n</r>");
    EXPECT_EQ(set(file, "", 2).status, KH_OK);
    EXPECT_EQ(content(), "<r><a/>\n</r>");
    EXPECT_EQ(set(file, "a.xsd", 1).status, KH_OK);
    EXPECT_EQ(content(), "<r" + xsi + location(family + " a.xsd") + space(family) + "><a/>\n</r>");
    EXPECT_EQ(edit::open_documents(), open_before);
    EXPECT_EQ(folder.entries(), 1U);
}

TEST_F(SchemaOfFile, LeavesAFileThatCanBeSetAgain)
{
    for (const std::string& start :
         {std::string("<r/>"), "<r" + space("urn:old") + xsi + "/>", "<r" + xsi + space("urn:old") + "/>",
          "<p:r xmlns:p=\"urn:old\"" + xsi + "/>"}) {
        folder.file("file.xml", start);
        for (const char* uri : {"urn:one", "urn:two&three", "urn:two&three"}) {
            const std::string schema = std::string(uri) + " a_0203.XSD";
            EXPECT_EQ(set(file, schema.c_str(), 0).status, KH_OK) << start;
            const std::string text = content();
            EXPECT_TRUE(edit::read_plainly(text)) << text;
            EXPECT_EQ(occurrences(text, "schemaLocation="), 1U) << text;
            EXPECT_EQ(occurrences(text, "schemaVersion="), 1U) << text;
        }
    }
}

TEST_F(SchemaOfFile, ReportsAFileThatCannotBeRead)
{
    for (const std::string& bad : {folder.path("missing.xml"), folder.file("broken.xml", "<r>")}) {
        const Outcome result = set(bad, "a.xsd", 0);
        EXPECT_EQ(result.status, KH_ERR_PARSE) << bad;
        EXPECT_TRUE(edit::ends_with(result.report,
                                    failure(KH_ERR_PARSE, "kh_tree_init_parser", ". File: " + bad).report +
                                        "\n\tFunction: kh_set_schema.\n"))
            << result.report;
    }
    EXPECT_EQ(edit::open_documents(), open_before);
}

// Callers rely on it: a refused mode leaves the document open.
TEST_F(SchemaOfFile, RefusesOtherModesAndLeavesTheDocumentOpen)
{
    for (const long mode : {4L, 5L, -1L}) {
        EXPECT_EQ(set(file, "a.xsd", mode), failure(KH_ERR_ARGUMENT, "kh_set_schema", "."));
        EXPECT_EQ(edit::open_documents(), open_before + 1);
        long fd = 0, status = 0;
        while (!global_current_status[fd] || KH_get_file_name(fd) != file)
            ASSERT_LT(++fd, KH_MAX_DOCUMENTS);
        kh_tree_cleanup_parser(&fd, &status);
    }
    EXPECT_EQ(content_of(file), "<r><a/></r>");
}

TEST_F(SchemaOfFile, RefusesMissingArguments)
{
    const long mode = 0;
    const Outcome missing = missing_argument("kh_set_schema");
    EXPECT_EQ(outcome_of([&](long* ierr) { kh_set_schema(nullptr, "a.xsd", &mode, ierr); }), missing);
    EXPECT_EQ(outcome_of([&](long* ierr) { kh_set_schema(file.c_str(), nullptr, &mode, ierr); }), missing);
    EXPECT_EQ(outcome_of([&](long* ierr) { kh_set_schema(file.c_str(), "a.xsd", nullptr, ierr); }), missing);
    EXPECT_EQ(edit::open_documents(), open_before);
    EXPECT_EQ(content_of(file), "<r><a/></r>");
}

TEST_F(SchemaOfFile, ClosesTheDocumentWhenTheWriteFails)
{
    const std::string large = "<r>" + std::string(100000, 'x') + "</r>";
    folder.file("file.xml", large);
    Outcome result;
    {
        const edit::FullDisk disk(4096);
        result = set(file, "a.xsd", 0);
    }
    EXPECT_EQ(result.status, KH_ERR_SAVE);
    EXPECT_TRUE(edit::ends_with(result.report, "\n\tFunction: kh_set_schema.\n")) << result.report;
    EXPECT_EQ(edit::open_documents(), open_before);
    EXPECT_TRUE(content_of(file) == large);
    EXPECT_EQ(folder.entries(), 1U);
}

TEST_F(SchemaOfFile, ReturnsItsStatus)
{
    const long mode = 1;
    EXPECT_EQ(kh_set_schema(file.c_str(), "a.xsd", &mode, nullptr), KH_OK);
    EXPECT_EQ(kh_set_schema(folder.path("missing").c_str(), "a.xsd", &mode, nullptr), KH_ERR_PARSE);
}

TEST(SetSchemaOfAFile, RefusesATextThatNoFileCanHold)
{
    const support::TemporaryFolder folder;
    const std::string name =
        folder.file("file.xml", "<r xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'/>");
    const std::string before = support::content_of(name);
    const long mode = 0;
    for (const std::string schema : {"\x01", "\xff"})
        EXPECT_EQ(support::outcome_of(
                      [&](long* ierr) { kh_set_schema(name.c_str(), schema.c_str(), &mode, ierr); }),
                  support::failure(KH_ERR_ARGUMENT, "kh_set_schema", ". Value: " + schema));
    EXPECT_EQ(support::content_of(name), before);
    EXPECT_EQ(global_current_status[0], nullptr);
}

TEST(SetSchema, DoesNothingWithATextThatNoFileCanHold)
{
    for (const char* schema : {"\x01", "\xff", "a\x02.xsd"}) {
        Document document("<r a=\"1\"/>");
        set_schema(document, schema, 0);
        EXPECT_EQ(in_memory(document), "<r a=\"1\"/>");
    }
}

TEST(SetSchema, RemovesWhateverTheTextIs)
{
    for (const long mode : {2L, 3L}) {
        expect_settings({{"<r a=\"1\"/>", "\x01", mode, "<r/>"}, {"<r a=\"1\"/>", "\xff", mode, "<r/>"}});
    }
    const support::TemporaryFolder folder;
    const std::string name = folder.file("file.xml", "<r a='1'/>");
    const long mode = 2;
    EXPECT_EQ(support::outcome_of([&](long* ierr) { kh_set_schema(name.c_str(), "\xff", &mode, ierr); }),
              success);
    EXPECT_EQ(support::content_of(name), "<?xml version=\"1.0\"?>\n<r/>\n");
}

} // namespace
