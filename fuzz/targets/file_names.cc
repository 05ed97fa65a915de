// Product file names, composed and split, against a model of both; the object interface does the same.
#include "harness.h"
#include "texts.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t most_characters = 64;
constexpr std::size_t most_class = 4;
constexpr std::size_t most_type = 10;
constexpr std::size_t most_instance = 42;

/// Some satellites, the field that a name begins with, and the mission code in it.
struct Mission {
    long satellite;
    const char* field;
    const char* code;
};
const Mission missions[] = {{41, "QQ_", "QQ"},    {91, "QH1_", "QH1"}, {101, "QM_", "QM"},
                            {112, "QG__", "QG"},  {120, "QZ_", "QZ"},  {137, "QC1_", "QC1"},
                            {999, "XXX_", "XXX"}, {11, "XXX_", "XXX"}, {147, "XXX_", "XXX"}};

std::string item(fuzz::Bytes& bytes, std::size_t fitting)
{
    const char* const some[] = {"",  "OPER", "TEST", "AUX_ORBRES", "20260101T000000_20260102T000000_0001",
                                "_", "X"};
    return bytes.ConsumeBool() ? bytes.PickValueInArray(some) : fuzz::any_text(bytes, fitting + 2);
}

struct Composed {
    long status;
    std::string name;
};
Composed composed(const Mission& mission, const std::string& file_class, const std::string& type,
                  const std::string& instance, long extension)
{
    if (file_class.size() > most_class || type.size() > most_type || instance.size() > most_instance)
        return {KH_WARN_LENGTH, ""};
    const char* const extensions[] = {".KLV", ".HDR", ".DBL", "", ".EOF"};
    const std::string name = mission.field + (file_class.empty() ? "XXXX" : file_class) + "_" + type + "_" +
                             instance + (extension >= 0 && extension <= 4 ? extensions[extension] : "");
    return {name.size() > most_characters ? long{KH_ERR_FILE_NAME_LENGTH} : long{KH_OK},
            name.substr(0, most_characters)};
}

std::vector<std::string> parts_of(const std::string& name)
{
    std::vector<std::string> parts;
    for (std::size_t at = 0; (at = name.find_first_not_of('_', at)) != std::string::npos;) {
        const std::size_t end = std::min(name.find('_', at), name.size());
        parts.push_back(name.substr(at, end - at));
        at = end;
    }
    return parts;
}

/// A buffer of the size that the call asks for keeps what it held, or receives an item that fits.
void check_item(const std::string& read, const std::string& expected, std::size_t room)
{
    fuzz::check(read == (expected.size() <= room ? expected : "?"), "an item is read from a name");
}

void check_split(const std::string& name)
{
    long satellite = -1;
    char file_class[most_class + 1] = "?";
    char type[most_type + 1] = "?";
    char instance[most_instance + 1] = "?";
    long status = KH_OK;
    long count = 0;
    {
        const torture::memory::Inside inside;
        count = kh_read_filename_items(name.c_str(), &satellite, file_class, type, instance, &status);
    }
    fuzz::check_described(status);
    if (name.size() > most_characters) {
        fuzz::check(status == KH_ERR_FILE_NAME_LENGTH, "a name that is too long is reported");
        return;
    }
    if (status == KH_ERR_MEMORY)
        return;
    const std::vector<std::string> parts = parts_of(name);
    fuzz::check(count == static_cast<long>(parts.size()), "all parts of a name are counted");
    if (!parts.empty())
        for (const Mission& mission : missions)
            if (parts[0] == mission.code)
                fuzz::check(satellite == (std::strcmp(mission.code, "XXX") == 0 ? 0 : mission.satellite),
                            "a code stands for its satellite");
    if (parts.size() >= 2)
        check_item(file_class, parts[1], most_class);
    if (parts.size() >= 3)
        check_item(type, parts[2], most_type);
    if (parts.size() >= 6)
        check_item(instance, parts[3] + "_" + parts[4] + "_" + parts[5], most_instance);
    else
        fuzz::check(std::string(instance) == "?", "an instance stands in six parts");

    const long thrown = fuzz::status_of_object([&] {
        std::string copy = name;
        const KALV::FileNameItems items = KALV::XmlFile().getFileNameItems(copy);
        const torture::memory::Outside outside;
        fuzz::check(copy == name, "a name stays as it was");
        fuzz::check(parts.size() < 2 || items.fileClass == parts[1], "the object finds the class");
        fuzz::check(parts.size() < 3 || items.fileType == parts[2], "the object finds the type");
    });
    fuzz::check_result(thrown == KH_OK, "an object splits what has a name's length");
}

} // namespace

void fuzz::run(Bytes& bytes)
{
    const Mission& mission = missions[bytes.ConsumeIntegralInRange<std::size_t>(0, std::size(missions) - 1)];
    const long extension = bytes.ConsumeIntegralInRange(-1L, 5L);
    const std::string file_class = item(bytes, most_class);
    const std::string type = item(bytes, most_type);
    const std::string instance = item(bytes, most_instance);
    const Composed expected = composed(mission, file_class, type, instance, extension);
    char name[most_characters + 1] = "";
    const long status = status_of(kh_create_filename, &mission.satellite, file_class.c_str(), type.c_str(),
                                  instance.c_str(), &extension, name);
    check(status == expected.status && name == expected.name, "a name is composed of its items");
    const long thrown = status_of_object([&] {
        const std::string made =
            KALV::XmlFile().createFileName(mission.satellite, file_class, type, instance, extension);
        const torture::memory::Outside outside;
        check(made == expected.name, "the object composes the same name");
    });
    check_result(thrown == expected.status, "the object reports the same status");
    check_split(name);
    const std::string any = any_text(bytes, 80);
    check_split(any);
    KH_Get_sat_id(any.c_str());
    KH_Get_sat_id_capital_letters(any.c_str());
    const long type_of_extension = KH_Get_file_extension_type(bytes.ConsumeIntegral<long>());
    check(type_of_extension == KH_EXTENSION_KLV || type_of_extension == KH_EXTENSION_EOF,
          "a satellite's files have one of two extensions");
}
