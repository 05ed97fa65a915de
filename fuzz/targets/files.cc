// Any bytes as a file: libxml2 and the library agree on what they are, and all reads on what they hold.
#include "document.h"
#include "texts.h"

#include "torture/describe.h"

#include <cstring>
#include <zlib.h>

namespace {

std::string compressed(const std::string& bytes)
{
    z_stream state = {};
    fuzz::check(deflateInit2(&state, 1, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) == Z_OK, "zlib works");
    std::string result(deflateBound(&state, bytes.size()), '\0');
    state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data())); // only read
    state.avail_in = static_cast<uInt>(bytes.size());
    state.next_out = reinterpret_cast<Bytef*>(result.data());
    state.avail_out = static_cast<uInt>(result.size());
    fuzz::check(deflate(&state, Z_FINISH) == Z_STREAM_END, "zlib compresses");
    result.resize(state.total_out);
    deflateEnd(&state);
    return result;
}

/// The tree alone, without what a file adds to it.
std::string described(const xmlDoc* document)
{
    const std::string text = torture::described(document);
    return fuzz::without_references(text.substr(std::min(text.find('\n'), text.size())));
}

/// The same bytes as a file, as they are or compressed, are the same document.
void check_file(const std::string& bytes, const fuzz::Document& document)
{
    static const fuzz::File file;
    file.write(bytes);
    long status = KH_OK;
    long fd = -1;
    {
        const torture::memory::Inside inside;
        fd = kh_tree_init_parser(file.name(), &status);
    }
    fuzz::check_described(status);
    fuzz::check_result((status == KH_OK) == document.is_open(), "a file is read as its bytes are");
    if (status != KH_OK)
        return;
    if (document.is_open())
        fuzz::check(described(global_current_status[fd]->doc) == described(document.slot().doc),
                    "a file is the same document as its bytes");
    kh_tree_cleanup_parser(&fd, nullptr);
}

} // namespace

void fuzz::run(Bytes& bytes)
{
    const bool is_made = bytes.ConsumeBool();
    std::string text;
    if (is_made) {
        text = document_text(bytes);
    } else {
        const std::vector<char> rest = bytes.ConsumeRemainingBytes<char>();
        text.assign(rest.begin(), rest.end());
    }
    const Tree plain = plain_tree(text);
    Document document(text);
    const bool is_plain = text.compare(0, 2, "\x1f\x8b") != 0;
    if (is_plain) {
        check_result(document.is_open() == (plain && xmlDocGetRootElement(plain.get())),
                     "what is well-formed can be read, and nothing else");
        if (document.is_open() && plain)
            check(described(plain.get()) == described(document.slot().doc),
                  "libxml2 reads the same document");
    }
    switch (bytes.ConsumeIntegralInRange(0, 31)) {
    case 1:
        check_file(text, document);
        break;
    case 2:
        check_file(compressed(text), document);
        break;
    default:
        break;
    }
    if (!document.is_open()) {
        const long status = document.status();
        check(status == KH_ERR_PARSE || status == KH_ERR_MEMORY || status == KH_ERR_ROOT_ELEMENT,
              "a file that cannot be read is reported so");
        return;
    }
    check(document.has_root(), "an open document has a root");
    check_reads(document, bytes);
}
