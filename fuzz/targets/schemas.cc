// Schema references: whatever they are set to, what is written can be read, and errors are reported; in an open
// document, and in a file.
#include "document.h"
#include "texts.h"

namespace {

const char* const schemas[] = {"TARVEK_SCHEMAS/Some_0102.XSD",
                               "Other_0304.XSD",
                               "urn:a&b http://c<d",
                               " ",
                               "urn:d urn:d",
                               "x",
                               "",
                               "9 9.XSD"};

std::string schema_text(fuzz::Bytes& bytes)
{
    return bytes.ConsumeBool() ? bytes.PickValueInArray(schemas) : fuzz::value(bytes);
}

/// The file has the references that an open document gets, or is as it was; whole in any case.
void check_in_file(fuzz::Bytes& bytes)
{
    static const fuzz::File file;
    const std::string text = fuzz::document_text(bytes);
    const std::string schema = schema_text(bytes);
    const long mode = bytes.ConsumeIntegralInRange(0L, 3L);
    file.write(text);
    const long status = fuzz::status_of(kh_set_schema, file.name(), schema.c_str(), &mode);
    const std::string written = file.read();
    if (status != KH_OK) {
        // A file whose indentation could not be completed is saved all the same.
        const bool is_whole = fuzz::memory_fails() && fuzz::plain_tree(written);
        fuzz::check(written == text || is_whole,
                    "a file whose schema cannot be set stays as it was, or is whole");
        return;
    }
    fuzz::check(fuzz::plain_tree(written) != nullptr, "a file with a schema is well-formed");
    fuzz::Document document(text);
    if (!document.is_open())
        return;
    fuzz::check_schema(document, schema, mode);
    fuzz::check_result(document.written() == written, "a file gets what an open document gets");
}

} // namespace

void fuzz::run(Bytes& bytes)
{
    if (bytes.ConsumeIntegralInRange(0, 15) == 15) {
        check_in_file(bytes);
        return;
    }
    Document document(document_text(bytes));
    if (!document.is_open())
        return;
    for (int i = 0; i < 6 && bytes.remaining_bytes() > 0; ++i) {
        if (bytes.ConsumeBool())
            document.go_along(path(bytes));
        check_schema(document, schema_text(bytes), bytes.ConsumeIntegralInRange(-1L, 4L));
        if (bytes.ConsumeBool())
            check_edit(document, bytes);
    }
    if (bytes.ConsumeIntegralInRange(0, 3) == 3)
        check_round_trip(document);
}
