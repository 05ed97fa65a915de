// The family's mission list: everything that depends on the satellite stands in this one table.
#include "product/mission.h"

#include <kalv/product.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

namespace kh {

namespace {

constexpr long klv = KH_EXTENSION_KLV;
constexpr long eof = KH_EXTENSION_EOF;

// In ascending order. Satellites 101 to 103 share a code, which is read back as 101; the codes of 147 to 154
// are read but not written: callers rely on both.
constexpr Mission missions[] = {
    {11, "Veltoran1", klv, nullptr},    {12, "Veltoran2", klv, nullptr},
    {21, "Draskuil", klv, nullptr},     {31, "Polmethi1", klv, nullptr},
    {32, "Polmethi2", klv, nullptr},    {33, "Polmethi3", klv, nullptr},
    {41, "Quarvosk", klv, "QQ", 3},     {51, "Brendulo", klv, "QB", 3},
    {61, "Tulvekka", klv, "QT", 3},     {71, "Ostrimbel", klv, "QO", 3},
    {81, "Yalquorn", klv, nullptr},     {91, "Hespodrin", eof, "QH1", 4},
    {101, "Murvantel1", klv, "QM", 3},  {102, "Murvantel2", klv, "QM", 3},
    {103, "Murvantel3", klv, "QM", 3},  {110, "Kesterwil1", eof, "QK1", 4},
    {111, "Kesterwil2", eof, "QK2", 4}, {112, "Grontaval", eof, "QG", 4},
    {113, "Ilvasker", eof, "QI", 4},    {120, "Zandrupo", klv, "QZ", 3},
    {125, "Fendrashi1", eof, "QF1", 4}, {126, "Fendrashi2", eof, "QF2", 4},
    {127, "Fendrashi3", eof, "QF3", 4}, {128, "Fendrashi4", eof, "QF4", 4},
    {129, "Norquemba1", eof, "QN1", 4}, {130, "Norquemba2", eof, "QN2", 4},
    {131, "Wilgastor1", eof, "QW1", 4}, {132, "Wilgastor2", eof, "QW2", 4},
    {133, "Wilgastor3", eof, "QW3", 4}, {134, "Thessavik1", eof, "QX1", 4},
    {135, "Thessavik2", eof, "QX2", 4}, {136, "Rombuldis", eof, "QR1", 4},
    {137, "Clivantor1", eof, "QC1", 4}, {138, "Clivantor2", eof, "QC2", 4},
    {139, "Clivantor3", eof, "QC3", 4}, {140, "Umbrexal1", eof, "QU1", 4},
    {141, "Umbrexal2", eof, "QU2", 4},  {142, "Sparvolin", eof, "QS", 4},
    {143, "Jaldrimor1", eof, "QJ1", 4}, {144, "Jaldrimor2", eof, "QJ2", 4},
    {145, "Jaldrimor3", eof, "QJ3", 4}, {146, "Jaldrimor4", eof, "QJ4", 4},
    {147, "Eskovanti1", eof, "QE1"},    {148, "Eskovanti2", eof, "QE2"},
    {149, "Droswelk", eof, "QD1"},      {150, "Pintaquil1", eof, "QP1"},
    {151, "Pintaquil2", eof, "QP2"},    {152, "Pintaquil3", eof, "QP3"},
    {153, "Lorvemist", eof, "QL1"},     {154, "Havrundel", eof, "QY1"},
    {200, "Generic", eof, nullptr},     {300, "GenericGeo", eof, nullptr},
    {301, "Geoskvarn", eof, nullptr},   {400, "GenericMeo", eof, nullptr},
};
static_assert(std::size(missions) == 54);

/// What an unknown name stands for.
constexpr long generic_satellite = 400;

template <class Matches>
const Mission* first_mission(Matches matches) noexcept
{
    const Mission* found = std::find_if(std::begin(missions), std::end(missions), matches);
    return found == std::end(missions) ? nullptr : found;
}

constexpr char capital(char letter) noexcept
{
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

bool is_in_capitals(std::string_view capitals, std::string_view name) noexcept
{
    return std::equal(capitals.begin(), capitals.end(), name.begin(), name.end(),
                      [](char given, char letter) { return given == capital(letter); });
}

template <class Matches>
long satellite_named(const char* name, Matches matches) noexcept
{
    const Mission* mission =
        name ? first_mission([&](const Mission& row) { return matches(name, row.name); }) : nullptr;
    return mission ? mission->satellite_id : generic_satellite;
}

} // namespace

const Mission* mission_of_satellite(long satellite_id) noexcept
{
    return first_mission([&](const Mission& row) { return row.satellite_id == satellite_id; });
}

const Mission* mission_of_code(const char* code) noexcept
{
    return first_mission([&](const Mission& row) { return row.code && std::strcmp(row.code, code) == 0; });
}

} // namespace kh

long KH_Get_sat_id(const char* name)
{
    return kh::satellite_named(name,
                               [](std::string_view given, std::string_view row) { return given == row; });
}

long KH_Get_sat_id_capital_letters(const char* name)
{
    return kh::satellite_named(name, kh::is_in_capitals);
}

long KH_Get_file_extension_type(long sat_id)
{
    const kh::Mission* mission = kh::mission_of_satellite(sat_id);
    return mission ? mission->extension_type : long{KH_EXTENSION_EOF};
}
