// kh info: what a file is and holds.
#include "files.h"

#include <algorithm>
#include <filesystem>
#include <map>

namespace tool {

namespace {

constexpr const char* instance_uri = "http://www.w3.org/2001/XMLSchema-instance";

/// How many of what a document holds.
struct Counts {
    long elements = 0;
    long attributes = 0;
    long texts = 0;
    long comments = 0;
    long instructions = 0;
    long references = 0;
    long depth = 0; ///< of the deepest element; the root has 1
    std::map<std::string, long> names;

    void add(const Node& node, std::size_t level)
    {
        switch (node.kind) {
        case KH_NODE_ELEMENT:
            ++elements;
            depth = std::max(depth, static_cast<long>(level) + 1);
            ++names[node.written_name()];
            count_attributes(node);
            break;
        case KH_NODE_TEXT:
            texts += !node.is_blank();
            break;
        case KH_NODE_CDATA:
            ++texts;
            break;
        case KH_NODE_COMMENT:
            ++comments;
            break;
        case KH_NODE_INSTRUCTION:
            ++instructions;
            break;
        case KH_NODE_REFERENCE:
            ++references;
            break;
        default:
            break;
        }
    }

private:
    void count_attributes(const Node& element)
    {
        kh_attribute attribute;
        for (long found = kh_node_first_attribute(element.handle, &attribute); found;
             found = kh_node_next_attribute(&attribute))
            ++attributes;
    }
};

/// What kind of file it is: the header of a header-only file stands one level higher.
std::string kind_of(Document& document)
{
    document.xml().root();
    try {
        document.xml().toElement("Fixed_Header");
    } catch (const KALV::KalvError&) {
        return "XML";
    }
    const std::string path = document.cursor_path();
    const auto levels = std::count(path.begin(), path.end(), '/');
    return levels == 2 ? "header" : levels == 3 ? "product" : "XML";
}

struct Fact {
    const char* name;
    std::variant<std::string, long> value;
};

/// The facts of a file, in the order in which they are shown; empty ones are left out.
class Facts {
public:
    void add(const char* name, const std::string& value)
    {
        if (!value.empty())
            facts_.push_back({name, value});
    }
    void add(const char* name, long value) { facts_.push_back({name, value}); }
    const std::vector<Fact>& all() const { return facts_; }

private:
    std::vector<Fact> facts_;
};

Facts facts_of(Document& document, Counts& counts)
{
    const kh_document description = document.description();
    Facts facts;
    facts.add("kind", kind_of(document));
    std::error_code error;
    const auto size = std::filesystem::file_size(document.file(), error);
    if (!error)
        facts.add("bytes", static_cast<long>(size));
    facts.add("compressed", description.compressed ? "yes" : "");
    facts.add("version", description.version);
    facts.add("encoding", description.encoding);
    facts.add("standalone", description.standalone == 1 ? "yes" : description.standalone == 0 ? "no" : "");
    for (Node node(description.first_node); node; node = Node(node.next)) {
        if (node.kind == KH_NODE_DOCTYPE)
            facts.add("doctype", node.name);
        for (Walker walker(node.handle); walker.next();) {
            if (walker.entering())
                counts.add(walker.node(), walker.depth());
        }
    }
    const Node root = document.root();
    facts.add("root", root.written_name());
    std::string instance_prefix;
    for (const Attribute& attribute : attributes_of(root)) {
        const std::string declared = *root.prefix ? std::string("xmlns:") + root.prefix : "xmlns";
        if (attribute.name == declared)
            facts.add("namespace", attribute.value);
        if (attribute.value == instance_uri && attribute.name.rfind("xmlns:", 0) == 0)
            instance_prefix = attribute.name.substr(6) + ':';
        if (!instance_prefix.empty() && (attribute.name == instance_prefix + "schemaLocation" ||
                                         attribute.name == instance_prefix + "noNamespaceSchemaLocation"))
            facts.add("schema", attribute.value);
        if (attribute.name == "schemaVersion")
            facts.add("schema_version", attribute.value);
    }
    return facts;
}

class Info : public Command {
public:
    Info()
        : Command("info", "FILE...", 1, "tell what a file is and holds",
                  "Prints facts about each file, each on a line: its name, a tab, its value. The kind is "
                  "\"product\" "
                  "for a full product file, \"header\" for a header-only file and \"XML\" for any other. "
                  "With several "
                  "files each line begins with the file and a tab. The items of the header are shown by kh "
                  "header "
                  "show.")
    {
        flag("--names", names_, "count the elements of each name, too");
        output_.declare(*this);
        files_.declare(*this);
        example("kh info product.xml", "a file");
        example("kh info --json --names product.xml other.xml", "two files with all names, as JSON");
    }

    ExitCode run() override
    {
        const std::vector<std::string> files = expand_list(arguments());
        Output output(output_);
        output.set_columns(columns_of(files, {{"fact", Style::path}, {"value"}}));
        return for_each_file(files, files_, output,
                             [this](Document& document, Report& report) { return print(document, report); });
    }

private:
    ExitCode print(Document& document, Report& report) const
    {
        Counts counts;
        const Facts facts = facts_of(document, counts);
        const std::vector<std::pair<const char*, long>> numbers = {
            {"elements", counts.elements},
            {"attributes", counts.attributes},
            {"texts", counts.texts},
            {"comments", counts.comments},
            {"instructions", counts.instructions},
            {"references", counts.references},
            {"names", static_cast<long>(counts.names.size())},
            {"depth", counts.depth}};
        if (report.is_json())
            print_json(facts, numbers, counts, report);
        else
            print_lines(facts, numbers, counts, report);
        return done;
    }

    void print_json(const Facts& facts, const std::vector<std::pair<const char*, long>>& numbers,
                    const Counts& counts, Report& report) const
    {
        JsonWriter& json = report.json().begin_object().member("file", report.file());
        for (const Fact& fact : facts.all())
            std::visit([&](const auto& value) { json.member(fact.name, value); }, fact.value);
        json.key("counts").begin_object();
        for (const auto& [name, number] : numbers)
            json.member(name, number);
        json.end();
        if (names_) {
            json.key("elements").begin_object();
            for (const auto& [name, number] : counts.names)
                json.member(name, number);
            json.end();
        }
        json.end();
    }

    void print_lines(const Facts& facts, const std::vector<std::pair<const char*, long>>& numbers,
                     const Counts& counts, Report& report) const
    {
        for (const Fact& fact : facts.all()) {
            const auto* text = std::get_if<std::string>(&fact.value);
            report.row({fact.name, text ? *text : std::to_string(std::get<long>(fact.value))});
        }
        for (const auto& [name, number] : numbers)
            report.row({name, std::to_string(number)});
        if (!names_)
            return;
        for (const auto& [name, number] : counts.names)
            report.row({"element " + name, std::to_string(number)});
    }

    OutputOptions output_;
    FileOptions files_;
    bool names_ = false;
};

} // namespace

void add_info(CommandList& commands)
{
    commands.push_back(std::make_unique<Info>());
}

} // namespace tool
