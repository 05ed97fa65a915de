// kh diff: two files by structure and value.
#include "files.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace tool {

namespace {

struct Difference {
    enum Kind { added, removed, changed, renamed, reordered } kind;
    std::string path;
    std::optional<std::string> before;
    std::optional<std::string> after;
};

const char* name_of(Difference::Kind kind)
{
    switch (kind) {
    case Difference::added:
        return "added";
    case Difference::removed:
        return "removed";
    case Difference::changed:
        return "changed";
    case Difference::renamed:
        return "renamed";
    case Difference::reordered:
        return "reordered";
    }
    return "";
}

std::vector<std::string> segments_of(const std::string& path)
{
    std::vector<std::string> segments;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        if (end > begin)
            segments.push_back(path.substr(begin, end - begin));
        begin = end + 1;
    }
    return segments;
}

/// What is not compared: everything at and below a path, or of a name.
class Ignored {
public:
    explicit Ignored(const std::vector<std::string>& texts)
    {
        for (const std::string& text : texts)
            patterns_.push_back({text.front() == '/', segments_of(text)});
    }

    bool holds(const std::string& path) const
    {
        if (patterns_.empty())
            return false;
        const std::vector<std::string> segments = segments_of(path);
        return std::any_of(patterns_.begin(), patterns_.end(),
                           [&](const Pattern& pattern) { return matches(pattern, segments); });
    }

private:
    struct Pattern {
        bool from_root;
        std::vector<std::string> segments;
    };

    /// A path is matched from the root, and anything else at the end.
    static bool matches(const Pattern& pattern, const std::vector<std::string>& segments)
    {
        if (segments.size() < pattern.segments.size())
            return false;
        const std::size_t first = pattern.from_root ? 0 : segments.size() - pattern.segments.size();
        for (std::size_t i = 0; i < pattern.segments.size(); ++i) {
            if (!matches(pattern.segments[i], segments[first + i]))
                return false;
        }
        return true;
    }

    /// A segment without an index, or with "[*]", matches any index.
    static bool matches(const std::string& pattern, const std::string& segment)
    {
        const std::size_t index = pattern.find('[');
        const bool any = index == std::string::npos || pattern.compare(index, 3, "[*]") == 0;
        if (!any)
            return pattern == segment || pattern == segment + "[1]";
        return pattern.substr(0, index) == segment.substr(0, segment.find('['));
    }

    std::vector<Pattern> patterns_;
};

/// When two values count as the same.
struct Equality {
    double tolerance = 0;
    double relative = 0;
    bool trims = false;

    bool holds(const std::string& one, const std::string& other) const
    {
        if (one == other)
            return true;
        const std::string_view a = trimmed(one);
        const std::string_view b = trimmed(other);
        if (trims && a == b)
            return true;
        double x = 0;
        double y = 0;
        if ((tolerance <= 0 && relative <= 0) || !is_number(a, x) || !is_number(b, y))
            return false;
        return std::fabs(x - y) <= std::max(tolerance, relative * std::max(std::fabs(x), std::fabs(y)));
    }

private:
    static std::string_view trimmed(std::string_view text)
    {
        constexpr const char* blanks = " \t\r\n";
        const std::size_t first = std::min(text.find_first_not_of(blanks), text.size());
        return text.substr(first, text.find_last_not_of(blanks) + 1 - first);
    }

    static bool is_number(std::string_view text, double& number)
    {
        if (!text.empty() && text.front() == '+')
            text.remove_prefix(1);
        const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
        return result.ec == std::errc() && result.ptr == text.data() + text.size() && !text.empty();
    }
};

/// The children of an element by name, in their order.
struct Children {
    std::unordered_map<std::string_view, std::vector<Node>> by_name;
    std::vector<Node> all;

    explicit Children(const Node& parent)
    {
        for (Node child(parent.first_child); child; child = Node(child.next)) {
            if (!child.is_element())
                continue;
            all.push_back(child);
            by_name[child.name].push_back(child);
        }
    }
    std::size_t count(const char* name) const
    {
        const auto found = by_name.find(name);
        return found == by_name.end() ? 0 : found->second.size();
    }
};

/// Compares element with element: the n-th child of a name with the n-th child of that name. Without recursion.
class Comparison {
public:
    Comparison(const Equality& equality, const Ignored& ignored) : equality_(equality), ignored_(ignored) {}

    std::vector<Difference> compare(const Node& before, const Node& after)
    {
        const std::string path = '/' + std::string(before.name);
        if (before.written_name() != after.written_name())
            add({Difference::renamed, path, before.written_name(), after.written_name()});
        tasks_.push_back({before, after, path});
        while (!tasks_.empty()) {
            const Task task = std::move(tasks_.back());
            tasks_.pop_back();
            if (task.before && task.after)
                compare_elements(task);
            else
                add({task.after ? Difference::added : Difference::removed, task.path, value_of(task.before),
                     value_of(task.after)});
        }
        return std::move(differences_);
    }

private:
    /// Two elements to compare, or one that stands in one file alone.
    struct Task {
        Node before;
        Node after;
        std::string path;
    };

    static std::optional<std::string> value_of(const Node& node)
    {
        if (!node)
            return std::nullopt;
        return node.is_element() && node.holds_elements() ? "" : node.value();
    }

    void add(const Difference& difference)
    {
        if (!ignored_.holds(difference.path))
            differences_.push_back(difference);
    }

    void compare_values(const std::string& path, const std::optional<std::string>& before,
                        const std::optional<std::string>& after)
    {
        if (before && after && !equality_.holds(*before, *after))
            add({Difference::changed, path, before, after});
        else if (!before || !after)
            add({before ? Difference::removed : Difference::added, path, before, after});
    }

    /// The value; in an element that holds elements, the texts between them without the indentation.
    static std::string text_of(const Node& element)
    {
        if (!element.holds_elements())
            return element.value();
        std::string text;
        for (Node child(element.first_child); child; child = Node(child.next)) {
            if (child.is_value() && !child.is_blank())
                text += child.kind == KH_NODE_REFERENCE ? std::string("&") + child.name + ';' : child.content;
        }
        return text;
    }

    void compare_elements(const Task& task)
    {
        if (ignored_.holds(task.path))
            return;
        compare_attributes(task);
        compare_values(task.path, text_of(task.before), text_of(task.after));
        const Children before(task.before);
        const Children after(task.after);
        compare_order(task.path, before, after);
        std::vector<Task> children;
        std::unordered_map<std::string_view, std::size_t> met;
        for (const Node& child : before.all) {
            const std::size_t number = met[child.name]++;
            const auto others = after.by_name.find(child.name);
            const bool has_other = others != after.by_name.end() && number < others->second.size();
            const Node other = has_other ? others->second[number] : Node();
            const std::string path = path_of(task.path, child, number, before, after);
            if (other && child.written_name() != other.written_name())
                add({Difference::renamed, path, child.written_name(), other.written_name()});
            children.push_back({child, other, path});
        }
        met.clear();
        for (const Node& child : after.all) {
            const std::size_t number = met[child.name]++;
            if (number >= before.count(child.name))
                children.push_back({Node(), child, path_of(task.path, child, number, before, after)});
        }
        tasks_.insert(tasks_.end(), children.rbegin(), children.rend());
    }

    static std::string path_of(const std::string& parent, const Node& child, std::size_t number,
                               const Children& before, const Children& after)
    {
        std::string path = parent;
        path.append(1, '/').append(child.name);
        if (std::max(before.count(child.name), after.count(child.name)) > 1)
            path.append(1, '[').append(std::to_string(number + 1)).append(1, ']');
        return path;
    }

    void compare_attributes(const Task& task)
    {
        const std::vector<Attribute> before = attributes_of(task.before);
        const std::vector<Attribute> after = attributes_of(task.after);
        const auto value_in = [](const std::vector<Attribute>& attributes, const std::string& name) {
            const auto found =
                std::find_if(attributes.begin(), attributes.end(),
                             [&](const Attribute& attribute) { return attribute.name == name; });
            return found == attributes.end() ? std::nullopt : std::optional(found->value);
        };
        for (const Attribute& attribute : before)
            compare_values(task.path + "/@" + attribute.name, attribute.value,
                           value_in(after, attribute.name));
        for (const Attribute& attribute : after) {
            if (!value_in(before, attribute.name))
                add({Difference::added, task.path + "/@" + attribute.name, std::nullopt, attribute.value});
        }
    }

    /// Tells where children that both have follow each other in another order.
    void compare_order(const std::string& path, const Children& before, const Children& after)
    {
        const std::vector<const char*> one = shared_names(before, after);
        const std::vector<const char*> other = shared_names(after, before);
        for (std::size_t i = 0; i < std::min(one.size(), other.size()); ++i) {
            if (std::string_view(one[i]) != other[i]) {
                add({Difference::reordered, path, one[i], other[i]});
                return;
            }
        }
    }

    static std::vector<const char*> shared_names(const Children& children, const Children& others)
    {
        std::vector<const char*> names;
        std::unordered_map<std::string_view, std::size_t> met;
        for (const Node& child : children.all) {
            if (met[child.name]++ < others.count(child.name))
                names.push_back(child.name);
        }
        return names;
    }

    const Equality& equality_;
    const Ignored& ignored_;
    std::vector<Task> tasks_;
    std::vector<Difference> differences_;
};

class Diff : public Command {
public:
    Diff()
        : Command("diff", "FILE FILE", 2, "compare two files by structure and value",
                  "Prints what differs, each on lines of \"-\", path, value of the first file, and \"+\", "
                  "path, value of "
                  "the second, with tabs between. The n-th element of a name is compared with the n-th of "
                  "that name "
                  "below the same element. Indentation, comments, processing instructions and the order of "
                  "attributes "
                  "do not count; elements in another order are told as \"!\" with the names that differ "
                  "first. The exit "
                  "code is 0 for equal files and 1 for different ones.\n\n"
                  "An ignored path leaves out everything at and below it; without an index, or with \"[*]\", "
                  "it means "
                  "all elements of the name. A name that does not begin with \"/\" is ignored wherever it "
                  "stands.")
    {
        option("-t,--tolerance", "NUMBER", &equality_.tolerance,
               "take numbers for equal that differ by no more than that");
        option("--relative", "NUMBER", &equality_.relative,
               "the same, as a part of the larger number, such as 1e-6");
        option("--ignore", "PATH", &ignored_, "do not compare; repeated for others").completion =
            Completion::path;
        flag("--trim", equality_.trims, "leave out blanks at the ends of values");
        flag("-q,--quiet", quiet_, "print nothing");
        output_.declare(*this);
        example("kh diff --tolerance 50000000 --ignore Earth_Observation_Header --ignore 'Item[*]/Orbit' "
                "product.xml other.xml",
                "data alone, with a tolerance");
        example("kh diff --quiet product.xml product.xml", "by the exit code alone");
    }

    ExitCode run() override
    {
        if (arguments().size() != 2)
            throw Failure(usage, "diff needs two files");
        if (std::any_of(ignored_.begin(), ignored_.end(),
                        [](const std::string& text) { return text.empty(); }))
            throw Failure(usage, "an empty path cannot be ignored");
        Output output(output_);
        output.set_columns({{"", Style::plain}, {"path", Style::path}, {"value"}});
        output.set_style([](const std::vector<std::string>& cells, std::size_t column) {
            return column == 1 ? Style::path : cells.front() == "-" ? Style::bad : Style::good;
        });
        FileOptions one_file;
        // Not as a list of files: there, "-" would be one that may be empty.
        return for_each_name({arguments()[1]}, one_file, output, [this](Report& report) {
            Document after(report.file());
            return compare(after, report);
        });
    }

private:
    ExitCode compare(Document& after, Report& report)
    {
        const Document before(arguments()[0]);
        const Ignored ignored(ignored_);
        const std::vector<Difference> differences =
            Comparison(equality_, ignored).compare(before.root(), after.root());
        if (report.is_json())
            print_json(before.file(), differences, report);
        else if (!quiet_)
            print_lines(differences, report);
        return differences.empty() ? done : different;
    }

    static void print_json(const std::string& before, const std::vector<Difference>& differences,
                           Report& report)
    {
        report.json().begin_object().member("before", before).member("file", report.file());
        report.json().member("equal", differences.empty()).key("differences").begin_array();
        for (const Difference& difference : differences)
            report.json()
                .begin_short_object()
                .member("kind", name_of(difference.kind))
                .member("path", difference.path)
                .member("before", difference.before)
                .member("after", difference.after)
                .end();
        report.json().end().end();
    }

    static void print_lines(const std::vector<Difference>& differences, Report& report)
    {
        for (const Difference& difference : differences) {
            if (difference.kind == Difference::reordered) {
                report.line({"!", difference.path, *difference.before + " " + *difference.after});
                continue;
            }
            if (difference.before)
                report.line({"-", difference.path, *difference.before});
            if (difference.after)
                report.line({"+", difference.path, *difference.after});
        }
    }

    OutputOptions output_;
    Equality equality_;
    std::vector<std::string> ignored_;
    bool quiet_ = false;
};

} // namespace

void add_diff(CommandList& commands)
{
    commands.push_back(std::make_unique<Diff>());
}

} // namespace tool
