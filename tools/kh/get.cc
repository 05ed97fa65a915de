// kh get: values by path.
#include "files.h"
#include "wanted.h"

namespace tool {

namespace {

class Get : public Command {
public:
    Get()
        : Command(
              "get", "FILE [PATH[:TYPE]]...", 1, "print values by path",
              "Prints the values of elements and attributes, each on a line, as they stand in the file. "
              "A path names an element from the root, such as /Root/List/Item[2]/Value, and may end "
              "with an attribute, /Root/List/@count. \"[*]\" stands for each element of the name before "
              "it, and may occur several times; an element that lacks the rest of the path gives an empty "
              "line.\n\n"
              "With -p all arguments are files; without it, the arguments behind the first are paths. "
              "A TYPE behind the path reads the value as a number: \"i\" an integer, \"r\" a real; \"s\" is "
              "the text. With several files, each line begins with the name of its file and a tab.")
    {
        declare_wanted(*this, paths_, "the values to print; all arguments are then files");
        flag("-H,--with-path", with_path_, "begin each line with file, tab, path, tab");
        flag("-0,--null", null_, "end each value with a zero byte in place of the end of the line");
        output_.declare(*this);
        files_.declare(*this);
        example("kh get product.xml /Earth_Observation_File/Data_Block/List/@count",
                "the value of an attribute");
        example("kh get product.xml '/Earth_Observation_File/Data_Block/List/Item[*]/Height'",
                "all values of an array");
        example("kh get -p '/Earth_Observation_File/Data_Block/List/Item[2]/Orbit:i' --json product.xml "
                "other.xml",
                "an integer of each of two files, as JSON");
    }

    ExitCode run() override
    {
        std::vector<std::string> files = arguments();
        if (paths_.empty()) {
            paths_.assign(files.begin() + 1, files.end());
            files.resize(1);
        }
        wanted_ = parse_wanted(paths_);
        if (wanted_.empty())
            throw Failure(usage, "no path is given");
        files = expand_list(files);
        with_file_ = with_path_ || files.size() > 1;
        Output output(output_);
        if (with_file_ && with_path_)
            output.set_columns({{"file", Style::name}, {"path", Style::path}, {"value"}});
        else if (with_file_)
            output.set_columns({{"file", Style::name}, {"value"}});
        return for_each_file(files, files_, output,
                             [this](Document& document, Report& report) { return print(document, report); });
    }

private:
    struct Found {
        std::string path;
        Value value;
    };

    ExitCode print(Document& document, Report& report) const
    {
        std::vector<Found> all;
        std::vector<Failure> missing;
        for (const Wanted& wanted : wanted_) {
            document.check_path(wanted.path);
            const std::size_t before = all.size();
            bool exists = false;
            document.expand(document.absolute(wanted.path), [&](const std::string& path) {
                all.push_back({path, read_value(document, path, wanted.type)});
                exists = exists || all.back().value.exists();
            });
            if (exists)
                continue;
            all.resize(before);
            if (report.is_json())
                all.push_back({wanted.path, Value()});
            missing.push_back(document.failure(different, wanted.path + ": not found"));
        }
        if (report.is_json())
            print_json(all, report);
        else
            print_lines(all, report);
        for (const Failure& failure : missing)
            report.fail(failure);
        return done;
    }

    static void print_json(const std::vector<Found>& all, Report& report)
    {
        report.json().begin_object().member("file", report.file()).key("values").begin_array();
        for (const Found& found : all) {
            report.json().begin_short_object().member("path", found.path).key("value");
            found.value.write(report.json());
            report.json().end();
        }
        report.json().end().end();
    }

    void print_lines(const std::vector<Found>& all, Report& report) const
    {
        const char* end = null_ ? "\0" : "\n";
        for (const Found& found : all) {
            if (with_file_)
                report.text(escaped(report.file()) + '\t');
            if (with_path_)
                report.text(found.path + '\t');
            report.text(with_file_ && !null_ ? escaped(found.value.text()) : found.value.text());
            report.text({end, 1});
        }
    }

    OutputOptions output_;
    FileOptions files_;
    std::vector<std::string> paths_;
    bool with_path_ = false;
    bool null_ = false;
    bool with_file_ = false;
    std::vector<Wanted> wanted_;
};

} // namespace

void add_get(CommandList& commands)
{
    commands.push_back(std::make_unique<Get>());
}

} // namespace tool
