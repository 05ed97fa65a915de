// The life of an object's document, the moves of its cursor and its schema reference.
//
// An object either holds a descriptor that is its own to release, or -1.
#include "object/call.h"
#include "tree/path.h"

#include <cstdio>
#include <exception>
#include <kalv/XmlFile.h>
#include <kalv/build.h>
#include <kalv/cursor.h>
#include <kalv/document.h>
#include <kalv/path.h>
#include <kalv/read.h>
#include <libxml/tree.h>
#include <utility>

namespace {

using kh::call;
using kh::status_of;

constexpr long no_document = -1;

/// Releases a document, if there is one. \return the status
long release(const char* method, long descriptor) noexcept
{
    if (static_cast<unsigned long>(descriptor) >= KH_MAX_DOCUMENTS)
        return KH_OK;
    return status_of(method, kh_tree_cleanup_parser, &descriptor);
}

/// The same for where nothing can be thrown while another exception unwinds.
void release_or_throw(const char* method, long descriptor)
{
    const long status = release(method, descriptor);
    if (status != KH_OK && std::uncaught_exceptions() == 0)
        kh::throw_error(method, status);
}

/// Opens a document. The one held so far is released when that was tried, whatever came of it.
template <class Open, class... Name>
void open(const char* method, long& descriptor, Open open_document, const Name&... name)
{
    long opened = no_document;
    const long status = status_of(
        method, [&](auto... arguments) { opened = open_document(arguments...); }, name...);
    release(method, std::exchange(descriptor, status == KH_OK ? opened : no_document));
    if (status != KH_OK)
        kh::throw_error(method, status);
}

/// Runs a call after whose failure the object holds no document.
template <class Function, class... Name>
long call_or_let_go(const char* method, long& descriptor, Function function, const Name&... name)
{
    const long status = status_of(method, function, &descriptor, name...);
    if (status != KH_OK) {
        descriptor = no_document;
        kh::throw_error(method, status);
    }
    return status;
}

} // namespace

namespace KALV {

XmlFile::XmlFile() : descriptor_(no_document) {}

XmlFile::XmlFile(const std::string& name) : descriptor_(no_document)
{
    read(name);
}

XmlFile::~XmlFile() noexcept(false)
{
    release_or_throw("XmlFile::~XmlFile", descriptor_);
}

XmlFile::XmlFile(XmlFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, no_document)),
      file_name_(std::exchange(other.file_name_, std::string()))
{
}

// Moving to itself changes nothing: what is taken out of the other comes back, and nothing is held in
// between.
XmlFile& XmlFile::operator=(XmlFile&& other) noexcept(false)
{
    const long held = std::exchange(descriptor_, std::exchange(other.descriptor_, no_document));
    file_name_ = std::exchange(other.file_name_, std::string());
    release_or_throw("XmlFile::operator=", held);
    return *this;
}

long XmlFile::create()
{
    open("XmlFile::create", descriptor_, kh_tree_create);
    return descriptor_;
}

void XmlFile::read(const std::string& name)
{
    std::string copy = name;
    open("XmlFile::read", descriptor_, kh_tree_init_parser, copy);
    file_name_ = std::move(copy);
}

void XmlFile::readMemory(const std::string& data)
{
    open("XmlFile::readMemory", descriptor_, [&](long* status) {
        return kh_tree_init_memory(data.data(), static_cast<long>(data.size()), status);
    });
    file_name_.clear();
}

std::string XmlFile::toString()
{
    kh::ReceivedText data;
    long size = 0;
    call("XmlFile::toString", kh_tree_write_memory, &descriptor_, data.address(), &size);
    return {*data.address(), static_cast<std::size_t>(size)}; // some encodings have zero bytes
}

long XmlFile::write()
{
    return write(file_name_);
}

// A document that could not be saved stays in the table on purpose: through its descriptor it can still be
// saved elsewhere.
long XmlFile::write(const std::string& name)
{
    return call_or_let_go("XmlFile::write", descriptor_, kh_tree_write, name);
}

long XmlFile::clean()
{
    const long status = call_or_let_go("XmlFile::clean", descriptor_, kh_tree_cleanup_parser);
    descriptor_ = no_document; // the slot may soon be somebody else's
    return status;
}

long XmlFile::getId() const
{
    return descriptor_;
}

std::string XmlFile::getFileName() const
{
    return file_name_;
}

// The moves that are made again and again go the short way where there is nothing to report.

long XmlFile::root()
{
    kh::Document* document = kh::find_document(&descriptor_);
    if (!document || !document->root)
        return call("XmlFile::root", kh_tree_rewind, &descriptor_);
    document->current = document->root;
    return KH_OK;
}

long XmlFile::next()
{
    kh::Document* document = kh::find_document(&descriptor_);
    if (document && document->root && go_to_next_element(*document))
        return KH_OK;
    return call("XmlFile::next", kh_tree_go_to_next_element_node, &descriptor_);
}

long XmlFile::toElement(const std::string& name)
{
    return call("XmlFile::toElement", kh_tree_go_to_element_node, &descriptor_, name);
}

long XmlFile::toPath(const std::string& path)
{
    kh::Document* document = kh::find_document(&descriptor_);
    if (document && go_to_known_node(&descriptor_, *document, path))
        return KH_OK;
    return call("XmlFile::toPath", kh_tree_go_to_path_node, &descriptor_, path);
}

struct _xmlNode* XmlFile::nextSibling()
{
    kh::Document* document = kh::find_document(&descriptor_);
    xmlNode* node = document && document->current ? document->current->next : nullptr;
    while (node && !kh::is_element(node))
        node = node->next;
    if (node)
        document->current = node;
    else
        std::puts("[nextSibling] No next sibling. Standing in the same sibling");
    return node;
}

std::string XmlFile::currentElementName() const
{
    const char* name = nullptr;
    call("XmlFile::currentElementName", kh::get_current_name, &descriptor_, &name);
    return name;
}

std::string XmlFile::currentPathName() const
{
    const char* path = nullptr;
    call("XmlFile::currentPathName", kh::get_path, &descriptor_, &path);
    return path;
}

void XmlFile::setSchema(const std::string& schema, bool flag)
{
    const long mode = flag ? 0 : 1;
    status_of(
        "XmlFile::setSchema", [&](const char* text, long*) { KH_Set_Schema(&descriptor_, text, &mode); },
        schema);
}

void XmlFile::removeSchema(bool flag)
{
    const long mode = flag ? 2 : 3;
    KH_Set_Schema(&descriptor_, "", &mode);
}

} // namespace KALV
