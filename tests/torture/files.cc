// Every call by which a save or a read reaches the file system fails in its turn, moves half of its bytes, or
// is the last thing that the process does. The target of a save is then the whole old or the whole new file,
// the status tells which, and nothing else is left in the folder.
#include "torture/calls.h"
#include "torture/contents.h"
#include "torture/describe.h"
#include "torture/harness.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <kalv/XmlFile.h>
#include <map>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace torture;
using calls::Effect;
using calls::Fault;

constexpr mode_t mode_of_old_file = 0640;

std::string document(long items)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Root xmlns:xsi=\"urn:x\">";
    for (long i = 0; i < items; ++i)
        text += "\n  <Item id=\"" + std::to_string(i) + "\">value \xc3\xa4 " + std::to_string(i * 7919) +
                "</Item>";
    return text + "\n</Root>\n";
}

std::string encoded(long items, const char* encoding)
{
    std::string text = document(items);
    text.replace(text.find("UTF-8"), 5, encoding);
    for (std::size_t at = 0; (at = text.find("\xc3\xa4", at)) != std::string::npos;)
        text.replace(at, 2, "&#228;");
    return text;
}

/// The status word of a call.
template <class Call>
long status_of(Call call)
{
    long status = KH_OK;
    call(&status);
    return status;
}

/// A save or a read.
struct Task {
    const char* name;
    std::string source; ///< the document that is read first, outside of the faults
    bool has_old_file;
    /// \param fd the document
    std::function<long(long fd, const std::string& target)> run;
    bool is_link = false;
};

long save(long fd, const std::string& target)
{
    return status_of([&](long* status) {
        if (const long count = kh_tree_write(&fd, target.c_str(), status); count < 0 && *status == KH_OK)
            *status = count;
    });
}

long save_as_it_is(long fd, const std::string& target)
{
    return status_of([&](long* status) { kh_tree_save(&fd, target.c_str(), status); });
}

long change_schema(long, const std::string& target)
{
    const long mode = 0;
    return status_of([&](long* status) { kh_set_schema(target.c_str(), "Some_0102.XSD", &mode, status); });
}

long read_and_save_object(long, const std::string& target)
{
    long fd = -1;
    long status = KH_OK;
    try {
        KALV::XmlFile file(target);
        fd = file.getId();
        file.addChild("/Root", "Added", 7L, "%ld");
        file.write();
    } catch (const KALV::KalvError& error) {
        std::vector<long> codes;
        error.getCodes(codes);
        status = codes.front();
    }
    kh_tree_cleanup_parser(&fd, nullptr); // a document that could not be saved stays in the table
    return status;
}

/// Saves, and what the file system holds before and after.
class Save {
public:
    Save(const Task& task, const support::TemporaryFolder& folder)
        : task_(task), folder_(folder), target_(folder.path("target.xml"))
    {
        const std::string source = folder.file("source.xml", task.source);
        fd_ = kh_tree_init_parser(source.c_str(), nullptr);
        reset();
        made_ = calls::made_by([&] { status_ = run(); });
        right_ = support::content_of(target_);
        reset();
    }
    ~Save() { kh_tree_cleanup_all_parser(); }
    Save(const Save&) = delete;
    Save& operator=(const Save&) = delete;

    const std::vector<calls::Made>& made() const { return made_; }
    bool is_sound() const { return status_ == KH_OK && !right_.empty() && right_ != old_; }

    std::string try_fault(const Fault& fault)
    {
        reset();
        const std::size_t descriptors = open_descriptors();
        long status = KH_OK;
        calls::with_fault(fault, [&] { status = run(); });
        std::string complaint = judge(status);
        const bool harmless = fault.effect == Effect::is_short || fault.error == EINTR;
        if (harmless && status != KH_OK)
            complain(complaint, "was not taken up again, status " + std::to_string(status));
        if (open_descriptors() != descriptors)
            complain(complaint, "left a descriptor open");
        if (status != KH_OK && run() != KH_OK)
            complain(complaint, "cannot be repeated");
        else if (status != KH_OK)
            complain(complaint, judge(KH_OK));
        return complaint;
    }

    std::string try_kill(const Fault& fault)
    {
        reset();
        return in_process_that_dies([&] { calls::with_fault(fault, [&] { run(); }); }, SIGKILL);
    }

    /// Runs the save in a process that may die on the way. \param signal 0 where it must not
    template <class Body>
    std::string in_process_that_dies(Body body, int signal)
    {
        const pid_t child = fork();
        if (child == 0) {
            body();
            _exit(EXIT_SUCCESS);
        }
        int status = 0;
        waitpid(child, &status, 0);
        std::string complaint;
        if (WIFSIGNALED(status) ? WTERMSIG(status) != signal : signal != 0 || WEXITSTATUS(status) != 0)
            complain(complaint, "ended with " + std::to_string(status));
        const std::vector<std::string> left = leftovers(folder_);
        for (const std::string& name : left)
            std::remove(name.c_str());
        if (left.size() > 1 || (!signal && !left.empty()))
            complain(complaint, "left temporary files");
        if (!is_old() && !is_new())
            complain(complaint, "left a damaged file");
        return complaint;
    }

    long run() { return task_.run(fd_, link_name()); }

    void reset()
    {
        std::remove(target_.c_str());
        if (task_.has_old_file) {
            folder_.file("target.xml", old_);
            chmod(target_.c_str(), mode_of_old_file);
        }
        if (task_.is_link) {
            std::remove(link_name().c_str());
            if (symlink("target.xml", link_name().c_str()) != 0)
                std::abort();
        }
    }

    std::string judge(long status) const
    {
        std::string complaint;
        const std::string number = ", status " + std::to_string(status);
        if (status == KH_OK && !is_new())
            complain(complaint, "succeeded without the whole new file");
        if (status != KH_OK && status != KH_ERR_SAVE && status != KH_ERR_PARSE)
            complain(complaint, "status is not described" + number);
        if (status != KH_OK && !is_old())
            complain(complaint, "failed without the whole old file" + number);
        if (task_.has_old_file && mode() != mode_of_old_file)
            complain(complaint, "changed the mode bits" + number);
        if (task_.is_link &&
            std::filesystem::symlink_status(link_name()).type() != std::filesystem::file_type::symlink)
            complain(complaint, "replaced the symbolic link" + number);
        if (!leftovers(folder_).empty())
            complain(complaint, "left " + leftovers(folder_).front() + number);
        return complaint;
    }

private:
    static void complain(std::string& complaint, const std::string& what)
    {
        if (!what.empty())
            complaint += (complaint.empty() ? "" : "; ") + what;
    }

    std::string link_name() const { return task_.is_link ? folder_.path("link.xml") : target_; }

    bool exists() const { return access(target_.c_str(), F_OK) == 0; }
    bool is_old() const { return task_.has_old_file ? support::content_of(target_) == old_ : !exists(); }
    bool is_new() const { return exists() && support::content_of(target_) == right_; }

    mode_t mode() const
    {
        struct stat status = {};
        stat(target_.c_str(), &status);
        return status.st_mode & 07777;
    }

    const Task& task_;
    const support::TemporaryFolder& folder_;
    std::string target_;
    std::string old_ = document(40);
    std::string right_;
    std::vector<calls::Made> made_;
    long fd_ = -1;
    long status_ = -1;
};

/// The errors that a call can fail with, by its name.
const std::map<std::string, std::vector<int>> errors = {
    {"open", {EACCES, EINTR, EMFILE, ENOSPC, EIO, EDQUOT, ENOMEM}},
    {"read", {EIO, EINTR, ENOMEM}},
    {"write", {ENOSPC, EIO, EDQUOT, EINTR, EFBIG}},
    {"fchmod", {EPERM, EIO, ENOSPC, EDQUOT}},
    {"fchown", {EPERM, EIO, EDQUOT}},
    {"fsync", {EIO, ENOSPC, EDQUOT, EINTR}},
    {"rename", {EACCES, EIO, ENOSPC, EDQUOT, EBUSY}},
    {"close", {EIO, EINTR, ENOSPC, EDQUOT}},
    {"stat", {EIO, EACCES, ENOMEM}},
    {"access", {EACCES, EIO}},
    {"readlink", {EIO, EACCES, ENOMEM}},
    {"dup", {EMFILE}},
};

std::vector<Fault> faults_of(const std::vector<calls::Made>& made)
{
    std::vector<Fault> faults;
    for (std::size_t i = 0; i < made.size(); ++i) {
        if (const auto found = errors.find(made[i].name); found != errors.end())
            for (const int error : found->second) {
                faults.push_back({i, Effect::fails, error, false});
                if (error != EINTR) // whoever takes a call up again would do so for ever
                    faults.push_back({i, Effect::fails, error, true});
            }
        if (made[i].name == "read" || made[i].name == "write")
            for (const bool from_then_on : {false, true})
                faults.push_back({i, Effect::is_short, 0, from_then_on});
    }
    return faults;
}

std::vector<Fault> kills_at(const std::vector<calls::Made>& made)
{
    std::vector<Fault> faults;
    for (std::size_t i = 0; i < made.size(); ++i)
        for (const Effect effect : {Effect::kills, Effect::kills_within})
            faults.push_back({i, effect, 0, false});
    return faults;
}

std::string told(const std::string& complaint, const Fault& fault, const std::vector<calls::Made>& made)
{
    return complaint.empty()
               ? ""
               : complaint + " after " + made[fault.number].name + " number " + std::to_string(fault.number) +
                     ": " + (fault.error ? std::strerror(fault.error) : "no error");
}

/// Reads: the document is the right one, or its status says that there is none.
class Read {
public:
    explicit Read(std::string file) : file_(std::move(file))
    {
        made_ = calls::made_by([&] { right_ = result(); });
    }

    const std::vector<calls::Made>& made() const { return made_; }

    std::string try_fault(const Fault& fault) const
    {
        const std::size_t descriptors = open_descriptors();
        Result is;
        calls::with_fault(fault, [&] { is = result(); });
        if (open_descriptors() != descriptors)
            return "left a descriptor open";
        const bool harmless =
            fault.effect == Effect::is_short || fault.error == EINTR || made_[fault.number].name == "close";
        if (is.status == KH_OK ? is.tree != right_.tree : is.status != KH_ERR_PARSE || !is.tree.empty())
            return "silently different, or status " + std::to_string(is.status);
        return is.status != KH_OK && harmless ? "was not taken up again" : "";
    }

private:
    struct Result {
        long status = KH_OK;
        std::string tree;
    };

    Result result() const
    {
        Result result;
        long fd = kh_tree_init_parser(file_.c_str(), &result.status);
        result.tree = described_trees();
        kh_tree_cleanup_parser(&fd, nullptr);
        return result;
    }

    std::string file_;
    Result right_;
    std::vector<calls::Made> made_;
};

void limit_file_size(std::size_t bytes)
{
    const rlimit limit = {bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
}

/// Saves under a limit of the size of files, for every limit that a step leads to.
void try_size_limits(Figure& figure, const Budget::Share& share, Save& save, const std::string& name)
{
    constexpr std::size_t step = 512;
    try_points(figure, share, name + " under a file size limit", 2 * 32, [&](std::size_t point) {
        save.reset();
        return save.in_process_that_dies(
            [&] {
                std::signal(SIGXFSZ, point % 2 == 0 ? SIG_IGN : SIG_DFL);
                limit_file_size(point / 2 * step);
                const long status = save.run();
                if (!save.judge(status).empty())
                    _exit(EXIT_FAILURE);
            },
            0);
    });
}

/// A file system of its own that is almost full; empty where this process may not mount one.
class SmallFileSystem {
public:
    SmallFileSystem()
    {
        if (unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0)
            mounted_ = mount("tmpfs", folder_.path("").c_str(), "tmpfs", 0, "size=256k") == 0;
    }
    ~SmallFileSystem()
    {
        if (mounted_)
            umount2(folder_.path("").c_str(), MNT_DETACH);
    }
    SmallFileSystem(const SmallFileSystem&) = delete;
    SmallFileSystem& operator=(const SmallFileSystem&) = delete;

    bool is_mounted() const { return mounted_; }
    const support::TemporaryFolder& folder() const { return folder_; }

    /// Leaves this many pages free.
    void fill_up_to(long pages) const
    {
        std::remove(folder_.path("filler").c_str());
        const std::string page(4096, 'x');
        std::string filler;
        for (FILE* file = std::fopen(folder_.path("filler").c_str(), "w"); file; file = nullptr) {
            std::setvbuf(file, nullptr, _IONBF, 0);
            long count = 0;
            while (std::fwrite(page.data(), page.size(), 1, file) == 1)
                ++count;
            if (ftruncate(fileno(file), std::max(count - pages, 0L) * 4096) != 0)
                std::abort();
            std::fclose(file);
        }
    }

private:
    support::TemporaryFolder folder_;
    bool mounted_ = false;
};

void try_full_file_system(Figure& figure, const Budget::Share& share, const Task& task)
{
    const SmallFileSystem system;
    if (!system.is_mounted()) {
        std::printf("%s on a full file system: skipped, this process may not mount one\n", task.name);
        return;
    }
    Save save(task, system.folder());
    constexpr std::size_t most_pages = 30;
    try_points(figure, share, std::string(task.name) + " on a full file system", most_pages,
               [&](std::size_t point) {
                   save.reset();
                   system.fill_up_to(static_cast<long>(point));
                   return save.judge(save.run());
               });
}

std::vector<Task> tasks()
{
    const std::string large = document(2000);
    return {
        {"new file", document(300), false, save},
        {"replaced file", document(300), true, save},
        {"large file", large, true, save},
        {"file behind a link", document(100), true, save, true},
        {"new file behind a link", document(10), false, save, true},
        {"UTF-16", utf16(encoded(200, "UTF-16")), true, save},
        {"compressed file", gzip(large), true, save},
        {"KOI8-R", encoded(200, "KOI8-R"), true, save},
        {"file as it is", document(50), true, save_as_it_is},
        {"schema", document(1), true, change_schema},
        {"object", document(1), true, read_and_save_object},
    };
}

} // namespace

int main()
{
    const Budget budget;
    const std::vector<Task> all = tasks();
    Figure figure("input and output", budget);
    std::size_t parts = 4 * all.size() + 5;
    for (const Task& task : all) {
        const support::TemporaryFolder folder;
        Save save(task, folder);
        if (!save.is_sound())
            figure.wrong(std::string(task.name) + " cannot be saved");
        const std::vector<Fault> faults = faults_of(save.made());
        try_points(figure, budget.share(parts--), task.name, faults.size(),
                   [&](std::size_t i) { return told(save.try_fault(faults[i]), faults[i], save.made()); });
        const std::vector<Fault> kills = kills_at(save.made());
        try_points(figure, budget.share(parts--), std::string(task.name) + ", killed", kills.size(),
                   [&](std::size_t i) { return told(save.try_kill(kills[i]), kills[i], save.made()); });
        try_size_limits(figure, budget.share(parts--), save, task.name);
        try_full_file_system(figure, budget.share(parts--), task);
    }
    const support::TemporaryFolder folder;
    for (const std::string& text : {document(3), document(5000), utf16(encoded(1000, "UTF-16")),
                                    gzip(document(3000)), encoded(300, "KOI8-R")}) {
        const Read read(folder.file("read.xml", text));
        const std::vector<Fault> faults = faults_of(read.made());
        try_points(figure, budget.share(parts--), "read", faults.size(),
                   [&](std::size_t i) { return told(read.try_fault(faults[i]), faults[i], read.made()); });
    }
    return figure.print();
}
