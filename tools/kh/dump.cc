// kh dump: a whole file as JSON, from which kh load makes the same file.
#include "files.h"

#include <kalv/node.h>

#include <cstdlib>

namespace tool {

namespace {

std::string doctype_of(Document& document)
{
    char* block = nullptr;
    long status = 0;
    kh_tree_get_doctype(document.fd(), &block, &status);
    const std::unique_ptr<char, decltype(&std::free)> text(block, std::free);
    if (!text)
        throw document.failure(cannot_read, status_text(status));
    return text.get();
}

/// Texts, and references between them, as items of an array.
void write_pieces(const Node& first, JsonWriter& json)
{
    for (Node piece = first; piece; piece = Node(piece.next)) {
        if (piece.kind == KH_NODE_REFERENCE)
            json.begin_short_object().member("reference", piece.name).end();
        else
            json.value(piece.content);
    }
}

void write_attributes(const Node& element, JsonWriter& json)
{
    json.begin_short_object();
    for (const Attribute& attribute : attributes_of(element)) {
        json.key(attribute.name);
        if (!attribute.pieces) {
            json.value(attribute.value);
            continue;
        }
        json.begin_array();
        write_pieces(Node(attribute.pieces), json);
        json.end();
    }
    json.end();
}

/// A node that is no element and no text.
void write_other(const Node& node, Document& document, JsonWriter& json)
{
    json.begin_short_object();
    switch (node.kind) {
    case KH_NODE_CDATA:
        json.member("cdata", node.content);
        break;
    case KH_NODE_REFERENCE:
        json.member("reference", node.name);
        break;
    case KH_NODE_COMMENT:
        json.member("comment", node.content);
        break;
    case KH_NODE_INSTRUCTION:
        json.member("instruction", node.name).member("data", node.content);
        break;
    default:
        json.member("doctype", doctype_of(document));
        break;
    }
    json.end();
}

bool holds_nothing_but_text(const Node& element)
{
    const Node child(element.first_child);
    return !child || (child.kind == KH_NODE_TEXT && !child.next);
}

void write_node(const Walker& walker, Document& document, JsonWriter& json)
{
    const Node& node = walker.node();
    if (node.is_element() && walker.entering()) {
        if (holds_nothing_but_text(node))
            json.begin_short_array();
        else
            json.begin_array();
        json.value(node.written_name());
        write_attributes(node, json);
    } else if (node.is_element()) {
        json.end();
    } else if (node.kind == KH_NODE_TEXT) {
        json.value(node.content);
    } else {
        write_other(node, document, json);
    }
}

class Dump : public Command {
public:
    Dump()
        : Command("dump", "FILE...", 1, "print whole files as JSON",
                  "Prints all of each file as JSON, from which kh load makes a file again. An element is an "
                  "array: its "
                  "name, an object with its attributes and namespace declarations, and then what it holds. A "
                  "text is a "
                  "text, blanks included; everything else is an object with one of the keys \"comment\", "
                  "\"cdata\", "
                  "\"reference\", \"instruction\" (and \"data\") and \"doctype\".")
    {
        flag("--json", output_.json, "accepted for the sake of order: the output is always JSON");
        files_.declare(*this);
        example("kh dump product.xml", "a file");
    }

    ExitCode run() override
    {
        output_.json = true;
        Output output(output_);
        return for_each_file(arguments(), files_, output, [](Document& document, Report& report) {
            dump(document, report);
            return done;
        });
    }

private:
    static void dump(Document& document, Report& report)
    {
        const kh_document description = document.description();
        report.json().begin_object().member("file", report.file()).key("document").begin_object();
        report.json().member("version", description.version);
        if (*description.encoding)
            report.json().member("encoding", description.encoding);
        if (description.standalone >= 0)
            report.json().member("standalone", description.standalone == 1 ? "yes" : "no");
        report.json().key("nodes").begin_array();
        for (Node node(description.first_node); node; node = Node(node.next)) {
            for (Walker walker(node.handle); walker.next();)
                write_node(walker, document, report.json());
        }
        report.json().end().end().end();
    }

    OutputOptions output_;
    FileOptions files_;
};

} // namespace

void add_dump(CommandList& commands)
{
    commands.push_back(std::make_unique<Dump>());
}

} // namespace tool
