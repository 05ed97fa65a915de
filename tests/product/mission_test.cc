// The mission list: names, ids and extension types.
#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <kalv/product.h>
#include <set>
#include <string>
#include <utility>

namespace {

const std::pair<long, const char*> missions[] = {
    {11, "Veltoran1"},   {12, "Veltoran2"},   {21, "Draskuil"},    {31, "Polmethi1"},   {32, "Polmethi2"},
    {33, "Polmethi3"},   {41, "Quarvosk"},    {51, "Brendulo"},    {61, "Tulvekka"},    {71, "Ostrimbel"},
    {81, "Yalquorn"},    {91, "Hespodrin"},   {101, "Murvantel1"}, {102, "Murvantel2"}, {103, "Murvantel3"},
    {110, "Kesterwil1"}, {111, "Kesterwil2"}, {112, "Grontaval"},  {113, "Ilvasker"},   {120, "Zandrupo"},
    {125, "Fendrashi1"}, {126, "Fendrashi2"}, {127, "Fendrashi3"}, {128, "Fendrashi4"}, {129, "Norquemba1"},
    {130, "Norquemba2"}, {131, "Wilgastor1"}, {132, "Wilgastor2"}, {133, "Wilgastor3"}, {134, "Thessavik1"},
    {135, "Thessavik2"}, {136, "Rombuldis"},  {137, "Clivantor1"}, {138, "Clivantor2"}, {139, "Clivantor3"},
    {140, "Umbrexal1"},  {141, "Umbrexal2"},  {142, "Sparvolin"},  {143, "Jaldrimor1"}, {144, "Jaldrimor2"},
    {145, "Jaldrimor3"}, {146, "Jaldrimor4"}, {147, "Eskovanti1"}, {148, "Eskovanti2"}, {149, "Droswelk"},
    {150, "Pintaquil1"}, {151, "Pintaquil2"}, {152, "Pintaquil3"}, {153, "Lorvemist"},  {154, "Havrundel"},
    {200, "Generic"},    {300, "GenericGeo"}, {301, "Geoskvarn"},  {400, "GenericMeo"},
};

constexpr long generic = 400;

std::string in_capitals(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return text;
}

} // namespace

TEST(Missions, AreFiftyFourOfOneNameEach)
{
    std::set<std::string> names;
    std::set<std::string> capital_names;
    for (const auto& [id, name] : missions) {
        names.insert(name);
        capital_names.insert(in_capitals(name));
        EXPECT_LE(std::string(name).size(), 55u);
    }
    EXPECT_EQ(names.size(), 54u);
    EXPECT_EQ(capital_names.size(), 54u);
}

TEST(Missions, AreFoundByName)
{
    for (const auto& [id, name] : missions) {
        EXPECT_EQ(KH_Get_sat_id(name), id) << name;
        EXPECT_EQ(KH_Get_sat_id_capital_letters(in_capitals(name).c_str()), id) << name;
    }
}

TEST(Missions, AreNotFoundInOtherLetters)
{
    for (const auto& [id, name] : missions) {
        EXPECT_EQ(KH_Get_sat_id(in_capitals(name).c_str()), generic) << name;
        EXPECT_EQ(KH_Get_sat_id_capital_letters(name), generic) << name;
        EXPECT_EQ(KH_Get_sat_id((std::string(name) + " ").c_str()), generic) << name;
        EXPECT_EQ(KH_Get_sat_id_capital_letters((in_capitals(name) + "1").c_str()), generic) << name;
        const std::string shorter = std::string(name).substr(0, std::string(name).size() - 3);
        EXPECT_EQ(KH_Get_sat_id(shorter.c_str()), shorter == "Generic" ? 200 : generic) << name;
        EXPECT_EQ(KH_Get_sat_id_capital_letters(in_capitals(shorter).c_str()),
                  shorter == "Generic" ? 200 : generic)
            << name;
    }
}

TEST(Missions, AreGenericWhenUnknown)
{
    for (const char* name : {"", "UNDEFINED", "Undefined", "No Such Mission", "11", " Generic", "generic"}) {
        EXPECT_EQ(KH_Get_sat_id(name), generic) << name;
        EXPECT_EQ(KH_Get_sat_id_capital_letters(name), generic) << name;
    }
    EXPECT_EQ(KH_Get_sat_id(nullptr), generic);
    EXPECT_EQ(KH_Get_sat_id_capital_letters(nullptr), generic);
}

TEST(Missions, HaveAnExtensionType)
{
    const std::set<long> klv = {11, 12, 21, 31, 32, 33, 41, 51, 61, 71, 81, 101, 102, 103, 120};
    for (long id = -10; id <= 500; ++id)
        EXPECT_EQ(KH_Get_file_extension_type(id), klv.count(id) ? 0 : 4) << id;
}
