// The interface as programs compile against it: the exact types of all methods, and what objects can do. A
// change here breaks the source of callers; that it compiles is the test.
#include <cstring>
#include <gtest/gtest.h>
#include <kalv/FileHandlingError.h>
#include <kalv/FileHandlingFunc.h>
#include <kalv/KalvError.h>
#include <kalv/XmlFile.h>
#include <libxml/tree.h>
#include <type_traits>

namespace {

using KALV::FileHandlingError;
using KALV::FileHandlingFunc;
using KALV::FileNameItems;
using KALV::FixedHeader;
using KALV::InternalError;
using KALV::KalvError;
using KALV::XmlFile;
using std::string;
using Text = const string&;
using Integers = std::vector<long>;
using Reals = std::vector<double>;
using Texts = std::vector<string>;

template <class Result, class... Arguments>
using Method = Result (XmlFile::*)(Arguments...);
template <class Result, class... Arguments>
using ConstMethod = Result (XmlFile::*)(Arguments...) const;

/// Takes the method, or the overload among several, of just this type.
template <class Type>
constexpr bool is(Type)
{
    return true;
}

// Documents and moves.
static_assert(is<Method<long>>(&XmlFile::create));
static_assert(is<Method<void, Text>>(&XmlFile::read));
static_assert(is<Method<long>>(&XmlFile::write) && is<Method<long, Text>>(&XmlFile::write));
static_assert(is<Method<long>>(&XmlFile::clean));
static_assert(is<ConstMethod<long>>(&XmlFile::getId));
static_assert(is<ConstMethod<string>>(&XmlFile::getFileName));
static_assert(is<Method<long>>(&XmlFile::root));
static_assert(is<Method<long>>(&XmlFile::next));
static_assert(is<Method<long, Text>>(&XmlFile::toElement));
static_assert(is<Method<long, Text>>(&XmlFile::toPath));
static_assert(is<Method<xmlNodePtr>>(&XmlFile::nextSibling));
static_assert(is<ConstMethod<string>>(&XmlFile::currentElementName));
static_assert(is<ConstMethod<string>>(&XmlFile::currentPathName));
static_assert(is<Method<void, Text, bool>>(&XmlFile::setSchema));
static_assert(is<Method<void, bool>>(&XmlFile::removeSchema));

// Values.
static_assert(is<Method<string, Text>>(&XmlFile::getElementValueAsString));
static_assert(is<Method<long, Text>>(&XmlFile::getElementValueAsInt));
static_assert(is<Method<double, Text>>(&XmlFile::getElementValueAsReal));
static_assert(is<Method<string, Text, Text>>(&XmlFile::getAttributeValueAsString));
static_assert(is<Method<long, Text, Text>>(&XmlFile::getAttributeValueAsInt));
static_assert(is<Method<double, Text, Text>>(&XmlFile::getAttributeValueAsReal));
static_assert(is<Method<string, Text>>(&XmlFile::getPathValueAsString));
static_assert(is<Method<long, Text>>(&XmlFile::getPathValueAsInt));
static_assert(is<Method<double, Text>>(&XmlFile::getPathValueAsReal));
static_assert(is<Method<void, Text, Integers&>>(&XmlFile::getElementArrayAsInt));
static_assert(is<Method<void, Text, Reals&>>(&XmlFile::getElementArrayAsReal));
static_assert(is<Method<void, Text, Texts&>>(&XmlFile::getElementArrayAsString));
static_assert(is<Method<void, Text, Integers&>>(&XmlFile::getPathArrayAsInt));
static_assert(is<Method<void, Text, Reals&>>(&XmlFile::getPathArrayAsReal));
static_assert(is<Method<void, Text, Texts&>>(&XmlFile::getPathArrayAsString));
static_assert(is<Method<void, Text, Text, Texts&>>(&XmlFile::getStringValuesFromList));
static_assert(is<Method<string, Text, Text>>(&XmlFile::findValueInElement));
static_assert(is<Method<string, Text, Text>>(&XmlFile::findValueInPath));

// Editing.
static_assert(is<Method<long, Text>>(&XmlFile::createRoot));
static_assert(is<Method<long, Text, Text>>(&XmlFile::addChild));
static_assert(is<Method<long, Text, Text>>(&XmlFile::addNext));
static_assert(is<Method<long, Text, Text>>(&XmlFile::addPrevious));
static_assert(is<Method<long, Text, Text>>(&XmlFile::addAttribute));
static_assert(is<Method<void, Text>>(&XmlFile::removeNode));
static_assert(is<Method<long, Text, Text, Text>>(&XmlFile::copyNode));

/// Whether the methods that take a value are there for a type of values.
template <class Value>
constexpr bool take_value()
{
    return is<Method<void, Text, Value, Text>>(&XmlFile::setValue) &&
           is<Method<void, Text, Text, Value, Text>>(&XmlFile::addChild) &&
           is<Method<void, Text, Text, Value, Text>>(&XmlFile::addNext) &&
           is<Method<void, Text, Text, Value, Text>>(&XmlFile::addPrevious) &&
           is<Method<void, Text, Text, Value, Text>>(&XmlFile::addAttribute);
}
static_assert(take_value<Text>() && take_value<long>() && take_value<double>());

// Headers and names.
static_assert(is<Method<long, long>>(&XmlFile::createHeader));
static_assert(is<Method<void, FixedHeader&>>(&XmlFile::createHeader));
static_assert(is<Method<void, Text, Text>>(&XmlFile::setFixedHeaderItem));
static_assert(is<Method<void, Text, Text, Text, Text, Text, Text, Text, Text, long, Text, Text, Text, Text>>(
    &XmlFile::setFixedHeaderItems));
static_assert(is<Method<string, Text>>(&XmlFile::getFixedHeaderItem));
static_assert(is<Method<FixedHeader>>(&XmlFile::getFixedHeader));
static_assert(is<ConstMethod<string, long, Text, Text, Text, long>>(&XmlFile::createFileName));
static_assert(is<ConstMethod<FileNameItems, string&>>(&XmlFile::getFileNameItems));

// Objects own their slot; the destructor may throw.
static_assert(!std::is_polymorphic_v<XmlFile> && sizeof(XmlFile) == sizeof(long) + sizeof(string));
static_assert(std::is_default_constructible_v<XmlFile> && std::is_constructible_v<XmlFile, Text>);
static_assert(!std::is_copy_constructible_v<XmlFile> && !std::is_copy_assignable_v<XmlFile>);
static_assert(!std::is_nothrow_destructible_v<XmlFile>);
static_assert(std::is_move_constructible_v<XmlFile> && std::is_move_assignable_v<XmlFile>);

// Records are copied member by member.
static_assert(std::is_copy_constructible_v<FixedHeader> && std::is_copy_assignable_v<FixedHeader>);
static_assert(std::is_constructible_v<FixedHeader, Text, Text, Text, Text, Text, Text, Text, Text, Text, long,
                                      Text, Text, Text, Text, long>);
static_assert(std::is_constructible_v<FixedHeader, Text, Text, Text, Text, Text, Text, Text, Text, Text, long,
                                      Text, Text, Text, Text, Text, long>);
static_assert(sizeof(FixedHeader) == 14 * sizeof(string) + 2 * sizeof(long));
static_assert(std::is_aggregate_v<FileNameItems> &&
              sizeof(FileNameItems) == sizeof(long) + 3 * sizeof(string));

// Errors.
static_assert(std::is_base_of_v<InternalError, FileHandlingError> &&
              sizeof(FileHandlingError) == sizeof(InternalError));
static_assert(std::has_virtual_destructor_v<InternalError> && std::has_virtual_destructor_v<KalvError>);
static_assert(std::is_constructible_v<InternalError, Text, long, long, long, long, const long*>);
static_assert(std::is_constructible_v<FileHandlingError, Text, long, const long*>);
static_assert(std::is_copy_constructible_v<FileHandlingError> &&
              std::is_copy_assignable_v<FileHandlingError>);
static_assert(std::is_constructible_v<KalvError, const InternalError&>);
static_assert(std::is_base_of_v<std::exception, KalvError> && !std::is_base_of_v<InternalError, KalvError>);
static_assert(std::is_empty_v<FileHandlingFunc>);
static_assert(std::is_same_v<decltype(&FileHandlingFunc::setVerbose), void (*)()> &&
              std::is_same_v<decltype(&FileHandlingFunc::setSilent), void (*)()>);

/// The place of a virtual method in its class's table, where the destructor takes the first two.
template <class Virtual>
std::ptrdiff_t place_in_table(Virtual method)
{
    std::ptrdiff_t parts[2]; // of a pointer to a virtual method, the first is the offset + 1
    static_assert(sizeof parts == sizeof method);
    std::memcpy(parts, &method, sizeof parts);
    return (parts[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

// An installed common library calls its errors by these places.
TEST(Interface, HasTheVirtualMethodsOfErrorsInTheirPlaces)
{
    EXPECT_EQ(place_in_table(&FileHandlingError::getCodes), 2);
    EXPECT_EQ(place_in_table(&FileHandlingError::getMsg), 3);
    EXPECT_EQ(place_in_table(&FileHandlingError::clone), 4);
}

} // namespace
