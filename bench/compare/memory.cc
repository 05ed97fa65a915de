// The memory that an open document takes, measured in a process of its own.
#include "jobs.h"
#include "peers.h"

#include <cstdio>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

/// A line of /proc/self/status, in bytes.
double memory(const char* line_name)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    const std::size_t length = std::strlen(line_name);
    while (std::getline(status, line)) {
        if (line.compare(0, length, line_name) == 0)
            return std::atof(line.c_str() + length) * 1024;
    }
    return 0;
}

struct Taken {
    double open = 0; ///< while the document is open
    double peak = 0; ///< at most, on the way there
};

template <class Hold>
Taken taken_by(Hold hold)
{
    int ends[2];
    expect(pipe(ends) == 0);
    const pid_t child = fork();
    expect(child >= 0);
    if (child == 0) {
        const double before = memory("VmRSS:");
        const auto document = hold();
        const Taken taken{memory("VmRSS:") - before, memory("VmHWM:") - before};
        const bool written = write(ends[1], &taken, sizeof taken) == sizeof taken;
        _exit(written ? 0 : 1);
    }
    Taken taken;
    int status = 0;
    const bool received = read(ends[0], &taken, sizeof taken) == sizeof taken;
    waitpid(child, &status, 0);
    close(ends[0]);
    close(ends[1]);
    expect(received && status == 0);
    return taken;
}

/// Reads until any index that pays stands.
void use_in_every_way(Kalv& document)
{
    for (int i = 0; i < 5; ++i) {
        Array<long>(kh_tree_path_read_integer_node_array, &document.fd, "/Root/List/Item[*]/Value");
        Array<long>(kh_tree_read_integer_element_array, &document.fd, "Value");
        document.integer("/Root/List/Item[1000]/Value");
        document.integer("/Root/List/Item[2000]/Value");
        document.call(kh_tree_rewind);
        document.value<long>(kh_tree_read_integer_element_value, "Last");
    }
}

} // namespace

void compare_memory(Comparison& comparison, const Files& files)
{
    if (!comparison.wants("memory"))
        return;
    const File file = files.large();
    const auto megabytes = [](double bytes) {
        char text[32];
        std::snprintf(text, sizeof text, "%.0f MB", bytes / 1e6);
        return std::string(text);
    };
    const Taken opened = taken_by([&] { return Kalv(file.path); });
    const Taken read = taken_by([&] {
        Kalv document(file.path);
        use_in_every_way(document);
        return document;
    });
    const Taken tree = taken_by([&] { return LibXml2(file.path); });
    const Taken pugi = taken_by([&] { return std::make_unique<Pugi>(file.path); });
    const auto add = [&](const char* job, double own, const char* peer, double other,
                         std::optional<double> goal) {
        comparison.add(job, file.size, megabytes(own), peer, own / other, goal);
    };
    add("memory of an open document", opened.open, by_hand, tree.open, 0.88);
    add("memory of an open document", opened.open, pugixml, pugi.open, {});
    add("memory with any index", read.open, by_hand, tree.open, 0.95);
    add("memory at most, while opening", opened.peak, by_hand, tree.peak, {});
}

} // namespace bench
