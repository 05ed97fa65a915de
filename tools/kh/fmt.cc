// kh fmt: the indentation of files.
#include "edit.h"
#include "indentation.h"

namespace tool {

namespace {

class Format : public Command {
public:
    Format()
        : Command("fmt", "FILE...", 1, "indent files",
                  "Puts each element on a line of its own, deeper than the one around it. Texts stay as they "
                  "are, also "
                  "elements that hold text and elements, and all below an element with "
                  "xml:space=\"preserve\". A file "
                  "that is indented so already is left alone.")
    {
        option("-i,--indent", "N", &spaces_, "the number of blanks of one level");
        flag("--tabs", tabs_, "use tabs in place of blanks");
        flag("--check", check_, "change nothing, and end with code 1 where a file is not indented so");
        edit_.declare(*this);
        example("kh fmt product.xml", "two blanks a level");
        example("kh fmt --indent 4 -b .old product.xml other.xml", "four, and the old files are kept");
    }

    ExitCode run() override
    {
        if (spaces_ < 0 || spaces_ > most_spaces)
            throw Failure(usage, "an indentation of 0 to 40 blanks is possible");
        const std::string unit = tabs_ ? "\t" : std::string(static_cast<std::size_t>(spaces_), ' ');
        if (check_)
            edit_.dry_run = true;
        return edit_files(arguments(), edit_, [&](Document& document) {
            std::vector<Change> changes;
            const Node root = document.root();
            const long places = indent(document, root, "\n", unit);
            if (places > 0 && check_)
                throw document.failure(different, "not indented so");
            if (places > 0)
                changes.push_back({'/' + std::string(root.name), std::nullopt,
                                   "indentation changed in " + std::to_string(places) + " places"});
            return changes;
        });
    }

private:
    static constexpr long most_spaces = 40;

    EditOptions edit_;
    long spaces_ = 2;
    bool tabs_ = false;
    bool check_ = false;
};

} // namespace

void add_fmt(CommandList& commands)
{
    commands.push_back(std::make_unique<Format>());
}

} // namespace tool
