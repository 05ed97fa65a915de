// Every exported function, and every method, with every kind of argument in all pairs: none ends the process,
// each status is one of the table, and a call that reports an error has left the document as it was.
//
//     arguments                        all
//     arguments <function> <point>     one point, to be looked at in the debugger
#include "torture/describe.h"
#include "torture/harness.h"
#include "torture/symbols.h"

#include <array>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <kalv/XmlFile.h>
#include <libxml/tree.h>
#include <limits>
#include <set>
#include <tuple>
#include <unistd.h>

namespace {

using namespace torture;

const char* const document_text = R"(<?xml version="1.0"?>
<!DOCTYPE Root [<!ENTITY who "somebody"><!ATTLIST Item id ID #IMPLIED kind CDATA "a">]>
<Root xmlns="urn:default" xmlns:p="urn:p">
  <Title>A title</Title>
  <List>
    <Item id="i1" real="1.5">10</Item>
    <Item id="i2" real="2.5">20</Item>
  </List>
  <p:Mixed p:a="1">text &who;<!-- comment --><b>bold</b><![CDATA[raw]]></p:Mixed>
</Root>
)";

const std::string long_text(1U << 20, 'x');

/// The document and all that the arguments of one call point to.
class World {
public:
    World() : fd_(kh_tree_init_memory(document_text, static_cast<long>(std::strlen(document_text)), nullptr))
    {
        kh_tree_go_to_path_node(&fd_, "/Root/List/Item[2]", nullptr);
        rootless_ = kh_tree_create(nullptr);
        closed_ = kh_tree_create(nullptr);
        long closed = closed_;
        kh_tree_cleanup_parser(&closed, nullptr);
    }
    ~World()
    {
        for (void* block : results_)
            std::free(block);
        kh_tree_cleanup_all_parser();
    }
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    xmlNode* root() const { return global_current_status[fd_]->root; }
    xmlNode* current() const { return global_current_status[fd_]->current; }

    long fd_ = -1;
    long rootless_ = -1;
    long closed_ = -1;
    long out_of_range_[4] = {-1, KH_MAX_DOCUMENTS, LONG_MIN, LONG_MAX};
    long numbers_[6] = {0, 1, -1, 31, LONG_MIN, LONG_MAX};
    double reals_[5] = {1.5, 0, 1e308, HUGE_VAL, std::nan("")};
    kh_error_record record_ = {};
    std::vector<char> buffer_ = std::vector<char>(4U << 20);

    /// A pointer that a call may set to a block of its own.
    template <class Entry>
    Entry** result()
    {
        results_.reserve(64); // the addresses stay
        results_.push_back(nullptr);
        return reinterpret_cast<Entry**>(&results_.back());
    }

private:
    std::vector<void*> results_;
};

/// The kinds of an argument: how many there are, and how each is made. The first is a good one.
template <class Type>
struct Kinds;

/// The descriptor is no mere number.
struct Descriptor {};

template <>
struct Kinds<Descriptor> {
    static constexpr std::size_t count = 8;
    static long* make(World& world, std::size_t kind, const char*)
    {
        switch (kind) {
        case 0:
            return &world.fd_;
        case 1:
            return &world.rootless_;
        case 2:
            return &world.closed_;
        case 3:
            return nullptr;
        default:
            return &world.out_of_range_[kind - 4];
        }
    }
};

template <>
struct Kinds<const char*> {
    static constexpr std::size_t count = 9;
    static const char* make(World&, std::size_t kind, const char* good)
    {
        const std::array<const char*, count> kinds = {good,
                                                      nullptr,
                                                      "",
                                                      long_text.c_str(),
                                                      "\xff\xfe not UTF-8 \xc0\x80",
                                                      "/Root/List/Item[1]/@id",
                                                      "%s%n%ld",
                                                      "../../../..",
                                                      "[*]/[*]/@"};
        return kinds.at(kind);
    }
};

template <>
struct Kinds<std::string> {
    static constexpr std::size_t count = 9;
    static std::string make(World& world, std::size_t kind, const char* good)
    {
        const char* text = Kinds<const char*>::make(world, kind, good);
        return text ? text : std::string("a\0b", 3);
    }
};

template <>
struct Kinds<char*> {
    static constexpr std::size_t count = 2;
    static char* make(World& world, std::size_t kind, const char*)
    {
        return kind == 0 ? world.buffer_.data() : nullptr;
    }
};

template <class Pointer>
struct PointerToResult {
    static constexpr std::size_t count = 2;
    static Pointer make(World& world, std::size_t kind, const char*)
    {
        return kind == 0 ? world.result<std::remove_pointer_t<std::remove_pointer_t<Pointer>>>() : nullptr;
    }
};
template <>
struct Kinds<char**> : PointerToResult<char**> {
};
template <>
struct Kinds<char***> : PointerToResult<char***> {
};
template <>
struct Kinds<long**> : PointerToResult<long**> {
};
template <>
struct Kinds<double**> : PointerToResult<double**> {
};
template <>
struct Kinds<void**> : PointerToResult<void**> {
};

template <>
struct Kinds<long*> {
    static constexpr std::size_t count = 7;
    static long* make(World& world, std::size_t kind, const char*)
    {
        return kind == 6 ? nullptr : &world.numbers_[kind];
    }
};
template <>
struct Kinds<const long*> : Kinds<long*> {
};

template <>
struct Kinds<double*> {
    static constexpr std::size_t count = 6;
    static double* make(World& world, std::size_t kind, const char*)
    {
        return kind == 5 ? nullptr : &world.reals_[kind];
    }
};
template <>
struct Kinds<const double*> : Kinds<double*> {
};

template <class Number>
struct PlainNumber {
    static constexpr std::size_t count = 8;
    static Number make(World&, std::size_t kind, const char*)
    {
        using Limits = std::numeric_limits<Number>;
        const std::array<Number, count> kinds = {
            1,  0,   static_cast<Number>(-1), Limits::lowest(), Limits::max(),
            31, 512, static_cast<Number>(-39)};
        return kinds.at(kind);
    }
};
template <>
struct Kinds<long> : PlainNumber<long> {
};
template <>
struct Kinds<int> : PlainNumber<int> {
};
template <>
struct Kinds<double> : PlainNumber<double> {
};

template <>
struct Kinds<bool> {
    static constexpr std::size_t count = 2;
    static bool make(World&, std::size_t kind, const char*) { return kind == 0; }
};

template <>
struct Kinds<xmlNode*> {
    static constexpr std::size_t count = 6;
    static xmlNode* make(World& world, std::size_t kind, const char*)
    {
        xmlNode* mixed = world.root()->last->prev;
        const std::array<xmlNode*, count> kinds = {world.current(), nullptr,
                                                   world.root(),    world.root()->children,
                                                   mixed->children, mixed->children->next};
        return kinds.at(kind);
    }
};

template <>
struct Kinds<kh_error_record*> {
    static constexpr std::size_t count = 2;
    static kh_error_record* make(World& world, std::size_t kind, const char*)
    {
        return kind == 0 ? &world.record_ : nullptr;
    }
};

/// An object with a document, with an empty one, and without.
template <>
struct Kinds<KALV::XmlFile> {
    static constexpr std::size_t count = 3;
    static KALV::XmlFile make(World&, std::size_t kind, const char*)
    {
        KALV::XmlFile file;
        if (kind == 0)
            file.readMemory(document_text);
        else if (kind == 1)
            file.create();
        return file;
    }
};

/// A choice of kinds, one an argument.
using Choice = std::vector<std::size_t>;

/// All choices in which two arguments at most are not the good ones.
std::vector<Choice> pairs(const std::vector<std::size_t>& counts)
{
    std::set<Choice> choices;
    choices.insert(Choice(counts.size(), 0));
    for (std::size_t first = 0; first < counts.size(); ++first)
        for (std::size_t second = 0; second < counts.size(); ++second)
            for (std::size_t i = 0; i < counts[first]; ++i)
                for (std::size_t j = 0; j < counts[second]; ++j) {
                    Choice choice(counts.size(), 0);
                    choice[first] = i;
                    choice[second] = j;
                    choices.insert(choice);
                }
    return {choices.begin(), choices.end()};
}

/// A function with the kinds of its arguments.
struct Subject {
    std::string name;
    std::vector<std::size_t> counts;
    /// Makes the call. \return the status
    std::function<long(World& world, const Choice& choice)> call;
    bool may_change = false; ///< an error may leave the document changed, as it is described
};

using Texts = std::vector<const char*>;

/// The good text of an argument: they are given for the texts among the arguments, in their order.
template <class... Kind>
const char* good_text(const Texts& texts, std::size_t place)
{
    constexpr std::array<bool, sizeof...(Kind)> is_text = {
        (std::is_same_v<Kind, const char*> || std::is_same_v<Kind, std::string>)...};
    std::size_t index = 0;
    for (std::size_t i = 0; i < place; ++i)
        index += is_text[i] ? 1 : 0;
    return is_text[place] ? texts.at(index) : nullptr;
}

/// A subject whose arguments have the given kinds. The body gets the address of a status word, or null, and
/// the arguments.
template <class... Kind, class Body, std::size_t... place>
Subject subject_of(const char* name, const Texts& texts, Body body, std::index_sequence<place...>)
{
    const auto call = [=](World& world, const Choice& choice) {
        long status = KH_OK;
        body(choice.back() == 0 ? &status : nullptr,
             Kinds<Kind>::make(world, choice[place], good_text<Kind...>(texts, place))...);
        return status;
    };
    return {name, {Kinds<Kind>::count..., 2}, call};
}

template <class... Kind, class Body>
Subject subject(const char* name, const Texts& texts, Body body)
{
    return subject_of<Kind...>(name, texts, body, std::index_sequence_for<Kind...>());
}

/// A function that has no status word.
template <class Result, class... Argument>
Subject plain(const char* name, Result (*function)(Argument...), const Texts& texts = {})
{
    return subject<Argument...>(name, texts,
                                [function](long*, auto... arguments) { function(arguments...); });
}

/// The same for one whose first argument is a descriptor.
template <class Result, class... Argument>
Subject plain_on_document(const char* name, Result (*function)(long*, Argument...), const Texts& texts = {})
{
    return subject<Descriptor, Argument...>(name, texts,
                                            [function](long*, auto... arguments) { function(arguments...); });
}

template <bool takes_descriptor, class... Argument, class Result, std::size_t... place>
Subject reporting_of(const char* name, Result (*function)(Argument...), const Texts& texts,
                     std::index_sequence<place...>)
{
    using Arguments = std::tuple<Argument...>;
    return subject<std::conditional_t<takes_descriptor && place == 0, Descriptor,
                                      std::tuple_element_t<place, Arguments>>...>(
        name, texts, [function](long* status, auto... arguments) { function(arguments..., status); });
}

/// A function on a document whose last argument is the status word.
template <class Result, class... Argument>
Subject on_document(const char* name, Result (*function)(Argument...), const Texts& texts = {})
{
    return reporting_of<true, Argument...>(name, function, texts,
                                           std::make_index_sequence<sizeof...(Argument) - 1>());
}

/// Any other function whose last argument is the status word.
template <class Result, class... Argument>
Subject reporting(const char* name, Result (*function)(Argument...), const Texts& texts = {})
{
    return reporting_of<false, Argument...>(name, function, texts,
                                            std::make_index_sequence<sizeof...(Argument) - 1>());
}

Subject changing(Subject subject)
{
    subject.may_change = true;
    return subject;
}

/// A method; what it throws becomes the status.
template <class... Kind, class Body>
Subject method(const char* name, const Texts& texts, Body body)
{
    return subject<KALV::XmlFile, Kind...>(name, texts, [body](long* status, auto&&... arguments) {
        try {
            body(arguments...);
        } catch (const KALV::KalvError& error) {
            std::vector<long> codes;
            error.getCodes(codes);
            if (status)
                *status = codes.front();
        }
    });
}

#define NAMED(function) #function, function

std::vector<Subject> on_documents()
{
    return {
        on_document(NAMED(kh_tree_rewind)),
        on_document(NAMED(kh_tree_go_to_element_node), {"Item"}),
        on_document(NAMED(kh_tree_go_to_next_element_node)),
        plain_on_document(NAMED(kh_tree_get_next_element_node)),
        plain(NAMED(kh_tree_get_next_node)),
        plain(NAMED(kh_tree_get_parent_next_node)),
        plain_on_document(NAMED(kh_tree_set_requested_tag), {"Item"}),
        plain_on_document(NAMED(kh_tree_is_attribute)),
        plain_on_document(NAMED(kh_tree_go_to_next_sibling), {"Item"}),
        plain_on_document(NAMED(kh_tree_go_to_child), {"Item"}),
        on_document(NAMED(kh_tree_go_to_parent)),
        plain(NAMED(kh_tree_go_to_attribute), {"@id"}),
        plain(NAMED(kh_tree_get_sibling_index)),
        plain_on_document(NAMED(kh_tree_distance_from_root)),
        on_document(NAMED(kh_tree_chop_path), {"/Root/List/Item[*]/@id"}),
        on_document(NAMED(kh_tree_go_to_stack_node)),
        on_document(NAMED(kh_tree_go_to_path_node), {"/Root/List/Item[2]"}),
        on_document(NAMED(kh_tree_go_to_stack_array_node)),
        on_document(NAMED(kh_tree_go_to_stack_from_array_node)),
        on_document(NAMED(kh_tree_get_path)),
        on_document(NAMED(kh_tree_get_current_element_name)),
        on_document(NAMED(kh_tree_get_current_element_value)),
        on_document(NAMED(kh_tree_read_next_element)),
        on_document(NAMED(kh_tree_read_string_element_value), {"Item"}),
        on_document(NAMED(kh_tree_read_integer_element_value), {"Item"}),
        on_document(NAMED(kh_tree_read_real_element_value), {"Item"}),
        on_document(NAMED(kh_tree_read_string_attribute), {"Item", "id"}),
        on_document(NAMED(kh_tree_read_integer_attribute), {"Item", "real"}),
        on_document(NAMED(kh_tree_read_real_attribute), {"Item", "real"}),
        on_document(NAMED(kh_tree_path_read_string_node_value), {"/Root/Title"}),
        on_document(NAMED(kh_tree_path_read_integer_node_value), {"/Root/List/Item[1]"}),
        on_document(NAMED(kh_tree_path_read_real_node_value), {"/Root/List/Item[1]/@real"}),
        on_document(NAMED(kh_tree_read_string_element_array), {"Item"}),
        on_document(NAMED(kh_tree_read_integer_element_array), {"Item"}),
        on_document(NAMED(kh_tree_read_real_element_array), {"Item"}),
        on_document(NAMED(kh_tree_path_read_string_node_array), {"/Root/List/Item[*]/@id"}),
        on_document(NAMED(kh_tree_path_read_integer_node_array), {"/Root/List/Item[*]"}),
        on_document(NAMED(kh_tree_path_read_real_node_array), {"/Root/List/Item[*]/@real"}),
        on_document(NAMED(kh_tree_get_namespace), {"/Root/Mixed"}),
        on_document(NAMED(kh_tree_find_string_value_element), {"Item", "20"}),
        on_document(NAMED(kh_tree_find_string_value_path), {"/Root/List/Item[*]", "20"}),
        on_document(NAMED(kh_tree_create_root), {"Root"}),
        on_document(NAMED(kh_tree_add_child), {"/Root/List", "Added"}),
        on_document(NAMED(kh_tree_add_next_sibling), {"/Root/List", "Added"}),
        on_document(NAMED(kh_tree_add_previous_sibling), {"/Root/List/Item[1]", "Added"}),
        on_document(NAMED(kh_tree_add_attribute), {"/Root/List", "added"}),
        on_document(NAMED(kh_tree_remove_node), {"/Root/List/Item[1]"}),
        on_document(NAMED(kh_copy_node), {"/Root/List", "source.xml", "/Source/Part"}),
        on_document(NAMED(kh_tree_set_string_node_value), {"/Root/Title", "value", "%s"}),
        on_document(NAMED(kh_tree_set_integer_node_value), {"/Root/Title", "%ld"}),
        on_document(NAMED(kh_tree_set_real_node_value), {"/Root/Title", "%.3f"}),
        on_document(NAMED(kh_tree_traverse_and_format)),
        on_document(NAMED(kh_tree_set_text), {"/Root/Title", "a & b"}),
        on_document(NAMED(kh_tree_get_doctype)),
        on_document(NAMED(kh_tree_go_to_node)),
        on_document(NAMED(kh_tree_insert_node), {"Added"}),
        on_document(NAMED(kh_tree_delete_node)),
        on_document(NAMED(kh_tree_save), {"target.xml"}),
        changing(on_document(NAMED(kh_tree_write), {"target.xml"})),
        changing(on_document(NAMED(kh_tree_write_memory))),
        plain_on_document(NAMED(KH_Set_Schema), {"Some_0102.XSD"}),
        changing(on_document(NAMED(kh_tree_create_header))),
        changing(on_document(NAMED(KH_tree_create_header_EOF), {"Root", "Header"})),
        changing(on_document(NAMED(KH_tree_create_header_HDR), {"Root"})),
        on_document(NAMED(kh_tree_set_fixed_header_item), {"Title", "value"}),
        changing(on_document(NAMED(kh_tree_set_fixed_header_items), Texts(12, "text"))),
        on_document(NAMED(kh_tree_get_fixed_header_items)),
        changing(on_document(NAMED(kh_tree_cleanup_parser))),
    };
}

std::vector<Subject> without_document()
{
    return {
        reporting(NAMED(kh_tree_init_parser), {"source.xml"}),
        reporting(NAMED(kh_tree_create)),
        plain(NAMED(kh_tree_cleanup_all_parser)),
        plain(NAMED(KH_get_file_name)),
        changing(reporting(NAMED(kh_set_schema), {"source.xml", "Some_0102.XSD"})),
        reporting(NAMED(kh_create_filename), {"TEST", "AUX_ORBIT", "20200101T000000_20200102T000000_0001"}),
        reporting(NAMED(kh_read_filename_items),
                  {"QK1_TEST_ORBIT_20200101T000000_20200102T000000_0000000001.EOF"}),
        plain(NAMED(KH_Get_sat_id), {"Grontaval"}),
        plain(NAMED(KH_Get_sat_id_capital_letters), {"GRONTAVAL"}),
        plain(NAMED(KH_Get_file_extension_type)),
        plain(NAMED(kh_init_error)),
        plain(NAMED(kh_set_error)),
        plain(NAMED(kh_add_error_info), {"more"}),
        plain(NAMED(kh_basic_error_msg)),
        plain(NAMED(KH_last_report)),
        plain(NAMED(kh_silent)),
        reporting(NAMED(kh_strncpy), {"text"}),
        reporting(NAMED(kh_string_to_integer), {"12abc"}),
        reporting(NAMED(kh_string_to_real), {"2.5e3"}),
        reporting(NAMED(KH_alloc_array), {"function"}),
        plain(NAMED(KH_Get_lib_version)),
        plain(NAMED(KH_Get_lib_version_number)),
        plain(NAMED(KH_Get_compatibility_table)),
        plain(NAMED(KH_strcmp), {"a", "b"}),
        plain(NAMED(kh_check_library_version)),
    };
}

/// Functions whose arguments belong together, or are not told by their types.
std::vector<Subject> special()
{
    return {
        subject<const char*, long>("kh_tree_init_memory", {document_text},
                                   [](long* status, const char* data, long size) {
                                       const auto length = data ? static_cast<long>(std::strlen(data)) : 0;
                                       kh_tree_init_memory(data, size > 0 ? std::min(size, length) : size,
                                                           status);
                                   }),
        subject<Descriptor, bool>("kh_tree_describe", {},
                                  [](long* status, long* fd, bool has_room) {
                                      kh_document description = {};
                                      kh_tree_describe(fd, has_room ? &description : nullptr, status);
                                  }),
        subject<xmlNode*, bool>("kh_node_describe", {},
                                [](long*, const xmlNode* node, bool has_room) {
                                    kh_node description = {};
                                    kh_node_describe(node, has_room ? &description : nullptr);
                                }),
        subject<xmlNode*, bool>("kh_node_first_attribute", {},
                                [](long*, const xmlNode* node, bool has_room) {
                                    kh_attribute description = {};
                                    kh_node_first_attribute(node, has_room ? &description : nullptr);
                                }),
        subject<xmlNode*, bool>("kh_node_next_attribute", {},
                                [](long*, const xmlNode* node, bool has_room) {
                                    kh_attribute description = {};
                                    kh_node_first_attribute(node, &description);
                                    while (kh_node_next_attribute(has_room ? &description : nullptr)) {
                                    }
                                }),
        subject<Descriptor, xmlNode*, int, int>(
            "kh_tree_add_sibling", {},
            [](long* status, long* fd, xmlNode* reference, int added_kind, int insert_kind) {
                xmlNode* added = added_kind == 0 ? nullptr : xmlNewNode(nullptr, BAD_CAST "Added");
                const auto insert = insert_kind == 0   ? nullptr
                                    : insert_kind == 1 ? xmlAddNextSibling
                                                       : xmlAddPrevSibling;
                kh_tree_add_sibling(fd, reference, added, insert, status);
                if (added && !added->parent)
                    xmlFreeNode(added);
            }),
        subject<Descriptor, const char*, const char*, const char*>(
            "kh_tree_set_node_value", {"/Root/Title", "%s", "value"},
            [](long* status, long* fd, const char* path, const char* format, const char* value) {
                kh_tree_set_node_value(fd, path, format, status, value);
            }),
        subject<Descriptor, const char*, bool>("kh_tree_get_fixed_header_item", {"Title"},
                                               [](long* status, long* fd, const char* item, bool has_room) {
                                                   char room[21] = "";
                                                   char* value = has_room ? room : nullptr;
                                                   if (!has_room && item &&
                                                       std::strcmp(item, "File_Version") == 0)
                                                       return; // its caller must provide the room
                                                   kh_tree_get_fixed_header_item(fd, item, &value, status);
                                                   if (value != room)
                                                       std::free(value);
                                               }),
        subject<kh_error_record*, long, long, const char*>(
            "kh_handle_error", {"detail"},
            [](long*, kh_error_record* record, long code, long set, const char* detail) {
                kh_handle_error(record, code, set, "%s", detail ? detail : "");
            }),
        subject<const char*>(
            "KH_handle_xml_error", {"message"},
            [](long*, const char* text) { KH_handle_xml_error(nullptr, "%s", text ? text : ""); }),
        subject<const char*, const char*>(
            "kh_strtoken", {"/a//b", "/"},
            [](long*, const char* source, const char* delimiters) {
                const std::size_t size = source ? std::strlen(source) + 1 : 1;
                std::vector<char> buffer(size);
                std::vector<char*> tokens(size);
                long count = 0;
                kh_strtoken(source, delimiters, buffer.data(), tokens.data(), &count);
                kh_strtoken(source, delimiters, nullptr, tokens.data(), &count);
                kh_strtoken(source, delimiters, buffer.data(), nullptr, &count);
                kh_strtoken(source, delimiters, buffer.data(), tokens.data(), nullptr);
            }),
        subject<bool, bool, bool>("KH_free_memory_get_namespace", {},
                                  [](long*, bool has_prefixes, bool has_uris, bool are_filled) {
                                      const auto cell = [](bool exists) {
                                          return exists ? static_cast<char***>(std::calloc(1, sizeof(char**)))
                                                        : nullptr;
                                      };
                                      char*** prefixes = cell(has_prefixes);
                                      char*** uris = cell(has_uris);
                                      char* none[1] = {};
                                      if (are_filled && prefixes)
                                          *prefixes = none;
                                      if (are_filled && uris)
                                          *uris = none;
                                      KH_free_memory_get_namespace(are_filled ? 1 : 0, prefixes, uris);
                                      if (!are_filled) { // cells that hold null are left alone
                                          std::free(prefixes);
                                          std::free(uris);
                                      }
                                  }),
        subject<>("kh_verbose", {},
                  [](long*) {
                      kh_verbose();
                      kh_silent();
                  }),
    };
}

std::vector<Subject> methods()
{
    using File = KALV::XmlFile;
    using Text = std::string;
    const Texts path = {"/Root/List"};
    const Texts path_and_name = {"/Root/List", "Added"};
    return {
        method<Text>("XmlFile::read", {"source.xml"}, [](File& file, const Text& name) { file.read(name); }),
        method<Text>("XmlFile::readMemory", {document_text},
                     [](File& file, const Text& data) { file.readMemory(data); }),
        method<>("XmlFile::toString", {}, [](File& file) { file.toString(); }),
        method<>("XmlFile::getId", {}, [](File& file) { file.getId(); }),
        method<>("XmlFile::getFileName", {}, [](File& file) { file.getFileName(); }),
        method<>("XmlFile::write", {}, [](File& file) { file.write(); }),
        method<Text>("XmlFile::write", {"target.xml"},
                     [](File& file, const Text& name) { file.write(name); }),
        method<>("XmlFile::create", {}, [](File& file) { file.create(); }),
        method<>("XmlFile::clean", {}, [](File& file) { file.clean(); }),
        method<>("XmlFile::root", {}, [](File& file) { file.root(); }),
        method<>("XmlFile::next", {}, [](File& file) { file.next(); }),
        method<Text>("XmlFile::toElement", {"Item"},
                     [](File& file, const Text& name) { file.toElement(name); }),
        method<Text>("XmlFile::toPath", path, [](File& file, const Text& where) { file.toPath(where); }),
        method<>("XmlFile::nextSibling", {},
                 [](File& file) {
                     const QuietStandardOutput quiet;
                     file.nextSibling();
                 }),
        method<>("XmlFile::currentElementName", {}, [](File& file) { file.currentElementName(); }),
        method<>("XmlFile::currentPathName", {}, [](File& file) { file.currentPathName(); }),
        method<Text, bool>("XmlFile::setSchema", {"Some_0102.XSD"},
                           [](File& file, const Text& schema, bool flag) { file.setSchema(schema, flag); }),
        method<bool>("XmlFile::removeSchema", {}, [](File& file, bool flag) { file.removeSchema(flag); }),
        method<Text>("XmlFile::getElementValue", {"Item"},
                     [](File& file, const Text& name) { file.getElementValueAsString(name); }),
        method<Text>("XmlFile::getElementValueAsInt", {"Item"},
                     [](File& file, const Text& name) { file.getElementValueAsInt(name); }),
        method<Text>("XmlFile::getElementValueAsReal", {"Item"},
                     [](File& file, const Text& name) { file.getElementValueAsReal(name); }),
        method<Text, Text>("XmlFile::getAttributeValueAsString", {"Item", "id"},
                           [](File& file, const Text& element, const Text& attribute) {
                               file.getAttributeValueAsString(element, attribute);
                           }),
        method<Text, Text>("XmlFile::getAttributeValueAsInt", {"Item", "real"},
                           [](File& file, const Text& element, const Text& attribute) {
                               file.getAttributeValueAsInt(element, attribute);
                           }),
        method<Text, Text>("XmlFile::getAttributeValueAsReal", {"Item", "real"},
                           [](File& file, const Text& element, const Text& attribute) {
                               file.getAttributeValueAsReal(element, attribute);
                           }),
        method<Text>("XmlFile::getPathValueAsString", {"/Root/Title"},
                     [](File& file, const Text& where) { file.getPathValueAsString(where); }),
        method<Text>("XmlFile::getPathValueAsInt", {"/Root/List/Item"},
                     [](File& file, const Text& where) { file.getPathValueAsInt(where); }),
        method<Text>("XmlFile::getPathValueAsReal", {"/Root/List/Item/@real"},
                     [](File& file, const Text& where) { file.getPathValueAsReal(where); }),
        method<Text>("XmlFile::arrays of elements", {"Item"},
                     [](File& file, const Text& name) {
                         std::vector<long> integers;
                         std::vector<double> reals;
                         std::vector<Text> texts;
                         file.getElementArrayAsString(name, texts);
                         file.getElementArrayAsReal(name, reals);
                         file.getElementArrayAsInt(name, integers);
                     }),
        method<Text>("XmlFile::arrays by path", {"/Root/List/Item[*]"},
                     [](File& file, const Text& where) {
                         std::vector<long> integers;
                         std::vector<double> reals;
                         std::vector<Text> texts;
                         file.getPathArrayAsReal(where, reals);
                         file.getPathArrayAsString(where, texts);
                         file.getPathArrayAsInt(where, integers);
                     }),
        method<Text, Text>("XmlFile::getStringValuesFromList", {"/Root/List", "Item"},
                           [](File& file, const Text& list, const Text& item) {
                               std::vector<Text> texts;
                               file.getStringValuesFromList(list, item, texts);
                           }),
        method<Text, Text>("XmlFile::findValueInElement", {"Item", "20"},
                           [](File& file, const Text& element, const Text& value) {
                               file.findValueInElement(element, value);
                           }),
        method<Text, Text>(
            "XmlFile::findValueInPath", {"/Root/List/Item[*]", "20"},
            [](File& file, const Text& where, const Text& value) { file.findValueInPath(where, value); }),
        method<Text>("XmlFile::createRoot", {"Root"},
                     [](File& file, const Text& name) { file.createRoot(name); }),
        method<Text, Text>(
            "XmlFile::addChild", path_and_name,
            [](File& file, const Text& where, const Text& name) { file.addChild(where, name); }),
        method<Text, Text>(
            "XmlFile::addNext", path_and_name,
            [](File& file, const Text& where, const Text& name) { file.addNext(where, name); }),
        method<Text, Text>(
            "XmlFile::addPrevious", path_and_name,
            [](File& file, const Text& where, const Text& name) { file.addPrevious(where, name); }),
        method<Text, Text>(
            "XmlFile::addAttribute", path_and_name,
            [](File& file, const Text& where, const Text& name) { file.addAttribute(where, name); }),
        changing(method<Text, Text, Text, Text>(
            "XmlFile::addChild with a value", {"/Root/List", "Added", "value", "%s"},
            [](File& file, const Text& where, const Text& name, const Text& value, const Text& format) {
                file.addChild(where, name, value, format);
            })),
        method<Text, Text, Text>("XmlFile::copyNode", {"/Root/List", "source.xml", "/Source/Part"},
                                 [](File& file, const Text& where, const Text& source, const Text& from) {
                                     file.copyNode(where, source, from);
                                 }),
        method<Text>("XmlFile::removeNode", path,
                     [](File& file, const Text& where) { file.removeNode(where); }),
        method<Text, Text, Text>("XmlFile::setValue", {"/Root/Title", "value", "%s"},
                                 [](File& file, const Text& where, const Text& value, const Text& format) {
                                     file.setValue(where, value, format);
                                 }),
        method<Text, long, Text>("XmlFile::setValue of an integer", {"/Root/Title", "%ld"},
                                 [](File& file, const Text& where, long value, const Text& format) {
                                     file.setValue(where, value, format);
                                 }),
        method<Text, double, Text>("XmlFile::setValue of a real", {"/Root/Title", "%g"},
                                   [](File& file, const Text& where, double value, const Text& format) {
                                       file.setValue(where, value, format);
                                   }),
        changing(method<long>("XmlFile::createHeader", {},
                              [](File& file, long type) { file.createHeader(type); })),
        changing(method<Text, Text, long, long>(
            "XmlFile::createHeader of items", {"name", "Some_0102.XSD"},
            [](File& file, const Text& name, const Text& schema, long version, long type) {
                KALV::FixedHeader header(name, schema, name, name, name, name, name, name, name, version,
                                         name, name, name, name, type);
                file.createHeader(header);
            })),
        method<Text, Text>(
            "XmlFile::setFixedHeaderItem", {"Notes", "value"},
            [](File& file, const Text& item, const Text& value) { file.setFixedHeaderItem(item, value); }),
        changing(method<Text, Text, long>("XmlFile::setFixedHeaderItems", {"text", "other"},
                                          [](File& file, const Text& text, const Text& other, long version) {
                                              file.setFixedHeaderItems(text, other, text, other, text, other,
                                                                       text, other, version, text, other,
                                                                       text, other);
                                          })),
        method<Text>("XmlFile::getFixedHeaderItem", {"Title"},
                     [](File& file, const Text& item) { file.getFixedHeaderItem(item); }),
        method<>("XmlFile::getFixedHeader", {}, [](File& file) { file.getFixedHeader(); }),
        method<long, Text, Text, Text, long>(
            "XmlFile::createFileName", {"TEST", "AUX_ORBIT", "20200101T000000_20200102T000000_0001"},
            [](File& file, long satellite, const Text& file_class, const Text& type, const Text& instance,
               long extension) { file.createFileName(satellite, file_class, type, instance, extension); }),
        method<Text>("XmlFile::getFileNameItems",
                     {"QK1_TEST_ORBIT_20200101T000000_20200102T000000_0000000001.EOF"},
                     [](File& file, const Text& name) {
                         Text copy = name;
                         file.getFileNameItems(copy);
                     }),
    };
}

std::string told(const Choice& choice)
{
    std::string text = ", argument kinds";
    for (const std::size_t kind : choice)
        text += " " + std::to_string(kind);
    return text;
}

std::string try_choice(const Subject& subject, const Choice& choice)
{
    World world;
    const std::string before = described_trees();
    const long status = subject.call(world, choice);
    const bool is_method = subject.name.rfind("XmlFile::", 0) == 0; // whose document is gone by now
    if (status < KH_ERR_LOCK || status > KH_WARN_HEADER_EXISTS)
        return "status " + std::to_string(status) + " is not in the table" + told(choice);
    if (status < KH_OK && !subject.may_change && !is_method && described_trees() != before)
        return "failed with " + std::to_string(status) + " and changed the document" + told(choice);
    return "";
}

std::vector<Subject> subjects()
{
    std::vector<Subject> all;
    for (const auto& some : {on_documents(), without_document(), special(), methods()})
        all.insert(all.end(), some.begin(), some.end());
    return all;
}

int try_one(const std::string& name, std::size_t point)
{
    for (const Subject& subject : subjects())
        if (subject.name == name)
            std::fprintf(stderr, "%s\n", try_choice(subject, pairs(subject.counts).at(point)).c_str());
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    const support::TemporaryFolder folder; // relative names lead into it
    if (chdir(folder.path("").c_str()) != 0)
        return EXIT_FAILURE;
    folder.file("source.xml", "<Source><Part>copied</Part></Source>");
    if (argc == 3)
        return try_one(argv[1], std::strtoul(argv[2], nullptr, 10));
    const Budget budget;
    Figure figure("arguments", budget);
    const std::vector<Subject> all = subjects();
    std::size_t left = all.size();
    std::set<std::string> names;
    for (const Subject& subject : all) {
        names.insert(subject.name);
        const std::vector<Choice> choices = pairs(subject.counts);
        try_points(figure, budget.share(left--), subject.name, choices.size(),
                   [&](std::size_t point) { return try_choice(subject, choices[point]); });
    }
    for (const std::string& name : missing_functions(names))
        figure.wrong("no subject is " + name);
    for (const std::string& name : missing_methods(methods_called_in("arguments.cc")))
        figure.wrong("no subject calls XmlFile::" + name);
    return figure.print();
}
