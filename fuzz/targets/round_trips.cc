// Any document that is read, and perhaps edited, is written as libxml2 reads it, and read and written again to the
// same bytes; in memory and as a file.
#include "document.h"
#include "texts.h"

void fuzz::run(Bytes& bytes)
{
    static const File file;
    const bool is_made = bytes.ConsumeBool();
    const bool is_edited = bytes.ConsumeIntegralInRange(0, 3) == 3;
    const bool is_saved = bytes.ConsumeIntegralInRange(0, 15) == 15;
    Document document(is_made || is_edited ? document_text(bytes) : bytes.ConsumeRemainingBytesAsString());
    if (!document.is_open())
        return;
    Text doctype;
    const long status = status_of(kh_tree_get_doctype, document.fd(), doctype.out());
    check_result((status == KH_OK) == (document.slot().doc->intSubset != nullptr),
                 "a document type is found where there is one");
    for (int i = 0; is_edited && i < 6; ++i)
        check_edit(document, bytes);
    check_round_trip(document);
    if (is_saved)
        check_file_round_trip(document, file);
}
