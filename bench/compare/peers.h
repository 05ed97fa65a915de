// The documents of the library and of its peers, each with the few steps that a user would write.
#ifndef KALV_BENCH_PEERS_H
#define KALV_BENCH_PEERS_H

#include <cstdlib>
#include <cstring>
#include <functional>
#include <kalv/file_handling.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>
#include <memory>
#include <pugixml.hpp>
#include <stdexcept>
#include <string>
#include <tinyxml2.h>
#include <vector>

namespace bench {

constexpr const char* library = "KalvFileHandling";
constexpr const char* by_hand = "libxml2 by hand";
constexpr const char* libxml2_xpath = "libxml2 XPath";
constexpr const char* pugixml = "pugixml";
constexpr const char* pugixml_xpath = "pugixml XPath";
constexpr const char* tiny = "tinyxml2";

/// Every call that is compared must succeed.
inline void expect(bool success)
{
    if (!success)
        throw std::runtime_error("a call failed");
}

struct Free {
    void operator()(void* block) const noexcept { std::free(block); }
};
using Text = std::unique_ptr<char, Free>;

/// An array that the library handed out, with the texts in it.
template <class Entry>
class Array {
public:
    template <class Read>
    Array(Read read, long* fd, const char* name)
    {
        long status = 0;
        read(fd, name, &entries_, &count_, &status);
        expect(status == KH_OK);
    }
    Array(Array&& other) noexcept
        : entries_(std::exchange(other.entries_, nullptr)), count_(std::exchange(other.count_, 0))
    {
    }
    ~Array()
    {
        if constexpr (std::is_pointer_v<Entry>)
            for (const Entry entry : *this)
                std::free(entry);
        std::free(entries_);
    }
    const Entry* begin() const noexcept { return entries_; }
    const Entry* end() const noexcept { return entries_ + count_; }

private:
    Entry* entries_ = nullptr;
    long count_ = 0;
};

/// A document of the library.
class Kalv {
public:
    explicit Kalv(const std::string& file)
    {
        fd = kh_tree_init_parser(file.c_str(), &status);
        expect(status == KH_OK);
    }
    /// An empty document.
    Kalv()
    {
        fd = kh_tree_create(&status);
        expect(status == KH_OK);
    }
    Kalv(Kalv&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
    ~Kalv()
    {
        if (fd >= 0)
            kh_tree_cleanup_parser(&fd, &status);
    }

    /// Calls a function of the library.
    template <class Function, class... Arguments>
    void call(Function function, Arguments... arguments)
    {
        function(&fd, arguments..., &status);
        expect(status == KH_OK);
    }
    /// Calls one that stores a value.
    template <class Value, class Function, class... Arguments>
    Value value(Function function, Arguments... arguments)
    {
        Value result{};
        call(function, arguments..., &result);
        return result;
    }
    template <class Function, class... Arguments>
    Text text(Function function, Arguments... arguments)
    {
        return Text(value<char*>(function, arguments...));
    }
    long integer(const char* path) { return value<long>(kh_tree_path_read_integer_node_value, path); }

    long fd = -1;
    long status = KH_OK;
};

/// A document of libxml2.
class LibXml2 {
public:
    explicit LibXml2(const std::string& file) : doc(xmlParseFile(file.c_str())) { expect(doc != nullptr); }
    LibXml2() : doc(xmlNewDoc(BAD_CAST "1.0")) {}
    LibXml2(LibXml2&& other) noexcept : doc(std::exchange(other.doc, nullptr)) {}
    ~LibXml2() { xmlFreeDoc(doc); }
    xmlNode* root() const noexcept { return xmlDocGetRootElement(doc); }

    xmlDoc* doc;
};

/// The first element called `name` from `node` on, along its siblings.
inline xmlNode* named(xmlNode* node, const char* name) noexcept
{
    while (node && !(node->type == XML_ELEMENT_NODE &&
                     std::strcmp(reinterpret_cast<const char*>(node->name), name) == 0))
        node = node->next;
    return node;
}
inline const char* content(const xmlNode* element) noexcept
{
    return reinterpret_cast<const char*>(element->children->content);
}
/// The next node in document order below `root`.
inline xmlNode* next_in_document(xmlNode* node, const xmlNode* root) noexcept
{
    if (node->children && node->type != XML_ENTITY_REF_NODE)
        return node->children;
    while (node != root && !node->next)
        node = node->parent;
    return node == root ? nullptr : node->next;
}
/// Calls for each node that an XPath expression selects.
inline void select(const LibXml2& document, const char* expression,
                   const std::function<void(const xmlNode*)>& take)
{
    std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(xmlXPathNewContext(document.doc),
                                                                             xmlXPathFreeContext);
    std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> result(
        xmlXPathEvalExpression(BAD_CAST expression, context.get()), xmlXPathFreeObject);
    expect(result && result->nodesetval);
    for (int i = 0; i < result->nodesetval->nodeNr; ++i)
        take(result->nodesetval->nodeTab[i]);
}
inline long selected_integer(const LibXml2& document, const char* expression)
{
    long value = 0;
    select(document, expression,
           [&](const xmlNode* node) { value = std::strtol(content(node), nullptr, 10); });
    return value;
}

/// A document of pugixml.
class Pugi {
public:
    explicit Pugi(const std::string& file) { expect(doc.load_file(file.c_str())); }
    pugi::xml_node list() const { return doc.document_element().child("List"); }

    pugi::xml_document doc;
};

/// A document of tinyxml2.
class Tiny {
public:
    explicit Tiny(const std::string& file) : doc(std::make_unique<tinyxml2::XMLDocument>())
    {
        expect(doc->LoadFile(file.c_str()) == tinyxml2::XML_SUCCESS);
    }
    const tinyxml2::XMLElement* list() const { return doc->RootElement()->FirstChildElement("List"); }

    std::unique_ptr<tinyxml2::XMLDocument> doc;
};

/// How many elements a document holds.
inline long count_elements(Kalv& document)
{
    long count = 1; // the root, where the cursor stands
    while (kh_tree_go_to_next_element_node(&document.fd, &document.status) == KH_OK)
        ++count;
    return count;
}
inline long count_elements(const LibXml2& document)
{
    long count = 0;
    for (xmlNode* node = document.root(); node; node = next_in_document(node, document.root()))
        count += node->type == XML_ELEMENT_NODE;
    return count;
}
inline long count_elements(const Pugi& document)
{
    struct Counter : pugi::xml_tree_walker {
        bool for_each(pugi::xml_node& node) override
        {
            count += node.type() == pugi::node_element;
            return true;
        }
        long count = 0;
    } counter;
    pugi::xml_node top = document.doc;
    top.traverse(counter);
    return counter.count;
}
inline long count_elements(const Tiny& document)
{
    struct Counter : tinyxml2::XMLVisitor {
        bool VisitEnter(const tinyxml2::XMLElement&, const tinyxml2::XMLAttribute*) override
        {
            ++count;
            return true;
        }
        long count = 0;
    } counter;
    document.doc->Accept(&counter);
    return counter.count;
}

} // namespace bench

#endif
