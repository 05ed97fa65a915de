// kh cp: copying elements from file to file.
#include "edit.h"
#include "indentation.h"

#include <kalv/build.h>
#include <kalv/status.h>

namespace tool {

namespace {

class Copy : public Command {
public:
    Copy()
        : Command("cp", "SOURCE PATH FILE PATH", 4, "copy an element from file to file",
                  "Appends a copy of an element of the source, with all below it, to an element of a file, "
                  "which may "
                  "be the same. The copy stands on lines of its own where the file is indented, and is "
                  "indented as "
                  "that file is. Namespaces that the copy needs are declared on it; an entity that the file "
                  "does not "
                  "declare becomes what it stands for.")
    {
        edit_.declare_for_one(*this);
        example("kh cp other.xml '/Earth_Observation_File/Data_Block/List/Item[1]' "
                "product.xml /Earth_Observation_File/Data_Block/List",
                "an item of another file, as last item");
    }

    ExitCode run() override
    {
        if (arguments().size() != 4)
            throw Failure(usage, "cp needs " + synopsis());
        const std::string source = arguments()[0];
        const std::string source_path = arguments()[1];
        const std::string path = arguments()[3];
        return edit_files({arguments()[2]}, edit_, [&](Document& document) {
            document.check_path(path);
            document.check_path(source_path);
            return std::vector<Change>{copy(document, document.absolute(path), source, source_path)};
        });
    }

private:
    static Change copy(Document& document, const std::string& path, const std::string& source,
                       const std::string& source_path)
    {
        if (!document.go_to(path) || !document.cursor().is_element())
            throw document.failure(different, path + ": not found");
        long status = KH_OK;
        kh_copy_node(document.fd(), path.c_str(), source.c_str(), absolute_in(source, source_path).c_str(),
                     &status);
        if (status == KH_ERR_NOT_FOUND)
            throw Failure(different, Place{source, 0, 0}, source_path + ": not found");
        check_edit(document, path, status);
        Node copied;
        for (Node child(document.cursor().first_child); child; child = Node(child.next))
            copied = child;
        indent_appended(document, copied);
        kh_tree_go_to_node(document.fd(), copied.handle, &status);
        check_edit(document, path, status);
        return {document.cursor_path(), std::nullopt, copied.holds_elements() ? "" : copied.value()};
    }

    /// The source path from the source's root. Tells what is wrong with the source, too.
    static std::string absolute_in(const std::string& source, const std::string& path)
    {
        Document document(source);
        std::string absolute = document.absolute(path);
        if (!document.go_to(absolute) || !document.cursor().is_element())
            throw document.failure(different, path + ": not found");
        return absolute;
    }

    EditOptions edit_;
};

} // namespace

void add_cp(CommandList& commands)
{
    commands.push_back(std::make_unique<Copy>());
}

} // namespace tool
