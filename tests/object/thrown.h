// What a call throws, as one value, and the document table as objects see it.
#ifndef KALV_TESTS_THROWN_H
#define KALV_TESTS_THROWN_H

#include "support/support.h"

#include <algorithm>
#include <iterator>
#include <kalv/XmlFile.h>
#include <ostream>
#include <string>
#include <vector>

namespace object {

/// The method and the code that an exception carries; the method is empty where none was thrown.
struct Thrown {
    std::string method;
    long code;
};

inline bool operator==(const Thrown& a, const Thrown& b)
{
    return a.method == b.method && a.code == b.code;
}

inline std::ostream& operator<<(std::ostream& stream, const Thrown& thrown)
{
    return thrown.method.empty() ? stream << "nothing thrown"
                                 : stream << thrown.method << " with the code " << thrown.code;
}

inline const Thrown nothing{"", KH_OK};

/// Takes an exception apart; its three views must agree, and its text be the code's.
inline Thrown taken_apart(const KALV::KalvError& error)
{
    std::vector<long> codes;
    std::vector<std::string> messages;
    error.getCodes(codes);
    error.getMsg(messages);
    EXPECT_EQ(codes.size(), 1u);
    EXPECT_EQ(messages.size(), 2u);
    char text[KH_MESSAGE_SIZE];
    EXPECT_EQ(messages.at(1), kh_basic_error_msg(codes.at(0), text));
    const std::string what =
        messages.at(0) + ": " + messages.at(1) + " (" + std::to_string(codes.at(0)) + ")";
    EXPECT_EQ(std::string(error.what()).substr(0, what.size()), what);
    return {messages.at(0), codes.at(0)};
}

template <class Call>
Thrown thrown_by(const Call& call)
{
    try {
        call();
    } catch (const KALV::KalvError& error) {
        return taken_apart(error);
    }
    return nothing;
}

/// How many slots of the document table are taken.
inline long taken_slots()
{
    return 512 - std::count(std::begin(global_current_status), std::end(global_current_status), nullptr);
}

/// Checks at its end that as many slots are taken as at its beginning.
class SlotCount {
public:
    SlotCount() = default;
    ~SlotCount() { EXPECT_EQ(taken_slots(), at_first_); }
    SlotCount(const SlotCount&) = delete;
    SlotCount& operator=(const SlotCount&) = delete;

private:
    long at_first_ = taken_slots();
};

/// Tests with a folder, each of which must leave the table as it found it.
class ObjectTest : public testing::Test {
protected:
    // The object's destructor may throw, the base's may not.
    ~ObjectTest() noexcept override {}

    /// Reads a document of this content into the object.
    void read(std::string_view xml) { file.read(folder.file("document.xml", xml)); }

    /// The bytes that the object writes.
    std::string written()
    {
        const std::string name = folder.path("written.xml");
        file.write(name);
        return support::content_of(name);
    }

    SlotCount slots;
    support::TemporaryFolder folder;
    KALV::XmlFile file;
};

} // namespace object

#endif
