// Owners of what malloc hands out.
#ifndef KALV_FRAME_MEMORY_H
#define KALV_FRAME_MEMORY_H

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

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

/// Two blocks used in turn, so that what the one holds stays valid while the other is written: callers may
/// pass a text of the library's own to the call that replaces it.
class ReusedBlock {
public:
    /// Room for what replaces the current content; null when memory runs out, and all stays as it is.
    char* reserve(std::size_t size) noexcept
    {
        if (size > spare_size_) {
            Block<char> larger(static_cast<char*>(std::malloc(size)));
            if (!larger)
                return nullptr;
            spare_ = std::move(larger);
            spare_size_ = size;
        }
        std::swap(current_, spare_);
        std::swap(current_size_, spare_size_);
        return current_.get();
    }

private:
    Block<char> current_;
    Block<char> spare_;
    std::size_t current_size_ = 0;
    std::size_t spare_size_ = 0;
};

} // namespace kh

#endif
