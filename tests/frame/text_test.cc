#include "support/outcome.h"

#include <algorithm>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

// The sanitizers' allocators end the process for a block that is too large, unless they are told not to.
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}
extern "C" const char* __tsan_default_options()
{
    return "allocator_may_return_null=1";
}

namespace {

using support::failure;
using support::missing_argument;
using support::Outcome;
using support::outcome_of;
using support::success;
using support::untouched;

TEST(Strncpy, CopiesATextIntoAFreshBlock)
{
    for (const std::string source : {"", "a", "Gr\xc3\xbc\xc3\x9f Gott", "two\nlines"}) {
        support::Text copy;
        long status = untouched;
        EXPECT_EQ(kh_strncpy(copy.out(), source.c_str(), &status), 0);
        EXPECT_EQ(copy.string(), source);
        EXPECT_NE(copy.value, source.c_str());
        EXPECT_EQ(status, untouched) << "a status word is not touched by success";
    }
}

TEST(Strncpy, CopiesTextsOfAnyLength)
{
    const std::string source(1 << 20, 'x');
    support::Text copy;
    kh_strncpy(copy.out(), source.c_str(), nullptr);
    EXPECT_EQ(copy.string(), source);
}

TEST(Strncpy, DoesNotFreeWhatTheOutputHeld)
{
    char held[] = "not a block of malloc";
    char* text = held;
    kh_strncpy(&text, "new", nullptr);
    EXPECT_STREQ(text, "new");
    EXPECT_STREQ(held, "not a block of malloc");
    free(text);
}

TEST(Strncpy, TakesANullSourceAsTheEmptyText)
{
    support::Text copy;
    EXPECT_EQ(kh_strncpy(copy.out(), nullptr, nullptr), 0);
    EXPECT_EQ(copy.string(), "");
}

TEST(Strncpy, RefusesANullOutput)
{
    EXPECT_EQ(outcome_of([](long* ierr) { kh_strncpy(nullptr, "a", ierr); }), missing_argument("kh_strncpy"));
    EXPECT_EQ(kh_strncpy(nullptr, "a", nullptr), KH_ERR_ARGUMENT);
}

TEST(StringToInteger, ConvertsTheNumberAtTheStart)
{
    const struct {
        const char* text;
        long value;
    } rows[] = {
#include "cases/integers.inc"
    };
    for (const auto& row : rows) {
        EXPECT_EQ(outcome_of([&](long* ierr) { EXPECT_EQ(kh_string_to_integer(row.text, ierr), row.value); }),
                  success)
            << row.text;
    }
}

TEST(StringToInteger, RefusesATextWithoutANumber)
{
    for (const std::string text : {"x42", "", "  ", "-", "+ 1", ".5", "%s"}) {
        EXPECT_EQ(outcome_of([&](long* ierr) { EXPECT_EQ(kh_string_to_integer(text.c_str(), ierr), 0); }),
                  failure(KH_ERR_NOT_INTEGER, "kh_string_to_integer", ". Value: " + text));
    }
}

// Callers rely on the refusal of the two limits, also where the text spells just them.
TEST(StringToInteger, RefusesTheLimitsAndWhatLiesBeyond)
{
    const struct {
        std::string text;
        long value;
    } rows[] = {{"9223372036854775807", LONG_MAX},      {"9223372036854775808", LONG_MAX},
                {std::string(100, '9'), LONG_MAX},      {"9223372036854775809", LONG_MAX},
                {"-9223372036854775808", LONG_MIN},     {"-9223372036854775809", LONG_MIN},
                {"-" + std::string(100, '9'), LONG_MIN}};
    for (const auto& row : rows) {
        EXPECT_EQ(outcome_of([&](long* ierr) {
                      EXPECT_EQ(kh_string_to_integer(row.text.c_str(), ierr), row.value);
                  }),
                  failure(KH_ERR_RANGE, "kh_string_to_integer", ". Value: " + row.text));
    }
}

TEST(StringToReal, ConvertsTheNumberAtTheStart)
{
    const struct {
        const char* text;
        double value;
    } rows[] = {
#include "cases/reals.inc"
    };
    for (const auto& row : rows) {
        EXPECT_EQ(outcome_of([&](long* ierr) { EXPECT_EQ(kh_string_to_real(row.text, ierr), row.value); }),
                  success)
            << row.text;
    }
}

TEST(StringToReal, TakesANanSilently)
{
    for (const char* text : {"nan", "NaN", "-nan"})
        EXPECT_EQ(outcome_of([&](long* ierr) { EXPECT_TRUE(std::isnan(kh_string_to_real(text, ierr))); }),
                  success);
}

TEST(StringToReal, RefusesATextWithoutANumber)
{
    for (const std::string text : {"x1", "", " ", "-", "e5", ",5"}) {
        EXPECT_EQ(outcome_of([&](long* ierr) { EXPECT_EQ(kh_string_to_real(text.c_str(), ierr), 0.0); }),
                  failure(KH_ERR_NOT_REAL, "kh_string_to_real", ". Value: " + text));
    }
}

TEST(StringToReal, RefusesAnInfinity)
{
    for (const std::string text : {"1e400", "-1e400", "inf", "-infinity"}) {
        EXPECT_EQ(outcome_of([&](long* ierr) {
                      EXPECT_EQ(kh_string_to_real(text.c_str(), ierr), text[0] == '-' ? -HUGE_VAL : HUGE_VAL);
                  }),
                  failure(KH_ERR_RANGE, "kh_string_to_real", ". Value: " + text));
    }
}

TEST(StringToReal, KeepsToThePointInALocaleWithADecimalComma)
{
    const support::CommaLocale locale;
    ASSERT_TRUE(locale.is_set());
    EXPECT_EQ(kh_string_to_real("1.5", nullptr), 1.5);
    EXPECT_EQ(kh_string_to_real("1,5", nullptr), 1.0);
    EXPECT_TRUE(locale.is_set()) << "the process locale stays";
}

TEST(Conversions, RefuseANullText)
{
    EXPECT_EQ(outcome_of([](long* ierr) { kh_string_to_integer(nullptr, ierr); }),
              missing_argument("kh_string_to_integer"));
    EXPECT_EQ(outcome_of([](long* ierr) { kh_string_to_real(nullptr, ierr); }),
              missing_argument("kh_string_to_real"));
}

TEST(Conversions, DoWithoutAStatusWord)
{
    EXPECT_EQ(kh_string_to_integer("x", nullptr), 0);
    EXPECT_EQ(kh_string_to_real("x", nullptr), 0.0);
}

TEST(Conversions, CutTheReportOfALongText)
{
    const std::string text(1000, 'x');
    const Outcome outcome = outcome_of([&](long* ierr) { kh_string_to_integer(text.c_str(), ierr); });
    EXPECT_EQ(outcome, failure(KH_ERR_NOT_INTEGER, "kh_string_to_integer", ". Value: " + text));
    EXPECT_EQ(outcome.report.size(), 511u) << "510 characters and a newline";
}

TEST(Strtoken, GivesTheTokensBetweenDelimiters)
{
    using Tokens = std::vector<std::string>;
    const struct {
        std::string text;
        const char* delimiters;
        Tokens tokens;
    } rows[] = {{"/a//b/", "/", {"a", "b"}},
                {"a", "/", {"a"}},
                {"ab/cd", "/", {"ab", "cd"}},
                {"", "/", {}},
                {"///", "/", {}},
                {"a/b", "", {"a/b"}},
                {"", "", {}},
                {"a_b.c", "_.", {"a", "b", "c"}},
                {"a b  c ", " ", {"a", "b", "c"}},
                {std::string(5000, 'x') + "/y", "/", {std::string(5000, 'x'), "y"}}};
    for (const auto& row : rows) {
        std::vector<char> buffer(row.text.size() + 1, '#');
        char* tokens[100] = {};
        long count = untouched;
        kh_strtoken(row.text.c_str(), row.delimiters, buffer.data(), tokens, &count);
        EXPECT_EQ(Tokens(tokens, tokens + count), row.tokens) << row.text;
        for (long i = 0; i < count; ++i) {
            EXPECT_GE(tokens[i], buffer.data());
            EXPECT_LT(tokens[i], buffer.data() + buffer.size());
        }
    }
}

TEST(Strtoken, SplitsATextWhereItStands)
{
    char text[] = "/a//b/";
    char* tokens[4];
    long count = -1;
    kh_strtoken(text, "/", text, tokens, &count);
    ASSERT_EQ(count, 2);
    EXPECT_STREQ(tokens[0], "a");
    EXPECT_STREQ(tokens[1], "b");
}

TEST(Strtoken, DoesNotBoundTheNumberOfTokens)
{
    std::string text;
    for (int i = 0; i < 1000; ++i)
        text += "t/";
    std::vector<char> buffer(text.size() + 1);
    std::vector<char*> tokens(1000);
    long count = 0;
    kh_strtoken(text.c_str(), "/", buffer.data(), tokens.data(), &count);
    EXPECT_EQ(count, 1000);
    EXPECT_STREQ(tokens.back(), "t");
}

TEST(Strtoken, GivesNoTokenForANullArgument)
{
    char buffer[8] = "";
    char* tokens[8] = {};
    const auto count_of = [](const char* text, const char* delimiters, char* into, char** list) {
        long count = untouched;
        kh_strtoken(text, delimiters, into, list, &count);
        return count;
    };
    EXPECT_EQ(count_of(nullptr, "/", buffer, tokens), 0);
    EXPECT_EQ(count_of("a", nullptr, buffer, tokens), 0);
    EXPECT_EQ(count_of("a", "/", nullptr, tokens), 0);
    EXPECT_EQ(count_of("a", "/", buffer, nullptr), 0);
    kh_strtoken("a", "/", buffer, tokens, nullptr);
}

/// A block that KH_alloc_array resizes, freed with the object.
struct Block {
    void* memory = nullptr;
    long result = untouched;
    ~Block() { free(memory); }
    Outcome resize(long n, long size)
    {
        return outcome_of([&](long* ierr) { result = KH_alloc_array(n, size, &memory, "caller", ierr); });
    }
};

const Outcome silent_and_untouched{untouched, ""};

TEST(AllocArray, AllocatesAnewAndKeepsTheContentWhenItResizes)
{
    Block block;
    EXPECT_EQ(block.resize(100, sizeof(long)), silent_and_untouched);
    ASSERT_NE(block.memory, nullptr);
    long* const numbers = static_cast<long*>(block.memory);
    for (long i = 0; i < 100; ++i)
        numbers[i] = i;
    for (const long n : {200L, 100000L, 50L, 1L}) {
        EXPECT_EQ(block.resize(n, sizeof(long)), silent_and_untouched);
        EXPECT_EQ(block.result, 0);
        const long last = std::min(n, 50L) - 1;
        EXPECT_EQ(static_cast<long*>(block.memory)[last], last);
    }
}

TEST(AllocArray, TakesZeroBytesForNoFailure)
{
    Block block;
    EXPECT_EQ(block.resize(0, 8), silent_and_untouched);
    block.resize(10, 8);
    EXPECT_EQ(block.resize(0, 8), silent_and_untouched);
    EXPECT_EQ(block.result, 0);
}

TEST(AllocArray, FreesTheOldBlockAndReportsUnderTheCallersNameWhenMemoryRunsOut)
{
    const struct {
        long n, size;
    } rows[] = {{LONG_MAX, 1}, {LONG_MAX, 16}, {LONG_MAX / 8 + 1, 8}, {1L << 32, 1L << 32}, {-1, 8}, {8, -1}};
    for (const auto& row : rows) {
        Block block;
        block.resize(10, 8);
        EXPECT_EQ(own_report(block.resize(row.n, row.size)), failure(KH_ERR_MEMORY, "caller"))
            << row.n << " x " << row.size;
        EXPECT_EQ(block.memory, nullptr);
        EXPECT_EQ(block.result, 0) << "callers test the status word";
    }
}

TEST(AllocArray, RefusesANullArgument)
{
    long status = untouched;
    EXPECT_EQ(KH_alloc_array(1, 8, nullptr, "caller", &status), 0);
    EXPECT_EQ(status, KH_ERR_ARGUMENT);
    Block block;
    ASSERT_EQ(block.resize(1, 8), silent_and_untouched);
    void* const before = block.memory;
    EXPECT_EQ(outcome_of([&](long* ierr) { KH_alloc_array(2, 8, &block.memory, nullptr, ierr); }),
              missing_argument("KH_alloc_array"));
    EXPECT_EQ(block.memory, before) << "the block stays";
}

} // namespace
