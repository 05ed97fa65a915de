// Numbers from texts, without a document.
#include "jobs.h"
#include "peers.h"

namespace bench {

namespace {

constexpr std::size_t count = 1'000;

std::shared_ptr<const TextsInOrder> numbers(const char* format, double largest)
{
    std::mt19937 generator(1);
    std::uniform_real_distribution<double> distribution(-largest / 10, largest);
    std::vector<std::string> texts(count);
    for (std::string& text : texts) {
        char number[64];
        std::snprintf(number, sizeof number, format, distribution(generator));
        text = number;
    }
    return std::make_shared<const TextsInOrder>(texts);
}

/// Converts all texts; returns the sum of the numbers.
template <class Convert>
Contender sum(const char* name, const std::shared_ptr<const TextsInOrder>& texts, Convert convert)
{
    return repeated(name, [texts, convert] {
        decltype(convert("")) total = 0;
        for (std::size_t i = 0; i < texts->size(); ++i)
            total += convert((*texts)[i]);
        return total;
    });
}

template <class Own, class Peer>
Job conversion(const char* name, const char* size, const char* peer_name,
               const std::shared_ptr<const TextsInOrder>& texts, Own own, Peer peer)
{
    return {name, size, {sum(library, texts, own), sum(peer_name, texts, peer)}, {{peer_name, 0.40}}};
}

} // namespace

void compare_conversions(Comparison& comparison)
{
    const auto to_long = [](const char* text) {
        long status = KH_OK;
        return kh_string_to_integer(text, &status);
    };
    const auto to_double = [](const char* text) {
        long status = KH_OK;
        return kh_string_to_real(text, &status);
    };
    const auto strtol_decimal = [](const char* text) { return std::strtol(text, nullptr, 10); };
    const auto strtod_plain = [](const char* text) { return std::strtod(text, nullptr); };
    comparison.add(
        conversion("text to long", "7 digits", "strtol", numbers("%.0f", 1e7), to_long, strtol_decimal));
    comparison.add(
        conversion("text to double", "4 decimals", "strtod", numbers("%.4f", 1e5), to_double, strtod_plain));
    comparison.add(
        conversion("text to double", "17 digits", "strtod", numbers("%.16e", 1e5), to_double, strtod_plain));
}

} // namespace bench
