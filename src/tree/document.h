// The record of an open document, and how calls get at it.
#ifndef KALV_TREE_DOCUMENT_H
#define KALV_TREE_DOCUMENT_H

#include "frame/memory.h"
#include "frame/operation.h"
#include "tree/child_index.h"
#include "tree/element_index.h"
#include "tree/known_path.h"
#include "tree/xml.h"

#include <atomic>
#include <kalv/document.h>
#include <string>

namespace kh {

/// A slot of the table: the fields that callers may read, and behind them the library's own.
struct Document : kh_document_slot {
    Document() noexcept { static_cast<kh_document_slot&>(*this) = {}; }
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    /// True while the opening thread still parses: the slot is nobody's yet, and releasing it changes
    /// nothing.
    std::atomic<bool> opening{false};

    /// The paths that were asked for last, and the one that the stack holds; null where it holds none. Names on the stack
    /// are that path's.
    KnownPath known_paths[4];
    KnownPath* path_on_stack = nullptr;
    unsigned long paths_used = 0;

    /// Where children are that took a walk to find.
    ChildIndex child_index;

    /// All elements, once walks have looked at as many.
    ElementIndex element_index;

    /// True when all closing tags have their indentation, and nothing has been edited since.
    bool is_formatted = false;

    /// The path of the cursor that was asked for last.
    std::string cursor_path;

    /// The requested tag; `requested_tag` points into it.
    ReusedBlock tag;
    /// True when it is the last name of the path on the stack.
    bool tag_is_from_path = false;

    /// Namespace declarations that were taken off their element while others still refer to them.
    XmlNamespaces detached;

    /// The element that was inserted last, and the default namespace there, so that whoever inserts one element
    /// below the other need not climb to the root each time. Setting an attribute declares none.
    struct DefaultNamespace {
        const xmlNode* element = nullptr;
        xmlNs* space = nullptr;
    };
    DefaultNamespace last_inserted;

    /// Nodes were added or are about to be removed: what a walk found before need not hold any more.
    void edited() noexcept
    {
        for (KnownPath& path : known_paths)
            path.walked_count = 0;
        last_inserted = {};
        value_edited();
    }
    /// A text is about to be another.
    void value_edited() noexcept
    {
        is_formatted = false;
        element_index.drop();
    }
};

inline bool in_table(long fd) noexcept
{
    return static_cast<unsigned long>(fd) < KH_MAX_DOCUMENTS;
}

/// Slots are written under the lock and read without it: by calls that name a descriptor which another thread
/// is about to get, too.
inline Document* in_slot(long fd) noexcept
{
    return static_cast<Document*>(__atomic_load_n(&global_current_status[fd], __ATOMIC_ACQUIRE));
}

/// The document of a descriptor; null where there is none, for calls that report nothing.
inline Document* find_document(const long* fd) noexcept
{
    if (!fd || !in_table(*fd))
        return nullptr;
    Document* document = in_slot(*fd);
    return document && !document->opening && document->doc ? document : nullptr;
}

/// Reports why a descriptor has no document. \return null
Document* report_no_document(Operation& op, const long* fd) noexcept;

/// The document of a descriptor; null, with a report, where there is none.
inline Document* open_document(Operation& op, const long* fd) noexcept
{
    Document* document = find_document(fd);
    return document ? document : report_no_document(op, fd);
}

/// The same, for calls that need a root element.
inline Document* document_with_root(Operation& op, const long* fd) noexcept
{
    Document* document = open_document(op, fd);
    if (!document || document->root)
        return document;
    op.fail(KH_ERR_NO_ROOT);
    return nullptr;
}

} // namespace kh

#endif
