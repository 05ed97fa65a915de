// Documents of a million levels and of a million siblings: built, written, read, copied and released in a
// thread with a small stack, in a time that grows no faster than they do.
//
// The levels carry a text behind each closing tag. Where there is none, a document gets its closing tags
// indented by two blanks a level when it is written, which for a million levels would be a million million.
#include "torture/contents.h"
#include "torture/harness.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <kalv/file_handling.h>
#include <kalv/node.h>
#include <map>
#include <pthread.h>

namespace {

using namespace torture;

constexpr std::size_t stack_size = 256U << 10;
constexpr std::size_t largest = 1000000;
constexpr std::size_t smaller_by = 4;
/// Four times the size may take so many times the time: caches are no larger for it.
constexpr double most_growth = 2.5 * smaller_by;
constexpr double unmeasurable = 0.05; ///< seconds

double processor_seconds()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// The steps of one run: what each was called, whether it was right, and how long it took.
class Run {
public:
    template <class Body>
    void step(const std::string& name, Body body)
    {
        const double before = processor_seconds();
        const bool is_right = body();
        seconds_[name] = processor_seconds() - before;
        if (!is_right)
            wrong_.push_back(name);
    }

    const std::map<std::string, double>& seconds() const { return seconds_; }
    const std::vector<std::string>& wrong() const { return wrong_; }

private:
    std::map<std::string, double> seconds_;
    std::vector<std::string> wrong_;
};

/// A document, by the calls that the runs make.
class Document {
public:
    bool open(const std::string& file)
    {
        return did([&] { fd_ = kh_tree_init_parser(file.c_str(), &status_); });
    }
    bool create()
    {
        return did([&] { fd_ = kh_tree_create(&status_); }) &&
               did([&] { kh_tree_create_root(&fd_, "r", &status_); });
    }
    bool copy(const std::string& file)
    {
        return did([&] { kh_copy_node(&fd_, "/r", file.c_str(), ".", &status_); });
    }
    /// Levels one below the other. Children that are indented would take a million million blanks.
    bool nest(std::size_t count)
    {
        xmlNode* node = global_current_status[fd_]->root;
        for (std::size_t i = 0; node && i < count; ++i)
            node = kh_tree_insert_node(&fd_, node, nullptr, KH_NODE_ELEMENT, "a", &status_);
        return node;
    }
    bool save(const std::string& file)
    {
        return did([&] { kh_tree_save(&fd_, file.c_str(), &status_); });
    }
    bool write(const std::string& file)
    {
        return did([&] { kh_tree_write(&fd_, file.c_str(), &status_); });
    }
    bool release()
    {
        return did([&] { kh_tree_cleanup_parser(&fd_, &status_); });
    }
    bool add(long (*how)(long*, const char*, const char*, long*), const char* path)
    {
        return did([&] { how(&fd_, path, "a", &status_); });
    }
    bool set(const std::string& value)
    {
        return did([&] { kh_tree_set_string_node_value(&fd_, ".", value.c_str(), "%s", &status_); });
    }

    /// Goes to the last element. \return how many there are behind the root
    std::size_t walk()
    {
        kh_tree_rewind(&fd_, &status_);
        std::size_t count = 0;
        while (did([&] { kh_tree_go_to_next_element_node(&fd_, &status_); }))
            ++count;
        return count;
    }

    std::string path(std::size_t room)
    {
        std::string path(room, '\0');
        kh_tree_get_path(&fd_, path.data(), &status_);
        path.resize(std::min(path.find('\0'), path.size()));
        return path;
    }

    std::size_t array_size(const char* path)
    {
        long* values = nullptr;
        long count = 0;
        kh_tree_path_read_integer_node_array(&fd_, path, &values, &count, &status_);
        std::free(values);
        return static_cast<std::size_t>(count);
    }

    bool go_to(const std::string& path)
    {
        return did([&] { kh_tree_go_to_path_node(&fd_, path.c_str(), &status_); });
    }

private:
    template <class Call>
    bool did(Call call)
    {
        call();
        return status_ == KH_OK;
    }

    long fd_ = -1;
    long status_ = KH_OK;
};

void run_levels(Run& run, const support::TemporaryFolder& folder, std::size_t count)
{
    const std::string text = repeated(count, "<a>") + "x" + repeated(count, "</a>\n");
    const std::string file = folder.file("levels.xml", text);
    const std::string target = folder.path("target.xml");
    Document document;
    Document copy;
    run.step("levels: build", [&] { return document.create() && document.nest(count); });
    run.step("levels: save what was built", [&] { return document.save(target); });
    run.step("levels: release what was built", [&] { return document.release(); });
    run.step("levels: open what was built",
             [&] { return document.open(target) && document.walk() == count && document.release(); });
    run.step("levels: open", [&] { return document.open(file); });
    run.step("levels: walk", [&] { return document.walk() == count - 1; });
    run.step("levels: path", [&] { return document.path(2 * count + 1) == repeated(count, "/a"); });
    run.step("levels: write", [&] { return document.write(target); });
    run.step("levels: release", [&] { return document.release(); });
    run.step("levels: copy", [&] { return copy.create() && copy.copy(file); });
    run.step("levels: write the copy", [&] { return copy.write(target); });
    run.step("levels: release the copy", [&] { return copy.release(); });
    run.step("levels: open what was written",
             [&] { return document.open(target) && document.walk() == count; });
    run.step("levels: release again", [&] { return document.release(); });
}

void run_siblings(Run& run, const support::TemporaryFolder& folder, std::size_t count)
{
    const std::string file = folder.path("siblings.xml");
    const std::string last = "/r/a[" + std::to_string(count) + "]";
    Document document;
    Document copy;
    run.step("siblings: build", [&] {
        bool right = document.create();
        for (std::size_t i = 0; i < count; ++i)
            right = right &&
                    document.add(i % 2 == 0 ? kh_tree_add_child : kh_tree_add_next_sibling,
                                 i % 2 == 0 ? "/r" : ".") &&
                    document.set(std::to_string(i));
        return right;
    });
    run.step("siblings: path", [&] { return document.path(100) == last; });
    run.step("siblings: write", [&] { return document.write(file); });
    run.step("siblings: release", [&] { return document.release(); });
    run.step("siblings: open", [&] { return document.open(file); });
    run.step("siblings: walk", [&] { return document.walk() == count; });
    run.step("siblings: path after reading", [&] { return document.path(100) == last; });
    run.step("siblings: array", [&] { return document.array_size("/r/a[*]") == count; });
    run.step("siblings: go to the last", [&] { return document.go_to(last); });
    run.step("siblings: release after reading", [&] { return document.release(); });
    run.step("siblings: copy", [&] { return copy.create() && copy.copy(file); });
    run.step("siblings: release the copy", [&] { return copy.release(); });
}

/// Runs a body in a thread with a small stack.
template <class Body>
void in_small_thread(Body& body)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, stack_size);
    pthread_t thread = {};
    const auto start = [](void* argument) -> void* {
        (*static_cast<Body*>(argument))();
        return nullptr;
    };
    if (pthread_create(&thread, &attributes, start, &body) != 0)
        std::abort();
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

Run run_of(std::size_t count)
{
    Run run;
    auto body = [&] {
        const support::TemporaryFolder folder;
        run_levels(run, folder, count);
        run_siblings(run, folder, count);
    };
    in_small_thread(body);
    return run;
}

} // namespace

int main()
{
    const Budget budget;
    Figure figure("depth and width", budget);
    const Run small = run_of(largest / smaller_by);
    const Run large = run_of(largest);
    for (const auto& [name, seconds] : large.seconds()) {
        const auto& wrong = large.wrong();
        const double before = small.seconds().at(name);
        if (std::find(wrong.begin(), wrong.end(), name) != wrong.end())
            figure.wrong(name + " failed");
        else if (seconds > most_growth * before && seconds > unmeasurable)
            figure.wrong(name + " takes " + std::to_string(seconds) + " s, and " + std::to_string(before) +
                         " s for a quarter");
        else
            figure.add(true);
    }
    return figure.print();
}
