// A document table whose lock fails. The program's own pthread_mutex_lock and pthread_mutex_unlock stand
// before the C library's, which is why these tests have a program to themselves.
#include "support/outcome.h"

#include <atomic>
#include <cerrno>
#include <dlfcn.h>

namespace {

std::atomic<bool> lock_fails{false};
std::atomic<bool> unlock_fails{false};

using Operation = int (*)(pthread_mutex_t*);

/// Calls the C library's function of this name, looked up once.
int forwarded(std::atomic<Operation>& original, const char* name, pthread_mutex_t* mutex)
{
    if (!original)
        original = reinterpret_cast<Operation>(dlsym(RTLD_NEXT, name));
    return original.load()(mutex);
}

} // namespace

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    static std::atomic<Operation> original{nullptr};
    return mutex == &parser_mutex && lock_fails ? EAGAIN : forwarded(original, "pthread_mutex_lock", mutex);
}

// The mutex is released all the same: what fails is the report of it.
extern "C" int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept
{
    static std::atomic<Operation> original{nullptr};
    const int result = forwarded(original, "pthread_mutex_unlock", mutex);
    return mutex == &parser_mutex && unlock_fails ? EPERM : result;
}

namespace {

using support::failure;
using support::Outcome;
using support::outcome_of;
using support::untouched;

const char* const unlock_message = "!!! Error closing the threads. All threads will be closed\n";

class TableLock : public testing::Test {
protected:
    ~TableLock() override
    {
        lock_fails = unlock_fails = false;
        kh_tree_cleanup_all_parser();
    }

    /// A way to take a slot.
    struct Opening {
        const char* name;
        std::function<long(long* ierr)> open;
    };

    support::TemporaryFolder folder;
    const std::string file = folder.file("document.xml", "<R/>");
    const Opening openings[2] = {
        {"kh_tree_init_parser", [this](long* ierr) { return kh_tree_init_parser(file.c_str(), ierr); }},
        {"kh_tree_create", kh_tree_create}};
};

// Callers rely on the result 0, though it can be another document's descriptor.
TEST_F(TableLock, ThatCannotBeTakenOpensNothing)
{
    ASSERT_EQ(kh_tree_create(nullptr), 0);
    lock_fails = true;
    for (const Opening& opening : openings) {
        long result = untouched;
        EXPECT_EQ(outcome_of([&](long* ierr) { result = opening.open(ierr); }),
                  failure(KH_ERR_LOCK, opening.name));
        EXPECT_EQ(result, 0);
        EXPECT_EQ(global_current_status[1], nullptr);
    }
}

TEST_F(TableLock, ThatCannotBeTakenComesBeforeTheCheckOfTheName)
{
    lock_fails = true;
    EXPECT_EQ(outcome_of([](long* ierr) { kh_tree_init_parser(nullptr, ierr); }),
              failure(KH_ERR_LOCK, "kh_tree_init_parser"));
}

TEST_F(TableLock, ThatCannotBeTakenReleasesNothing)
{
    long fd = kh_tree_create(nullptr);
    kh_tree_create(nullptr);
    lock_fails = true;
    EXPECT_EQ(outcome_of([&](long* ierr) { EXPECT_EQ(kh_tree_cleanup_parser(&fd, ierr), KH_ERR_LOCK); }),
              failure(KH_ERR_LOCK, "kh_tree_cleanup_parser"));
    kh_tree_cleanup_all_parser();
    EXPECT_NE(global_current_status[0], nullptr);
    EXPECT_NE(global_current_status[1], nullptr);
}

TEST_F(TableLock, ThatFailsIsSilentOutsideVerboseMode)
{
    lock_fails = true;
    EXPECT_EQ(support::written_to_stderr([&] {
                  for (const Opening& opening : openings)
                      opening.open(nullptr);
              }),
              "");
}

TEST_F(TableLock, WorksAgainAfterAFailure)
{
    lock_fails = true;
    for (const Opening& opening : openings)
        opening.open(nullptr);
    lock_fails = false;
    long status = untouched;
    for (const Opening& opening : openings) {
        EXPECT_EQ(opening.open(&status), &opening - openings);
        EXPECT_EQ(status, 0);
    }
}

TEST_F(TableLock, ThatCannotBeGivenBackEndsAnOpeningWithoutAStatus)
{
    unlock_fails = true;
    for (const Opening& opening : openings) {
        long result = untouched;
        Outcome outcome = support::success;
        EXPECT_EQ(support::written_to_stdout(
                      [&] { outcome = outcome_of([&](long* ierr) { result = opening.open(ierr); }); }),
                  unlock_message)
            << opening.name;
        EXPECT_EQ(result, -1);
        EXPECT_EQ(outcome, support::success) << "the status stays as it was on entry";
    }
    unlock_fails = false;
    // The slots stay taken. That of the file holds nothing yet, and is released like any other.
    for (long fd : {0L, 1L}) {
        const bool is_created = fd == 1;
        ASSERT_NE(global_current_status[fd], nullptr);
        EXPECT_EQ(outcome_of([&](long* ierr) { kh_tree_rewind(&fd, ierr); }),
                  failure(is_created ? KH_ERR_NO_ROOT : KH_ERR_NO_DOCUMENT, "kh_tree_rewind"));
        EXPECT_EQ(kh_tree_cleanup_parser(&fd, nullptr), KH_OK);
        EXPECT_EQ(global_current_status[fd], nullptr);
    }
}

TEST_F(TableLock, ThatCannotBeGivenBackHidesARefusal)
{
    unlock_fails = true;
    long result = untouched;
    EXPECT_EQ(support::written_to_stdout([&] {
                  EXPECT_EQ(outcome_of([&](long* ierr) { result = kh_tree_init_parser(nullptr, ierr); }),
                            support::success);
              }),
              unlock_message);
    EXPECT_EQ(result, -1);
}

TEST_F(TableLock, ThatCannotBeGivenBackReleasesTheSlotAllTheSame)
{
    long fd = kh_tree_create(nullptr);
    unlock_fails = true;
    EXPECT_EQ(support::written_to_stdout([&] {
                  EXPECT_EQ(outcome_of([&](long* ierr) { kh_tree_cleanup_parser(&fd, ierr); }),
                            support::success);
              }),
              unlock_message);
    EXPECT_EQ(global_current_status[fd], nullptr);
}

} // namespace
