#include "support/support.h"

#include <algorithm>
#include <iterator>

namespace {

TEST(Version, IsAConstantOf100ZeroFilledCharacters)
{
    static_assert(sizeof KH_FILE_HANDLING_VERSION == 100, "callers copy 100 characters");
    EXPECT_STREQ(KH_FILE_HANDLING_VERSION, "KH_VERS_4.27");
    EXPECT_TRUE(std::all_of(KH_FILE_HANDLING_VERSION + 12, std::end(KH_FILE_HANDLING_VERSION),
                            [](char c) { return c == '\0'; }));
}

TEST(Version, OfTheHeadersIsTheLibrarys)
{
    EXPECT_EQ(std::string("KH_VERS_") + KH_VERSION_TEXT, KH_FILE_HANDLING_VERSION);
    EXPECT_EQ(std::to_string(KH_VERSION_MAJOR) + "." + std::to_string(KH_VERSION_MINOR), KH_VERSION_TEXT);
}

TEST(GetLibVersion, FillsThirteenBytesAndReturnsTheBuffer)
{
    char buffer[14];
    std::fill(std::begin(buffer), std::end(buffer), '#');
    EXPECT_EQ(KH_Get_lib_version(buffer), buffer);
    EXPECT_STREQ(buffer, "KH_VERS_4.27");
    EXPECT_EQ(buffer[13], '#');
    EXPECT_EQ(KH_Get_lib_version(nullptr), nullptr);
}

TEST(GetLibVersionNumber, IsThatOfTheTextAndOfTheHeaders)
{
    char text[14];
    const long number = KH_Get_lib_version_number();
    EXPECT_EQ("KH_VERS_" + std::to_string(number / 1000) + "." + std::to_string(number % 1000),
              KH_Get_lib_version(text));
    EXPECT_EQ(number, KH_VERSION_NUMBER);
    EXPECT_EQ(number, 4027);
}

TEST(GetCompatibilityTable, PointsAtTheMarkInsideTheTable)
{
    static_assert(sizeof KH_Library_compat == 100, "one row of 100 characters");
    EXPECT_EQ(KH_Get_compatibility_table(), KH_Library_compat[0]);
    EXPECT_STREQ(KH_Get_compatibility_table(), "KH_KH_COMPAT_4.27");
}

// Callers rely on this sense, the opposite of strcmp's.
TEST(Strcmp, IsOneForEqualTexts)
{
    const struct {
        const char *a, *b;
        long equal;
    } rows[] = {{"", "", 1},    {"a", "a", 1},     {"a", "b", 0},    {"a", "ab", 0},
                {"ab", "a", 0}, {"", "a", 0},      {"A", "a", 0},    {"\xc3\xa4", "\xc3\xa4", 1},
                {"b", "a", 0},  {nullptr, "a", 0}, {"a", nullptr, 0}};
    for (const auto& row : rows)
        EXPECT_EQ(KH_strcmp(row.a, row.b), row.equal)
            << (row.a ? row.a : "null") << " and " << (row.b ? row.b : "null");
}

TEST(Strcmp, ComparesContentNotAddresses)
{
    const std::string one = "text", other = "text";
    EXPECT_EQ(KH_strcmp(one.c_str(), other.c_str()), 1);
}

TEST(CheckLibraryVersion, PrintsTheBannerOnStandardOutput)
{
    long result = 1;
    EXPECT_EQ(support::written_to_stdout([&] { result = kh_check_library_version(); }),
              "\nCurrent Kalvira libraries:\n"
              "------------------------------------ \n"
              "kalvira_file_handling version = 4.27\n");
    EXPECT_EQ(result, 0);
}

TEST(CheckLibraryVersion, PrintsNothingOnStandardErrorInVerboseMode)
{
    EXPECT_EQ(support::report_of([] { support::written_to_stdout([] { kh_check_library_version(); }); }), "");
}

} // namespace
