// What the tests of reads share: outcomes of calls, the functions by the kind of value that they read,
// owners.
#ifndef KALV_TESTS_READ_SUPPORT_H
#define KALV_TESTS_READ_SUPPORT_H

#include "support/nodes.h"
#include "support/outcome.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <malloc.h>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace reading {

using support::failure;
using support::missing_argument;
using support::Outcome;
using support::passed_on;
using support::success;

/// A later failure of the same call: its status stands, and both were printed.
inline Outcome then(const Outcome& earlier, const Outcome& later)
{
    return {later.status, earlier.report + later.report};
}

/// A failure after which the call went on and succeeded.
inline Outcome overcome(const Outcome& earlier)
{
    return {KH_OK, earlier.report};
}

/// Runs a call that returns the status that it stores.
template <class Call>
Outcome call_of(const Call& call)
{
    long returned = support::untouched;
    const Outcome outcome = support::outcome_of([&](long* status) { returned = call(status); });
    EXPECT_EQ(returned, outcome.status) << "returned and stored status differ";
    return outcome;
}

/// The text that a read delivers, or "status N" where the status is not 0.
template <class Read>
std::string text_of(const Read& read)
{
    support::Text text;
    long status = 99;
    read(text.out(), &status);
    return status == KH_OK ? text.string() : "status " + std::to_string(status);
}

/// Calls `check(fd, code)` with descriptors that name no document with a root, and the code that each
/// reports.
template <class Check>
void for_each_bad_descriptor(const Check& check)
{
    const support::Document empty;
    const std::pair<long, long> descriptors[] = {{512, KH_ERR_DESCRIPTOR},
                                                 {-1, KH_ERR_DESCRIPTOR},
                                                 {LONG_MIN, KH_ERR_DESCRIPTOR},
                                                 {511, KH_ERR_NO_DOCUMENT},
                                                 {empty.fd, KH_ERR_NO_ROOT}};
    for (auto [fd, code] : descriptors) {
        SCOPED_TRACE("descriptor " + std::to_string(fd));
        check(fd, code);
    }
}

/// How many bytes a repeated action leaves allocated. (Sanitized builds see leaks by themselves.)
template <class Action>
long bytes_left_by(long repetitions, const Action& action)
{
    for (int warm_up = 0; warm_up < 20; ++warm_up)
        action();
    const auto in_use = [] {
        const auto heap = mallinfo2();
        return static_cast<long>(heap.uordblks + heap.hblkhd);
    };
    const long before = in_use();
    for (long i = 0; i < repetitions; ++i)
        action();
    return in_use() - before;
}

/// Expects that an action leaves no block behind: the smallest has 24 bytes.
template <class Action>
void expect_no_block_left_by(const Action& action)
{
    constexpr long repetitions = 5000; // outweighs what the allocator keeps for itself
    EXPECT_LT(bytes_left_by(repetitions, action), 8 * repetitions);
}

/// Whether a block was cut to just this many 8-byte entries; an allocator rounds up a little.
inline testing::AssertionResult has_room_for(void* block, long entries)
{
    const auto bytes = static_cast<long>(malloc_usable_size(block));
    if (bytes >= 8 * entries && bytes < 8 * entries + 64)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << bytes << " bytes for " << entries << " entries";
}

/// An exported function and the name that its reports show.
template <class Function>
struct Named {
    const char* name;
    Function* call;
};
#define KALV_NAMED(function)                                                                                 \
    Named<decltype(function)>                                                                                \
    {                                                                                                        \
#function, function                                                                                  \
    }

// The reading functions of each kind of value; numbers are made from what the functions of texts deliver.
struct Texts {
    using Value = char*;
    static constexpr bool are_numbers = false;
    static constexpr auto element = KALV_NAMED(kh_tree_read_string_element_value);
    static constexpr auto attribute = KALV_NAMED(kh_tree_read_string_attribute);
    // Callers rely on the name that this function reports under, which is not its own.
    static constexpr Named<decltype(kh_tree_path_read_string_node_value)> node = {
        "kh_tree_path_read_string_element_value", kh_tree_path_read_string_node_value};
    static constexpr auto element_array = KALV_NAMED(kh_tree_read_string_element_array);
    static constexpr auto node_array = KALV_NAMED(kh_tree_path_read_string_node_array);
};

struct Integers {
    using Value = long;
    static constexpr bool are_numbers = true;
    static constexpr auto element = KALV_NAMED(kh_tree_read_integer_element_value);
    static constexpr auto attribute = KALV_NAMED(kh_tree_read_integer_attribute);
    static constexpr auto node = KALV_NAMED(kh_tree_path_read_integer_node_value);
    static constexpr auto element_array = KALV_NAMED(kh_tree_read_integer_element_array);
    static constexpr auto node_array = KALV_NAMED(kh_tree_path_read_integer_node_array);
    static constexpr auto convert = KALV_NAMED(kh_string_to_integer);
    static constexpr long no_number = KH_ERR_NOT_INTEGER;
    static constexpr const char* too_large = "9223372036854775807";
    static constexpr long too_large_gives = LONG_MAX;
};

struct Reals {
    using Value = double;
    static constexpr bool are_numbers = true;
    static constexpr auto element = KALV_NAMED(kh_tree_read_real_element_value);
    static constexpr auto attribute = KALV_NAMED(kh_tree_read_real_attribute);
    static constexpr auto node = KALV_NAMED(kh_tree_path_read_real_node_value);
    static constexpr auto element_array = KALV_NAMED(kh_tree_read_real_element_array);
    static constexpr auto node_array = KALV_NAMED(kh_tree_path_read_real_node_array);
    static constexpr auto convert = KALV_NAMED(kh_string_to_real);
    static constexpr long no_number = KH_ERR_NOT_REAL;
    static constexpr const char* too_large = "1e400";
    static constexpr double too_large_gives = std::numeric_limits<double>::infinity();
};
#undef KALV_NAMED

/// What the function of one kind does with an outcome of the function of texts: numbers add their trace line.
template <class Kind>
Outcome seen_by(const Outcome& outcome, [[maybe_unused]] const char* function)
{
    if constexpr (Kind::are_numbers)
        return passed_on(outcome, function);
    else
        return outcome;
}

/// An array of the library's with all that it holds, freed with the object.
template <class Kind>
struct Array {
    typename Kind::Value* values = nullptr;
    long count = -1;
    Array() = default;
    ~Array() { clear(); }
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;

    void free_entries()
    {
        if constexpr (!Kind::are_numbers)
            for (long i = 0; values && i < count; ++i)
                free(values[i]);
    }
    void clear()
    {
        free_entries();
        free(values);
        values = nullptr;
        count = -1;
    }
    auto all() const
    {
        using Entry = std::conditional_t<Kind::are_numbers, typename Kind::Value, std::string>;
        return values ? std::vector<Entry>(values, values + count) : std::vector<Entry>();
    }
};

/// The contents of what an XPath expression selects, in document order: what a read must give.
inline std::vector<std::string> contents_of(const support::Document& document, const std::string& xpath)
{
    std::vector<std::string> contents;
    for (xmlNode* node : support::nodes_of(document, xpath)) {
        const std::unique_ptr<xmlChar, void (*)(void*)> content(xmlNodeGetContent(node), xmlFree);
        contents.emplace_back(reinterpret_cast<const char*>(content.get()));
    }
    return contents;
}

} // namespace reading

#endif
