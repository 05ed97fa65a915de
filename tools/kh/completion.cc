#include "completion.h"

#include "document.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>

namespace tool {

namespace {

/// What is offered, or that it is up to the shell.
struct Offer {
    bool files = false;
    std::vector<std::string> words;
};

/// The words of a command line, without their quotes. The last one may be unfinished or empty.
std::vector<std::string> words_of(const std::string& line)
{
    std::vector<std::string> words(1);
    char quote = '\0';
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quote == '\0' && (c == ' ' || c == '\t')) {
            if (!words.back().empty())
                words.emplace_back();
        } else if (c == quote) {
            quote = '\0';
        } else if (quote == '\0' && (c == '\'' || c == '"')) {
            quote = c;
        } else if (c == '\\' && quote != '\'' && i + 1 < line.size()) {
            words.back() += line[++i];
        } else {
            words.back() += c;
        }
    }
    return words;
}

bool begins_with(const std::string& text, const std::string& beginning)
{
    return text.compare(0, beginning.size(), beginning) == 0;
}

std::vector<std::string> names_of(const Option& option)
{
    std::istringstream names(option.names);
    std::vector<std::string> all;
    for (std::string name; std::getline(names, name, ',');)
        all.push_back(name);
    return all;
}

const Option* option_named(const Command& command, const std::string& name)
{
    for (const Option& option : command.options()) {
        const std::vector<std::string> names = names_of(option);
        if (std::find(names.begin(), names.end(), name) != names.end())
            return &option;
    }
    return nullptr;
}

/// The paths that begin as a text does: one level deeper than its last "/".
std::vector<std::string> paths_in(const std::string& file, const std::string& typed)
{
    Document document(file);
    const std::size_t slash = typed.rfind('/');
    const std::string parent = slash == std::string::npos ? "" : typed.substr(0, slash);
    const std::string before = slash == std::string::npos ? "" : typed.substr(0, slash + 1);
    std::vector<std::string> paths;
    if (slash == 0) {
        paths.push_back('/' + std::string(document.root().name) + '/');
        return paths;
    }
    std::string start = document.absolute(parent.empty() ? "." : parent);
    for (std::size_t star = start.find("[*]"); star != std::string::npos; star = start.find("[*]"))
        start.replace(star, 3, "[1]");
    if (!document.go_to(start))
        return paths;
    std::set<std::string> repeated;
    for (Walker walker(document.cursor().handle); walker.next();) {
        if (walker.depth() == 0 || !walker.entering() || !walker.node().is_element())
            continue;
        walker.skip();
        const std::string path = walker.path().substr(1);
        const std::string end = walker.node().holds_elements() ? "/" : "";
        const std::size_t index = path.find('[');
        std::string offered = before;
        if (index != std::string::npos && repeated.insert(path.substr(0, index)).second)
            paths.push_back(std::string(before).append(path, 0, index).append("[*]").append(end));
        paths.push_back(offered.append(path).append(end));
    }
    for (const Attribute& attribute : attributes_of(document.cursor()))
        paths.push_back(before + '@' + attribute.name);
    return paths;
}

/// Paths of the file that is nearest before the place, or else of the first behind it.
Offer offer_paths(const std::vector<std::string>& before, const std::vector<std::string>& behind,
                  const std::string& typed)
{
    std::vector<std::string> files(before.rbegin(), before.rend());
    files.insert(files.end(), behind.begin(), behind.end());
    const auto file = std::find_if(files.begin(), files.end(), [](const std::string& word) {
        return std::filesystem::is_regular_file(word);
    });
    // Of "PATH,PATH" the last is typed; a value behind "=" is anybody's guess.
    const std::size_t comma = typed.rfind(',');
    const std::string done = comma == std::string::npos ? "" : typed.substr(0, comma + 1);
    if (file == files.end() || typed.find('=') != std::string::npos)
        return {};
    Offer offer;
    for (const std::string& path : paths_in(*file, typed.substr(done.size())))
        offer.words.push_back(done + path);
    return offer;
}

/// What an argument of the command is, by its number, as the synopsis has it.
Completion kind_of_argument(const Command& command, std::size_t number, bool files_only)
{
    std::istringstream words(command.synopsis());
    std::vector<std::string> kinds;
    for (std::string word; words >> word;)
        kinds.push_back(word);
    if (kinds.empty())
        return Completion::nothing;
    const std::string& kind = kinds[std::min(number, kinds.size() - 1)];
    return !files_only && kind.find("PATH") != std::string::npos ? Completion::path : Completion::file;
}

void offer_once(Offer& offer, const std::string& word)
{
    if (std::find(offer.words.begin(), offer.words.end(), word) == offer.words.end())
        offer.words.push_back(word);
}

Offer offer_for(const CommandList& commands, const std::vector<std::string>& before,
                const std::vector<std::string>& behind, const std::string& typed)
{
    Offer offer;
    const Command* command = nullptr;
    std::size_t name_words = 0;
    for (const auto& candidate : commands) {
        const std::vector<std::string> name = words_of(candidate->name());
        if (before.size() >= name.size() && std::equal(name.begin(), name.end(), before.begin())) {
            command = candidate.get();
            name_words = name.size();
        } else if (before.size() < name.size() && std::equal(before.begin(), before.end(), name.begin())) {
            offer_once(offer, name[before.size()]);
        }
    }
    if (!command) {
        if (before.empty())
            offer.words.insert(offer.words.end(), {"help", "--help", "--version"});
        return offer;
    }
    offer.words.clear();
    std::vector<std::string> arguments;
    bool files_only = false;
    const Option* expecting = nullptr;
    for (std::size_t i = name_words; i < before.size(); ++i) {
        if (expecting) {
            files_only = files_only || expecting->completion == Completion::path;
            expecting = nullptr;
        } else if (const Option* option = option_named(*command, before[i])) {
            expecting = option->value.empty() ? nullptr : option;
        } else if (before[i].empty() || before[i].front() != '-') {
            arguments.push_back(before[i]);
        }
    }
    if (expecting && !expecting->choices.empty())
        offer.words = expecting->choices;
    else if (!expecting && begins_with(typed, "-"))
        for (const Option& option : command->options()) {
            const std::vector<std::string> names = names_of(option);
            offer.words.insert(offer.words.end(), names.begin(), names.end());
        }
    else {
        const Completion kind =
            expecting ? expecting->completion : kind_of_argument(*command, arguments.size(), files_only);
        if (kind == Completion::path)
            return offer_paths(arguments, behind, typed);
        offer.files = kind == Completion::file;
    }
    return offer;
}

} // namespace

std::string bash_completion()
{
    return R"(# Completion of kh for bash: commands, options, files, and paths in the files named.
_kh() {
    local offer
    mapfile -t offer < <("$1" --complete "${COMP_LINE:0:COMP_POINT}" "${COMP_LINE:COMP_POINT}" "$2" 2>/dev/null)
    if [ "${offer[0]}" = files ]; then
        compopt -o default
        return
    fi
    COMPREPLY=("${offer[@]:1}")
    case "${COMPREPLY[0]}" in
    */) compopt -o nospace ;;
    esac
}
complete -F _kh kh
)";
}

std::string complete(const CommandList& commands, const std::string& before, const std::string& behind,
                     const std::string& current)
{
    std::vector<std::string> words = words_of(before);
    const std::string word = words.back();
    words.pop_back();
    if (!words.empty())
        words.erase(words.begin()); // the name of the program
    // In "--option=value" the value is typed.
    const std::size_t sign = begins_with(word, "--") ? word.find('=') : std::string::npos;
    const std::string option = sign == std::string::npos ? "" : word.substr(0, sign + 1);
    if (!option.empty())
        words.push_back(word.substr(0, sign));
    Offer offer;
    try {
        offer = offer_for(commands, words, words_of(behind), word.substr(option.size()));
    } catch (const Failure&) {
        offer = Offer(); // a file that cannot be read has no paths
    }
    // The shell replaces only what it takes for the word: what follows a "=", ":" or the like.
    const bool is_end = current.size() < word.size() &&
                        word.compare(word.size() - current.size(), std::string::npos, current) == 0;
    const std::size_t kept = is_end ? word.size() - current.size() : 0;
    std::string text = offer.files ? "files\n" : "words\n";
    for (const std::string& offered : offer.words) {
        const std::string whole = option + offered;
        if (begins_with(whole, word))
            text += whole.substr(kept) + '\n';
    }
    return text;
}

} // namespace tool
