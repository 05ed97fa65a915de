// Comparing texts that are mostly short, such as paths: a call of memcmp() costs more than to compare most of them.
#ifndef KALV_FRAME_COMPARE_H
#define KALV_FRAME_COMPARE_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kh {

/// Some characters as one number, which compares them all at once.
template <class Word = std::uint64_t>
Word word_at(const char* text) noexcept
{
    Word word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

/// How many bytes in front of two words are the same, given where they differ.
inline std::size_t equal_bytes(std::uint64_t difference) noexcept
{
    constexpr bool first_is_lowest = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    const int bits = first_is_lowest ? __builtin_ctzll(difference) : __builtin_clzll(difference);
    return static_cast<std::size_t>(bits) / 8;
}

inline std::size_t common_length(std::string_view one, std::string_view other) noexcept
{
    constexpr std::size_t step = sizeof(std::uint64_t);
    const std::size_t length = std::min(one.size(), other.size());
    std::size_t common = 0;
    for (; common + step <= length; common += step) {
        const std::uint64_t difference = word_at(one.data() + common) ^ word_at(other.data() + common);
        if (difference != 0)
            return common + equal_bytes(difference);
    }
    while (common < length && one[common] == other[common])
        ++common;
    return common;
}

/// Whether texts of a length, at least that of a word, are the same.
template <class Word>
bool same_words(const char* one, const char* other, std::size_t length) noexcept
{
    const std::size_t last = length - sizeof(Word); // may overlap the one before
    for (std::size_t i = 0; i < last; i += sizeof(Word)) {
        if (word_at<Word>(one + i) != word_at<Word>(other + i))
            return false;
    }
    return word_at<Word>(one + last) == word_at<Word>(other + last);
}

/// The same for any length.
inline bool is_same(const char* one, const char* other, std::size_t length) noexcept
{
    if (length >= sizeof(std::uint64_t))
        return same_words<std::uint64_t>(one, other, length);
    if (length >= sizeof(std::uint32_t))
        return same_words<std::uint32_t>(one, other, length);
    return std::string_view(one, length) == std::string_view(other, length);
}

} // namespace kh

#endif
