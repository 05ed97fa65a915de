// Files made to do harm: each is refused or read within a second of processor time and 64 MiB plus ten times
// the file, and nothing else is opened on the way, no file and no socket. Then the same for copying what was
// read into another document, and writing it.
#include "torture/calls.h"
#include "torture/contents.h"
#include "torture/harness.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <kalv/XmlFile.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace torture;

constexpr double most_seconds = 1;
constexpr std::size_t most_memory = 64U << 20;
constexpr std::size_t memory_of_a_byte = 10;

/// A hostile file: its bytes, or how to make it where it is none, and whether it is read or refused.
struct Hostile {
    std::string name;
    std::string bytes;
    long status;
    /// Makes the file; the bytes are written where this is empty.
    std::function<void(const std::string& file)> make = {};
    std::string file_name = "hostile.xml";
};

std::string with_subset(const std::string& declarations, const std::string& root)
{
    return "<!DOCTYPE r [" + declarations + "]>" + root;
}

std::string entity(const std::string& name, const std::string& value)
{
    return "<!ENTITY " + name + " \"" + value + "\">";
}

/// Ten of the one before, as many times as there are levels.
std::string multiplying_entities(int levels, const std::string& first)
{
    std::string declarations = entity("e0", first);
    for (int level = 1; level <= levels; ++level)
        declarations +=
            entity("e" + std::to_string(level), repeated(10, "&e" + std::to_string(level - 1) + ";"));
    return declarations;
}

std::string numbered(std::size_t count, const std::string& before, const std::string& behind)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += before + std::to_string(i) + behind;
    return text;
}

std::string noise(std::size_t size)
{
    std::string text;
    for (unsigned long state = 88172645463325252; text.size() < size; text += static_cast<char>(state)) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
    }
    return text;
}

std::string declared(const char* encoding, const std::string& root = "<r>\xe4</r>")
{
    return "<?xml version='1.0' encoding='" + std::string(encoding) + "'?>" + root;
}

std::string damaged(std::string text, std::size_t place)
{
    text.at(place) = static_cast<char>(text.at(place) ^ 0x55);
    return text;
}

std::string without_end(std::string text, std::size_t count)
{
    text.resize(text.size() - count);
    return text;
}

std::vector<Hostile> entities()
{
    const std::string many = repeated(10000, "&a;");
    const std::string long_entity = entity("a", std::string(100000, 'a'));
    return {
        {"entities that multiply in a text", with_subset(multiplying_entities(9, "lol"), "<r>&e9;</r>"),
         KH_ERR_PARSE},
        {"entities that multiply in an attribute",
         with_subset(multiplying_entities(9, "lol"), "<r a='&e9;'/>"), KH_ERR_PARSE},
        {"entities that multiply elements", with_subset(multiplying_entities(6, "<b/>"), "<r>&e6;</r>"),
         KH_ERR_PARSE},
        {"a long entity many times in a text", with_subset(long_entity, "<r>" + many + "</r>"), KH_OK},
        {"a long entity many times in an attribute", with_subset(long_entity, "<r a='" + many + "'/>"),
         KH_OK},
        {"an entity of itself", with_subset(entity("a", "&a;"), "<r>&a;</r>"), KH_ERR_PARSE},
        {"an entity of itself in an attribute", with_subset(entity("a", "&a;"), "<r b='&a;'/>"),
         KH_ERR_PARSE},
        {"two entities of each other", with_subset(entity("a", "&b;") + entity("b", "&a;"), "<r>&a;</r>"),
         KH_ERR_PARSE},
        {"entities of each other in a default",
         with_subset(entity("a", "&b;") + entity("b", "&a;") + "<!ATTLIST r x CDATA '&a;'>", "<r/>"),
         KH_ERR_PARSE},
        {"parameter entities that multiply",
         with_subset("<!ENTITY % a '<!ENTITY x \"y\">'><!ENTITY % b '%a;%a;'>" + repeated(1000, "%b;"),
                     "<r/>"),
         KH_ERR_PARSE},
        {"a parameter entity of itself", with_subset("<!ENTITY % a '&#37;a;'>%a;", "<r/>"), KH_ERR_PARSE},
        {"entities one in the other",
         with_subset(entity("a0", "x") + numbered(10000, "<!ENTITY b", " 'y'>"),
                     "<r>" + numbered(10000, "&b", ";") + "</r>"),
         KH_OK},
        {"an entity with an open tag", with_subset(entity("a", "<b>"), "<r>&a;</b></r>"), KH_ERR_PARSE},
        {"an unparsed entity in a text",
         with_subset("<!NOTATION n SYSTEM 'n'><!ENTITY a SYSTEM 'a' NDATA n>", "<r>&a;</r>"), KH_ERR_PARSE},
        {"an external entity of a file", with_subset("<!ENTITY a SYSTEM 'file:///etc/passwd'>", "<r>&a;</r>"),
         KH_OK},
        {"an external entity of a neighbour", with_subset("<!ENTITY a SYSTEM 'neighbour.xml'>", "<r>&a;</r>"),
         KH_OK},
        {"an external entity of a host",
         with_subset("<!ENTITY a SYSTEM 'http://127.0.0.1:9/'>", "<r>&a;</r>"), KH_OK},
        {"an external parameter entity", with_subset("<!ENTITY % a SYSTEM 'http://127.0.0.1:9/'>%a;", "<r/>"),
         KH_OK},
        {"an external subset of a host", "<!DOCTYPE r SYSTEM 'http://127.0.0.1:9/r.dtd'><r/>", KH_OK},
        {"an external subset of a file", "<!DOCTYPE r PUBLIC '-//X' '/etc/passwd'><r>&a;</r>", KH_OK},
        {"an inclusion", "<r xmlns:i='http://www.w3.org/2001/XInclude'><i:include href='/etc/passwd'/></r>",
         KH_OK},
        {"a style sheet", "<?xml-stylesheet href='http://127.0.0.1:9/s'?><r/>", KH_OK},
        {"a schema of a host",
         "<r xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
         "xsi:noNamespaceSchemaLocation='http://127.0.0.1:9/s'/>",
         KH_OK},
        {"a catalog", "<?oasis-xml-catalog catalog='http://127.0.0.1:9/c'?><!DOCTYPE r SYSTEM 'r.dtd'><r/>",
         KH_OK},
        {"default attributes that multiply",
         with_subset("<!ATTLIST a " + numbered(300, "a", " CDATA 'v' ") + ">",
                     "<r>" + repeated(3000, "<a/>") + "</r>"),
         KH_OK},
        {"a long default attribute many times",
         with_subset("<!ATTLIST a x CDATA '" + std::string(100000, 'v') + "'>",
                     "<r>" + repeated(3000, "<a/>") + "</r>"),
         KH_OK},
    };
}

std::vector<Hostile> sizes()
{
    constexpr std::size_t million = 1000000;
    constexpr std::size_t many = 200000; ///< more tags of few bytes take more than ten times their file
    return {
        {"many levels", repeated(many, "<a>") + repeated(many, "</a>\n"), KH_OK},
        {"many levels without an end", repeated(many, "<a>"), KH_ERR_PARSE},
        {"levels with namespaces", repeated(100000, "<a xmlns='u'>") + repeated(100000, "</a>\n"), KH_OK},
        {"levels beside an entity",
         with_subset(entity("a", "b"), repeated(100000, "<a>") + repeated(100000, "</a>")), KH_ERR_PARSE},
        {"levels in an entity",
         with_subset(entity("a", repeated(10000, "<a>") + repeated(10000, "</a>")), "<r>&a;</r>"),
         KH_ERR_PARSE},
        {"levels of a content model",
         with_subset("<!ELEMENT r " + repeated(100000, "(") + "a" + repeated(100000, ")") + ">", "<r/>"),
         KH_ERR_PARSE},
        {"a long content model", with_subset("<!ELEMENT r (a" + repeated(100000, ",a") + ")>", "<r/>"),
         KH_OK},
        {"many siblings", "<r>" + repeated(many, "<a/>") + "</r>", KH_OK},
        {"a long text", "<r>" + std::string(20 * million, 'x') + "</r>", KH_OK},
        {"a long text beside an entity",
         with_subset(entity("a", "b"), "<r>" + std::string(20 * million, 'x') + "</r>"), KH_ERR_PARSE},
        {"a long attribute", "<r a='" + std::string(20 * million, 'x') + "'/>", KH_OK},
        {"a long name", "<" + std::string(5 * million, 'x') + "/>", KH_OK},
        {"a long prefix", "<" + std::string(million, 'x') + ":r/>", KH_OK},
        {"a long comment", "<r><!--" + std::string(20 * million, 'x') + "--></r>", KH_OK},
        {"a long section", "<r><![CDATA[" + std::string(20 * million, '<') + "]]></r>", KH_OK},
        {"a long instruction", "<r><?p " + std::string(20 * million, 'x') + "?></r>", KH_OK},
        {"a long subset without an end", "<!DOCTYPE r [" + std::string(20 * million, ' '), KH_ERR_PARSE},
        {"texts and sections", "<r>" + repeated(100000, "x<![CDATA[y]]>") + "</r>", KH_OK},
        {"many instructions", repeated(200000, "<?p?>") + "<r/>", KH_OK},
        {"many attributes", "<r " + numbered(5000, "a", "='' ") + "/>", KH_OK},
        {"many namespaces", "<r " + numbered(5000, "xmlns:n", "='u' ") + numbered(5000, "n", ":a='' ") + "/>",
         KH_OK},
        {"many identifiers",
         with_subset("<!ATTLIST a i ID #IMPLIED>", "<r>" + numbered(100000, "<a i='i", "'/>") + "</r>"),
         KH_OK},
        {"the same identifier many times",
         with_subset("<!ATTLIST a i ID #IMPLIED>", "<r>" + repeated(100000, "<a i='i'/>") + "</r>"), KH_OK},
        {"many names", "<r>" + numbered(100000, "<n", "/>") + "</r>", KH_OK},
        {"many references", "<r>" + repeated(500000, "&#228;") + "</r>", KH_OK},
        {"a sparse file of many gigabytes", "", KH_ERR_PARSE,
         [](const std::string& file) {
             std::ofstream(file).put('<');
             if (truncate(file.c_str(), 100L << 30) != 0)
                 std::abort();
         }},
    };
}

std::vector<Hostile> compressions()
{
    const std::string packed = gzip("<r>" + repeated(10000, "<a>text</a>") + "</r>");
    return {
        {"a gzip bomb in a text", gzip_bomb("<r>", 1UL << 30, "</r>"), KH_ERR_PARSE},
        {"a gzip bomb in front", gzip_bomb("", 1UL << 30, "<r/>"), KH_ERR_PARSE},
        {"a gzip bomb in a tag", gzip_bomb("<r ", 1UL << 30, "/>"), KH_ERR_PARSE},
        {"many members of gzip", repeated(100000, gzip("")) + gzip("<r/>"), KH_OK},
        {"gzip in gzip", gzip(gzip("<r/>")), KH_ERR_PARSE},
        {"gzip cut short", without_end(packed, 20), KH_ERR_PARSE},
        {"gzip without its sum", without_end(packed, 8), KH_ERR_PARSE},
        {"damaged gzip", damaged(packed, packed.size() / 2), KH_ERR_PARSE},
        {"gzip with a wrong sum", damaged(packed, packed.size() - 6), KH_ERR_PARSE},
        {"gzip and something behind", packed + "more", KH_OK},
        {"the mark of gzip alone", "\x1f\x8b", KH_ERR_PARSE},
        {"a head of gzip without an end", "\x1f\x8b\x08\x08" + std::string(100000, 'n'), KH_ERR_PARSE},
    };
}

std::vector<Hostile> encodings()
{
    return {
        {"not UTF-8", "<r>\xe4</r>", KH_ERR_PARSE},
        {"not the declared UTF-8", declared("UTF-8"), KH_ERR_PARSE},
        {"not the declared ASCII", declared("US-ASCII"), KH_ERR_PARSE},
        {"ASCII that is declared as UTF-16", declared("UTF-16", "<r/>"), KH_ERR_PARSE},
        {"UTF-16 that is declared as UTF-8", utf16(declared("UTF-8", "<r/>")), KH_OK},
        {"UTF-16 cut in a character", without_end(utf16("<r/>"), 1), KH_ERR_PARSE},
        {"UTF-32", std::string("<\0\0\0r\0\0\0/\0\0\0>\0\0\0", 16), KH_ERR_PARSE},
        {"an unknown encoding", declared("x-unknown"), KH_ERR_PARSE},
        {"a long name of an encoding", declared(std::string(1000000, 'e').c_str()), KH_ERR_PARSE},
        {"a path as encoding", declared("../../../../tmp/x"), KH_ERR_PARSE},
        {"IBM037 that is ASCII", declared("IBM037"), KH_ERR_PARSE},
        {"UTF-7", declared("UTF-7", "<r>+AOQ-</r>"), KH_OK},
        {"an overlong character", "<r>\xc0\xbc</r>", KH_ERR_PARSE},
        {"half of a pair", "<r>\xed\xa0\x80</r>", KH_ERR_PARSE},
        {"a character that is too large", "<r>\xf4\x90\x80\x80</r>", KH_ERR_PARSE},
        {"a zero byte in a text", std::string("<r>a\0b</r>", 10), KH_ERR_PARSE},
        {"a zero byte in a name", std::string("<r\0/>", 5), KH_ERR_PARSE},
        {"references to no character", "<r>&#0;&#x110000;</r>", KH_ERR_PARSE},
        {"a reference that overflows", "<r>&#99999999999999999999999;</r>", KH_ERR_PARSE},
        {"noise", noise(1000000), KH_ERR_PARSE},
        {"noise in an element", "<r>" + noise(1000000) + "</r>", KH_ERR_PARSE},
    };
}

std::vector<Hostile> forms()
{
    return {
        {"an empty file", "", KH_ERR_PARSE},
        {"blanks", std::string(1000000, ' '), KH_ERR_PARSE},
        {"a mark alone", "\xef\xbb\xbf", KH_ERR_PARSE},
        {"a bracket", "<", KH_ERR_PARSE},
        {"an attribute twice", "<r a='' a=''/>", KH_ERR_PARSE},
        {"two roots", "<r/><r/>", KH_ERR_PARSE},
        {"an undeclared prefix", "<a:b:c d:e:f=''/>", KH_OK},
        {"another version", "<?xml version='9.9'?><r/>", KH_ERR_PARSE},
        {"a comment without an end", "<r><!-- " + std::string(1000000, '-'), KH_ERR_PARSE},
        {"brackets", std::string(1000000, '<'), KH_ERR_PARSE},
        {"ampersands", "<r>" + std::string(1000000, '&') + "</r>", KH_ERR_PARSE},
        {"a folder", "", KH_ERR_PARSE, [](const std::string& file) { mkdir(file.c_str(), 0755); }},
        {"a link to itself", "", KH_ERR_PARSE,
         [](const std::string& file) {
             if (symlink(file.c_str(), file.c_str()) != 0)
                 std::abort();
         }},
        {"a device without an end", "", KH_ERR_PARSE,
         [](const std::string& file) {
             if (symlink("/dev/zero", file.c_str()) != 0)
                 std::abort();
         }},
        {"no file", "", KH_ERR_PARSE, [](const std::string&) {}},
        {"a name with a line end", "<r/>", KH_OK, {}, "a\nb.xml"},
        {"a name like a URI", "<r/>", KH_OK, {}, "a%20b.xml"},
        {"a name with a number sign", "<r/>", KH_OK, {}, "a#b?c.xml"},
        {"a name that is not UTF-8", "<r/>", KH_OK, {}, "\xff\xfe.xml"},
        {"a name of a format", "<r/>", KH_OK, {}, "%s%n%s%n.xml"},
        {"a name of 255 bytes", "<r/>", KH_OK, {}, std::string(255, 'n')},
        {"a name that is too long", "", KH_ERR_PARSE, [](const std::string&) {}, std::string(5000, 'n')},
    };
}

/// Peak of the memory that this process holds, in bytes, and the memory that it holds now.
std::size_t memory_of_process(const char* which)
{
    std::ifstream stream("/proc/self/status");
    for (std::string line; std::getline(stream, line);)
        if (line.rfind(which, 0) == 0)
            return std::strtoul(line.c_str() + std::strlen(which), nullptr, 10) * 1024;
    return 0;
}

double seconds_of_process()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Measures a body in this process. \return what it needed too much of
template <class Body>
std::string measured(std::size_t file_size, Body body)
{
    std::ofstream("/proc/self/clear_refs") << 5; // the peak begins anew
    const std::size_t memory_before = memory_of_process("VmRSS:");
    const double seconds_before = seconds_of_process();
    body();
    const double seconds = seconds_of_process() - seconds_before;
    const std::size_t peak = memory_of_process("VmHWM:");
    const std::size_t memory = peak - std::min(memory_before, peak);
    std::string complaint;
    if (seconds > most_seconds)
        complaint += "took " + std::to_string(seconds) + " s; ";
    if (memory > most_memory + memory_of_a_byte * file_size)
        complaint += "took " + std::to_string(memory >> 20) + " MiB; ";
    return complaint;
}

/// Reads all that there is by the functions that walk.
void read_everything(long fd)
{
    long status = KH_OK;
    kh_tree_rewind(&fd, &status);
    for (; status == KH_OK; kh_tree_go_to_next_element_node(&fd, &status)) {
        long ignored = KH_OK;
        support::Text name;
        support::Text value;
        kh_tree_get_current_element_name(&fd, name.out(), &ignored);
        kh_tree_get_current_element_value(&fd, value.out(), &ignored);
        support::Text attribute;
        kh_tree_read_string_attribute(&fd, name.value, "a", attribute.out(), &ignored);
    }
    char** values = nullptr;
    long count = 0;
    kh_tree_rewind(&fd, &status);
    kh_tree_read_string_element_array(&fd, "a", &values, &count, &status);
    for (long i = 0; i < count; ++i)
        std::free(values[i]);
    std::free(values);
}

/// Only the files whose names are given may have been opened.
std::string opened_others(const std::vector<calls::Made>& made, const std::string& file)
{
    for (const calls::Made& call : made) {
        const bool allowed = call.file == file || call.file.rfind("/proc/self/", 0) == 0;
        if ((call.name == "open" && !allowed) || call.name == "socket" || call.name == "connect")
            return "made the call " + call.name + " " + call.file + "; ";
    }
    return "";
}

std::size_t size_of(const std::string& file)
{
    struct stat status = {};
    return stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode)
               ? static_cast<std::size_t>(status.st_blocks) * 512
               : 0;
}

/// A hostile file in a folder of its own.
class Victim {
public:
    explicit Victim(const Hostile& hostile) : hostile_(hostile), file_(folder_.path(hostile.file_name))
    {
        folder_.file("neighbour.xml", "<neighbour/>");
        if (hostile.make)
            hostile.make(file_);
        else
            folder_.file(hostile.file_name, hostile.bytes);
    }

    std::string read() const
    {
        long status = KH_OK;
        std::vector<calls::Made> made;
        std::string complaint = measured(size_of(file_), [&] {
            made = calls::made_by([&] {
                long fd = kh_tree_init_parser(file_.c_str(), &status);
                read_everything(fd);
                kh_tree_cleanup_parser(&fd, nullptr);
            });
        });
        complaint += opened_others(made, file_);
        if (status != hostile_.status)
            complaint += "has status " + std::to_string(status);
        return complaint;
    }

    /// Copies the root into a document without entities, and writes it; what is written can be read.
    std::string copy() const
    {
        long written = KH_OK;
        long copied = KH_OK;
        long again = KH_OK;
        const std::string target = folder_.path("target.xml");
        std::string complaint = measured(size_of(file_), [&] {
            long other = kh_tree_create(nullptr);
            kh_tree_create_root(&other, "copies", nullptr);
            kh_copy_node(&other, "/copies", file_.c_str(), ".", &copied);
            kh_tree_write(&other, target.c_str(), &written);
            kh_tree_cleanup_parser(&other, nullptr);
        });
        long fd = kh_tree_init_parser(target.c_str(), &again);
        kh_tree_cleanup_parser(&fd, nullptr);
        // Entities may stand for more than a copy takes.
        if (copied != hostile_.status && copied != KH_ERR_MEMORY)
            complaint += "is copied with status " + std::to_string(copied);
        if (written != KH_OK || again != KH_OK)
            complaint += "is not written and read again";
        return complaint;
    }

private:
    const Hostile& hostile_;
    support::TemporaryFolder folder_;
    std::string file_;
};

/// A pipe whose writer comes late: its reader waits, and nobody else does.
std::string try_pipe(const std::string& bytes, long expected)
{
    const support::TemporaryFolder folder;
    const std::string pipe = folder.path("pipe.xml");
    const std::string file = folder.file("file.xml", "<r/>");
    mkfifo(pipe.c_str(), 0600);
    long status = 1;
    std::thread reader([&] {
        long fd = kh_tree_init_parser(pipe.c_str(), &status);
        kh_tree_cleanup_parser(&fd, nullptr);
    });
    long other = KH_OK;
    for (int i = 0; i < 100; ++i) {
        long fd = kh_tree_init_parser(file.c_str(), &other);
        kh_tree_cleanup_parser(&fd, nullptr);
    }
    {
        std::ofstream writer(pipe); // waits for the reader
        writer << bytes;
    }
    reader.join();
    return other != KH_OK       ? "others cannot open files meanwhile"
           : status != expected ? "has status " + std::to_string(status)
                                : "";
}

} // namespace

int main()
{
    const Budget budget;
    Figure figure("hostile files", budget);
    for (const auto& make : {entities, sizes, compressions, encodings, forms}) {
        const std::vector<Hostile> files = make();
        for (const Hostile& hostile : files) {
            const Victim victim(hostile);
            // Each in a process of its own, whose memory is not that of the one before.
            try_points(figure, budget.share(1), hostile.name, 1, [&](std::size_t) { return victim.read(); });
            try_points(figure, budget.share(1), hostile.name + ", copied", 1,
                       [&](std::size_t) { return victim.copy(); });
        }
    }
    try_points(figure, budget.share(1), "a named pipe", 2, [&](std::size_t point) {
        return point == 0 ? try_pipe("<r/>", KH_OK) : try_pipe("", KH_ERR_PARSE);
    });
    return figure.print();
}
