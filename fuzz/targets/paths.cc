// Path texts on a document that has most of what they ask for, against a model of the language. A path that the
// library writes leads back.
#include "document.h"
#include "texts.h"

namespace {

/// Moves that go on from the stack, which the last path filled.
void walk_the_stack(fuzz::Document& document, fuzz::Bytes& bytes)
{
    long index = bytes.ConsumeIntegralInRange(-1L, 12L);
    fuzz::status_of(kh_tree_go_to_stack_array_node, document.fd(), &index);
    fuzz::status_of(kh_tree_go_to_stack_from_array_node, document.fd());
    fuzz::status_of(kh_tree_go_to_stack_node, document.fd());
}

void check_path_back(fuzz::Document& document)
{
    const xmlNode* reached = document.slot().current;
    if (reached->type != XML_ELEMENT_NODE)
        return;
    const std::string path = fuzz::path_of(reached, document.slot().root);
    std::string written(path.size() + 1, '\0');
    if (fuzz::status_of(kh_tree_get_path, document.fd(), written.data()) != KH_OK) {
        fuzz::check_result(false, "an element has a path");
        return;
    }
    fuzz::check(written.c_str() == path, "an element has its path");
    fuzz::status_of(kh_tree_rewind, document.fd());
    const long status = document.go_along(path);
    fuzz::check_result(status == KH_OK && document.slot().current == reached,
                       "the cursor's path leads back to it");
}

} // namespace

void fuzz::run(Bytes& bytes)
{
    Document document(small_document);
    if (!document.is_open())
        return;
    const std::string before = document.described();
    for (int i = 0; i < 8 && bytes.remaining_bytes() > 0; ++i) {
        const std::string where = path(bytes);
        if (document.go_along(where) >= KH_OK)
            check_path_back(document);
        switch (bytes.ConsumeIntegralInRange(0, 3)) {
        case 0:
            walk_the_stack(document, bytes);
            break;
        case 1:
            document.go_along(where); // what was remembered of it changes nothing
            break;
        case 2:
            status_of(kh_tree_chop_path, document.fd(), where.c_str());
            break;
        default:
            status_of(kh_tree_rewind, document.fd());
        }
    }
    check(document.described() == before, "paths change nothing");
    if (bytes.ConsumeIntegralInRange(0, 31) == 31)
        check_reads(document, bytes);
}
