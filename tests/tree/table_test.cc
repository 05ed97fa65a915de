// The table of open documents: taking and releasing slots, what is parsed, and the checks of a descriptor.
#include "support/nodes.h"
#include "support/outcome.h"
#include "support/sanitized.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <future>
#include <libxml/encoding.h>
#include <libxml/parser.h>
#include <set>
#include <sys/single_threaded.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <zlib.h>

#ifdef KALV_SANITIZED
namespace {
bool forked_child = false;
}

/// At the exit of a child the search for leaks would wait for the parent's threads, which the child does not have, and
/// take their memory for lost.
extern "C" int __lsan_is_turned_off()
{
    return forked_child;
}
#endif

namespace {

using support::Document;
using support::failure;
using support::missing_argument;
using support::Outcome;
using support::outcome_of;
using support::success;
using support::TemporaryFolder;
using support::untouched;

/// Starts with an empty table, and checks at the end that no call kept the lock.
class Table : public testing::Test {
protected:
    Table() { kh_tree_cleanup_all_parser(); }

    ~Table() override
    {
        EXPECT_TRUE(lock_is_free());
        kh_tree_cleanup_all_parser();
    }

    static bool lock_is_free()
    {
        const bool is_free = pthread_mutex_trylock(&parser_mutex) == 0;
        if (is_free)
            pthread_mutex_unlock(&parser_mutex);
        return is_free;
    }

    /// Opens a file of this content; the test fails if that fails.
    long open(std::string_view content) { return open_file(folder.file("document.xml", content)); }

    static long open_file(const std::string& name)
    {
        long status = untouched;
        const long fd = kh_tree_init_parser(name.c_str(), &status);
        EXPECT_EQ(status, 0) << name;
        return fd;
    }

    static long create()
    {
        long status = untouched;
        const long fd = kh_tree_create(&status);
        EXPECT_EQ(status, 0);
        return fd;
    }

    static void release(long fd)
    {
        long status = untouched;
        EXPECT_EQ(kh_tree_cleanup_parser(&fd, &status), 0);
        EXPECT_EQ(status, 0);
    }

    /// The status of an attempt to open a file.
    static long status_of_opening(const std::string& name)
    {
        long status = untouched;
        const long fd = kh_tree_init_parser(name.c_str(), &status);
        if (status == 0)
            release(fd);
        return status;
    }

    /// The content of the root of a file, which is then released again.
    static std::string root_text(const std::string& name)
    {
        const long fd = open_file(name);
        xmlChar* const text = xmlNodeGetContent(global_current_status[fd]->root);
        const std::string result = reinterpret_cast<const char*>(text);
        xmlFree(text);
        release(fd);
        return result;
    }

    TemporaryFolder folder;
};

TEST_F(Table, FillsTheSlotOfAParsedFile)
{
    const std::string name = folder.file("parsed.xml", "<!--first--><R><A/></R>");
    const long fd = open_file(name);
    const kh_document_slot& slot = *global_current_status[fd];
    ASSERT_NE(slot.doc, nullptr);
    EXPECT_EQ(slot.root, xmlDocGetRootElement(slot.doc));
    EXPECT_EQ(slot.current, slot.root);
    EXPECT_EQ(slot.file_name, name);
    EXPECT_EQ(slot.visited, 0);
    EXPECT_EQ(slot.absolute, 0);
    EXPECT_EQ(slot.stack_count, 0);
    EXPECT_EQ(slot.array_position, 0) << "0 until a path is parsed";
    EXPECT_EQ(slot.requested_tag, nullptr);
}

TEST_F(Table, FillsTheSlotOfACreatedDocument)
{
    const kh_document_slot& slot = *global_current_status[create()];
    ASSERT_NE(slot.doc, nullptr);
    EXPECT_STREQ(reinterpret_cast<const char*>(slot.doc->version), "1.0");
    EXPECT_EQ(slot.doc->children, nullptr);
    EXPECT_EQ(slot.root, nullptr);
    EXPECT_EQ(slot.current, nullptr);
    EXPECT_EQ(slot.file_name, nullptr);
    EXPECT_EQ(slot.stack_count, 0);
    EXPECT_EQ(slot.array_position, 0);
    EXPECT_EQ(slot.requested_tag, nullptr);
}

TEST_F(Table, GivesTheLowestFreeDescriptor)
{
    EXPECT_EQ(open("<R/>"), 0);
    release(0);
    EXPECT_EQ(open("<R/>"), 0);
    EXPECT_EQ(create(), 1);
    EXPECT_EQ(open("<R/>"), 2);
    EXPECT_EQ(create(), 3);
    release(2);
    release(1);
    EXPECT_EQ(open("<R/>"), 1);
    EXPECT_EQ(create(), 2);
    EXPECT_EQ(create(), 4);
}

TEST_F(Table, HoldsOneDocumentForEachOpeningOfAFile)
{
    const std::string name = folder.file("twice.xml", "<R/>");
    const long first = open_file(name), second = open_file(name);
    EXPECT_NE(first, second);
    EXPECT_NE(global_current_status[first]->doc, global_current_status[second]->doc);
}

TEST_F(Table, ReportsThatItIsFullWithADifferentResultForEachWayToOpen)
{
    const std::string name = folder.file("one_more.xml", "<R/>");
    for (long fd = 0; fd < KH_MAX_DOCUMENTS; ++fd)
        ASSERT_EQ(fd % 2 ? create() : open_file(name), fd);

    // Callers tell the two apart by the result.
    long result = untouched;
    EXPECT_EQ(outcome_of([&](long* ierr) { result = kh_tree_init_parser(name.c_str(), ierr); }),
              failure(KH_ERR_TABLE_FULL, "kh_tree_init_parser"));
    EXPECT_EQ(result, -1);
    EXPECT_EQ(outcome_of([&](long* ierr) { result = kh_tree_create(ierr); }),
              failure(KH_ERR_TABLE_FULL, "kh_tree_create"));
    EXPECT_EQ(result, 512);
    EXPECT_EQ(outcome_of([&](long* ierr) { result = kh_tree_init_parser(nullptr, ierr); }),
              failure(KH_ERR_TABLE_FULL, "kh_tree_init_parser"))
        << "the search for a slot comes before the check of the name";
    EXPECT_EQ(result, -1);

    release(511);
    EXPECT_EQ(create(), 511);
    release(17);
    EXPECT_EQ(open_file(name), 17);
}

TEST_F(Table, RefusesANullFileNameAndReturnsTheFreeSlot)
{
    create();
    create();
    long result = untouched;
    EXPECT_EQ(outcome_of([&](long* ierr) { result = kh_tree_init_parser(nullptr, ierr); }),
              missing_argument("kh_tree_init_parser"));
    EXPECT_EQ(result, 2);
    EXPECT_EQ(global_current_status[2], nullptr);
}

TEST_F(Table, ReportsAFileThatDoesNotParseAndReturnsTheFreedSlot)
{
    const struct {
        const char* name;
        const char* content;
    } rows[] = {{"empty.xml", ""},
                {"text.xml", "text"},
                {"open.xml", "<R><A></R>"},
                {"cut.xml", "<R"},
                {"no_root.xml", "<?xml version=\"1.0\"?><!--no root-->"},
                {"two_roots.xml", "<R/><R/>"},
                {"undeclared.xml", "<?xml version=\"1.0\"?><R>&nothing;</R>"},
                {"not_utf8.xml", "<R>\xff\xfe</R>"}};
    create();
    for (const auto& row : rows) {
        const std::string name = folder.file(row.name, row.content);
        long result = untouched;
        const Outcome outcome =
            outcome_of([&](long* ierr) { result = kh_tree_init_parser(name.c_str(), ierr); });
        EXPECT_EQ(own_report(outcome), failure(KH_ERR_PARSE, "kh_tree_init_parser", ". File: " + name))
            << row.name;
        EXPECT_NE(outcome.report, own_report(outcome).report) << "the parser's own messages stand before it";
        EXPECT_EQ(result, 1);
        EXPECT_EQ(global_current_status[1], nullptr);
        EXPECT_TRUE(lock_is_free());
    }
}

TEST_F(Table, ReportsAFileThatCannotBeRead)
{
    for (const std::string& name : {folder.path("missing.xml"), folder.path("."), std::string()}) {
        const Outcome outcome = outcome_of([&](long* ierr) { kh_tree_init_parser(name.c_str(), ierr); });
        EXPECT_EQ(own_report(outcome), failure(KH_ERR_PARSE, "kh_tree_init_parser", ". File: " + name));
        EXPECT_EQ(global_current_status[0], nullptr);
    }
}

TEST_F(Table, PrintsNothingInSilentModeInAnyThread)
{
    const std::string name = folder.file("bad.xml", "<R>&nothing;</Q>");
    const auto attempt = [&] { EXPECT_EQ(status_of_opening(name), KH_ERR_PARSE); };
    EXPECT_EQ(support::written_to_stderr([&] {
                  attempt();
                  std::thread(attempt).join();
              }),
              "");
}

void drop_message(void*, const char*, ...) {}

TEST_F(Table, InstallsTheParsersMessageHandlerWithEveryOpening)
{
    const long kept = create();
    for (const std::string& name : {folder.file("good.xml", "<R/>"), folder.file("bad.xml", "<R>")}) {
        xmlSetGenericErrorFunc(nullptr, drop_message);
        status_of_opening(name);
        EXPECT_EQ(xmlGenericError, &KH_handle_xml_error) << name;
    }
    release(kept);
}

TEST_F(Table, ReleasesASlot)
{
    long fd = open("<R><A/></R>");
    long status = untouched;
    kh_tree_go_to_path_node(&fd, "/R/A", &status);
    EXPECT_EQ(outcome_of([&](long* ierr) { EXPECT_EQ(kh_tree_cleanup_parser(&fd, ierr), 0); }), success);
    EXPECT_EQ(global_current_status[0], nullptr);
}

TEST_F(Table, ReleasesAnUnusedDescriptorSilently)
{
    create();
    for (long fd : {1L, 511L})
        EXPECT_EQ(outcome_of([&](long* ierr) { EXPECT_EQ(kh_tree_cleanup_parser(&fd, ierr), 0); }), success);
    EXPECT_NE(global_current_status[0], nullptr);
}

TEST_F(Table, SurvivesTheReleaseOfADescriptorOutOfRange)
{
    for (long fd : {512L, -1L, 1000000L}) {
        EXPECT_EQ(
            outcome_of([&](long* ierr) { EXPECT_EQ(kh_tree_cleanup_parser(&fd, ierr), KH_ERR_DESCRIPTOR); }),
            failure(KH_ERR_DESCRIPTOR, "kh_tree_cleanup_parser"));
        EXPECT_TRUE(lock_is_free()) << "a wrong descriptor must not block the process";
    }
    EXPECT_EQ(create(), 0);
}

TEST_F(Table, RefusesToReleaseANullDescriptor)
{
    EXPECT_EQ(
        outcome_of([](long* ierr) { EXPECT_EQ(kh_tree_cleanup_parser(nullptr, ierr), KH_ERR_ARGUMENT); }),
        missing_argument("kh_tree_cleanup_parser"));
}

TEST_F(Table, DoesWithoutAStatusWord)
{
    const std::string name = folder.file("good.xml", "<R/>");
    long fd = kh_tree_init_parser(name.c_str(), nullptr);
    EXPECT_EQ(fd, 0);
    EXPECT_EQ(kh_tree_create(nullptr), 1);
    EXPECT_EQ(kh_tree_init_parser(nullptr, nullptr), 2);
    EXPECT_EQ(kh_tree_cleanup_parser(&fd, nullptr), 0);
    fd = 512;
    EXPECT_EQ(kh_tree_cleanup_parser(&fd, nullptr), KH_ERR_DESCRIPTOR);
    EXPECT_EQ(kh_tree_cleanup_parser(nullptr, nullptr), KH_ERR_ARGUMENT);
}

TEST_F(Table, ReleasesAllSlots)
{
    for (int i = 0; i < 5; ++i)
        create();
    release(2);
    kh_tree_cleanup_all_parser();
    for (const kh_document_slot* slot : global_current_status)
        EXPECT_EQ(slot, nullptr);
    kh_tree_cleanup_all_parser();
    EXPECT_EQ(create(), 0);
}

TEST_F(Table, TellsTheFileNameOfADocument)
{
    const std::string name = folder.file("named.xml", "<R/>");
    const long parsed = open_file(name), created = create();
    EXPECT_EQ(KH_get_file_name(parsed), name);
    EXPECT_EQ(KH_get_file_name(parsed), global_current_status[parsed]->file_name) << "the slot's own text";
    for (const long fd : {created, 2L, 511L, 512L, -1L})
        EXPECT_EQ(KH_get_file_name(fd), nullptr) << fd;
}

/// Tells whether an encoding alias outlives a call: the parser-wide clean-up drops all aliases.
bool parser_stays_up(const std::function<void()>& action)
{
    xmlAddEncodingAlias("UTF-8", "KALV-TEST-ALIAS");
    action();
    const bool stays = xmlGetEncodingAlias("KALV-TEST-ALIAS") != nullptr;
    xmlDelEncodingAlias("KALV-TEST-ALIAS");
    return stays;
}

TEST_F(Table, CleansTheParserUpWithTheLastDocument)
{
    if (!__libc_single_threaded)
        GTEST_SKIP() << "the process has further threads";
    const long first = open("<R/>"), second = open("<R/>");
    EXPECT_TRUE(parser_stays_up([&] { release(first); }));
    EXPECT_FALSE(parser_stays_up([&] { release(second); }));
    EXPECT_TRUE(parser_stays_up([] { release(0); })) << "an unused slot is not the last document";
    EXPECT_EQ(root_text(folder.file("after.xml", "<R>again</R>")), "again");
}

TEST_F(Table, LeavesTheParserAloneWhileOtherThreadsExist)
{
    std::promise<void> end;
    std::thread other([&] { end.get_future().wait(); });
    const long fd = open("<R/>");
    EXPECT_TRUE(parser_stays_up([&] { release(fd); }));
    end.set_value();
    other.join();
}

TEST_F(Table, TakesAFileNameForAFileNameAndNotForAUri)
{
    folder.file("a%20b.xml", "<R>percent</R>");
    folder.file("a b.xml", "<R>blank</R>");
    folder.file("100%.xml", "<R>bare percent</R>");
    folder.file("a#b?c.xml", "<R>query</R>");
    folder.file("\xc3\xa4.xml", "<R>umlaut</R>");
    EXPECT_EQ(root_text(folder.path("a%20b.xml")), "percent");
    EXPECT_EQ(root_text(folder.path("a b.xml")), "blank");
    EXPECT_EQ(root_text(folder.path("100%.xml")), "bare percent");
    EXPECT_EQ(root_text(folder.path("a#b?c.xml")), "query");
    EXPECT_EQ(root_text(folder.path("\xc3\xa4.xml")), "umlaut");
    EXPECT_EQ(status_of_opening("file://" + folder.path("a b.xml")), KH_ERR_PARSE);
}

TEST_F(Table, DoesNotFindAnEscapedNameUnderItsUnescapedOne)
{
    folder.file("only b.xml", "<R/>");
    EXPECT_EQ(status_of_opening(folder.path("only%20b.xml")), KH_ERR_PARSE);
}

/// The process's folder, put back with the object.
class WorkingFolder {
public:
    explicit WorkingFolder(const std::string& folder) : before_(std::filesystem::current_path())
    {
        std::filesystem::current_path(folder);
    }
    ~WorkingFolder() { std::filesystem::current_path(before_); }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

private:
    std::filesystem::path before_;
};

TEST_F(Table, TakesAUrlForARelativePath)
{
    const WorkingFolder working(folder.path("."));
    for (const std::string scheme : {"http:", "ftp:", "file:"}) {
        std::filesystem::create_directories(folder.path(scheme) + "/host.example");
        folder.file(scheme + "/host.example/a.xml", "<R>local</R>");
        EXPECT_EQ(root_text(scheme + "//host.example/a.xml"), "local");
        EXPECT_EQ(status_of_opening(scheme + "//host.example/b.xml"), KH_ERR_PARSE);
    }
    folder.file("x", "<R>short</R>");
    EXPECT_EQ(root_text("x"), "short");
}

TEST_F(Table, ReadsStandardInputUnderTheNameOfADash)
{
    const int before = dup(STDIN_FILENO);
    const int file = ::open(folder.file("input.xml", "<R>standard input</R>").c_str(), O_RDONLY);
    dup2(file, STDIN_FILENO);
    EXPECT_EQ(root_text("-"), "standard input");
    dup2(before, STDIN_FILENO);
    close(file);
    close(before);
}

TEST_F(Table, ReadsAGzipFileUnderAnyName)
{
    const unsigned char packed[] = {0x1f, 0x8b, 0x08, 0x00, 0x00, 0x00, 0x00, 0x00, 0x02, 0x03, 0xb3,
                                    0x09, 0xb2, 0xb3, 0x71, 0xb4, 0x2b, 0x48, 0x4c, 0xce, 0x4e, 0x4d,
                                    0xb1, 0xd1, 0x77, 0xb4, 0xb3, 0xd1, 0x0f, 0xb2, 0xe3, 0x02, 0x00,
                                    0xf3, 0xb4, 0x01, 0x12, 0x15, 0x00, 0x00, 0x00};
    const std::string_view content(reinterpret_cast<const char*>(packed), sizeof packed);
    for (const char* name : {"packed.xml.gz", "packed.xml", "packed%20.gz"})
        EXPECT_EQ(root_text(folder.file(name, content)), "packed") << name;
    EXPECT_EQ(status_of_opening(folder.file("cut.gz", content.substr(0, 20))), KH_ERR_PARSE);
    EXPECT_EQ(root_text(folder.file("padded.gz", std::string(content) + "no compressed file")), "packed");
}

TEST_F(Table, ReadsCompressedFilesOneBehindTheOther)
{
    const std::string name = folder.path("two.gz");
    const std::string pieces[] = {"<R>one", " and the other</R>"};
    for (const std::string& piece : pieces) {
        const gzFile file = gzopen(name.c_str(), "ab");
        ASSERT_EQ(gzwrite(file, piece.data(), static_cast<unsigned>(piece.size())),
                  static_cast<int>(piece.size()));
        ASSERT_EQ(gzclose(file), Z_OK);
    }
    EXPECT_EQ(root_text(name), "one and the other");
}

TEST_F(Table, RefusesACompressedFileThatInflatesWithoutEnd)
{
    const std::string spaces(1U << 20, ' ');
    for (const auto& [level, status] : {std::pair{"wb9", long{KH_ERR_PARSE}}, {"wb0", long{KH_OK}}}) {
        const std::string name = folder.path("large.gz");
        const gzFile file = gzopen(name.c_str(), level);
        gzputs(file, "<R>");
        for (int i = 0; i < 20; ++i)
            ASSERT_EQ(gzwrite(file, spaces.data(), static_cast<unsigned>(spaces.size())),
                      static_cast<int>(spaces.size()));
        gzputs(file, "</R>");
        ASSERT_EQ(gzclose(file), Z_OK);
        EXPECT_EQ(status_of_opening(name), status) << "the size alone is no reason: " << level;
    }
}

TEST_F(Table, ReadsFilesBeyondTheParsersUsualLimits)
{
    const auto nested = [](int depth) {
        std::string text;
        for (int i = 0; i < depth; ++i)
            text += "<R>";
        for (int i = 0; i < depth; ++i)
            text += "</R>";
        return text;
    };
    const std::string long_text(10000001, 'x'), declaration = "<!DOCTYPE R [<!ENTITY e \"e\">]>";
    const struct {
        const char* limit;
        std::string text;
    } rows[] = {{"depth", nested(2000)},
                {"text", "<R>" + long_text + "</R>"},
                {"attribute", "<R a=\"" + long_text + "\"/>"}};
    for (const auto& row : rows) {
        EXPECT_EQ(status_of_opening(folder.file("large.xml", row.text)), 0) << row.limit;
        // Lifted limits would let entities multiply without end.
        EXPECT_EQ(status_of_opening(folder.file("entity.xml", declaration + row.text)), KH_ERR_PARSE)
            << row.limit;
    }
    EXPECT_EQ(status_of_opening(folder.file("small.xml", declaration + nested(200))), 0);
}

// Names are kept for the next document, but no limit and no name of a document shows in another.
TEST_F(Table, ReadsADocumentAsIfNoneHadBeenReadBefore)
{
    const auto named = [](int count, const std::string& name) {
        std::string text = "<R>";
        for (int i = 0; i < count; ++i)
            text += "<" + name + std::to_string(i) + ">12</" + name + std::to_string(i) + ">";
        return text + "</R>";
    };
    const auto dumped = [](xmlDoc* document) {
        xmlChar* bytes = nullptr;
        int size = 0;
        xmlDocDumpMemory(document, &bytes, &size);
        const std::string text(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
        xmlFree(bytes);
        return text;
    };
    const std::string long_name(50'000, 'n');
    const std::string texts[] = {"<!DOCTYPE R [<!ENTITY e \"e\">]><R>&e;</R>",
                                 named(250, long_name),
                                 named(10, "a"),
                                 named(6000, "b"),
                                 named(10, "a"),
                                 named(1, "b")};
    const long other = open("<R/>"); // the parser is not cleaned up meanwhile
    for (const std::string& text : texts) {
        const Document document(text);
        xmlDoc* plain =
            xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, XML_PARSE_HUGE);
        EXPECT_EQ(dumped(document.slot()->doc), dumped(plain)) << text.substr(0, 40);
        xmlFreeDoc(plain);
    }
    long status = untouched;
    long fd = other;
    kh_tree_cleanup_parser(&fd, &status);
    EXPECT_EQ(status, 0);
}

TEST_F(Table, RefusesEntitiesThatMultiply)
{
    std::string text = "<!DOCTYPE R [<!ENTITY e0 \"0123456789\">";
    for (int i = 1; i <= 12; ++i) {
        const std::string inner = "&e" + std::to_string(i - 1) + ";";
        text += "<!ENTITY e" + std::to_string(i) + " \"";
        for (int repeat = 0; repeat < 10; ++repeat)
            text += inner;
        text += "\">";
    }
    EXPECT_EQ(status_of_opening(folder.file("multiply.xml", text + "]><R a=\"&e12;\"/>")), KH_ERR_PARSE);
}

TEST_F(Table, LoadsNoExternalEntityOrSubset)
{
    folder.file("part.xml", "<Loaded/>");
    folder.file("subset.dtd", "<!ATTLIST R loaded CDATA \"yes\">");
    const Document document = Document::file(
        folder.file("document.xml", "<!DOCTYPE R SYSTEM \"subset.dtd\" [<!ENTITY part SYSTEM \"part.xml\">]>"
                                    "<R>&part;</R>"));
    EXPECT_EQ(document.root()->properties, nullptr);
    ASSERT_NE(document.root()->children, nullptr);
    EXPECT_EQ(document.root()->children->type, XML_ENTITY_REF_NODE);
    EXPECT_EQ(support::node_of(document, "//Loaded"), nullptr);
}

/// Sets libxml2 up as a host program might, and puts its defaults back.
struct HostSettings {
    const int blanks = xmlKeepBlanksDefault(0);
    const int entities = xmlSubstituteEntitiesDefault(1);
    const int subset = std::exchange(xmlLoadExtDtdDefaultValue, 2 | 4);
    ~HostSettings()
    {
        xmlKeepBlanksDefault(blanks);
        xmlSubstituteEntitiesDefault(entities);
        xmlLoadExtDtdDefaultValue = subset;
    }
};

TEST_F(Table, ReadsTheSameTreeWhateverTheHostSetInTheParser)
{
    folder.file("subset.dtd", "<!ATTLIST R loaded CDATA \"yes\">");
    const std::string name =
        folder.file("document.xml", "<!DOCTYPE R SYSTEM \"subset.dtd\" [<!ENTITY e \"value\">]>"
                                    "<R>\n  <A>&e;</A>\n</R>");
    const HostSettings settings;
    const Document document = Document::file(name);
    EXPECT_EQ(document.root()->properties, nullptr);
    ASSERT_EQ(document.root()->children->type, XML_TEXT_NODE);
    ASSERT_NE(document.root()->children->next, nullptr);
    EXPECT_EQ(document.root()->children->next->children->type, XML_ENTITY_REF_NODE);
    EXPECT_EQ(xmlKeepBlanksDefault(0), 0) << "the host's settings stay";
    EXPECT_EQ(xmlSubstituteEntitiesDefault(1), 1);
    EXPECT_EQ(xmlLoadExtDtdDefaultValue, 2 | 4);
}

/// A file that another thread is still parsing: a pipe that nobody has written to yet.
class SlowFile {
public:
    explicit SlowFile(const std::string& name)
    {
        EXPECT_EQ(mkfifo(name.c_str(), 0600), 0);
        opened_ = std::async(std::launch::async,
                             [this, name] { return kh_tree_init_parser(name.c_str(), &status); });
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while ((pipe_ = ::open(name.c_str(), O_WRONLY | O_NONBLOCK)) < 0 &&
               std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_GE(pipe_, 0) << "nobody reads the pipe";
    }

    /// Writes the file and returns the descriptor.
    long finish(std::string_view content)
    {
        EXPECT_EQ(write(pipe_, content.data(), content.size()), static_cast<ssize_t>(content.size()));
        close(pipe_);
        return opened_.get();
    }

    long status = untouched;

private:
    int pipe_ = -1;
    std::future<long> opened_;
};

TEST_F(Table, OpensOtherFilesWhileOneIsStillParsed)
{
    SlowFile slow(folder.path("pipe.xml"));
    EXPECT_TRUE(lock_is_free());
    const long other = open("<R/>");
    EXPECT_EQ(other, 1) << "the slow file has its slot";
    release(other);
    EXPECT_EQ(slow.finish("<R><A/></R>"), 0);
    EXPECT_EQ(slow.status, 0);
    EXPECT_STREQ(reinterpret_cast<const char*>(global_current_status[0]->root->name), "R");
}

TEST_F(Table, DoesNotReleaseASlotThatIsStillParsed)
{
    SlowFile slow(folder.path("pipe.xml"));
    long fd = 0;
    EXPECT_EQ(outcome_of([&](long* ierr) { kh_tree_rewind(&fd, ierr); }),
              failure(KH_ERR_NO_DOCUMENT, "kh_tree_rewind"))
        << "nobody can use it yet";
    EXPECT_EQ(KH_get_file_name(0), nullptr);
    release(0);
    create();
    kh_tree_cleanup_all_parser();
    EXPECT_EQ(create(), 1) << "the slow file keeps its slot";
    EXPECT_EQ(slow.finish("<R/>"), 0);
    EXPECT_EQ(slow.status, 0);
    EXPECT_EQ(KH_get_file_name(0), folder.path("pipe.xml"));
    release(0);
    EXPECT_EQ(create(), 0);
}

TEST_F(Table, FreesTheSlotOfASlowFileThatDoesNotParse)
{
    SlowFile slow(folder.path("pipe.xml"));
    EXPECT_EQ(slow.finish("<R>"), 0);
    EXPECT_EQ(slow.status, KH_ERR_PARSE);
    EXPECT_EQ(create(), 0);
}

TEST_F(Table, GivesThreadsDescriptorsOfTheirOwn)
{
    const std::string name = folder.file("shared.xml", "<R><A/><A/></R>");
    constexpr int rounds = 50;
    const auto work = [&] {
        for (int i = 0; i < rounds; ++i) {
            std::set<long> mine = {open_file(name), create(), open_file(name)};
            EXPECT_EQ(mine.size(), 3u);
            for (long fd : mine) {
                long status = untouched;
                kh_tree_go_to_path_node(&fd, "/R/A[2]", &status);
                EXPECT_EQ(status, global_current_status[fd]->file_name ? KH_OK : KH_ERR_NO_ROOT);
                release(fd);
            }
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(create(), 0) << "every slot was released";
}

xmlNode some_node = {};

/// A function that reports the descriptor checks.
struct Function {
    const char* name;
    std::function<void(long* fd, long* ierr)> call;
    bool needs_root = true;
};

void PrintTo(const Function& function, std::ostream* stream)
{
    *stream << function.name;
}

const Function functions[] = {
    {"kh_tree_rewind", kh_tree_rewind},
    {"kh_tree_go_to_element_node", [](long* fd, long* ierr) { kh_tree_go_to_element_node(fd, "A", ierr); }},
    {"kh_tree_go_to_next_element_node", kh_tree_go_to_next_element_node},
    {"kh_tree_go_to_parent", [](long* fd, long* ierr) { kh_tree_go_to_parent(fd, &some_node, ierr); }, false},
    {"kh_tree_chop_path", [](long* fd, long* ierr) { kh_tree_chop_path(fd, "/R/A", ierr); }, false},
    {"kh_tree_go_to_stack_node", kh_tree_go_to_stack_node},
    {"kh_tree_go_to_path_node", [](long* fd, long* ierr) { kh_tree_go_to_path_node(fd, "/R/A", ierr); }},
    {"kh_tree_go_to_stack_array_node",
     [](long* fd, long* ierr) {
         long k = 0;
         kh_tree_go_to_stack_array_node(fd, &k, ierr);
     }},
    {"kh_tree_go_to_stack_from_array_node", kh_tree_go_to_stack_from_array_node},
    {"kh_tree_get_path",
     [](long* fd, long* ierr) {
         char path[100] = "";
         kh_tree_get_path(fd, path, ierr);
         EXPECT_STREQ(path, "");
     }},
};

class FunctionOfADocument : public testing::TestWithParam<Function> {};

TEST_P(FunctionOfADocument, ChecksRangeThenSlotThenRoot)
{
    const auto outcome = [](long* fd) { return outcome_of([fd](long* ierr) { GetParam().call(fd, ierr); }); };
    const std::string name = GetParam().name;
    for (long fd : {512L, -1L, 1L << 40})
        EXPECT_EQ(outcome(&fd), failure(KH_ERR_DESCRIPTOR, name)) << "fd " << fd;
    long unused = 511;
    EXPECT_EQ(outcome(&unused), failure(KH_ERR_NO_DOCUMENT, name));
    if (GetParam().needs_root) {
        Document empty;
        EXPECT_EQ(outcome(&empty.fd), failure(KH_ERR_NO_ROOT, name));
        EXPECT_EQ(empty.current(), nullptr);
    }
}

TEST_P(FunctionOfADocument, RefusesANullDescriptor)
{
    EXPECT_EQ(outcome_of([](long* ierr) { GetParam().call(nullptr, ierr); }),
              missing_argument(GetParam().name));
}

TEST_P(FunctionOfADocument, ToleratesANullStatus)
{
    long bad = 512;
    GetParam().call(&bad, nullptr);
    GetParam().call(nullptr, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Every, FunctionOfADocument, testing::ValuesIn(functions),
                         [](const auto& function) { return std::string(function.param.name); });

/// Forks. \return what the child makes of a body, or the signal that ended it after ten seconds
int status_of_child(const std::function<bool()>& body)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(10);
        _exit(body() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

bool opens_and_releases()
{
    long status = untouched;
    long fd = kh_tree_create(&status);
    return status == KH_OK && kh_tree_cleanup_parser(&fd, &status) == KH_OK;
}

TEST(Fork, FreesTheLockInTheChildWhoeverHoldsIt)
{
    const Document kept; // libxml2 stays as it is while there are documents
    std::promise<void> locked, forked;
    std::thread other([&] {
        pthread_mutex_lock(&parser_mutex);
        locked.set_value();
        forked.get_future().wait();
        pthread_mutex_unlock(&parser_mutex);
    });
    locked.get_future().wait();
    EXPECT_EQ(status_of_child(opens_and_releases), 0);
    forked.set_value();
    other.join();
    EXPECT_TRUE(opens_and_releases());
    pthread_mutex_lock(&parser_mutex);
    EXPECT_EQ(status_of_child(opens_and_releases), 0);
    EXPECT_NE(pthread_mutex_trylock(&parser_mutex), 0) << "the parent still holds it";
    pthread_mutex_unlock(&parser_mutex);
}

TEST_F(Table, KeepsNoSlotInAChildForAFileThatTheParentOpens)
{
    SlowFile slow(folder.path("pipe.xml"));
    EXPECT_EQ(status_of_child([] { return create() == 0; }), 0);
    EXPECT_EQ(create(), 1) << "the parent still opens it";
    EXPECT_EQ(slow.finish("<R/>"), 0);
    EXPECT_EQ(slow.status, 0);
}

/// Memory functions that know their blocks.
struct OwnMemory {
    static inline std::set<void*> blocks;
    static inline int foreign = 0; ///< blocks of others that they were given

    static void* take(void* block)
    {
        blocks.insert(block);
        return block;
    }
    static void* give_up(void* block)
    {
        foreign += block && blocks.erase(block) == 0;
        return block;
    }
    static void* allocate(std::size_t size) { return take(std::malloc(size)); }
    static void* reallocate(void* block, std::size_t size)
    {
        return take(std::realloc(give_up(block), size));
    }
    static char* copy(const char* text) { return static_cast<char*>(take(strdup(text))); }
    static void release(void* block) { std::free(give_up(block)); }
};

// The dictionary of a closed document is kept for the next one, unless libxml2's memory comes from elsewhere then.
TEST_F(Table, LetsTheHostChangeTheMemoryFunctionsOnceAllIsClosed)
{
    if (!__libc_single_threaded)
        GTEST_SKIP() << "nothing is shut down while there are threads";
    release(open("<R/>"));
    ASSERT_EQ(xmlMemSetup(OwnMemory::release, OwnMemory::allocate, OwnMemory::reallocate, OwnMemory::copy),
              0);
    const long one = open("<R/>"), other = open("<R/>");
    release(one);
    release(other);
    EXPECT_EQ(OwnMemory::foreign, 0);
    EXPECT_TRUE(OwnMemory::blocks.empty());
    ASSERT_EQ(xmlMemSetup(std::free, std::malloc, std::realloc, strdup), 0);
    release(open("<R/>"));
}

TEST_F(Table, LetsAChildEndWhileThreadsOfTheParentUseTheParser)
{
    open("<R/>");
    release(open("<R/>"));
    std::atomic<bool> ends{false};
    std::thread other([&] {
        while (!ends)
            xmlFreeDoc(xmlReadMemory("<R/>", 4, nullptr, nullptr, 0));
    });
#ifdef KALV_SANITIZED
    constexpr int children = 2; // the thread sanitizer takes a second to end one
#else
    constexpr int children = 100;
#endif
    for (int i = 0; i < children; ++i) {
        const pid_t child = fork();
        if (child == 0) {
#ifdef KALV_SANITIZED
            forked_child = true;
#endif
            alarm(60);
            std::exit(0);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_FALSE(WIFSIGNALED(status)) << WTERMSIG(status);
    }
    ends = true;
    other.join();
}

TEST(FunctionWithoutAStatus, GivesNullOrZeroForABadDescriptor)
{
    long bad[] = {512, -1, 511};
    for (long* fd : {&bad[0], &bad[1], &bad[2], static_cast<long*>(nullptr)}) {
        EXPECT_EQ(support::report_of([fd] {
                      EXPECT_EQ(kh_tree_get_next_element_node(fd, 0), nullptr);
                      EXPECT_EQ(kh_tree_get_next_element_node(fd, 1), nullptr);
                      kh_tree_set_requested_tag(fd, "A");
                      EXPECT_EQ(kh_tree_is_attribute(fd), 0);
                      EXPECT_EQ(kh_tree_go_to_next_sibling(fd, &some_node, "A"), nullptr);
                      EXPECT_EQ(kh_tree_go_to_child(fd, &some_node, "A", 0), nullptr);
                      EXPECT_EQ(kh_tree_distance_from_root(fd, &some_node), 0);
                  }),
                  "");
    }
}

} // namespace
