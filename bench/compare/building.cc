// Building a list of items by path.
#include "jobs.h"
#include "peers.h"

namespace bench {

namespace {

/// The bytes of a document, without the indentation that is completed when it is written.
std::string bytes_of(xmlDoc* document)
{
    xmlChar* bytes = nullptr;
    int size = 0;
    xmlDocDumpMemory(document, &bytes, &size);
    const std::string result(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
    xmlFree(bytes);
    return result;
}

Contender by_path(std::size_t count)
{
    return repeated(
        library,
        [count] {
            Kalv document;
            const auto add = [&](const char* path, const char* name) {
                expect(kh_tree_add_child(&document.fd, path, name, &document.status) != 0 &&
                       document.status == KH_OK);
            };
            expect(kh_tree_create_root(&document.fd, "Root", &document.status) != 0);
            add("/Root", "List");
            char path[64];
            for (std::size_t i = 1; i <= count; ++i) {
                add("/Root/List", "Item");
                std::snprintf(path, sizeof path, "/Root/List/Item[%zu]", i);
                add(path, "Value");
            }
            return document;
        },
        [](const Kalv& document) { return digest(bytes_of(global_current_status[document.fd]->doc)); });
}

xmlNode* add_indented(xmlNode* parent, const char* indentation, const char* name)
{
    xmlAddChild(parent, xmlNewDocText(parent->doc, BAD_CAST indentation));
    return xmlAddChild(parent, xmlNewDocNode(parent->doc, nullptr, BAD_CAST name, nullptr));
}

Contender with_pointers(std::size_t count)
{
    return repeated(
        by_hand,
        [count] {
            LibXml2 document;
            xmlNode* root = xmlNewDocNode(document.doc, nullptr, BAD_CAST "Root", nullptr);
            xmlDocSetRootElement(document.doc, root);
            xmlNode* list = add_indented(root, "\n  ", "List");
            for (std::size_t i = 1; i <= count; ++i)
                add_indented(add_indented(list, "\n    ", "Item"), "\n      ", "Value");
            return document;
        },
        [](const LibXml2& document) { return digest(bytes_of(document.doc)); });
}

} // namespace

void compare_building(Comparison& comparison)
{
    constexpr const char* job = "build n items by path";
    constexpr double longest = 10; // seconds for one document
    double seconds_per_item = 0;   // of the smallest document
    std::size_t last = 0;
    double last_seconds = 0;
    for (const std::size_t count : {1'000U, 10'000U, 100'000U, 350'000U}) {
        if (comparison.settings().quick && count > 1'000)
            break;
        const std::string size = "n = " + std::to_string(count);
        const double growth = last ? static_cast<double>(count) / static_cast<double>(last) : 0;
        if (last_seconds > 0 && last_seconds * growth * growth > longest &&
            last_seconds / static_cast<double>(last) > 3 * seconds_per_item) {
            comparison.leave_out(job, size, "left out: grows faster than its work");
            continue;
        }
        const auto seconds = comparison.add(
            {job, size, {by_path(count), with_pointers(count)}, {{by_hand, 1.3}}, count < 100'000 ? 0 : 1});
        last = count;
        last_seconds = seconds.value_or(0);
        if (seconds_per_item == 0)
            seconds_per_item = last_seconds / static_cast<double>(count);
        else if (seconds)
            comparison.add("time of an item, against that at n = 1000", size, "", "linear growth",
                           last_seconds / static_cast<double>(count) / seconds_per_item, {});
    }
}

} // namespace bench
