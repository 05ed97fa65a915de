// kh name: product file names.
#include "files.h"

#include <kalv/file_handling.h>

#include <algorithm>
#include <array>
#include <filesystem>

namespace tool {

namespace {

struct Extension {
    const char* option;
    const char* text;
    long type;
};
constexpr std::array<Extension, 4> extensions = {{{"klv", ".KLV", KH_EXTENSION_KLV},
                                                  {"hdr", ".HDR", KH_EXTENSION_HDR},
                                                  {"dbl", ".DBL", KH_EXTENSION_DBL},
                                                  {"eof", ".EOF", KH_EXTENSION_EOF}}};
constexpr long no_extension = 3;

/// The name of the satellite that stands for all unknown ones.
constexpr const char* unknown_satellite = "GenericMeo";

/// A satellite by its number, its name, or its name in capital letters.
long satellite(const std::string& text)
{
    if (!text.empty() && text.find_first_not_of("0123456789") == std::string::npos && text.size() < 10)
        return std::stol(text);
    const long unknown = KH_Get_sat_id(unknown_satellite);
    const long id = KH_Get_sat_id(text.c_str());
    if (id != unknown || text == unknown_satellite)
        return id;
    const long capital = KH_Get_sat_id_capital_letters(text.c_str());
    if (capital == unknown)
        throw Failure(different, "no satellite of that name: " + text);
    return capital;
}

/// A name, without the folders before it, cut into its parts.
struct Parts {
    std::string extension; ///< without its dot
    KALV::FileNameItems items;
};

Parts split(const std::string& name)
{
    const std::filesystem::path file = std::filesystem::path(name).filename();
    std::string stem = file.string();
    Parts parts;
    for (const Extension& extension : extensions) {
        if (file.extension() != extension.text)
            continue;
        parts.extension = file.extension().string().substr(1);
        stem = file.stem().string();
    }
    try {
        parts.items = KALV::XmlFile().getFileNameItems(stem);
    } catch (const KALV::KalvError& error) {
        std::vector<long> codes;
        error.getCodes(codes);
        throw Failure(different, Place{name, 0, 0}, status_text(codes.front()));
    }
    return parts;
}

/// What is wrong with a name.
std::vector<std::string> faults_of(const std::string& name)
{
    const Parts parts = split(name);
    const KALV::FileNameItems& items = parts.items;
    std::vector<std::string> faults;
    const auto check = [&](bool right, const std::string& fault) {
        if (!right)
            faults.push_back(fault);
    };
    check(items.satId != 0, "the mission code is unknown");
    check(items.fileClass.size() == 4, "the class has not 4 characters: \"" + items.fileClass + '"');
    check(!items.fileType.empty() && items.fileType.size() <= 10,
          "the type has not 1 to 10 characters: \"" + items.fileType + '"');
    check(!items.instanceId.empty(), "there are fewer than six parts between \"_\"");
    check(items.instanceId.size() <= 42,
          "the instance has more than 42 characters: \"" + items.instanceId + '"');
    check(!parts.extension.empty(), "the extension is none of KLV, HDR, DBL and EOF");
    const std::string full = KH_Get_file_extension_type(items.satId) == KH_EXTENSION_KLV ? "KLV" : "EOF";
    check(items.satId == 0 || (parts.extension != "KLV" && parts.extension != "EOF") ||
              parts.extension == full,
          "full products of this mission have the extension " + full);
    return faults;
}

/// What the header of a file says otherwise than its name.
std::vector<std::string> faults_of_header(const std::string& name)
{
    Document document(name);
    const Parts parts = split(name);
    const std::filesystem::path file = std::filesystem::path(name).filename();
    std::vector<std::string> faults;
    const auto compare = [&](const char* item, const std::vector<std::string>& expected) {
        std::string value;
        try {
            value = document.xml().getFixedHeaderItem(item);
        } catch (const KALV::KalvError&) {
            value.clear();
        }
        // The library writes some items into a field that is filled up with blanks in front.
        const std::string text = value.substr(std::min(value.find_first_not_of(' '), value.size()));
        if (std::find(expected.begin(), expected.end(), text) == expected.end())
            faults.push_back(std::string("the header's ") + item + " is \"" + text + '"');
    };
    compare("File_Name", {file.string(), file.stem().string()});
    compare("File_Class", {parts.items.fileClass});
    compare("File_Type", {parts.items.fileType});
    return faults;
}

class NameCompose : public Command {
public:
    NameCompose()
        : Command("name compose", "", 0, "compose a product file name",
                  "Prints the name that a product file must have. A satellite without a mission code gives "
                  "\"XXX\", "
                  "an empty class \"XXXX\".")
    {
        option("--satellite", "SATELLITE", &satellite_, "number or name of the satellite");
        option("--class", "CLASS", &class_, "file class, at most 4 characters");
        option("--type", "TYPE", &type_, "file type, at most 10 characters");
        option("--instance", "INSTANCE", &instance_, "instance, at most 42 characters");
        option("--extension", "EXTENSION", &extension_,
               "klv, hdr, dbl, eof or none; without it, that of the satellite's full products")
            .choices = {"klv", "hdr", "dbl", "eof", "none"};
        flag("--json", output_.json, "print JSON");
        example("kh name compose --satellite Quarvosk --class OPER --type ORBIT --instance "
                "20260101_20260102_0001",
                "a full product of a satellite");
        example("kh name compose --satellite 110 --class TEST --type ORBIT --instance 20260101_20260102_0001 "
                "--extension hdr",
                "its header alone");
    }

    ExitCode run() override
    {
        const long id = satellite(satellite_);
        long extension = extension_.empty() ? KH_Get_file_extension_type(id) : no_extension;
        for (const Extension& known : extensions)
            extension = extension_ == known.option ? known.type : extension;
        char name[KH_MESSAGE_SIZE] = "";
        long status = KH_OK;
        kh_create_filename(&id, class_.c_str(), type_.c_str(), instance_.c_str(), &extension, name, &status);
        if (status == KH_WARN_LENGTH)
            throw Failure(usage, "a part of the name is too long");
        if (status != KH_OK)
            throw Failure(usage, status_text(status));
        Output output(output_);
        if (output.json()) {
            std::string text;
            JsonWriter(text, 1).begin_object().member("name", name).end();
            output.begin_element();
            output.write(text);
        } else {
            output.write(std::string(name) + '\n');
        }
        return output.finish() ? done : cannot_write;
    }

private:
    OutputOptions output_;
    std::string satellite_;
    std::string class_;
    std::string type_;
    std::string instance_;
    std::string extension_;
};

/// What the two commands share that take names apart.
class NameCommand : public Command {
public:
    using Command::Command;

protected:
    OutputOptions output_;
    FileOptions names_;
};

class NameSplit : public NameCommand {
public:
    NameSplit()
        : NameCommand(
              "name split", "NAME...", 1, "split product file names",
              "Prints the parts of each name, with tabs between them: the name, the satellite's number, the "
              "class, the type, the instance and the extension. The number of an unknown mission code is 0; "
              "the instance is empty in a name of fewer than six parts. Files need not exist; folders before "
              "a name are left out.")
    {
        output_.declare(*this);
        names_.declare_list(*this);
        example("kh name split QQ_OPER_ORBIT_20260101_20260102_0001.KLV", "a name");
        example("kh name split --json QH1_TEST_ORBIT_20260101_20260102_0001.EOF", "the same as JSON");
    }

    ExitCode run() override
    {
        Output output(output_);
        output.set_columns({{"name", Style::name},
                            {"satellite", Style::number, true},
                            {"class"},
                            {"type"},
                            {"instance"},
                            {"extension"}});
        return for_each_name(expand_list(arguments()), names_, output, [](Report& report) {
            const Parts parts = split(report.file());
            const KALV::FileNameItems& items = parts.items;
            if (report.is_json())
                report.json()
                    .begin_object()
                    .member("file", report.file())
                    .member("satellite", items.satId)
                    .member("class", items.fileClass)
                    .member("type", items.fileType)
                    .member("instance", items.instanceId)
                    .member("extension", parts.extension)
                    .end();
            else
                report.line({report.file(), std::to_string(items.satId), items.fileClass, items.fileType,
                             items.instanceId, parts.extension});
            return done;
        });
    }
};

class NameCheck : public NameCommand {
public:
    NameCheck()
        : NameCommand(
              "name check", "NAME...", 1, "check product file names",
              "Says what is wrong with each name: an unknown mission code, parts that are missing or too "
              "long, an extension that the mission does not use. With --header the file is opened, too, and "
              "its header compared with the name. The exit code is 1 where anything is wrong.")
    {
        flag("--header", header_, "compare the items File_Name, File_Class and File_Type of the header, too");
        output_.declare(*this);
        names_.declare_list(*this);
        example("kh name check QQ_OPER_ORBIT_20260101_20260102_0001.KLV",
                "a name without fault prints nothing");
    }

    ExitCode run() override
    {
        Output output(output_);
        return for_each_name(expand_list(arguments()), names_, output,
                             [this](Report& report) { return check(report); });
    }

private:
    ExitCode check(Report& report) const
    {
        std::vector<std::string> faults = faults_of(report.file());
        if (header_) {
            const std::vector<std::string> more = faults_of_header(report.file());
            faults.insert(faults.end(), more.begin(), more.end());
        }
        if (report.is_json()) {
            report.json().begin_object().member("file", report.file()).member("valid", faults.empty());
            report.json().key("faults").begin_array();
            for (const std::string& fault : faults)
                report.json().value(fault);
            report.json().end().end();
        }
        for (const std::string& fault : faults)
            report.fail(Failure(different, Place{report.file(), 0, 0}, fault));
        return done;
    }

    bool header_ = false;
};

} // namespace

void add_name(CommandList& commands)
{
    commands.push_back(std::make_unique<NameCompose>());
    commands.push_back(std::make_unique<NameSplit>());
    commands.push_back(std::make_unique<NameCheck>());
}

} // namespace tool
