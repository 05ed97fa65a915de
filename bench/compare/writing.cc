// Writing a document, the completion of its indentation included.
#include "jobs.h"
#include "peers.h"

#include <fstream>
#include <iterator>

namespace bench {

namespace {

std::string bytes_of(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// Writes a standing document, edited before where `edit` says so.
template <class Document, class Write>
Contender writing(const char* name, const File& file, const std::string& target, Write write)
{
    const Standing<Document> document(file.path);
    return repeated(
        name,
        [document, target, write] {
            write(*document, target.c_str());
            return target;
        },
        [](const std::string& written) { return digest(bytes_of(written)); });
}

} // namespace

void compare_writing(Comparison& comparison, const Files& files)
{
    const auto write = [](auto& document, const char* target) {
        if constexpr (std::is_same_v<std::decay_t<decltype(document)>, Kalv>)
            expect(kh_tree_write(&document.fd, target, &document.status) > 0);
        else
            expect(xmlSaveFile(target, document.doc) > 0);
    };
    const auto edit_and_write = [write](auto& document, const char* target) {
        if constexpr (std::is_same_v<std::decay_t<decltype(document)>, Kalv>)
            document.call(kh_tree_set_string_node_value, "/Root/List/Item[1]/Name", "edited", "%s");
        else
            xmlNodeSetContent(
                named(named(named(document.root()->children, "List")->children, "Item")->children, "Name"),
                BAD_CAST "edited");
        write(document, target);
    };
    for (const File& file : {files.medium(), files.large()}) {
        const auto add = [&](const char* job, auto contender_write, double goal) {
            comparison.add(
                {job,
                 file.size,
                 {writing<Kalv>(library, file, files.target("own.xml"), contender_write),
                  writing<LibXml2>("xmlSaveFile", file, files.target("peer.xml"), contender_write)},
                 {{"xmlSaveFile", goal}}});
        };
        add("write, edited before", edit_and_write, 1.15);
        add("write, not edited since the last", write, 1.02);
    }
}

} // namespace bench
