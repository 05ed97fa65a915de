// Copying between files: the source is a file of its own, and the copy holds what libxml2 reads in it.
#include "document.h"
#include "texts.h"

namespace {

/// Entities of the source become what they stand for, so that documents with them compare by other means.
bool has_entities(const xmlDoc* document)
{
    return document->intSubset;
}

/// Prefixes may be declared anew on top of a copy; what it holds stays.
std::string without_declarations(const std::string& outline)
{
    std::string result;
    for (std::size_t i = 0; i < outline.size(); ++i)
        if (outline.compare(i, 6, " xmlns") == 0)
            i = outline.find('\'', outline.find('\'', i) + 1);
        else
            result += outline[i];
    return result;
}

} // namespace

void fuzz::run(Bytes& bytes)
{
    static const File file;
    const std::string source = document_text(bytes);
    const Tree plain = plain_tree(source);
    file.write(source);
    Document document(document_text(bytes));
    if (!document.is_open())
        return;
    for (int i = 0; i < 2 && bytes.remaining_bytes() > 0; ++i) {
        const std::string to = bytes.ConsumeBool() ? "/Root" : path(bytes);
        const std::string from = bytes.ConsumeBool() ? "/Root" : path(bytes);
        const long status = document.edit(kh_copy_node, to.c_str(), file.name(), from.c_str());
        if (status == KH_OK) {
            check(plain != nullptr, "what is copied from is well-formed");
            xmlNode* root = xmlDocGetRootElement(plain.get());
            const Place place = go_along(PathModel(from), root, root);
            check(place.node, "what is copied is there");
            const xmlNode* copy = document.slot().current->last;
            if (!has_entities(plain.get()) && place.node->type == XML_ELEMENT_NODE)
                check(without_declarations(outline(copy)) == without_declarations(outline(place.node)),
                      "a copy holds what the source holds");
        } else {
            check_result(plain || status != KH_OK, "what cannot be read cannot be copied from");
        }
        if (bytes.ConsumeBool())
            check_edit(document, bytes);
    }
    if (bytes.ConsumeIntegralInRange(0, 15) == 15)
        check_reads(document, bytes);
    if (bytes.ConsumeIntegralInRange(0, 3) == 3)
        check_round_trip(document);
}
