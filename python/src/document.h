// One document of the package, and one call on it.
#ifndef KALV_PYTHON_DOCUMENT_H
#define KALV_PYTHON_DOCUMENT_H

#include "arguments.h"
#include "interpreter.h"
#include "status.h"

#include <atomic>
#include <kalv/XmlFile.h>
#include <kalv/status.h>
#include <string>
#include <type_traits>

namespace kalv_python {

/// A document, which one call at a time uses: the interpreter's lock does not guard the calls that release
/// it.
class Document {
public:
    Document() = default;
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    /// Whatever is wrong with the document table, nothing can be raised here. What another thread was at when the
    /// process forked or the interpreter ended, is nobody's to release.
    ~Document()
    {
        try {
            if (!in_use_ && file.getId() >= 0)
                file.clean();
        } catch (const KALV::KalvError&) {
        }
    }

    /// The right to use a document, for as long as this lives. Raises `kalv.InUseError`.
    class Use {
    public:
        explicit Use(Document& document) : in_use_(document.in_use_)
        {
            if (in_use_.exchange(true, std::memory_order_acquire))
                raise_in_use();
        }
        ~Use() { in_use_.store(false, std::memory_order_release); }
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

    private:
        std::atomic<bool>& in_use_;
    };

    /// pybind11 asks for memory here when an object is used that was never initialised, and would go on with
    /// whatever is in it. Documents themselves are made by the global operator.
    static void* operator new(std::size_t)
    {
        throw pybind11::type_error("XmlFile.__init__() was not called");
    }
    static void operator delete(void* memory) { ::operator delete(memory); }

    KALV::XmlFile file;

private:
    std::atomic<bool> in_use_{false};
};

/// One call on a document: its descriptor and its status.
struct Call {
    /// Calls a function of the procedural interface, with the descriptor before the arguments and the status
    /// behind them. A warning stays in `status`. \return false for an error
    template <class Function, class... Arguments>
    bool attempt(Function function, Arguments... arguments)
    {
        long status_of_call = KH_OK;
        function(&fd, arguments..., &status_of_call);
        if (status == KH_OK || status_of_call < 0)
            status = status_of_call;
        return status_of_call >= 0;
    }

    /// The same for a call that must succeed.
    template <class Function, class... Arguments>
    void run(Function function, Arguments... arguments)
    {
        if (!attempt(function, arguments...))
            throw Failure{status};
    }

    KALV::XmlFile& file;
    long& status;
    long fd = file.getId();
};

/// Makes one call on a document. Its warning is shown when the document is free again, so that whoever
/// handles warnings can use it.
template <class Body>
auto perform(Document& document, const std::string& function, const Body& body)
{
    long status = KH_OK;
    const auto use = [&] {
        const Document::Use used(document);
        Call call{document.file, status};
        return body(call);
    };
    if constexpr (std::is_void_v<decltype(use())>) {
        translated(function, use);
        warn_of(function, status);
    } else {
        auto result = translated(function, use);
        warn_of(function, status);
        return result;
    }
}

/// The class as Python sees it. A method is a function that makes one call.
struct Methods {
    pybind11::class_<Document>& type;

    /// Adds a method; the function's name is part of what it raises.
    template <class Result, class... Arguments, class... Extra>
    void add(const std::string& name, Result (*body)(Call&, Arguments...), const Extra&... extra)
    {
        type.def(
            name.c_str(),
            [function = "XmlFile." + name, body](Document& document, Arguments... arguments) {
                return perform(document, function,
                               [&](Call& call) { return body(call, std::forward<Arguments>(arguments)...); });
            },
            extra...);
    }
};

void define_life(Methods& methods);
void define_moves(Methods& methods);
void define_reads(Methods& methods);
void define_edits(Methods& methods);
void define_header(Methods& methods);

} // namespace kalv_python

#endif
