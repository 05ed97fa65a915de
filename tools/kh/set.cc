// kh set, add and rm: values, elements and attributes of files.
#include "condition.h"
#include "edit.h"
#include "indentation.h"

#include <kalv/build.h>
#include <kalv/status.h>

#include <algorithm>

namespace tool {

namespace {

/// A path cut before its last name.
struct Target {
    std::string parent;
    std::string name; ///< of an attribute with its "@"

    bool is_attribute() const { return name.front() == '@'; }
};

Target target_of(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    Target target{slash == std::string::npos ? "" : path.substr(0, slash), path.substr(slash + 1)};
    if (target.name.empty() || target.name == "@" || target.name == "." || target.name == "..")
        throw Failure(usage, "no name at the end of the path: " + path);
    return target;
}

/// Calls `edit` with each node that a path stands for, with its path from the root as the library writes it.
/// Throws a Failure (different) where there is none.
void for_each_target(Document& document, const std::string& path,
                     const std::function<void(const std::string& path)>& edit)
{
    document.check_path(path);
    const std::vector<std::string> paths = document.expanded(path);
    if (paths.empty())
        throw document.failure(different, path + ": not found");
    // From behind, so that what is added or removed does not change the paths of the others.
    std::for_each(paths.rbegin(), paths.rend(), edit);
}

/// Goes to the element of a path. Throws a Failure (different) where there is none.
Node element_at(Document& document, const std::string& path)
{
    if (!document.go_to(path) || !document.cursor().is_element())
        throw document.failure(different, path + ": not found");
    return document.cursor();
}

/// The attribute of a path, by the name that is written or without its prefix. Throws a Failure (different) where
/// there is none.
Attribute attribute_at(Document& document, const Target& target)
{
    const Node element = element_at(document, target.parent);
    const std::optional<Attribute> attribute = attribute_of(element, target.name.substr(1));
    if (!attribute)
        throw document.failure(different, element, target.parent + '/' + target.name + ": not found");
    return *attribute;
}

void set_attribute(Document& document, const std::string& path, const std::string& value)
{
    long status = KH_OK;
    kh_tree_set_text(document.fd(), path.c_str(), value.c_str(), &status);
    check_edit(document, path, status);
}

/// Gives an element another text; comments and instructions in it stay.
void set_element(Document& document, const Node& element, const std::string& path, const std::string& value)
{
    if (element.holds_elements())
        throw document.failure(cannot_write, element, path + ": holds elements");
    Node place(element.first_child);
    while (place && !place.is_value())
        place = Node(place.next);
    long status = KH_OK;
    if (!value.empty())
        kh_tree_insert_node(document.fd(), element.handle, place.handle, KH_NODE_TEXT, value.c_str(),
                            &status);
    check_edit(document, path, status);
    while (place) {
        const Node next(place.next);
        if (place.is_value())
            kh_tree_delete_node(document.fd(), place.handle, &status);
        check_edit(document, path, status);
        place = next;
    }
}

/// What the three commands share: their arguments.
class EditCommand : public Command {
public:
    using Command::Command;

protected:
    /// The files, and the paths: those of the option, or else the arguments behind the first.
    std::vector<std::string> take_files()
    {
        std::vector<std::string> files = arguments();
        if (paths_.empty()) {
            paths_.assign(files.begin() + 1, files.end());
            files.resize(1);
        }
        if (paths_.empty())
            throw Failure(usage, "no path is given");
        return files;
    }

    EditOptions edit_;
    std::vector<std::string> paths_;
};

constexpr const char* paths_or_files =
    "With -s all arguments are files; without it, the arguments behind the first are what is set.";

class Set : public EditCommand {
public:
    Set()
        : EditCommand(
              "set", "FILE [PATH=VALUE]...", 1, "set values by path",
              std::string(
                  "Sets the text of elements and attributes that exist; \"[*]\" sets all of an array. A "
                  "value is taken as it is, also one with \"&\" or \"<\", and may have any length. "
                  "Everything else in the file stays: comments, also those beside the value, "
                  "indentation, declaration and document type. The file is replaced when the new one "
                  "is complete.\n\n") +
                  paths_or_files)
    {
        option("-s,--set", "PATH=VALUE", &paths_,
               "set a value; repeated for others; all arguments are then files")
            .completion = Completion::path;
        edit_.declare(*this);
        example("kh set product.xml '/Earth_Observation_File/Data_Block/List/Item[2]/Orbit=1005'", "a value");
        example("kh set -n -s 'Data_Block/List/Item[*]/Height/@unit=m' product.xml other.xml",
                "what would change in two files");
    }

    ExitCode run() override
    {
        const std::vector<std::string> files = take_files();
        std::vector<Assignment> assignments;
        for (const std::string& text : paths_) {
            assignments.push_back(parse_assignment(text));
            if (!assignments.back().has_value)
                throw Failure(usage, "no value behind " + text + ": write PATH=VALUE");
        }
        return edit_files(files, edit_, [&](Document& document) {
            std::vector<Change> changes;
            for (const Assignment& assignment : assignments)
                set(document, assignment, changes);
            return changes;
        });
    }

private:
    static void set(Document& document, const Assignment& assignment, std::vector<Change>& changes)
    {
        for_each_target(document, assignment.path, [&](const std::string& path) {
            const Target target = target_of(path);
            std::string before;
            if (target.is_attribute()) {
                const Attribute attribute = attribute_at(document, target);
                before = attribute.value;
                set_attribute(document, target.parent + "/@" + attribute.name, assignment.value);
            } else {
                before = element_at(document, path).value();
                set_element(document, document.cursor(), path, assignment.value);
            }
            if (before != assignment.value)
                changes.push_back({path, before, assignment.value});
        });
    }
};

class Add : public EditCommand {
public:
    Add()
        : EditCommand(
              "add", "FILE [PATH[=VALUE]]...", 1, "add elements and attributes",
              std::string(
                  "Adds the element or attribute that the last name of a path names to the element "
                  "before it: an element as its last child, or beside the one that --before or --after "
                  "names. What is added stands on a line of its own where the file is indented. An "
                  "attribute that exists already is refused: use kh set.\n\n") +
                  paths_or_files)
    {
        option("-s,--set", "PATH[=VALUE]", &paths_,
               "what to add; repeated for others; all arguments are then files")
            .completion = Completion::path;
        option("--before", "PATH", &before_, "add elements before that one").completion = Completion::path;
        option("--after", "PATH", &after_, "add elements behind that one").completion = Completion::path;
        edit_.declare(*this);
        example("kh add product.xml /Earth_Observation_File/Data_Block/List/Item "
                "'/Earth_Observation_File/Data_Block/List/Item[4]/Orbit=1004'",
                "an element, and one below it");
        example("kh add product.xml Data_Block/List/@unit=km", "an attribute");
        example("kh add --before 'Data_Block/List/Item[1]' product.xml Data_Block/List/Title=Orbits",
                "an element before the first of another name");
    }

    ExitCode run() override
    {
        const std::vector<std::string> files = take_files();
        if (!before_.empty() && !after_.empty())
            throw Failure(usage, "--before and --after are two different places");
        std::vector<Assignment> assignments;
        for (const std::string& text : paths_) {
            assignments.push_back(parse_assignment(text));
            const Target target = target_of(assignments.back().path);
            if (target.name.find('[') != std::string::npos)
                throw Failure(usage, "what is added has no index: " + text);
        }
        return edit_files(files, edit_, [&](Document& document) {
            std::vector<Change> changes;
            for (const Assignment& assignment : assignments)
                add(document, assignment, changes);
            return changes;
        });
    }

private:
    void add(Document& document, const Assignment& assignment, std::vector<Change>& changes) const
    {
        const Target target = target_of(document.absolute(assignment.path));
        if (target.parent.empty())
            throw document.failure(cannot_write, assignment.path + ": a file has one root");
        for_each_target(document, target.parent, [&](const std::string& path) {
            const Node parent = element_at(document, path);
            if (target.is_attribute())
                add_attribute(document, path, target.name, assignment.value, changes);
            else
                add_element(document, parent, target.name, assignment.value, changes);
        });
    }

    static void add_attribute(Document& document, const std::string& parent, const std::string& name,
                              const std::string& value, std::vector<Change>& changes)
    {
        std::string path = parent;
        path.append(1, '/').append(name);
        for (const Attribute& attribute : attributes_of(document.cursor())) {
            if ('@' + attribute.name == name)
                throw document.failure(cannot_write, document.cursor(), path + ": exists already");
        }
        set_attribute(document, path, value);
        changes.push_back({path, std::nullopt, value});
    }

    void add_element(Document& document, const Node& parent, const std::string& name,
                     const std::string& value, std::vector<Change>& changes) const
    {
        const Node element = insert_indented(document, parent, place(document, parent), name);
        long status = KH_OK;
        kh_tree_go_to_node(document.fd(), element.handle, &status);
        const std::string path = document.cursor_path();
        set_element(document, element, path, value);
        changes.push_back({path, std::nullopt, value});
    }

    /// The child that is to stand behind what is added.
    Node place(Document& document, const Node& parent) const
    {
        const std::string& beside = before_.empty() ? after_ : before_;
        if (beside.empty())
            return {};
        document.check_path(beside);
        const Node sibling = element_at(document, document.absolute(beside));
        if (sibling.parent != parent.handle)
            throw document.failure(cannot_write, sibling,
                                   beside + ": not a child of the element that gets the new one");
        return before_.empty() ? Node(sibling.next) : sibling;
    }

    std::string before_;
    std::string after_;
};

class Remove : public EditCommand {
public:
    Remove()
        : EditCommand(
              "rm", "FILE [PATH]...", 1, "remove elements and attributes",
              "Removes the elements and attributes that paths name, with all below them; \"[*]\" removes all "
              "of "
              "an array. The blanks before an element go with it, so that no empty line is left.\n\nWith -p "
              "all arguments are files; without it, the arguments behind the first are paths.")
    {
        option("-p,--path", "PATH", &paths_,
               "what to remove; repeated for others; all arguments are then files")
            .completion = Completion::path;
        flag("-f,--force", force_, "go on where there is no such element or attribute");
        edit_.declare(*this);
        example("kh rm product.xml '/Earth_Observation_File/Data_Block/List/Item[2]'", "an element");
        example(
            "kh rm -f -p Data_Block/List/@count -p 'Data_Block/List/Item[*]/Remark' product.xml other.xml",
            "an attribute, and an element of each item");
    }

    ExitCode run() override
    {
        const std::vector<std::string> files = take_files();
        return edit_files(files, edit_, [&](Document& document) {
            std::vector<Change> changes;
            for (const std::string& path : paths_)
                remove_all(document, path, changes);
            return changes;
        });
    }

private:
    void remove_all(Document& document, const std::string& path, std::vector<Change>& changes) const
    {
        const std::size_t before = changes.size();
        const auto remove_one = [&](const std::string& one) {
            try {
                remove(document, one, changes);
            } catch (const Failure& failure) {
                // Of an array, some may lack what is to be removed.
                if (failure.code() != different)
                    throw;
            }
        };
        document.check_path(path);
        std::vector<std::string> paths = document.expanded(path);
        std::for_each(paths.rbegin(), paths.rend(), remove_one);
        if (changes.size() == before && !force_)
            throw document.failure(different, path + ": not found");
    }

    static void remove(Document& document, const std::string& path, std::vector<Change>& changes)
    {
        const Target target = target_of(path);
        if (target.is_attribute()) {
            const Attribute attribute = attribute_at(document, target);
            const std::string local_name = attribute.name.substr(attribute.name.find(':') + 1);
            long status = KH_OK;
            kh_tree_remove_node(document.fd(), (target.parent + "/@" + local_name).c_str(), &status);
            if (status == KH_ERR_NOT_FOUND)
                throw document.failure(cannot_write, path + ": a namespace declaration stays");
            check_edit(document, path, status);
            changes.push_back({path, attribute.value, std::nullopt});
        } else {
            const Node element = element_at(document, path);
            if (!element.parent)
                throw document.failure(cannot_write, element, path + ": a file needs its root");
            changes.push_back(
                {document.cursor_path(), element.holds_elements() ? "" : element.value(), std::nullopt});
            delete_indented(document, element);
        }
    }

    bool force_ = false;
};

} // namespace

void add_set(CommandList& commands)
{
    commands.push_back(std::make_unique<Set>());
    commands.push_back(std::make_unique<Add>());
    commands.push_back(std::make_unique<Remove>());
}

} // namespace tool
