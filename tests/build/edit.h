// What the tests of building share: calls on a document, its bytes, and files read again without the library.
#ifndef KALV_TESTS_BUILD_EDIT_H
#define KALV_TESTS_BUILD_EDIT_H

#include "support/outcome.h"
#include "support/plain.h"

#include <csignal>
#include <libxml/parser.h>
#include <memory>
#include <string>
#include <sys/resource.h>

namespace edit {

/// Calls a function on a document: its status and its report.
template <class Function, class... Arguments>
support::Outcome outcome(support::Document& document, Function function, Arguments... arguments)
{
    return support::outcome_of([&](long* status) { function(&document.fd, arguments..., status); });
}

/// Calls a function on a document: its status alone.
template <class Function, class... Arguments>
long status(support::Document& document, Function function, Arguments... arguments)
{
    long status = support::untouched;
    function(&document.fd, arguments..., &status);
    return status;
}

/// What a file holds between the XML declaration and the last line end.
inline std::string without_frame(const std::string& file)
{
    const std::string declaration = "<?xml version=\"1.0\"?>\n";
    if (file.rfind(declaration, 0) != 0 || file.back() != '\n')
        return "no frame: " + file;
    return file.substr(declaration.size(), file.size() - declaration.size() - 1);
}

/// What kh_tree_write writes of a document that declares no encoding.
inline std::string written(support::Document& document)
{
    return without_frame(document.written());
}

/// A document as it stands in memory, before a write completes its indentation.
inline std::string in_memory(const support::Document& document)
{
    xmlChar* text = nullptr;
    int length = 0;
    xmlDocDumpMemory(document.slot()->doc, &text, &length);
    const std::unique_ptr<xmlChar, decltype(xmlFree)> owner(text, xmlFree);
    return without_frame({reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)});
}

/// While it lives, files cannot grow beyond a size: a disk that is full, for root too.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : handler_(signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &before_);
        signal(SIGXFSZ, handler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before_{};
    void (*handler_)(int);
};

using support::PlainDocument;
using support::read_plainly;
using support::text_of;

inline bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

/// Where libxml2 may print lines of its own before the library's.
inline bool ends_with(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// How many slots hold a document.
inline long open_documents()
{
    long count = 0;
    for (const kh_document_slot* slot : global_current_status)
        count += slot != nullptr;
    return count;
}

/// Elements nested in each other. Each is followed by a text, so that a write has no indentation to add.
inline std::string nested(std::size_t levels)
{
    std::string open, close;
    for (std::size_t i = 0; i < levels; ++i) {
        open += "<a>";
        close += ".</a>";
    }
    return open + "<deepest/>" + close;
}

constexpr std::size_t deep = 100000;

/// "a:b:1" is a name in XML, but libxml2 reads no file with it.
inline const char* const names_xml_refuses[] = {
    "",          " ",        "1a",    "-a",     ".a",      "a b",   "a<",       "a>", "a/b", "&",
    "a=b",       "a\tb",     "a\n",   "\"",     "\xff",    "a\xc3", "\xc3\x28", "@a", "a;",  "a\xed\xa0\x80",
    "a\xc0\x80", "\xc3\x97", "a:b:1", "a:b:-c", "a:b:1:c",
};

inline const char* const names_xml_allows[] = {
    "n",     "_n",   "n-1.2",  "n_",   "p:n",    "\xc3\xa9t\xc3\xa9", "\xce\xb1", "a:1", "a:b:", "a:b:c",
    "a:1:1", "a::1", "a:b::1", ":a:1", "a:b:c:1"};

} // namespace edit

#endif
