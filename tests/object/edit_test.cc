// Changing a document through an object: nodes, values of any type, and the formats that print them.
#include "object/thrown.h"

#include <limits>
#include <type_traits>
#include <utility>

namespace {

using KALV::XmlFile;
using object::nothing;
using object::Thrown;
using object::thrown_by;

// Calls without a value return the status, those with one return nothing.
template <class... Arguments>
using AddChild = decltype(std::declval<XmlFile&>().addChild("", "", std::declval<Arguments>()...));
template <class... Arguments>
using AddAttribute = decltype(std::declval<XmlFile&>().addAttribute("", "", std::declval<Arguments>()...));
static_assert(std::is_same_v<AddChild<>, long> && std::is_same_v<AddAttribute<>, long>);
static_assert(std::is_void_v<AddChild<std::string>> && std::is_void_v<AddChild<int>>);
static_assert(std::is_void_v<AddAttribute<const char*, std::string>> && std::is_void_v<AddAttribute<float>>);

class XmlFileEdit : public object::ObjectTest {};

TEST_F(XmlFileEdit, BuildsADocument)
{
    file.create();
    EXPECT_EQ(file.createRoot("R"), 0);
    EXPECT_EQ(file.addChild(".", "b"), 0);
    EXPECT_EQ(file.currentPathName(), "/R/b");
    EXPECT_EQ(file.addNext(".", "d"), 0);
    EXPECT_EQ(file.addPrevious("/R/b", "a"), 0);
    EXPECT_EQ(file.addNext("/R/b", "c"), 0);
    EXPECT_EQ(file.addChild(".", "deep"), 0);
    EXPECT_EQ(file.addAttribute("/R/d", "n"), 0);
    EXPECT_EQ(written(), "<?xml version=\"1.0\"?>\n"
                         "<R>\n"
                         "  <a/>\n"
                         "  <b/>\n"
                         "  <c>\n"
                         "    <deep/>\n"
                         "  </c>\n"
                         "  <d n=\"\"/>\n"
                         "</R>\n");
}

TEST_F(XmlFileEdit, BuildsADocumentWithValues)
{
    file.create();
    file.createRoot("R");
    file.addChild(".", "text", "some text");
    file.addNext(".", "integer", 42);
    file.addNext(".", "real", 2.0);
    file.addPrevious("/R/text", "first", std::string("1st"), "<%s>");
    file.addAttribute(".", "text", "t");
    file.addAttribute(".", "integer", 7, "%03ld");
    file.addAttribute(".", "real", 0.5, "%.2f");
    EXPECT_EQ(file.currentPathName(), "/R/first");
    EXPECT_EQ(written(), "<?xml version=\"1.0\"?>\n"
                         "<R>\n"
                         "  <first text=\"t\" integer=\"007\" real=\"0.50\">&lt;1st&gt;</first>\n"
                         "  <text>some text</text>\n"
                         "  <integer>42</integer>\n"
                         "  <real>2.000000</real>\n"
                         "</R>\n");
}

TEST_F(XmlFileEdit, TellsWhyANodeCannotBeAdded)
{
    read("<R><a n=\"1\"/></R>");
    EXPECT_EQ(thrown_by([&] { file.createRoot("R"); }), (Thrown{"XmlFile::createRoot", KH_ERR_ROOT_EXISTS}));
    EXPECT_EQ(thrown_by([&] { file.addChild("/R/none", "b"); }),
              (Thrown{"XmlFile::addChild", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(thrown_by([&] { file.addChild("/R", "a b"); }), (Thrown{"XmlFile::addChild", KH_ERR_ARGUMENT}));
    EXPECT_EQ(thrown_by([&] { file.addChild("/R", ""); }), (Thrown{"XmlFile::addChild", KH_ERR_ARGUMENT}));
    EXPECT_EQ(thrown_by([&] { file.addNext("/R", "b"); }), (Thrown{"XmlFile::addNext", KH_ERR_ADD_SIBLING}));
    EXPECT_EQ(thrown_by([&] { file.addPrevious("/R", "b"); }),
              (Thrown{"XmlFile::addPrevious", KH_ERR_ADD_SIBLING}));
    EXPECT_EQ(thrown_by([&] { file.addAttribute("/R/a", "<"); }),
              (Thrown{"XmlFile::addAttribute", KH_ERR_ARGUMENT}));
    EXPECT_EQ(written(), "<?xml version=\"1.0\"?>\n<R><a n=\"1\"/>\n</R>\n");
}

TEST_F(XmlFileEdit, RemovesNodesAndAttributes)
{
    read("<R>\n  <a n=\"1\" m=\"2\"/>\n  <b/>\n</R>");
    file.removeNode("/R/a/@n");
    file.removeNode("/R/b");
    EXPECT_EQ(file.currentPathName(), "/R");
    EXPECT_EQ(thrown_by([&] { file.removeNode("/R/b"); }), (Thrown{"XmlFile::removeNode", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(thrown_by([&] { file.removeNode("/R/a/@n"); }),
              (Thrown{"XmlFile::removeNode", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(written(), "<?xml version=\"1.0\"?>\n<R>\n  <a m=\"2\"/>\n</R>\n");
}

TEST_F(XmlFileEdit, CopiesANodeOfAFile)
{
    const std::string source = folder.file("source.xml", "<S><x>1<y/></x></S>");
    read("<R><a/></R>");
    EXPECT_EQ(file.copyNode("/R/a", source, "/S/x"), 0);
    EXPECT_EQ(file.currentPathName(), "/R/a");
    EXPECT_NE(written().find("<x>1<y/>"), std::string::npos);
    EXPECT_EQ(thrown_by([&] { file.copyNode("/R/b", source, "/S/x"); }),
              (Thrown{"XmlFile::copyNode", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(thrown_by([&] { file.copyNode("/R/a", source, "/S/z"); }),
              (Thrown{"XmlFile::copyNode", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(thrown_by([&] { file.copyNode("/R/a", folder.path("missing"), "/S"); }),
              (Thrown{"XmlFile::copyNode", KH_ERR_PARSE}));
}

// An object gives its descriptor away when a write fails, but never while it only adds.
TEST_F(XmlFileEdit, LeavesTheNodeThatCouldNotGetItsValue)
{
    read("<R/>");
    EXPECT_EQ(thrown_by([&] { file.addChild("/R", "a", 1, "%s"); }),
              (Thrown{"XmlFile::setValue", KH_ERR_FORMAT}));
    EXPECT_EQ(thrown_by([&] { file.addNext("/R/a", "b", "\x01"); }),
              (Thrown{"XmlFile::setValue", KH_ERR_ARGUMENT}));
    EXPECT_EQ(thrown_by([&] { file.addPrevious("/R/a", "c", 1.0, "%d"); }),
              (Thrown{"XmlFile::setValue", KH_ERR_FORMAT}));
    EXPECT_EQ(thrown_by([&] { file.addAttribute("/R", "n", "text", "%d"); }),
              (Thrown{"XmlFile::setValue", KH_ERR_FORMAT}));
    EXPECT_EQ(written(), "<?xml version=\"1.0\"?>\n<R n=\"\">\n  <c/>\n  <a/>\n  <b/>\n</R>\n");
}

TEST_F(XmlFileEdit, SetsNoValueWhereTheNodeCouldNotBeAdded)
{
    read("<R><a>1</a></R>");
    file.toPath("/R/a");
    EXPECT_EQ(thrown_by([&] { file.addChild("/R/none", "b", "2"); }),
              (Thrown{"XmlFile::addChild", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(thrown_by([&] { file.addAttribute("/R/a", "not a name", "2"); }),
              (Thrown{"XmlFile::addAttribute", KH_ERR_ARGUMENT}));
    EXPECT_EQ(file.getPathValueAsString("/R/a"), "1");
}

// The attribute is there already; its value is set all the same.
TEST_F(XmlFileEdit, SetsTheValueOfAnAttributeThatTheElementHas)
{
    read("<R n=\"1\" xml:n=\"2\"/>");
    file.addAttribute("/R", "n", 3);
    file.addAttribute("/R", "xml:n", 4);
    EXPECT_EQ(written(), "<?xml version=\"1.0\"?>\n<R n=\"3\" xml:n=\"4\"/>\n");
}

/// The text that a value of any type is set as.
class XmlFileSetValue : public object::ObjectTest {
protected:
    XmlFileSetValue() { read("<R><a n=\"\">old</a></R>"); }

    template <class... Value>
    std::string set(const Value&... value)
    {
        file.setValue("/R/a", value...);
        EXPECT_EQ(file.currentPathName(), "/R/a");
        return file.getPathValueAsString("/R/a");
    }
};

TEST_F(XmlFileSetValue, TakesTexts)
{
    const char* const pointer = "pointer";
    char array[] = "array";
    EXPECT_EQ(set(std::string("text")), "text");
    EXPECT_EQ(set("literal"), "literal");
    EXPECT_EQ(set(pointer), "pointer");
    EXPECT_EQ(set(array), "array");
    EXPECT_EQ(set("100%d"), "100%d");
    EXPECT_EQ(set("text", "[%6s]"), "[  text]");
}

TEST_F(XmlFileSetValue, TakesAnyIntegerType)
{
    EXPECT_EQ(set(true), "1");
    EXPECT_EQ(set('A'), "65");
    EXPECT_EQ(set(static_cast<signed char>(-1)), "-1");
    EXPECT_EQ(set(short{-2}), "-2");
    EXPECT_EQ(set(-3), "-3");
    EXPECT_EQ(set(4u), "4");
    EXPECT_EQ(set(-5L), "-5");
    EXPECT_EQ(set(6UL), "6");
    EXPECT_EQ(set(-7LL), "-7");
    EXPECT_EQ(set(8ULL), "8");
    EXPECT_EQ(set(std::size_t{9}), "9");
    EXPECT_EQ(set(0), "0");
    EXPECT_EQ(set(std::numeric_limits<unsigned long>::max(), "%lu"), "18446744073709551615");
}

// Numbers of the C interface are enumerators.
TEST_F(XmlFileSetValue, TakesEnumerators)
{
    enum { third = 3 };
    EXPECT_EQ(set(KH_EXTENSION_EOF), "4");
    EXPECT_EQ(set(third, "%03ld"), "003");
    file.addAttribute("/R/a", "type", KH_EXTENSION_HDR);
    EXPECT_EQ(file.getPathValueAsInt("/R/a/@type"), 1);
}

TEST_F(XmlFileSetValue, TakesAnyFloatingType)
{
    EXPECT_EQ(set(2.0), "2.000000");
    EXPECT_EQ(set(-0.5f), "-0.500000");
    EXPECT_EQ(set(1.5L), "1.500000");
    EXPECT_EQ(set(1e10), "10000000000.000000");
    EXPECT_EQ(set(2.0, "%.0f"), "2");
    EXPECT_EQ(set(0.1, "%.17g"), "0.10000000000000001");
}

// "%d" is the default for a long, and prints its low 32 bits; callers give "%ld" for more.
TEST_F(XmlFileSetValue, PrintsIntegersWithTheDefaultThatCallersKnow)
{
    constexpr long large = (1L << 32) + 5;
    EXPECT_EQ(set(large), "5");
    EXPECT_EQ(set(large, "%ld"), "4294967301");
    EXPECT_EQ(set(large, ""), "5");
    EXPECT_EQ(set(42, "%6ld"), "    42");
    EXPECT_EQ(set(255, "0x%lx"), "0xff");
}

TEST_F(XmlFileSetValue, SetsAttributes)
{
    file.setValue("/R/a/@n", 1);
    file.setValue("./@new", 2.5, "%g");
    EXPECT_EQ(file.currentPathName(), "/R/a");
    EXPECT_EQ(file.getPathValueAsString("/R/a/@n"), "1");
    EXPECT_EQ(file.getPathValueAsString("/R/a/@new"), "2.5");
}

TEST_F(XmlFileSetValue, TellsWhyAValueCannotBeSet)
{
    EXPECT_EQ(thrown_by([&] { set("x", "%d"); }), (Thrown{"XmlFile::setValue", KH_ERR_FORMAT}));
    EXPECT_EQ(thrown_by([&] { set(1, "%f"); }), (Thrown{"XmlFile::setValue", KH_ERR_FORMAT}));
    EXPECT_EQ(thrown_by([&] { set(1.0, "%ld"); }), (Thrown{"XmlFile::setValue", KH_ERR_FORMAT}));
    EXPECT_EQ(thrown_by([&] { set("\xff"); }), (Thrown{"XmlFile::setValue", KH_ERR_ARGUMENT}));
    EXPECT_EQ(thrown_by([&] { file.setValue("/R/none", 1); }),
              (Thrown{"XmlFile::setValue", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(file.getPathValueAsString("/R/a"), "old");
}

TEST_F(XmlFileSetValue, ThrowsTheWarningOfATextThatWasCut)
{
    EXPECT_EQ(thrown_by([&] { set(std::string(600, 'x')); }), (Thrown{"XmlFile::setValue", KH_WARN_LENGTH}));
    EXPECT_EQ(file.getPathValueAsString("/R/a"), std::string(510, 'x'));
    EXPECT_EQ(thrown_by([&] { set(std::string(511, 'y')); }), nothing);
    EXPECT_EQ(file.getPathValueAsString("/R/a"), std::string(510, 'y'));
}

} // namespace
