// kh schema: references to schemas, and the check against one.
#include "edit.h"

#include <kalv/file_handling.h>

#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <libxml/parserInternals.h>
#include <libxml/xmlschemas.h>
#include <mutex>

namespace tool {

namespace {

constexpr const char* instance_uri = "http://www.w3.org/2001/XMLSchema-instance";

/// Applies a mode of the library's to the root, and tells how its attributes changed.
std::vector<Change> change_references(Document& document, const std::string& schema, long mode)
{
    const std::vector<Attribute> before = attributes_of(document.root());
    document.xml().root();
    KH_Set_Schema(document.fd(), schema.c_str(), &mode);
    const Node root = document.root();
    const std::vector<Attribute> after = attributes_of(root);
    const auto value_in = [](const std::vector<Attribute>& attributes, const std::string& name) {
        for (const Attribute& attribute : attributes) {
            if (attribute.name == name)
                return std::optional(attribute.value);
        }
        return std::optional<std::string>();
    };
    std::vector<Change> changes;
    const auto compare = [&](const std::string& name) {
        const std::string path = '/' + std::string(root.name) + "/@" + name;
        if (value_in(before, name) != value_in(after, name))
            changes.push_back({path, value_in(before, name), value_in(after, name)});
    };
    for (const Attribute& attribute : before)
        compare(attribute.name);
    for (const Attribute& attribute : after) {
        if (!value_in(before, attribute.name))
            compare(attribute.name);
    }
    return changes;
}

class SchemaSet : public Command {
public:
    SchemaSet()
        : Command("schema set", "FILE...", 1, "set the schema references of files",
                  "Sets the schema location, the version and the default namespace of the root. A schema is "
                  "a file "
                  "name below the family's schema site, or a namespace, a blank and a location. The version "
                  "is read "
                  "from the end of the name: \"0102.XSD\" is 1.2.")
    {
        option("-s,--schema", "SCHEMA", &schema_, "the schema");
        flag("--no-version", no_version_, "set no version");
        edit_.declare(*this);
        example("kh schema set -s ORBIT_0102.XSD product.xml", "a schema of the family's site");
        example("kh schema set --no-version -s 'urn:orbits orbits.xsd' product.xml", "any other");
    }

    ExitCode run() override
    {
        if (schema_.empty())
            throw Failure(usage, "no schema is given: use -s SCHEMA");
        return edit_files(arguments(), edit_, [&](Document& document) {
            return change_references(document, schema_, no_version_ ? 1 : 0);
        });
    }

private:
    EditOptions edit_;
    std::string schema_;
    bool no_version_ = false;
};

class SchemaRemove : public Command {
public:
    SchemaRemove()
        : Command("schema remove", "FILE...", 1, "remove the schema references of files",
                  "Removes the schema location of the root. Where the root declares no prefix \"xsi\", and "
                  "with --all, "
                  "all its namespace declarations and attributes go.")
    {
        flag("--all", all_, "remove all declarations and attributes of the root");
        edit_.declare(*this);
        example("kh schema remove product.xml", "a file");
    }

    ExitCode run() override
    {
        return edit_files(arguments(), edit_,
                          [&](Document& document) { return change_references(document, "", all_ ? 2 : 3); });
    }

private:
    EditOptions edit_;
    bool all_ = false;
};

/// A fault of a document.
struct Fault {
    long line;
    std::string text;
};

/// What libxml2 says of one thing is collected, and nothing is printed.
struct Faults {
    std::vector<Fault> all;

    static void take(void* self, xmlError* error)
    {
        std::string text = error->message ? error->message : "no reason is given";
        text.erase(text.find_last_not_of('\n') + 1);
        const Node node(error->node && static_cast<xmlNode*>(error->node)->type == XML_ELEMENT_NODE
                            ? static_cast<xmlNode*>(error->node)
                            : nullptr);
        static_cast<Faults*>(self)->all.push_back({node ? node.line : error->line, text});
    }
};

struct FreeSchema {
    void operator()(xmlSchema* schema) const { xmlSchemaFree(schema); }
    void operator()(xmlSchemaParserCtxt* parser) const { xmlSchemaFreeParserCtxt(parser); }
    void operator()(xmlSchemaValidCtxt* validator) const { xmlSchemaFreeValidCtxt(validator); }
};
using Schema = std::unique_ptr<xmlSchema, FreeSchema>;

/// Reads a schema; what it includes is read from files and never from a network.
Schema read_schema(const std::string& file)
{
    static std::once_flag once;
    std::call_once(once, [] { xmlSetExternalEntityLoader(xmlNoNetExternalEntityLoader); });
    const std::string reason = reason_not_to_open(file);
    if (!reason.empty())
        throw Failure(cannot_read, Place{file, 0, 0}, reason);
    Faults faults;
    const std::unique_ptr<xmlSchemaParserCtxt, FreeSchema> parser(xmlSchemaNewParserCtxt(file.c_str()));
    if (!parser)
        throw Failure(cannot_read, Place{file, 0, 0}, "memory ran out");
    xmlSchemaSetParserStructuredErrors(parser.get(), Faults::take, &faults);
    xmlSetStructuredErrorFunc(&faults, Faults::take);
    Schema schema(xmlSchemaParse(parser.get()));
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    if (!schema)
        throw Failure(cannot_read, Place{file, faults.all.empty() ? 0 : faults.all.front().line, 0},
                      faults.all.empty() ? "no schema" : faults.all.front().text);
    return schema;
}

std::vector<Fault> faults_of(Document& document, const Schema& schema)
{
    const std::unique_ptr<xmlSchemaValidCtxt, FreeSchema> validator(xmlSchemaNewValidCtxt(schema.get()));
    if (!validator)
        throw document.failure(cannot_read, "memory ran out");
    Faults faults;
    xmlSchemaSetValidStructuredErrors(validator.get(), Faults::take, &faults);
    const int result = xmlSchemaValidateDoc(validator.get(), global_current_status[*document.fd()]->doc);
    if (result < 0)
        throw document.failure(cannot_read, "cannot be checked");
    if (result > 0 && faults.all.empty())
        faults.all.push_back({0, "not valid"});
    return faults.all;
}

class SchemaCheck : public Command {
public:
    SchemaCheck()
        : Command("schema check", "FILE...", 1, "check files against a schema",
                  "Says what is not valid in each file. Without -x, the schema is the file that the root's "
                  "schema "
                  "location names, beside the checked file; nothing is fetched from a network. The exit code "
                  "is 1 "
                  "where anything is not valid.")
    {
        option("-x,--xsd", "FILE", &xsd_, "the schema, in the language XSD").completion = Completion::file;
        output_.declare(*this);
        files_.declare(*this);
        example("kh schema check -x product.xsd product.xml other.xml", "two files");
    }

    ExitCode run() override
    {
        // With its last document the library cleans libxml2 up, and that would take the schema's types away.
        KALV::XmlFile keeper;
        keeper.create();
        const Schema schema = xsd_.empty() ? nullptr : read_schema(xsd_);
        Output output(output_);
        return for_each_file(arguments(), files_, output, [&](Document& document, Report& report) {
            return check(document, schema, report);
        });
    }

private:
    static ExitCode check(Document& document, const Schema& schema, Report& report)
    {
        const Schema own = schema ? nullptr : read_schema(location_in(document));
        const std::vector<Fault> faults = faults_of(document, schema ? schema : own);
        if (report.is_json()) {
            report.json().begin_object().member("file", report.file()).member("valid", faults.empty());
            report.json().key("faults").begin_array();
            for (const Fault& fault : faults) {
                report.json().begin_short_object();
                if (fault.line > 0)
                    report.json().member("line", fault.line);
                report.json().member("text", fault.text).end();
            }
            report.json().end().end();
        }
        for (const Fault& fault : faults)
            report.fail(Failure(different, Place{document.file(), fault.line, 0}, fault.text));
        return done;
    }

    /// The file that the root's schema location names last.
    static std::string location_in(const Document& document)
    {
        std::string prefix;
        std::string location;
        const std::vector<Attribute> attributes = attributes_of(document.root());
        for (const Attribute& attribute : attributes) {
            if (attribute.value == instance_uri && attribute.name.rfind("xmlns:", 0) == 0)
                prefix = attribute.name.substr(6) + ':';
        }
        for (const Attribute& attribute : attributes) {
            if (attribute.name == prefix + "schemaLocation" ||
                attribute.name == prefix + "noNamespaceSchemaLocation")
                location = attribute.value.substr(attribute.value.find_last_of(" \t\n") + 1);
        }
        if (location.empty())
            throw document.failure(cannot_read, "names no schema; use -x");
        return (std::filesystem::path(document.file()).parent_path() / location).string();
    }

    OutputOptions output_;
    FileOptions files_;
    std::string xsd_;
};

} // namespace

void add_schema(CommandList& commands)
{
    commands.push_back(std::make_unique<SchemaSet>());
    commands.push_back(std::make_unique<SchemaRemove>());
    commands.push_back(std::make_unique<SchemaCheck>());
}

} // namespace tool
