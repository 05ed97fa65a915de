// The allocator of the process, replaced: allocations can be counted, and made to fail. Whatever allocates
// does so here: the library, the C++ runtime, libxml2 and the C library alike.
#ifndef KALV_TORTURE_MEMORY_H
#define KALV_TORTURE_MEMORY_H

#include <cstddef>
#include <string>

namespace torture::memory {

/// Says where the process is. \return where it was
bool is_inside(bool inside);

/// Only allocations inside the library are counted and fail.
template <bool inside>
class Place {
public:
    Place() : previous_(is_inside(inside)) {}
    ~Place() { is_inside(previous_); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

private:
    bool previous_;
};
/// The library is being called while this lives.
using Inside = Place<true>;
/// A result is being written down.
using Outside = Place<false>;

enum class Failing { once, from_then_on };

/// From now on the allocations inside are counted from 0, and the one of this number fails.
void fail_at(std::size_t number, Failing failing);

/// From now on they are counted only.
void fail_never();

/// How many allocations inside there were since then.
std::size_t allocations();

/// Whether an allocation has failed since then.
bool has_failed();

/// How many blocks the process holds.
long live_blocks();

/// The calls that led to the allocation which failed first.
std::string calls_that_failed();

} // namespace torture::memory

#endif
