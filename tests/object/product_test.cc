// The fixed header and the names of product files through an object.
#include "object/thrown.h"

namespace {

using KALV::FileNameItems;
using KALV::FixedHeader;
using KALV::XmlFile;
using object::nothing;
using object::Thrown;
using object::thrown_by;

using Members = std::vector<std::string>;

/// All members in order, as texts.
Members members_of(const FixedHeader& header)
{
    return {header.fileName,        header.schema,
            header.fileDescription, header.notes,
            header.mission,         header.fileClass,
            header.fileType,        header.validityStart,
            header.validityStop,    std::to_string(header.fileVersion),
            header.kvstdVersion,    header.system,
            header.creator,         header.creatorVersion,
            header.creationDate,    std::to_string(header.headerType)};
}

TEST(FixedHeader, BeginsEmpty)
{
    EXPECT_EQ(members_of(FixedHeader()),
              (Members{"", "_NOSCHEMA_", "", "", "", "", "", "", "", "0", "", "", "", "", "", "-1"}));
}

TEST(FixedHeader, TakesAllButTheStandardsVersion)
{
    const FixedHeader header("1", "2", "3", "4", "5", "6", "7", "8", "9", 10, "12", "13", "14", "15", 16);
    EXPECT_EQ(members_of(header),
              (Members{"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "", "12", "13", "14", "15", "16"}));
}

TEST(FixedHeader, TakesAll)
{
    const FixedHeader header("1", "2", "3", "4", "5", "6", "7", "8", "9", 10, "11", "12", "13", "14", "15",
                             16);
    const FixedHeader copy = header;
    EXPECT_EQ(members_of(copy), (Members{"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12", "13",
                                         "14", "15", "16"}));
}

class XmlFileHeader : public object::ObjectTest {
protected:
    XmlFileHeader() { file.create(); }

    /// A record whose texts fill their fields, so that they read back as they are.
    FixedHeader filled(long type) const
    {
        return {"name",
                "schema",
                "a description",
                "some notes",
                "SATA",
                "TEST",
                "TYPE_LONG_",
                "UTC=2001-01-01T00:00:00",
                "UTC=2002-01-01T00:00:00",
                7,
                "9.9",
                "system",
                "creator",
                "1.2",
                "UTC=2003-01-01T00:00:00",
                type};
    }
};

TEST_F(XmlFileHeader, IsCreatedWithoutChangingTheCallersType)
{
    long type = 30;
    EXPECT_EQ(file.createHeader(type), 0);
    EXPECT_EQ(type, 30);
    EXPECT_EQ(file.currentPathName(), "/Earth_Observation_File/Earth_Observation_Header/Variable_Header");
    EXPECT_EQ(thrown_by([&] { file.createHeader(type); }),
              (Thrown{"XmlFile::createHeader", KH_WARN_HEADER_EXISTS}));
}

TEST_F(XmlFileHeader, IsRefusedForOtherFiles)
{
    EXPECT_EQ(thrown_by([&] { file.createHeader(2); }),
              (Thrown{"XmlFile::createHeader", KH_ERR_NO_HEADER_TYPE}));
    FixedHeader header; // of the type -1
    EXPECT_EQ(thrown_by([&] { file.createHeader(header); }),
              (Thrown{"XmlFile::createHeader", KH_ERR_NO_HEADER_TYPE}));
    read("<Other/>");
    EXPECT_EQ(thrown_by([&] { file.createHeader(0); }),
              (Thrown{"XmlFile::createHeader", KH_ERR_CREATE_NODE}));
}

TEST_F(XmlFileHeader, IsCreatedFromARecordAndReadBack)
{
    FixedHeader header = filled(1);
    const Members given = members_of(header);
    file.createHeader(header);
    EXPECT_EQ(members_of(header), given);
    Members expected = given;
    expected[1] = "_NOSCHEMA_";
    expected[10] = "";
    expected[15] = "-1";
    EXPECT_EQ(members_of(file.getFixedHeader()), expected);
    EXPECT_EQ(file.getPathValueAsString("/Orvanto_Header/Fixed_Header/File_Version"), "0007");
    EXPECT_EQ(thrown_by([&] { file.createHeader(header); }),
              (Thrown{"XmlFile::createHeader", KH_WARN_HEADER_EXISTS}));
}

TEST_F(XmlFileHeader, ReadsNoStandardsVersionWithTheOtherItems)
{
    FixedHeader header = filled(34);
    file.createHeader(header);
    EXPECT_EQ(thrown_by([&] { file.getFixedHeaderItem("KVSTD_Version"); }),
              (Thrown{"XmlFile::getFixedHeaderItem", KH_ERR_NO_VALUE}));
    file.setFixedHeaderItem("KVSTD_Version", "2.0");
    EXPECT_EQ(file.getFixedHeaderItem("KVSTD_Version"), "2.0");
    EXPECT_EQ(file.getFixedHeader().kvstdVersion, "");
    EXPECT_EQ(file.getFixedHeader().schema, "_NOSCHEMA_");
}

TEST_F(XmlFileHeader, KeepsTheSkeletonWhenAnItemCannotBeWritten)
{
    FixedHeader header = filled(0);
    header.mission = "\x01";
    EXPECT_EQ(thrown_by([&] { file.createHeader(header); }),
              (Thrown{"XmlFile::createHeader", KH_ERR_FORMAT}));
    EXPECT_EQ(file.getFixedHeaderItem("Notes"), "some notes");
    EXPECT_EQ(file.getFixedHeader().system, "");
}

TEST_F(XmlFileHeader, WritesAndReadsItems)
{
    file.createHeader(0);
    file.setFixedHeaderItem("File_Type", "abc");
    file.setFixedHeaderItem("File_Version", "12");
    EXPECT_EQ(file.getFixedHeaderItem("File_Type"), "       abc");
    EXPECT_EQ(file.getFixedHeaderItem("File_Version"), "12");
    EXPECT_EQ(file.getPathValueAsString("/Orvanto_File/Orvanto_Header/Fixed_Header/File_Version"), "0012");
    file.setFixedHeaderItem("File_Version", "-2147483648");
    EXPECT_EQ(file.getFixedHeaderItem("File_Version"), "-2147483648");
    file.setFixedHeaderItems("1", "2", "3", "4", "5", "6789012345", "8", "9", 10, "11", "12", "13", "14");
    EXPECT_EQ(
        members_of(file.getFixedHeader()),
        (Members{"1", "_NOSCHEMA_", "2", "3", "4", "5", "6789012345", std::string(22, ' ') + "8",
                 std::string(22, ' ') + "9", "10", "", "11", "12", "13", std::string(21, ' ') + "14", "-1"}));
}

TEST_F(XmlFileHeader, ReadsTheLongestVersion)
{
    read("<R><File_Version>-9223372036854775807</File_Version></R>");
    EXPECT_EQ(file.getFixedHeaderItem("File_Version"), "-9223372036854775807");
    EXPECT_EQ(file.getFixedHeader().fileVersion, -9223372036854775807);
}

TEST_F(XmlFileHeader, TellsWhyAnItemCannotBeWrittenOrRead)
{
    read("<R><Notes/><Mission>1<a/></Mission><Other>left alone</Other></R>");
    EXPECT_EQ(thrown_by([&] { file.getFixedHeaderItem("Notes"); }),
              (Thrown{"XmlFile::getFixedHeaderItem", KH_ERR_NO_VALUE}));
    EXPECT_EQ(thrown_by([&] { file.getFixedHeaderItem("Mission"); }),
              (Thrown{"XmlFile::getFixedHeaderItem", KH_ERR_READ_ITEM}));
    EXPECT_EQ(thrown_by([&] { file.getFixedHeaderItem("File_Version"); }),
              (Thrown{"XmlFile::getFixedHeaderItem", KH_ERR_READ_ITEM}));
    EXPECT_EQ(thrown_by([&] { file.setFixedHeaderItem("System", "text"); }),
              (Thrown{"XmlFile::setFixedHeaderItem", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(thrown_by([&] { file.setFixedHeaderItem("Notes", "\x01"); }),
              (Thrown{"XmlFile::setFixedHeaderItem", KH_ERR_FORMAT}));
    EXPECT_EQ(thrown_by([&] { file.setFixedHeaderItem("Notes", std::string(600, 'x')); }),
              (Thrown{"XmlFile::setFixedHeaderItem", KH_WARN_LENGTH}));
    EXPECT_EQ(thrown_by([&] { file.setFixedHeaderItems("", "", "", "", "", "", "", "", 1, "", "", "", ""); }),
              (Thrown{"XmlFile::setFixedHeaderItems", KH_ERR_FORMAT}));
}

// All items are written, the cut one with what fits.
TEST_F(XmlFileHeader, ThrowsTheWarningOfAnItemThatWasCut)
{
    FixedHeader header = filled(0);
    header.notes = std::string(600, 'x');
    EXPECT_EQ(thrown_by([&] { file.createHeader(header); }),
              (Thrown{"XmlFile::createHeader", KH_WARN_LENGTH}));
    EXPECT_EQ(thrown_by([&] {
                  file.setFixedHeaderItems("", "", header.notes, "", "", "", "", "", 1, "", "", "", "last");
              }),
              (Thrown{"XmlFile::setFixedHeaderItems", KH_WARN_LENGTH}));
    EXPECT_EQ(file.getFixedHeader().notes, std::string(510, 'x'));
    EXPECT_EQ(file.getFixedHeader().creationDate, "                   last");
}

TEST_F(XmlFileHeader, LeavesElementsOfOtherNamesAlone)
{
    read("<R><Other>left alone</Other></R>");
    EXPECT_EQ(thrown_by([&] { file.setFixedHeaderItem("Other", "text"); }), nothing);
    EXPECT_EQ(file.getPathValueAsString("/R/Other"), "left alone");
    EXPECT_EQ(file.getFixedHeaderItem("Other"), "");
}

TEST_F(XmlFileHeader, IsReadEmptyWhereThereIsNone)
{
    read("<R/>");
    EXPECT_EQ(members_of(file.getFixedHeader()), members_of(FixedHeader()));
}

class XmlFileName : public object::ObjectTest {};

TEST_F(XmlFileName, IsComposedAndSplit)
{
    const std::string name = file.createFileName(91, "ABCD", "TYPEA", "20010101_001_X1", 0);
    EXPECT_EQ(name.substr(4), "ABCD_TYPEA_20010101_001_X1.KLV");
    EXPECT_EQ(name[3], '_');
    std::string given = name;
    const FileNameItems items = file.getFileNameItems(given);
    EXPECT_EQ(given, name);
    EXPECT_EQ(items.satId, 91);
    EXPECT_EQ(items.fileClass, "ABCD");
    EXPECT_EQ(items.fileType, "TYPEA");
    EXPECT_EQ(items.instanceId, "20010101_001_X1.KLV");
}

TEST_F(XmlFileName, HasAnExtensionOfItsKind)
{
    EXPECT_EQ(file.createFileName(5, "", "T", "I", 0), "XXX_XXXX_T_I.KLV");
    EXPECT_EQ(file.createFileName(5, "C", "T", "I", 1), "XXX_C_T_I.HDR");
    EXPECT_EQ(file.createFileName(5, "C", "T", "I", 2), "XXX_C_T_I.DBL");
    EXPECT_EQ(file.createFileName(5, "C", "T", "I", 3), "XXX_C_T_I");
    EXPECT_EQ(file.createFileName(5, "C", "T", "I", 4), "XXX_C_T_I.EOF");
}

TEST_F(XmlFileName, IsNotComposedOfLongItems)
{
    const std::string forty_two(42, 'i');
    EXPECT_EQ(file.createFileName(5, "C", "T", forty_two, 3), "XXX_C_T_" + forty_two);
    EXPECT_EQ(thrown_by([&] { file.createFileName(5, "ABCDE", "T", "I", 0); }),
              (Thrown{"XmlFile::createFileName", KH_WARN_LENGTH}));
    EXPECT_EQ(thrown_by([&] { file.createFileName(5, "C", std::string(11, 't'), "I", 0); }),
              (Thrown{"XmlFile::createFileName", KH_WARN_LENGTH}));
    EXPECT_EQ(thrown_by([&] { file.createFileName(5, "C", "T", forty_two + "i", 0); }),
              (Thrown{"XmlFile::createFileName", KH_WARN_LENGTH}));
    EXPECT_EQ(thrown_by([&] { file.createFileName(5, "ABCD", std::string(10, 't'), forty_two, 0); }),
              (Thrown{"XmlFile::createFileName", KH_ERR_FILE_NAME_LENGTH}));
}

TEST_F(XmlFileName, IsSplitWithItemsOfAnyLength)
{
    std::string name =
        "Q_" + std::string(12, 'c') + "_" + std::string(20, 't') + "_1_2_" + std::string(24, 'i');
    ASSERT_EQ(name.size(), 64u);
    const FileNameItems items = file.getFileNameItems(name);
    EXPECT_EQ(items.satId, 0);
    EXPECT_EQ(items.fileClass, std::string(12, 'c'));
    EXPECT_EQ(items.fileType, std::string(20, 't'));
    EXPECT_EQ(items.instanceId, "1_2_" + std::string(24, 'i'));
    name += 'x';
    EXPECT_EQ(thrown_by([&] { file.getFileNameItems(name); }),
              (Thrown{"XmlFile::getFileNameItems", KH_ERR_FILE_NAME_LENGTH}));
}

TEST_F(XmlFileName, LeavesOutWhatItDoesNotHave)
{
    std::string name;
    const FileNameItems none = file.getFileNameItems(name);
    EXPECT_EQ(none.satId, 0);
    EXPECT_EQ(none.fileClass + none.fileType + none.instanceId, "");
    name = "QQQ_C_T_1_2";
    const FileNameItems some = file.getFileNameItems(name);
    EXPECT_EQ(some.fileClass, "C");
    EXPECT_EQ(some.fileType, "T");
    EXPECT_EQ(some.instanceId, "");
}

} // namespace
