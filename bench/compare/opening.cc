// Opening and closing, also with a few reads in between.
#include "jobs.h"
#include "peers.h"

namespace bench {

namespace {

template <class Document>
Contender opening(const char* name, const File& file)
{
    return repeated(
        name, [path = file.path] { return Document(path); },
        [](Document document) { return digest(count_elements(document)); });
}

Job opening_job(const std::string& name, const File& file, std::vector<Goal> goals)
{
    return {name,
            file.size,
            {opening<Kalv>(library, file), opening<LibXml2>(by_hand, file), opening<Pugi>(pugixml, file),
             opening<Tiny>(tiny, file)},
            std::move(goals)};
}

/// Opens, reads the first and the middle item and what stands behind the list, and closes.
Contender three_reads_by_path(const File& file)
{
    const std::string middle = "/Root/List/Item[" + std::to_string(file.items / 2) + "]/Value";
    return repeated(library, [file, middle] {
        Kalv document(file.path);
        return std::vector<long>{document.integer("/Root/List/Item[1]/Value"),
                                 document.integer(middle.c_str()), document.integer("/Root/Last")};
    });
}
Contender three_reads_by_hand(const File& file)
{
    return repeated(by_hand, [file] {
        const LibXml2 document(file.path);
        const auto value = [](xmlNode* item) {
            return std::strtol(content(named(item->children, "Value")), nullptr, 10);
        };
        xmlNode* list = named(document.root()->children, "List");
        xmlNode* first = named(list->children, "Item");
        xmlNode* middle = first;
        for (std::size_t i = 1; i < file.items / 2; ++i)
            middle = named(middle->next, "Item");
        return std::vector<long>{value(first), value(middle),
                                 std::strtol(content(named(list->next, "Last")), nullptr, 10)};
    });
}

} // namespace

void compare_opening_alone(Comparison& comparison, const Files& files)
{
    comparison.add(opening_job("open and close the only document", files.small(), {{by_hand, 0.80}}));
}

void compare_opening(Comparison& comparison, const Files& files)
{
    const std::string job = "open and close";
    comparison.add(opening_job(job, files.small(), {{by_hand, 0.80}}));
    std::vector<File> larger{files.medium(), files.large()};
    for (const File& file : Files::real())
        larger.push_back(file);
    for (const File& file : larger)
        comparison.add(opening_job(job, file, {{by_hand, 0.88}}));
    for (const File& file : {files.medium(), files.large()})
        comparison.add({"open, three reads, close",
                        file.size,
                        {three_reads_by_path(file), three_reads_by_hand(file)},
                        {{by_hand, 0.88}}});
}

} // namespace bench
