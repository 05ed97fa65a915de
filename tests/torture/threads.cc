// Threads open, edit, write and close documents while the host program parses with libxml2 in threads of its
// own: every document is right, no slot is given twice, nothing is printed, and the host's error handlers see
// the host's errors.
#include "torture/harness.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <kalv/XmlFile.h>
#include <libxml/parser.h>
#include <thread>

namespace {

using namespace torture;

constexpr std::size_t thread_count = 16;
constexpr std::size_t documents_of_a_thread = 2000;
constexpr std::size_t host_thread_count = 2;

std::array<std::atomic<bool>, KH_MAX_DOCUMENTS> taken{};
std::atomic<std::size_t> wrong_slots{0};

/// A slot that belongs to one thread.
class Slot {
public:
    explicit Slot(long fd) : fd_(fd), is_valid_(fd >= 0 && fd < KH_MAX_DOCUMENTS)
    {
        if (!is_valid_ || place().exchange(true))
            ++wrong_slots;
    }
    /// Called before the document is released, since another thread may get the slot at once.
    ~Slot()
    {
        if (is_valid_)
            place() = false;
    }
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;

private:
    std::atomic<bool>& place() const { return taken[static_cast<std::size_t>(fd_)]; }

    long fd_;
    bool is_valid_;
};

std::string document(std::size_t number, const char* between)
{
    return "<?xml version=\"1.0\"?>\n<Root>\n  <Number>" + std::to_string(number) + "</Number>" + between +
           "\n</Root>\n";
}

/// One document by the procedural interface. \return whether it is right
bool is_right(const std::string& file, std::size_t number)
{
    long status = KH_OK;
    long fd = kh_tree_init_parser(file.c_str(), &status);
    if (status != KH_OK)
        return false;
    long before = -1;
    bool right = true;
    {
        const Slot slot(fd);
        const auto succeed = [&] { right = right && status >= KH_OK; };
        kh_tree_path_read_integer_node_value(&fd, "/Root/Number", &before, &status);
        succeed();
        const long next = static_cast<long>(number);
        kh_tree_set_integer_node_value(&fd, "/Root/Number", &next, "%ld", &status);
        succeed();
        kh_tree_add_child(&fd, "/Root", "Added", &status);
        succeed();
        kh_tree_set_string_node_value(&fd, ".", "text", "%s", &status);
        succeed();
        kh_tree_go_to_path_node(&fd, "/Root/Missing", &status); // a report that silent mode swallows
        right = right && status == KH_ERR_NOT_FOUND;
        kh_tree_write(&fd, file.c_str(), &status);
        succeed();
    }
    kh_tree_cleanup_parser(&fd, &status);
    return right && status == KH_OK && before == static_cast<long>(number - 1) &&
           support::content_of(file) == document(number, "\n  <Added>text</Added>");
}

/// The same by the object interface, which takes the addition away again.
bool is_right_as_object(const std::string& file, std::size_t number)
{
    KALV::XmlFile object(file);
    {
        const Slot slot(object.getId());
        object.setValue("/Root/Number", static_cast<long>(number), "%ld");
        object.removeNode("/Root/Added");
        object.write();
        try {
            object.toPath("/Root/Missing");
            return false;
        } catch (const KALV::KalvError&) {
        }
    }
    object.clean();
    return support::content_of(file) == document(number, "");
}

/// What a thread does; others count what is done.
void work(const support::TemporaryFolder& folder, std::size_t thread, const Budget::Share& share,
          std::atomic<std::size_t>& tried, std::atomic<std::size_t>& right)
{
    const std::string file = folder.file("document" + std::to_string(thread) + ".xml", document(0, ""));
    const std::string broken = folder.file("broken" + std::to_string(thread) + ".xml", "<Root><Item></Root>");
    for (std::size_t number = 1; number <= documents_of_a_thread && !share.is_used_up(); ++number) {
        long status = KH_OK;
        bool all_right = kh_tree_init_parser(broken.c_str(), &status) >= 0 && status == KH_ERR_PARSE;
        try {
            all_right =
                all_right && (number % 2 == 1 ? is_right(file, number) : is_right_as_object(file, number));
        } catch (const KALV::KalvError&) {
            all_right = false;
        }
        ++tried;
        right += all_right;
    }
}

void count_message(void* count, const char*, ...)
{
    ++*static_cast<std::size_t*>(count);
}

/// A thread of the host program: its own parser, its own error handler.
void parse_as_host(const std::atomic<bool>& stop, std::atomic<std::size_t>& faults)
{
    const std::string good = document(7, "");
    const std::string bad = "<Root><Item></Root>";
    std::size_t messages = 0;
    xmlSetGenericErrorFunc(&messages, count_message);
    while (!stop) {
        messages = 0;
        xmlDoc* document = xmlReadMemory(good.data(), static_cast<int>(good.size()), "good", nullptr, 0);
        faults += !document || messages != 0;
        xmlFreeDoc(document);
        document = xmlReadMemory(bad.data(), static_cast<int>(bad.size()), "bad", nullptr, 0);
        faults += document || messages == 0;
        xmlFreeDoc(document);
    }
}

} // namespace

int main()
{
    const Budget budget;
    const support::TemporaryFolder folder;
    Figure figure("threads", budget);
    std::atomic<std::size_t> tried{0};
    std::atomic<std::size_t> right{0};
    std::atomic<std::size_t> host_faults{0};
    xmlInitParser(); // as libxml2 asks of a program with threads
    std::string error_output;
    const std::string output = support::written_to_stdout([&] {
        error_output = support::written_to_stderr([&] {
            std::atomic<bool> stop{false};
            std::vector<std::thread> hosts;
            for (std::size_t i = 0; i < host_thread_count; ++i)
                hosts.emplace_back(parse_as_host, std::cref(stop), std::ref(host_faults));
            std::vector<std::thread> threads;
            for (std::size_t i = 0; i < thread_count; ++i)
                threads.emplace_back(work, std::cref(folder), i, budget.share(1), std::ref(tried),
                                     std::ref(right));
            for (std::thread& thread : threads)
                thread.join();
            stop = true;
            for (std::thread& host : hosts)
                host.join();
        });
    });
    figure.add(right, tried, thread_count * documents_of_a_thread);
    if (wrong_slots > 0)
        figure.wrong(std::to_string(wrong_slots) + " slots were given twice");
    if (host_faults > 0)
        figure.wrong("the host program's parser went wrong " + std::to_string(host_faults) + " times");
    if (!output.empty() || !error_output.empty())
        figure.wrong("printed: " + output + error_output);
    for (long fd = 0; fd < KH_MAX_DOCUMENTS; ++fd)
        if (global_current_status[fd])
            figure.wrong("a slot stayed taken");
    return figure.print();
}
