#include "torture/workload.h"

#include "torture/contents.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <kalv/FileHandlingFunc.h>
#include <kalv/XmlFile.h>
#include <libxml/tree.h>
#include <memory>

namespace torture {

namespace {

const char* const rich = R"(<?xml version="1.0" encoding="UTF-8"?>
<?sheet type="plain"?>
<!DOCTYPE Root [
  <!ENTITY who "Murvantel">
  <!ENTITY both "&who; and &who;">
  <!ENTITY mixed "one <b>two</b> three">
  <!ENTITY % parameter "<!ENTITY late 'after all'>">
  %parameter;
  <!NOTATION gif SYSTEM "gif">
  <!ENTITY picture SYSTEM "picture.gif" NDATA gif>
  <!ELEMENT Item (#PCDATA)>
  <!ATTLIST Item id ID #IMPLIED kind (a|b) "a" fixed CDATA #FIXED "always" note CDATA "&who;">
]>
<!-- before -->
<Root xmlns="urn:default" xmlns:p="urn:p" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
      xsi:schemaLocation="urn:default some.xsd" version="1" p:version="2">
  <Title>A title</Title>
  <Number>42</Number>
  <Real>2.5</Real>
  <Empty/>
  <List count="3">
    <Item id="i1" value="1" real="1.5">10</Item>
    <Item id="i2" value="2" real="2.5" who="&both;">20</Item>
    <Item id="i3" value="3" real="3.5" kind="b">30</Item>
  </List>
  <p:Mixed p:a="1" b="&who; of &both;">text &who; <b>bold</b> &mixed; <![CDATA[<raw>]]> end<!-- c --><?do it?></p:Mixed>
  <Deep xmlns:q="urn:q"><q:Deeper xmlns:r="urn:r"><r:Deepest>bottom</r:Deepest></q:Deeper></Deep>
  <Picture ref="picture"/>
</Root>
)";

const char* const plain = R"(<?xml version="1.0"?>
<Source xmlns:s="urn:s" xmlns="urn:other">
  <s:Part s:key="k" xml:lang="en" id="i9"><Item note="n">copied</Item><!-- with this --><![CDATA[and that]]></s:Part>
  <Part>second</Part>
</Source>
)";

using support::Text;

/// An array of the library's.
template <class Entry>
struct Array {
    Entry* entries = nullptr;
    long count = 0;
    Array() = default;
    ~Array()
    {
        if constexpr (std::is_pointer_v<Entry>)
            std::for_each(entries, entries + count, free);
        free(entries);
    }
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;
};

template <class Entry>
Call& operator<<(Call& call, const Array<Entry>& array)
{
    for (long i = 0; i < array.count; ++i)
        call << array.entries[i];
    return call;
}

const Failure parsing = {{KH_ERR_MEMORY, KH_ERR_PARSE}, Leaves::nothing};
const Failure adding = {{KH_ERR_MEMORY, KH_ERR_CREATE_NODE, KH_ERR_ADD_SIBLING}, Leaves::nothing};
const Failure writing = {{KH_ERR_SAVE, KH_ERR_CREATE_NODE, KH_ERR_ADD_SIBLING}, Leaves::indentation};
const Failure copying = {{KH_ERR_MEMORY, KH_ERR_PARSE, KH_ERR_NOT_FOUND}, Leaves::nothing};
const Failure searching = {{KH_ERR_MEMORY, KH_ERR_VALUE_NOT_FOUND}, Leaves::nothing};
const Failure making_header = {{KH_ERR_MEMORY, KH_ERR_CREATE_NODE, KH_ERR_NOT_FOUND}, Leaves::remains};
const Failure setting_items = {{KH_ERR_MEMORY, KH_ERR_FORMAT, KH_ERR_NOT_FOUND}, Leaves::remains};
const Failure reading_item = {{KH_ERR_MEMORY, KH_ERR_READ_ITEM}, Leaves::nothing};

/// The life of one document.
class Life {
public:
    Life(Session& session, const std::string& file) : session_(session)
    {
        session_.step([&](Call& call) { call << (fd = call(kh_tree_init_parser, file.c_str())); }, parsing);
    }
    explicit Life(Session& session) : session_(session)
    {
        session_.step([&](Call& call) { call << (fd = call(kh_tree_create)); },
                      {{KH_ERR_MEMORY, KH_ERR_CREATE_DOCUMENT}, Leaves::nothing});
    }
    ~Life()
    {
        session_.step([&](Call& call) { call(kh_tree_cleanup_parser, &fd); });
    }
    Life(const Life&) = delete;
    Life& operator=(const Life&) = delete;

    /// A call on this document, with the descriptor before the arguments and the status word behind them.
    template <class Function, class... Arguments>
    void step(Function* function, const Failure& failure, Arguments... arguments)
    {
        session_.step([&](Call& call) { call(function, &fd, arguments...); }, failure);
    }

    void go_to(const char* path) { step(kh_tree_go_to_path_node, {}, path); }

    /// Values are set and nodes added by absolute paths, so that the step can be repeated.
    void set(const char* path, const char* value)
    {
        step(kh_tree_set_string_node_value, {}, path, value, "%s");
    }

    void write(const std::string& file)
    {
        session_.step([&](Call& call) { call << call(kh_tree_write, &fd, file.c_str()); }, writing);
    }

    xmlNode* root() const { return slot() ? slot()->root : nullptr; }
    xmlNode* first_node() const { return root() ? root()->children : nullptr; }
    xmlNode* current() const { return slot() ? slot()->current : nullptr; }

    const kh_document_slot* slot() const
    {
        return fd >= 0 && fd < KH_MAX_DOCUMENTS ? global_current_status[fd] : nullptr;
    }

    long fd = -1;

private:
    Session& session_;
};

void helpers(Session& session, const support::TemporaryFolder&)
{
    session.step([](Call& call) {
        Text copy;
        call(kh_strncpy, copy.out(), "text");
        call << copy.value;
    });
    session.step([](Call& call) {
        void* array = nullptr;
        call(KH_alloc_array, 10, 8, &array, "workload");
        call(KH_alloc_array, 1000, 8, &array, "workload");
        call << static_cast<long>(array != nullptr);
        free(array);
    });
    session.step([](Call& call) {
        char parts[8];
        char* tokens[8];
        long count = 0;
        call.plain(kh_strtoken, "/a//b/", "/", parts, tokens, &count);
        call << count << call(kh_string_to_integer, "12abc") << call(kh_string_to_real, "2.5e3");
        call << call.plain(KH_strcmp, "a", "a") << call.plain(kh_check_library_version);
        char text[KH_MESSAGE_SIZE];
        call << call.plain(KH_Get_lib_version_number) << call.plain(KH_Get_lib_version, text)
             << call.plain(kh_basic_error_msg, -29L, text);
        call << call.plain(KH_Get_compatibility_table);
    });
    session.step([](Call& call) {
        kh_error_record record;
        call.plain(kh_init_error, &record);
        call << call.plain(kh_set_error, -4L, &record);
        call.plain(kh_add_error_info, ". More", 6L, &record);
        call << call.plain(kh_handle_error, &record, -4L, 0L, ". Format %s and %.3f", "text", 1e300);
        call.plain(KH_handle_xml_error, static_cast<void*>(nullptr), "message %s\n", "text");
        call.plain(kh_verbose);
        call.plain(kh_silent);
        call << record.message;
    });
}

void product_names(Session& session, const support::TemporaryFolder&)
{
    session.step([](Call& call) {
        const long satellite = 110;
        const long extension = KH_EXTENSION_EOF;
        char name[65] = "";
        call << call(kh_create_filename, &satellite, "TEST", "AUX_ORBIT",
                     "20200101T000000_20200102T000000_0001", &extension, name);
        call << name;
    });
    session.step([](Call& call) {
        long satellite = 0;
        char file_class[5] = "";
        char file_type[11] = "";
        char instance[43] = "";
        const char* name = "QK1_TEST_ORBIT_20200101T000000_20200102T000000_0000000001.EOF";
        call << call(kh_read_filename_items, name, &satellite, file_class, file_type, instance);
        call << satellite << file_class << file_type << instance;
    });
    session.step([](Call& call) {
        call << call.plain(KH_Get_sat_id, "Grontaval")
             << call.plain(KH_Get_sat_id_capital_letters, "GRONTAVAL")
             << call.plain(KH_Get_file_extension_type, 112L);
    });
}

void moves(Session& session, const support::TemporaryFolder&, const std::string& file)
{
    Life document(session, file);
    long* fd = &document.fd;
    session.step([&](Call& call) { call << call.plain(KH_get_file_name, *fd); });
    document.step(kh_tree_rewind, {});
    session.step([&](Call& call) {
        call(kh_tree_rewind, fd);
        call(kh_tree_go_to_element_node, fd, "Item");
    });
    session.step([&](Call& call) {
        call(kh_tree_rewind, fd);
        call(kh_tree_go_to_next_element_node, fd);
    });
    session.step([&](Call& call) {
        call.plain(kh_tree_set_requested_tag, fd, "Deepest");
        if (document.slot() &&
            !document.slot()->requested_tag) // without memory no tag is left, which searches report
            call.status = KH_ERR_MEMORY;
    });
    session.step([&](Call& call) {
        call(kh_tree_go_to_element_node, fd, "Item");
        call << call.plain(kh_tree_get_next_element_node, fd, 1);
    });
    document.go_to("/Root/List/Item[2]/@id");
    session.step([&](Call& call) { call << call.plain(kh_tree_is_attribute, fd); });
    session.step([&](Call& call) {
        call << call.plain(kh_tree_get_next_node, document.current())
             << call.plain(kh_tree_get_parent_next_node, document.current())
             << call.plain(kh_tree_distance_from_root, fd, document.current())
             << call(kh_tree_go_to_parent, fd, document.current());
        long total = 0;
        long position = 0;
        call << call.plain(kh_tree_get_sibling_index, document.current(), &total, &position) << total
             << position;
        const xmlAttr* attribute = call.plain(kh_tree_go_to_attribute, document.current(), "@value");
        call << reinterpret_cast<const xmlNode*>(attribute);
    });
    session.step([&](Call& call) {
        call(kh_tree_rewind, fd);
        xmlNode* list = call.plain(kh_tree_go_to_child, fd, document.root(), "List", 0L);
        xmlNode* item = call.plain(kh_tree_go_to_child, fd, list, "Item", 1L);
        call << call.plain(kh_tree_go_to_next_sibling, fd, item, "Item");
    });
    session.step([&](Call& call) {
        call(kh_tree_chop_path, fd, "/Root/List/Item[*]");
        if (call.status != KH_OK)
            return;
        long index = 1;
        call << call(kh_tree_go_to_stack_array_node, fd, &index);
        call << call(kh_tree_go_to_stack_from_array_node, fd);
    });
    session.step([&](Call& call) {
        call(kh_tree_chop_path, fd, "/Root/Deep/Deeper");
        if (call.status == KH_OK)
            call << call(kh_tree_go_to_stack_node, fd);
    });
    document.go_to("/Root/List/Item[3]");
    session.step([&](Call& call) {
        char path[200] = "";
        call(kh_tree_get_path, fd, path);
        call << path;
    });
    document.go_to(("/Root" + repeated(40, "/List/..") + "/Deep").c_str());
    document.go_to("/Root/Missing");
    document.go_to("/Root/..");
}

void reads(Session& session, const support::TemporaryFolder&, const std::string& file)
{
    Life document(session, file);
    long* fd = &document.fd;
    session.step([&](Call& call) {
        Text name;
        call(kh_tree_get_current_element_name, fd, name.out());
        call << name.value;
    });
    document.go_to("/Root/Title");
    session.step([&](Call& call) {
        Text value;
        call(kh_tree_get_current_element_value, fd, value.out());
        call << value.value;
    });
    document.go_to("/Root/Empty");
    session.step([&](Call& call) {
        Text value;
        call(kh_tree_get_current_element_value, fd, value.out());
        call << value.value;
    });
    session.step([&](Call& call) {
        call(kh_tree_rewind, fd);
        call(kh_tree_chop_path, fd, "/Root/List/Item");
        if (call.status != KH_OK)
            return;
        Text value;
        call << call(kh_tree_read_next_element, fd, value.out());
        call << value.value;
    });
    session.step([&](Call& call) {
        call(kh_tree_rewind, fd);
        Text value;
        call(kh_tree_read_string_element_value, fd, "Deepest", value.out());
        call << value.value;
    });
    session.step([&](Call& call) {
        call(kh_tree_rewind, fd);
        long value = 0;
        call(kh_tree_read_integer_element_value, fd, "Number", &value);
        call << value;
    });
    session.step([&](Call& call) {
        call(kh_tree_rewind, fd);
        double value = 0;
        call(kh_tree_read_real_element_value, fd, "Real", &value);
        call << value;
    });
    for (const char* attribute : {"id", "kind", "note", "fixed", "who", "missing"})
        session.step([&](Call& call) {
            call(kh_tree_go_to_path_node, fd, "/Root/List/Item[2]");
            if (call.status != KH_OK)
                return;
            Text value;
            call(kh_tree_read_string_attribute, fd, "Item", attribute, value.out());
            call << value.value;
        });
    session.step([&](Call& call) {
        call(kh_tree_rewind, fd);
        Text value;
        call(kh_tree_read_string_attribute, fd, "Mixed", "b", value.out());
        call << value.value;
    });
    session.step([&](Call& call) {
        call(kh_tree_rewind, fd);
        long value = 0;
        call(kh_tree_read_integer_attribute, fd, "Item", "value", &value);
        call << value;
    });
    session.step([&](Call& call) {
        call(kh_tree_rewind, fd);
        double value = 0;
        call(kh_tree_read_real_attribute, fd, "Item", "real", &value);
        call << value;
    });
    for (const char* path : {"/Root/List/Item[2]", "/Root/List/Item[3]/@id", "/Root/Empty", "/Root/List"})
        session.step([&](Call& call) {
            Text value;
            call(kh_tree_path_read_string_node_value, fd, path, value.out());
            call << value.value;
        });
    session.step([&](Call& call) {
        long value = 0;
        call(kh_tree_path_read_integer_node_value, fd, "/Root/Number", &value);
        call << value;
    });
    session.step([&](Call& call) {
        double value = 0;
        call(kh_tree_path_read_real_node_value, fd, "/Root/Title", &value);
        call << value;
    });
    for (const char* place : {"/Root/Deep/Deeper/Deepest", "Mixed", "", "/Root/Missing"})
        session.step(
            [&](Call& call) {
                call(kh_tree_rewind, fd);
                // The function that frees them wants the arrays' pointers in blocks of their own.
                auto* prefixes = static_cast<char***>(calloc(1, sizeof(char**)));
                auto* uris = static_cast<char***>(calloc(1, sizeof(char**)));
                long count = 0;
                call(kh_tree_get_namespace, fd, place, &count, prefixes, uris);
                for (long i = 0; i < count; ++i)
                    call << (*prefixes)[i] << (*uris)[i];
                char** arrays[] = {*prefixes, *uris};
                call.plain(KH_free_memory_get_namespace, count, prefixes, uris);
                for (std::size_t i = 0; i < 2; ++i) {
                    if (!arrays[i])
                        free(i == 0 ? prefixes : uris);
                    free(arrays[i]);
                }
            },
            searching);
}

template <class Entry, class Read>
void read_array(Session& session, long* fd, Read* read, const char* what)
{
    session.step([&](Call& call) {
        Array<Entry> array;
        call(read, fd, what, &array.entries, &array.count);
        call << array;
    });
}

void arrays(Session& session, const support::TemporaryFolder& folder)
{
    Life document(session, folder.path("array.xml"));
    long* fd = &document.fd;
    read_array<char*>(session, fd, kh_tree_read_string_element_array, "x");
    read_array<long>(session, fd, kh_tree_read_integer_element_array, "x");
    read_array<double>(session, fd, kh_tree_read_real_element_array, "x");
    read_array<char*>(session, fd, kh_tree_path_read_string_node_array, "/r/x[*]");
    read_array<long>(session, fd, kh_tree_path_read_integer_node_array, "/r/x[*]/@n");
    read_array<double>(session, fd, kh_tree_path_read_real_node_array, "/r/x[*]");
    read_array<long>(session, fd, kh_tree_read_integer_element_array, "y");
    session.step(
        [&](Call& call) {
            call(kh_tree_rewind, fd);
            char path[100] = "";
            call(kh_tree_find_string_value_element, fd, "x", "9", path);
            call << path;
        },
        searching);
    session.step(
        [&](Call& call) {
            char path[100] = "";
            call(kh_tree_find_string_value_path, fd, "/r/x[*]", "11", path);
            call << path;
        },
        searching);
}

/// Reads and edits in turn, so that what the library remembers of a document is made, used and dropped.
void reads_between_edits(Session& session, const support::TemporaryFolder&, const std::string& file)
{
    Life document(session, file);
    long* fd = &document.fd;
    for (const char* value : {"5", "6", "7"}) {
        for (int i = 0; i < 2; ++i) {
            read_array<long>(session, fd, kh_tree_path_read_integer_node_array, "/r/x[*]");
            read_array<double>(session, fd, kh_tree_path_read_real_node_array, "/r/x[*]/@n");
            session.step([&](Call& call) {
                call(kh_tree_rewind, fd);
                Text text;
                call(kh_tree_read_string_element_value, fd, "y", text.out());
                call << text.value;
            });
            session.step([&](Call& call) {
                for (int index = 98; index <= 101; ++index) {
                    long number = 0;
                    const std::string path = "/r/x[" + std::to_string(index) + "]";
                    call(kh_tree_path_read_integer_node_value, fd, path.c_str(), &number);
                    if (call.status != KH_OK)
                        return;
                    call << number;
                }
            });
            session.step(
                [&](Call& call) {
                    char path[100] = "";
                    call(kh_tree_find_string_value_path, fd, "/r/x[*]", "11", path);
                    call << path;
                },
                searching);
        }
        read_array<char*>(session, fd, kh_tree_read_string_element_array, "x");
        document.set("/r/x[60]", value);
        document.step(kh_tree_add_next_sibling, adding, "/r/x[60]", "y");
        document.step(kh_tree_remove_node, {}, "/r/x[2]");
    }
}

void building(Session& session, const support::TemporaryFolder& folder)
{
    Life document(session);
    document.step(kh_tree_create_root, adding, "Root");
    document.step(kh_tree_add_child, adding, "/Root", "List");
    for (int i = 0; i < 3; ++i)
        document.step(kh_tree_add_child, adding, "/Root/List", "Item");
    document.step(kh_tree_add_next_sibling, adding, "/Root/List/Item[1]", "After");
    document.step(kh_tree_add_previous_sibling, adding, "/Root/List/Item[1]", "Before");
    document.step(kh_tree_add_child, adding, "/Root/List/After", "Below");
    document.step(kh_tree_add_attribute, {}, "/Root/List", "count");
    document.step(kh_tree_add_attribute, {}, "/Root/List", "count");
    document.step(kh_tree_add_attribute, {}, "/Root/List", "free:prefix");
    document.set("/Root/List/@count", "3");
    document.set("/Root/List/@new", "a < b & c");
    document.set("/Root/List/Item[1]", "AT&T &amp; &#65;&lt;");
    document.set("/Root/List/Item[1]", "another");
    document.set("/Root/List/Item[2]", repeated(600, "x").c_str());
    session.step([&](Call& call) {
        const long value = 42;
        call(kh_tree_set_integer_node_value, &document.fd, "/Root/List/Before", &value, "%04ld");
    });
    session.step([&](Call& call) {
        const double value = 2.5;
        call(kh_tree_set_real_node_value, &document.fd, "/Root/List/Below", &value, "%.3f");
    });
    session.step([&](Call& call) {
        const double value = 1e300;
        call(kh_tree_set_real_node_value, &document.fd, "/Root/List/After/Below", &value, "%.400f");
    });
    session.step([&](Call& call) {
        const memory::Inside inside;
        kh_tree_set_node_value(&document.fd, "/Root/List/Item[3]", "%s", &call.status, "variadic");
    });
    session.step(
        [&](Call& call) {
            xmlNode* added = xmlNewNode(nullptr, BAD_CAST "Beside");
            call(kh_tree_go_to_path_node, &document.fd, "/Root/List/Item[2]");
            if (call.status == KH_OK)
                call(kh_tree_add_sibling, &document.fd, document.current(), added, xmlAddNextSibling);
            if (call.status != KH_OK)
                xmlFreeNode(added);
        },
        adding);
    document.step(kh_tree_remove_node, {}, "/Root/List/Item[3]");
    document.step(kh_tree_remove_node, {}, "/Root/List/@new");
    session.step([&](Call& call) { call(kh_tree_traverse_and_format, &document.fd, document.root()); },
                 {{KH_ERR_CREATE_NODE, KH_ERR_ADD_SIBLING}, Leaves::indentation});
    document.write(folder.path("target.xml"));
    document.write("-");
    document.step(kh_tree_remove_node, {}, "/Root");
    document.step(kh_tree_create_root, adding, "Again");
    document.write(folder.path("target.xml"));
}

void editing(Session& session, const support::TemporaryFolder& folder, const std::string& file)
{
    Life document(session, file);
    document.set("/Root/Title", "by &who;, &both; & &unknown; &picture;");
    document.set("/Root/List/Item[1]/@id", "other");
    document.set("/Root/List/Item[2]/@note", "plain");
    document.set("/Root/Empty/@p:new", "prefixed");
    document.set("/Root/Empty/@undeclared:new", "prefixed");
    document.set("/Root/Empty/@xml:lang", "en");
    document.set("/Root/@xmlns", "urn:a&b");
    document.set("/Root/@xmlns:p", "urn:<p>");
    document.set("/Root/Empty/@id", "no identifier");
    document.step(kh_tree_add_attribute, {}, "/Root/List/Item[1]", "id");
    document.step(kh_tree_add_attribute, {}, "/Root/Empty", "id");
    document.step(kh_tree_add_attribute, {}, "/Root/List/Item[3]", "added");
    document.step(kh_tree_add_child, adding, "/Root/List", "Item");
    document.set("/Root/List/Item[4]/@id", "fresh");
    document.step(kh_tree_add_next_sibling, adding, "/Root/Mixed", "AfterMixed");
    document.step(kh_tree_add_previous_sibling, adding, "/Root/Mixed/b", "BeforeBold");
    session.step([&](Call& call) {
        call(kh_tree_set_string_node_value, &document.fd, "/Root/Mixed/b[0]", "first text", "%s");
    });
    document.step(kh_tree_remove_node, {}, "/Root/List/Item[1]/@id");
    document.step(kh_tree_remove_node, {}, "/Root/Deep/Deeper");
    document.write(folder.path("target.xml"));
}

void copying_nodes(Session& session, const support::TemporaryFolder& folder, const std::string& file)
{
    Life document(session, file);
    const std::string source = folder.path("plain.xml");
    const std::string& itself = file;
    const auto copy = [&](const char* path, const std::string& source_file, const char* from) {
        document.step(kh_copy_node, copying, path, source_file.c_str(), from);
    };
    copy("/Root/Empty", source, "/Source/Part");
    copy("/Root/Empty", source, "/Source");
    copy("/Root/Title", itself, "/Root/Mixed");
    copy("/Root/List", itself, "/Root/List/Item[1]");
    copy("/Root", itself, "/Root/Deep/Deeper/Deepest");
    document.write(folder.path("target.xml"));
    Life other(session, source);
    other.step(kh_copy_node, copying, "/Source", itself.c_str(), "/Root/Mixed");
    other.step(kh_copy_node, copying, "/Source", itself.c_str(), "/Root/List/Item[2]");
    other.write(folder.path("target.xml"));
}

void schemas(Session& session, const support::TemporaryFolder& folder)
{
    for (const char* name : {"rich.xml", "plain.xml", "bare.xml"}) {
        Life document(session, folder.path(name));
        for (const char* text : {"TARVEK_SCHEMAS/Some_0102.XSD", "Other_0304.XSD", "urn:a&b http://c<d"})
            for (long mode : {0, 1, 2, 0, 3})
                session.silent_step([&](Call& call) {
                    call(kh_tree_rewind, &document.fd);
                    call.plain(KH_Set_Schema, &document.fd, text, &mode);
                });
    }
    const std::string target = folder.file("target.xml", rich);
    session.watch(target);
    for (long mode : {0, 1, 2, 3})
        session.step(
            [&](Call& call) { call(kh_set_schema, target.c_str(), "TARVEK_SCHEMAS/Some_0102.XSD", &mode); },
            {{KH_ERR_PARSE, KH_ERR_SAVE, KH_ERR_MEMORY}, Leaves::indentation});
}

void encodings(Session& session, const support::TemporaryFolder& folder)
{
    const std::string target = folder.file("target.xml", "old");
    session.watch(target);
    for (const char* name : {"latin.xml", "wide.xml", "cyrillic.xml", "packed.xml", "large.xml.gz",
                             "ascii.xml", "headless.xml", "huge.xml"}) {
        Life document(session, folder.path(name));
        document.write(target);
    }
}

/// Single nodes, and the texts of any length.
void nodes(Session& session, const support::TemporaryFolder& folder, const std::string& file)
{
    Life document(session, file);
    session.step([&](Call& call) {
        kh_document description = {};
        Text doctype;
        call(kh_tree_describe, &document.fd, &description);
        if (call.status == KH_OK)
            call(kh_tree_get_doctype, &document.fd, doctype.out());
        call << doctype.value;
    });
    session.step([&](Call& call) {
        kh_node node = {};
        kh_attribute attribute = {};
        call << call.plain(kh_node_describe, document.root(), &node) << node.name;
        call << call.plain(kh_node_first_attribute, document.root(), &attribute) << attribute.name;
        call << call.plain(kh_node_next_attribute, &attribute) << attribute.name;
    });
    document.step(kh_tree_set_text, {}, "/Root/Title", repeated(300, "a & b < c ").c_str());
    document.step(kh_tree_set_text, {}, "/Root/List/@count", "a & b");
    document.step(kh_tree_set_text, {}, "/Root/Mixed", "all in one");
    document.step(kh_tree_set_text, {}, "/Root/List/Item[1]/@id", "i4");
    document.step(kh_tree_set_text, {}, "/Root/List/Item[2]/@id", "i2");
    document.step(kh_tree_set_text, {}, "/Root/List/Item[3]/@id", "i4");
    document.step(kh_tree_set_text, {}, "/Root/Title/@xml:id", "i5");
    document.step(kh_tree_remove_node, {}, "/Root/List/Item[2]/@id");
    document.step(kh_tree_remove_node, {}, "/Root/List");
    const Failure inserting = {{KH_ERR_CREATE_NODE, KH_ERR_MEMORY}, Leaves::nothing};
    for (const char* name : {"plain", "p:prefixed", "free:prefix", "xml:of_all"})
        session.step(
            [&](Call& call) {
                call << call(kh_tree_insert_node, &document.fd, document.root(), document.first_node(),
                             static_cast<long>(KH_NODE_ELEMENT), name);
            },
            inserting);
    session.step(
        [&](Call& call) {
            call << call(kh_tree_insert_node, &document.fd, document.root(), nullptr,
                         static_cast<long>(KH_NODE_TEXT), "a text & more");
        },
        inserting);
    session.step([&](Call& call) {
        call(kh_tree_go_to_node, &document.fd, document.first_node());
        if (call.status == KH_OK)
            call(kh_tree_delete_node, &document.fd, document.current());
    });
    const std::string target = folder.file("target.xml", "old");
    session.watch(target);
    session.step([&](Call& call) { call << call(kh_tree_save, &document.fd, target.c_str()); }, writing);
}

void memory_documents(Session& session, const support::TemporaryFolder&)
{
    const std::string text = plain;
    for (const std::string& bytes : {text, gzip(text), std::string("<r><x></r>"), utf16("<r>wide</r>")}) {
        long fd = -1;
        session.step(
            [&](Call& call) {
                call << (fd = call(kh_tree_init_memory, bytes.data(), static_cast<long>(bytes.size())));
            },
            parsing);
        session.step(
            [&](Call& call) {
                Text written;
                long size = 0;
                call << call(kh_tree_write_memory, &fd, written.out(), &size) << size;
                call << written.value;
            },
            writing);
        session.step([&](Call& call) {
            call.plain(KH_last_report, static_cast<char*>(nullptr), 0L);
            call(kh_tree_cleanup_parser, &fd);
        });
    }
}

void malformed(Session& session, const support::TemporaryFolder& folder)
{
    for (const char* name : {"broken.xml", "empty.xml", "missing.xml", "lying.xml", "bomb.xml"})
        Life(session, folder.path(name));
}

void table(Session& session, const support::TemporaryFolder& folder)
{
    const Life first(session, folder.path("plain.xml"));
    const Life second(session);
    Life third(session, folder.path("bare.xml"));
    third.write(folder.path("target.xml"));
    session.step([&](Call& call) { call.plain(kh_tree_cleanup_all_parser); });
}

void header(Session& session, const support::TemporaryFolder& folder)
{
    for (long type : {14, 31, 30}) {
        Life document(session);
        session.step(
            [&](Call& call) {
                long file_type = type;
                call(kh_tree_create_header, &document.fd, &file_type);
                call << file_type;
            },
            making_header);
        const long version = 7;
        document.step(kh_tree_set_fixed_header_items, setting_items, "name", "description", "notes",
                      "mission", "TEST", "AUX_ORBIT", "UTC=2020-01-01T00:00:00", "UTC=2020-01-02T00:00:00",
                      &version, "system", "creator", "1.0", "UTC=2020-01-03T00:00:00");
        document.step(kh_tree_set_fixed_header_item, setting_items, "Notes", "other & notes");
        document.step(kh_tree_set_fixed_header_item, setting_items, "File_Version", "12");
        for (const char* item : {"File_Name", "Creation_Date"})
            session.step(
                [&](Call& call) {
                    Text value;
                    call(kh_tree_get_fixed_header_item, &document.fd, item, value.out());
                    call << value.value;
                },
                reading_item);
        session.step(
            [&](Call& call) {
                char room[21] = "";
                char* value = room;
                call(kh_tree_get_fixed_header_item, &document.fd, "File_Version", &value);
                call << value;
            },
            reading_item);
        session.step([&](Call& call) {
            Text texts[12];
            long number = 0;
            call(kh_tree_get_fixed_header_items, &document.fd, texts[0].out(), texts[1].out(), texts[2].out(),
                 texts[3].out(), texts[4].out(), texts[5].out(), texts[6].out(), texts[7].out(), &number,
                 texts[8].out(), texts[9].out(), texts[10].out(), texts[11].out());
            call << number;
            for (const Text& text : texts)
                call << text.value;
        });
        document.write(folder.path("target.xml"));
    }
    Life document(session, folder.path("bare.xml"));
    session.step(
        [&](Call& call) { call(KH_tree_create_header_EOF, &document.fd, "bare", "Some_Header", 1L); },
        making_header);
    session.step([&](Call& call) { call(KH_tree_create_header_HDR, &document.fd, "bare", 3L); },
                 making_header);
}

/// Steps of the object interface, each from the root of a file's document.
class ObjectLife {
public:
    explicit ObjectLife(Session& session) : session_(session) {}
    ~ObjectLife()
    {
        step([&](Call&) { file.clean(); });
    }
    ObjectLife(const ObjectLife&) = delete;
    ObjectLife& operator=(const ObjectLife&) = delete;

    template <class Body>
    void step(Body body, const Failure& failure = {})
    {
        session_.step([&](Call& call) { from_root(call, body); }, failure);
    }

    template <class Body>
    void silent_step(Body body)
    {
        session_.silent_step([&](Call& call) { from_root(call, body); });
    }

    KALV::XmlFile file;

private:
    template <class Body>
    void from_root(Call& call, Body body)
    {
        call.object([&] {
            if (file.getId() >= 0 && global_current_status[file.getId()]->root)
                file.root();
            body(call);
        });
    }

    Session& session_;
};

template <class Value>
Call& operator<<(Call& call, const std::vector<Value>& values)
{
    for (const Value& value : values)
        call << value;
    return call;
}

void object_reads(Session& session, const support::TemporaryFolder& folder, const std::string& input)
{
    ObjectLife life(session);
    KALV::XmlFile& file = life.file;
    life.step(
        [&](Call& call) {
            file.read(input);
            call << file.getId();
        },
        parsing);
    life.step([&](Call& call) { call << file.getFileName(); });
    life.step(
        [&](Call& call) { call << file.next() << file.currentElementName() << file.currentPathName(); });
    life.step(
        [&](Call& call) { call << file.toElement("Item") << file.currentPathName() << file.nextSibling(); });
    life.step([&](Call& call) { call << file.toPath("/Root/List/Item[2]") << file.currentPathName(); });
    life.step([&](Call&) { file.toPath("/Root/Missing"); });
    life.step([&](Call& call) {
        call << file.getElementValueAsString("Item") << file.getElementValueAsInt("")
             << file.getElementValueAsReal("");
    });
    life.step([&](Call& call) {
        call << file.getAttributeValueAsString("Item", "who") << file.getAttributeValueAsInt("", "value")
             << file.getAttributeValueAsReal("", "real");
    });
    life.step([&](Call& call) {
        call << file.getPathValueAsString("/Root/Title") << file.getPathValueAsInt("/Root/Number")
             << file.getPathValueAsReal("/Root/Real");
    });
    life.step(
        [&](Call& call) {
            std::vector<std::string> values;
            file.getElementArrayAsString("Item", values);
            file.getPathArrayAsString("/Root/List/Item[*]/@id", values);
            file.getStringValuesFromList("/Root/List", "Item", values);
            call << values << file.findValueInPath("/Root/List/Item[*]", "20");
            file.root();
            call << file.findValueInElement("Item", "30");
        },
        searching);
    life.step([&](Call& call) {
        std::vector<long> values;
        file.getElementArrayAsInt("Item", values);
        file.getPathArrayAsInt("/Root/List/Item[*]/@value", values);
        call << values;
    });
    life.step([&](Call& call) {
        std::vector<double> values;
        file.getElementArrayAsReal("Item", values);
        const std::size_t count = values.size();
        file.getPathArrayAsReal("/Root/List/Item[*]/@real", values);
        if (values.size() == count) // the one read that fails without an exception
            throw std::bad_alloc();
        call << values;
    });
    life.step([&](Call& call) {
        KALV::XmlFile moved = std::move(file);
        file = std::move(moved);
        call << file.getId() << moved.getId();
    });
    life.step([&](Call&) { KALV::XmlFile(folder.path("plain.xml")); }, parsing);
    life.step(
        [&](Call& call) {
            KALV::XmlFile in_memory;
            in_memory.readMemory(plain);
            call << in_memory.toString();
        },
        {{KH_ERR_MEMORY, KH_ERR_PARSE, KH_ERR_SAVE}, Leaves::nothing});
    life.step([&](Call&) { KALV::XmlFile(folder.path("missing.xml")); }, parsing);
}

void object_edits(Session& session, const support::TemporaryFolder&, const std::string& input)
{
    const Failure create = {{KH_ERR_MEMORY, KH_ERR_CREATE_DOCUMENT}, Leaves::nothing};
    const Failure making = {adding.codes, Leaves::remains};
    ObjectLife life(session);
    KALV::XmlFile& file = life.file;
    life.step([&](Call& call) { call << file.create(); }, create);
    life.step([&](Call&) { file.createRoot("Root"); }, adding);
    life.step([&](Call&) { file.addChild("/Root", "List"); }, adding);
    life.step([&](Call&) { file.addChild("/Root/List", "Item"); }, adding);
    life.step([&](Call&) { file.addNext("/Root/List/Item", "After"); }, adding);
    life.step([&](Call&) { file.addPrevious("/Root/List/Item", "Before"); }, adding);
    life.step([&](Call&) { file.addAttribute("/Root/List", "count"); });
    life.step(
        [&](Call&) { file.setValue("/Root/List/Item", "a text that is longer than a short one", "%s"); });
    life.step([&](Call&) { file.setValue("/Root/List/After", 42); });
    life.step([&](Call&) { file.setValue("/Root/List/Before", 2.5, "%.3f"); });
    life.step([&](Call&) { file.copyNode("/Root/List", input, "/Root/Mixed"); }, copying);
    life.step([&](Call&) { file.removeNode("/Root/List/After"); });
    life.silent_step([&](Call&) { file.setSchema("TARVEK_SCHEMAS/Some_0102.XSD", true); });
    life.silent_step([&](Call&) { file.removeSchema(true); });
    life.step(
        [&](Call&) { file.addChild("/Root", "Valued", std::string("a text that is long enough"), "%s"); },
        making);
    life.step([&](Call&) { file.addNext("/Root/Valued", "Number", 42L, "%ld"); }, making);
    life.step([&](Call&) { file.addPrevious("/Root/Valued", "Real", 2.5); }, making);
    life.step([&](Call&) { file.addAttribute("/Root/Valued", "attribute", 1); }, making);
}

/// An object lets go of a document that it could not save; the descriptor still can release it.
void object_writes(Session& session, const support::TemporaryFolder& folder)
{
    const Failure rewriting = {
        {KH_ERR_MEMORY, KH_ERR_PARSE, KH_ERR_SAVE, KH_ERR_CREATE_NODE, KH_ERR_ADD_SIBLING},
        Leaves::indentation};
    const std::string target = folder.file("target.xml", rich);
    session.watch(target);
    for (const std::string& name : {std::string(), target})
        session.step(
            [&](Call& call) {
                long fd = -1;
                call.object([&] {
                    KALV::XmlFile file(target);
                    fd = file.getId();
                    name.empty() ? file.write() : file.write(name);
                });
                long released = KH_OK;
                const memory::Inside inside;
                kh_tree_cleanup_parser(&fd, &released);
            },
            rewriting);
}

void object_header(Session& session, const support::TemporaryFolder&)
{
    ObjectLife life(session);
    KALV::XmlFile& file = life.file;
    const Failure making = {{KH_ERR_MEMORY, KH_ERR_CREATE_NODE, KH_ERR_CREATE_DOCUMENT, KH_ERR_FORMAT},
                            Leaves::remains};
    life.step(
        [&](Call&) {
            KALV::FixedHeader items("a name that is long enough", "_NOSCHEMA_",
                                    "a description of some length", "notes", "mission", "TEST", "AUX_ORBIT",
                                    "UTC=2020-01-01T00:00:00", "UTC=2020-01-02T00:00:00", 7, "system",
                                    "creator", "1.0", "UTC=2020-01-03T00:00:00", 14);
            file.create();
            file.createHeader(items);
        },
        making);
    life.step([&](Call&) { file.createHeader(14); }, {{KH_ERR_MEMORY, KH_ERR_CREATE_NODE}, Leaves::nothing});
    life.step([&](Call&) { file.setFixedHeaderItem("Notes", "other notes of a certain length"); },
              setting_items);
    life.step(
        [&](Call&) {
            file.setFixedHeaderItems("a name that is long enough", "description", "notes", "mission", "TEST",
                                     "AUX_ORBIT", "UTC=2020-01-01T00:00:00", "UTC=2020-01-02T00:00:00", 8,
                                     "system", "creator", "1.0", "UTC=2020-01-03T00:00:00");
        },
        setting_items);
    life.step(
        [&](Call& call) {
            call << file.getFixedHeaderItem("File_Name") << file.getFixedHeaderItem("File_Version");
        },
        reading_item);
    life.step([&](Call& call) {
        const KALV::FixedHeader items = file.getFixedHeader();
        call << items.fileName << items.fileDescription << items.notes << items.mission << items.fileClass
             << items.fileType << items.validityStart << items.validityStop << items.fileVersion
             << items.system << items.creator << items.creatorVersion << items.creationDate;
    });
    life.step([&](Call& call) {
        std::string name =
            file.createFileName(110, "TEST", "AUX_ORBIT", "20200101T000000_20200102T000000_0001", 4);
        const KALV::FileNameItems items = file.getFileNameItems(name);
        call << name << items.satId << items.fileClass << items.fileType << items.instanceId;
    });
    life.step([&](Call& call) {
        KALV::FileHandlingFunc::setVerbose();
        KALV::FileHandlingFunc::setSilent();
        const long code = KH_ERR_SAVE;
        KALV::FileHandlingError error("XmlFile::method", 0, &code);
        const std::unique_ptr<KALV::FileHandlingError> clone(error.clone());
        error = *clone;
        KALV::KalvError copy(*clone);
        copy = KALV::KalvError(error);
        std::vector<long> codes;
        std::vector<std::string> messages;
        copy.getCodes(codes);
        copy.getMsg(messages);
        call << codes << messages << copy.what();
    });
}

} // namespace

void write_files(const support::TemporaryFolder& folder)
{
    const auto with_encoding = [](const char* encoding) {
        return "<?xml version='1.0' encoding='" + std::string(encoding) + "'?>" + std::strchr(rich, '\n');
    };
    const auto write = [&](const char* name, const std::string& text) { folder.file(name, text); };
    write("rich.xml", rich);
    write("rich_utf16.xml", utf16(with_encoding("UTF-16")));
    write("rich_cyrillic.xml", with_encoding("KOI8-R"));
    write("rich_ascii.xml", with_encoding("US-ASCII"));
    write("rich_latin.xml", with_encoding("ISO-8859-1"));
    write("rich.xml.gz", gzip(rich));
    write("plain.xml", plain);
    write("bare.xml", "<bare/>");
    const std::string array = "<r>" + repeated(120, "<x n='7'>9</x>") + "<x n='8'>11</x><y>no number</y></r>";
    write("array.xml", array);
    write("array.xml.gz", gzip(array));
    write("latin.xml", "<?xml version='1.0' encoding='ISO-8859-1'?><r a='\xe4'>\xf6\xfc</r>");
    write("wide.xml", utf16("<r>wide</r>"));
    write("cyrillic.xml", "<?xml version='1.0' encoding='KOI8-R'?><r a='\xc1'>\xc2\xc3</r>");
    write("ascii.xml", "<?xml version='1.0' encoding='US-ASCII'?><r a='&#228;'>&#8364;</r>");
    write("headless.xml", "<r>&lt;\xc3\xa4" + repeated(2000, "word ") + "</r>");
    write("huge.xml", "<r>" + repeated(300, "<d>") + repeated(300, "</d>") + "</r>");
    write("packed.xml", gzip(plain));
    write("large.xml.gz", gzip("<r>" + repeated(2000, "<x>value</x>") + "</r>"));
    write("broken.xml", "<r><x></r>");
    write("empty.xml", "");
    write("lying.xml", "<?xml version='1.0' encoding='UTF-8'?><r>\xff\xfe</r>");
    write("bomb.xml",
          "<!DOCTYPE r [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;'>]><r x='&b;'>&b;&missing;</r>");
}

std::vector<Scenario> scenarios()
{
    std::vector<Scenario> all = {
        {"helpers", helpers},
        {"product names", product_names},
        {"arrays", arrays},
        {"building", building},
        {"schemas", schemas},
        {"encodings", encodings},
        {"malformed files", malformed},
        {"table", table},
        {"header", header},
        {"memory documents", memory_documents},
        {"object writes", object_writes},
        {"object header", object_header},
    };
    // The same document as UTF-8, in encodings that libxml2 and the C library convert, and compressed.
    using OnFile = void (*)(Session&, const support::TemporaryFolder&, const std::string&);
    const std::vector<std::pair<const char*, OnFile>> on_a_file = {
        {"moves", moves},
        {"reads", reads},
        {"editing", editing},
        {"nodes", nodes},
        {"copying", copying_nodes},
        {"object reads", object_reads},
        {"object edits", object_edits},
    };
    const auto add = [&](const std::string& name, OnFile run, const char* file) {
        all.push_back(
            {name + " in " + file, [run, file](Session& session, const support::TemporaryFolder& folder) {
                 run(session, folder, folder.path(file));
             }});
    };
    for (const auto& [name, run] : on_a_file)
        for (const char* file : {"rich.xml", "rich_utf16.xml", "rich_latin.xml", "rich_ascii.xml",
                                 "rich_cyrillic.xml", "rich.xml.gz"})
            add(name, run, file);
    for (const char* file : {"array.xml", "array.xml.gz"})
        add("reads between edits", reads_between_edits, file);
    return all;
}

} // namespace torture
