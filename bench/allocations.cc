// Counts what one call of each read allocates: no more than the blocks that the caller receives. The
// program's own allocator stands before the C library's, which is why this is no part of the timing.
#include <cstdio>
#include <cstdlib>
#include <kalv/file_handling.h>
#include <type_traits>

extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);
extern "C" void* __libc_realloc(void* block, std::size_t size);

namespace {

bool counting = false;
long blocks = 0;  ///< new ones
long resizes = 0; ///< of a block that was there

} // namespace

extern "C" void* malloc(std::size_t size) noexcept
{
    blocks += counting;
    return __libc_malloc(size);
}
extern "C" void* calloc(std::size_t count, std::size_t size) noexcept
{
    blocks += counting;
    return __libc_calloc(count, size);
}
extern "C" void* realloc(void* block, std::size_t size) noexcept
{
    (block ? resizes : blocks) += counting;
    return __libc_realloc(block, size);
}

namespace {

constexpr int items = 1'000;
bool all_good = true;
long fd = -1;
long status = KH_OK;

void write_items(const char* file)
{
    std::FILE* out = std::fopen(file, "w");
    if (!out)
        std::abort();
    std::fprintf(out, "<Root>\n  <List>\n");
    for (int i = 1; i <= items; ++i)
        std::fprintf(out, "    <Item id=\"%d\"><Value>%d</Value><Name>Item %d</Name></Item>\n", i, i, i);
    std::fprintf(out, "  </List>\n</Root>\n");
    std::fclose(out);
}

/// Prints what a read allocates the first and the fourth time; only the fourth has to be without more than
/// the caller receives, since what the library keeps between calls must be made once.
template <class Read>
void count(const char* name, long received, Read read)
{
    long first_blocks = 0;
    for (int i = 1; i <= 4; ++i) {
        blocks = resizes = 0;
        counting = true;
        read();
        counting = false;
        if (status != KH_OK)
            std::abort();
        if (i == 1)
            first_blocks = blocks;
    }
    const bool good = blocks <= received;
    all_good = all_good && good;
    std::printf("| %s | %ld | %ld | %ld | %ld | %s |\n", name, first_blocks, blocks, resizes, received,
                good ? "yes" : "no");
}

/// Reads one value.
template <class Value, class Function, class... Names>
auto value(Function function, Names... names)
{
    return [function, names...] {
        Value result{};
        function(&fd, names..., &result, &status);
        if constexpr (std::is_pointer_v<Value>) {
            counting = false;
            std::free(result);
        }
    };
}

/// Reads an array.
template <class Entry, class Function>
auto array(Function function, const char* name)
{
    return [function, name] {
        Entry* entries = nullptr;
        long length = 0;
        function(&fd, name, &entries, &length, &status);
        counting = false;
        if constexpr (std::is_pointer_v<Entry>)
            for (long i = 0; i < length; ++i)
                std::free(entries[i]);
        std::free(entries);
    };
}

/// The same after a move to the root.
template <class Read>
auto from_root(Read read)
{
    return [read] {
        kh_tree_rewind(&fd, &status);
        read();
    };
}

} // namespace

int main()
{
    char file[] = "/tmp/kalv_allocations_XXXXXX";
    if (const int made = mkstemp(file); made < 0)
        return 2;
    write_items(file);
    fd = kh_tree_init_parser(file, &status);
    std::remove(file);
    if (status != KH_OK)
        return 2;

    std::printf("| read | blocks, first time | blocks, later | resized | received | no more |\n"
                "|---|--:|--:|--:|--:|---|\n");
    const char* const value_path = "/Root/List/Item[500]/Value";
    count("path, long", 0, value<long>(kh_tree_path_read_integer_node_value, value_path));
    count("path, double", 0, value<double>(kh_tree_path_read_real_node_value, value_path));
    count("path, text", 1, value<char*>(kh_tree_path_read_string_node_value, value_path));
    count("path of an attribute, long", 0,
          value<long>(kh_tree_path_read_integer_node_value, "/Root/List/Item[500]/@id"));
    count("name, long", 0, from_root(value<long>(kh_tree_read_integer_element_value, "Value")));
    count("name, double", 0, from_root(value<double>(kh_tree_read_real_element_value, "Value")));
    count("name, text", 1, from_root(value<char*>(kh_tree_read_string_element_value, "Value")));
    count("attribute, long", 0, from_root(value<long>(kh_tree_read_integer_attribute, "Item", "id")));
    count("attribute, text", 1, from_root(value<char*>(kh_tree_read_string_attribute, "Item", "id")));
    count("[*], long", 1, array<long>(kh_tree_path_read_integer_node_array, "/Root/List/Item[*]/Value"));
    count("[*], double", 1, array<double>(kh_tree_path_read_real_node_array, "/Root/List/Item[*]/Value"));
    count("[*], text", items + 1,
          array<char*>(kh_tree_path_read_string_node_array, "/Root/List/Item[*]/Name"));
    count("[*], attributes, long", 1,
          array<long>(kh_tree_path_read_integer_node_array, "/Root/List/Item[*]/@id"));
    count("array by name, long", 1, array<long>(kh_tree_read_integer_element_array, "Value"));
    count("array by name, text", items + 1, array<char*>(kh_tree_read_string_element_array, "Name"));
    count("move along a path", 0, [] { kh_tree_go_to_path_node(&fd, "/Root/List/Item[500]", &status); });
    count("path of the cursor", 0, [] {
        char path[64];
        kh_tree_get_path(&fd, path, &status);
    });
    count("name of the cursor's element", 1, [] {
        char* name = nullptr;
        kh_tree_get_current_element_name(&fd, &name, &status);
        counting = false;
        std::free(name);
    });
    kh_tree_cleanup_parser(&fd, &status);
    std::printf("\n%s\n", all_good ? "Reads allocate only what the caller receives."
                                   : "Some reads allocate more than the caller receives.");
}
