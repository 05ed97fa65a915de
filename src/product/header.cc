// The fixed header of product files: its skeleton, and its items one by one or all at once.
//
// On an empty slot the calls report that and go on; the steps that follow then fail by themselves, and decide
// the status: callers rely on those codes.
#include "frame/number.h"
#include "tree/document.h"

#include <kalv/build.h>
#include <kalv/cursor.h>
#include <kalv/path.h>
#include <kalv/product.h>
#include <kalv/read.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

namespace kh {

namespace {

constexpr char fixed_header[] = "Fixed_Header";
constexpr char validity_period[] = "Validity_Period";
constexpr char source[] = "Source";

enum class Kind { text, number };

/// Format version 3 has names and an item of its own.
constexpr long new_version = 3;
enum class Versions { all, new_only };

/// One item of the header: an element that holds nothing but its value.
struct HeaderItem {
    const char* tag;
    const char* parent;
    const char* format;
    Kind kind = Kind::text;
    Versions versions = Versions::all;
};

// In document order.
constexpr HeaderItem header_items[] = {
    {"File_Name", fixed_header, "%s"},
    {"File_Description", fixed_header, "%s"},
    {"Notes", fixed_header, "%s"},
    {"Mission", fixed_header, "%s"},
    {"File_Class", fixed_header, "%s"},
    {"File_Type", fixed_header, "%10s"},
    {"Validity_Start", validity_period, "%23s"},
    {"Validity_Stop", validity_period, "%23s"},
    {"File_Version", fixed_header, "%04ld", Kind::number},
    {"KVSTD_Version", fixed_header, "%s", Kind::text, Versions::new_only},
    {"System", source, "%s"},
    {"Creator", source, "%s"},
    {"Creator_Version", source, "%s"},
    {"Creation_Date", source, "%23s"},
};

/// The item of a tag; null for any other name.
const HeaderItem* find_item(const char* tag) noexcept
{
    const HeaderItem* item =
        std::find_if(std::begin(header_items), std::end(header_items),
                     [&](const HeaderItem& row) { return std::strcmp(row.tag, tag) == 0; });
    return item == std::end(header_items) ? nullptr : item;
}

/// Room for any long in decimal.
constexpr std::size_t number_size = 21;

/// False when the descriptor is refused. An empty slot is reported, and no reason to stop.
bool names_a_slot(Operation& op, const long* fd) noexcept
{
    return open_document(op, fd) || op.status() == KH_ERR_NO_DOCUMENT;
}

/// Makes a header's elements, one after the other, each below or beside the one before. What fails is
/// reported, and leaves the elements made before it.
class HeaderBuilder {
public:
    HeaderBuilder(Operation& op, long* fd) noexcept : op_(op), fd_(fd) {}

    using Add = decltype(kh_tree_add_child);

    /// What becomes of the first element of the header in a document whose root already has children.
    enum class Placement { before_children, left_out };

    /// Goes to the root, which is made if the document has none, and makes the first element of the header.
    bool begin(const std::string& root, const std::string& first, Placement placement)
    {
        if (!go_to("/" + root)) {
            kh_tree_create_root(fd_, root.c_str(), op_.error_vector());
            if (op_.failed())
                return fail(KH_ERR_CREATE_NODE);
        }
        if (go_to("/" + root + "/" + first))
            return fail(KH_WARN_HEADER_EXISTS);
        if (op_.status() != KH_ERR_NOT_FOUND) // nobody knows whether there is a header
            return fail(KH_ERR_CREATE_NODE);
        kh_tree_rewind(fd_, op_.error_vector());
        kh_tree_go_to_next_element_node(fd_, op_.error_vector());
        if (op_.failed())
            return add(kh_tree_add_child, first.c_str());
        return placement == Placement::left_out || add(kh_tree_add_previous_sibling, first.c_str());
    }

    /// Fills the header from its `Fixed_Header` on, which is the node under the cursor.
    bool fill(const std::string& header, long version)
    {
        const std::string fixed = header + "/" + fixed_header;
        const char* parent = fixed_header;
        Add* add_item = kh_tree_add_child;
        for (const HeaderItem& item : header_items) {
            if (item.versions == Versions::new_only && version != new_version)
                continue;
            if (item.parent != parent) {
                if (parent != fixed_header && !reach(fixed + "/" + parent))
                    return false;
                if (item.parent != fixed_header) {
                    if (!add(kh_tree_add_next_sibling, item.parent))
                        return false;
                    add_item = kh_tree_add_child;
                }
                parent = item.parent;
            }
            if (!add(add_item, item.tag))
                return false;
            add_item = kh_tree_add_next_sibling;
        }
        return reach(fixed) && add(kh_tree_add_next_sibling, "Variable_Header");
    }

    bool add(Add* add_element, const char* name) noexcept
    {
        add_element(fd_, ".", name, op_.error_vector());
        if (op_.failed())
            return fail(KH_ERR_CREATE_NODE);
        return true;
    }

private:
    bool go_to(const std::string& path) noexcept
    {
        kh_tree_go_to_path_node(fd_, path.c_str(), op_.error_vector());
        return !op_.failed();
    }

    bool reach(const std::string& path) noexcept
    {
        if (!go_to(path))
            return fail(KH_ERR_NOT_FOUND);
        return true;
    }

    bool fail(long code) noexcept
    {
        op_.fail(code);
        return false;
    }

    Operation& op_;
    long* fd_;
};

/// The check of an item's name. Any name is taken while the status is clean, and the call then acts on no
/// value: callers rely on reaching other elements that way.
bool takes_name(Operation& op, const HeaderItem* item) noexcept
{
    if (!item && op.failed())
        op.fail(KH_ERR_NOT_HEADER_ITEM);
    return item || !op.failed();
}

/// Reads the next element of the item; a number is printed into the room that `*value` points to.
void read_item(long* fd, const HeaderItem& item, char** value, long* ierr) noexcept
{
    if (item.kind == Kind::text) {
        kh_tree_read_string_element_value(fd, item.tag, value, ierr);
        return;
    }
    long number = 0;
    if (kh_tree_read_integer_element_value(fd, item.tag, &number, ierr) == KH_OK)
        std::snprintf(*value, number_size, "%ld", number);
}

/// Writes the value of the element under the cursor.
void write_item(long* fd, const HeaderItem& item, const char* value, long* ierr) noexcept
{
    if (item.kind == Kind::text) {
        kh_tree_set_string_node_value(fd, ".", value, item.format, ierr);
        return;
    }
    // Versions have 32 bits; callers rely on what is above being dropped.
    const long number = static_cast<std::int32_t>(static_cast<std::uint32_t>(parse_integer(value).value));
    kh_tree_set_integer_node_value(fd, ".", &number, item.format, ierr);
}

} // namespace

} // namespace kh

using kh::HeaderBuilder;
using kh::HeaderItem;
using kh::KeepStatus;
using kh::Kind;
using kh::Operation;
using kh::Versions;

long kh_tree_create_header(long* fd, long* file_type, long* ierr)
{
    Operation op("kh_tree_create_header", ierr);
    if (!file_type)
        return op.null_argument();
    const long version = *file_type / 10;
    *file_type %= 10;
    if (!kh::names_a_slot(op, fd))
        return op.status();

    const bool is_new = version == kh::new_version;
    const char* root = is_new ? "Earth_Observation_File" : "Orvanto_File";
    const char* header = is_new ? "Earth_Observation_Header" : "Orvanto_Header";
    switch (*file_type) {
    case KH_EXTENSION_KLV:
    case KH_EXTENSION_EOF:
        KH_tree_create_header_EOF(fd, root, header, version, op.error_vector());
        break;
    case KH_EXTENSION_HDR:
        KH_tree_create_header_HDR(fd, header, version, op.error_vector());
        break;
    default:
        return op.fail(KH_ERR_NO_HEADER_TYPE);
    }
    return op.failed() ? op.fail(KH_ERR_CREATE_NODE) : op.status();
}

long KH_tree_create_header_EOF(long* fd, const char* root_name, const char* header_name, long version,
                               long* ierr)
{
    Operation op("KH_tree_create_header_EOF", ierr, KeepStatus());
    if (!fd || !root_name || !header_name)
        return op.null_argument();
    op.guarded([&] {
        HeaderBuilder builder(op, fd);
        if (builder.begin(root_name, header_name, HeaderBuilder::Placement::before_children) &&
            builder.add(kh_tree_add_child, kh::fixed_header))
            builder.fill("/" + std::string(root_name) + "/" + header_name, version);
    });
    return op.status();
}

long KH_tree_create_header_HDR(long* fd, const char* header_name, long version, long* ierr)
{
    Operation op("KH_tree_create_header_HDR", ierr, KeepStatus());
    if (!fd || !header_name)
        return op.null_argument();
    op.guarded([&] {
        HeaderBuilder builder(op, fd);
        // A root that has children keeps them and gets no Fixed_Header: callers rely on that refusal.
        if (builder.begin(header_name, kh::fixed_header, HeaderBuilder::Placement::left_out))
            builder.fill("/" + std::string(header_name), version);
    });
    return op.status();
}

long kh_tree_set_fixed_header_item(long* fd, const char* item, const char* value, long* ierr)
{
    Operation op("kh_tree_set_fixed_header_item", ierr);
    if (!kh::names_a_slot(op, fd))
        return op.status();
    if (!value || !item)
        return op.null_argument();
    const HeaderItem* known = kh::find_item(item);
    if (!kh::takes_name(op, known))
        return op.status();
    kh_tree_rewind(fd, op.error_vector());
    kh_tree_go_to_element_node(fd, item, op.error_vector());
    if (op.failed())
        return op.fail(KH_ERR_NOT_FOUND);
    if (known)
        kh::write_item(fd, *known, value, op.error_vector());
    return op.failed() ? op.fail(KH_ERR_FORMAT) : op.status();
}

long kh_tree_set_fixed_header_items(long* fd, const char* file_name, const char* file_description,
                                    const char* notes, const char* mission, const char* file_class,
                                    const char* file_type, const char* validity_start,
                                    const char* validity_stop, const long* file_version, const char* system,
                                    const char* creator, const char* creator_version,
                                    const char* creation_date, long* ierr)
{
    Operation op("kh_tree_set_fixed_header_items", ierr);
    if (!kh::names_a_slot(op, fd))
        return op.status();
    if (!file_version)
        return op.null_argument();
    char version[kh::number_size];
    std::snprintf(version, sizeof version, "%ld", *file_version);
    const char* const values[] = {file_name, file_description, notes,         mission, file_class,
                                  file_type, validity_start,   validity_stop, version, system,
                                  creator,   creator_version,  creation_date};
    kh_tree_rewind(fd, op.error_vector());
    long warning = KH_OK;
    const char* const* value = values;
    for (const HeaderItem& item : kh::header_items) {
        if (item.versions == Versions::new_only)
            continue;
        kh_tree_set_fixed_header_item(fd, item.tag, *value++, op.error_vector());
        if (op.failed())
            return op.fail(KH_ERR_FORMAT);
        if (op.status() != KH_OK)
            warning = op.status();
    }
    return *op.error_vector() = warning;
}

long kh_tree_get_fixed_header_item(long* fd, const char* item, char** value, long* ierr)
{
    Operation op("kh_tree_get_fixed_header_item", ierr);
    if (!kh::names_a_slot(op, fd))
        return op.status();
    if (!item || !value)
        return op.null_argument();
    const HeaderItem* known = kh::find_item(item);
    if (known && known->kind == Kind::number && !*value)
        return op.null_argument();
    if (!kh::takes_name(op, known))
        return op.status();
    kh_tree_rewind(fd, op.error_vector());
    if (known)
        kh::read_item(fd, *known, value, op.error_vector());
    if (op.failed())
        op.fail(op.status() == KH_ERR_NO_VALUE ? KH_ERR_NO_VALUE : KH_ERR_READ_ITEM);
    return op.status();
}

long kh_tree_get_fixed_header_items(long* fd, char** file_name, char** file_description, char** notes,
                                    char** mission, char** file_class, char** file_type,
                                    char** validity_start, char** validity_stop, long* file_version,
                                    char** system, char** creator, char** creator_version,
                                    char** creation_date, long* ierr)
{
    Operation op("kh_tree_get_fixed_header_items", ierr);
    if (!kh::names_a_slot(op, fd))
        return op.status();
    char** const texts[] = {file_name,  file_description, notes,           mission,
                            file_class, file_type,        validity_start,  validity_stop,
                            system,     creator,          creator_version, creation_date};
    if (!file_version || std::find(std::begin(texts), std::end(texts), nullptr) != std::end(texts))
        return op.null_argument();
    kh_tree_rewind(fd, op.error_vector());
    if (op.failed())
        op.pass_on();
    char** const* text = texts;
    for (const HeaderItem& item : kh::header_items) {
        if (item.versions == Versions::new_only)
            continue;
        // A value that cannot be read is an empty one to callers; one that there is no memory for is not.
        long untold = KH_OK;
        if (item.kind == Kind::number) {
            kh_tree_read_integer_element_value(fd, item.tag, file_version, &untold);
        } else {
            char* value = nullptr;
            kh_tree_read_string_element_value(fd, item.tag, &value, &untold);
            if (!value && !(value = kh::empty_text().release()))
                untold = KH_ERR_MEMORY;
            **text++ = value;
        }
        if (untold == KH_ERR_MEMORY)
            op.fail(KH_ERR_MEMORY);
    }
    return op.status();
}
