// kh load: a file from the JSON that kh dump prints.
#include "edit.h"

#include <kalv/file_handling.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iconv.h>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>

namespace tool {

namespace {

/// Reads the JSON piece by piece and writes XML text as it goes, so that neither is a tree in memory.
class Reader : public nlohmann::json_sax<nlohmann::json> {
public:
    /// What is wrong with the JSON; empty for nothing.
    const std::string& fault() const { return fault_; }
    /// Where the text ceases to be JSON; 0 where it does not.
    long line() const { return line_; }
    long column() const { return column_; }
    /// The document, in UTF-8 and without its declaration.
    const std::string& text() const { return text_; }
    /// A member of the document, such as "encoding"; empty where it has none.
    std::string member(const std::string& name) const
    {
        const auto found = members_.find(name);
        return found == members_.end() ? "" : found->second;
    }
    bool complete() const { return documents_ == 1 && fault_.empty(); }

    bool start_object(std::size_t) override
    {
        switch (place()) {
        case Place::outside:
        case Place::files:
            return enter(Place::file);
        case Place::document_member:
            return ++documents_ > 1 ? fail("more than one document") : enter(Place::document);
        case Place::attributes_expected:
            places_.pop_back();
            return enter(Place::attributes);
        case Place::nodes:
        case Place::content:
        case Place::pieces:
            other_.clear();
            return enter(Place::other);
        default:
            return fail("an object where none belongs");
        }
    }

    bool end_object() override
    {
        const Place ended = place();
        places_.pop_back();
        if (ended == Place::attributes)
            text_ += '>';
        return end_value() && (ended != Place::other || write_other());
    }

    bool start_array(std::size_t) override
    {
        switch (place()) {
        case Place::outside:
            return enter(Place::files);
        case Place::nodes_member:
            return enter(Place::nodes);
        case Place::nodes:
        case Place::content:
            enter(Place::content);
            enter(Place::attributes_expected);
            return enter(Place::name_expected);
        case Place::attribute:
            return enter(Place::pieces);
        default:
            return fail("an array where none belongs");
        }
    }

    bool end_array() override
    {
        const Place ended = place();
        if (ended == Place::name_expected || ended == Place::attributes_expected)
            return fail("an element without its name and attributes");
        places_.pop_back();
        if (ended == Place::content) {
            text_ += "</" + names_.back() + '>';
            names_.pop_back();
            end_top_node();
        }
        return end_value();
    }

    bool key(std::string& name) override
    {
        switch (place()) {
        case Place::file:
            return enter(name == "document" ? Place::document_member : Place::unused_member);
        case Place::document:
            member_ = name;
            return enter(name == "nodes" ? Place::nodes_member : Place::text_member);
        case Place::attributes:
            text_ += ' ' + name + "=\"";
            return enter(Place::attribute);
        default:
            other_key_ = name;
            return true;
        }
    }

    bool string(std::string& value) override
    {
        switch (place()) {
        case Place::name_expected:
            places_.pop_back();
            names_.push_back(value);
            text_ += '<' + value;
            return true;
        case Place::content:
        case Place::attribute:
        case Place::pieces:
            append_escaped(value, place() != Place::content);
            return end_value();
        case Place::other:
            other_[other_key_] = value;
            return true;
        case Place::text_member:
            members_[member_] = value;
            return end_value();
        case Place::unused_member:
            return end_value();
        default:
            return fail("a text where none belongs: \"" + value + '"');
        }
    }

    bool null() override { return fail_scalar(); }
    bool boolean(bool) override { return fail_scalar(); }
    bool number_integer(number_integer_t) override { return fail_scalar(); }
    bool number_unsigned(number_unsigned_t) override { return fail_scalar(); }
    bool number_float(number_float_t, const string_t&) override { return fail_scalar(); }
    bool binary(binary_t&) override { return fail_scalar(); }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& error) override
    {
        std::string reason = error.what();
        reason.erase(0, reason.find("] ") + 2);
        // "parse error at line 1, column 2: reason"
        std::sscanf(reason.c_str(), "parse error at line %ld, column %ld", &line_, &column_);
        if (line_ > 0)
            reason.erase(0, std::min(reason.find(": "), reason.size() - 2) + 2);
        return fail("not JSON: " + reason);
    }

private:
    enum class Place {
        outside,
        files,           ///< the array that kh dump prints
        file,            ///< an object of it
        document_member, ///< behind "document":
        unused_member,   ///< behind another key
        document,
        text_member,  ///< behind "version":, "encoding": or "standalone":
        nodes_member, ///< behind "nodes":
        nodes,
        name_expected,
        attributes_expected,
        attributes,
        attribute, ///< behind an attribute's name
        pieces,    ///< the texts and references of an attribute
        content,   ///< of an element, behind its attributes
        other      ///< an object that stands for a node
    };

    Place place() const { return places_.empty() ? Place::outside : places_.back(); }
    bool enter(Place place)
    {
        places_.push_back(place);
        return true;
    }
    /// The member of an object ends with its value.
    bool end_value()
    {
        switch (place()) {
        case Place::attribute:
            text_ += '"';
            [[fallthrough]];
        case Place::document_member:
        case Place::unused_member:
        case Place::text_member:
        case Place::nodes_member:
            places_.pop_back();
            return true;
        default:
            return true;
        }
    }

    bool fail(const std::string& what)
    {
        if (fault_.empty())
            fault_ = what;
        return false;
    }
    bool fail_scalar() { return fail("a number, truth value or null where a text belongs"); }

    /// What reads back as the same text. Characters beyond ASCII become references: the encoding may lack them.
    void append_escaped(const std::string& value, bool in_attribute)
    {
        for (std::size_t i = 0; i < value.size(); ++i) {
            const char c = value[i];
            const bool is_blank = c == '\n' || c == '\t';
            const bool is_ascii = static_cast<unsigned char>(c) < 0x80U;
            if (is_continuation(c))
                continue;
            if (!is_ascii || (c < ' ' && (!is_blank || in_attribute)) || c == '&' || c == '<' || c == '>' ||
                (c == '"' && in_attribute))
                text_ += "&#" + std::to_string(code_point(value, i)) + ';';
            else
                text_ += c;
        }
    }

    static bool is_continuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

    /// The character that begins at a place of a text, which the JSON parser has checked to be UTF-8.
    static unsigned long code_point(const std::string& text, std::size_t begin)
    {
        const auto lead = static_cast<unsigned char>(text[begin]);
        unsigned long code = lead < 0x80U   ? lead
                             : lead < 0xE0U ? lead & 0x1FU
                             : lead < 0xF0U ? lead & 0x0FU
                                            : lead & 0x07U;
        for (std::size_t i = begin + 1; i < text.size() && is_continuation(text[i]); ++i)
            code = code << 6U | (static_cast<unsigned char>(text[i]) & 0x3FU);
        return code;
    }

    bool write_other()
    {
        const auto value = [&](const char* key) -> const std::string& { return other_[key]; };
        const bool in_attribute = place() == Place::pieces;
        if (other_.count("reference") != 0)
            text_ += '&' + value("reference") + ';';
        else if (in_attribute)
            return fail("an object in an attribute that is no reference");
        else if (other_.count("cdata") != 0)
            text_ += "<![CDATA[" + value("cdata") + "]]>";
        else if (other_.count("comment") != 0)
            text_ += "<!--" + value("comment") + "-->";
        else if (other_.count("instruction") != 0)
            text_ += "<?" + value("instruction") + (value("data").empty() ? "" : " " + value("data")) + "?>";
        else if (other_.count("doctype") != 0)
            text_ += value("doctype");
        else
            return fail("an object that is no node");
        end_top_node();
        return true;
    }

    void end_top_node()
    {
        if (place() == Place::nodes)
            text_ += '\n';
    }

    std::vector<Place> places_;
    std::vector<std::string> names_; ///< of the elements that are open
    std::string text_;
    std::map<std::string, std::string> members_;
    std::string member_;
    std::map<std::string, std::string> other_;
    std::string other_key_;
    std::string fault_;
    long line_ = 0;
    long column_ = 0;
    int documents_ = 0;
};

/// A text in another encoding. Throws a Failure (cannot_read) where that cannot be.
std::string encoded(const std::string& text, const std::string& encoding, const std::string& source)
{
    if (encoding.empty() || strcasecmp(encoding.c_str(), "UTF-8") == 0)
        return text;
    struct Close {
        void operator()(void* converter) const { iconv_close(converter); }
    };
    void* const none = reinterpret_cast<void*>(-1);
    void* opened = iconv_open(encoding.c_str(), "UTF-8");
    if (opened == none)
        throw Failure(cannot_read, Place{source, 0, 0}, "an unknown encoding: " + encoding);
    const std::unique_ptr<void, Close> converter(opened);
    std::string result;
    char* input = const_cast<char*>(text.data());
    std::size_t left = text.size();
    while (left > 0) {
        char buffer[1U << 16U];
        char* end = buffer;
        std::size_t room = sizeof buffer;
        const std::size_t code = iconv(converter.get(), &input, &left, &end, &room);
        result.append(buffer, static_cast<std::size_t>(end - buffer));
        if (code == static_cast<std::size_t>(-1) && errno != E2BIG)
            throw Failure(cannot_read, Place{source, 0, 0},
                          "a name, comment or section that " + encoding + " cannot hold");
    }
    return result;
}

class Load : public Command {
public:
    Load()
        : Command(
              "load", "JSON FILE", 2, "make a file from what kh dump printed",
              "Writes the XML file that the JSON of kh dump describes; \"-\" is standard input. A file that "
              "this "
              "command or its library wrote comes out with the same bytes. The JSON holds one document; for "
              "its "
              "form see kh dump. The file is replaced when the new one is complete. What was compressed is "
              "written plainly.")
    {
        flag("-n,--dry-run", dry_run_, "find out whether it could be made, and write nothing");
        option("-b,--backup", "SUFFIX", &backup_, "keep the old file under its name with SUFFIX behind it");
        example("kh load product.json copy.xml", "a file from its dump");
    }

    ExitCode run() override
    {
        if (arguments().size() != 2)
            throw Failure(usage, "load needs " + synopsis());
        const std::string& source = arguments()[0];
        const std::string& target = arguments()[1];
        const std::string text = read(source);
        long status = KH_OK;
        long fd = kh_tree_init_memory(text.data(), static_cast<long>(text.size()), &status);
        if (status != KH_OK)
            throw Failure(cannot_read, Place{source, 0, 0}, "does not describe an XML document");
        const Closing closing{fd};
        if (dry_run_)
            return done;
        keep_old(target, backup_);
        save_file(&fd, target, kh_tree_save);
        return done;
    }

private:
    struct Closing {
        long fd;
        ~Closing() { kh_tree_cleanup_parser(&fd, nullptr); }
    };

    static std::string read(const std::string& source)
    {
        std::ifstream file;
        if (source != "-") {
            const std::string reason = reason_not_to_open(source);
            if (!reason.empty())
                throw Failure(cannot_read, Place{source, 0, 0}, reason);
            file.open(source);
        }
        std::istream& stream = source == "-" ? std::cin : file;
        Reader reader;
        nlohmann::json::sax_parse(stream, &reader);
        if (!reader.complete())
            throw Failure(cannot_read, Place{source, reader.line(), reader.column()},
                          reader.fault().empty() ? "no document" : reader.fault());
        std::string declaration = "<?xml version=\"";
        declaration += reader.member("version").empty() ? "1.0" : reader.member("version");
        const std::string encoding = reader.member("encoding");
        if (!encoding.empty())
            declaration += "\" encoding=\"" + encoding;
        if (!reader.member("standalone").empty())
            declaration += "\" standalone=\"" + reader.member("standalone");
        return encoded(declaration + "\"?>\n" + reader.text(), encoding, source);
    }

    std::string backup_;
    bool dry_run_ = false;
};

} // namespace

void add_load(CommandList& commands)
{
    commands.push_back(std::make_unique<Load>());
}

} // namespace tool
