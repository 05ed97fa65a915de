// Files whose system calls fail. The program's own open, fsync, fchmod and close stand before the C library's, which
// is why these tests have a program to themselves.
#include "support/outcome.h"

#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// The next so many calls of a function fail with an error.
struct Fault {
    int error = 0;
    int calls = 0;

    bool strikes()
    {
        if (calls == 0)
            return false;
        --calls;
        errno = error;
        return true;
    }
};

Fault open_fault; ///< of new files alone
Fault fsync_fault;
Fault fchmod_fault;
Fault close_fault;

template <class Function>
Function* original(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" int open(const char* name, int flags, ...)
{
    static auto* const forwarded = original<int(const char*, int, mode_t)>("open");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return (flags & O_EXCL) != 0 && open_fault.strikes() ? -1 : forwarded(name, flags, mode);
}

extern "C" int fsync(int fd)
{
    static auto* const forwarded = original<int(int)>("fsync");
    return fsync_fault.strikes() ? -1 : forwarded(fd);
}

extern "C" int fchmod(int fd, mode_t mode) noexcept
{
    static auto* const forwarded = original<int(int, mode_t)>("fchmod");
    return fchmod_fault.strikes() ? -1 : forwarded(fd, mode);
}

// The file is closed all the same, as Linux does it: what fails is the report of it.
extern "C" int close(int fd)
{
    static auto* const forwarded = original<int(int)>("close");
    const int result = forwarded(fd);
    return close_fault.strikes() ? -1 : result;
}

namespace {

using support::content_of;
using support::Outcome;
using support::outcome_of;

class FaultyFile : public testing::Test {
protected:
    ~FaultyFile() override { open_fault = fsync_fault = fchmod_fault = close_fault = {}; }

    Outcome write()
    {
        return outcome_of([&](long* ierr) { kh_tree_write(&document.fd, file.c_str(), ierr); });
    }
    void expect_saved(const char* what)
    {
        EXPECT_EQ(write(), support::success) << what;
        EXPECT_EQ(content_of(file), "<?xml version=\"1.0\"?>\n<r/>\n") << what;
        EXPECT_EQ(folder.entries(), 1U) << what;
        folder.file("file.xml", "old");
    }
    void expect_refused(const char* what)
    {
        EXPECT_EQ(write(), support::failure(KH_ERR_SAVE, "kh_tree_write")) << what;
        EXPECT_EQ(content_of(file), "old") << what;
        EXPECT_EQ(folder.entries(), 1U) << what;
    }

    support::TemporaryFolder folder;
    const std::string file = folder.file("file.xml", "old");
    support::Document document{"<r/>"};
};

TEST_F(FaultyFile, IsWrittenInPlaceWhereTheFolderIsClosed)
{
    for (const int error : {EACCES, EPERM, EROFS}) {
        open_fault = {error, 1};
        expect_saved(strerrorname_np(error));
    }
}

TEST_F(FaultyFile, StaysWhereNoOtherCanBeMade)
{
    for (const int error : {ENOSPC, EDQUOT, EIO, EMFILE, ENFILE}) {
        open_fault = {error, 1};
        expect_refused(strerrorname_np(error));
    }
}

TEST_F(FaultyFile, IsMadeUnderAnotherNameAndAfterASignal)
{
    for (const int error : {EEXIST, EINTR}) {
        open_fault = {error, 3};
        expect_saved(strerrorname_np(error));
    }
}

TEST_F(FaultyFile, TakesItsPlaceOnlyOnceItIsOnTheDisk)
{
    for (const int error : {EIO, ENOSPC, EDQUOT}) {
        fsync_fault = {error, 1};
        expect_refused(strerrorname_np(error));
        close_fault = {error, 1};
        expect_refused(strerrorname_np(error));
    }
}

TEST_F(FaultyFile, TakesItsPlaceWhereTheFileSystemKnowsNoDisk)
{
    for (const int error : {EINVAL, ENOTSUP, EROFS, EINTR}) {
        fsync_fault = {error, 1};
        expect_saved(strerrorname_np(error));
    }
    close_fault = {EINTR, 1};
    expect_saved("EINTR");
}

TEST_F(FaultyFile, TakesItsPlaceWithTheModeOfTheOldOneAlone)
{
    fchmod_fault = {EPERM, 1};
    expect_refused("EPERM");
}

TEST_F(FaultyFile, ThatIsWrittenInPlaceReportsAFailureOfTheLastStep)
{
    for (const auto& [error, status] : {std::pair{EIO, long{KH_ERR_SAVE}}, {EINTR, long{KH_OK}}}) {
        close_fault = {error, 1};
        EXPECT_EQ(outcome_of([&](long* ierr) { kh_tree_write(&document.fd, "/dev/null", ierr); }).status,
                  status)
            << error;
    }
}

} // namespace
