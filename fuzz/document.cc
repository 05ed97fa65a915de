#include "document.h"

#include "torture/describe.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace fuzz {

namespace {

void show(const std::string& first, const std::string& second)
{
    std::fprintf(stderr, "---\n%s\n---\n%s\n---\n", first.c_str(), second.c_str());
}

} // namespace

Document::Document()
{
    const torture::memory::Inside inside;
    fd_ = kh_tree_create(&status_);
    check_described(status_);
}

Document::Document(const std::string& bytes)
{
    const torture::memory::Inside inside;
    fd_ = kh_tree_init_memory(bytes.data(), static_cast<long>(bytes.size()), &status_);
    check_described(status_);
}

Document::~Document()
{
    long status = KH_OK;
    if (is_open())
        check(kh_tree_cleanup_parser(&fd_, &status) == KH_OK && status == KH_OK,
              "a document can be released");
}

std::string Document::described() const
{
    std::string text = torture::described(slot().doc);
    if (text.find(torture::broken_mark) != std::string::npos)
        std::fprintf(stderr, "%s\n", text.c_str());
    check(text.find(torture::broken_mark) == std::string::npos, "the tree is sound");
    check(slot().root == xmlDocGetRootElement(slot().doc), "the root is the root");
    bool is_inside = !slot().current;
    for (const xmlNode* node = slot().current; node; node = node->parent)
        is_inside = is_inside || node == reinterpret_cast<const xmlNode*>(slot().doc);
    check(is_inside, "the cursor stands in the document");
    return text;
}

void Document::check_unchanged(long status, const std::string& before) const
{
    if (status >= KH_OK || known_ == before)
        return;
    show(before, known_);
    check(false, "an error leaves the document as it was");
}

std::string Document::written()
{
    changes(); // closing tags get their indentation
    Text data;
    long size = -1;
    status_of(kh_tree_write_memory, fd(), data.out(), &size);
    check(data.is_null() == (size < 0), "the size tells whether there are bytes");
    return data.is_null() ? "" : std::string(*data.out(), static_cast<std::size_t>(size));
}

long Document::go_along(const std::string& path)
{
    const PathModel model(path);
    const kh_document_slot& state = slot();
    if (!state.root || !state.current)
        return edit(kh_tree_go_to_path_node, path.c_str());
    const Place place = fuzz::go_along(model, state.root, state.current);
    const long status = status_of(kh_tree_go_to_path_node, fd(), path.c_str());
    if (status == KH_ERR_MEMORY)
        return status;
    check(status == place.status, "a path has the status that the model has");
    check(status < KH_OK || state.current == place.node, "a path leads where the model leads");
    check(state.absolute == (model.absolute ? 1 : 0) && state.array_position == model.array_position &&
              state.stack_count == static_cast<long>(model.segments.size()),
          "the stack holds the path");
    for (std::size_t i = 0; i < model.segments.size(); ++i)
        check(model.segments[i].name == state.stack_name[i] &&
                  model.segments[i].index == state.stack_index[i],
              "the stack holds the path's nodes");
    return status;
}

File::File()
{
    const int fd = mkstemp(name_);
    check(fd >= 0, "a temporary file can be made");
    close(fd);
}

File::~File()
{
    unlink(name_);
}

void File::write(const std::string& bytes) const
{
    const int fd = open(name_, O_WRONLY | O_TRUNC | O_CLOEXEC);
    const ssize_t count = ::write(fd, bytes.data(), bytes.size());
    close(fd);
    check(count == static_cast<ssize_t>(bytes.size()), "the temporary file can be written");
}

std::string File::read() const
{
    std::string bytes;
    char buffer[4096];
    const int fd = open(name_, O_RDONLY | O_CLOEXEC);
    for (ssize_t count = 1; count > 0;
         bytes.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(count, 0))))
        count = ::read(fd, buffer, sizeof buffer);
    close(fd);
    return bytes;
}

namespace {

/// Characters that another encoding lacks are written as references, in comments too, where none is read.
bool is_unicode(const xmlDoc* document)
{
    return !document->encoding || xmlStrcasecmp(document->encoding, BAD_CAST "UTF-8") == 0;
}

/// A text that an edit left without a character.
bool has_empty_text(const xmlDoc* document)
{
    for (const xmlNode* element : elements(document))
        for (const xmlNode* child = element->children; child; child = child->next)
            if (child->type == XML_TEXT_NODE && *chars(child->content) == '\0')
                return true;
    return false;
}

/// What was read from what had been written is written to the same bytes. Only a declaration that was made as an
/// attribute comes to stand before the attributes then, and stays there; and where an empty text stood behind an
/// element, which is gone when it is read, the closing tag gets its indentation.
void check_written_again(const std::string& first, const std::string& second, bool had_empty_text)
{
    if (first == second || memory_fails())
        return;
    const Tree tree = plain_tree(second);
    const bool is_same = tree && (had_empty_text || outline(tree.get()) == outline(plain_tree(first).get()));
    if (!is_same)
        show(first, second);
    check(is_same, "what is written is read and written again");
    Document again(second);
    check(again.is_open() && again.written() == second, "what is written twice is written to the same bytes");
}

} // namespace

void check_round_trip(Document& document)
{
    if (!document.has_root())
        return;
    const std::string bytes = document.written();
    if (bytes.empty()) {
        check_result(!is_unicode(document.slot().doc), "a document can be written");
        return;
    }
    const Tree plain = plain_tree(bytes);
    if (!plain)
        show(bytes, "");
    check(plain != nullptr, "what is written is well-formed");
    if (is_unicode(document.slot().doc)) {
        const std::string read = outline(plain.get());
        const std::string kept = outline(document.slot().doc);
        if (read != kept)
            show(kept, read);
        check(read == kept, "what is written is what the document holds");
    }
    Document again(bytes);
    check_result(again.is_open(), "what is written can be read");
    if (!again.is_open())
        return;
    check_written_again(bytes, again.written(), has_empty_text(document.slot().doc));
}

void check_file_round_trip(Document& document, const File& file)
{
    if (!document.has_root())
        return;
    const std::string old = "what the file held before";
    file.write(old);
    document.changes();
    long status = KH_OK;
    long count = 0;
    {
        const torture::memory::Inside inside;
        count = kh_tree_write(document.fd(), file.name(), &status);
    }
    check_described(status);
    const std::string written = file.read();
    if (count < 0) {
        check(written == old, "a failed save leaves the old file");
        return;
    }
    const std::string bytes = document.written();
    if (bytes.empty())
        return;
    check(count == static_cast<long>(bytes.size()), "a save tells how many bytes it wrote");
    const bool is_compressed = document.slot().doc->compression != 0 && written != bytes;
    check(is_compressed || written == bytes, "file and memory get the same bytes");
    long fd = -1;
    {
        const torture::memory::Inside inside;
        fd = kh_tree_init_parser(file.name(), &status);
    }
    check_described(status);
    check_result(status == KH_OK, "a saved file can be read");
    if (status != KH_OK)
        return;
    const kh_document_slot& slot = *global_current_status[fd];
    check(outline(slot.doc) == outline(plain_tree(bytes).get()), "a saved file is read as what was saved");
    check(std::string(KH_get_file_name(fd)) == file.name(), "a document knows its file");
    kh_tree_cleanup_parser(&fd, nullptr);
}

} // namespace fuzz
