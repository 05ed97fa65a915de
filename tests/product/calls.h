// What the tests of product files share: calls on a document, as one value each.
#ifndef KALV_TESTS_PRODUCT_CALLS_H
#define KALV_TESTS_PRODUCT_CALLS_H

#include "support/outcome.h"

#include <libxml/parser.h>
#include <memory>
#include <string>
#include <utility>

namespace product {

/// Calls a function on a document: its status and its report.
template <class Function, class... Arguments>
support::Outcome outcome(support::Document& document, Function function, Arguments... arguments)
{
    return support::outcome_of([&](long* status) {
        const long returned = function(&document.fd, arguments..., status);
        EXPECT_EQ(returned, *status) << "returned and stored status differ";
    });
}

/// The same on a descriptor, whose address may be null.
template <class Function, class... Arguments>
support::Outcome outcome_at(long* fd, Function function, Arguments... arguments)
{
    return support::outcome_of([&](long* status) {
        const long returned = function(fd, arguments..., status);
        EXPECT_EQ(returned, *status) << "returned and stored status differ";
    });
}

/// Calls a function on a document: its status alone.
template <class Function, class... Arguments>
long status(support::Document& document, Function function, Arguments... arguments)
{
    long status = support::untouched;
    function(&document.fd, arguments..., &status);
    return status;
}

/// What a call prints that meets one failure after the other; the last one decides the status.
template <class... More>
support::Outcome in_turn(support::Outcome first, const More&... more)
{
    ((first.report += more.report, first.status = more.status), ...);
    return first;
}

/// The path of the cursor, or "none".
inline std::string cursor(const support::Document& document)
{
    return document.current() ? document.path() : "none";
}

/// The document in memory, before a write completes it.
inline std::string in_memory(const support::Document& document)
{
    xmlChar* text = nullptr;
    int length = 0;
    xmlDocDumpMemory(document.slot()->doc, &text, &length);
    const std::unique_ptr<xmlChar, decltype(xmlFree)> owner(text, xmlFree);
    return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)};
}

} // namespace product

#endif
