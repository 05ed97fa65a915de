// Random calls on several documents at once. Each does what it says, errors change nothing, trees stay sound, and
// what comes of it all is written and read.
#include "document.h"
#include "texts.h"

#include <array>
#include <memory>

void fuzz::run(Bytes& bytes)
{
    std::array<std::unique_ptr<Document>, 2> documents;
    for (int i = 0; i < 16 && bytes.remaining_bytes() > 0; ++i) {
        std::unique_ptr<Document>& document = documents.at(bytes.ConsumeIntegralInRange<std::size_t>(0, 1));
        if (!document)
            document = bytes.ConsumeBool() ? std::make_unique<Document>()
                                           : std::make_unique<Document>(document_text(bytes));
        if (!document->is_open())
            return; // opening takes longer than what follows
        if (bytes.ConsumeIntegralInRange(0, 30) == 30)
            document.reset();
        else if (bytes.ConsumeIntegralInRange(0, 20) == 20)
            check_reads(*document, bytes);
        else
            check_edit(*document, bytes);
    }
    for (const std::unique_ptr<Document>& document : documents)
        if (document && document->is_open() && bytes.ConsumeBool())
            check_round_trip(*document);
}
