// The library's error class, the way from a status to an exception, and the switch of the reports.
#include "object/thrown.h"

#include <kalv/FileHandlingFunc.h>
#include <memory>

namespace {

using KALV::FileHandlingError;
using KALV::FileHandlingFunc;
using KALV::InternalError;
using Codes = std::vector<long>;
using Messages = std::vector<std::string>;

FileHandlingError error_of(const std::string& name, long code)
{
    return {name, 0, &code};
}

Messages messages_of(const InternalError& error)
{
    Messages messages;
    error.getMsg(messages);
    return messages;
}

TEST(FileHandlingError, AppendsTheFirstCodeAlone)
{
    const long given[] = {-11, -12, -13};
    const FileHandlingError error("XmlFile::next", 2, given);
    Codes codes = {5};
    error.getCodes(codes);
    EXPECT_EQ(codes, (Codes{5, -11}));
    error.getCodes(codes);
    EXPECT_EQ(codes, (Codes{5, -11, -11}));
}

TEST(FileHandlingError, AppendsNameAndText)
{
    const FileHandlingError error = error_of("XmlFile::next", -11);
    Messages messages;
    error.getMsg(messages);
    EXPECT_EQ(messages, (Messages{"XmlFile::next", "KH: No element found"}));
    error.getMsg(messages);
    EXPECT_EQ(messages,
              (Messages{"XmlFile::next", "KH: No element found", "XmlFile::next", "KH: No element found"}));
}

TEST(FileHandlingError, HasTheTextOfEachCode)
{
    const std::pair<long, const char*> texts[] = {
        {0, "KH: Everything is OK"},
        {1, "KH: The path goes up too much. Root already reached"},
        {4, "KH: Header already exists"},
        {5, "KH: Unknown error code"},
        {-3, "KH: Argument passed is NULL or out of range"},
        {-21, "KH: File descriptor out of range"},
        {-38, "KH: Could not unlock other blocked threads"},
        {-39, "KH: Unknown error code"},
    };
    for (const auto& [code, text] : texts)
        EXPECT_EQ(messages_of(error_of("name", code)), (Messages{"name", text})) << code;
}

TEST(FileHandlingError, TakesANullArrayForAnUnknownError)
{
    const FileHandlingError error("name", 0, nullptr);
    Codes codes;
    error.getCodes(codes);
    EXPECT_EQ(codes, Codes{-1});
    EXPECT_EQ(messages_of(error), (Messages{"name", "KH: Unknown error code"}));
}

TEST(FileHandlingError, IsClonedThroughItsBase)
{
    auto original = std::make_unique<FileHandlingError>(error_of("XmlFile::read", -4));
    const InternalError& base = *original;
    const std::unique_ptr<InternalError> clone(base.clone());
    original.reset();
    EXPECT_NE(dynamic_cast<FileHandlingError*>(clone.get()), nullptr);
    EXPECT_EQ(messages_of(*clone), (Messages{"XmlFile::read", "KH: Error while parsing a file"}));
}

TEST(FileHandlingError, IsCopiedAndAssigned)
{
    FileHandlingError target = error_of("XmlFile::next", -11);
    {
        const FileHandlingError source = error_of("XmlFile::read", -4);
        const FileHandlingError copy(source);
        EXPECT_EQ(messages_of(copy), messages_of(source));
        EXPECT_EQ(&(target = copy), &target);
    }
    EXPECT_EQ(messages_of(target), (Messages{"XmlFile::read", "KH: Error while parsing a file"}));
    FileHandlingError& same = target;
    target = same;
    EXPECT_EQ(messages_of(target), (Messages{"XmlFile::read", "KH: Error while parsing a file"}));
}

TEST(Failure, IsThrownWithTheMethodsNameAndTheCodesText)
{
    KALV::XmlFile file;
    try {
        file.root();
    } catch (const KALV::KalvError& error) {
        Codes codes;
        Messages messages;
        error.getCodes(codes);
        error.getMsg(messages);
        EXPECT_EQ(codes, Codes{-21});
        EXPECT_EQ(messages, (Messages{"XmlFile::root", "KH: File descriptor out of range"}));
        EXPECT_STREQ(error.what(), "XmlFile::root: KH: File descriptor out of range (-21)"
                                   "\n\tFunction: kh_tree_rewind");
        return;
    }
    FAIL() << "nothing thrown";
}

TEST(FileHandlingFunc, SwitchesTheReports)
{
    const auto failing = [] { object::thrown_by([] { KALV::XmlFile().root(); }); };
    EXPECT_EQ(support::written_to_stderr(failing), "");
    FileHandlingFunc::setVerbose();
    EXPECT_EQ(verb_flag, 1);
    EXPECT_EQ(support::written_to_stderr(failing),
              "KH: File descriptor out of range\n\tFunction: kh_tree_rewind\n");
    FileHandlingFunc::setSilent();
    EXPECT_EQ(verb_flag, 0);
    EXPECT_EQ(support::written_to_stderr(failing), "");
}

} // namespace
