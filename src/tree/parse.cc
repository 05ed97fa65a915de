// From a file to a tree: the tree that xmlParseFile makes, from a file name that is never taken for a URI,
// with settings that the host program cannot change and without a limit that this library's own files could
// exceed.
#include "tree/parse.h"

#include "frame/memory.h"

#include <kalv/status.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/uri.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

namespace kh {

namespace {

class Descriptor {
public:
    explicit Descriptor(const char* file_name) noexcept
        : standard_input_(std::strcmp(file_name, "-") == 0),
          fd_(standard_input_ ? STDIN_FILENO : open(file_name, O_RDONLY | O_CLOEXEC))
    {
    }
    ~Descriptor()
    {
        if (!standard_input_ && fd_ >= 0)
            close(fd_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool is_open() const noexcept { return fd_ >= 0; }

    /// The size of a regular file; 0 for anything else.
    std::size_t size() const noexcept
    {
        struct stat status;
        return fstat(fd_, &status) == 0 && S_ISREG(status.st_mode) ? static_cast<std::size_t>(status.st_size)
                                                                   : 0;
    }

    /// As read(2), taken up again after a signal.
    ssize_t read(char* buffer, std::size_t size) const noexcept
    {
        ssize_t count = 0;
        do
            count = ::read(fd_, buffer, size);
        while (count < 0 && errno == EINTR);
        return count;
    }

private:
    bool standard_input_;
    int fd_;
};

/// The bytes of a file.
struct Bytes {
    Block<char> block;
    std::size_t size = 0;

    bool is_gzip() const noexcept { return size > 2 && std::memcmp(block.get(), "\x1f\x8b", 2) == 0; }

    /// Reads a file to its end. A plain read: a mapping would end the process when somebody cuts the file
    /// short.
    bool read(const Descriptor& file) noexcept
    {
        std::size_t capacity = std::max<std::size_t>(file.size() + 1, 4096);
        block.reset(static_cast<char*>(std::malloc(capacity)));
        while (block) {
            const ssize_t count = file.read(block.get() + size, capacity - size);
            if (count <= 0)
                return count == 0;
            size += static_cast<std::size_t>(count);
            if (size < capacity)
                continue;
            capacity *= 2;
            void* larger = std::realloc(block.get(), capacity);
            if (!larger)
                return false;
            static_cast<void>(block.release());
            block.reset(static_cast<char*>(larger));
        }
        errno = ENOMEM;
        return false;
    }
};

/// Hands bytes to the parser piece by piece, inflated where they are compressed.
class Stream {
public:
    explicit Stream(const Bytes& bytes) noexcept : bytes_(bytes), inflating_(bytes.is_gzip())
    {
        if (!inflating_)
            return;
        state_.next_in = reinterpret_cast<Bytef*>(bytes.block.get());
        initialised_ = inflateInit2(&state_, 15 + 16) == Z_OK;
        broken_ = !initialised_;
    }
    ~Stream()
    {
        if (initialised_)
            inflateEnd(&state_);
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    bool broken() const noexcept { return broken_; }

    /// The compression that the document is written with later. As libxml2 has it, a file that inflates into
    /// its first buffer is written plainly, and every other one compressed.
    int compression() const noexcept { return inflated_ > 16384 ? 9 : -1; }

    static int read(void* self, char* buffer, int size) noexcept
    {
        auto* stream = static_cast<Stream*>(self);
        return stream->inflating_ ? stream->inflate_into(buffer, size) : stream->copy_into(buffer, size);
    }

private:
    // A small file that inflates without end is an attack: real data stays far below a hundredfold.
    static constexpr std::size_t free_size = 16U << 20;
    static constexpr std::size_t largest_ratio = 100;

    int copy_into(char* buffer, int size) noexcept
    {
        const std::size_t count = std::min(static_cast<std::size_t>(size), bytes_.size - position_);
        std::memcpy(buffer, bytes_.block.get() + position_, count);
        position_ += count;
        return static_cast<int>(count);
    }

    int inflate_into(char* buffer, int size) noexcept
    {
        state_.next_out = reinterpret_cast<Bytef*>(buffer);
        state_.avail_out = static_cast<uInt>(size);
        while (!broken_ && !finished_ && state_.avail_out > 0)
            step();
        const int count = size - static_cast<int>(state_.avail_out);
        inflated_ += static_cast<std::size_t>(count);
        if (inflated_ > free_size && inflated_ / largest_ratio > position_)
            broken_ = true;
        return broken_ ? -1 : count;
    }

    void step() noexcept
    {
        const std::size_t left = bytes_.size - position_;
        const uInt offered = static_cast<uInt>(std::min<std::size_t>(left, UINT_MAX));
        state_.avail_in = offered;
        const int result = inflate(&state_, Z_NO_FLUSH);
        position_ += offered - state_.avail_in;
        if (result == Z_STREAM_END)
            finish_member();
        else if (result != Z_OK)
            broken_ = true; // damaged, or cut short
    }

    /// Compressed files may stand one behind the other; what follows them and is none is not read.
    void finish_member() noexcept
    {
        const char* rest = bytes_.block.get() + position_;
        if (bytes_.size - position_ > 2 && std::memcmp(rest, "\x1f\x8b", 2) == 0)
            broken_ = inflateReset(&state_) != Z_OK;
        else
            finished_ = true;
    }

    const Bytes& bytes_;
    const bool inflating_;
    bool initialised_ = false;
    bool broken_ = false;
    bool finished_ = false;
    std::size_t position_ = 0;
    std::size_t inflated_ = 0;
    z_stream state_ = {};
};

/// Refuses a text that libxml2 would have refused, had it come in pieces.
void take_text(void* context, const xmlChar* text, int length)
{
    xmlSAX2Characters(context, text, length);
    auto* parser = static_cast<xmlParserCtxt*>(context);
    if (length <= XML_MAX_TEXT_LENGTH)
        return;
    KH_handle_xml_error(nullptr, "%s: text of more than %d bytes in a file that declares entities\n",
                        parser->input->filename, XML_MAX_TEXT_LENGTH);
    parser->wellFormed = 0;
    xmlStopParser(parser);
}

/// A document that declares entities keeps libxml2's limits, which guard against entities that multiply.
void declare_entity(void* context, const xmlChar* name, int type, const xmlChar* public_id,
                    const xmlChar* system_id, xmlChar* content)
{
    auto* parser = static_cast<xmlParserCtxt*>(context);
    parser->options &= ~XML_PARSE_HUGE;
    parser->sax->characters = take_text;
    xmlDictSetLimit(parser->dict, XML_MAX_DICTIONARY_LIMIT);
    xmlSAX2EntityDecl(context, name, type, public_id, system_id, content);
}

struct FreeParser {
    void operator()(xmlParserCtxt* parser) const noexcept
    {
        xmlFreeDoc(parser->myDoc);
        parser->myDoc = nullptr;
        xmlFreeParserCtxt(parser);
    }
};
using Parser = std::unique_ptr<xmlParserCtxt, FreeParser>;

/// A parser with libxml2's defaults, whatever the host program made of them.
Parser new_parser() noexcept
{
    Parser parser(xmlNewParserCtxt());
    if (parser) {
        xmlSAXVersion(parser->sax, 2);
        parser->sax->entityDecl = declare_entity;
        parser->options = 0;
        xmlCtxtUseOptions(parser.get(), XML_PARSE_HUGE);
    }
    return parser;
}

/// Gives the parser its input: memory as a whole, which is fastest; what is compressed, or too large for
/// that, piece by piece.
bool attach(xmlParserCtxt* parser, Bytes& bytes, Stream& stream, const char* file_name) noexcept
{
    xmlParserInputBuffer* buffer = nullptr;
    if (bytes.is_gzip() || bytes.size > INT_MAX / 2) {
        buffer = xmlParserInputBufferCreateIO(Stream::read, nullptr, &stream, XML_CHAR_ENCODING_NONE);
    } else {
        buffer = xmlParserInputBufferCreateMem(bytes.block.get(), static_cast<int>(bytes.size),
                                               XML_CHAR_ENCODING_NONE);
        bytes.block.reset(); // libxml2 made a copy
    }
    if (!buffer)
        return false;
    xmlParserInput* input = xmlNewIOInputStream(parser, buffer, XML_CHAR_ENCODING_NONE);
    if (!input) {
        xmlFreeParserInputBuffer(buffer);
        return false;
    }
    input->filename = reinterpret_cast<char*>(xmlCanonicPath(to_xml(file_name)));
    inputPush(parser, input);
    return true;
}

} // namespace

XmlDocument parse_file(const char* file_name) noexcept
{
    const ParserCall call;
    const Descriptor file(file_name);
    if (!file.is_open()) {
        KH_handle_xml_error(nullptr, "I/O warning : failed to load external entity \"%s\"\n", file_name);
        return nullptr;
    }
    Bytes bytes;
    if (!bytes.read(file)) {
        KH_handle_xml_error(nullptr, "I/O error : %s: %s\n", file_name, strerrorname_np(errno));
        return nullptr;
    }
    const bool compressed = bytes.is_gzip();
    Stream stream(bytes);
    const Parser parser = new_parser();
    if (!parser || !attach(parser.get(), bytes, stream, file_name))
        return nullptr;
    xmlParseDocument(parser.get());
    if (!parser->wellFormed || stream.broken() || call.out_of_memory() || parser->errNo == XML_ERR_NO_MEMORY)
        return nullptr;
    XmlDocument document(parser->myDoc);
    parser->myDoc = nullptr;
    if (document) {
        document->parseFlags = 0; // the tree does not tell which limits were lifted
        document->compression = compressed ? stream.compression() : 0;
    }
    return document;
}

} // namespace kh
