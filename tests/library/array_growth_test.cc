// The sizes that arrays take while they grow. The program's own realloc stands before the C library's, which
// is why these tests have a program to themselves.
#include "support/sanitized.h"
#include "support/support.h"

#include <algorithm>
#include <array>
#include <vector>

namespace {

// Recorded without allocating; what is smaller than an entry is no array.
constexpr std::size_t entry_size = 8;
std::array<std::size_t, 64> sizes;
std::size_t recorded = 0;
bool recording = false;

} // namespace

#ifndef KALV_SANITIZED // a sanitizer's own allocator would be bypassed
extern "C" void* __libc_realloc(void* block, std::size_t size);

extern "C" void* realloc(void* block, std::size_t size) noexcept
{
    if (recording && size >= entry_size && recorded < sizes.size())
        sizes[recorded++] = size;
    return __libc_realloc(block, size);
}
#endif

namespace {

using Entries = std::vector<std::size_t>;

/// The sizes, in entries, that blocks are given while a read runs.
template <class Read>
Entries entries_taken_by(const Read& read)
{
    recorded = 0;
    recording = true;
    read();
    recording = false;
    Entries entries(sizes.begin(), sizes.begin() + static_cast<std::ptrdiff_t>(recorded));
    std::transform(entries.begin(), entries.end(), entries.begin(),
                   [](std::size_t bytes) { return bytes / entry_size; });
    return entries;
}

std::string repeated(long count, const std::string& piece)
{
    std::string text;
    while (count-- > 0)
        text += piece;
    return text;
}

void free_all(char** texts, long count)
{
    std::for_each(texts, texts + count, free);
    free(texts);
}

class ArrayGrowth : public testing::Test {
protected:
    void SetUp() override
    {
#ifdef KALV_SANITIZED
        GTEST_SKIP() << "a sanitizer has its own allocator";
#endif
    }
};

} // namespace

TEST_F(ArrayGrowth, DoublesFromAHundredAndEndsAtTheCount)
{
    const std::pair<long, Entries> rows[] = {{1, {100, 1}},
                                             {99, {100, 99}},
                                             {100, {100, 200, 100}},
                                             {101, {100, 200, 101}},
                                             {250, {100, 200, 400, 250}}};
    for (const auto& [number, expected] : rows) {
        support::Document document("<r>" + repeated(number, "<x>v</x>") + "</r>");
        for (bool by_path : {false, true}) {
            char** values = nullptr;
            long count = 0;
            EXPECT_EQ(entries_taken_by([&] {
                          if (by_path)
                              kh_tree_path_read_string_node_array(&document.fd, "/r/x[*]", &values, &count,
                                                                  &document.status);
                          else
                              kh_tree_read_string_element_array(&document.fd, "x", &values, &count,
                                                                &document.status);
                      }),
                      expected)
                << number << (by_path ? " by path" : " by name");
            EXPECT_EQ(count, number);
            free_all(values, count);
        }
    }
}

TEST_F(ArrayGrowth, OfNamespacesIsThatOfBothLists)
{
    std::string declarations;
    for (int i = 0; i < 150; ++i)
        declarations += " xmlns:p" + std::to_string(i) + "='urn:p'";
    support::Document document("<r" + declarations + "/>");
    char** prefixes = nullptr;
    char** uris = nullptr;
    long count = 0;
    Entries entries = entries_taken_by(
        [&] { kh_tree_get_namespace(&document.fd, "", &count, &prefixes, &uris, &document.status); });
    ASSERT_EQ(count, 150);
    for (std::size_t size : {std::size_t(100), std::size_t(200), std::size_t(150)})
        EXPECT_EQ(std::count(entries.begin(), entries.end(), size), 2) << size;
    free_all(prefixes, count);
    free_all(uris, count);
}
