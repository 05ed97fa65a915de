// kh header: the fixed header of product files.
#include "condition.h"
#include "edit.h"
#include "files.h"

#include <kalv/file_handling.h>

#include <algorithm>
#include <array>
#include <map>

namespace tool {

namespace {

constexpr const char* version_item = "File_Version";

/// The items, in the order of the document.
constexpr std::array<const char*, 14> item_names = {
    "File_Name", "File_Description", "Notes",           "Mission",      "File_Class",
    "File_Type", "Validity_Start",   "Validity_Stop",   version_item,   "KVSTD_Version",
    "System",    "Creator",          "Creator_Version", "Creation_Date"};

std::string known_item(const std::string& name)
{
    if (std::find(item_names.begin(), item_names.end(), name) == item_names.end())
        throw Failure(usage, "no item of the header: " + name);
    return name;
}

/// Where the header stands. Throws a Failure (different) where there is none.
std::string header_path(Document& document)
{
    long status = KH_OK;
    kh_tree_rewind(document.fd(), &status);
    if (kh_tree_go_to_element_node(document.fd(), "Fixed_Header", &status) != KH_OK)
        throw document.failure(different, "no header");
    return document.cursor_path();
}

/// One item; none where the header lacks it. The library finds an item by its name alone, so an element of
/// that name elsewhere in the file must not be taken for it.
std::optional<std::string> item(Document& document, const std::string& header, const std::string& name)
{
    std::string value;
    try {
        value = document.xml().getFixedHeaderItem(name);
    } catch (const KALV::KalvError& error) {
        std::vector<long> codes;
        error.getCodes(codes);
        if (codes.front() != KH_ERR_NO_VALUE)
            return std::nullopt;
    }
    return document.cursor_path().rfind(header + '/', 0) == 0 ? std::optional(value) : std::nullopt;
}

std::vector<Assignment> parse_items(const std::vector<std::string>& texts)
{
    std::vector<Assignment> items;
    for (const std::string& text : texts) {
        items.push_back(parse_assignment(text));
        known_item(items.back().path);
        if (!items.back().has_value)
            throw Failure(usage, "no value behind " + text + ": write ITEM=VALUE");
        const std::string& value = items.back().value;
        if (items.back().path == version_item &&
            (value.empty() || value.size() > 9 || value.find_first_not_of("0123456789") != std::string::npos))
            throw Failure(usage, "File_Version is a number: " + value);
    }
    return items;
}

std::vector<Change> set_items(Document& document, const std::vector<Assignment>& items)
{
    const std::string header = header_path(document);
    std::vector<Change> changes;
    for (const Assignment& assignment : items) {
        const std::string& name = assignment.path;
        const std::optional<std::string> before = item(document, header, name);
        if (!before)
            throw document.failure(different, "the header has no " + name);
        long status = KH_OK;
        kh_tree_set_fixed_header_item(document.fd(), name.c_str(), as_content(assignment.value).c_str(),
                                      &status);
        if (status == KH_ERR_FORMAT)
            throw document.failure(cannot_write, name + ": not a text that XML can hold");
        check_edit(document, name, status);
        const std::string path = document.cursor_path();
        const std::optional<std::string> after = item(document, header, name);
        if (after != before)
            changes.push_back({path, before, after});
    }
    return changes;
}

constexpr const char* items_text = "set an item, such as File_Class=OPER; repeated for others";

class HeaderShow : public Command {
public:
    HeaderShow()
        : Command(
              "header show", "FILE...", 1, "show the header of product files",
              "Prints the items of the fixed header, each on a line: its name, a tab, its value. With "
              "several "
              "files each line begins with the file and a tab. An item that the header lacks is left out; in "
              "JSON it is null.")
    {
        option("-i,--item", "ITEM", &items_, "only this item; repeated for others");
        output_.declare(*this);
        files_.declare(*this);
        example("kh header show product.xml", "all items");
        example("kh header show -i Validity_Start -i Validity_Stop product.xml other.xml",
                "the periods of two files");
    }

    ExitCode run() override
    {
        std::for_each(items_.begin(), items_.end(), known_item);
        if (items_.empty())
            items_.assign(item_names.begin(), item_names.end());
        const std::vector<std::string> files = expand_list(arguments());
        Output output(output_);
        output.set_columns(columns_of(files, {{"item", Style::path}, {"value"}}));
        return for_each_file(files, files_, output,
                             [this](Document& document, Report& report) { return print(document, report); });
    }

private:
    ExitCode print(Document& document, Report& report) const
    {
        const std::string header = header_path(document);
        std::vector<std::optional<std::string>> values;
        for (const std::string& name : items_)
            values.push_back(item(document, header, name));
        if (report.is_json()) {
            report.json().begin_object().member("file", report.file()).member("path", header);
            report.json().key("header").begin_object();
        }
        for (std::size_t i = 0; i < items_.size(); ++i) {
            if (report.is_json()) {
                report.json().key(items_[i]);
                write_json(items_[i], values[i], report.json());
            } else if (values[i]) {
                report.row({items_[i], *values[i]});
            }
        }
        if (report.is_json())
            report.json().end().end();
        return done;
    }

    static void write_json(const std::string& name, const std::optional<std::string>& value, JsonWriter& json)
    {
        if (name != version_item)
            json.value(value);
        else if (value && !value->empty())
            json.value(std::stol(*value));
        else
            json.null();
    }

    OutputOptions output_;
    FileOptions files_;
    std::vector<std::string> items_;
};

class HeaderSet : public Command {
public:
    HeaderSet()
        : Command("header set", "FILE...", 1, "set items of the header of product files",
                  "Sets items of the fixed header. The file is replaced when the new one is complete; "
                  "nothing else "
                  "in it changes. A value is taken as it is, also one with \"&\" or \"<\".")
    {
        option("-s,--set", "ITEM=VALUE", &items_, items_text);
        edit_.declare(*this);
        example("kh header set -s File_Class=TEST -s File_Version=2 product.xml", "two items of a file");
        example("kh header set -n -s Creator=kh product.xml other.xml", "what would change in two files");
    }

    ExitCode run() override
    {
        const std::vector<Assignment> items = parse_items(items_);
        if (items.empty())
            throw Failure(usage, "no item is given: use -s ITEM=VALUE");
        return edit_files(arguments(), edit_, [&](Document& document) { return set_items(document, items); });
    }

private:
    EditOptions edit_;
    std::vector<std::string> items_;
};

class HeaderCreate : public Command {
public:
    HeaderCreate()
        : Command("header create", "FILE...", 1, "give files the skeleton of a header",
                  "Adds the elements of the header. A file that does not exist is made; in one that does, "
                  "the header "
                  "becomes the first child of the root, which must have the name that product files of the "
                  "version "
                  "have.")
    {
        option("-t,--type", "TYPE", &type_,
               "klv or eof: a full product file; hdr: a file of the header alone")
            .choices = {"klv", "eof", "hdr"};
        option("-f,--format-version", "N", &version_,
               "format version; 3 has names of its own and the item KVSTD_Version");
        option("-s,--set", "ITEM=VALUE", &items_, items_text);
        edit_.declare(*this);
        example("kh header create --type eof --format-version 3 -s Creator=kh new.xml", "a new product file");
        example("kh header create --type hdr new.HDR", "a header-only file");
    }

    ExitCode run() override
    {
        const std::vector<Assignment> items = parse_items(items_);
        return edit_files(
            arguments(), edit_, [&](Document& document) { return create(document, items); },
            Document::is_created);
    }

private:
    std::vector<Change> create(Document& document, const std::vector<Assignment>& items) const
    {
        const std::map<std::string, long> types = {
            {"klv", KH_EXTENSION_KLV}, {"hdr", KH_EXTENSION_HDR}, {"eof", KH_EXTENSION_EOF}};
        long type = 10 * version_ + types.at(type_);
        long status = KH_OK;
        kh_tree_create_header(document.fd(), &type, &status);
        if (status == KH_WARN_HEADER_EXISTS)
            throw document.failure(cannot_write, "has a header already");
        if (status != KH_OK)
            throw document.failure(cannot_write,
                                   "the header cannot be made: the root has another name, or has elements "
                                   "where the header belongs");
        std::vector<Change> changes = {{header_path(document), std::nullopt, ""}};
        const std::vector<Change> values = set_items(document, items);
        changes.insert(changes.end(), values.begin(), values.end());
        return changes;
    }

    EditOptions edit_;
    std::string type_ = "eof";
    long version_ = 0;
    std::vector<std::string> items_;
};

} // namespace

void add_header(CommandList& commands)
{
    commands.push_back(std::make_unique<HeaderShow>());
    commands.push_back(std::make_unique<HeaderSet>());
    commands.push_back(std::make_unique<HeaderCreate>());
}

} // namespace tool
