// From a tree to a file that is never half written: the document is saved beside its target, synchronised,
// and takes the target's place when it is complete. What is no regular file, or lies in a folder that cannot
// be written to, is written where it stands.
#include "build/save.h"

#include "frame/system.h"
#include "tree/cursor.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <iconv.h>
#include <libxml/encoding.h>
#include <libxml/xmlIO.h>
#include <libxml/xmlsave.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <zlib.h>

namespace kh {

namespace {

/// For its lifetime the thread's writes fail instead of ending the process: beyond a limit of the file size, or
/// into a pipe that nobody reads.
class BlockedSignals {
public:
    BlockedSignals() noexcept
    {
        sigemptyset(&blocked_);
        sigset_t pending;
        sigpending(&pending);
        for (int signal : {SIGXFSZ, SIGPIPE}) {
            if (!sigismember(&pending, signal)) // what was there before is not this write's
                sigaddset(&blocked_, signal);
        }
        pthread_sigmask(SIG_BLOCK, &blocked_, &previous_);
    }
    ~BlockedSignals()
    {
        const int error = errno;
        const timespec at_once{};
        while (sigtimedwait(&blocked_, nullptr, &at_once) > 0) {
        }
        pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
        errno = error;
    }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t blocked_;
    sigset_t previous_;
};

/// Where bytes go.
class Output {
public:
    Output() = default;
    virtual ~Output() = default;
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// Completes the output. \return whether all bytes arrived
    virtual bool finish() noexcept = 0;

    long bytes() const noexcept { return bytes_; }
    /// The errno of the write that failed; 0 for none, or an unknown one.
    int error() const noexcept { return error_; }

    static int write(void* self, const char* data, int size) noexcept
    {
        auto* output = static_cast<Output*>(self);
        if (output->failed_)
            return -1;
        const int before = errno; // may tell of memory that libxml2 did not get
        errno = 0;
        output->failed_ = !output->put(data, static_cast<std::size_t>(size));
        if (output->failed_) {
            output->error_ = errno;
            return -1;
        }
        errno = before;
        output->bytes_ += size;
        return size;
    }

protected:
    bool failed() const noexcept { return failed_; }

private:
    virtual bool put(const char* data, std::size_t size) noexcept = 0;

    long bytes_ = 0;
    int error_ = 0;
    bool failed_ = false;
};

class PlainOutput final : public Output {
public:
    explicit PlainOutput(int fd) noexcept : fd_(fd) {}
    bool finish() noexcept override { return !failed(); }

private:
    bool put(const char* data, std::size_t size) noexcept override
    {
        while (size > 0) {
            const ssize_t count = uninterrupted([&] { return ::write(fd_, data, size); });
            if (count < 0)
                return false;
            data += count;
            size -= static_cast<std::size_t>(count);
        }
        return true;
    }

    int fd_;
};

/// A file that was compressed when it was read is compressed again: the bytes are those that gzwrite makes,
/// which gives up where a signal interrupts it.
class CompressedOutput final : public Output {
public:
    CompressedOutput(int fd, int level) noexcept : file_(fd)
    {
        constexpr int gzip_window = 15 + 16;
        constexpr int default_memory = 8;
        is_open_ =
            deflateInit2(&state_, level, Z_DEFLATED, gzip_window, default_memory, Z_DEFAULT_STRATEGY) == Z_OK;
    }
    ~CompressedOutput() override { deflateEnd(&state_); }

    bool finish() noexcept override { return deflate_all(Z_FINISH) && file_.finish() && !failed(); }

private:
    bool put(const char* data, std::size_t size) noexcept override
    {
        state_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data)); // only read
        state_.avail_in = static_cast<uInt>(size);
        return deflate_all(Z_NO_FLUSH);
    }

    bool deflate_all(int flush) noexcept
    {
        bool complete = is_open_;
        do {
            char piece[1U << 14];
            state_.next_out = reinterpret_cast<Bytef*>(piece);
            state_.avail_out = sizeof piece;
            deflate(&state_, flush);
            const auto count = static_cast<int>(sizeof piece - state_.avail_out);
            complete = complete && (count == 0 || Output::write(&file_, piece, count) == count);
        } while (complete && state_.avail_out == 0);
        return complete;
    }

    PlainOutput file_;
    z_stream state_ = {};
    bool is_open_;
};

/// Standard output, in order with what the program prints itself.
class StandardOutput final : public Output {
public:
    bool finish() noexcept override { return std::fflush(stdout) == 0 && !failed(); }

private:
    bool put(const char* data, std::size_t size) noexcept override
    {
        return std::fwrite(data, 1, size, stdout) == size;
    }
};

/// A block that grows, with room for a zero byte behind the bytes.
class MemoryOutput final : public Output {
public:
    bool finish() noexcept override { return !failed() && reserve(0); }
    Block<char> take() noexcept
    {
        block_.get()[size_] = '\0';
        return std::move(block_);
    }

private:
    bool reserve(std::size_t size) noexcept
    {
        if (block_ && capacity_ - size_ > size)
            return true;
        const std::size_t capacity = std::max(2 * capacity_, size_ + size + 1);
        auto* larger = static_cast<char*>(std::realloc(block_.get(), capacity));
        if (!larger)
            return false;
        static_cast<void>(block_.release());
        block_.reset(larger);
        capacity_ = capacity;
        return true;
    }
    bool put(const char* data, std::size_t size) noexcept override
    {
        if (!reserve(size))
            return false;
        std::copy_n(data, size, block_.get() + size_); // there may be no data
        size_ += size;
        return true;
    }

    Block<char> block_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

/// libxml2 drops the default of an attribute that is no value of the declared type, and would write a declaration
/// that no parser reads.
void complete_declarations(const xmlDoc* document) noexcept
{
    for (xmlNode* node = document->intSubset ? document->intSubset->children : nullptr; node;
         node = node->next) {
        auto* declaration = reinterpret_cast<xmlAttribute*>(node);
        if (node->type == XML_ATTRIBUTE_DECL && !declaration->defaultValue &&
            declaration->def != XML_ATTRIBUTE_REQUIRED)
            declaration->def = XML_ATTRIBUTE_IMPLIED;
    }
}

/// The bytes of a document in its encoding. \return how many; -1, and errno or 0 in it, on failure
long serialise(xmlDoc* document, Output& output) noexcept
{
    complete_declarations(document);
    const ParserCall call;
    const char* encoding = from_xml(document->encoding);
    XmlEncoder encoder(encoding ? xmlFindCharEncodingHandler(encoding) : nullptr);
    if (encoding && (!encoder || !encoder->name)) {
        errno = EINVAL;
        return -1;
    }
    xmlOutputBuffer* buffer = xmlOutputBufferCreateIO(Output::write, nullptr, &output, encoder.get());
    if (!buffer)
        return -1;
    static_cast<void>(encoder.release());
    const int result = xmlSaveFormatFileTo(buffer, document, encoding, 0);
    // libxml2 counts in an int, which overflows on files of more than 2 GiB.
    const bool complete = result >= 0 || output.bytes() > INT_MAX;
    const bool out_of_memory = call.out_of_memory();
    errno = out_of_memory ? ENOMEM : 0;
    if (output.finish() && complete && !out_of_memory)
        return output.bytes();
    if (output.error() != 0)
        errno = output.error(); // closing what is broken tells less
    return -1;
}

long serialise_to(xmlDoc* document, int fd) noexcept
{
    if (document->compression < 0)
        document->compression = xmlGetCompressMode();
    if (document->compression > 0 && document->compression <= 9) {
        CompressedOutput output(fd, document->compression);
        return serialise(document, output);
    }
    PlainOutput output(fd);
    return serialise(document, output);
}

/// Tells whether an encoding can hold a document's names. Where it lacks a character, libxml2 would write
/// "&#1234;", which in a name makes the file unreadable.
class NameEncoder {
public:
    explicit NameEncoder(const char* encoding) noexcept : converter_(iconv_open(encoding, "UTF-8")) {}
    ~NameEncoder()
    {
        if (known())
            iconv_close(converter_);
    }
    NameEncoder(const NameEncoder&) = delete;
    NameEncoder& operator=(const NameEncoder&) = delete;

    bool holds_names_of(const xmlNode* node) const noexcept
    {
        if (is_element(node)) {
            for (const xmlNs* space = node->nsDef; space; space = space->next) {
                if (!holds(space->prefix))
                    return false;
            }
            for (const xmlAttr* attribute = node->properties; attribute; attribute = attribute->next) {
                if (!holds(attribute->name))
                    return false;
            }
        }
        return holds(node->name);
    }

private:
    bool known() const noexcept { return converter_ != reinterpret_cast<iconv_t>(-1); }

    bool holds(const xmlChar* name) const noexcept
    {
        if (!known() || !name)
            return true;
        char* input = const_cast<char*>(from_xml(name));
        std::size_t left = std::strlen(input);
        while (left > 0) {
            char discarded[256];
            char* end = discarded;
            std::size_t room = sizeof discarded;
            if (iconv(converter_, &input, &left, &end, &room) == static_cast<std::size_t>(-1) &&
                errno != E2BIG)
                return false;
        }
        return true;
    }

    iconv_t converter_;
};

bool encoding_holds_names(const xmlDoc* document) noexcept
{
    if (!document->encoding || xmlParseCharEncoding(from_xml(document->encoding)) == XML_CHAR_ENCODING_UTF8)
        return true;
    const NameEncoder encoder(from_xml(document->encoding));
    for (const xmlNode* node = document->children; node; node = next_node(node)) {
        if (!encoder.holds_names_of(node))
            return false;
    }
    return true;
}

/// Opens a file for writing; below 0, and errno, on failure.
int open_to_write(const std::string& name, int flags) noexcept
{
    return uninterrupted([&] { return open(name.c_str(), O_WRONLY | O_CLOEXEC | flags, 0666); });
}

/// Whether an errno says that there is no such file. Any other says that nobody can tell.
bool is_absence(int error) noexcept
{
    return error == ENOENT || error == ENOTDIR;
}

bool close_file(int fd) noexcept
{
    return close(fd) == 0 || errno == EINTR;
}

/// Puts what was written on the disk, where the file system can do that.
bool synchronise(int fd) noexcept
{
    const int result = uninterrupted([&] { return fsync(fd); });
    return result == 0 || errno == EINVAL || errno == ENOTSUP || errno == EROFS;
}

/// A new file beside its target, gone again unless it takes the target's place.
class Replacement {
public:
    explicit Replacement(std::string target) : target_(std::move(target))
    {
        static std::atomic<unsigned long> serial{0};
        const std::string folder = target_.substr(0, target_.rfind('/') + 1); // empty for the working folder
        do {
            name_ = folder + ".kalv-" + std::to_string(getpid()) + "-" + std::to_string(++serial);
            fd_ = open_to_write(name_, O_CREAT | O_EXCL);
            error_ = fd_ < 0 ? errno : 0;
        } while (error_ == EEXIST);
    }
    ~Replacement()
    {
        if (fd_ >= 0)
            close(fd_);
        if (error_ == 0 && !in_place_)
            unlink(name_.c_str());
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    bool is_open() const noexcept { return fd_ >= 0; }
    int error() const noexcept { return error_; }
    int fd() const noexcept { return fd_; }
    bool folder_is_closed() const noexcept { return error_ == EACCES || error_ == EPERM || error_ == EROFS; }

    /// Takes the place of the target, with the mode bits, and if possible the owner, of the file that stood
    /// there.
    bool take_place(const struct stat* old) noexcept
    {
        if (old) {
            const bool owned = fchown(fd_, old->st_uid, old->st_gid) == 0;
            static_cast<void>(owned); // only the superuser can give files away
            if (fchmod(fd_, old->st_mode & 07777) != 0)
                return false;
        }
        const bool synchronised = synchronise(fd_);
        const bool closed = close_file(std::exchange(fd_, -1));
        in_place_ = synchronised && closed && rename(name_.c_str(), target_.c_str()) == 0;
        return in_place_;
    }

private:
    std::string target_;
    std::string name_;
    int fd_ = -1;
    int error_ = 0;
    bool in_place_ = false;
};

long save_in_place(xmlDoc* document, const std::string& target) noexcept
{
    const int fd = open_to_write(target, O_CREAT | O_TRUNC);
    if (fd < 0)
        return -1;
    const long bytes = serialise_to(document, fd);
    return close_file(fd) ? bytes : -1;
}

/// The file that a chain of symbolic links leads to, whether it exists or not; empty where nobody can tell.
std::string target_of_links(std::string name)
{
    constexpr int longest_chain = 40;
    for (int links = 0; links < longest_chain; ++links) {
        std::error_code error;
        const std::filesystem::path link = std::filesystem::read_symlink(name, error);
        if (error == std::errc::invalid_argument || is_absence(error.value()))
            return name;
        if (error)
            break;
        name = (std::filesystem::path(name).parent_path() / link).string();
    }
    return {};
}

long save_to_standard_output(xmlDoc* document) noexcept
{
    StandardOutput output;
    return serialise(document, output);
}

} // namespace

Block<char> save_to_memory(xmlDoc* document, long& size) noexcept
{
    MemoryOutput output;
    size = encoding_holds_names(document) ? serialise(document, output) : -1;
    return size >= 0 ? output.take() : nullptr;
}

long save(xmlDoc* document, const char* file_name)
{
    if (!encoding_holds_names(document)) {
        errno = EILSEQ;
        return -1;
    }
    const BlockedSignals signals;
    if (std::strcmp(file_name, "-") == 0)
        return save_to_standard_output(document);
    const std::string target = target_of_links(file_name);
    struct stat old;
    const bool exists = stat(target.c_str(), &old) == 0;
    if (!exists && !is_absence(errno))
        return -1;
    if (exists && !S_ISREG(old.st_mode))
        return save_in_place(document, target);
    if (exists && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0)
        return -1;
    Replacement replacement(target);
    if (!replacement.is_open()) {
        errno = replacement.error();
        return replacement.folder_is_closed() ? save_in_place(document, target) : -1;
    }
    const long bytes = serialise_to(document, replacement.fd());
    return bytes >= 0 && replacement.take_place(exists ? &old : nullptr) ? bytes : -1;
}

} // namespace kh
