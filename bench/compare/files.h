// The files that the jobs work on: generated lists of items, a tree of many paths, and real XML.
#ifndef KALV_BENCH_FILES_H
#define KALV_BENCH_FILES_H

#include <filesystem>
#include <string>
#include <vector>

namespace bench {

struct File {
    std::string path;
    std::string size;      ///< to be shown, such as "1.0 MB"
    std::size_t items = 0; ///< how many items a generated list holds
    bool is_large() const { return items > 50'000; }
};

/// A folder of generated files, removed at the end.
class Files {
public:
    explicit Files(bool quick);
    ~Files();
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    /// A list of items, each with attributes, `Value`, `Real` and `Name`; behind the list an element `Last`.
    File items(std::size_t count) const;
    File small() const { return items(7); }
    File medium() const { return items(medium_items_); }
    File large() const { return items(large_items_); }

    /// Elements of nine levels, three of other names in each, and the paths of all values in them, shuffled.
    File deep() const;
    static std::vector<std::string> deep_paths();

    /// XML files of the system, as far as they are installed.
    static std::vector<File> real();

    /// A name in the folder, for what a job writes.
    std::string target(const std::string& name) const { return (folder_ / name).string(); }

private:
    std::filesystem::path folder_;
    std::size_t medium_items_;
    std::size_t large_items_;
};

/// Texts one behind the other in memory, in the order in which they are used: like those of a caller who
/// makes them as he goes, they cost no wait for memory.
class TextsInOrder {
public:
    explicit TextsInOrder(const std::vector<std::string>& texts);
    const char* operator[](std::size_t position) const { return texts_.data() + starts_[position]; }
    std::size_t size() const { return starts_.size(); }

private:
    std::string texts_;
    std::vector<std::size_t> starts_;
};

} // namespace bench

#endif
