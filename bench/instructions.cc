// Reads a list of items in the ways that programs do, for callgrind to count the instructions: each job is dumped
// with its name and the number of its reads. bench/count_instructions runs it and prints the table.
#include <kalv/file_handling.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <valgrind/callgrind.h>

namespace {

constexpr long items = 1000;
long fd = -1;
long status = 0;
long checksum = 0;

std::string document()
{
    std::string xml = "<Root>\n  <List count=\"" + std::to_string(items) + "\">\n";
    for (long i = 0; i < items; ++i) {
        const std::string number = std::to_string(i);
        xml += "    <Item id=\"" + number + "\">\n      <Value>" + number + "</Value>\n      <Real>" +
               number + ".25</Real>\n      <Name>name " + number + "</Name>\n    </Item>\n";
    }
    return xml + "  </List>\n</Root>\n";
}

/// Runs a job until all stands that is remembered between reads, and counts it then.
template <class Job>
void count(const char* name, long reads, Job job)
{
    const std::string title = std::string(name) + " / " + std::to_string(reads);
    for (int time = 0; time < 8; ++time)
        job();
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    job();
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(title.c_str());
    if (status != KH_OK) {
        std::fprintf(stderr, "%s: status %ld\n", name, status);
        std::exit(1);
    }
}

/// Paths are written beforehand: what is counted is the library alone.
template <class Read>
void count_paths(const char* name, const std::string& end, Read read)
{
    std::string paths[items];
    for (long i = 0; i < items; ++i)
        paths[i] = "/Root/List/Item[" + std::to_string(i + 1) + "]" + end;
    count(name, items, [&] {
        for (const std::string& path : paths)
            read(path.c_str());
    });
}

template <class Entry, class Read>
void count_array(const char* name, const char* what, Read read)
{
    count(name, items, [&] {
        Entry* values = nullptr;
        long found = 0;
        read(&fd, what, &values, &found, &status);
        checksum += found;
        std::free(values);
    });
}

void read_long(const char* path)
{
    long value = 0;
    kh_tree_path_read_integer_node_value(&fd, path, &value, &status);
    checksum += value;
}

void read_double(const char* path)
{
    double value = 0;
    kh_tree_path_read_real_node_value(&fd, path, &value, &status);
    checksum += static_cast<long>(value);
}

} // namespace

int main()
{
    const std::string xml = document();
    fd = kh_tree_init_memory(xml.data(), static_cast<long>(xml.size()), &status);
    count("the same path, long", items, [] {
        for (long i = 0; i < items; ++i)
            read_long("/Root/List/Item[500]/Value");
    });
    count("two paths in turn, long", items, [] {
        for (long i = 0; i < items; ++i)
            read_long(i % 2 == 0 ? "/Root/List/Item[5]/Value" : "/Root/List/Item[2]/Name/../Value");
    });
    count_paths("Item[i]/Value, long", "/Value", read_long);
    count_paths("Item[i]/Real, double", "/Real", read_double);
    count_paths("`Item[i]/@id`, long", "/@id", read_long);
    count_array<long>("[*], long, a value", "/Root/List/Item[*]/Value", kh_tree_path_read_integer_node_array);
    count_array<double>("[*], double, a value", "/Root/List/Item[*]/Real", kh_tree_path_read_real_node_array);
    count_array<long>("array by name, long, a value", "Value", kh_tree_read_integer_element_array);
    count("search by name, an element", items, [] {
        kh_tree_rewind(&fd, &status);
        long found = 0;
        for (kh_tree_go_to_element_node(&fd, "Value", &status); status == KH_OK;
             kh_tree_go_to_element_node(&fd, nullptr, &status))
            ++found;
        status = found == items ? KH_OK : KH_ERR_NOT_FOUND;
    });
    kh_tree_cleanup_parser(&fd, nullptr);
    return checksum > 0 ? 0 : 1;
}
