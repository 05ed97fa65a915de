// kh schema: references to schemas, and the check against one.
#include "edit.h"

#include <kalv/file_handling.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <libxml/SAX2.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlschemas.h>
#include <mutex>
#include <zlib.h>

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

/// A fault of a document, and where it was noticed.
struct Fault {
    Place place;
    std::string text;
};

/// What libxml2 says of a file is collected, and nothing is printed.
struct Faults {
    std::string file;
    const xmlParserCtxt* parser = nullptr; ///< of the file, while it is parsed
    std::vector<Fault> all;

    static void take(void* self, xmlError* error)
    {
        auto& faults = *static_cast<Faults*>(self);
        Place place{faults.file, error->line, 0};
        if (faults.parser && faults.parser->input) {
            place.line = faults.parser->input->line;
            place.column = faults.parser->input->col;
        }
        std::string text = error->message ? error->message : "no reason is given";
        text.erase(text.find_last_not_of('\n') + 1);
        faults.all.push_back({place, text});
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
    Faults faults{file, nullptr, {}};
    const std::unique_ptr<xmlSchemaParserCtxt, FreeSchema> parser(xmlSchemaNewParserCtxt(file.c_str()));
    if (!parser)
        throw Failure(cannot_read, Place{file, 0, 0}, "memory ran out");
    xmlSchemaSetParserStructuredErrors(parser.get(), Faults::take, &faults);
    xmlSetStructuredErrorFunc(&faults, Faults::take);
    Schema schema(xmlSchemaParse(parser.get()));
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    if (!schema)
        throw faults.all.empty() ? Failure(cannot_read, Place{file, 0, 0}, "no schema")
                                 : Failure(cannot_read, faults.all.front().place, faults.all.front().text);
    return schema;
}

struct CloseCompressed {
    void operator()(gzFile_s* file) const { gzclose(file); }
};

struct FreeParser {
    void operator()(xmlParserCtxt* parser) const
    {
        xmlFreeDoc(parser->myDoc);
        xmlFreeParserCtxt(parser);
    }
};

/// The document keeps what it declares, such as entities, and nothing else: its tree stands in memory already.
void make_no_tree(xmlSAXHandler& handler)
{
    handler.startElementNs = nullptr;
    handler.endElementNs = nullptr;
    handler.startElement = nullptr;
    handler.endElement = nullptr;
    handler.characters = nullptr;
    handler.ignorableWhitespace = nullptr;
    handler.cdataBlock = nullptr;
    handler.reference = nullptr;
    handler.comment = nullptr;
    handler.processingInstruction = nullptr;
}

/// What another file holds is never read in: it would appear in messages.
void refuse_external_entities(xmlSAXHandler& handler)
{
    handler.getEntity = [](void* parser, const xmlChar* name) {
        xmlEntity* entity = xmlSAX2GetEntity(parser, name);
        return entity && entity->etype == XML_EXTERNAL_GENERAL_PARSED_ENTITY ? nullptr : entity;
    };
    handler.getParameterEntity = [](void* parser, const xmlChar* name) {
        xmlEntity* entity = xmlSAX2GetParameterEntity(parser, name);
        return entity && entity->etype == XML_EXTERNAL_PARAMETER_ENTITY ? nullptr : entity;
    };
}

bool has_doctype(Document& document)
{
    for (Node node(document.description().first_node); node; node = Node(node.next)) {
        if (node.kind == KH_NODE_DOCTYPE)
            return true;
    }
    return false;
}

/// Checks a file while it is parsed. With the tree, libxml2 would know no columns, resolve no entities, and go back
/// over all that stands before each fault.
std::vector<Fault> faults_of(Document& document, const Schema& schema)
{
    const std::unique_ptr<xmlSchemaValidCtxt, FreeSchema> validator(xmlSchemaNewValidCtxt(schema.get()));
    const std::unique_ptr<xmlParserCtxt, FreeParser> parser(xmlNewParserCtxt());
    if (!validator || !parser)
        throw document.failure(cannot_read, "memory ran out");
    const std::unique_ptr<gzFile_s, CloseCompressed> file(gzopen(document.file().c_str(), "rb"));
    if (!file)
        throw document.failure(cannot_read, std::strerror(errno));
    Faults faults{document.file(), parser.get(), {}};
    xmlSchemaSetValidStructuredErrors(validator.get(), Faults::take, &faults);
    make_no_tree(*parser->sax);
    refuse_external_entities(*parser->sax);
    xmlSchemaSAXPlugStruct* plug = xmlSchemaSAXPlug(validator.get(), &parser->sax, &parser->userData);
    if (!plug)
        throw document.failure(cannot_read, "cannot be checked");
    const auto read = [](void* source, char* buffer, int size) {
        return gzread(static_cast<gzFile_s*>(source), buffer, static_cast<unsigned>(size));
    };
    // libxml2's limits keep entities from growing without end; the library has lifted them for all other files.
    const int options = XML_PARSE_NOENT | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING |
                        (has_doctype(document) ? 0 : XML_PARSE_HUGE);
    xmlFreeDoc(
        xmlCtxtReadIO(parser.get(), read, nullptr, file.get(), document.file().c_str(), nullptr, options));
    xmlSchemaSAXUnplug(plug);
    if (parser->wellFormed == 0) {
        const std::string reason =
            parser->lastError.message ? parser->lastError.message : "it cannot be read";
        throw Failure(cannot_read, Place{document.file(), parser->lastError.line, parser->lastError.int2},
                      "cannot be checked: " + reason.substr(0, reason.find('\n')));
    }
    if (faults.all.empty() && xmlSchemaIsValid(validator.get()) != 1)
        faults.all.push_back({Place{document.file(), 0, 0}, "not valid"});
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
                if (fault.place.line > 0)
                    report.json().member("line", fault.place.line);
                if (fault.place.column > 0)
                    report.json().member("column", fault.place.column);
                report.json().member("text", fault.text).end();
            }
            report.json().end().end();
        }
        for (const Fault& fault : faults)
            report.fail(Failure(different, fault.place, fault.text));
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
