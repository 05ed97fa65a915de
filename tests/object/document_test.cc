// The life of an object's document, and who owns its slot.
#include "object/thrown.h"

#include <kalv/document.h>
#include <optional>
#include <stdexcept>
#include <type_traits>

namespace {

using KALV::XmlFile;
using object::nothing;
using object::ObjectTest;
using object::taken_slots;
using object::Thrown;
using object::thrown_by;

static_assert(!std::is_copy_constructible_v<XmlFile> && !std::is_copy_assignable_v<XmlFile>);
static_assert(!std::has_virtual_destructor_v<XmlFile>);
static_assert(!std::is_nothrow_destructible_v<XmlFile>, "a failed release is thrown");

/// Makes the table's lock fail while it lives: a thread that holds it and asks again is refused.
class FailingLock {
public:
    FailingLock()
    {
        pthread_mutexattr_t checking;
        pthread_mutexattr_init(&checking);
        pthread_mutexattr_settype(&checking, PTHREAD_MUTEX_ERRORCHECK);
        pthread_mutex_destroy(&parser_mutex);
        pthread_mutex_init(&parser_mutex, &checking);
        pthread_mutexattr_destroy(&checking);
        pthread_mutex_lock(&parser_mutex);
    }
    ~FailingLock()
    {
        pthread_mutex_unlock(&parser_mutex);
        pthread_mutex_destroy(&parser_mutex);
        pthread_mutex_init(&parser_mutex, nullptr);
    }
    FailingLock(const FailingLock&) = delete;
    FailingLock& operator=(const FailingLock&) = delete;
};

/// Releases a slot that nobody owns any more.
void release(long fd)
{
    long status = 0;
    kh_tree_cleanup_parser(&fd, &status);
    EXPECT_EQ(status, 0);
}

constexpr char small[] = "<R><a>1</a></R>";

class XmlFileLife : public ObjectTest {
protected:
    const std::string small_file = folder.file("small.xml", small);
    const std::string bad_file = folder.file("bad.xml", "<R>");
};

TEST_F(XmlFileLife, BeginsWithoutDocument)
{
    EXPECT_EQ(file.getId(), -1);
    EXPECT_EQ(file.getFileName(), "");
}

TEST_F(XmlFileLife, OwnsTheDocumentOfAFile)
{
    const long before = taken_slots();
    {
        const XmlFile opened(small_file);
        EXPECT_EQ(taken_slots(), before + 1);
        ASSERT_GE(opened.getId(), 0);
        EXPECT_STREQ(KH_get_file_name(opened.getId()), small_file.c_str());
        EXPECT_EQ(opened.getFileName(), small_file);
        EXPECT_EQ(opened.currentPathName(), "/R");
    }
    EXPECT_EQ(taken_slots(), before);
}

TEST_F(XmlFileLife, IsNotBuiltFromABadFile)
{
    EXPECT_EQ(thrown_by([&] { XmlFile opened(bad_file); }), (Thrown{"XmlFile::read", KH_ERR_PARSE}));
    EXPECT_EQ(thrown_by([&] { XmlFile opened(folder.path("missing.xml")); }),
              (Thrown{"XmlFile::read", KH_ERR_PARSE}));
}

TEST_F(XmlFileLife, CreatesAnEmptyDocument)
{
    const long fd = file.create();
    ASSERT_GE(fd, 0);
    EXPECT_EQ(file.getId(), fd);
    ASSERT_NE(global_current_status[fd], nullptr);
    EXPECT_EQ(global_current_status[fd]->root, nullptr);
    EXPECT_EQ(file.getFileName(), "");
}

TEST_F(XmlFileLife, KeepsTheNameOfTheFileReadLast)
{
    file.read(small_file);
    EXPECT_EQ(thrown_by([&] { file.read(bad_file); }), (Thrown{"XmlFile::read", KH_ERR_PARSE}));
    EXPECT_EQ(file.getId(), -1);
    EXPECT_EQ(file.getFileName(), small_file);
    file.create();
    EXPECT_EQ(file.getFileName(), small_file);
}

// The new document is tried first, so it cannot get the slot of the one that it replaces.
TEST_F(XmlFileLife, ReleasesTheDocumentHeldBeforeOnceTheNewOneIsOpen)
{
    const long first = file.create();
    file.read(small_file);
    const long second = file.getId();
    EXPECT_NE(second, first);
    EXPECT_EQ(global_current_status[first], nullptr);
    EXPECT_EQ(file.create(), first);
    EXPECT_EQ(global_current_status[second], nullptr);
}

TEST_F(XmlFileLife, ReleasesTheDocumentHeldBeforeWhenTheNewOneFails)
{
    const long held = file.create();
    EXPECT_EQ(thrown_by([&] { file.read(bad_file); }), (Thrown{"XmlFile::read", KH_ERR_PARSE}));
    EXPECT_EQ(file.getId(), -1);
    EXPECT_EQ(global_current_status[held], nullptr);
}

TEST_F(XmlFileLife, FindsTheTableFull)
{
    std::vector<XmlFile> others;
    while (taken_slots() < 511) {
        others.emplace_back();
        others.back().create();
    }
    file.create();
    XmlFile one_more;
    EXPECT_EQ(thrown_by([&] { one_more.create(); }), (Thrown{"XmlFile::create", KH_ERR_TABLE_FULL}));
    EXPECT_EQ(one_more.getId(), -1);
    EXPECT_EQ(thrown_by([&] { one_more.read(small_file); }), (Thrown{"XmlFile::read", KH_ERR_TABLE_FULL}));
    EXPECT_EQ(one_more.getId(), -1);
    EXPECT_EQ(thrown_by([&] { file.create(); }), (Thrown{"XmlFile::create", KH_ERR_TABLE_FULL}));
    EXPECT_EQ(file.getId(), -1);
    EXPECT_EQ(taken_slots(), 511);
}

TEST_F(XmlFileLife, WritesToTheFileThatWasRead)
{
    file.read(small_file);
    file.setValue("/R/a", "2");
    EXPECT_EQ(file.write(), 0);
    EXPECT_NE(support::content_of(small_file).find("<a>2</a>"), std::string::npos);
    EXPECT_EQ(file.getFileName(), small_file);
}

TEST_F(XmlFileLife, WritesToAnotherFileAndKeepsItsOwnName)
{
    const std::string other = folder.path("other.xml");
    file.read(small_file);
    file.setValue("/R/a", "2");
    const long fd = file.getId();
    EXPECT_EQ(file.write(other), 0);
    EXPECT_EQ(support::content_of(small_file), small);
    EXPECT_NE(support::content_of(other).find("<a>2</a>"), std::string::npos);
    EXPECT_EQ(file.getFileName(), small_file);
    EXPECT_EQ(file.getId(), fd);
}

TEST_F(XmlFileLife, LetsGoOfADocumentThatItCannotWrite)
{
    file.create();
    file.createRoot("R");
    const long fd = file.getId();
    EXPECT_EQ(thrown_by([&] { file.write(folder.path("missing/file.xml")); }),
              (Thrown{"XmlFile::write", KH_ERR_SAVE}));
    EXPECT_EQ(file.getId(), -1);

    long descriptor = fd;
    long status = 0;
    kh_tree_write(&descriptor, folder.path("saved.xml").c_str(), &status);
    EXPECT_EQ(status, 0);
    EXPECT_NE(support::content_of(folder.path("saved.xml")).find("<R>"), std::string::npos);
    release(fd);
}

TEST_F(XmlFileLife, HasNoNameToWriteACreatedDocumentTo)
{
    const long fd = file.create();
    file.createRoot("R");
    EXPECT_EQ(thrown_by([&] { file.write(); }), (Thrown{"XmlFile::write", KH_ERR_SAVE}));
    release(fd);
}

TEST_F(XmlFileLife, IsCleanedOnce)
{
    file.read(small_file);
    const long fd = file.getId();
    EXPECT_EQ(file.clean(), 0);
    EXPECT_EQ(file.getId(), -1);
    EXPECT_EQ(global_current_status[fd], nullptr);
    EXPECT_EQ(file.getFileName(), small_file);
    EXPECT_EQ(thrown_by([&] { file.clean(); }), (Thrown{"XmlFile::clean", KH_ERR_DESCRIPTOR}));
    file.read(small_file);
    EXPECT_EQ(file.getId(), fd);
}

// After clean() the slot may be somebody else's: neither another clean() nor the destructor may release that.
TEST_F(XmlFileLife, NeverReleasesTheSlotOfAnother)
{
    std::optional<XmlFile> cleaned(std::in_place);
    const long fd = cleaned->create();
    cleaned->clean();
    EXPECT_EQ(file.create(), fd);
    thrown_by([&] { cleaned->clean(); });
    cleaned.reset();
    EXPECT_NE(global_current_status[fd], nullptr);
}

TEST_F(XmlFileLife, ThrowsFromTheDestructorWhenTheReleaseFails)
{
    std::optional<XmlFile> failing(std::in_place);
    const long fd = failing->create();
    {
        const FailingLock lock;
        EXPECT_EQ(thrown_by([&] { XmlFile last(std::move(*failing)); }),
                  (Thrown{"XmlFile::~XmlFile", KH_ERR_LOCK}));
    }
    release(fd);
}

TEST_F(XmlFileLife, ThrowsNothingFromTheDestructorWhileAnExceptionUnwinds)
{
    const long fd = file.create();
    {
        const FailingLock lock;
        EXPECT_THROW(
            {
                XmlFile last(std::move(file));
                throw std::runtime_error("unwinding");
            },
            std::runtime_error);
    }
    release(fd);
}

TEST_F(XmlFileLife, DoesNotOpenWithoutTheLock)
{
    {
        const FailingLock lock;
        EXPECT_EQ(thrown_by([&] { file.create(); }), (Thrown{"XmlFile::create", KH_ERR_LOCK}));
        EXPECT_EQ(file.getId(), -1);
        EXPECT_EQ(thrown_by([&] { file.read(small_file); }), (Thrown{"XmlFile::read", KH_ERR_LOCK}));
        EXPECT_EQ(file.getId(), -1);
    }
    const long fd = file.create();
    {
        const FailingLock lock;
        EXPECT_EQ(thrown_by([&] { file.clean(); }), (Thrown{"XmlFile::clean", KH_ERR_LOCK}));
        EXPECT_EQ(file.getId(), -1);
    }
    release(fd);
}

TEST_F(XmlFileLife, MovesItsDocument)
{
    file.read(small_file);
    file.toPath("/R/a");
    const long fd = file.getId();
    XmlFile target(std::move(file));
    EXPECT_EQ(target.getId(), fd);
    EXPECT_EQ(target.getFileName(), small_file);
    EXPECT_EQ(target.currentPathName(), "/R/a");
    EXPECT_EQ(file.getId(), -1);
    EXPECT_EQ(file.getFileName(), "");
    EXPECT_EQ(thrown_by([&] { file.root(); }), (Thrown{"XmlFile::root", KH_ERR_DESCRIPTOR}));
    EXPECT_NE(file.create(), fd);
}

TEST_F(XmlFileLife, ReleasesItsDocumentWhenAnotherMovesIn)
{
    const long held = file.create();
    XmlFile source(small_file);
    const long fd = source.getId();
    EXPECT_EQ(&(file = std::move(source)), &file);
    EXPECT_EQ(file.getId(), fd);
    EXPECT_EQ(file.getFileName(), small_file);
    EXPECT_EQ(global_current_status[held], nullptr);
    EXPECT_EQ(source.getId(), -1);
    EXPECT_EQ(source.getFileName(), "");
    file = XmlFile();
    EXPECT_EQ(file.getId(), -1);
    EXPECT_EQ(global_current_status[fd], nullptr);
}

TEST_F(XmlFileLife, SurvivesAMoveToItself)
{
    file.read(small_file);
    const long fd = file.getId();
    XmlFile& same = file;
    file = std::move(same);
    EXPECT_EQ(file.getId(), fd);
    EXPECT_EQ(file.getFileName(), small_file);
    EXPECT_NE(global_current_status[fd], nullptr);
}

TEST_F(XmlFileLife, MovesInWhateverBecomesOfTheDocumentHeldBefore)
{
    const long held = file.create();
    XmlFile source;
    const long fd = source.create();
    {
        const FailingLock lock;
        EXPECT_EQ(thrown_by([&] { file = std::move(source); }), (Thrown{"XmlFile::operator=", KH_ERR_LOCK}));
    }
    EXPECT_EQ(file.getId(), fd);
    EXPECT_EQ(source.getId(), -1);
    release(held);
}

/// Moves a document away while an exception unwinds.
struct MovesAtTheEnd {
    XmlFile& target;
    XmlFile& source;
    ~MovesAtTheEnd() { target = std::move(source); }
};

TEST_F(XmlFileLife, ThrowsNothingFromAMoveWhileAnExceptionUnwinds)
{
    const long held = file.create();
    XmlFile source;
    const long fd = source.create();
    const auto unwind = [&] {
        const MovesAtTheEnd moves{file, source};
        throw std::runtime_error("unwinding");
    };
    {
        const FailingLock lock;
        EXPECT_THROW(unwind(), std::runtime_error);
    }
    EXPECT_EQ(file.getId(), fd);
    release(held);
}

TEST_F(XmlFileLife, LivesInContainersAndResults)
{
    const auto opened = [&] {
        XmlFile result(small_file);
        result.toPath("/R/a");
        return result;
    };
    std::vector<XmlFile> files;
    const long before = taken_slots();
    for (int i = 0; i < 20; ++i)
        files.push_back(opened());
    EXPECT_EQ(taken_slots(), before + 20);
    for (const XmlFile& each : files)
        EXPECT_EQ(each.currentPathName(), "/R/a");
    files.erase(files.begin(), files.begin() + 5);
    EXPECT_EQ(taken_slots(), before + 15);
    EXPECT_EQ(thrown_by([&] { files.clear(); }), nothing);
    EXPECT_EQ(taken_slots(), before);
}

TEST_F(XmlFileLife, IsReadFromMemoryAndHandedOutAsAString)
{
    const std::string bytes = "<?xml version=\"1.0\"?>\n<R>\n  <A>1</A>\n</R>\n";
    file.readMemory(bytes);
    EXPECT_EQ(file.getFileName(), "");
    EXPECT_EQ(file.getPathValueAsInt("/R/A"), 1);
    EXPECT_EQ(file.toString(), bytes);
}

TEST_F(XmlFileLife, InAnEncodingWithZeroBytesIsHandedOutWhole)
{
    file.readMemory(std::string("\xff\xfe<\0R\0/\0>\0", 10));
    KALV::XmlFile again;
    again.readMemory(file.toString());
    EXPECT_EQ(again.currentElementName(), "R");
}

TEST_F(XmlFileLife, FromBadMemoryLeavesNoDocument)
{
    EXPECT_EQ(thrown_by([&] { file.readMemory("<R>"); }), (Thrown{"XmlFile::readMemory", KH_ERR_PARSE}));
    EXPECT_EQ(file.getId(), -1);
    EXPECT_EQ(thrown_by([&] { file.toString(); }), (Thrown{"XmlFile::toString", KH_ERR_DESCRIPTOR}));
    try {
        file.readMemory("<R>");
    } catch (const KALV::KalvError& error) {
        EXPECT_STREQ(error.what(),
                     "XmlFile::readMemory: KH: Error while parsing a file (-4)"
                     "\n\tFunction: kh_tree_init_memory\n\tmemory:1:4: Premature end of data in "
                     "tag R line 1");
    }
}

} // namespace
