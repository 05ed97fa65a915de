// Reading values through an object: single ones, arrays, lists and searches.
#include "object/thrown.h"

#include <limits>

namespace {

using object::nothing;
using object::Thrown;
using object::thrown_by;
using Integers = std::vector<long>;
using Reals = std::vector<double>;
using Texts = std::vector<std::string>;

class XmlFileValue : public object::ObjectTest {};

constexpr char values[] =
    "<R><Text> a &amp; b </Text><Plain>some text</Plain><Int>42</Int><Int>-7</Int><Real>2.5</Real><Empty/>"
    "<Mixed>1<sub/></Mixed><Huge>99999999999999999999</Huge><Attributes text=\"a &amp; b\" int=\"12\" "
    "real=\"-1e3\" none=\"\"/></R>";

TEST_F(XmlFileValue, ReadsElements)
{
    read(values);
    EXPECT_EQ(file.getElementValueAsString("Plain"), "some text");
    EXPECT_EQ(file.getElementValueAsInt("Int"), 42);
    EXPECT_EQ(file.getElementValueAsInt("Int"), -7);
    EXPECT_EQ(file.getElementValueAsReal("Real"), 2.5);
    file.root();
    EXPECT_EQ(file.getElementValueAsString("Int"), "42");
    EXPECT_EQ(file.getElementValueAsReal("Int"), -7.0);
    EXPECT_EQ(file.currentPathName(), "/R/Int[2]");
}

// An empty name goes on to the next element of the tag that was asked for before.
TEST_F(XmlFileValue, GoesOnWithTheSameElementForAnEmptyName)
{
    read(values);
    EXPECT_EQ(thrown_by([&] { file.getElementValueAsString(""); }),
              (Thrown{"XmlFile::getElementValueAsString", KH_ERR_NO_REQUEST}));
    EXPECT_EQ(file.getElementValueAsString("Int"), "42");
    EXPECT_EQ(file.getElementValueAsInt(""), -7);
    EXPECT_EQ(thrown_by([&] { file.getElementValueAsReal(""); }),
              (Thrown{"XmlFile::getElementValueAsReal", KH_ERR_NOT_FOUND}));
}

TEST_F(XmlFileValue, TellsWhyAnElementCannotBeRead)
{
    read(values);
    const auto text = [&](const char* name) {
        file.root();
        return thrown_by([&] { file.getElementValueAsString(name); });
    };
    const auto integer = [&](const char* name) {
        file.root();
        return thrown_by([&] { file.getElementValueAsInt(name); });
    };
    const auto real = [&](const char* name) {
        file.root();
        return thrown_by([&] { file.getElementValueAsReal(name); });
    };
    EXPECT_EQ(text("None"), (Thrown{"XmlFile::getElementValueAsString", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(text("Empty"), (Thrown{"XmlFile::getElementValueAsString", KH_ERR_NO_VALUE}));
    EXPECT_EQ(text("Mixed"), (Thrown{"XmlFile::getElementValueAsString", KH_ERR_NOT_TERMINAL}));
    EXPECT_EQ(integer("None"), (Thrown{"XmlFile::getElementValueAsInt", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(integer("Empty"), (Thrown{"XmlFile::getElementValueAsInt", KH_ERR_NO_VALUE}));
    EXPECT_EQ(integer("Plain"), (Thrown{"XmlFile::getElementValueAsInt", KH_ERR_NOT_INTEGER}));
    EXPECT_EQ(integer("Huge"), (Thrown{"XmlFile::getElementValueAsInt", KH_ERR_RANGE}));
    EXPECT_EQ(real("Empty"), (Thrown{"XmlFile::getElementValueAsReal", KH_ERR_NO_VALUE}));
    EXPECT_EQ(real("Plain"), (Thrown{"XmlFile::getElementValueAsReal", KH_ERR_NOT_REAL}));
}

TEST_F(XmlFileValue, ReadsAttributes)
{
    read(values);
    EXPECT_EQ(file.getAttributeValueAsString("Attributes", "text"), "a & b");
    EXPECT_EQ(file.getAttributeValueAsInt("Attributes", "int"), 12);
    EXPECT_EQ(file.getAttributeValueAsReal("Attributes", "real"), -1000.0);
    EXPECT_EQ(file.getAttributeValueAsString("Attributes", "none"), "");
    EXPECT_EQ(file.currentPathName(), "/R/Attributes");
}

// An empty element name takes the element under the cursor if it carries the tag asked for before.
TEST_F(XmlFileValue, StaysOnTheElementForAnEmptyNameOfAnAttributeRead)
{
    read("<R><a n=\"1\">x</a><b/><a n=\"2\">y</a></R>");
    file.getElementValueAsString("a");
    EXPECT_EQ(file.getAttributeValueAsInt("", "n"), 1);
    EXPECT_EQ(file.getAttributeValueAsString("", "n"), "1");
    file.next();
    EXPECT_EQ(file.getAttributeValueAsReal("", "n"), 2.0);
}

TEST_F(XmlFileValue, TellsWhyAnAttributeCannotBeRead)
{
    read(values);
    EXPECT_EQ(thrown_by([&] { file.getAttributeValueAsString("", "text"); }),
              (Thrown{"XmlFile::getAttributeValueAsString", KH_ERR_NO_REQUEST}));
    EXPECT_EQ(thrown_by([&] { file.getAttributeValueAsString("None", "text"); }),
              (Thrown{"XmlFile::getAttributeValueAsString", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(thrown_by([&] { file.getAttributeValueAsString("Attributes", "x"); }),
              (Thrown{"XmlFile::getAttributeValueAsString", KH_ERR_NO_ATTRIBUTE}));
    EXPECT_EQ(thrown_by([&] { file.getAttributeValueAsInt("Attributes", ""); }),
              (Thrown{"XmlFile::getAttributeValueAsInt", KH_ERR_ARGUMENT}));
    EXPECT_EQ(thrown_by([&] { file.getAttributeValueAsInt("Attributes", "text"); }),
              (Thrown{"XmlFile::getAttributeValueAsInt", KH_ERR_NOT_INTEGER}));
    EXPECT_EQ(thrown_by([&] { file.getAttributeValueAsReal("Attributes", "text"); }),
              (Thrown{"XmlFile::getAttributeValueAsReal", KH_ERR_NOT_REAL}));
}

TEST_F(XmlFileValue, ReadsAlongPaths)
{
    read(values);
    EXPECT_EQ(file.getPathValueAsString("/R/Plain"), "some text");
    EXPECT_EQ(file.getPathValueAsInt("/R/Int[2]"), -7);
    EXPECT_EQ(file.getPathValueAsReal("/R/Real"), 2.5);
    EXPECT_EQ(file.getPathValueAsInt("/R/Attributes/@int"), 12);
    EXPECT_EQ(file.getPathValueAsReal("@real"), -1000.0);
    EXPECT_EQ(thrown_by([&] { file.getPathValueAsString("/R/None"); }),
              (Thrown{"XmlFile::getPathValueAsString", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(thrown_by([&] { file.getPathValueAsString("/R/Empty"); }),
              (Thrown{"XmlFile::getPathValueAsString", KH_ERR_NO_VALUE}));
    EXPECT_EQ(thrown_by([&] { file.getPathValueAsString(""); }),
              (Thrown{"XmlFile::getPathValueAsString", KH_ERR_ARGUMENT}));
    EXPECT_EQ(thrown_by([&] { file.getPathValueAsInt("/R/Plain"); }),
              (Thrown{"XmlFile::getPathValueAsInt", KH_ERR_NOT_INTEGER}));
    EXPECT_EQ(thrown_by([&] { file.getPathValueAsReal("/R/Plain"); }),
              (Thrown{"XmlFile::getPathValueAsReal", KH_ERR_NOT_REAL}));
}

TEST_F(XmlFileValue, ThrowsTheWarningOfAPathAboveTheRoot)
{
    read("<R>1</R>");
    EXPECT_EQ(thrown_by([&] { file.getPathValueAsString(".."); }),
              (Thrown{"XmlFile::getPathValueAsString", KH_WARN_ROOT_REACHED}));
}

// Names once were copied into 512 characters, paths of arrays into 256.
TEST_F(XmlFileValue, TakesNamesAndPathsOfAnyLength)
{
    const std::string name(2000, 'n');
    read("<R><" + name + " " + name + "=\"3\">1</" + name + "><" + name + ">2</" + name + "></R>");
    EXPECT_EQ(file.getElementValueAsString(name), "1");
    EXPECT_EQ(file.getAttributeValueAsInt(name, name), 3);
    EXPECT_EQ(file.getAttributeValueAsReal(name, name), 3.0);
    EXPECT_EQ(file.getAttributeValueAsString(name, name), "3");
    EXPECT_EQ(file.getElementValueAsInt(name), 2);
    file.root();
    EXPECT_EQ(file.getElementValueAsReal(name), 1.0);
    Texts texts;
    file.getPathArrayAsString("/R/" + name + "[*]", texts);
    EXPECT_EQ(texts, (Texts{"1", "2"}));
    Integers integers;
    file.getElementArrayAsInt(name, integers);
    EXPECT_EQ(integers, (Integers{1, 2}));
    EXPECT_EQ(file.findValueInPath("/R/" + name + "[*]", "2"), "/R/" + name + "[2]");
    file.root();
    EXPECT_EQ(file.findValueInElement(name, "2"), "/R/" + name + "[2]");
}

class XmlFileArray : public object::ObjectTest {
protected:
    Integers integers = {5};
    Reals reals = {5.5};
    Texts texts = {"five"};

    void expect_unchanged() const
    {
        EXPECT_EQ(integers, Integers{5});
        EXPECT_EQ(reals, Reals{5.5});
        EXPECT_EQ(texts, Texts{"five"});
    }
};

TEST_F(XmlFileArray, IsAppended)
{
    read("<R><a>1</a><b><a>2</a></b><a>3</a></R>");
    file.getElementArrayAsInt("a", integers);
    file.getElementArrayAsReal("a", reals);
    file.getElementArrayAsString("a", texts);
    EXPECT_EQ(integers, (Integers{5, 1, 2, 3}));
    EXPECT_EQ(reals, (Reals{5.5, 1, 2, 3}));
    EXPECT_EQ(texts, (Texts{"five", "1", "2", "3"}));
    file.getPathArrayAsInt("/R/a[*]", integers);
    file.getPathArrayAsReal("/R/a[*]", reals);
    file.getPathArrayAsString("/R/a[*]", texts);
    EXPECT_EQ(integers, (Integers{5, 1, 2, 3, 1, 3}));
    EXPECT_EQ(reals, (Reals{5.5, 1, 2, 3, 1, 3}));
    EXPECT_EQ(texts, (Texts{"five", "1", "2", "3", "1", "3"}));
}

TEST_F(XmlFileArray, MayBeLong)
{
    std::string content;
    Integers expected = integers;
    for (long i = 0; i < 1000; ++i) {
        content += "<a n=\"" + std::to_string(i) + "\">" + std::string(100, 'x') + "</a>";
        expected.push_back(i);
    }
    read("<R>" + content + "</R>");
    file.getPathArrayAsInt("/R/a[*]/@n", integers);
    EXPECT_EQ(integers, expected);
    file.getElementArrayAsString("a", texts);
    EXPECT_EQ(texts.size(), 1001u);
    EXPECT_EQ(texts.back(), std::string(100, 'x'));
}

TEST_F(XmlFileArray, IsLeftAloneByAFailure)
{
    read("<R><a>1</a><a>x</a><b>1</b><b>2</b><b/></R>");
    EXPECT_EQ(thrown_by([&] { file.getElementArrayAsInt("none", integers); }),
              (Thrown{"XmlFile::getElementArrayAsInt", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(thrown_by([&] { file.getElementArrayAsInt("a", integers); }),
              (Thrown{"XmlFile::getElementArrayAsInt", KH_ERR_NOT_INTEGER}));
    EXPECT_EQ(thrown_by([&] { file.getElementArrayAsReal("a", reals); }),
              (Thrown{"XmlFile::getElementArrayAsReal", KH_ERR_NOT_REAL}));
    EXPECT_EQ(thrown_by([&] { file.getElementArrayAsString("b", texts); }),
              (Thrown{"XmlFile::getElementArrayAsString", KH_ERR_NO_VALUE}));
    EXPECT_EQ(thrown_by([&] { file.getElementArrayAsString("", texts); }),
              (Thrown{"XmlFile::getElementArrayAsString", KH_ERR_NO_REQUEST}));
    EXPECT_EQ(thrown_by([&] { file.getPathArrayAsInt("/R/a[*]", integers); }),
              (Thrown{"XmlFile::getPathArrayAsInt", KH_ERR_NOT_INTEGER}));
    EXPECT_EQ(thrown_by([&] { file.getPathArrayAsInt("/R/a", integers); }),
              (Thrown{"XmlFile::getPathArrayAsInt", KH_ERR_ARGUMENT}));
    EXPECT_EQ(thrown_by([&] { file.getPathArrayAsString("/R/b[*]", texts); }),
              (Thrown{"XmlFile::getPathArrayAsString", KH_ERR_NO_VALUE}));
    expect_unchanged();
}

// Callers take an empty array of reals for "there are none", and expect no exception.
TEST_F(XmlFileArray, OfRealsAlongAPathFailsInSilence)
{
    const auto append = [&](const std::string& path) {
        return thrown_by([&] { file.getPathArrayAsReal(path, reals); });
    };
    EXPECT_EQ(append("/R/a[*]"), nothing);
    read("<R><a>1</a><a>x</a><b>1</b><b/></R>");
    for (const char* path : {"/R/a[*]", "/R/b[*]", "/R/none[*]", "/R/a", "/Other/a[*]", ""})
        EXPECT_EQ(append(path), nothing) << path;
    EXPECT_EQ(append(std::string("/R/a[*]\0x", 9)), nothing);
    expect_unchanged();
}

TEST_F(XmlFileArray, IsLeftAloneByAWarning)
{
    read("<R><a>1</a><a>2</a></R>");
    EXPECT_EQ(thrown_by([&] { file.getPathArrayAsString("../a[*]", texts); }),
              (Thrown{"XmlFile::getPathArrayAsString", KH_WARN_ROOT_REACHED}));
    expect_unchanged();
}

class XmlFileList : public object::ObjectTest {
protected:
    Texts items = {"before"};
    Thrown listed(const std::string& path, const std::string& item)
    {
        return thrown_by([&] { file.getStringValuesFromList(path, item, items); });
    }
};

TEST_F(XmlFileList, ReadsAsManyItemsAsItCounts)
{
    read("<R><Item>0</Item><List count=\"2\"><Item>1</Item><Item>2</Item><Item>3</Item></List></R>");
    EXPECT_EQ(listed("/R/List", "Item"), nothing);
    EXPECT_EQ(items, (Texts{"before", "1", "2"}));
    EXPECT_EQ(file.currentPathName(), "/R/List/Item[2]");
}

// The name may be one of the texts in the vector, which moves when it grows.
TEST_F(XmlFileList, ReadsTheNameBeforeTheVectorGrows)
{
    read("<R><List count=\"3\"><Item>1</Item><Item>2</Item><Item>3</Item></List></R>");
    items = {"Item"};
    items.shrink_to_fit();
    EXPECT_EQ(listed("/R/List", items.front()), nothing);
    EXPECT_EQ(items, (Texts{"Item", "1", "2", "3"}));
}

TEST_F(XmlFileList, AppendsNothingForACountBelowOne)
{
    read("<R><List count=\"0\"><Item>1</Item></List><List count=\"-1\"><Item>1</Item></List></R>");
    EXPECT_EQ(listed("/R/List[1]", "Item"), nothing);
    EXPECT_EQ(listed("/R/List[2]", "Item"), nothing);
    EXPECT_EQ(items, Texts{"before"});
}

TEST_F(XmlFileList, ThrowsAsTheMethodsItCalls)
{
    read("<R><a/><List><Item>1</Item></List><List count=\"many\"/><List count=\"3\"><Item>1</Item>"
         "<Item>2</Item></List></R>");
    EXPECT_EQ(listed("/R/None", "Item"), (Thrown{"XmlFile::toPath", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(listed("/R/List[0]", "Item"), (Thrown{"XmlFile::getAttributeValueAsInt", KH_ERR_NO_ATTRIBUTE}));
    EXPECT_EQ(listed("/R/List[1]", "Item"), (Thrown{"XmlFile::getAttributeValueAsInt", KH_ERR_NO_ATTRIBUTE}));
    EXPECT_EQ(listed("/R/List[2]", "Item"), (Thrown{"XmlFile::getAttributeValueAsInt", KH_ERR_NOT_INTEGER}));
    EXPECT_EQ(items, Texts{"before"});
    EXPECT_EQ(listed("/R/List[3]", "Item"), (Thrown{"XmlFile::getElementValueAsString", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(items, (Texts{"before", "1", "2"}));
}

TEST_F(XmlFileList, EndsWithTheItemsWhateverItCounts)
{
    read("<R><List count=\"9223372036854775806\"><Item>1</Item></List></R>");
    EXPECT_EQ(listed("/R/List", "Item"), (Thrown{"XmlFile::getElementValueAsString", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(items, (Texts{"before", "1"}));
}

class XmlFileSearch : public object::ObjectTest {
protected:
    XmlFileSearch()
    {
        read("<R><List><Item><Name>a</Name></Item><Item><Name>b</Name></Item><Item><Name>b</Name></Item></"
             "List>"
             "<Empty/></R>");
    }
};

TEST_F(XmlFileSearch, FindsElementsOneAfterTheOther)
{
    EXPECT_EQ(file.findValueInElement("Name", "b"), "/R/List/Item[2]/Name");
    EXPECT_EQ(file.currentPathName(), "/R/List/Item[2]/Name");
    EXPECT_EQ(file.findValueInElement("Name", "b"), "/R/List/Item[3]/Name");
    EXPECT_EQ(thrown_by([&] { file.findValueInElement("Name", "b"); }),
              (Thrown{"XmlFile::findValueInElement", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(file.currentPathName(), "/R/List/Item[3]/Name");
}

TEST_F(XmlFileSearch, TellsAMissingValueFromAMissingElement)
{
    EXPECT_EQ(thrown_by([&] { file.findValueInElement("Name", "z"); }),
              (Thrown{"XmlFile::findValueInElement", KH_ERR_VALUE_NOT_FOUND}));
    EXPECT_EQ(thrown_by([&] { file.findValueInElement("None", "z"); }),
              (Thrown{"XmlFile::findValueInElement", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(thrown_by([&] { file.findValueInElement("Empty", "z"); }),
              (Thrown{"XmlFile::findValueInElement", KH_ERR_NO_VALUE}));
    EXPECT_EQ(file.currentPathName(), "/R");
}

TEST_F(XmlFileSearch, FindsTheIndexInAPath)
{
    EXPECT_EQ(file.findValueInPath("/R/List/Item[*]/Name", "b"), "/R/List/Item[2]/Name");
    EXPECT_EQ(file.getPathValueAsString(file.findValueInPath("/R/List/Item[*]/Name", "a")), "a");
    file.root();
    EXPECT_EQ(thrown_by([&] { file.findValueInPath("/R/List/Item[*]/Name", "z"); }),
              (Thrown{"XmlFile::findValueInPath", KH_ERR_VALUE_NOT_FOUND}));
    EXPECT_EQ(thrown_by([&] { file.findValueInPath("/R/List/Item/Name", "b"); }),
              (Thrown{"XmlFile::findValueInPath", KH_ERR_ARGUMENT}));
    EXPECT_EQ(file.currentPathName(), "/R");
}

} // namespace
