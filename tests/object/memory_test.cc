// Memory that runs out while an object hands over texts: each allocation in turn fails, and each time nothing
// is lost, appended by half or left behind. (Blocks of malloc that leak are seen in sanitized builds.)
#include "object/thrown.h"

#include <cstdlib>
#include <functional>
#include <new>

namespace {

constexpr long never = -1;
long allocations_until_failure = never;
long blocks_in_use = 0;

} // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    const bool fails = allocations_until_failure == 0;
    if (allocations_until_failure != never)
        --allocations_until_failure;
    void* block = fails ? nullptr : std::malloc(size > 0 ? size : 1);
    if (block)
        ++blocks_in_use;
    return block;
}

void* operator new(std::size_t size)
{
    if (void* block = operator new(size, std::nothrow))
        return block;
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept
{
    if (block)
        --blocks_in_use;
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    operator delete(block);
}

namespace {

using KALV::XmlFile;
using object::Thrown;
using object::thrown_by;
using Texts = std::vector<std::string>;

/// Runs a call again and again, letting one allocation after the other fail, until it succeeds. A failure is
/// std::bad_alloc or an exception with the code -6. \return how many allocations failed
long fail_each_allocation(const std::function<void()>& call, const std::function<void()>& after_failure)
{
    for (long n = 0;; ++n) {
        const long before = blocks_in_use;
        bool succeeded = false;
        allocations_until_failure = n;
        try {
            call();
            succeeded = true;
        } catch (const std::bad_alloc&) {
        } catch (const KALV::KalvError& error) {
            std::vector<long> codes;
            allocations_until_failure = never;
            error.getCodes(codes);
            EXPECT_EQ(codes, std::vector<long>{KH_ERR_MEMORY});
        }
        const bool no_more = succeeded && allocations_until_failure >= 0;
        allocations_until_failure = never;
        if (no_more)
            return n;
        EXPECT_FALSE(succeeded) << "allocation " << n << " failed unnoticed";
        EXPECT_LE(blocks_in_use, before) << "allocation " << n;
        after_failure();
        if (succeeded || testing::Test::HasFailure())
            return n;
    }
}

class XmlFileWithoutMemory : public object::ObjectTest {
protected:
    XmlFileWithoutMemory()
    {
        const std::string long_text(200, 'x');
        read("<A_root_element><a n=\"" + long_text + "\">" + long_text + "</a><a n=\"" + long_text + "\">" +
             long_text + "</a><List count=\"2\"><i>" + long_text + "</i><i>" + long_text +
             "</i></List></A_root_element>");
        // What a document keeps of the last paths grows without being asked for: now, so that no call that a
        // test counts needs to.
        for (const char name : {'a', 'b', 'c', 'd', 'e', 'f'})
            EXPECT_THROW(file.toPath("/A_root_element/List/" + std::string(100, name)), KALV::KalvError);
        file.toPath("/A_root_element/List/i[2]");
        file.currentPathName();
        file.root();
    }
};

TEST_F(XmlFileWithoutMemory, AppendsAllOrNothing)
{
    const std::string name = "a";
    const std::string path = "/A_root_element/a[*]/@n";
    Texts texts = {"before"};
    const auto unchanged = [&] { EXPECT_EQ(texts, Texts{"before"}); };
    EXPECT_GT(fail_each_allocation([&] { file.getElementArrayAsString(name, texts); }, unchanged), 2);
    EXPECT_EQ(texts.size(), 3u);
    texts = {"before"};
    texts.shrink_to_fit();
    EXPECT_GT(fail_each_allocation([&] { file.getPathArrayAsString(path, texts); }, unchanged), 2);
    EXPECT_EQ(texts.size(), 3u);
    texts = {"before"};
    texts.reserve(10);
    EXPECT_GT(fail_each_allocation([&] { file.getElementArrayAsString(name, texts); }, unchanged), 1);
    EXPECT_EQ(texts.size(), 3u);
}

TEST_F(XmlFileWithoutMemory, ReadsAllOrNothing)
{
    const std::string name = "a";
    const std::string attribute = "n";
    const std::string path = "/A_root_element/a[2]";
    const std::string list = "/A_root_element/a[*]";
    const std::string value(200, 'x');
    const auto nothing_to_check = [] {};
    const auto from_the_root = [&] { file.root(); };
    EXPECT_GT(fail_each_allocation([&] { file.getElementValueAsString(name); }, from_the_root), 0);
    EXPECT_GT(
        fail_each_allocation([&] { file.getAttributeValueAsString(name, attribute); }, nothing_to_check), 0);
    EXPECT_GT(fail_each_allocation([&] { file.getPathValueAsString(path); }, nothing_to_check), 0);
    EXPECT_GT(fail_each_allocation([&] { file.getFileName(); }, nothing_to_check), 0);
    EXPECT_GT(fail_each_allocation([&] { file.findValueInPath(list, value); }, nothing_to_check), 0);
    file.root();
    EXPECT_GT(fail_each_allocation([&] { file.findValueInElement(name, value); }, nothing_to_check), 0);
    EXPECT_GT(fail_each_allocation([&] { file.currentPathName(); }, nothing_to_check), 0);
}

TEST_F(XmlFileWithoutMemory, ReadsHeadersAndNames)
{
    file.create();
    file.createHeader(0);
    file.setFixedHeaderItem("Notes", std::string(200, 'x'));
    const std::string item = "Notes";
    std::string name = "QQQ_C_T_1234567890_1234567890_1234567890";
    const auto nothing_to_check = [] {};
    EXPECT_GT(fail_each_allocation([&] { file.getFixedHeader(); }, nothing_to_check), 0);
    EXPECT_GT(fail_each_allocation([&] { file.getFixedHeaderItem(item); }, nothing_to_check), 0);
    EXPECT_GT(fail_each_allocation([&] { file.getFileNameItems(name); }, nothing_to_check), 0);
}

// A failed allocation before the file is opened leaves the object as it was.
TEST_F(XmlFileWithoutMemory, KeepsItsDocumentOrHoldsTheNewOne)
{
    const std::string other = folder.file("a-name-that-is-too-long-for-no-allocation.xml", "<Other/>");
    const long fd = file.getId();
    EXPECT_GT(fail_each_allocation([&] { file.read(other); },
                                   [&] {
                                       if (file.getId() == fd) {
                                           EXPECT_EQ(file.getPathValueAsInt("/A_root_element/List/@count"),
                                                     2);
                                       } else {
                                           EXPECT_EQ(file.getId(), -1);
                                       }
                                   }),
              0);
    EXPECT_EQ(file.getFileName(), other);
    EXPECT_EQ(file.currentElementName(), "Other");
}

// The exception itself needs memory, too: where that runs out, its failure is what is thrown.
TEST_F(XmlFileWithoutMemory, ThrowsWhatItCan)
{
    const std::string name = "none";
    for (long n = 0;; ++n) {
        const long before = blocks_in_use;
        bool thrown = false;
        allocations_until_failure = n;
        try {
            file.toElement(name);
        } catch (const std::bad_alloc&) {
        } catch (const KALV::KalvError&) {
            thrown = true;
        }
        allocations_until_failure = never;
        EXPECT_EQ(blocks_in_use, before);
        if (thrown) {
            EXPECT_GT(n, 0);
            return;
        }
        ASSERT_LT(n, 100);
    }
}

} // namespace
