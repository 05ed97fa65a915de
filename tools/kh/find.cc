// kh find: elements and attributes by name and value.
#include "files.h"
#include "wanted.h"

#include <atomic>
#include <fnmatch.h>
#include <regex.h>

namespace tool {

namespace {

/// An extended regular expression, as grep -E has them.
class Expression {
public:
    explicit Expression(const std::string& text)
    {
        const int code = regcomp(&expression_, text.c_str(), REG_EXTENDED | REG_NOSUB);
        if (code == 0)
            return;
        char reason[200];
        regerror(code, &expression_, reason, sizeof reason);
        throw Failure(usage, "not a regular expression: " + text + ": " + reason);
    }
    ~Expression() { regfree(&expression_); }
    Expression(const Expression&) = delete;
    Expression& operator=(const Expression&) = delete;

    bool matches(const std::string& text) const
    {
        return regexec(&expression_, text.c_str(), 0, nullptr, 0) == 0;
    }

private:
    regex_t expression_;
};

class Find : public Command {
public:
    Find()
        : Command(
              "find", "FILE...", 1, "find elements by name and value",
              "Prints the elements that meet all the conditions, each on a line: path, tab, value. With "
              "several files each line begins with the file and a tab. An element that holds elements has no "
              "value, and meets no condition on one. The exit code is 0 where anything was found in any "
              "file, "
              "and else 1.")
    {
        option("--name", "PATTERN", &name_, "the name; \"*\", \"?\" and [...] as in file names");
        option("--value", "TEXT", &value_, "the whole value");
        option("--contains", "TEXT", &contains_, "a part of the value");
        option("--regex", "EXPRESSION", &expression_,
               "a regular expression that the value matches somewhere");
        option("--at", "PATH", &at_, "search at and below the elements of a path").completion =
            Completion::path;
        flag("-a,--attributes", attributes_, "find attributes, too");
        flag("-1,--first", first_, "find only the first of each file");
        output_.declare(*this);
        files_.declare(*this);
        example("kh find --name Orbit product.xml", "all elements of a name");
        example("kh find --name '*_Start' --contains 2026-01-01 product.xml other.xml",
                "by a part of name and value");
        example("kh find -a --name unit --value km product.xml", "attributes, too");
    }

    ExitCode run() override
    {
        if (!expression_.empty())
            regex_ = std::make_unique<Expression>(expression_);
        const std::vector<std::string> files = expand_list(arguments());
        Output output(output_);
        output.set_columns(columns_of(files, {{"path", Style::path}, {"value"}}));
        const ExitCode code =
            for_each_file(files, files_, output,
                          [this](Document& document, Report& report) { return find(document, report); });
        return code == done && !found_ ? different : code;
    }

private:
    struct Match {
        std::string path;
        long line;
        std::optional<std::string> value;
    };

    ExitCode find(Document& document, Report& report)
    {
        std::vector<Match> matches;
        const std::string at = at_.empty() ? '/' + std::string(document.root().name) : document.absolute(at_);
        document.check_path(at);
        document.expand(at, [&](const std::string& path) {
            if (document.go_to(path) && document.cursor().is_element())
                search(document.cursor().handle, document.cursor_path(), matches);
        });
        if (first_ && matches.size() > 1)
            matches.resize(1);
        found_ = found_ || !matches.empty();
        if (report.is_json()) {
            report.json().begin_object().member("file", report.file()).key("matches").begin_array();
            for (const Match& match : matches) {
                report.json().begin_short_object().member("path", match.path);
                if (match.line > 0)
                    report.json().member("line", match.line);
                report.json().member("value", match.value).end();
            }
            report.json().end().end();
            return done;
        }
        for (const Match& match : matches)
            report.row({match.path, match.value.value_or("")});
        return done;
    }

    void search(struct _xmlNode* top, const std::string& path, std::vector<Match>& matches) const
    {
        for (Walker walker(top, path); walker.next();) {
            if (first_ && !matches.empty())
                return;
            const Node& node = walker.node();
            if (!walker.entering() || !node.is_element())
                continue;
            if (meets_name(node.name)) {
                std::optional<std::string> value;
                if (!node.holds_elements())
                    value = node.value();
                if (meets_value(value))
                    matches.push_back({walker.path(), node.line, value});
            }
            if (attributes_)
                search_attributes(node, walker.path(), matches);
        }
    }

    void search_attributes(const Node& node, const std::string& path, std::vector<Match>& matches) const
    {
        for (const Attribute& attribute : attributes_of(node)) {
            if (meets_name(attribute.name) && meets_value(attribute.value))
                matches.push_back({path + "/@" + attribute.name, node.line, attribute.value});
        }
    }

    bool meets_name(const std::string& name) const
    {
        return name_.empty() || fnmatch(name_.c_str(), name.c_str(), 0) == 0;
    }

    bool meets_value(const std::optional<std::string>& value) const
    {
        if (!value_ && contains_.empty() && !regex_)
            return true;
        return value && (!value_ || value == value_) &&
               (contains_.empty() || value->find(contains_) != std::string::npos) &&
               (!regex_ || regex_->matches(*value));
    }

    OutputOptions output_;
    FileOptions files_;
    std::string name_;
    std::optional<std::string> value_;
    std::string contains_;
    std::string expression_;
    std::string at_;
    bool attributes_ = false;
    bool first_ = false;
    std::unique_ptr<Expression> regex_;
    std::atomic<bool> found_{false};
};

} // namespace

void add_find(CommandList& commands)
{
    commands.push_back(std::make_unique<Find>());
}

} // namespace tool
