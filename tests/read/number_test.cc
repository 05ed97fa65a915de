// Integers and reals: read as texts, then converted; the same for elements, attributes and paths.
#include "read/read_support.h"

#include <clocale>
#include <cmath>

using namespace reading;
using namespace support;

namespace {

// The ways to one value: the function of each kind, and its arguments in a document of document_with().
struct ByName {
    template <class Kind>
    static constexpr auto function = Kind::element;
    template <class Function, class Value>
    static long read(Function* call, long* fd, Value* value, long* status)
    {
        return call(fd, "x", value, status);
    }
};
struct ByAttribute {
    template <class Kind>
    static constexpr auto function = Kind::attribute;
    template <class Function, class Value>
    static long read(Function* call, long* fd, Value* value, long* status)
    {
        return call(fd, "x", "a", value, status);
    }
};
struct ByPath {
    template <class Kind>
    static constexpr auto function = Kind::node;
    template <class Function, class Value>
    static long read(Function* call, long* fd, Value* value, long* status)
    {
        return call(fd, "/r/x", value, status);
    }
};
struct ByAttributePath {
    template <class Kind>
    static constexpr auto function = Kind::node;
    template <class Function, class Value>
    static long read(Function* call, long* fd, Value* value, long* status)
    {
        return call(fd, "/r/x/@a", value, status);
    }
};

std::string document_with(const std::string& text)
{
    return "<r><x a='" + text + "'>" + text + "</x></r>";
}

template <class KindOfNumber, class Way>
struct Variant {
    using Kind = KindOfNumber;
    using Number = typename Kind::Value;
    static constexpr auto text = Way::template function<Texts>;
    static constexpr auto number = Way::template function<Kind>;
    static constexpr bool searches = std::is_same_v<Way, ByName>; // from the cursor on

    static Outcome read_text(long* fd, char** value)
    {
        return call_of([&](long* status) { return Way::read(text.call, fd, value, status); });
    }
    static void read_silently(long* fd)
    {
        Number value = 0;
        long status = 0;
        Way::read(number.call, fd, &value, &status);
    }
    static long read_without_status(long* fd, Number* value)
    {
        return Way::read(number.call, fd, value, nullptr);
    }
    static Outcome read_number(long* fd, Number* value)
    {
        return call_of([&](long* status) { return Way::read(number.call, fd, value, status); });
    }
};

template <class Variant>
class NumberRead : public testing::Test {
};

using Variants =
    testing::Types<Variant<Integers, ByName>, Variant<Integers, ByAttribute>, Variant<Integers, ByPath>,
                   Variant<Integers, ByAttributePath>, Variant<Reals, ByName>, Variant<Reals, ByAttribute>,
                   Variant<Reals, ByPath>, Variant<Reals, ByAttributePath>>;
TYPED_TEST_SUITE(NumberRead, Variants, );

/// The process locale with a decimal comma, put back afterwards; false where the system has none.
class DecimalComma {
public:
    DecimalComma()
    {
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8", "de_DE"})
            if (set_ || (set_ = setlocale(LC_ALL, name)))
                return;
        const std::string compile =
            "localedef -i de_DE -f UTF-8 '" + folder_.path("de_DE.UTF-8") + "' >/dev/null 2>&1";
        if (std::system(compile.c_str()) == 0) {
            setenv("LOCPATH", folder_.path("").c_str(), 1);
            set_ = setlocale(LC_ALL, "de_DE.UTF-8");
            unsetenv("LOCPATH");
        }
    }
    ~DecimalComma() { setlocale(LC_ALL, "C"); }
    DecimalComma(const DecimalComma&) = delete;
    DecimalComma& operator=(const DecimalComma&) = delete;
    explicit operator bool() const { return set_; }

private:
    TemporaryFolder folder_;
    bool set_ = false;
};

} // namespace

TYPED_TEST(NumberRead, ConvertsTheNumberAtTheStartOfTheText)
{
    using Number = typename TypeParam::Number;
    const std::pair<const char*, Number> texts[] = {
        {"42", Number(42)}, {"  42", Number(42)}, {"42 ", Number(42)},   {"-7", Number(-7)},
        {"+7", Number(7)},  {"0", Number(0)},     {"12abc", Number(12)}, {"007", Number(7)}};
    for (auto [text, expected] : texts) {
        SCOPED_TRACE(text);
        Document document(document_with(text));
        Number value = 77;
        EXPECT_EQ(TypeParam::read_number(&document.fd, &value), success);
        EXPECT_EQ(value, expected);
    }
}

TYPED_TEST(NumberRead, IsTheSameAgain)
{
    struct Seen {
        Outcome outcome;
        typename TypeParam::Number value;
        std::string path;
    };
    for (const char* text :
         {"42", " 7x", "", "x42", "1e999999999999999999999", "<y/>", "1<y/>2", "1<!--c-->"}) {
        SCOPED_TRACE(text);
        const std::string value = std::strchr(text, '<') ? "5" : text;
        Document document("<r><x a='" + value + "'>" + text + "</x></r>");
        const auto read = [&] {
            Seen seen{{}, 77, {}};
            seen.outcome = TypeParam::read_number(&document.fd, &seen.value);
            seen.path = document.path();
            return seen;
        };
        const Seen first = read();
        for (int time = 0; time < 3; ++time) {
            if (TypeParam::searches)
                kh_tree_rewind(&document.fd, nullptr);
            const Seen again = read();
            EXPECT_EQ(again.outcome, first.outcome);
            EXPECT_EQ(again.value, first.value);
            EXPECT_EQ(again.path, first.path);
        }
    }
}

TYPED_TEST(NumberRead, NeedsNoStatusWord)
{
    Document document(document_with("42"));
    for (int time = 0; time < 2; ++time) {
        typename TypeParam::Number value = 77;
        EXPECT_EQ(TypeParam::read_without_status(&document.fd, &value), KH_OK);
        EXPECT_EQ(value, 42);
        kh_tree_rewind(&document.fd, nullptr);
    }
}

TYPED_TEST(NumberRead, StoresWhatTheConversionYieldsBesideItsCode)
{
    using Kind = typename TypeParam::Kind;
    using Number = typename TypeParam::Number;
    struct Refused {
        const char* text;
        long code;
        Number stored;
    };
    const Refused texts[] = {{"x42", Kind::no_number, 0},
                             {"abc", Kind::no_number, 0},
                             {" ", Kind::no_number, 0},
                             {"-", Kind::no_number, 0},
                             {Kind::too_large, KH_ERR_RANGE, Kind::too_large_gives}};
    for (const auto& [text, code, stored] : texts) {
        Document document(document_with(text));
        Number value = 77;
        EXPECT_EQ(TypeParam::read_number(&document.fd, &value),
                  passed_on(failure(code, Kind::convert.name, ". Value: " + std::string(text)),
                            TypeParam::number.name));
        EXPECT_EQ(value, stored) << text;
    }
}

TYPED_TEST(NumberRead, IsNotWrittenAndAddsItsTraceLineWhenTheTextCannotBeRead)
{
    for (const char* xml : {"<r/>", "<r><x></x></r>", "<r><x>1<y/></x></r>", "<s/>"}) {
        Document for_text(xml);
        Document for_number(xml);
        Text text;
        typename TypeParam::Number value = 77;
        const Outcome outcome = TypeParam::read_text(&for_text.fd, text.out());
        EXPECT_LT(outcome.status, 0) << xml;
        EXPECT_EQ(TypeParam::read_number(&for_number.fd, &value), passed_on(outcome, TypeParam::number.name));
        EXPECT_EQ(value, 77) << xml;
        EXPECT_EQ(for_number.path(), for_text.path());
    }
}

TYPED_TEST(NumberRead, ChecksTheDescriptorAndThenItsOutputAsTheTextReadDoes)
{
    const auto expect_failure = [](long* fd, const Outcome& text_failure) {
        Text text;
        EXPECT_EQ(TypeParam::read_text(fd, text.out()), text_failure);
        EXPECT_EQ(text.value, nullptr);
        typename TypeParam::Number value = 77;
        EXPECT_EQ(TypeParam::read_number(fd, &value), passed_on(text_failure, TypeParam::number.name));
        EXPECT_EQ(value, 77);
        EXPECT_EQ(TypeParam::read_text(fd, nullptr), text_failure);
        EXPECT_EQ(TypeParam::read_number(fd, nullptr), passed_on(text_failure, TypeParam::number.name));
    };
    const Outcome refused = missing_argument(TypeParam::text.name);
    expect_failure(nullptr, refused);
    for_each_bad_descriptor(
        [&](long fd, long code) { expect_failure(&fd, failure(code, TypeParam::text.name)); });

    Document document(document_with("1"));
    EXPECT_EQ(TypeParam::read_text(&document.fd, nullptr), refused);
    EXPECT_EQ(TypeParam::read_number(&document.fd, nullptr), passed_on(refused, TypeParam::number.name));
    EXPECT_EQ(document.current(), document.root());
}

TYPED_TEST(NumberRead, LeavesNoBlockBehind)
{
    Document converted(document_with(std::string(500, '1')));
    Document refused(document_with(std::string(500, 'x')));
    Document unread("<r><x></x></r>");
    expect_no_block_left_by([&] {
        for (Document* document : {&converted, &refused, &unread}) {
            TypeParam::read_silently(&document->fd);
            kh_tree_rewind(&document->fd, &document->status);
        }
    });
}

TEST(NumberAtAPath, NeedsAPath)
{
    Document document(document_with("1"));
    long value = 77;
    EXPECT_EQ(call_of([&](long* status) {
                  return kh_tree_path_read_integer_node_value(&document.fd, nullptr, &value, status);
              }),
              passed_on(failure(KH_ERR_NO_REQUEST, Texts::node.name), Integers::node.name));
    EXPECT_EQ(value, 77);
}

TEST(RealRead, ConvertsFractionsExponentsAndNaN)
{
    const std::pair<const char*, double> texts[] = {
        {"1.5", 1.5}, {"-2.25e3", -2250}, {".5", .5}, {"1e-3", 1e-3}, {"1,5", 1}};
    for (auto [text, expected] : texts) {
        Document document(document_with(text));
        double value = 77;
        EXPECT_EQ((Variant<Reals, ByName>::read_number(&document.fd, &value)), success) << text;
        EXPECT_DOUBLE_EQ(value, expected) << text;
    }
    Document document(document_with("nan"));
    double value = 77;
    EXPECT_EQ((Variant<Reals, ByAttribute>::read_number(&document.fd, &value)), success);
    EXPECT_TRUE(std::isnan(value));
}

TEST(RealRead, DoesNotDependOnTheProcessLocale)
{
    const DecimalComma locale;
    if (!locale)
        GTEST_SKIP() << "no locale with a decimal comma";
    for (auto [text, expected] : {std::pair{"1.5", 1.5}, {"1,5", 1.}}) {
        Document document(document_with(text));
        std::vector<double> values(4, 77);
        EXPECT_EQ((Variant<Reals, ByName>::read_number(&document.fd, &values[0])), success);
        EXPECT_EQ((Variant<Reals, ByAttribute>::read_number(&document.fd, &values[1])), success);
        EXPECT_EQ((Variant<Reals, ByPath>::read_number(&document.fd, &values[2])), success);
        Array<Reals> array;
        long fd = document.fd;
        long status = 0;
        kh_tree_path_read_real_node_array(&fd, "/r/x[*]/@a", &array.values, &array.count, &status);
        ASSERT_EQ(array.count, 1);
        values[3] = array.values[0];
        EXPECT_EQ(values, std::vector<double>(4, expected)) << text;
    }
    EXPECT_STREQ(localeconv()->decimal_point, ",") << "the process keeps its locale";
}
