// An object's cursor: its moves, its name and path, and the schema references set at it.
#include "object/thrown.h"

#include "support/nodes.h"

#include <kalv/document.h>
#include <libxml/tree.h>

namespace {

using KALV::XmlFile;
using object::nothing;
using object::Thrown;
using object::thrown_by;

class XmlFileCursor : public object::ObjectTest {
protected:
    xmlNode* current() const { return global_current_status[file.getId()]->current; }
};

constexpr char list[] =
    "<R xmlns:p=\"urn:p\">text<Item>1</Item><!-- between --><Item>2</Item><?between?><p:Last/>text</R>";

TEST_F(XmlFileCursor, MovesToTheRootAndOn)
{
    read(list);
    EXPECT_EQ(file.next(), 0);
    EXPECT_EQ(file.currentPathName(), "/R/Item[1]");
    EXPECT_EQ(file.next(), 0);
    EXPECT_EQ(file.next(), 0);
    EXPECT_EQ(file.currentPathName(), "/R/Last");
    EXPECT_EQ(thrown_by([&] { file.next(); }), (Thrown{"XmlFile::next", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(file.currentPathName(), "/R/Last");
    EXPECT_EQ(file.root(), 0);
    EXPECT_EQ(file.currentPathName(), "/R");
}

TEST_F(XmlFileCursor, MovesToElementsOfAName)
{
    read(list);
    EXPECT_EQ(file.toElement("Item"), 0);
    EXPECT_EQ(file.toElement("Item"), 0);
    EXPECT_EQ(file.currentPathName(), "/R/Item[2]");
    EXPECT_EQ(thrown_by([&] { file.toElement("Item"); }), (Thrown{"XmlFile::toElement", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(thrown_by([&] { file.toElement(""); }), (Thrown{"XmlFile::toElement", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(file.currentPathName(), "/R/Item[2]");
}

TEST_F(XmlFileCursor, MovesAlongPaths)
{
    read(list);
    EXPECT_EQ(file.toPath("/R/Item[2]"), 0);
    EXPECT_EQ(file.currentPathName(), "/R/Item[2]");
    EXPECT_EQ(file.toPath("../Last"), 0);
    EXPECT_EQ(file.currentElementName(), "Last");
    EXPECT_EQ(thrown_by([&] { file.toPath("/R/None"); }), (Thrown{"XmlFile::toPath", KH_ERR_NOT_FOUND}));
    EXPECT_EQ(thrown_by([&] { file.toPath(""); }), (Thrown{"XmlFile::toPath", KH_ERR_ARGUMENT}));
    EXPECT_EQ(thrown_by([&] { file.toPath("/Other"); }), (Thrown{"XmlFile::toPath", KH_ERR_ARGUMENT}));
}

TEST_F(XmlFileCursor, ThrowsAWarningLikeAnError)
{
    read(list);
    EXPECT_EQ(thrown_by([&] { file.toPath(".."); }), (Thrown{"XmlFile::toPath", KH_WARN_ROOT_REACHED}));
    EXPECT_EQ(file.currentPathName(), "/R");
}

TEST_F(XmlFileCursor, TellsWhereTheCursorIsNoElement)
{
    read(list);
    file.toPath("/R/Item[0]");
    EXPECT_EQ(thrown_by([&] { file.currentElementName(); }),
              (Thrown{"XmlFile::currentElementName", KH_ERR_NOT_ELEMENT}));
    EXPECT_EQ(thrown_by([&] { file.currentPathName(); }),
              (Thrown{"XmlFile::currentPathName", KH_ERR_NOT_ELEMENT}));
    global_current_status[file.getId()]->current = nullptr;
    EXPECT_EQ(thrown_by([&] { file.currentPathName(); }),
              (Thrown{"XmlFile::currentPathName", KH_ERR_NO_CURRENT}));
    EXPECT_EQ(thrown_by([&] { file.currentElementName(); }),
              (Thrown{"XmlFile::currentElementName", KH_ERR_NO_CURRENT}));
}

TEST_F(XmlFileCursor, ReportsAFailedPathAsTheProceduralInterfaceDoes)
{
    read(list);
    file.toPath("/R/Item[0]");
    const std::string report = support::report_of([&] { thrown_by([&] { file.currentPathName(); }); });
    EXPECT_EQ(report, "KH: Current node is not an element\n\tFunction: kh_tree_get_path\n");
}

TEST_F(XmlFileCursor, GivesNamesAndPathsOfAnyLength)
{
    const std::string long_name(3000, 'n');
    std::string path;
    std::string content;
    for (int depth = 0; depth < 40; ++depth) {
        path += "/" + long_name;
        content = "<" + long_name + ">" + content + "</" + long_name + ">";
    }
    read(content);
    file.toPath(path);
    EXPECT_EQ(file.currentPathName(), path);
    EXPECT_EQ(file.currentElementName(), long_name);
}

TEST_F(XmlFileCursor, StepsToTheNextSiblingElement)
{
    read(list);
    file.toPath("/R/Item");
    EXPECT_EQ(support::written_to_stdout([&] {
                  xmlNode* found = file.nextSibling();
                  EXPECT_EQ(found, current());
                  EXPECT_EQ(file.currentPathName(), "/R/Item[2]");
                  found = file.nextSibling();
                  EXPECT_EQ(found, current());
                  EXPECT_EQ(file.currentPathName(), "/R/Last");
              }),
              "");
}

constexpr char no_sibling[] = "[nextSibling] No next sibling. Standing in the same sibling\n";

TEST_F(XmlFileCursor, StaysAtTheLastSibling)
{
    read(list);
    file.toPath("/R/Last");
    EXPECT_EQ(support::written_to_stdout([&] { EXPECT_EQ(file.nextSibling(), nullptr); }), no_sibling);
    EXPECT_EQ(file.currentPathName(), "/R/Last");
}

TEST_F(XmlFileCursor, HasNoSiblingWithoutDocumentOrCursor)
{
    EXPECT_EQ(support::written_to_stdout([&] { EXPECT_EQ(file.nextSibling(), nullptr); }), no_sibling);
    file.create();
    EXPECT_EQ(support::written_to_stdout([&] { EXPECT_EQ(file.nextSibling(), nullptr); }), no_sibling);
}

/// The attributes and declarations that the root is written with.
class XmlFileSchema : public object::ObjectTest {
protected:
    std::string root_tag()
    {
        const std::string text = written();
        const std::size_t begin = text.find("<R");
        return text.substr(begin, text.find('>', begin) - begin + 1);
    }
    bool root_has(const std::string& text) { return root_tag().find(text) != std::string::npos; }
};

TEST_F(XmlFileSchema, SetsReferencesWithOrWithoutTheVersion)
{
    read("<R/>");
    file.setSchema("ns.example.xsd uri_0203.XSD", true);
    EXPECT_TRUE(root_has("schemaLocation=\"ns.example.xsd uri_0203.XSD\"")) << root_tag();
    EXPECT_TRUE(root_has("schemaVersion=\"2.3\"")) << root_tag();
    EXPECT_TRUE(root_has("xmlns=\"ns.example.xsd\"")) << root_tag();
    read("<R/>");
    file.setSchema("ns.example.xsd uri_0203.XSD", false);
    EXPECT_TRUE(root_has("schemaLocation")) << root_tag();
    EXPECT_FALSE(root_has("schemaVersion")) << root_tag();
}

TEST_F(XmlFileSchema, RemovesTheLocationAloneOrEverything)
{
    const std::string referring = "<R xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
                                  "xsi:schemaLocation=\"a b\" other=\"1\"/>";
    read(referring);
    file.removeSchema(false);
    EXPECT_FALSE(root_has("schemaLocation")) << root_tag();
    EXPECT_TRUE(root_has("other=\"1\"")) << root_tag();
    read(referring);
    file.removeSchema(true);
    EXPECT_EQ(root_tag(), "<R/>");
}

TEST_F(XmlFileSchema, ThrowsNothingWhereNothingCanBeSet)
{
    for (const bool flag : {true, false}) {
        EXPECT_EQ(thrown_by([&] { file.setSchema("a b", flag); }), nothing);
        EXPECT_EQ(thrown_by([&] { file.removeSchema(flag); }), nothing);
    }
    read("<R/>");
    EXPECT_EQ(thrown_by([&] { file.setSchema(std::string("a\0b", 3), true); }), nothing);
    EXPECT_EQ(root_tag(), "<R/>");
}

} // namespace
