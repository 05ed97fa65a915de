// libxml2 in the terms of this library: owners, casts, and a guard around every call that can report.
#ifndef KALV_TREE_XML_H
#define KALV_TREE_XML_H

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <libxml/encoding.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <memory>

namespace kh {

inline const xmlChar* to_xml(const char* text) noexcept
{
    return reinterpret_cast<const xmlChar*>(text);
}
inline const char* from_xml(const xmlChar* text) noexcept
{
    return reinterpret_cast<const char*>(text);
}

struct FreeXml {
    void operator()(xmlChar* text) const noexcept { xmlFree(text); } // xmlFree is a variable
    void operator()(xmlDoc* document) const noexcept { xmlFreeDoc(document); }
    void operator()(xmlNode* node) const noexcept { xmlFreeNode(node); }
    void operator()(xmlCharEncodingHandler* encoder) const noexcept;
    void operator()(xmlNs* namespace_) const noexcept { xmlFreeNsList(namespace_); }
    void operator()(xmlDict* dictionary) const noexcept { xmlDictFree(dictionary); }
};
using XmlText = std::unique_ptr<xmlChar, FreeXml>;
using XmlDocument = std::unique_ptr<xmlDoc, FreeXml>;
using XmlNode = std::unique_ptr<xmlNode, FreeXml>;
using XmlEncoder = std::unique_ptr<xmlCharEncodingHandler, FreeXml>;
using XmlNamespaces = std::unique_ptr<xmlNs, FreeXml>;
using XmlDictionary = std::unique_ptr<xmlDict, FreeXml>;

/// For its lifetime libxml2's messages of this thread come to the library, and afterwards go where they went
/// before. libxml2 swallows many failed allocations and goes on with a document that lacks something; whoever
/// calls it asks here whether that happened.
class ParserCall {
public:
    ParserCall() noexcept;
    ~ParserCall();
    ParserCall(const ParserCall&) = delete;
    ParserCall& operator=(const ParserCall&) = delete;

    /// True when an allocation of libxml2's has failed since the call began.
    bool out_of_memory() const noexcept;

    /// Keeps in mind whether one has failed so far. Whoever makes system calls meanwhile calls this before
    /// them.
    void note_failures() noexcept { out_of_memory_ = out_of_memory(); }

    /// The first message that no parse survives, as "LINE:COLUMN: MESSAGE"; the empty text if there was none.
    const char* fatal_message() const noexcept { return fatal_message_; }

private:
    static void take_message(void* self, const char* format, ...);

    // Where libxml2 keeps its handlers for this thread: finding them takes it longer than all the rest.
    xmlGenericErrorFunc& generic_;
    void*& generic_context_;
    xmlStructuredErrorFunc& structured_;
    void*& structured_context_;
    const xmlGenericErrorFunc generic_before_;
    void* const generic_context_before_;
    const xmlStructuredErrorFunc structured_before_;
    void* const structured_context_before_;
    bool out_of_memory_ = false;
    char fatal_message_[256];
};

/// The same for calls that only make nodes, and have nothing to tell but that memory ran out: each costs a fraction
/// of what a ParserCall does.
class NodeCall {
public:
    NodeCall() noexcept : structured_(xmlStructuredError), before_(structured_)
    {
        errno = 0;
        structured_ = take_error;
    }
    ~NodeCall() { structured_ = before_; }
    NodeCall(const NodeCall&) = delete;
    NodeCall& operator=(const NodeCall&) = delete;

    /// True when an allocation has failed since the call began.
    bool out_of_memory() const noexcept { return errno == ENOMEM; }

private:
    static void take_error(void* context, xmlError* error);

    xmlStructuredErrorFunc& structured_; ///< where libxml2 keeps its handler for this thread
    const xmlStructuredErrorFunc before_;
};

/// The namespace that a prefix, or null for the default, stands for at an element; null where it is not
/// declared, and when memory runs out.
xmlNs* search_namespace(xmlNode* element, const xmlChar* prefix) noexcept;

inline bool is_element(const xmlNode* node) noexcept
{
    return node->type == XML_ELEMENT_NODE;
}

/// The first child. An entity reference is a leaf: libxml2 links it to its declaration, from which a walk
/// would run into the document type and loop.
inline xmlNode* first_child(const xmlNode* node) noexcept
{
    return node->type == XML_ENTITY_REF_NODE ? nullptr : node->children;
}

/// The attributes; null for everything that is no element, where libxml2 keeps other things in their place.
inline xmlAttr* first_attribute(const xmlNode* node) noexcept
{
    return is_element(node) ? node->properties : nullptr;
}

inline bool is_named(const xmlNode* node, const char* name) noexcept
{
    const char* own = from_xml(node->name);
    return own && own[0] == name[0] && std::strcmp(own, name) == 0; // most differ at once
}

inline bool is_element_named(const xmlNode* node, const char* name) noexcept
{
    return is_element(node) && is_named(node, name);
}

/// Compares many elements with one name. Names of parsed elements are stored once for a document, so that
/// the place of a name that was found equal mostly tells already. Not to be kept over an edit.
class NameMatch {
public:
    explicit NameMatch(const char* name) noexcept : name_(name) {}
    bool operator()(const xmlNode* node) noexcept
    {
        if (!is_element(node))
            return false;
        if (node->name == equal_)
            return true;
        if (!is_named(node, name_))
            return false;
        equal_ = node->name;
        return true;
    }

private:
    const char* name_;
    const xmlChar* equal_ = to_xml(name_);
};

/// Fetches into the cache what a walk along siblings will come upon. Siblings of a list are mostly alike, so
/// that the distance between two of them in memory is that to the next ones; where it is not, nothing is
/// lost.
class FetchAhead {
public:
    /// The walk has reached a sibling.
    void reached(const void* sibling) noexcept
    {
        distance_ = address(sibling) - last_;
        last_ = address(sibling);
    }
    /// What lies at the same place of a sibling farther on will be needed.
    void fetch(const void* place) const noexcept
    {
        constexpr std::uintptr_t siblings = 4;
        __builtin_prefetch(reinterpret_cast<const void*>(address(place) + siblings * distance_));
    }
    /// The same for what a walk reads of a node, which may lie in two lines of the cache.
    void fetch_node(const xmlNode* node) const noexcept
    {
        if (!node)
            return;
        fetch(node);
        fetch(&node->next);
    }

private:
    static std::uintptr_t address(const void* place) noexcept
    {
        return reinterpret_cast<std::uintptr_t>(place);
    }
    std::uintptr_t last_ = 0;
    std::uintptr_t distance_ = 0;
};

/// Fetches into the cache what a walk in document order will come upon: nodes of a parsed document mostly lie
/// in memory in that order.
inline void fetch_behind(const xmlNode* node) noexcept
{
    constexpr std::uintptr_t far_enough = 2048;
    const std::uintptr_t place = reinterpret_cast<std::uintptr_t>(node) + far_enough;
    __builtin_prefetch(reinterpret_cast<const void*>(place));
    __builtin_prefetch(reinterpret_cast<const void*>(place + 64)); // a node takes two lines
}

/// The name of a node; the empty text for the kinds that have none.
inline const char* name_of(const xmlNode* node) noexcept
{
    return node->name ? from_xml(node->name) : "";
}

/// The content of a node as it stands; the empty text where it has none.
inline const char* content_of(const xmlNode* node) noexcept
{
    return node && node->content ? from_xml(node->content) : "";
}

/// The value of an element that is like most: one text and nothing else. Null for every other.
inline const char* only_text(const xmlNode* element) noexcept
{
    const xmlNode* child = element->children;
    return child && !child->next && child->type == XML_TEXT_NODE ? content_of(child) : nullptr;
}

} // namespace kh

#endif
