// Random products of every kind: what is written parses in libxml2 alone and in xmllint, and every item of
// the header, every value and every part of the name reads back as it was set, through both interfaces.
#include "support/outcome.h"
#include "support/plain.h"
#include "support/random_input.h"

#include <cstdint>
#include <cstdlib>
#include <kalv/XmlFile.h>
#include <libxml/xpath.h>

namespace {

using KALV::XmlFile;
using support::RandomInput;
using support::Text;

constexpr long new_format = 3;

struct Kind {
    long extension_type;
    long format_version;
    unsigned seed;
};

void PrintTo(const Kind& kind, std::ostream* stream)
{
    *stream << "type " << kind.format_version * 10 + kind.extension_type << ", seed " << kind.seed;
}

/// All formats of one digit and one of two, each with a seed of its own.
std::vector<Kind> all_kinds()
{
    std::vector<Kind> kinds;
    for (const long type : {KH_EXTENSION_KLV, KH_EXTENSION_HDR, KH_EXTENSION_EOF})
        for (const long version : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 33})
            kinds.push_back({type, version, static_cast<unsigned>(kinds.size())});
    return kinds;
}

/// One row of data.
struct Row {
    std::string text;
    long integer;
    double real;
    std::string attribute;
};

std::string right_aligned(const std::string& text, std::size_t width)
{
    return std::string(width > text.size() ? width - text.size() : 0, ' ') + text;
}

/// A product, as it is set.
class Product {
public:
    explicit Product(const Kind& kind)
        : random_(kind.seed), is_new_(kind.format_version == new_format),
          is_full_(kind.extension_type != KH_EXTENSION_HDR)
    {
        header = KALV::FixedHeader(
            XmlFile().createFileName(110, random_.word(1, 4), random_.word(1, 10),
                                     random_.word(1, 15) + "_" + random_.word(1, 15) + "_0001",
                                     kind.extension_type),
            "a schema that is not written", any_text(), any_text(), any_text(), any_text(), any_text(),
            any_text(), any_text(), random_.integer(), is_new_ ? any_text() : "", any_text(), any_text(),
            any_text(), any_text(), kind.format_version * 10 + kind.extension_type);
        for (std::size_t i = 0, count = 1 + random_.below(20); i < count; ++i)
            rows.push_back({random_.text(1, 20), random_.integer(), random_.real(), any_text()});
    }

    std::string header_path() const
    {
        return std::string(is_full_ ? root_path() : "") +
               (is_new_ ? "/Earth_Observation_Header" : "/Orvanto_Header");
    }
    std::string list_path() const
    {
        return is_full_ ? std::string(root_path()) + "/Data_Block" : header_path() + "/Variable_Header";
    }

    /// Sets all of it in a new document.
    void set(XmlFile& file)
    {
        file.create();
        file.createHeader(header);
        if (is_new_)
            file.setFixedHeaderItem("KVSTD_Version", header.kvstdVersion);
        if (is_full_)
            file.addChild(root_path(), "Data_Block");
        for (const Row& row : rows) {
            file.addChild(list_path(), "Row");
            file.addAttribute(".", "note", row.attribute);
            file.addChild(".", "Text", row.text);
            file.addNext(".", "Integer", row.integer, "%ld");
            file.addNext(".", "Real", row.real, "%.17g");
        }
    }

    /// The items in document order: tag, path below the header, and text in the file.
    struct Item {
        std::string tag;
        std::string path;
        std::string text;
    };
    std::vector<Item> items() const
    {
        char version[16];
        std::snprintf(version, sizeof version, "%04d", stored_version());
        const std::string fixed = "/Fixed_Header/";
        std::vector<Item> items = {
            {"File_Name", fixed, header.fileName},
            {"File_Description", fixed, header.fileDescription},
            {"Notes", fixed, header.notes},
            {"Mission", fixed, header.mission},
            {"File_Class", fixed, header.fileClass},
            {"File_Type", fixed, right_aligned(header.fileType, 10)},
            {"Validity_Start", fixed + "Validity_Period/", right_aligned(header.validityStart, 23)},
            {"Validity_Stop", fixed + "Validity_Period/", right_aligned(header.validityStop, 23)},
            {"File_Version", fixed, version},
            {"KVSTD_Version", fixed, header.kvstdVersion},
            {"System", fixed + "Source/", header.system},
            {"Creator", fixed + "Source/", header.creator},
            {"Creator_Version", fixed + "Source/", header.creatorVersion},
            {"Creation_Date", fixed + "Source/", right_aligned(header.creationDate, 23)},
        };
        if (!is_new_)
            items.erase(items.begin() + 9);
        for (Item& item : items)
            item.path = header_path() + item.path + item.tag;
        return items;
    }

    /// A version has 32 bits.
    std::int32_t stored_version() const
    {
        return static_cast<std::int32_t>(static_cast<std::uint64_t>(header.fileVersion));
    }

    KALV::FixedHeader header;
    std::vector<Row> rows;

private:
    std::string any_text() { return random_.text(0, 12); }
    const char* root_path() const { return is_new_ ? "/Earth_Observation_File" : "/Orvanto_File"; }

    RandomInput random_;
    bool is_new_;
    bool is_full_;
};

class ProductRoundTrip : public testing::Test {
protected:
    /// Writes products of all kinds one after the other, and checks each.
    template <class Check>
    void for_each_product(Check check) const
    {
        for (const Kind& kind : all_kinds()) {
            SCOPED_TRACE(testing::PrintToString(kind));
            Product product(kind);
            XmlFile written;
            product.set(written);
            const std::string name = folder.path(product.header.fileName);
            written.write(name);
            check(product, name);
            if (HasFatalFailure())
                return;
        }
    }

    support::TemporaryFolder folder;
};

/// The text that an XPath expression selects.
std::string selected(xmlDoc* document, const std::string& expression)
{
    const std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
        xmlXPathNewContext(document), xmlXPathFreeContext);
    const std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> result(
        xmlXPathEval(BAD_CAST expression.c_str(), context.get()), xmlXPathFreeObject);
    const std::unique_ptr<xmlChar, decltype(xmlFree)> text(xmlXPathCastToString(result.get()), xmlFree);
    return support::text_of(text.get());
}

TEST_F(ProductRoundTrip, ParsesInLibxml2Alone)
{
    for_each_product([&](const Product& product, const std::string& name) {
        const support::PlainDocument plain = support::read_plainly(support::content_of(name));
        ASSERT_TRUE(plain);
        const std::vector<Product::Item> items = product.items();
        const std::string leaves = "count(" + product.header_path() + "/Fixed_Header//*[not(*)])";
        EXPECT_EQ(selected(plain.get(), leaves), std::to_string(items.size()));
        for (const auto& item : items) {
            EXPECT_EQ(selected(plain.get(), "count(" + item.path + ")"), "1") << item.path;
            EXPECT_EQ(selected(plain.get(), "string(" + item.path + ")"), item.text) << item.path;
        }
        const std::string rows = product.list_path() + "/Row";
        EXPECT_EQ(selected(plain.get(), "count(" + rows + ")"), std::to_string(product.rows.size()));
        for (std::size_t i = 0; i < product.rows.size(); ++i) {
            const std::string row = rows + "[" + std::to_string(i + 1) + "]";
            EXPECT_EQ(selected(plain.get(), "string(" + row + "/Text)"), product.rows[i].text);
            EXPECT_EQ(selected(plain.get(), "string(" + row + "/@note)"), product.rows[i].attribute);
            EXPECT_EQ(selected(plain.get(), "string(" + row + "/Integer)"),
                      std::to_string(product.rows[i].integer));
            EXPECT_EQ(std::stod(selected(plain.get(), "string(" + row + "/Real)")), product.rows[i].real);
        }
    });
}

TEST_F(ProductRoundTrip, ParsesInXmllint)
{
    if (std::system("command -v xmllint > /dev/null") != 0)
        GTEST_SKIP() << "xmllint is not installed";
    for_each_product([](const Product&, const std::string&) {});
    EXPECT_EQ(folder.entries(), all_kinds().size());
    EXPECT_EQ(std::system(("xmllint --nonet --noout '" + folder.path("") + "'*").c_str()), 0);
}

TEST_F(ProductRoundTrip, ReadsBackThroughTheObject)
{
    for_each_product([&](const Product& product, const std::string& name) {
        XmlFile file(name);
        const KALV::FixedHeader& set = product.header;
        const KALV::FixedHeader read = file.getFixedHeader();
        EXPECT_EQ(read.fileName, set.fileName);
        EXPECT_EQ(read.fileDescription, set.fileDescription);
        EXPECT_EQ(read.notes, set.notes);
        EXPECT_EQ(read.mission, set.mission);
        EXPECT_EQ(read.fileClass, set.fileClass);
        EXPECT_EQ(read.fileType, right_aligned(set.fileType, 10));
        EXPECT_EQ(read.validityStart, right_aligned(set.validityStart, 23));
        EXPECT_EQ(read.validityStop, right_aligned(set.validityStop, 23));
        EXPECT_EQ(read.fileVersion, product.stored_version());
        EXPECT_EQ(read.system, set.system);
        EXPECT_EQ(read.creator, set.creator);
        EXPECT_EQ(read.creatorVersion, set.creatorVersion);
        EXPECT_EQ(read.creationDate, right_aligned(set.creationDate, 23));

        std::vector<std::string> texts, notes;
        std::vector<long> integers;
        std::vector<double> reals;
        const std::string rows = product.list_path() + "/Row[*]";
        file.getPathArrayAsString(rows + "/Text", texts);
        file.getPathArrayAsString(rows + "/@note", notes);
        file.getPathArrayAsInt(rows + "/Integer", integers);
        file.getPathArrayAsReal(rows + "/Real", reals);
        ASSERT_EQ(texts.size(), product.rows.size());
        ASSERT_EQ(notes.size(), product.rows.size());
        ASSERT_EQ(integers.size(), product.rows.size());
        ASSERT_EQ(reals.size(), product.rows.size());
        for (std::size_t i = 0; i < texts.size(); ++i) {
            EXPECT_EQ(texts[i], product.rows[i].text);
            EXPECT_EQ(notes[i], product.rows[i].attribute);
            EXPECT_EQ(integers[i], product.rows[i].integer);
            EXPECT_EQ(reals[i], product.rows[i].real);
        }
    });
}

TEST_F(ProductRoundTrip, ReadsBackThroughTheProceduralInterface)
{
    for_each_product([&](const Product& product, const std::string& name) {
        const support::Document document = support::Document::file(name);
        long fd = document.fd;
        long status = 0;
        for (const auto& item : product.items()) {
            Text text;
            char number[21];
            char* value = number;
            if (item.tag == "File_Version") {
                kh_tree_get_fixed_header_item(&fd, item.tag.c_str(), &value, &status);
                EXPECT_EQ(number, std::to_string(product.stored_version()));
            } else {
                kh_tree_get_fixed_header_item(&fd, item.tag.c_str(), text.out(), &status);
                EXPECT_EQ(text.string(), item.text) << item.tag;
            }
            EXPECT_EQ(status, item.text.empty() ? KH_ERR_NO_VALUE : KH_OK) << item.tag;
        }
        for (std::size_t i = 0; i < product.rows.size(); ++i) {
            const std::string row = product.list_path() + "/Row[" + std::to_string(i + 1) + "]";
            Text text;
            long integer = 0;
            double real = 0;
            kh_tree_path_read_string_node_value(&fd, (row + "/Text").c_str(), text.out(), &status);
            EXPECT_EQ(text.string(), product.rows[i].text);
            kh_tree_path_read_integer_node_value(&fd, "../Integer", &integer, &status);
            EXPECT_EQ(integer, product.rows[i].integer);
            kh_tree_path_read_real_node_value(&fd, "../Real", &real, &status);
            EXPECT_EQ(real, product.rows[i].real);
            EXPECT_EQ(status, KH_OK);
        }
    });
}

TEST_F(ProductRoundTrip, IsWrittenAgainUnchanged)
{
    for_each_product([&](const Product&, const std::string& name) {
        XmlFile file(name);
        file.write(folder.path("again"));
        EXPECT_EQ(support::content_of(folder.path("again")), support::content_of(name));
    });
}

/// The satellite that a name read back stands for; 0 where the name has no mission of its own.
long satellite_read_back(long satellite)
{
    if (satellite >= 101 && satellite <= 103)
        return 101; // these share a code
    const bool has_code = satellite == 41 || satellite == 51 || satellite == 61 || satellite == 71 ||
                          satellite == 91 || (satellite >= 110 && satellite <= 113) || satellite == 120 ||
                          (satellite >= 125 && satellite <= 146);
    return has_code ? satellite : 0;
}

TEST(FileNameRoundTrip, ReadsBackEverySatelliteAndExtensionType)
{
    const char* const extensions[] = {".KLV", ".HDR", ".DBL", "", ".EOF", ""};
    RandomInput random(1);
    for (long satellite = 0; satellite <= 401; ++satellite) {
        for (long type = 0; type < 6; ++type) {
            const std::string file_class = random.word(0, 4);
            const std::string file_type = random.word(1, 10);
            const std::string instance =
                random.word(1, 12) + "_" + random.word(1, 12) + "_" + random.word(1, 16);
            std::string name = XmlFile().createFileName(satellite, file_class, file_type, instance, type);
            SCOPED_TRACE(name);
            const KALV::FileNameItems items = XmlFile().getFileNameItems(name);
            EXPECT_EQ(items.satId, satellite_read_back(satellite));
            EXPECT_EQ(items.fileClass, file_class.empty() ? "XXXX" : file_class);
            EXPECT_EQ(items.fileType, file_type);
            EXPECT_EQ(items.instanceId, instance + extensions[type]);
        }
    }
}

} // namespace
