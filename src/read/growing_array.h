// Arrays that reads hand to their callers.
#ifndef KALV_READ_GROWING_ARRAY_H
#define KALV_READ_GROWING_ARRAY_H

#include "frame/operation.h"

#include <cstdlib>
#include <type_traits>

namespace kh {

/// A block of the caller's that grows from 100 entries by doubling, and at last shrinks to its count. When
/// memory runs out, everything read is freed, the block null and the count 0, and that is reported.
template <class Entry>
class GrowingArray {
public:
    /// \param block null, or a block of malloc, which is resized
    explicit GrowingArray(Entry*& block) noexcept : block_(block) {}
    GrowingArray(const GrowingArray&) = delete;
    GrowingArray& operator=(const GrowingArray&) = delete;

    long count() const noexcept { return count_; }
    /// True when memory ran out while it grew or shrank.
    bool lost() const noexcept { return lost_; }

    bool start(Operation& op) noexcept { return resize(first_capacity, op); }

    bool add(Entry entry, Operation& op) noexcept
    {
        block_[count_++] = entry;
        return count_ < capacity_ || resize(2 * capacity_, op);
    }

    /// To the entries that there are; an array that holds some always has room for more until then.
    bool shrink(Operation& op) noexcept { return count_ == 0 || resize(count_, op); }

    void discard() noexcept
    {
        if constexpr (std::is_pointer_v<Entry>) {
            while (count_ > 0)
                std::free(block_[--count_]);
        }
        std::free(block_);
        block_ = nullptr;
        count_ = 0;
        capacity_ = 0;
    }

private:
    static constexpr long first_capacity = 100;

    bool resize(long capacity, Operation& op) noexcept
    {
        auto* resized =
            static_cast<Entry*>(std::realloc(block_, static_cast<std::size_t>(capacity) * sizeof(Entry)));
        if (resized) {
            block_ = resized;
            capacity_ = capacity;
            return true;
        }
        discard();
        lost_ = true;
        op.fail(KH_ERR_MEMORY);
        return false;
    }

    Entry*& block_;
    long capacity_ = 0;
    long count_ = 0;
    bool lost_ = false;
};

} // namespace kh

#endif
