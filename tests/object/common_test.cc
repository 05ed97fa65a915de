// The common library's classes: what an error keeps, and what of it an exception carries.
#include <exception>
#include <gtest/gtest.h>
#include <kalv/KalvError.h>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using KALV::InternalError;
using KALV::KalvError;
using Codes = std::vector<long>;
using Messages = std::vector<std::string>;

/// Shows what the base keeps for the classes derived from it, and counts the objects alive.
class Probe : public InternalError {
public:
    Probe(const std::string& name, long first, long second, long third, long count, const long* codes)
        : InternalError(name, first, second, third, count, codes)
    {
        ++alive;
    }
    Probe(const Probe& other) : InternalError(other) { ++alive; }
    ~Probe() override { --alive; }
    Probe& operator=(const Probe&) = default;

    Probe* clone() const override { return new Probe(*this); }
    void getMsg(Messages& messages) const override
    {
        InternalError::getMsg(messages);
        messages.push_back("of a probe");
    }
    const std::string& name() const { return name_; }
    Codes numbers() const { return {code_, subcode_, severity_, count_}; }
    const Codes& codes() const { return codes_; }

    static inline int alive = 0;
};

Codes codes_of(const InternalError& error)
{
    Codes codes;
    error.getCodes(codes);
    return codes;
}

Messages messages_of(const InternalError& error)
{
    Messages messages;
    error.getMsg(messages);
    return messages;
}

TEST(InternalError, KeepsNameNumbersAndCodes)
{
    long given[] = {-7, -8, -9};
    const Probe error("Somewhere", -7, 11, 12, 3, given);
    given[0] = 0;
    EXPECT_EQ(error.name(), "Somewhere");
    EXPECT_EQ(error.numbers(), (Codes{-7, 11, 12, 3}));
    EXPECT_EQ(error.codes(), (Codes{-7, -8, -9}));
}

TEST(InternalError, KeepsANameOfAnyLength)
{
    const long code = -1;
    const std::string name(5000, 'n');
    EXPECT_EQ(messages_of(InternalError(name, code, 0, 0, 1, &code)), Messages{name});
}

TEST(InternalError, HasNoCodesWithoutAnArrayOrACount)
{
    const long code = -7;
    EXPECT_EQ(codes_of(InternalError("", code, 0, 0, 1, nullptr)), Codes{});
    EXPECT_EQ(codes_of(InternalError("", code, 0, 0, 0, &code)), Codes{});
    EXPECT_EQ(codes_of(InternalError("", code, 0, 0, -1, &code)), Codes{});
}

TEST(InternalError, AppendsCodesAndName)
{
    const long given[] = {-7, -8};
    const InternalError error("Somewhere", -7, 0, 0, 2, given);
    Codes codes = {5};
    Messages messages = {"before"};
    error.getCodes(codes);
    error.getMsg(messages);
    EXPECT_EQ(codes, (Codes{5, -7, -8}));
    EXPECT_EQ(messages, (Messages{"before", "Somewhere"}));
}

TEST(InternalError, IsCopiedAndAssignedWhole)
{
    const long given[] = {-7, -8};
    const long other_given[] = {-1};
    auto original = std::make_unique<Probe>("Somewhere", -7, 1, 2, 2, given);
    const Probe copy(*original);
    Probe assigned("Elsewhere", -1, 0, 0, 1, other_given);
    assigned = *original;
    original.reset();
    for (const Probe* error : {&copy, static_cast<const Probe*>(&assigned)}) {
        EXPECT_EQ(error->name(), "Somewhere");
        EXPECT_EQ(error->numbers(), (Codes{-7, 1, 2, 2}));
        EXPECT_EQ(error->codes(), (Codes{-7, -8}));
    }
}

TEST(InternalError, IsClonedAsWhatItIs)
{
    const long code = -7;
    const Probe probe("Somewhere", code, 0, 0, 1, &code);
    const InternalError plain("Somewhere", code, 0, 0, 1, &code);
    const std::unique_ptr<InternalError> probe_clone(static_cast<const InternalError&>(probe).clone());
    const std::unique_ptr<InternalError> plain_clone(plain.clone());
    EXPECT_EQ(messages_of(*probe_clone), (Messages{"Somewhere", "of a probe"}));
    EXPECT_EQ(messages_of(*plain_clone), Messages{"Somewhere"});
    EXPECT_EQ(codes_of(*plain_clone), Codes{-7});
}

TEST(KalvError, KeepsACloneOfWhatItWasMadeFrom)
{
    const long given[] = {-7, -8};
    auto original = std::make_unique<Probe>("Somewhere", -7, 0, 0, 2, given);
    const KalvError error(*original);
    original.reset();
    Codes codes = {5};
    Messages messages = {"before"};
    error.getCodes(codes);
    error.getMsg(messages);
    EXPECT_EQ(codes, (Codes{5, -7, -8}));
    EXPECT_EQ(messages, (Messages{"before", "Somewhere", "of a probe"}));
}

TEST(KalvError, IsAStandardExceptionThatTellsNameAndMessage)
{
    const long code = -7;
    try {
        throw KalvError(Probe("Somewhere", code, 0, 0, 1, &code));
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "Somewhere: of a probe");
        return;
    }
    FAIL() << "not caught as std::exception";
}

TEST(KalvError, SharesItsErrorAmongCopiesAndFreesItWithTheLast)
{
    // An exception whose copy throws ends the program.
    static_assert(std::is_nothrow_copy_constructible_v<KalvError>);
    static_assert(std::is_nothrow_copy_assignable_v<KalvError>);
    const long code = -7;
    {
        auto first = std::make_unique<KalvError>(Probe("First", code, 0, 0, 1, &code));
        const KalvError copy(*first);
        const KalvError moved(std::move(*first));
        KalvError assigned(Probe("Second", code, 0, 0, 1, &code));
        assigned = *first;
        EXPECT_STREQ(first->what(), "First: of a probe");
        first.reset();
        for (const KalvError* error : {&copy, &moved, static_cast<const KalvError*>(&assigned)}) {
            Messages messages;
            error->getMsg(messages);
            EXPECT_EQ(messages, (Messages{"First", "of a probe"}));
            EXPECT_STREQ(error->what(), "First: of a probe");
        }
    }
    EXPECT_EQ(Probe::alive, 0);
}

} // namespace
