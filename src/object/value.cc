// Reading values: single ones, arrays, lists and searches.
#include "object/call.h"
#include "product/search.h"
#include "read/array.h"

#include <kalv/XmlFile.h>
#include <kalv/read.h>

namespace KALV {

using kh::read_array;
using kh::read_known_value;
using kh::read_strings;
using kh::read_text;
using kh::read_value;
using kh::ReadName;

/// The text of an attribute, where the element under the cursor is the one asked for; null for all else.
static const char* known_attribute_text(long descriptor, ReadName element, ReadName attribute) noexcept
{
    return is_whole(element) && is_whole(attribute) && !attribute.name.empty()
               ? kh::known_attribute_text(&descriptor, handed_on(element), handed_on(attribute))
               : nullptr;
}

std::string XmlFile::getElementValueAsString(const std::string& element)
{
    return read_text("XmlFile::getElementValueAsString", kh::read_element, &descriptor_, ReadName{element});
}

long XmlFile::getElementValueAsInt(const std::string& element)
{
    return read_value<long>("XmlFile::getElementValueAsInt", kh_tree_read_integer_element_value, &descriptor_,
                            ReadName{element});
}

double XmlFile::getElementValueAsReal(const std::string& element)
{
    return read_value<double>("XmlFile::getElementValueAsReal", kh_tree_read_real_element_value, &descriptor_,
                              ReadName{element});
}

std::string XmlFile::getAttributeValueAsString(const std::string& element, const std::string& attribute)
{
    return read_text("XmlFile::getAttributeValueAsString", kh::read_attribute, &descriptor_,
                     ReadName{element}, ReadName{attribute});
}

long XmlFile::getAttributeValueAsInt(const std::string& element, const std::string& attribute)
{
    return read_known_value<long>(known_attribute_text(descriptor_, {element}, {attribute}),
                                  "XmlFile::getAttributeValueAsInt", kh_tree_read_integer_attribute,
                                  &descriptor_, ReadName{element}, ReadName{attribute});
}

double XmlFile::getAttributeValueAsReal(const std::string& element, const std::string& attribute)
{
    return read_known_value<double>(known_attribute_text(descriptor_, {element}, {attribute}),
                                    "XmlFile::getAttributeValueAsReal", kh_tree_read_real_attribute,
                                    &descriptor_, ReadName{element}, ReadName{attribute});
}

std::string XmlFile::getPathValueAsString(const std::string& path)
{
    return read_text("XmlFile::getPathValueAsString", kh::read_path, &descriptor_, path);
}

long XmlFile::getPathValueAsInt(const std::string& path)
{
    return read_known_value<long>(kh::known_path_text(&descriptor_, path), "XmlFile::getPathValueAsInt",
                                  kh_tree_path_read_integer_node_value, &descriptor_, path);
}

double XmlFile::getPathValueAsReal(const std::string& path)
{
    return read_known_value<double>(kh::known_path_text(&descriptor_, path), "XmlFile::getPathValueAsReal",
                                    kh_tree_path_read_real_node_value, &descriptor_, path);
}

void XmlFile::getElementArrayAsInt(const std::string& element, std::vector<long>& values)
{
    read_array(values, "XmlFile::getElementArrayAsInt", kh_tree_read_integer_element_array, &descriptor_,
               ReadName{element});
}

void XmlFile::getElementArrayAsReal(const std::string& element, std::vector<double>& values)
{
    read_array(values, "XmlFile::getElementArrayAsReal", kh_tree_read_real_element_array, &descriptor_,
               ReadName{element});
}

void XmlFile::getElementArrayAsString(const std::string& element, std::vector<std::string>& values)
{
    read_strings(values, "XmlFile::getElementArrayAsString", kh::read_element_strings, &descriptor_,
                 ReadName{element});
}

void XmlFile::getPathArrayAsInt(const std::string& path, std::vector<long>& values)
{
    read_array(values, "XmlFile::getPathArrayAsInt", kh_tree_path_read_integer_node_array, &descriptor_,
               path);
}

// The one read that fails in silence: callers rely on an empty result instead of an exception.
void XmlFile::getPathArrayAsReal(const std::string& path, std::vector<double>& values)
{
    kh::ReceivedArray<double> array;
    const long status = kh::status_of("XmlFile::getPathArrayAsReal", kh_tree_path_read_real_node_array,
                                      &descriptor_, path, array.address(), array.count());
    if (status == KH_OK)
        array.append_to(values);
}

void XmlFile::getPathArrayAsString(const std::string& path, std::vector<std::string>& values)
{
    read_strings(values, "XmlFile::getPathArrayAsString", kh::read_path_strings, &descriptor_, path);
}

void XmlFile::getStringValuesFromList(const std::string& listPath, const std::string& item,
                                      std::vector<std::string>& values)
{
    // With a copy of the name, which may lie in the vector that grows.
    const auto next_value = [this, item] { return getElementValueAsString(item); };
    toPath(listPath);
    const long count = getAttributeValueAsInt(currentElementName(), "count");
    for (long i = 0; i < count; ++i)
        values.push_back(next_value());
}

std::string XmlFile::findValueInElement(const std::string& element, const std::string& value)
{
    std::string path;
    kh::call("XmlFile::findValueInElement", kh::find_string_value_element, &descriptor_, element, value,
             &path);
    return path;
}

std::string XmlFile::findValueInPath(const std::string& path, const std::string& value)
{
    std::string path_found;
    kh::call("XmlFile::findValueInPath", kh::find_string_value_path, &descriptor_, path, value, &path_found);
    return path_found;
}

} // namespace KALV
