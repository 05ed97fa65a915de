#include "support/outcome.h"

#include <climits>
#include <cstring>
#include <thread>
#include <vector>

namespace {

using support::report_of;
using support::written_to_stderr;

const int verb_flag_at_load = verb_flag;

const struct {
    long code;
    const char* text;
} table[] = {
#include "cases/statuses.inc"
};

const long unknown_codes[] = {5, -39, 100, -512, LONG_MAX, LONG_MIN};

/// A record as a call holds it; its text is filled with 'x' up to a length.
struct Record : kh_error_record {
    explicit Record(std::size_t filled = 0)
    {
        kh_init_error(this);
        std::memset(message, 'x', filled);
        message[filled] = '\0';
        length = static_cast<long>(filled);
    }
    std::string text() const { return message; }
};

TEST(MessageTable, GivesTheTextOfEveryCode)
{
    for (const auto& row : table) {
        char buffer[KH_MESSAGE_SIZE];
        EXPECT_EQ(kh_basic_error_msg(row.code, buffer), buffer);
        EXPECT_STREQ(buffer, row.text) << "code " << row.code;
    }
}

TEST(MessageTable, CallsEveryOtherCodeUnknown)
{
    for (const long code : unknown_codes) {
        char buffer[KH_MESSAGE_SIZE];
        EXPECT_STREQ(kh_basic_error_msg(code, buffer), "KH: Unknown error code") << code;
    }
}

TEST(InitError, EmptiesTheRecord)
{
    Record record(10);
    record.code = -3;
    kh_init_error(&record);
    EXPECT_EQ(record.code, 0);
    EXPECT_EQ(record.length, 0);
    EXPECT_EQ(record.text(), "");
}

TEST(SetError, ReplacesCodeAndTextAndReturnsTheLength)
{
    for (const auto& row : table) {
        Record record(300);
        EXPECT_EQ(kh_set_error(row.code, &record), static_cast<long>(std::strlen(row.text)));
        EXPECT_EQ(record.code, row.code);
        EXPECT_EQ(record.text(), row.text);
        EXPECT_EQ(record.length, static_cast<long>(std::strlen(row.text)));
    }
}

TEST(SetError, StoresAnUnknownCodeAsMinusOne)
{
    for (const long code : unknown_codes) {
        Record record;
        EXPECT_EQ(kh_set_error(code, &record), 22);
        EXPECT_EQ(record.code, -1) << code;
        EXPECT_EQ(record.text(), "KH: Unknown error code");
    }
}

TEST(ErrorRecord, MayBeNull)
{
    kh_init_error(nullptr);
    EXPECT_EQ(kh_set_error(-3, nullptr), 0);
    kh_add_error_info("x", 1, nullptr);
}

TEST(AddErrorInfo, AppendsAPieceThatFitsAndDropsAnyOtherWhole)
{
    const std::string source(600, 'y');
    const struct {
        std::size_t filled;
        long length;
        std::size_t appended;
    } rows[] = {{0, 3, 3},   {0, 0, 0},   {0, 511, 511}, {0, 512, 0}, {500, 11, 11},   {500, 12, 0},
                {510, 1, 1}, {510, 2, 0}, {511, 0, 0},   {511, 1, 0}, {3, LONG_MAX, 0}};
    for (const auto& row : rows) {
        Record record(row.filled);
        kh_add_error_info(source.c_str(), row.length, &record);
        EXPECT_EQ(record.text(), std::string(row.filled, 'x') + std::string(row.appended, 'y'))
            << row.filled << " + " << row.length;
        EXPECT_EQ(record.length, static_cast<long>(row.filled + row.appended));
    }
}

TEST(AddErrorInfo, EndsAtTheEndOfAShorterText)
{
    Record record;
    kh_add_error_info("ab", 500, &record);
    EXPECT_EQ(record.text(), "ab");
    EXPECT_EQ(record.length, 2);
}

TEST(AddErrorInfo, TestsForRoomWithTheLengthGivenEvenIfTheTextIsShorter)
{
    Record record;
    kh_add_error_info("ab", 512, &record);
    EXPECT_EQ(record.text(), "");
    EXPECT_EQ(record.length, 0);
}

TEST(AddErrorInfo, AppendsNothingForANegativeLengthOrANullText)
{
    Record record(5);
    kh_add_error_info("ab", -1, &record);
    kh_add_error_info(nullptr, 2, &record);
    EXPECT_EQ(record.text(), "xxxxx");
    EXPECT_EQ(record.length, 5);
}

TEST(HandleError, BeginsWithTheTextOfTheCodeWhenAsked)
{
    for (const long set : {1L, 2L, -1L}) {
        Record record(20);
        EXPECT_EQ(kh_handle_error(&record, -11, set, "\n\tFunction: %s. Path: %s", "f", "/a"), -11);
        EXPECT_EQ(record.code, -11);
        EXPECT_EQ(record.text(), "KH: No element found\n\tFunction: f. Path: /a");
        EXPECT_EQ(record.length, static_cast<long>(record.text().size()));
    }
}

TEST(HandleError, LeavesCodeAndTextAloneWhenNotAskedAndAppends)
{
    Record record;
    kh_set_error(-3, &record);
    EXPECT_EQ(kh_handle_error(&record, -11, 0, "+%ld", 7L), -11);
    EXPECT_EQ(record.code, -3);
    EXPECT_EQ(record.text(), "KH: Argument passed is NULL or out of range+7");
}

TEST(HandleError, ReturnsAnUnknownCodeUnchanged)
{
    for (const long code : unknown_codes) {
        Record record;
        EXPECT_EQ(kh_handle_error(&record, code, 1, ".%d", 1), code);
        EXPECT_EQ(record.code, -1);
        EXPECT_EQ(record.text(), "KH: Unknown error code.1");
    }
}

TEST(HandleError, CutsADetailSoThatTheRecordHolds510Characters)
{
    const std::string detail(2000, 'd');
    const struct {
        std::size_t filled, length;
    } rows[] = {{0, 510}, {100, 510}, {509, 510}, {510, 510}, {511, 511}};
    for (const auto& row : rows) {
        Record record(row.filled);
        kh_handle_error(&record, -3, 0, "%s", detail.c_str());
        EXPECT_EQ(record.text(), std::string(row.filled, 'x') + std::string(row.length - row.filled, 'd'));
        EXPECT_EQ(record.length, static_cast<long>(row.length));
    }
}

TEST(HandleError, CutsADetailBehindATableText)
{
    Record record;
    kh_handle_error(&record, -11, 1, "%s", std::string(2000, 'd').c_str());
    EXPECT_EQ(record.text(), "KH: No element found" + std::string(490, 'd'));
}

TEST(HandleError, PrintsTheWholeRecordAndANewlineInVerboseMode)
{
    Record record;
    EXPECT_EQ(report_of([&] { kh_handle_error(&record, -7, 1, "\n\tFunction: %s", "kh_tree_rewind"); }),
              "KH: No XML document has been parsed or created\n\tFunction: kh_tree_rewind\n");
    // A second report of the same call prints the record again, with what was added.
    EXPECT_EQ(report_of([&] { kh_handle_error(&record, -7, 0, "%s", " 100%"); }),
              "KH: No XML document has been parsed or created\n\tFunction: kh_tree_rewind 100%\n");
}

TEST(HandleError, PrintsAWarningLikeAnError)
{
    Record record;
    EXPECT_EQ(report_of([&] { kh_handle_error(&record, 4, 1, "%s", "!"); }), "KH: Header already exists!\n");
}

TEST(VerbFlag, IsSilentWhenTheLibraryIsLoaded)
{
    EXPECT_EQ(verb_flag_at_load, 0);
}

TEST(VerbFlag, IsSetByVerboseAndSilent)
{
    kh_verbose();
    EXPECT_EQ(verb_flag, 1);
    kh_silent();
    EXPECT_EQ(verb_flag, 0);
}

/// What both reporting functions print while the switch has a value that the program itself wrote.
std::string printed_with_flag(int flag)
{
    const std::string text = written_to_stderr([flag] {
        Record record;
        verb_flag = flag;
        EXPECT_EQ(kh_handle_error(&record, -3, 1, "%s", "."), -3);
        EXPECT_EQ(record.code, -3);
        KH_handle_xml_error(nullptr, "%s", "xml");
    });
    kh_silent();
    return text;
}

TEST(VerbFlag, MeansVerboseWithTheValueOneAlone)
{
    for (const int flag : {0, 2, -1, 256, INT_MAX})
        EXPECT_EQ(printed_with_flag(flag), "") << flag;
    EXPECT_EQ(printed_with_flag(1), "KH: Argument passed is NULL or out of range.\nxml");
}

TEST(HandleXmlError, WritesTheMessageAsItIsWithoutANewline)
{
    int context = 0;
    EXPECT_EQ(report_of([&] { KH_handle_xml_error(&context, "%s:%d: %s", "file", 3, "100%"); }),
              "file:3: 100%");
}

TEST(HandleXmlError, CutsTheMessageTo1023Characters)
{
    const auto printed = [](std::size_t length) {
        return report_of([&] { KH_handle_xml_error(nullptr, "%s", std::string(length, 'm').c_str()); });
    };
    EXPECT_EQ(printed(1022), std::string(1022, 'm'));
    EXPECT_EQ(printed(1023), std::string(1023, 'm'));
    EXPECT_EQ(printed(1024), std::string(1023, 'm'));
    EXPECT_EQ(printed(5000), std::string(1023, 'm'));
}

TEST(Reports, OfThreadsDoNotMix)
{
    constexpr int count = 200;
    const auto reporter = [](char letter) {
        for (int i = 0; i < count; ++i) {
            Record record;
            kh_handle_error(&record, -11, 1, "%s", std::string(50, letter).c_str());
            EXPECT_EQ(record.text(), "KH: No element found" + std::string(50, letter));
        }
    };
    std::vector<std::thread> threads;
    for (const char letter : {'a', 'b', 'c', 'd'})
        threads.emplace_back(reporter, letter);
    for (std::thread& thread : threads)
        thread.join();
}

TEST(AddErrorInfo, AppendsNothingToARecordWithAnImpossibleLength)
{
    for (const long length : {-1L, 512L, LONG_MAX, LONG_MIN}) {
        Record record(5);
        record.length = length;
        kh_add_error_info("ab", 2, &record);
        EXPECT_EQ(record.text(), "xxxxx") << length;
        EXPECT_EQ(record.length, length);
    }
}

TEST(HandleError, DoesWithoutARecordOrADetail)
{
    EXPECT_EQ(kh_handle_error(nullptr, -11, 1, "%s", "detail"), -11);
    Record record;
    EXPECT_EQ(kh_handle_error(&record, -11, 1, nullptr), -11);
    EXPECT_EQ(record.text(), "KH: No element found");
}

TEST(MessageTable, GivesNoTextWithoutABuffer)
{
    EXPECT_EQ(kh_basic_error_msg(-3, nullptr), nullptr);
}

TEST(HandleXmlError, PrintsNothingForNoMessageOrAnEmptyOne)
{
    EXPECT_EQ(report_of([] { KH_handle_xml_error(nullptr, nullptr); }), "");
    EXPECT_EQ(report_of([] { KH_handle_xml_error(nullptr, "%s", ""); }), "");
}

} // namespace
