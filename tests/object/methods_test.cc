// What every method has in common: the name that it throws under, the checks of the document, and texts with
// a zero byte.
#include "object/thrown.h"

#include <functional>

namespace {

using KALV::XmlFile;
using object::nothing;
using object::Thrown;
using object::thrown_by;

/// A method, called with one text in the place of each of its texts.
struct Method {
    const char* name;
    std::function<void(XmlFile&, const std::string&)> call;
    long without_root = KH_ERR_NO_ROOT; ///< the code for a document that has no root
};

void PrintTo(const Method& method, std::ostream* stream)
{
    *stream << method.name;
}

std::vector<long> integers;
std::vector<double> reals;
std::vector<std::string> texts;

/// The methods that need a document and take no text.
const Method plain_methods[] = {
    {"root", [](XmlFile& file, const std::string&) { file.root(); }},
    {"next", [](XmlFile& file, const std::string&) { file.next(); }},
    {"currentElementName", [](XmlFile& file, const std::string&) { file.currentElementName(); }},
    {"currentPathName", [](XmlFile& file, const std::string&) { file.currentPathName(); }},
    {"getFixedHeaderItem", [](XmlFile& file, const std::string&) { file.getFixedHeaderItem("Notes"); },
     KH_ERR_READ_ITEM},
    {"getFixedHeader", [](XmlFile& file, const std::string&) { file.getFixedHeader(); }},
};

/// The methods that need a document and take texts.
const Method text_methods[] = {
    {"write", [](XmlFile& file, const std::string& text) { file.write(text); }},
    {"toElement", [](XmlFile& file, const std::string& text) { file.toElement(text); }},
    {"toPath", [](XmlFile& file, const std::string& text) { file.toPath(text); }},
    {"getElementValueAsString",
     [](XmlFile& file, const std::string& text) { file.getElementValueAsString(text); }},
    {"getElementValueAsInt", [](XmlFile& file, const std::string& text) { file.getElementValueAsInt(text); }},
    {"getElementValueAsReal",
     [](XmlFile& file, const std::string& text) { file.getElementValueAsReal(text); }},
    {"getAttributeValueAsString",
     [](XmlFile& file, const std::string& text) { file.getAttributeValueAsString("a", text); }},
    {"getAttributeValueAsInt",
     [](XmlFile& file, const std::string& text) { file.getAttributeValueAsInt(text, "a"); }},
    {"getAttributeValueAsInt",
     [](XmlFile& file, const std::string& text) { file.getAttributeValueAsInt("a", text); }},
    {"getAttributeValueAsReal",
     [](XmlFile& file, const std::string& text) { file.getAttributeValueAsReal(text, text); }},
    {"getPathValueAsString", [](XmlFile& file, const std::string& text) { file.getPathValueAsString(text); }},
    {"getPathValueAsInt", [](XmlFile& file, const std::string& text) { file.getPathValueAsInt(text); }},
    {"getPathValueAsReal", [](XmlFile& file, const std::string& text) { file.getPathValueAsReal(text); }},
    {"getElementArrayAsInt",
     [](XmlFile& file, const std::string& text) { file.getElementArrayAsInt(text, integers); }},
    {"getElementArrayAsReal",
     [](XmlFile& file, const std::string& text) { file.getElementArrayAsReal(text, reals); }},
    {"getElementArrayAsString",
     [](XmlFile& file, const std::string& text) { file.getElementArrayAsString(text, texts); }},
    {"getPathArrayAsInt",
     [](XmlFile& file, const std::string& text) { file.getPathArrayAsInt(text, integers); }},
    {"getPathArrayAsString",
     [](XmlFile& file, const std::string& text) { file.getPathArrayAsString(text, texts); }},
    {"findValueInElement",
     [](XmlFile& file, const std::string& text) { file.findValueInElement("a", text); }},
    {"findValueInPath", [](XmlFile& file, const std::string& text) { file.findValueInPath(text, "a"); }},
    {"createRoot", [](XmlFile& file, const std::string& text) { file.createRoot(text); }, KH_OK},
    {"addChild", [](XmlFile& file, const std::string& text) { file.addChild("/R", text); }},
    {"addNext", [](XmlFile& file, const std::string& text) { file.addNext(text, "a"); }},
    {"addPrevious", [](XmlFile& file, const std::string& text) { file.addPrevious("/R/b", text); }},
    {"addAttribute", [](XmlFile& file, const std::string& text) { file.addAttribute("/R", text); }},
    {"removeNode", [](XmlFile& file, const std::string& text) { file.removeNode(text); }},
    {"copyNode", [](XmlFile& file, const std::string& text) { file.copyNode("/R", "file", text); }},
    {"setValue", [](XmlFile& file, const std::string& text) { file.setValue("/R", text); }},
    {"setValue", [](XmlFile& file, const std::string& text) { file.setValue("/R", 1, text); }},
    {"setValue", [](XmlFile& file, const std::string& text) { file.setValue(text, 1.0); }},
    {"setFixedHeaderItem",
     [](XmlFile& file, const std::string& text) { file.setFixedHeaderItem("Notes", text); },
     KH_ERR_NOT_FOUND},
    {"setFixedHeaderItems",
     [](XmlFile& file,
        const std::string&
            text) { file.setFixedHeaderItems("", "", "", "", "", "", "", "", 1, "", "", "", text); },
     KH_ERR_FORMAT},
};

std::vector<Method> all_methods()
{
    std::vector<Method> methods(std::begin(plain_methods), std::end(plain_methods));
    methods.insert(methods.end(), std::begin(text_methods), std::end(text_methods));
    return methods;
}

std::string full_name(const Method& method)
{
    return std::string("XmlFile::") + method.name;
}

class MethodOnADocument : public object::ObjectTest, public testing::WithParamInterface<Method> {};

TEST_P(MethodOnADocument, ThrowsOnAnObjectWithoutOne)
{
    EXPECT_EQ(thrown_by([&] { GetParam().call(file, "a"); }),
              (Thrown{full_name(GetParam()), KH_ERR_DESCRIPTOR}));
}

TEST_P(MethodOnADocument, ThrowsOnADocumentWithoutRoot)
{
    file.create();
    const long fd = file.getId();
    const long code = GetParam().without_root;
    EXPECT_EQ(thrown_by([&] { GetParam().call(file, "a"); }),
              code == KH_OK ? nothing : (Thrown{full_name(GetParam()), code}));
    if (file.getId() != fd) { // a failed write lets go of it
        long released = fd;
        long status = 0;
        kh_tree_cleanup_parser(&released, &status);
    }
}

std::string test_name(const testing::TestParamInfo<Method>& method)
{
    return method.param.name + std::to_string(method.index);
}

INSTANTIATE_TEST_SUITE_P(Every, MethodOnADocument, testing::ValuesIn(all_methods()), test_name);

class MethodWithTexts : public object::ObjectTest, public testing::WithParamInterface<Method> {};

TEST_P(MethodWithTexts, RefusesAZeroByteRatherThanCutTheText)
{
    const std::string content = "<?xml version=\"1.0\"?>\n<R>\n  <b>1</b>\n  <b>2</b>\n</R>\n";
    read(content);
    const std::string cut("/R\0/b", 5);
    const long fd = file.getId();
    const Thrown refused{full_name(GetParam()), KH_ERR_ARGUMENT};
    EXPECT_EQ(support::report_of([&] { EXPECT_EQ(thrown_by([&] { GetParam().call(file, cut); }), refused); }),
              "KH: Argument passed is NULL or out of range\n\tFunction: " + full_name(GetParam()) + "\n");
    long document = fd;
    long status = 0;
    kh_tree_write(&document, folder.path("unchanged.xml").c_str(), &status);
    EXPECT_EQ(support::content_of(folder.path("unchanged.xml")), content);
    if (file.getId() != fd)
        kh_tree_cleanup_parser(&document, &status);
}

INSTANTIATE_TEST_SUITE_P(Every, MethodWithTexts, testing::ValuesIn(text_methods), test_name);

/// The methods that walk a path; each is called with one that meets the root on its way to "/R/b".
const Method path_methods[] = {
    {"toPath", [](XmlFile& file, const std::string& path) { file.toPath(path); }},
    {"getPathValueAsString", [](XmlFile& file, const std::string& path) { file.getPathValueAsString(path); }},
    {"getPathArrayAsString",
     [](XmlFile& file, const std::string& path) { file.getPathArrayAsString(path + "[*]", texts); }},
    {"findValueInPath",
     [](XmlFile& file, const std::string& path) { file.findValueInPath(path + "[*]", "1"); }},
    {"addChild", [](XmlFile& file, const std::string& path) { file.addChild(path, "a"); }},
    {"addChild", [](XmlFile& file, const std::string& path) { file.addChild(path, "a", "value"); }},
    {"addAttribute", [](XmlFile& file, const std::string& path) { file.addAttribute(path, "a"); }},
    {"removeNode", [](XmlFile& file, const std::string& path) { file.removeNode(path); }},
    {"setValue", [](XmlFile& file, const std::string& path) { file.setValue(path, "text"); }},
    {"setValue", [](XmlFile& file, const std::string& path) { file.setValue(path, 1); }},
    {"setValue", [](XmlFile& file, const std::string& path) { file.setValue(path, 1.0); }},
};

class MethodOnAPath : public object::ObjectTest, public testing::WithParamInterface<Method> {};

TEST_P(MethodOnAPath, ThrowsTheWarningThatItMetTheRoot)
{
    read("<R><b>1</b></R>");
    file.toPath("/R/b");
    EXPECT_EQ(thrown_by([&] { GetParam().call(file, "../../b"); }),
              (Thrown{full_name(GetParam()), KH_WARN_ROOT_REACHED}));
}

INSTANTIATE_TEST_SUITE_P(Every, MethodOnAPath, testing::ValuesIn(path_methods), test_name);

// What follows the walk starts with a clean status here, which callers rely on.
TEST(SiblingsOfAPath, AreAddedWithoutTheWarningThatItMetTheRoot)
{
    const support::TemporaryFolder folder;
    XmlFile file(folder.file("document.xml", "<R><b/></R>"));
    EXPECT_EQ(thrown_by([&] { file.addNext("../b", "c"); }), nothing);
    file.root();
    EXPECT_EQ(thrown_by([&] { file.addPrevious("../b", "a"); }), nothing);
    EXPECT_EQ(file.currentPathName(), "/R/a");
}

TEST(NumbersOnAPath, AreReadWithoutTheWarningThatItMetTheRoot)
{
    const support::TemporaryFolder folder;
    XmlFile file(folder.file("document.xml", "<R><b>1</b><b>2</b></R>"));
    EXPECT_EQ(file.getPathValueAsInt("../b[2]"), 2);
    file.root();
    EXPECT_EQ(file.getPathValueAsReal("../b[2]"), 2.0);
    std::vector<long> read_integers;
    file.root();
    file.getPathArrayAsInt("../b[*]", read_integers);
    EXPECT_EQ(read_integers, (std::vector<long>{1, 2}));
    std::vector<double> read_reals;
    file.root();
    file.getPathArrayAsReal("../b[*]", read_reals);
    EXPECT_EQ(read_reals, (std::vector<double>{1.0, 2.0}));
}

TEST(OtherMethodsWithTexts, RefuseAZeroByte)
{
    const object::SlotCount slots;
    const std::string zero(1, '\0');
    std::string name = zero;
    XmlFile file;
    EXPECT_EQ(thrown_by([&] { file.read(zero); }), (Thrown{"XmlFile::read", KH_ERR_ARGUMENT}));
    EXPECT_EQ(thrown_by([&] { file.getFixedHeaderItem(zero); }),
              (Thrown{"XmlFile::getFixedHeaderItem", KH_ERR_ARGUMENT}));
    EXPECT_EQ(thrown_by([&] { file.createFileName(41, "A", zero, "C", 0); }),
              (Thrown{"XmlFile::createFileName", KH_ERR_ARGUMENT}));
    EXPECT_EQ(thrown_by([&] { file.getFileNameItems(name); }),
              (Thrown{"XmlFile::getFileNameItems", KH_ERR_ARGUMENT}));
}

TEST(MethodsOfTwoSteps, ThrowTheWarningOfTheStepThatMetIt)
{
    const support::TemporaryFolder folder;
    XmlFile file(folder.file("document.xml", "<R><b count=\"0\"/></R>"));
    const std::string long_text(600, 'x');
    const Thrown cut{"XmlFile::setValue", KH_WARN_LENGTH};
    EXPECT_EQ(thrown_by([&] { file.getStringValuesFromList("../b", "a", texts); }),
              (Thrown{"XmlFile::toPath", KH_WARN_ROOT_REACHED}));
    EXPECT_EQ(thrown_by([&] { file.addChild("/R", "c", long_text); }), cut);
    EXPECT_EQ(thrown_by([&] { file.addNext("/R/c", "d", long_text); }), cut);
    EXPECT_EQ(thrown_by([&] { file.addPrevious("/R/c", "e", long_text); }), cut);
    EXPECT_EQ(thrown_by([&] { file.addAttribute("/R/c", "f", long_text); }), cut);
    for (const char* path : {"/R/c", "/R/d", "/R/e", "/R/c/@f"})
        EXPECT_EQ(file.getPathValueAsString(path), std::string(510, 'x')) << path;
}

TEST(MethodsOfTwoSteps, ThrowUnderTheNameOfTheStepThatFailed)
{
    XmlFile file;
    KALV::FixedHeader header;
    header.headerType = 0;
    EXPECT_EQ(thrown_by([&] { file.getStringValuesFromList("/R", "a", texts); }),
              (Thrown{"XmlFile::toPath", KH_ERR_DESCRIPTOR}));
    EXPECT_EQ(thrown_by([&] { file.addChild("/R", "a", "text"); }),
              (Thrown{"XmlFile::addChild", KH_ERR_DESCRIPTOR}));
    EXPECT_EQ(thrown_by([&] { file.addNext("/R", "a", 1); }),
              (Thrown{"XmlFile::addNext", KH_ERR_DESCRIPTOR}));
    EXPECT_EQ(thrown_by([&] { file.addPrevious("/R", "a", 1.0); }),
              (Thrown{"XmlFile::addPrevious", KH_ERR_DESCRIPTOR}));
    EXPECT_EQ(thrown_by([&] { file.addAttribute("/R", "a", "text"); }),
              (Thrown{"XmlFile::addAttribute", KH_ERR_DESCRIPTOR}));
    EXPECT_EQ(thrown_by([&] { file.createHeader(0); }), (Thrown{"XmlFile::createHeader", KH_ERR_DESCRIPTOR}));
    EXPECT_EQ(thrown_by([&] { file.createHeader(header); }),
              (Thrown{"XmlFile::createHeader", KH_ERR_DESCRIPTOR}));
}

TEST(ReleasedDocument, IsNoticed)
{
    XmlFile file;
    file.create();
    long fd = file.getId();
    long status = 0;
    kh_tree_cleanup_parser(&fd, &status);
    EXPECT_EQ(thrown_by([&] { file.root(); }), (Thrown{"XmlFile::root", KH_ERR_NO_DOCUMENT}));
    support::written_to_stdout([&] { EXPECT_EQ(file.nextSibling(), nullptr); });
}

} // namespace
