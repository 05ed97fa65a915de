// Changing a document: nodes and values.
#include "object/call.h"

#include <kalv/XmlFile.h>
#include <kalv/build.h>

namespace KALV {

using kh::call;

namespace {

/// Sets a value, printed with the caller's format, or with the type's own where that is empty.
template <class Function, class Value>
void set_value(Function set, long* fd, const std::string& path, const Value& value, const std::string& format,
               const char* default_format)
{
    constexpr const char* method = "XmlFile::setValue";
    if (format.empty())
        call(method, set, fd, path, value, default_format);
    else
        call(method, set, fd, path, value, format);
}

} // namespace

long XmlFile::createRoot(const std::string& name)
{
    return call("XmlFile::createRoot", kh_tree_create_root, &descriptor_, name);
}

long XmlFile::addChild(const std::string& path, const std::string& name)
{
    return call("XmlFile::addChild", kh_tree_add_child, &descriptor_, path, name);
}

long XmlFile::addNext(const std::string& path, const std::string& name)
{
    return call("XmlFile::addNext", kh_tree_add_next_sibling, &descriptor_, path, name);
}

long XmlFile::addPrevious(const std::string& path, const std::string& name)
{
    return call("XmlFile::addPrevious", kh_tree_add_previous_sibling, &descriptor_, path, name);
}

long XmlFile::addAttribute(const std::string& path, const std::string& attribute)
{
    return call("XmlFile::addAttribute", kh_tree_add_attribute, &descriptor_, path, attribute);
}

long XmlFile::copyNode(const std::string& path, const std::string& sourceFile, const std::string& sourcePath)
{
    return call("XmlFile::copyNode", kh_copy_node, &descriptor_, path, sourceFile, sourcePath);
}

void XmlFile::removeNode(const std::string& path)
{
    call("XmlFile::removeNode", kh_tree_remove_node, &descriptor_, path);
}

void XmlFile::setValue(const std::string& path, const std::string& value, const std::string& format)
{
    set_value(kh_tree_set_string_node_value, &descriptor_, path, value, format, "%s");
}

// The default is not "%ld", though the value is a long: callers rely on what "%d" prints.
void XmlFile::setValue(const std::string& path, long value, const std::string& format)
{
    set_value(kh_tree_set_integer_node_value, &descriptor_, path, &value, format, "%d");
}

void XmlFile::setValue(const std::string& path, double value, const std::string& format)
{
    set_value(kh_tree_set_real_node_value, &descriptor_, path, &value, format, "%#lf");
}

} // namespace KALV
