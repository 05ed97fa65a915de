// The table of open documents: taking slots, lowest first, and releasing them.
//
// The lock guards the table's pointers and nothing else. A file is parsed outside it, into a slot that was
// reserved before; until the parse is done the slot is nobody's, and releasing it changes nothing.
#include <kalv/document.h>

#include "tree/document.h"
#include "tree/parse.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iterator>
#include <libxml/parser.h>
#include <sys/single_threaded.h>
#include <utility>

kh_document_slot* global_current_status[KH_MAX_DOCUMENTS] = {};
pthread_mutex_t parser_mutex = PTHREAD_MUTEX_INITIALIZER;

namespace kh {

namespace {

class TableLock {
public:
    TableLock() noexcept : held_(pthread_mutex_lock(&parser_mutex) == 0) {}
    ~TableLock() { unlock(); }
    TableLock(const TableLock&) = delete;
    TableLock& operator=(const TableLock&) = delete;

    bool held() const noexcept { return held_; }

    /// Gives the lock back, and says on standard output when that fails.
    bool unlock() noexcept
    {
        const bool unlocked = !held_ || pthread_mutex_unlock(&parser_mutex) == 0;
        held_ = false;
        if (!unlocked)
            std::puts("!!! Error closing the threads. All threads will be closed");
        return unlocked;
    }

private:
    bool held_;
};

/// A slot is read without the lock, see in_slot().
void put_into_slot(long fd, Document* document) noexcept
{
    __atomic_store_n(&global_current_status[fd], document, __ATOMIC_RELEASE);
}

long lowest_free_slot() noexcept
{
    return std::find(std::begin(global_current_status), std::end(global_current_status), nullptr) -
           global_current_status;
}

bool table_is_empty() noexcept
{
    return std::all_of(std::begin(global_current_status), std::end(global_current_status),
                       [](const kh_document_slot* slot) { return !slot; });
}

/// Empties a slot and hands out what was in it. A slot that is still being opened belongs to the thread that
/// opens it: only that thread names its document as `opened`.
std::unique_ptr<Document> take_out(long fd, const Document* opened) noexcept
{
    Document* document = in_slot(fd);
    if (document && document->opening && document != opened)
        return nullptr;
    put_into_slot(fd, nullptr);
    return std::unique_ptr<Document>(document);
}

void release(Operation& op, long fd, const Document* opened = nullptr) noexcept
{
    TableLock lock;
    if (!lock.held()) {
        op.fail(KH_ERR_LOCK);
        return;
    }
    if (!in_table(fd)) {
        lock.unlock();
        op.fail(KH_ERR_DESCRIPTOR);
        return;
    }
    std::unique_ptr<Document> document = take_out(fd, opened);
    const bool last = document && table_is_empty();
    lock.unlock();
    // The tree goes last: a large block freed behind it makes the allocator join all its pieces at once.
    XmlDocument tree(document ? std::exchange(document->doc, nullptr) : nullptr);
    document.reset();
    free_parsed(std::move(tree));
    // With other threads about, the clean-up would pull libxml2 from under whoever is using it.
    if (last && __libc_single_threaded)
        xmlCleanupParser();
}

/// Gives up a slot whose opening failed. The caller's status tells why it failed, so this one is not told.
void give_up(long fd, Document* opened) noexcept
{
    long untold = KH_OK;
    Operation op("kh_tree_cleanup_parser", &untold);
    release(op, fd, opened);
    if (op.failed()) // a later release finds it
        opened->opening = false;
}

/// Makes libxml2 ready, which is done once. Without memory it would lack encodings for good, so that is undone.
bool initialise_parser() noexcept
{
    errno = 0;
    xmlInitParser();
    const bool complete = errno != ENOMEM;
    if (!complete && table_is_empty() && __libc_single_threaded)
        xmlCleanupParser();
    return complete;
}

/// Puts a new record into a free slot; null when there is no memory for it.
Document* reserve(long fd) noexcept
{
    auto* document = new (std::nothrow) Document;
    if (document)
        document->opening = true;
    put_into_slot(fd, document);
    return document;
}

/// The buffer is larger than the name needs; callers rely on that room.
char* copy_of_file_name(const char* file_name) noexcept
{
    const std::size_t length = std::strlen(file_name);
    auto* copy = static_cast<char*>(std::malloc(std::max<std::size_t>(8 * length, 8)));
    return copy ? std::strcpy(copy, file_name) : nullptr;
}

/// A file to open.
struct File {
    const char* name;

    bool is_missing() const noexcept { return !name; }
    XmlDocument parse(ParseOutcome& outcome) const noexcept { return parse_file(name, outcome); }
    bool keep_name(Document& document) const noexcept
    {
        document.file_name = copy_of_file_name(name);
        return document.file_name != nullptr;
    }
    long fail(Operation& op, long code) const noexcept { return op.fail(code, ". File: %s", name); }
};

/// The bytes of a file in memory, which has no name.
struct Memory {
    const char* data;
    long size;

    bool is_missing() const noexcept { return !data || size < 0; }
    XmlDocument parse(ParseOutcome& outcome) const noexcept
    {
        return parse_memory({data, static_cast<std::size_t>(size)}, outcome);
    }
    static bool keep_name(Document&) noexcept { return true; }
    static long fail(Operation& op, long code) noexcept { return op.fail(code); }
};

/// Parses a source into a reserved slot.
template <class Source>
void fill(Document& document, const Source& source, Operation& op) noexcept
{
    if (!source.keep_name(document)) {
        op.fail(KH_ERR_MEMORY);
        return;
    }
    ParseOutcome outcome;
    document.doc = source.parse(outcome).release();
    if (!document.doc) {
        source.fail(op, KH_ERR_PARSE);
        op.explain(outcome.problem);
        return;
    }
    document.root = xmlDocGetRootElement(document.doc);
    document.current = document.root;
    document.element_index.expect(outcome.elements);
    if (!document.root)
        source.fail(op, KH_ERR_ROOT_ELEMENT);
}

/// Opens a source in the lowest free slot. \return the descriptor
template <class Source>
long open(const char* function, const Source& source, long* ierr) noexcept
{
    static xmlGenericErrorFunc handler = KH_handle_xml_error;
    Operation op(function, ierr);
    TableLock lock;
    if (!lock.held()) {
        op.fail(KH_ERR_LOCK);
        return 0;
    }
    const bool initialised = initialise_parser();
    initGenericErrorDefaultFunc(&handler);
    const long fd = lowest_free_slot();
    const bool full = fd == KH_MAX_DOCUMENTS;
    Document* document = full || source.is_missing() || !initialised ? nullptr : reserve(fd);
    if (!lock.unlock()) {
        if (document)
            document->opening = false;
        return -1;
    }
    if (full) {
        op.fail(KH_ERR_TABLE_FULL);
        return -1;
    }
    if (source.is_missing()) {
        op.null_argument();
        return fd;
    }
    if (!document) {
        op.fail(KH_ERR_MEMORY);
        return fd;
    }
    fill(*document, source, op);
    if (op.failed())
        give_up(fd, document);
    else
        document->opening = false;
    return fd;
}

} // namespace

Document::~Document()
{
    xmlFreeDoc(doc);
    std::free(file_name);
}

Document* report_no_document(Operation& op, const long* fd) noexcept
{
    if (!fd)
        op.null_argument();
    else
        op.fail(in_table(*fd) ? KH_ERR_NO_DOCUMENT : KH_ERR_DESCRIPTOR);
    return nullptr;
}

} // namespace kh

using kh::Document;
using kh::Operation;

long kh_tree_init_parser(const char* file_name, long* ierr)
{
    return kh::open("kh_tree_init_parser", kh::File{file_name}, ierr);
}

long kh_tree_init_memory(const char* data, long size, long* ierr)
{
    return kh::open("kh_tree_init_memory", kh::Memory{data, size}, ierr);
}

long kh_tree_create(long* ierr)
{
    Operation op("kh_tree_create", ierr);
    kh::TableLock lock;
    if (!lock.held()) {
        op.fail(KH_ERR_LOCK);
        return 0;
    }
    const bool initialised = kh::initialise_parser();
    // A full table gives 512 here and -1 from kh_tree_init_parser: callers tell them apart.
    const long fd = kh::lowest_free_slot();
    const bool full = fd == KH_MAX_DOCUMENTS;
    Document* document = full || !initialised ? nullptr : kh::reserve(fd);
    if (document) {
        const kh::ParserCall call;
        kh::XmlDocument empty = kh::new_document();
        document->doc = call.out_of_memory() ? nullptr : empty.release();
        document->opening = !document->doc;
    }
    if (!lock.unlock())
        return -1;
    if (full) {
        op.fail(KH_ERR_TABLE_FULL);
    } else if (!document) {
        op.fail(KH_ERR_MEMORY);
    } else if (!document->doc) {
        op.fail(KH_ERR_CREATE_DOCUMENT);
        kh::give_up(fd, document);
    }
    return fd;
}

long kh_tree_cleanup_parser(long* fd, long* ierr)
{
    Operation op("kh_tree_cleanup_parser", ierr);
    if (fd)
        kh::release(op, *fd);
    else
        op.null_argument();
    return op.status();
}

void kh_tree_cleanup_all_parser(void)
{
    for (long fd = 0; fd < KH_MAX_DOCUMENTS; ++fd) {
        long ignored = KH_OK;
        kh_tree_cleanup_parser(&fd, &ignored);
    }
}

char* KH_get_file_name(long fd)
{
    const Document* document = kh::find_document(&fd);
    return document ? document->file_name : nullptr;
}
