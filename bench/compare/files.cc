#include "files.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>
#include <unistd.h>

namespace bench {

namespace {

std::string size_of(const std::filesystem::path& path)
{
    const auto bytes = static_cast<double>(std::filesystem::file_size(path));
    char text[32];
    if (bytes < 1e6)
        std::snprintf(text, sizeof text, "%.0f kB", bytes / 1e3);
    else
        std::snprintf(text, sizeof text, bytes < 1e7 ? "%.1f MB" : "%.0f MB", bytes / 1e6);
    return text;
}

void write_items(const std::filesystem::path& path, std::size_t count)
{
    std::ofstream out(path);
    std::mt19937 generator(1);
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Root>\n  <List count=\"" << count << "\">\n";
    char item[512];
    for (std::size_t i = 1; i <= count; ++i) {
        const long value = static_cast<long>(generator() % 10'000'000) - 1'000'000;
        const double real = static_cast<double>(generator()) / 1e5;
        std::snprintf(item, sizeof item,
                      "    <Item id=\"%zu\" kind=\"%c\">\n      <Value>%ld</Value>\n      <Real>%.4f</Real>\n"
                      "      <Name>Item %zu</Name>\n    </Item>\n",
                      i, "abc"[i % 3], value, real, i);
        out << item;
    }
    out << "  </List>\n  <Last>42</Last>\n</Root>\n";
}

const char* const level_names[] = {"Orbit", "Pass", "Sensor", "Band", "Frame", "Line", "Pixel"};
constexpr std::size_t levels = std::size(level_names); // and the root above, the value below
constexpr int names_of_level = 3;

void write_level(std::ofstream& out, std::size_t level, long& value)
{
    const std::string indentation(2 * (level + 1), ' ');
    if (level == levels) {
        out << indentation << "<Value>" << ++value << "</Value>\n";
        return;
    }
    for (int i = 1; i <= names_of_level; ++i) {
        out << indentation << '<' << level_names[level] << i << ">\n";
        write_level(out, level + 1, value);
        out << indentation << "</" << level_names[level] << i << ">\n";
    }
}

} // namespace

Files::Files(bool quick)
    : folder_(std::filesystem::temp_directory_path() / ("kalv_bench_" + std::to_string(getpid()))),
      medium_items_(quick ? 700 : 7'700), large_items_(quick ? 7'000 : 350'000)
{
    std::filesystem::create_directories(folder_);
}

Files::~Files()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

File Files::items(std::size_t count) const
{
    const std::filesystem::path path = folder_ / ("items_" + std::to_string(count) + ".xml");
    if (!std::filesystem::exists(path))
        write_items(path, count);
    return {path.string(), size_of(path), count};
}

File Files::deep() const
{
    const std::filesystem::path path = folder_ / "deep.xml";
    if (!std::filesystem::exists(path)) {
        std::ofstream out(path);
        out << "<Root>\n";
        long value = 0;
        write_level(out, 0, value);
        out << "</Root>\n";
    }
    return {path.string(), size_of(path)};
}

std::vector<std::string> Files::deep_paths()
{
    std::vector<std::string> paths{"/Root"};
    for (const char* name : level_names) {
        std::vector<std::string> longer;
        for (const std::string& path : paths) {
            for (int i = 1; i <= names_of_level; ++i)
                longer.push_back(path + '/' + name + std::to_string(i));
        }
        paths = std::move(longer);
    }
    for (std::string& path : paths)
        path += "/Value";
    std::shuffle(paths.begin(), paths.end(), std::mt19937(1));
    return paths;
}

std::vector<File> Files::real()
{
    std::vector<File> files;
    for (const char* path :
         {"/usr/share/X11/xkb/rules/base.xml", "/usr/share/mime/packages/freedesktop.org.xml"}) {
        if (std::filesystem::exists(path))
            files.push_back({path, std::filesystem::path(path).filename().string() + ", " + size_of(path)});
    }
    return files;
}

TextsInOrder::TextsInOrder(const std::vector<std::string>& texts)
{
    for (const std::string& text : texts) {
        starts_.push_back(texts_.size());
        texts_.append(text.c_str(), text.size() + 1);
    }
}

} // namespace bench
