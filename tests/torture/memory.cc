#include "torture/memory.h"

#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <execinfo.h>
#include <iterator>
#include <limits>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace {

constexpr std::size_t never = std::numeric_limits<std::size_t>::max();

// The workload has one thread. Plain variables: they are used before any constructor has run.
bool inside = false;
std::size_t counted = 0;
std::size_t failing_number = never;
torture::memory::Failing failing_mode = torture::memory::Failing::once;
long live = 0;
void* calls[64];
int call_count = 0;

template <class Function>
Function* next(Function*& function, const char* name) noexcept
{
    if (!function)
        function = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
    return function;
}

/// Counts an allocation. \return whether it fails
bool fails() noexcept
{
    if (!inside)
        return false;
    const std::size_t number = counted++;
    const bool failed =
        failing_mode == torture::memory::Failing::once ? number == failing_number : number >= failing_number;
    if (!failed)
        return false;
    if (number == failing_number) {
        const torture::memory::Outside outside;
        call_count = backtrace(calls, static_cast<int>(std::size(calls)));
    }
    errno = ENOMEM;
    return true;
}

void* counted_block(void* block) noexcept
{
    live += block != nullptr;
    return block;
}

} // namespace

extern "C" {

void* malloc(std::size_t size) noexcept
{
    static void* (*original)(std::size_t) = nullptr;
    return fails() ? nullptr : counted_block(next(original, "malloc")(size));
}

void* calloc(std::size_t count, std::size_t size) noexcept
{
    static void* (*original)(std::size_t, std::size_t) = nullptr;
    return fails() ? nullptr : counted_block(next(original, "calloc")(count, size));
}

void* realloc(void* block, std::size_t size) noexcept
{
    static void* (*original)(void*, std::size_t) = nullptr;
    if (fails())
        return nullptr;
    void* resized = next(original, "realloc")(block, size);
    live += (block ? 0 : 1) - (block && size == 0 ? 1 : 0);
    return resized;
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept
{
    static int (*original)(void**, std::size_t, std::size_t) = nullptr;
    if (fails())
        return ENOMEM;
    const int result = next(original, "posix_memalign")(block, alignment, size);
    live += result == 0;
    return result;
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    static void* (*original)(std::size_t, std::size_t) = nullptr;
    return fails() ? nullptr : counted_block(next(original, "aligned_alloc")(alignment, size));
}

void free(void* block) noexcept
{
    static void (*original)(void*) = nullptr;
    live -= block != nullptr;
    next(original, "free")(block);
}

void* mmap(void* start, std::size_t size, int protection, int flags, int fd, off_t offset) noexcept
{
    static void* (*original)(void*, std::size_t, int, int, int, off_t) = nullptr;
    if (fails())
        return MAP_FAILED;
    void* block = next(original, "mmap")(start, size, protection, flags, fd, offset);
    live += block != MAP_FAILED;
    return block;
}

void* mremap(void* block, std::size_t old_size, std::size_t size, int flags, ...) noexcept
{
    static void* (*original)(void*, std::size_t, std::size_t, int, ...) = nullptr;
    return fails() ? MAP_FAILED : next(original, "mremap")(block, old_size, size, flags);
}

int munmap(void* block, std::size_t size) noexcept
{
    static int (*original)(void*, std::size_t) = nullptr;
    --live;
    return next(original, "munmap")(block, size);
}

} // extern "C"

// A sanitizer's own operators would pass by the functions above.
void* operator new(std::size_t size)
{
    if (void* block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return std::malloc(size);
}
void operator delete(void* block) noexcept
{
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept
{
    std::free(block);
}

namespace torture::memory {

bool is_inside(bool now)
{
    return std::exchange(inside, now);
}

void fail_at(std::size_t number, Failing failing)
{
    if (call_count == 0)
        call_count = backtrace(calls, 1); // the first one loads a library, which allocates
    counted = 0;
    failing_number = number;
    failing_mode = failing;
}

void fail_never()
{
    fail_at(never, Failing::once);
}

std::size_t allocations()
{
    return counted;
}

bool has_failed()
{
    return counted > failing_number;
}

long live_blocks()
{
    return live;
}

std::string calls_that_failed()
{
    std::string text;
    char** names = backtrace_symbols(calls, call_count);
    for (int i = 0; names && i < call_count; ++i)
        text += std::string("\n    ") + names[i];
    std::free(names);
    return text;
}

} // namespace torture::memory
