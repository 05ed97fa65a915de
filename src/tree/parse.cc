// From a file to a tree: the tree that xmlParseFile makes, from a file name that is never taken for a URI,
// with settings that the host program cannot change and without a limit that this library's own files could
// exceed.
#include "tree/parse.h"

#include "frame/memory.h"
#include "frame/system.h"

#include <kalv/status.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/uri.h>
#include <unistd.h>
#include <utility>
#include <zlib.h>

namespace kh {

namespace {

class Descriptor {
public:
    explicit Descriptor(const char* file_name) noexcept
        : standard_input_(std::strcmp(file_name, "-") == 0),
          fd_(standard_input_ ? STDIN_FILENO
                              : uninterrupted([&] { return open(file_name, O_RDONLY | O_CLOEXEC); }))
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

    /// As read(2), taken up again after a signal.
    ssize_t read(char* buffer, std::size_t size) const noexcept
    {
        return uninterrupted([&] { return ::read(fd_, buffer, size); });
    }

private:
    bool standard_input_;
    int fd_;
};

/// The bytes of a file or of a text in memory, inflated where they are compressed. A plain read: a mapping
/// would end the process when somebody cuts the file short.
class Input {
public:
    Input(const Descriptor& file, ParserCall& call) noexcept
        : call_(call), file_(&file), buffer_(static_cast<char*>(std::malloc(buffer_size))),
          bytes_(buffer_.get())
    {
        failed_ = !buffer_;
        while (!ended_ && !failed_ && end_ < buffer_size)
            read_more();
        prepare();
    }
    Input(std::string_view text, ParserCall& call) noexcept
        : call_(call), bytes_(text.data()), end_(text.size()), ended_(true)
    {
        prepare();
    }
    ~Input()
    {
        if (initialised_)
            inflateEnd(&state_);
    }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    /// True when bytes could not be read, or are not what compressed ones must be.
    bool failed() const noexcept { return failed_; }
    /// Tells the parser that the bytes go to, before it reads any.
    void serve(const xmlParserCtxt* parser) noexcept { parser_ = parser; }
    const char* problem() const noexcept { return problem_; }

    /// The whole input, where it is a small one that needs no inflating.
    bool is_in_memory() const noexcept { return ended_ && !compressed_ && end_ <= small_size; }
    const char* data() const noexcept { return bytes_; }
    int size() const noexcept { return static_cast<int>(end_); }

    /// The compression that the document is written with later. As libxml2 has it, a file that inflates into
    /// its first buffer is written plainly, and every other one compressed.
    int compression() const noexcept { return !compressed_ ? 0 : inflated_ > 16384 ? 9 : -1; }

    /// Hands the parser the next bytes.
    static int read(void* self, char* bytes, int size) noexcept
    {
        auto* input = static_cast<Input*>(self);
        input->call_.note_failures();
        if (!input->parser_->wellFormed)
            return 0; // nothing can mend it any more, and libxml2 takes very long over some of what follows
        const std::size_t room = static_cast<std::size_t>(size);
        const std::size_t count =
            input->compressed_ ? input->inflate_into(bytes, room) : input->copy_into(bytes, room);
        return input->failed_ ? -1 : static_cast<int>(count);
    }

private:
    static constexpr std::size_t buffer_size = 32U << 10;
    static constexpr std::size_t small_size = 16U << 10;

    // What inflates without end is an attack. Real data seldom comes near the largest ratio that there is,
    // 1032.
    static constexpr std::size_t harmless_size = 16U << 20;
    static constexpr std::size_t largest_ratio = 900;

    void prepare() noexcept
    {
        compressed_ = starts_member();
        if (compressed_) {
            initialised_ = inflateInit2(&state_, 15 + 16) == Z_OK;
            failed_ = failed_ || !initialised_;
        }
    }

    void read_more() noexcept
    {
        const ssize_t count = file_->read(buffer_.get() + end_, buffer_size - end_);
        if (count < 0) {
            problem_ = strerrordesc_np(errno);
            KH_handle_xml_error(nullptr, "I/O error : %s\n", problem_);
            failed_ = true;
            return;
        }
        ended_ = count == 0;
        end_ += static_cast<std::size_t>(count);
    }

    /// Makes sure that there are at least `count` bytes, or all that are left.
    void provide(std::size_t count) noexcept
    {
        if (ended_ || end_ - begin_ >= count)
            return;
        std::memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
        while (!ended_ && !failed_ && end_ < count)
            read_more();
    }

    std::size_t copy_into(char* bytes, std::size_t size) noexcept
    {
        provide(1);
        const std::size_t count = std::min(size, end_ - begin_);
        std::memcpy(bytes, bytes_ + begin_, count);
        begin_ += count;
        return count;
    }

    bool starts_member() const noexcept
    {
        return end_ - begin_ > 2 && std::memcmp(bytes_ + begin_, "\x1f\x8b", 2) == 0;
    }

    std::size_t inflate_into(char* bytes, std::size_t size) noexcept
    {
        state_.next_out = reinterpret_cast<Bytef*>(bytes);
        state_.avail_out = static_cast<uInt>(size);
        while (!failed_ && !finished_ && state_.avail_out > 0)
            inflate_more();
        const std::size_t count = size - state_.avail_out;
        inflated_ += count;
        if (inflated_ > harmless_size && inflated_ / largest_ratio > consumed_)
            failed_ = true;
        return count;
    }

    void inflate_more() noexcept
    {
        provide(1);
        const std::size_t offered = std::min<std::size_t>(end_ - begin_, UINT_MAX);
        state_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes_ + begin_)); // only read
        state_.avail_in = static_cast<uInt>(offered);
        const int result = inflate(&state_, Z_NO_FLUSH);
        begin_ += offered - state_.avail_in;
        consumed_ += offered - state_.avail_in;
        if (result == Z_STREAM_END)
            end_member();
        else if (result != Z_OK)
            failed_ = true; // damaged, or cut short
    }

    /// Compressed files may stand one behind the other; what follows them and is none is not read.
    void end_member() noexcept
    {
        provide(3);
        finished_ = !starts_member();
        if (!finished_ && inflateReset(&state_) != Z_OK)
            failed_ = true;
    }

    const char* problem_ = "compressed bytes are damaged, cut short, or inflate without end";
    ParserCall& call_;
    const xmlParserCtxt* parser_ = nullptr;
    const Descriptor* file_ = nullptr;
    Block<char> buffer_;
    const char* bytes_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool ended_ = false;
    bool failed_ = false;
    bool compressed_ = false;
    bool initialised_ = false;
    bool finished_ = false;
    std::size_t consumed_ = 0;
    std::size_t inflated_ = 0;
    z_stream state_ = {};
};

/// The dictionary of a document that was closed. Making one costs a small file as much as reading it. And its table
/// is a large block: freed with a document, it would make the allocator join all the pieces of that document and hand
/// them back to the system, page by page, for the next document to ask for them anew.
class SpareDictionary {
public:
    ~SpareDictionary()
    {
        if (!is_left_)
            keep(nullptr);
    }

    XmlDictionary take() noexcept
    {
        return XmlDictionary(has_standard_memory() ? kept_.exchange(nullptr) : nullptr);
    }
    /// Keeps a small one.
    void keep(XmlDictionary dictionary) noexcept
    {
        constexpr int few = 5000; // names from all the documents that it has served
        const bool is_small = !dictionary || (xmlDictSize(dictionary.get()) <= few &&
                                              xmlDictGetUsage(dictionary.get()) <= most_bytes);
        if (is_small && has_standard_memory())
            XmlDictionary(kept_.exchange(dictionary.release()));
    }
    void leave() noexcept { is_left_ = true; }

    static constexpr std::size_t most_bytes = 256U << 10;

private:
    /// A host program may give libxml2 other functions for memory, also after the last document was closed. What is
    /// kept came from the standard ones, and stays as long as there are others.
    static bool has_standard_memory() noexcept { return xmlFree == static_cast<xmlFreeFunc>(std::free); }

    std::atomic<xmlDict*> kept_{nullptr};
    bool is_left_ = false;
};

SpareDictionary spare_dictionary;

/// A document that declares entities keeps libxml2's limits, which guard against entities that multiply. What its
/// dictionary held before is not counted.
void declare_entity(void* context, const xmlChar* name, int type, const xmlChar* public_id,
                    const xmlChar* system_id, xmlChar* content)
{
    auto* parser = static_cast<xmlParserCtxt*>(context);
    parser->options &= ~XML_PARSE_HUGE;
    xmlDictSetLimit(parser->dict, XML_MAX_DICTIONARY_LIMIT + SpareDictionary::most_bytes);
    xmlSAX2EntityDecl(context, name, type, public_id, system_id, content);
}

/// Counts what a parameter entity expands to, as libxml2 does before it reads the entity. It goes on with an
/// input that it has freed when memory runs out in that place, and without harm when memory runs out here.
xmlEntity* find_parameter_entity(void* context, const xmlChar* name)
{
    auto* parser = static_cast<xmlParserCtxt*>(context);
    xmlEntity* entity = xmlSAX2GetParameterEntity(context, name);
    if (!entity || entity->checked != 0 || !entity->content || parser->errNo == XML_ERR_ENTITY_LOOP)
        return entity;
    const unsigned long before = parser->nbentities;
    entity->checked = 1;
    ++parser->depth;
    const XmlText text(xmlStringDecodeEntities(parser, entity->content, XML_SUBSTITUTE_REF, 0, 0, 0));
    --parser->depth;
    if (!text || parser->errNo == XML_ERR_ENTITY_LOOP)
        entity->content[0] = 0;
    const unsigned long count = std::min(parser->nbentities - before + 1, INT_MAX / 2UL);
    entity->checked = static_cast<int>(2 * count) | (xmlStrchr(text.get(), '<') ? 1 : 0);
    return entity;
}

/// Counts elements, for the index that may be made of them.
void start_element(void* context, const xmlChar* local_name, const xmlChar* prefix, const xmlChar* uri,
                   int namespace_count, const xmlChar** namespaces, int attribute_count, int defaulted_count,
                   const xmlChar** attributes)
{
    if (void* outcome =
            static_cast<xmlParserCtxt*>(context)->_private) // an entity may have a parser of its own
        ++static_cast<ParseOutcome*>(outcome)->elements;
    xmlSAX2StartElementNs(context, local_name, prefix, uri, namespace_count, namespaces, attribute_count,
                          defaulted_count, attributes);
}

struct FreeParser {
    void operator()(xmlParserCtxt* parser) const noexcept
    {
        xmlFreeDoc(parser->myDoc);
        parser->myDoc = nullptr;
        for (int i = 0; i < parser->inputNr; ++i) {
            if (xmlParserInputBuffer* buffer = parser->inputTab[i]->buf)
                XmlEncoder(std::exchange(buffer->encoder, nullptr));
        }
        xmlFreeParserCtxt(parser);
    }
};
using Parser = std::unique_ptr<xmlParserCtxt, FreeParser>;

/// A parser with libxml2's defaults, whatever the host program made of them.
Parser new_parser(ParseOutcome& outcome) noexcept
{
    Parser parser(xmlNewParserCtxt());
    if (parser) {
        if (XmlDictionary dictionary = spare_dictionary.take()) {
            xmlDictFree(parser->dict);
            parser->dict = dictionary.release();
        }
        xmlSAXVersion(parser->sax, 2);
        parser->_private = &outcome;
        parser->sax->startElementNs = start_element;
        parser->sax->entityDecl = declare_entity;
        parser->sax->getParameterEntity = find_parameter_entity;
        parser->options = 0;
        xmlCtxtUseOptions(parser.get(), XML_PARSE_HUGE);
    }
    return parser;
}

/// As xmlParserInputBufferCreateMem, which loses its buffer where there is no memory for the bytes.
xmlParserInputBuffer* new_input_buffer(const Input& source) noexcept
{
    xmlParserInputBuffer* buffer = xmlAllocParserInputBuffer(XML_CHAR_ENCODING_NONE);
    if (!buffer)
        return nullptr;
    buffer->readcallback = [](void*, char*, int) { return 0; };
    if (xmlParserInputBufferPush(buffer, source.size(), source.data()) == source.size())
        return buffer;
    xmlFreeParserInputBuffer(buffer);
    return nullptr;
}

/// Gives the parser its input: a small file as a whole, which is fastest, any other piece by piece.
bool attach(xmlParserCtxt* parser, Input& source, const char* file_name) noexcept
{
    source.serve(parser);
    xmlParserInputBuffer* buffer =
        source.is_in_memory()
            ? new_input_buffer(source)
            : xmlParserInputBufferCreateIO(Input::read, nullptr, &source, XML_CHAR_ENCODING_NONE);
    if (!buffer)
        return false;
    xmlParserInput* input = xmlNewIOInputStream(parser, buffer, XML_CHAR_ENCODING_NONE);
    if (!input) {
        xmlFreeParserInputBuffer(buffer);
        return false;
    }
    if (file_name)
        input->filename = reinterpret_cast<char*>(xmlCanonicPath(to_xml(file_name)));
    inputPush(parser, input);
    return true;
}

/// Keeps what kept the bytes from coming, or where in them the first error was met.
void describe(const Input& input, const ParserCall& call, const char* file_name,
              ParseOutcome& outcome) noexcept
{
    const char* name = file_name ? file_name : "memory";
    if (input.failed())
        std::snprintf(outcome.problem, sizeof outcome.problem, "%s: %s", name, input.problem());
    else if (*call.fatal_message())
        std::snprintf(outcome.problem, sizeof outcome.problem, "%s:%s", name, call.fatal_message());
    else
        std::snprintf(outcome.problem, sizeof outcome.problem, "%s: out of memory", name);
}

/// Parses an input; the file name, which may be null, stands in messages and in the document.
XmlDocument parse(Input& input, const ParserCall& call, const char* file_name, ParseOutcome& outcome) noexcept
{
    const Parser parser = new_parser(outcome);
    const bool attached = !input.failed() && parser && attach(parser.get(), input, file_name);
    if (attached)
        xmlParseDocument(parser.get());
    if (!attached || !parser->wellFormed || input.failed() || call.out_of_memory() ||
        parser->errNo == XML_ERR_NO_MEMORY) {
        describe(input, call, file_name, outcome);
        return nullptr;
    }
    XmlDocument document(parser->myDoc);
    parser->myDoc = nullptr;
    if (document) {
        document->parseFlags = 0; // the tree does not tell which limits were lifted
        document->compression = input.compression();
    }
    return document;
}

} // namespace

XmlDocument parse_file(const char* file_name, ParseOutcome& outcome) noexcept
{
    const Descriptor file(file_name);
    if (!file.is_open()) {
        std::snprintf(outcome.problem, sizeof outcome.problem, "%s: %s", file_name, strerrordesc_np(errno));
        KH_handle_xml_error(nullptr, "I/O warning : failed to load external entity \"%s\"\n", file_name);
        return nullptr;
    }
    ParserCall call;
    Input input(file, call);
    return parse(input, call, file_name, outcome);
}

XmlDocument parse_memory(std::string_view bytes, ParseOutcome& outcome) noexcept
{
    ParserCall call;
    Input input(bytes, call);
    return parse(input, call, nullptr, outcome);
}

XmlDocument new_document() noexcept
{
    XmlDictionary dictionary = spare_dictionary.take();
    if (!dictionary)
        dictionary.reset(xmlDictCreate());
    XmlDocument document(dictionary ? xmlNewDoc(to_xml("1.0")) : nullptr);
    if (document)
        document->dict = dictionary.release();
    return document;
}

void free_parsed(XmlDocument document) noexcept
{
    XmlDictionary dictionary;
    if (document && document->dict && xmlDictReference(document->dict) == 0)
        dictionary.reset(document->dict);
    document.reset();
    if (dictionary)
        spare_dictionary.keep(std::move(dictionary));
}

void leave_spare_dictionary() noexcept
{
    spare_dictionary.leave();
}

} // namespace kh
