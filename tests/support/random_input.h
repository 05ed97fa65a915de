// Random input that is the same in every run.
#ifndef KALV_TESTS_RANDOM_INPUT_H
#define KALV_TESTS_RANDOM_INPUT_H

#include <cmath>
#include <iterator>
#include <limits>
#include <random>
#include <string>

namespace support {

class RandomInput {
public:
    explicit RandomInput(unsigned seed) : random_(seed) {}

    std::size_t below(std::size_t end)
    {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_);
    }

    /// A text with what XML treats specially, made of as many pieces of up to three bytes.
    std::string text(std::size_t shortest, std::size_t longest)
    {
        static const char* const pieces[] = {"x", "yz", " ", "\n",       "\t",           "\r",  "&",  "<",
                                             ">", "\"", "'", "\xc3\xa9", "\xe2\x82\xac", "]]>", "amp"};
        std::string text;
        for (std::size_t i = 0, count = shortest + below(longest - shortest + 1); i < count; ++i)
            text += pieces[below(std::size(pieces))];
        return text;
    }

    /// A text of capital letters.
    std::string word(std::size_t shortest, std::size_t longest)
    {
        std::string word(shortest + below(longest - shortest + 1), ' ');
        for (char& letter : word)
            letter = static_cast<char>('A' + below(26));
        return word;
    }

    /// Any integer that can be read: the two ends are refused.
    long integer()
    {
        constexpr long largest = std::numeric_limits<long>::max() - 1;
        return std::uniform_int_distribution<long>(-largest, largest)(random_) >> below(60);
    }

    double real()
    {
        const double digits = std::uniform_real_distribution<double>(-1.0, 1.0)(random_);
        return std::ldexp(digits, static_cast<int>(below(2000)) - 1000);
    }

private:
    std::mt19937 random_;
};

} // namespace support

#endif
