// Owners of what malloc hands out.
#ifndef KALV_FRAME_MEMORY_H
#define KALV_FRAME_MEMORY_H

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

namespace kh {

struct FreeBlock {
    void operator()(void* block) const noexcept { std::free(block); }
};

/// A block of malloc; release() hands it to the caller.
template <class T>
using Block = std::unique_ptr<T, FreeBlock>;

/// A copy of a text with its terminating zero; null when memory runs out.
inline Block<char> copy_of(std::string_view text) noexcept
{
    Block<char> copy(static_cast<char*>(std::malloc(text.size() + 1)));
    if (copy) {
        std::memcpy(copy.get(), text.data(), text.size());
        copy.get()[text.size()] = '\0';
    }
    return copy;
}

/// The fresh empty text that callers get where a value is missing. Its block has two bytes, as callers rely
/// on.
inline Block<char> empty_text() noexcept
{
    return Block<char>(static_cast<char*>(std::calloc(2, 1)));
}

} // namespace kh

#endif
