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

bool is_mode(long mode) noexcept
{
    return mode >= set_all && mode <= remove_location;
}

bool sets_reference(long mode) noexcept
{
    return mode == set_all || mode == set_without_version;
}

/// False for a text that would be written and that no file can hold.
bool can_be_written(const char* schema, long mode) noexcept
{
    return !sets_reference(mode) || is_xml_text(schema);
}

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

bool declares(const xmlNode* element, const char* prefix) noexcept
{
    const xmlNs* declaration = element->nsDef;
    while (declaration && !xmlStrEqual(declaration->prefix, to_xml(prefix)))
        declaration = declaration->next;
    return declaration;
}

/// The namespace that the location is written in. An element that declares its prefix already gives its first
/// declaration, whichever that is: callers' files have been written so. What is declared anew is undone unless
/// it is kept.
class Instance {
public:
    explicit Instance(xmlNode* element) noexcept
        : element_(element), is_new_(!declares(element, instance_prefix)),
          space_(is_new_ ? xmlNewNs(element, to_xml(instance_uri), to_xml(instance_prefix)) : element->nsDef)
    {
    }
    ~Instance()
    {
        if (!is_new_ || !space_ || kept_)
            return;
        xmlNs** link = &element_->nsDef;
        while (*link != space_)
            link = &(*link)->next;
        *link = space_->next;
        xmlFreeNs(space_);
    }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    bool is_new() const noexcept { return is_new_; }
    xmlNs* space() const noexcept { return space_; }
    void keep() noexcept { kept_ = true; }

private:
    xmlNode* element_;
    bool is_new_;
    xmlNs* space_;
    bool kept_ = false;
};

/// An attribute of a namespace. Version and default namespace are looked up with the name of the location for
/// a namespace, so that attributes without namespace stay: callers rely on it.
xmlAttr* attribute_in(const xmlNode* element, const char* name, const char* uri) noexcept
{
    xmlAttr* attribute = element->properties;
    while (attribute && !(attribute->ns && xmlStrEqual(attribute->name, to_xml(name)) &&
                          xmlStrEqual(attribute->ns->href, to_xml(uri))))
        attribute = attribute->next;
    return attribute;
}

/// Takes all attributes and namespace declarations off an element. Elements may still refer to the
/// declarations, so those stay with the document.
void detach_everything(Document& document, xmlNode* element) noexcept
{
    while (element->properties)
        remove_attribute(element->properties);
    if (!element->nsDef)
        return;
    document.last_inserted = {};
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

bool make_default_namespace(NewValue& value, const Document& document, xmlNode* element, bool instance_is_new,
                            const char* uri) noexcept
{
    if (!instance_is_new && element->ns && !is_detached(document, element->ns))
        return value.make_uri(element->ns, uri);
    return value.make(element, default_declaration, uri);
}

/// \return false when memory ran out, and nothing has changed
bool set_schema(Document& document, const std::string& schema, long mode)
{
    const Reference reference(schema);
    const std::string version = version_of(schema);
    xmlNode* element = document.current;
    const bool sets = sets_reference(mode);
    const bool sets_version = mode == set_all && !version.empty();
    const bool removes_version = mode == set_all || mode == remove_all;

    // All that is new is made first, and all that is to go stands ready to come back.
    const ParserCall call;
    Instance instance(element);
    if (!instance.space() || call.out_of_memory())
        return false;
    const auto found = [&](bool wanted, const char* name, const char* uri) {
        return wanted ? attribute_in(element, name, uri) : nullptr;
    };
    RemovedAttribute prefix(instance.is_new() ? attribute_written(element, "xmlns:xsi") : nullptr);
    RemovedAttribute old_location(found(true, location_name, instance_uri));
    RemovedAttribute old_default(found(sets, default_declaration, location_name));
    RemovedAttribute old_version(found(removes_version, version_name, location_name));
    NewValue new_location;
    NewValue new_version;
    NewValue new_default;
    if ((sets &&
         !new_location.make_in(element, instance.space(), location_name, reference.location.c_str())) ||
        (sets_version && !new_version.make(element, version_name, version.c_str())) ||
        (sets &&
         !make_default_namespace(new_default, document, element, instance.is_new(), reference.uri.c_str())))
        return false;

    instance.keep();
    for (RemovedAttribute* removed : {&prefix, &old_location, &old_default, &old_version})
        removed->drop();
    for (NewValue* value : {&new_location, &new_version, &new_default})
        value->put_in();
    if (mode == remove_all || (mode == remove_location && instance.is_new()))
        detach_everything(document, element);
    return true;
}

/// The same for what callers hand over; what makes no sense changes nothing. \return false when memory ran
/// out
bool set_schema_if_possible(const long* fd, const char* schema, const long* mode) noexcept
{
    Document* document = find_document(fd);
    if (!document || !document->current || !is_element(document->current) || !schema || !mode ||
        !is_mode(*mode) || !can_be_written(schema, *mode))
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
    if (!kh::can_be_written(schema, *mode))
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
