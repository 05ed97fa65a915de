#include "build/edit.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <libxml/xmlsave.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using edit::in_memory;
using edit::outcome;
using edit::status;
using edit::written;
using support::content_of;
using support::Document;
using support::failure;
using support::missing_argument;
using support::outcome_of;
using support::success;
using support::TemporaryFolder;
using support::untouched;

mode_t mode_of(const std::string& file)
{
    struct stat about {};
    stat(file.c_str(), &about);
    return about.st_mode & 07777U;
}

TEST(Write, PutsClosingTagsOnLinesOfTheirOwn)
{
    struct Case {
        std::string document, result;
    };
    for (const auto& [xml, result] : std::vector<Case>{
             {"<r/>", "<r/>"},
             {"<r></r>", "<r/>"},
             {"<r>text</r>", "<r>text</r>"},
             {"<r><a/></r>", "<r><a/>\n</r>"},
             {"<r><a><b/></a></r>", "<r><a><b/>\n  </a>\n</r>"},
             {"<r><a><b><c/></b></a></r>", "<r><a><b><c/>\n    </b>\n  </a>\n</r>"},
             {"<r><a><b/></a><c/></r>", "<r><a><b/>\n  </a><c/>\n</r>"},
             {"<r>text<a>text</a></r>", "<r>text<a>text</a>\n</r>"},
             // What follows the last element, be it a text or not, stays as it is.
             {"<r><a/>text</r>", "<r><a/>text</r>"},
             {"<r><a/> </r>", "<r><a/> </r>"},
             {"<r><a/><!--c--></r>", "<r><a/><!--c--></r>"},
             {"<r><a/><![CDATA[t]]></r>", "<r><a/><![CDATA[t]]></r>"},
             {"<r><!--c--></r>", "<r><!--c--></r>"},
             {"<r>\n\t<a>\n\t</a>\n</r>", "<r>\n\t<a>\n\t</a>\n</r>"},
             {"<!--b--><r><a/></r><!--c--><?p i?>", "<!--b-->\n<r><a/>\n</r>\n<!--c-->\n<?p i?>"},
         }) {
        Document document(xml);
        EXPECT_EQ(written(document), result) << xml;
        EXPECT_EQ(written(document), result) << "a second write adds nothing";
        Document again(result);
        EXPECT_EQ(written(again), result) << "nor does a write of what was written";
    }
}

TEST(Write, WritesABuiltTreeOneElementALine)
{
    Document document;
    ASSERT_EQ(status(document, kh_tree_create_root, "Root"), KH_OK);
    ASSERT_EQ(status(document, kh_tree_add_child, ".", "Child"), KH_OK);
    ASSERT_EQ(status(document, kh_tree_add_child, ".", "Grandchild"), KH_OK);
    ASSERT_EQ(status(document, kh_tree_set_string_node_value, ".", "AT&T", "%s"), KH_OK);
    const std::string expected = "<?xml version=\"1.0\"?>\n"
                                 "<Root>\n"
                                 "  <Child>\n"
                                 "    <Grandchild>AT&amp;T</Grandchild>\n"
                                 "  </Child>\n"
                                 "</Root>\n";
    EXPECT_EQ(document.written(), expected);
    EXPECT_EQ(document.written(), expected);
    EXPECT_EQ(document.path(), "/Root/Child/Grandchild") << "the cursor stays";
}

TEST(Write, KeepsEncodingDocumentTypeCommentsAndInstructions)
{
    for (const std::string text : {
             "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r>\xc3\xa9\xe2\x82\xac</r>\n",
             "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<r a=\"\xe9\">\xe9&#8364;</r>\n",
             "<?xml version=\"1.0\" encoding=\"US-ASCII\"?>\n<r>&#233;&#8364;</r>\n",
             "<?xml version=\"1.0\" standalone=\"yes\"?>\n<r/>\n",
             "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\n<r/>\n",
             "<?xml version=\"1.0\"?>\n<?before it?>\n<!DOCTYPE r [\n<!NOTATION gif SYSTEM \"v\" >\n"
             "<!ENTITY e \"<x/>\">\n<!ENTITY u SYSTEM \"p.gif\" NDATA gif>\n<!ATTLIST r d CDATA \"v\">\n]>\n"
             "<!--c-->\n<r>&e;<![CDATA[<&]]><!--i--><?pi x?></r>\n<!--after-->\n<?end?>\n",
             "<?xml version=\"1.0\"?>\n<!DOCTYPE r SYSTEM \"r.dtd\">\n<r/>\n",
             "<?xml version=\"1.0\"?>\n<r xmlns=\"urn:u\" xmlns:p=\"urn:p\"><p:a p:x=\"1\" "
             "xml:space=\"preserve\"/>\n</r>\n",
         }) {
        Document document(text);
        EXPECT_EQ(document.written(), text);
    }
}

TEST(Write, WritesOtherLettersAsReferencesWithoutAnEncoding)
{
    Document document("<r a=\"\xc3\xa9\">\xe2\x82\xac</r>");
    EXPECT_EQ(written(document), "<r a=\"&#xE9;\">&#x20AC;</r>");
}

/// What libxml2 writes of a file that it read.
std::string saved_plainly(const std::string& source, const std::string& target)
{
    const edit::PlainDocument document(xmlParseFile(source.c_str()), xmlFreeDoc);
    xmlSaveFile(target.c_str(), document.get());
    return content_of(target);
}

std::string in_utf16(const std::string& ascii)
{
    std::string text = "\xff\xfe";
    for (const char c : ascii)
        text.append({c, '\0'});
    return text;
}

TEST(Write, WritesTheBytesThatLibxmlWrites)
{
    const TemporaryFolder folder;
    for (const std::string& text : {
             in_utf16("<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<r>text</r>\n"),
             in_utf16("<?xml version=\"1.0\"?>\n<r>text</r>\n"),
             std::string("\xef\xbb\xbf<r>\xc3\xa9</r>"),
             std::string("<?xml version=\"1.0\" encoding=\"windows-1252\"?><r>\x80</r>"),
             std::string("<?xml version=\"1.1\"?><r/>"),
         }) {
        const std::string source = folder.file("source.xml", text);
        Document document(text);
        EXPECT_EQ(document.written(), saved_plainly(source, folder.path("plain.xml")));
    }
}

TEST(Write, WritesACompressedDocumentAsLibxmlDoes)
{
    const TemporaryFolder folder;
    const std::string source = folder.path("source.xml.gz");
    const std::string content = "<?xml version=\"1.0\"?>\n<r>\n  <a>text</a>\n</r>\n";
    const edit::PlainDocument plain = edit::read_plainly(content);
    xmlSetDocCompressMode(plain.get(), 9);
    xmlSaveFile(source.c_str(), plain.get());
    if (content_of(source).rfind("\x1f\x8b", 0) != 0)
        GTEST_SKIP() << "this libxml2 does not compress";

    long code = untouched;
    long fd = kh_tree_init_parser(source.c_str(), &code);
    ASSERT_EQ(code, KH_OK);
    const std::string target = folder.path("target.xml");
    EXPECT_EQ(kh_tree_write(&fd, target.c_str(), &code), static_cast<long>(content.size()));
    EXPECT_EQ(code, KH_OK);
    EXPECT_EQ(content_of(target), saved_plainly(source, folder.path("plain.xml")));
    kh_tree_write(&fd, source.c_str(), &code);
    EXPECT_EQ(code, KH_OK);
    kh_tree_cleanup_parser(&fd, &code);

    for (const std::string& file : {source, target}) {
        fd = kh_tree_init_parser(file.c_str(), &code);
        EXPECT_EQ(code, KH_OK) << file;
        support::Text text;
        kh_tree_path_read_string_node_value(&fd, "/r/a", text.out(), &code);
        EXPECT_EQ(text.string(), "text") << file;
        kh_tree_cleanup_parser(&fd, &code);
    }
}

TEST(Write, ReturnsTheNumberOfBytesAndKeepsTheDocumentOpen)
{
    const TemporaryFolder folder;
    const std::string file = folder.path("file.xml");
    Document document("<r><a/></r>");
    const long bytes = kh_tree_write(&document.fd, file.c_str(), &document.status);
    EXPECT_EQ(document.status, KH_OK);
    EXPECT_EQ(bytes, static_cast<long>(content_of(file).size()));
    EXPECT_EQ(kh_tree_write(&document.fd, file.c_str(), nullptr), bytes);
    EXPECT_EQ(status(document, kh_tree_add_child, "/r", "b"), KH_OK);
    EXPECT_EQ(folder.entries(), 1U);
}

TEST(Write, ReportsBadArguments)
{
    const TemporaryFolder folder;
    const std::string file = folder.path("file.xml");
    for (const auto& [descriptor, code] :
         {std::pair{512L, KH_ERR_DESCRIPTOR}, {-1L, KH_ERR_DESCRIPTOR}, {511L, KH_ERR_NO_DOCUMENT}}) {
        long fd = descriptor;
        EXPECT_EQ(outcome_of([&](long* ierr) { kh_tree_write(&fd, file.c_str(), ierr); }),
                  failure(code, "kh_tree_write"));
        EXPECT_EQ(kh_tree_write(&fd, file.c_str(), nullptr), code);
    }
    EXPECT_EQ(outcome_of([&](long* ierr) { kh_tree_write(nullptr, file.c_str(), ierr); }),
              missing_argument("kh_tree_write"));
    Document empty;
    EXPECT_EQ(outcome(empty, kh_tree_write, file.c_str()), failure(KH_ERR_NO_ROOT, "kh_tree_write"));
    EXPECT_EQ(outcome(empty, kh_tree_write, nullptr), failure(KH_ERR_NO_ROOT, "kh_tree_write"));
    Document document("<r><a/></r>");
    EXPECT_EQ(outcome(document, kh_tree_write, nullptr), missing_argument("kh_tree_write"));
    EXPECT_EQ(in_memory(document), "<r><a/></r>");
    EXPECT_EQ(folder.entries(), 0U);
}

TEST(Write, ReportsATargetThatCannotBeWritten)
{
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("folder"));
    Document document("<r/>");
    for (const std::string& file :
         {folder.path("folder"), folder.path("missing/file.xml"), std::string("/dev/full"), std::string(),
          std::string("http://localhost/file.xml"), "file://" + folder.path("file.xml"),
          folder.path(std::string(300, 'x'))}) {
        const support::Outcome result = outcome(document, kh_tree_write, file.c_str());
        EXPECT_EQ(result.status, KH_ERR_SAVE) << file;
        EXPECT_TRUE(edit::ends_with(result.report, failure(KH_ERR_SAVE, "kh_tree_write").report))
            << result.report;
        EXPECT_EQ(kh_tree_write(&document.fd, file.c_str(), nullptr), KH_ERR_SAVE);
    }
    EXPECT_EQ(folder.entries(), 1U);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path("folder")));
}

TEST(Write, TakesTheNameAsItStands)
{
    const TemporaryFolder folder;
    Document document("<r/>");
    for (const std::string& name :
         {std::string("a%20b.xml"), std::string("a b#c?.xml"), std::string("\xc3\xa9.xml"),
          std::string("file.gz"), std::string(255, 'x')}) {
        EXPECT_EQ(status(document, kh_tree_write, folder.path(name).c_str()), KH_OK) << name;
        EXPECT_EQ(content_of(folder.path(name)), "<?xml version=\"1.0\"?>\n<r/>\n") << name;
    }
    EXPECT_EQ(folder.entries(), 5U);
}

TEST(Write, WritesADashOnStandardOutput)
{
    Document document("<r><a/></r>");
    long bytes = 0;
    const std::string text =
        support::written_to_stdout([&] { bytes = kh_tree_write(&document.fd, "-", &document.status); });
    EXPECT_EQ(document.status, KH_OK);
    EXPECT_EQ(text, "<?xml version=\"1.0\"?>\n<r><a/>\n</r>\n");
    EXPECT_EQ(bytes, static_cast<long>(text.size()));
    EXPECT_FALSE(std::filesystem::exists("-"));
}

TEST(Write, WritesIntoADevice)
{
    Document document("<r/>");
    EXPECT_EQ(status(document, kh_tree_write, "/dev/null"), KH_OK);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

/// A file that stands where the document goes.
class Replace : public testing::Test {
protected:
    long write(Document& document) { return status(document, kh_tree_write, file.c_str()); }
    void expect_old_file()
    {
        EXPECT_EQ(content_of(file), "old");
        EXPECT_EQ(folder.entries(), 1U);
    }
    void expect_new_file() { EXPECT_EQ(content_of(file), "<?xml version=\"1.0\"?>\n<r/>\n"); }

    TemporaryFolder folder;
    std::string file = folder.file("file.xml", "old");
    Document small{"<r/>"};
};

TEST_F(Replace, LeavesNothingButTheNewFile)
{
    EXPECT_EQ(write(small), KH_OK);
    expect_new_file();
    EXPECT_EQ(folder.entries(), 1U);
}

TEST_F(Replace, KeepsTheModeBits)
{
    for (const mode_t mode : {0600U, 0640U, 0755U, 0666U}) {
        ASSERT_EQ(chmod(file.c_str(), mode), 0);
        EXPECT_EQ(write(small), KH_OK);
        EXPECT_EQ(mode_of(file), mode);
    }
}

TEST_F(Replace, GivesANewFileTheModeOfAnyNewFile)
{
    std::filesystem::remove(file);
    const mode_t before = umask(027);
    EXPECT_EQ(write(small), KH_OK);
    umask(before);
    EXPECT_EQ(mode_of(file), 0640U);
}

TEST_F(Replace, FollowsASymbolicLink)
{
    std::filesystem::create_directory(folder.path("sub"));
    const std::string target = folder.file("sub/target.xml", "old");
    std::filesystem::remove(file);
    std::filesystem::create_symlink("sub/target.xml", file);
    EXPECT_EQ(write(small), KH_OK);
    EXPECT_TRUE(std::filesystem::is_symlink(file));
    EXPECT_FALSE(std::filesystem::is_symlink(target));
    expect_new_file();
    EXPECT_EQ(content_of(target), content_of(file));
    EXPECT_EQ(folder.entries(), 2U);
}

TEST_F(Replace, MakesTheFileThatADanglingLinkNames)
{
    std::filesystem::remove(file);
    std::filesystem::create_symlink("target.xml", file);
    EXPECT_EQ(write(small), KH_OK);
    EXPECT_TRUE(std::filesystem::is_symlink(file));
    expect_new_file();
    EXPECT_EQ(folder.entries(), 2U);
}

TEST_F(Replace, RefusesAFileWithoutWritePermission)
{
    ASSERT_EQ(chmod(file.c_str(), 0444), 0);
    ASSERT_EQ(chmod(folder.path("").c_str(), 0777), 0);
    const support::Unprivileged user;
    EXPECT_EQ(write(small), KH_ERR_SAVE);
    expect_old_file();
}

TEST_F(Replace, WritesInPlaceWhereTheFolderTakesNoNewFile)
{
    ASSERT_EQ(chmod(file.c_str(), 0666), 0);
    ASSERT_EQ(chmod(folder.path("").c_str(), 0555), 0);
    {
        const support::Unprivileged user;
        EXPECT_EQ(write(small), KH_OK);
    }
    expect_new_file();
    chmod(folder.path("").c_str(), 0755);
}

TEST_F(Replace, LeavesTheOldFileWhenTheDiskIsFull)
{
    Document large("<r>" + std::string(100000, 'x') + "</r>");
    {
        const edit::FullDisk disk(4096);
        EXPECT_EQ(write(large), KH_ERR_SAVE);
    }
    expect_old_file();
    EXPECT_EQ(write(large), KH_OK);
    EXPECT_EQ(content_of(file).size(), 100030U);
}

TEST_F(Replace, LeavesNoHalfOfANewFileWhenTheDiskIsFull)
{
    std::filesystem::remove(file);
    Document large("<r>" + std::string(100000, 'x') + "</r>");
    {
        const edit::FullDisk disk(4096);
        EXPECT_EQ(write(large), KH_ERR_SAVE);
    }
    EXPECT_EQ(folder.entries(), 0U);
}

TEST_F(Replace, LeavesTheOldFileWhenTheEncodingCannotHoldAName)
{
    for (const char* encoding : {"ISO-8859-1", "US-ASCII"}) {
        const std::string xml = std::string("<?xml version=\"1.0\" encoding=\"") + encoding + "\"?><r/>";
        Document element(xml);
        ASSERT_EQ(status(element, kh_tree_add_child, "/r", "\xce\xb1"), KH_OK);
        EXPECT_EQ(write(element), KH_ERR_SAVE) << encoding;
        Document attribute(xml);
        ASSERT_EQ(status(attribute, kh_tree_add_attribute, "/r", "\xce\xb1"), KH_OK);
        EXPECT_EQ(write(attribute), KH_ERR_SAVE) << encoding;
        Document prefix(xml);
        ASSERT_EQ(status(prefix, kh_tree_set_string_node_value, "/r/@xmlns:\xce\xb1", "urn:u", "%s"), KH_OK);
        Document declaration("<r xmlns:\xce\xb1=\"urn:u\"/>");
        declaration.slot()->doc->encoding = xmlStrdup(BAD_CAST encoding);
        EXPECT_EQ(write(declaration), KH_ERR_SAVE) << encoding;
        EXPECT_EQ(write(prefix), KH_ERR_SAVE) << encoding;
    }
    expect_old_file();
}

TEST_F(Replace, WritesALetterThatTheEncodingCannotHoldAsAReference)
{
    Document document("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r/>");
    ASSERT_EQ(status(document, kh_tree_set_string_node_value, "/r", "\xc3\xa9\xce\xb1", "%s"), KH_OK);
    EXPECT_EQ(write(document), KH_OK);
    EXPECT_EQ(content_of(file), "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<r>\xe9&#945;</r>\n");
}

TEST_F(Replace, WritesOverTheFileThatTheDocumentWasReadFrom)
{
    long code = untouched;
    long fd = kh_tree_init_parser(folder.file("file.xml", "<r><a/></r>").c_str(), &code);
    ASSERT_EQ(code, KH_OK);
    kh_tree_write(&fd, KH_get_file_name(fd), &code);
    EXPECT_EQ(code, KH_OK);
    kh_tree_cleanup_parser(&fd, &code);
    EXPECT_EQ(content_of(file), "<?xml version=\"1.0\"?>\n<r><a/>\n</r>\n");
}

TEST(Write, WritesAVeryDeepDocument)
{
    const std::string tree = "<r>" + edit::nested(edit::deep) + ".</r>";
    Document document(tree);
    EXPECT_TRUE(written(document) == tree);
}

TEST(Write, WritesVeryManySiblings)
{
    std::string content;
    for (int i = 0; i < 100000; ++i)
        content += "<a/>";
    Document document("<r>" + content + "</r>");
    EXPECT_TRUE(written(document) == "<r>" + content + "\n</r>");
}

TEST(Write, DoesNotEnterEntities)
{
    const std::string type = "<!DOCTYPE r [\n<!ENTITY e \"<x><y/></x>\">\n]>\n";
    Document document(type + "<r><a>&e;</a></r>");
    EXPECT_EQ(written(document), type + "<r><a>&e;</a>\n</r>");
}

// libxml2 drops such a default as it reads it.
TEST(Write, DeclaresAnAttributeWhoseDefaultIsNoValueOfItsType)
{
    Document document("<!DOCTYPE r [<!ATTLIST r a NMTOKENS ' '><!ATTLIST r b NMTOKEN #FIXED ' '>"
                      "<!ATTLIST r c NMTOKEN 'd'><!ATTLIST r e CDATA #REQUIRED>]><r/>");
    EXPECT_EQ(document.written(), "<?xml version=\"1.0\"?>\n<!DOCTYPE r [\n<!ATTLIST r a NMTOKENS #IMPLIED>\n"
                                  "<!ATTLIST r b NMTOKEN #IMPLIED>\n<!ATTLIST r c NMTOKEN \"d\">\n"
                                  "<!ATTLIST r e CDATA #REQUIRED>\n]>\n<r/>\n");
}

TEST(TraverseAndFormat, StartsAtANodeAndFollowsItsSiblings)
{
    Document document("<r><a><b/></a><c><d/></c><e/></r>");
    document.go_to("/r/a");
    xmlNode* c = document.current()->next;
    EXPECT_EQ(outcome(document, kh_tree_traverse_and_format, c), success);
    EXPECT_EQ(in_memory(document), "<r><a><b/></a><c><d/>\n  </c><e/>\n</r>");
    EXPECT_EQ(document.path(), "/r/a") << "the cursor stays";
    EXPECT_EQ(outcome(document, kh_tree_traverse_and_format, document.root()), success);
    EXPECT_EQ(in_memory(document), "<r><a><b/>\n  </a><c><d/>\n  </c><e/>\n</r>");
}

TEST(TraverseAndFormat, ReportsBadArguments)
{
    Document document("<r><a/></r>");
    EXPECT_EQ(outcome(document, kh_tree_traverse_and_format, nullptr),
              missing_argument("kh_tree_traverse_and_format"));
    for (const auto& [descriptor, code] :
         {std::pair{512L, KH_ERR_DESCRIPTOR}, {-1L, KH_ERR_DESCRIPTOR}, {511L, KH_ERR_NO_DOCUMENT}}) {
        long fd = descriptor;
        EXPECT_EQ(outcome_of([&](long* ierr) { kh_tree_traverse_and_format(&fd, document.root(), ierr); }),
                  failure(code, "kh_tree_traverse_and_format"));
    }
    EXPECT_EQ(in_memory(document), "<r><a/></r>");
}

TEST(Format, CountsDepthFromTheRootWhereverItStarts)
{
    Document document("<!--c--><r><a><b/></a></r>");
    kh_tree_traverse_and_format(&document.fd, document.slot()->doc->children, &document.status);
    EXPECT_EQ(document.status, 0);
    EXPECT_EQ(document.written(), "<?xml version=\"1.0\"?>\n<!--c-->\n<r><a><b/>\n  </a>\n</r>\n");
}

TEST_F(Replace, FailsAtTheLimitOfTheFileSizeWithoutEndingTheProcess)
{
    Document document("<R>" + std::string(100000, 'x') + "</R>");
    struct rlimit before;
    getrlimit(RLIMIT_FSIZE, &before);
    const struct rlimit limit = {4096, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(write(document), KH_ERR_SAVE);
    setrlimit(RLIMIT_FSIZE, &before);
    expect_old_file();
}

TEST_F(Replace, RefusesALinkToItself)
{
    std::filesystem::remove(file);
    std::filesystem::create_symlink("file.xml", file);
    EXPECT_EQ(write(small), KH_ERR_SAVE);
    EXPECT_TRUE(std::filesystem::is_symlink(file));
    EXPECT_EQ(folder.entries(), 1U);
}

TEST(Write, EscapesWhatTheParserLeavesInADeclaration)
{
    Document document("<r xmlns='a&lt;b&amp;c'><p:s xmlns:p='&lt;'/></r>");
    const std::string bytes = document.written();
    EXPECT_EQ(bytes, "<?xml version=\"1.0\"?>\n<r xmlns=\"a&#60;b&#38;c\"><p:s xmlns:p=\"&#60;\"/>\n</r>\n");
    EXPECT_EQ(Document(bytes).written(), bytes);
    Document kept("<r xmlns='a&lt;b'/>");
    const TemporaryFolder folder;
    kh_tree_save(&kept.fd, folder.path("kept.xml").c_str(), &kept.status);
    EXPECT_EQ(content_of(folder.path("kept.xml")), "<?xml version=\"1.0\"?>\n<r xmlns=\"a&#60;b\"/>\n");
}

TEST(Write, EscapesTabsAndLineBreaksInADeclaration)
{
    Document document("<r xmlns='a&#9;b'><p:s xmlns:p='c'/></r>");
    kh_tree_set_text(&document.fd, "/r/s/@xmlns:p", "\t\n\r", &document.status);
    const std::string bytes = document.written();
    EXPECT_EQ(bytes,
              "<?xml version=\"1.0\"?>\n<r xmlns=\"a&#9;b\"><p:s xmlns:p=\"&#9;&#10;&#13;\"/>\n</r>\n");
    EXPECT_EQ(Document(bytes).written(), bytes);
}

TEST_F(Replace, HoldsNamesOfAnyLengthAgainstTheEncoding)
{
    const std::string name(1000, 'n');
    Document document("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><" + name + "/>");
    EXPECT_EQ(write(document), KH_OK);
    EXPECT_EQ(content_of(file), "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<" + name + "/>\n");
}

TEST_F(Replace, NeverTakesTheNameOfAFileThatIsThere)
{
    // Another process with this number may have ended in the middle of a write.
    const std::string start = ".kalv-" + std::to_string(getpid()) + "-";
    constexpr int leftovers = 5000; // more than this program has written
    for (int i = 1; i <= leftovers; ++i)
        folder.file(start + std::to_string(i), "leftover");
    EXPECT_EQ(write(small), KH_OK);
    expect_new_file();
    EXPECT_EQ(folder.entries(), leftovers + 1U);
    for (int i = 1; i <= leftovers; ++i)
        ASSERT_EQ(content_of(folder.path(start + std::to_string(i))), "leftover") << i;
}

TEST_F(Replace, FindsNoFolderInAFile)
{
    EXPECT_EQ(status(small, kh_tree_write, (file + "/below.xml").c_str()), KH_ERR_SAVE);
    expect_old_file();
}

TEST(Write, LeavesASignalThatWasWaitingBefore)
{
    sigset_t pipe, before, waiting;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, &before);
    raise(SIGPIPE);
    Document document("<r/>");
    EXPECT_EQ(document.written(), "<?xml version=\"1.0\"?>\n<r/>\n");
    sigpending(&waiting);
    EXPECT_EQ(sigismember(&waiting, SIGPIPE), 1);
    int signal = 0;
    sigwait(&pipe, &signal);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(Write, ReportsADeviceThatIsFull)
{
    Document small("<r/>");
    EXPECT_EQ(status(small, kh_tree_write, "/dev/full"), KH_ERR_SAVE);
    Document compressed("<r>" + std::string(100000, 'x') + "</r>");
    compressed.slot()->doc->compression = 9;
    EXPECT_EQ(status(compressed, kh_tree_write, "/dev/full"), KH_ERR_SAVE);
}

TEST(Write, ReportsAStandardOutputThatIsFull)
{
    std::fflush(stdout);
    const int before = dup(STDOUT_FILENO);
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    dup2(full, STDOUT_FILENO);
    Document document("<r/>");
    EXPECT_EQ(status(document, kh_tree_write, "-"), KH_ERR_SAVE);
    dup2(before, STDOUT_FILENO);
    close(full);
    close(before);
    std::clearerr(stdout);
}

} // namespace
