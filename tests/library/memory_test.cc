// Calls without memory whose outcome is more than a status. The program's own malloc stands before the C library's,
// which is why these tests have a program to themselves.
#include "support/outcome.h"
#include "support/plain.h"
#include "support/sanitized.h"

#include <algorithm>
#include <cerrno>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

thread_local long calls_until_failure = -1; ///< below 0 where none fails
thread_local bool fails_from_then_on = false;

} // namespace

#ifndef KALV_SANITIZED // a sanitizer's own allocator would be bypassed
extern "C" void* __libc_malloc(std::size_t size);

extern "C" void* __libc_realloc(void* block, std::size_t size);

static bool may_allocate()
{
    if (calls_until_failure < 0 || --calls_until_failure >= 0)
        return true;
    if (fails_from_then_on)
        calls_until_failure = 0;
    errno = ENOMEM;
    return false;
}

extern "C" void* malloc(std::size_t size) noexcept
{
    return may_allocate() ? __libc_malloc(size) : nullptr;
}

extern "C" void* realloc(void* block, std::size_t size) noexcept
{
    return may_allocate() ? __libc_realloc(block, size) : nullptr;
}

// The index of elements lies in mappings of its own.
extern "C" void* mmap(void* start, std::size_t size, int protection, int flags, int fd, off_t offset) noexcept
{
    return may_allocate()
               ? reinterpret_cast<void*>(syscall(SYS_mmap, start, size, protection, flags, fd, offset))
               : MAP_FAILED;
}

extern "C" void* mremap(void* block, std::size_t old_size, std::size_t size, int flags, ...) noexcept
{
    return may_allocate() ? reinterpret_cast<void*>(syscall(SYS_mremap, block, old_size, size, flags))
                          : MAP_FAILED;
}
#endif

namespace {

class WithoutMemory : public testing::Test {
protected:
    void SetUp() override
    {
#ifdef KALV_SANITIZED
        GTEST_SKIP() << "a sanitizer has its own allocator";
#endif
    }
};

/// Runs a call with the allocation of a number failing. \return whether there was one
template <class Call>
bool fails_at(long allocation, bool from_then_on, const Call& call)
{
    calls_until_failure = allocation;
    fails_from_then_on = from_then_on;
    call();
    const bool failed = calls_until_failure < 0 || from_then_on;
    calls_until_failure = -1;
    return failed;
}

/// Writes a document whose declarations have to be escaped, with each allocation failing in turn.
void expect_whole_files(long (*write)(long*, const char*, long*), bool from_then_on)
{
    const support::TemporaryFolder folder;
    const std::string source = folder.file(
        "source.xml", "<r xmlns='a&lt;b'><a><b/></a><p:s xmlns:p='&lt;'><q:t xmlns:q='&lt;&lt;'/></p:s></r>");
    const std::string target = folder.file("target.xml", "old");
    long refused = 0, saved = 0;
    for (long allocation = 0; allocation < 120; ++allocation) {
        support::Document document = support::Document::file(source);
        long status = support::untouched;
        fails_at(allocation, from_then_on, [&] { write(&document.fd, target.c_str(), &status); });
        const std::string content = support::content_of(target);
        if (content == "old") {
            EXPECT_LT(status, 0) << allocation;
            ++refused;
        } else {
            EXPECT_TRUE(support::read_plainly(content)) << allocation << ": " << content;
            folder.file("target.xml", "old");
            ++saved;
        }
        EXPECT_EQ(folder.entries(), 2U) << allocation;
    }
    EXPECT_GT(refused, 3);
    EXPECT_GT(saved, 3);
}

TEST_F(WithoutMemory, NeverLeavesAFileThatNoParserReads)
{
    for (const bool from_then_on : {false, true}) {
        expect_whole_files(kh_tree_write, from_then_on);
        expect_whole_files(kh_tree_save, from_then_on);
    }
}

/// Puts a node beside a text, with each allocation failing in turn. \return how often that was refused
long refused_beside_text(bool is_text, decltype(xmlAddNextSibling)* insert, bool from_then_on)
{
    const char* before = "<?xml version=\"1.0\"?>\n<r>text</r>\n";
    long refused = 0;
    long status = KH_ERR_MEMORY;
    for (long allocation = 0; status < 0 && allocation < 100; ++allocation) {
        support::Document document("<r>text</r>");
        xmlNode* text = document.root()->children;
        xmlNode* added = is_text ? xmlNewDocText(document.slot()->doc, BAD_CAST "more")
                                 : xmlNewDocNode(document.slot()->doc, nullptr, BAD_CAST "b", nullptr);
        fails_at(allocation, from_then_on,
                 [&] { kh_tree_add_sibling(&document.fd, text, added, insert, &status); });
        EXPECT_EQ(document.written() == before, status < 0) << allocation;
        if (status < 0) {
            xmlFreeNode(added);
            ++refused;
        }
    }
    EXPECT_EQ(status, KH_OK);
    return refused;
}

// What is put beside a text becomes part of it where it is text, as its indentation is. That takes memory.
TEST_F(WithoutMemory, KeepsTheTextBesideWhichASiblingIsRefused)
{
    for (const bool from_then_on : {false, true}) {
        for (const auto insert : {xmlAddNextSibling, xmlAddPrevSibling}) {
            EXPECT_EQ(refused_beside_text(false, insert, from_then_on), 3);
            EXPECT_EQ(refused_beside_text(true, insert, from_then_on), 4);
        }
    }
}

/// The numbers of an array, read without an allocation of the test's own.
class Numbers {
public:
    Numbers(support::Document& document, const char* path)
    {
        kh_tree_path_read_integer_node_array(&document.fd, path, &values_, &count_, &status);
    }
    ~Numbers() { std::free(values_); }
    Numbers(const Numbers&) = delete;
    Numbers& operator=(const Numbers&) = delete;
    bool are(const std::vector<long>& expected) const
    {
        return status == KH_OK && std::equal(values_, values_ + count_, expected.begin(), expected.end());
    }

    long status = support::untouched;

private:
    long* values_ = nullptr;
    long count_ = 0;
};

// The second time, an index of all elements is made, which is as good as none.
TEST_F(WithoutMemory, ReadsElementsWithoutTheirIndex)
{
    std::string text = "<r>";
    std::vector<long> expected;
    for (long i = 0; i < 600; ++i) {
        text += "<i>" + std::to_string(i) + "</i>";
        expected.push_back(i);
    }
    text += "</r>";
    const char* path = "/r/i[*]";
    for (const bool from_then_on : {false, true}) {
        long refused = 0;
        long read = 0;
        bool failed = true;
        for (long allocation = 0; failed && allocation < 200; ++allocation) {
            support::Document document(text);
            EXPECT_TRUE(Numbers(document, path).are(expected));
            long status = support::untouched;
            bool is_right = false;
            failed = fails_at(allocation, from_then_on, [&] {
                const Numbers numbers(document, path);
                status = numbers.status;
                is_right = numbers.are(expected);
            });
            failed = from_then_on ? status != KH_OK : failed;
            EXPECT_TRUE(is_right || status == KH_ERR_MEMORY) << allocation;
            ++(is_right ? read : refused);
            EXPECT_TRUE(Numbers(document, path).are(expected)) << allocation;
        }
        EXPECT_GT(refused, 2);
        EXPECT_GT(read, from_then_on ? 0 : 2);
    }
}

TEST_F(WithoutMemory, TakesAPathApartAnewThatHasAnotherIndex)
{
    std::string text = "<r><l>";
    for (int i = 1; i <= 2000; ++i)
        text += "<i>" + std::to_string(i) + "</i>";
    support::Document document(text + "</l></r>");
    const std::string path = "/r/././././././././././././l/i[";
    long value = -1;
    long status = support::untouched;
    const auto read = [&](const std::string& index) {
        const std::string whole = path + index + "]";
        return [&document, &value, &status, whole] {
            kh_tree_path_read_integer_node_value(&document.fd, whole.c_str(), &value, &status);
        };
    };
    for (long allocation = 0; allocation < 6; ++allocation) {
        for (const char* index : {"10", "100", "1000"}) {
            kh_tree_chop_path(&document.fd, "/r", &status);
            read("1")();
            EXPECT_EQ(value, 1);
            fails_at(allocation, false, read(index));
            EXPECT_EQ(status, KH_OK) << index;
            EXPECT_EQ(value, std::stol(index));
        }
    }
}

TEST_F(WithoutMemory, TakesNoEmptyPathForTheOneThatItCouldNotRemember)
{
    support::Document document("<r><element_of_a_long_name>7</element_of_a_long_name></r>");
    for (long allocation = 0; allocation < 6; ++allocation) {
        long status = support::untouched;
        fails_at(allocation, false,
                 [&] { kh_tree_go_to_path_node(&document.fd, "/r/element_of_a_long_name", &status); });
        EXPECT_EQ(status == KH_OK || status == KH_ERR_MEMORY, true) << status;
        EXPECT_EQ(kh_tree_go_to_path_node(&document.fd, "", &status), KH_ERR_ARGUMENT);
        EXPECT_EQ(document.slot()->stack_count, 0);
    }
}

TEST_F(WithoutMemory, ReportsAllTheSameAndKeepsNoLastReport)
{
    long fd = 512;
    long status = support::untouched;
    long length = support::untouched;
    std::thread([&] { // which has reported nothing yet
        fails_at(0, true, [&] { kh_tree_rewind(&fd, &status); });
        length = KH_last_report(nullptr, 0);
    })
        .join();
    EXPECT_EQ(status, KH_ERR_DESCRIPTOR);
    EXPECT_EQ(length, 0);
}

} // namespace
