// The page that explains the statuses must name those of the header, with the library's own texts.
#include "support/support.h"

#include <fstream>
#include <map>
#include <regex>
#include <string>

namespace {

std::vector<std::string> lines_of(const std::string& file)
{
    std::ifstream stream(std::string(KALV_SOURCE_FOLDER "/") + file);
    EXPECT_TRUE(stream) << file;
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::map<long, std::string> codes_of_the_header()
{
    const std::regex enumerator(R"(^\s*(KH_(?:OK|ERR_\w+|WARN_\w+)) = (-?\d+),?\s.*)");
    std::map<long, std::string> names;
    for (const std::string& line : lines_of("include/kalv/status.h"))
        if (std::smatch match; std::regex_match(line, match, enumerator))
            names[std::stol(match[2])] = match[1];
    return names;
}

struct Row {
    std::string name, text, cause, cure;
};

std::map<long, Row> rows_of_the_page()
{
    const std::regex row(R"(^\| (-?\d+) \| `(\w+)` \| (.*?) \| (.*?) ?\| (.*?) ?\|$)");
    std::map<long, Row> rows;
    for (const std::string& line : lines_of("docs/statuses.md"))
        if (std::smatch match; std::regex_match(line, match, row)) {
            EXPECT_TRUE(rows.emplace(std::stol(match[1]), Row{match[2], match[3], match[4], match[5]}).second)
                << "twice: " << line;
        }
    return rows;
}

TEST(StatusPage, ExplainsEachStatusOfTheHeaderOnce)
{
    const std::map<long, std::string> names = codes_of_the_header();
    const std::map<long, Row> rows = rows_of_the_page();
    EXPECT_EQ(names.size(), 43U) << "the codes -38 to 4";
    EXPECT_EQ(rows.size(), names.size());
    for (const auto& [code, name] : names) {
        ASSERT_EQ(rows.count(code), 1U) << "no row for " << name;
        EXPECT_EQ(rows.at(code).name, name);
    }
}

TEST(StatusPage, ShowsTheTextsOfTheLibrary)
{
    for (const auto& [code, row] : rows_of_the_page()) {
        char text[KH_MESSAGE_SIZE];
        EXPECT_EQ(row.text, kh_basic_error_msg(code, text)) << row.name;
    }
}

TEST(StatusPage, GivesEachStatusThatIsRaisedACause)
{
    for (const auto& [code, row] : rows_of_the_page())
        EXPECT_EQ(row.cause.empty(), code == KH_OK) << row.name;
}

} // namespace
