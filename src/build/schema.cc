// Schema references of an element: the location, the version and the default namespace.
#include "build/attribute.h"
#include "build/validity.h"
#include "frame/number.h"
#include "tree/document.h"

#include <cstring>
#include <kalv/build.h>
#include <string>
#include <string_view>

namespace kh {

namespace {

constexpr const char* instance_uri = "http://www.w3.org/2001/XMLSchema-instance";
constexpr const char* instance_prefix = "xsi";
constexpr const char* location_name = "schemaLocation";
constexpr const char* version_name = "schemaVersion";
constexpr const char* default_declaration = "xmlns";

enum Mode : long { set_all = 0, set_without_version = 1, remove_all = 2, remove_location = 3 };

/// What a schema text says: a namespace URI, and the value of the location.
struct Reference {
    std::string uri;
    std::string location;

    explicit Reference(const std::string& schema)
    {
        const std::size_t space = schema.find(' ');
        if (space != std::string::npos) {
            uri = schema.substr(0, space);
            location = schema;
        } else {
            uri = schema.find("TARVEK_SCHEMAS") != std::string::npos ? KALV_SCHEMA_BASE_TARVEK
                                                                     : KALV_SCHEMA_BASE_FAMILY;
            location = uri + " " + schema;
        }
    }
};

/// One field of "%2s%2s.XSD": blanks are skipped, and up to two characters taken.
std::string take_field(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const std::size_t length =
        std::min(std::min(text.find_first_of(" \t\n\v\f\r"), std::size_t{2}), text.size());
    std::string field(text.substr(0, length));
    text.remove_prefix(length);
    return field;
}

/// The version in the last eight characters of a schema's name: "0102.XSD" is "1.2". What stands behind the
/// two fields does not matter, and a field that is no number is 0: callers have files named so. Empty without
/// two fields.
std::string version_of(const std::string& schema)
{
    std::string_view end = schema;
    end.remove_prefix(end.size() > 8 ? end.size() - 8 : 0);
    const std::string major = take_field(end);
    const std::string minor = take_field(end);
    if (minor.empty())
        return {};
    return std::to_string(parse_integer(major.c_str()).value) + "." +
           std::to_string(parse_integer(minor.c_str()).value);
}

/// The namespace that the location is written in, and whether it was declared just now.
struct Instance {
    xmlNs* space;
    bool is_new;
};

bool declares(const xmlNode* element, const char* prefix) noexcept
{
    const xmlNs* declaration = element->nsDef;
    while (declaration && !xmlStrEqual(declaration->prefix, to_xml(prefix)))
        declaration = declaration->next;
    return declaration;
}

void remove_attribute(xmlAttr* attribute) noexcept
{
    if (attribute)
        xmlRemoveProp(attribute);
}

/// Declares the instance namespace. An element that declares its prefix already gives its first declaration,
/// whichever that is: callers' files have been written so.
Instance declare_instance(xmlNode* element) noexcept
{
    if (declares(element, instance_prefix))
        return {element->nsDef, false};
    xmlNs* space = xmlNewNs(element, to_xml(instance_uri), to_xml(instance_prefix));
    if (space)
        remove_attribute(attribute_written(element, "xmlns:xsi"));
    return {space, true};
}

/// Removes an attribute of a namespace. Version and default namespace are looked up with the name of the
/// location for a namespace, so that attributes without namespace stay: callers rely on it.
void remove_from_namespace(xmlNode* element, const char* name, const char* uri) noexcept
{
    for (xmlAttr* attribute = element->properties; attribute; attribute = attribute->next) {
        if (attribute->ns && xmlStrEqual(attribute->name, to_xml(name)) &&
            xmlStrEqual(attribute->ns->href, to_xml(uri))) {
            xmlRemoveProp(attribute);
            return;
        }
    }
}

/// Takes all attributes and namespace declarations off an element. Elements may still refer to the
/// declarations, so those stay with the document.
void detach_everything(Document& document, xmlNode* element) noexcept
{
    while (element->properties)
        xmlRemoveProp(element->properties);
    if (!element->nsDef)
        return;
    xmlNs* last = element->nsDef;
    while (last->next)
        last = last->next;
    last->next = document.detached.release();
    document.detached.reset(element->nsDef);
    element->nsDef = nullptr;
}

bool is_detached(const Document& document, const xmlNs* space) noexcept
{
    const xmlNs* detached = document.detached.get();
    while (detached && detached != space)
        detached = detached->next;
    return detached;
}

bool set_default_namespace(const Document& document, xmlNode* element, bool instance_is_new,
                           const char* uri) noexcept
{
    if (!instance_is_new && element->ns && !is_detached(document, element->ns))
        return set_uri(element->ns, uri);
    return set_attribute(element, default_declaration, uri);
}

/// \return false when memory ran out before everything was done
bool set_schema(Document& document, const std::string& schema, long mode)
{
    const Reference reference(schema);
    const std::string version = version_of(schema);
    xmlNode* element = document.current;
    const ParserCall call;
    const Instance instance = declare_instance(element);
    const bool sets = mode == set_all || mode == set_without_version;
    bool done = instance.space;
    remove_from_namespace(element, location_name, instance_uri);
    if (sets) {
        remove_from_namespace(element, default_declaration, location_name);
        done = done && set_attribute_in(element, instance.space, location_name, reference.location.c_str());
    }
    if (mode == set_all || mode == remove_all)
        remove_from_namespace(element, version_name, location_name);
    if (mode == set_all && !version.empty())
        done = done && set_attribute(element, version_name, version.c_str());
    if (mode == remove_all || (mode == remove_location && instance.is_new))
        detach_everything(document, element);
    if (sets)
        done = done && set_default_namespace(document, element, instance.is_new, reference.uri.c_str());
    return done && !call.out_of_memory();
}

bool is_mode(long mode) noexcept
{
    return mode >= set_all && mode <= remove_location;
}

/// The same for what callers hand over; what makes no sense changes nothing. \return false when memory ran
/// out
bool set_schema_if_possible(const long* fd, const char* schema, const long* mode) noexcept
{
    Document* document = find_document(fd);
    if (!document || !document->current || !is_element(document->current) || !schema || !mode ||
        !is_mode(*mode) || !is_xml_text(schema))
        return true;
    try {
        return set_schema(*document, schema, *mode);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace

} // namespace kh

using kh::Operation;

void KH_Set_Schema(long* fd, const char* schema, const long* mode)
{
    kh::set_schema_if_possible(fd, schema, mode);
}

long kh_set_schema(const char* file_name, const char* schema, const long* mode, long* ierr)
{
    Operation op("kh_set_schema", ierr);
    if (!file_name || !schema || !mode)
        return op.null_argument();
    if (!kh::is_xml_text(schema))
        return op.fail(KH_ERR_ARGUMENT, ". Value: %s", schema);
    long fd = kh_tree_init_parser(file_name, op.error_vector());
    if (op.status() != KH_OK)
        return op.pass_on(KH_ERR_PARSE, ".");
    // A refused mode leaves the document open: callers rely on its slot.
    if (!kh::is_mode(*mode))
        return op.fail(KH_ERR_ARGUMENT, ".");
    if (kh::set_schema_if_possible(&fd, schema, mode))
        kh_tree_write(&fd, file_name, op.error_vector());
    else
        op.fail(KH_ERR_MEMORY, ".");
    long closed = KH_OK;
    const long saved = op.status() == KH_OK ? op.status() : op.fail(KH_ERR_SAVE, ".");
    kh_tree_cleanup_parser(&fd, saved == KH_OK ? op.error_vector() : &closed);
    return op.status();
}
