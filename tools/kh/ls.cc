// kh ls: the elements of a file, as a tree or a table.
#include "files.h"
#include "wanted.h"

namespace tool {

namespace {

constexpr long no_limit = -1;

class List : public Command {
public:
    List()
        : Command(
              "ls", "FILE...", 1, "list elements, as a tree or as a table",
              "Without -p, lists the elements of each file with their values: on a terminal as a tree, else "
              "as "
              "lines of path, tab, value. With several files each line begins with the file and a tab.\n\n"
              "With -p, prints a table: a line for each element that --at names, the root where it is not "
              "given, "
              "and in it the values of the paths from there, such as Orbit:i,Height:r,@id. A path that "
              "begins "
              "with \"/\" starts at the root. The first column is the file; a value that is missing is "
              "\"-\". So a "
              "thousand files become a table with a line each.")
    {
        declare_wanted(*this, paths_, "the columns of a table; TYPE i is an integer, r a real, s the text");
        option("--at", "PATH", &at_, "begin at the elements of a path, such as '/Root/List/Item[*]'")
            .completion = Completion::path;
        option("-d,--depth", "N", &depth_, "list at most N levels below where it begins");
        flag("-a,--attributes", attributes_, "list attributes, too");
        flag("--tree", tree_, "show the tree, also in a pipe");
        flag("--table", table_, "show lines of path and value, also on a terminal");
        output_.declare(*this);
        files_.declare(*this);
        example("kh ls --depth 2 product.xml", "the elements of the first levels");
        example("kh ls -a --at '/Earth_Observation_File/Data_Block/List/Item[2]' product.xml",
                "an element and all below it, with attributes");
        example("kh ls -p '/Earth_Observation_File/Earth_Observation_Header/Fixed_Header/File_Version:i,"
                "Data_Block/List/@count:i' product.xml other.xml",
                "a table with a line for each file");
        example("kh ls --at '/Earth_Observation_File/Data_Block/List/Item[*]' -p @id,Orbit:i,Height:r "
                "product.xml",
                "a table with a line for each item");
    }

    ExitCode run() override
    {
        if (tree_ && table_)
            throw Failure(usage, "--tree and --table are two different things");
        if (depth_ < no_limit)
            throw Failure(usage, "a depth is not negative");
        wanted_ = parse_wanted(paths_);
        const std::vector<std::string> files = expand_list(arguments());
        many_ = files.size() > 1;
        Output output(output_);
        tree_ = tree_ || (output.on_terminal() && !table_);
        output.set_columns(columns(files));
        return for_each_file(files, files_, output,
                             [this](Document& document, Report& report) { return list(document, report); });
    }

private:
    std::vector<Column> columns(const std::vector<std::string>& files) const
    {
        if (wanted_.empty() && tree_)
            return {{"element", Style::path}, {"value"}};
        if (wanted_.empty())
            return columns_of(files, {{"path", Style::path}, {"value"}});
        std::vector<Column> columns = {{"file", Style::name}};
        for (const Wanted& wanted : wanted_)
            columns.push_back({wanted.title, Style::plain, wanted.type != Wanted::text});
        return columns;
    }

    ExitCode list(Document& document, Report& report) const
    {
        std::vector<std::string> starts;
        if (at_.empty()) {
            document.xml().root();
            starts.push_back(document.cursor_path());
        } else {
            document.check_path(at_);
            document.expand(document.absolute(at_), [&](const std::string& path) {
                if (document.go_to(path) && document.cursor().is_element())
                    starts.push_back(document.cursor_path());
            });
        }
        for (const Wanted& wanted : wanted_)
            document.check_path(wanted.path);
        if (wanted_.empty())
            list_elements(document, starts, report);
        else
            list_values(document, starts, report);
        if (starts.empty())
            report.fail(document.failure(different, at_ + ": not found"));
        return done;
    }

    void list_values(Document& document, const std::vector<std::string>& starts, Report& report) const
    {
        std::vector<std::vector<Value>> rows;
        for (const std::string& start : starts) {
            rows.emplace_back();
            for (const Wanted& wanted : wanted_)
                rows.back().push_back(
                    read_value(document, document.absolute(wanted.path, start), wanted.type));
        }
        if (!report.is_json()) {
            for (const std::vector<Value>& row : rows) {
                std::vector<std::string> cells = {report.file()};
                for (const Value& value : row)
                    cells.push_back(value.exists() ? value.text() : "-");
                report.line(cells);
            }
            return;
        }
        report.json().begin_object().member("file", report.file()).key("rows").begin_array();
        for (std::size_t i = 0; i < rows.size(); ++i) {
            report.json().begin_short_object().member("path", starts[i]).key("values").begin_object();
            for (std::size_t column = 0; column < wanted_.size(); ++column) {
                report.json().key(wanted_[column].title);
                rows[i][column].write(report.json());
            }
            report.json().end().end();
        }
        report.json().end().end();
    }

    void list_elements(Document& document, const std::vector<std::string>& starts, Report& report) const
    {
        if (report.is_json())
            report.json().begin_object().member("file", report.file()).key("elements").begin_array();
        else if (tree_ && many_)
            report.line({report.file()});
        for (const std::string& start : starts) {
            document.go_to(start);
            for (Walker walker(document.cursor().handle, start); walker.next();) {
                if (!walker.entering() || !walker.node().is_element())
                    continue;
                if (report.is_json())
                    write_json(walker, report.json());
                else if (tree_)
                    write_tree(walker, report);
                else
                    write_lines(walker, report);
                if (depth_ != no_limit && walker.depth() >= static_cast<std::size_t>(depth_))
                    walker.skip();
            }
        }
        if (report.is_json())
            report.json().end().end();
    }

    void write_json(const Walker& walker, JsonWriter& json) const
    {
        const Node& node = walker.node();
        json.begin_short_object().member("path", walker.path()).member("name", node.written_name());
        if (node.line > 0)
            json.member("line", node.line);
        if (!node.holds_elements())
            json.member("value", node.value());
        if (attributes_) {
            json.key("attributes").begin_object();
            for (const Attribute& attribute : attributes_of(node))
                json.member(attribute.name, attribute.value);
            json.end();
        }
        json.end();
    }

    void write_tree(const Walker& walker, Report& report) const
    {
        const Node& node = walker.node();
        std::string name = std::string(2 * (walker.depth() + many_), ' ') + node.written_name();
        if (attributes_) {
            for (const Attribute& attribute : attributes_of(node))
                name += " @" + attribute.name + '=' + attribute.value;
        }
        report.line({name, node.holds_elements() ? "" : node.value()});
    }

    void write_lines(const Walker& walker, Report& report) const
    {
        const Node& node = walker.node();
        report.row({walker.path(), node.holds_elements() ? "" : node.value()});
        if (!attributes_)
            return;
        for (const Attribute& attribute : attributes_of(node))
            report.row({walker.path() + "/@" + attribute.name, attribute.value});
    }

    OutputOptions output_;
    FileOptions files_;
    std::vector<std::string> paths_;
    std::string at_;
    long depth_ = no_limit;
    bool attributes_ = false;
    bool tree_ = false;
    bool table_ = false;
    std::vector<Wanted> wanted_;
    bool many_ = false;
};

} // namespace

void add_ls(CommandList& commands)
{
    commands.push_back(std::make_unique<List>());
}

} // namespace tool
