// Product file names, composed and split.
#include "support/outcome.h"

#include <array>
#include <cstring>
#include <map>
#include <set>

namespace {

using namespace support;

constexpr const char* create_name = "kh_create_filename";
constexpr const char* read_name = "kh_read_filename_items";

const Outcome too_long_item =
    failure(KH_WARN_LENGTH, create_name, ". Input argument maximum length exceeded");

/// The arguments of a name to compose.
struct Items {
    long satellite_id = 0;
    std::string file_class = "ABCD";
    std::string file_type = "TYPEA";
    std::string instance_id = "INST";
    long extension_type = KH_EXTENSION_KLV;
};

/// A buffer of the documented size with a guard behind it.
template <std::size_t length>
struct Buffer {
    std::array<char, length + 1> room;
    std::array<char, 64> guard;

    Buffer()
    {
        room.fill('#');
        guard.fill('#');
    }
    char* data() { return room.data(); }
    bool is_untouched() const { return room[0] == '#' && guard_holds(); }
    bool guard_holds() const { return std::string(guard.data(), guard.size()) == std::string(64, '#'); }
    std::string text() const
    {
        EXPECT_TRUE(guard_holds());
        return is_untouched() ? "(untouched)" : std::string(room.data(), strnlen(room.data(), room.size()));
    }
};

/// A composed name, and what the call returned and reported.
struct Composed {
    Buffer<64> name;
    long returned = untouched;
    Outcome outcome = success;
};

Composed compose(const Items& items)
{
    Composed composed;
    composed.outcome = outcome_of([&](long* status) {
        composed.returned = kh_create_filename(&items.satellite_id, items.file_class.c_str(),
                                               items.file_type.c_str(), items.instance_id.c_str(),
                                               &items.extension_type, composed.name.data(), status);
    });
    return composed;
}

std::string composed_name(const Items& items)
{
    const Composed composed = compose(items);
    EXPECT_EQ(composed.outcome, success);
    EXPECT_EQ(composed.returned, static_cast<long>(composed.name.text().size()));
    return composed.name.text();
}

/// The mission field of a satellite: what stands before the class.
std::string field_of(long satellite_id)
{
    const std::string name = composed_name({satellite_id});
    const std::string rest = "ABCD_TYPEA_INST.KLV";
    EXPECT_EQ(name.substr(name.size() - rest.size()), rest);
    return name.substr(0, name.size() - rest.size());
}

/// What reading a name leaves.
struct Split {
    long satellite_id = untouched;
    Buffer<4> file_class;
    Buffer<10> file_type;
    Buffer<42> instance_id;
    long returned = untouched;
    Outcome outcome = success;

    explicit Split(const std::string& name)
    {
        outcome = outcome_of([&](long* status) {
            returned = kh_read_filename_items(name.c_str(), &satellite_id, file_class.data(),
                                              file_type.data(), instance_id.data(), status);
        });
    }
    std::string texts() const
    {
        return file_class.text() + "|" + file_type.text() + "|" + instance_id.text();
    }
};

/// The satellites whose code is written, and how wide the field is; the last column is the code's length.
std::map<long, std::pair<std::size_t, std::size_t>> written_fields()
{
    std::map<long, std::pair<std::size_t, std::size_t>> fields;
    for (const long id : {41, 51, 61, 71, 101, 102, 103, 120})
        fields[id] = {3, 2};
    for (const long id : {91, 110, 111})
        fields[id] = {4, 3};
    for (long id = 125; id <= 146; ++id)
        fields[id] = {4, 3};
    for (const long id : {112, 113, 142})
        fields[id] = {4, 2};
    return fields;
}

} // namespace

// ---- Composing

TEST(CreateFilename, BeginsWithTheMissionField)
{
    const auto fields = written_fields();
    std::map<std::string, std::set<long>> satellites_of_field;
    for (long id = -2; id <= 410; ++id) {
        const std::string field = field_of(id);
        const auto known = fields.find(id);
        if (known == fields.end()) {
            EXPECT_EQ(field, "XXX_") << id;
            continue;
        }
        const auto [width, code_length] = known->second;
        EXPECT_EQ(field.size(), width) << id;
        EXPECT_EQ(field.find('_'), code_length) << id;
        EXPECT_EQ(field.substr(code_length), std::string(width - code_length, '_')) << id;
        satellites_of_field[field].insert(id);
    }
    EXPECT_EQ(satellites_of_field.size(), fields.size() - 2) << "three satellites share one";
    EXPECT_EQ(satellites_of_field[field_of(101)], (std::set<long>{101, 102, 103}));
    EXPECT_EQ(satellites_of_field.count("XXX_"), 0u);
}

TEST(CreateFilename, JoinsTheItems)
{
    EXPECT_EQ(composed_name({91}), "QH1_ABCD_TYPEA_INST.KLV");
    EXPECT_EQ(compose({91}).returned, 23);
    EXPECT_EQ(composed_name({41}), "QQ_ABCD_TYPEA_INST.KLV");
    EXPECT_EQ(composed_name({112}), "QG__ABCD_TYPEA_INST.KLV");
    EXPECT_EQ(composed_name({5, "T", "AUX_DATA_B", "2031_2032_001", 4}),
              "XXX_T_AUX_DATA_B_2031_2032_001.EOF");
    EXPECT_EQ(composed_name({147, "", "", "", 1}), "XXX_XXXX__.HDR");
}

TEST(CreateFilename, FillsAnEmptyClass)
{
    EXPECT_EQ(composed_name({91, ""}), "QH1_XXXX_TYPEA_INST.KLV");
}

TEST(CreateFilename, AppendsTheExtension)
{
    const std::pair<long, std::string> extensions[] = {
#include "cases/extensions.inc"
    };
    for (const auto& [type, extension] : extensions)
        EXPECT_EQ(composed_name({91, "ABCD", "TYPEA", "INST", type}), "QH1_ABCD_TYPEA_INST" + extension)
            << type;
}

TEST(CreateFilename, TakesItemsOfFullLength)
{
    EXPECT_EQ(composed_name({91, "ABCD", std::string(10, 't'), "INST"}), "QH1_ABCD_tttttttttt_INST.KLV");
    EXPECT_EQ(composed_name({91, "ABCD", "t", std::string(42, 'i')}),
              "QH1_ABCD_t_" + std::string(42, 'i') + ".KLV");
}

TEST(CreateFilename, RefusesItemsThatAreTooLong)
{
    for (const Items& items :
         {Items{91, "ABCDE"}, Items{91, "ABCD", std::string(11, 't')},
          Items{91, "ABCD", "TYPEA", std::string(43, 'i')}, Items{91, std::string(5000, 'c')},
          Items{91, "", "", std::string(5000, 'i')}}) {
        const Composed composed = compose(items);
        EXPECT_EQ(composed.outcome, too_long_item);
        EXPECT_EQ(composed.returned, KH_WARN_LENGTH);
        EXPECT_TRUE(composed.name.is_untouched());
    }
}

TEST(CreateFilename, TakesUpTo64Characters)
{
    const std::string type(10, 't');
    const std::string at_limit = composed_name({91, "ABCD", type, std::string(40, 'i')});
    EXPECT_EQ(at_limit.size(), 64u);

    for (const std::size_t length : {std::size_t{41}, std::size_t{42}}) {
        const Composed longer = compose({91, "ABCD", type, std::string(length, 'i')});
        EXPECT_EQ(longer.outcome,
                  failure(KH_ERR_FILE_NAME_LENGTH, create_name, ". The filename is too long"));
        EXPECT_EQ(longer.returned, KH_ERR_FILE_NAME_LENGTH);
        EXPECT_EQ(longer.name.text(),
                  ("QH1_ABCD_" + type + "_" + std::string(length, 'i') + ".KLV").substr(0, 64));
    }
    EXPECT_EQ(composed_name({91, "ABCD", type, std::string(42, 'i'), 3}).size(), 62u);
}

TEST(CreateFilename, ChecksItsArgumentsInOrder)
{
    const long id = 91;
    const long extension = 0;
    const std::string longer(100, 'x');
    struct Call {
        const long* id;
        const char *file_class, *file_type, *instance_id;
        const long* extension;
        Outcome expected;
    };
    const auto missing = [](const std::string& item) {
        return failure(KH_ERR_ARGUMENT, create_name, ". Input argument " + item + " is NULL");
    };
    const Call calls[] = {
        {nullptr, nullptr, nullptr, nullptr, nullptr, missing("satellite id")},
        {&id, nullptr, nullptr, nullptr, nullptr, missing("file_class")},
        {&id, longer.c_str(), nullptr, nullptr, nullptr, too_long_item},
        {&id, "", nullptr, nullptr, nullptr, missing("file_type")},
        {&id, "", longer.c_str(), nullptr, nullptr, too_long_item},
        {&id, "", "", nullptr, nullptr, missing("instance_id")},
        {&id, "", "", longer.c_str(), nullptr, too_long_item},
        {&id, "", "", "", nullptr, missing("file_extension_type")},
    };
    for (const Call& call : calls) {
        Buffer<64> name;
        long returned = untouched;
        EXPECT_EQ(outcome_of([&](long* status) {
                      returned = kh_create_filename(call.id, call.file_class, call.file_type,
                                                    call.instance_id, call.extension, name.data(), status);
                  }),
                  call.expected);
        EXPECT_EQ(returned, call.expected.status);
        EXPECT_TRUE(name.is_untouched());
    }
    EXPECT_EQ(
        outcome_of([&](long* status) { kh_create_filename(&id, "", "", "", &extension, nullptr, status); }),
        missing_argument(create_name));
    EXPECT_EQ(kh_create_filename(&id, "", "", "", nullptr, nullptr, nullptr), KH_ERR_ARGUMENT);
}

TEST(CreateFilename, MayComposeOverAnItem)
{
    const long id = 91;
    const long extension = 0;
    long status = untouched;
    char buffer[65] = "TYPEA";
    EXPECT_EQ(kh_create_filename(&id, "ABCD", buffer, buffer, &extension, buffer, &status), 24);
    EXPECT_STREQ(buffer, "QH1_ABCD_TYPEA_TYPEA.KLV");
}

// ---- Splitting

// Every code of two or three letters and digits, against what is known of the list.
TEST(ReadFilenameItems, KnowsEachSatelliteByOneCode)
{
    const std::string signs = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    std::map<long, std::vector<std::string>> codes;
    const auto try_code = [&](const std::string& code) {
        long id = untouched;
        long status = 0;
        Buffer<4> file_class;
        Buffer<10> file_type;
        Buffer<42> instance_id;
        EXPECT_EQ(kh_read_filename_items(code.c_str(), &id, file_class.data(), file_type.data(),
                                         instance_id.data(), &status),
                  1);
        if (id != 0)
            codes[id].push_back(code);
    };
    for (const char a : signs)
        for (const char b : signs) {
            try_code({a, b});
            for (const char c : signs)
                try_code({a, b, c});
        }
    std::set<long> expected = {41, 51, 61, 71, 91, 101, 120, 110, 111, 112, 113};
    for (long id = 125; id <= 154; ++id)
        expected.insert(id);
    for (const auto& [id, of_satellite] : codes) {
        EXPECT_EQ(expected.erase(id), 1u) << id;
        ASSERT_EQ(of_satellite.size(), 1u) << id;
        const std::string field = field_of(id);
        EXPECT_EQ(field.substr(0, field.find('_')), id < 147 ? of_satellite[0] : "XXX") << id;
    }
    EXPECT_TRUE(expected.empty()) << *expected.begin();
}

TEST(ReadFilenameItems, ReadsBackWhatIsComposed)
{
    for (const auto& [id, field] : written_fields()) {
        const Split split(composed_name({id, "OPER", "AUXDATA", "2031_2032_0001", 4}));
        EXPECT_EQ(split.outcome, success);
        EXPECT_EQ(split.returned, 6);
        EXPECT_EQ(split.satellite_id, id == 102 || id == 103 ? 101 : id);
        EXPECT_EQ(split.texts(), "OPER|AUXDATA|2031_2032_0001.EOF") << "the extension stays";
    }
}

TEST(ReadFilenameItems, FillsWhatTheNameHas)
{
    struct Name {
        const char* name;
        long parts;
        long satellite_id;
        const char* texts;
    };
    const Name names[] = {
#include "cases/file_names.inc"
    };
    for (const auto& [name, parts, satellite_id, texts] : names) {
        const Split split(name);
        EXPECT_EQ(split.outcome, success) << name;
        EXPECT_EQ(split.returned, parts) << name;
        EXPECT_EQ(split.satellite_id, satellite_id) << name;
        EXPECT_EQ(split.texts(), texts) << name;
    }
}

TEST(ReadFilenameItems, ChangesNothingForANameWithoutParts)
{
    for (const char* name : {"", "_", "____"}) {
        const Split split(name);
        EXPECT_EQ(split.outcome, success);
        EXPECT_EQ(split.returned, 0);
        EXPECT_EQ(split.satellite_id, untouched);
        EXPECT_EQ(split.texts(), "(untouched)|(untouched)|(untouched)");
    }
}

TEST(ReadFilenameItems, DoesNotWritePartsThatDoNotFit)
{
    const Outcome warning = failure(KH_WARN_LENGTH, read_name, ". Input argument maximum length exceeded");
    const Split fitting("QH1_ABCD_0123456789_" + std::string(20, 'i') + "_" + std::string(20, 'j') + "_k");
    EXPECT_EQ(fitting.outcome.status, KH_WARN_LENGTH) << "43 characters of an instance";

    struct Name {
        std::string name, texts;
        int warnings;
    };
    const std::string instance_of_42 = std::string(20, 'i') + "_" + std::string(19, 'j') + "_k";
    const std::string instance_of_43 = std::string(20, 'i') + "_" + std::string(20, 'j') + "_k";
    const Name names[] = {
        {"QH1_ABCD_0123456789_" + instance_of_42, "ABCD|0123456789|" + instance_of_42, 0},
        {"QH1_ABCD_0123456789_" + instance_of_43, "ABCD|0123456789|(untouched)", 1},
        {"QH1_ABCDE_0123456789_i_j_k", "(untouched)|0123456789|i_j_k", 1},
        {"QH1_ABCD_0123456789A_i_j_k", "ABCD|(untouched)|i_j_k", 1},
        {"QH1_ABCDE_0123456789A_i_j_k", "(untouched)|(untouched)|i_j_k", 2},
        {"QH1_" + std::string(60, 'c'), "(untouched)|(untouched)|(untouched)", 1},
        {"QH1_c_" + std::string(58, 't'), "c|(untouched)|(untouched)", 1},
    };
    for (const auto& [name, texts, warnings] : names) {
        const Split split(name);
        Outcome expected = success;
        for (int i = 0; i < warnings; ++i)
            expected = {warning.status, expected.report + warning.report};
        EXPECT_EQ(split.outcome, expected) << name;
        EXPECT_EQ(split.returned, name.find("_k") == std::string::npos ? (texts[0] == 'c' ? 3 : 2) : 6)
            << name;
        EXPECT_EQ(split.satellite_id, 91);
        EXPECT_EQ(split.texts(), texts) << name;
    }
}

TEST(ReadFilenameItems, TakesUpTo64Characters)
{
    const Split at_limit("QH1_" + std::string(60, 'c'));
    EXPECT_EQ(at_limit.returned, 2);
    for (const std::size_t length : {std::size_t{61}, std::size_t{100000}}) {
        const Split split("QH1_" + std::string(length, 'c'));
        EXPECT_EQ(split.outcome, failure(KH_ERR_FILE_NAME_LENGTH, read_name, ". The filename is too long"));
        EXPECT_EQ(split.returned, KH_ERR_FILE_NAME_LENGTH);
        EXPECT_EQ(split.satellite_id, untouched);
        EXPECT_EQ(split.texts(), "(untouched)|(untouched)|(untouched)");
    }
}

TEST(ReadFilenameItems, NeedsItsArguments)
{
    long id = untouched;
    char room[65] = "";
    long returned = 0;
    EXPECT_EQ(outcome_of([&](long* status) {
                  returned = kh_read_filename_items(nullptr, nullptr, nullptr, nullptr, nullptr, status);
              }),
              failure(KH_ERR_ARGUMENT, read_name, ". Input argument satellite id is NULL"));
    EXPECT_EQ(returned, KH_ERR_ARGUMENT);
    for (int missing = 0; missing < 4; ++missing) {
        EXPECT_EQ(outcome_of([&](long* status) {
                      returned = kh_read_filename_items(
                          "QH1_A_B_1_2_3", missing == 0 ? nullptr : &id, missing == 1 ? nullptr : room,
                          missing == 2 ? nullptr : room, missing == 3 ? nullptr : room, status);
                  }),
                  missing_argument(read_name));
        EXPECT_EQ(returned, KH_ERR_ARGUMENT);
        EXPECT_EQ(id, untouched);
        EXPECT_STREQ(room, "");
    }
    EXPECT_EQ(kh_read_filename_items("QH1_A_B_1_2_3", &id, room, room + 10, room + 20, nullptr), 6);
    EXPECT_EQ(id, 91);
}
