// The allocations of the library, of the C++ runtime and of libxml2, each of which can be made to fail. The
// linker leads the library's calls here; libxml2's come through its own table.
#include "torture/memory.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <libxml/xmlmemory.h>
#include <limits>
#include <new>
#include <utility>

namespace {

constexpr std::size_t never = std::numeric_limits<std::size_t>::max();

bool inside = false;
std::size_t counted = 0;
std::size_t failing_number = never;
torture::memory::Failing failing_mode = torture::memory::Failing::once;

bool fails() noexcept
{
    if (!inside)
        return false;
    const std::size_t number = counted++;
    const bool failed =
        failing_mode == torture::memory::Failing::once ? number == failing_number : number >= failing_number;
    if (failed)
        errno = ENOMEM;
    return failed;
}

} // namespace

extern "C" {

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);

void* __wrap_malloc(std::size_t size)
{
    return fails() ? nullptr : __real_malloc(size);
}
void* __wrap_calloc(std::size_t count, std::size_t size)
{
    return fails() ? nullptr : __real_calloc(count, size);
}
void* __wrap_realloc(void* block, std::size_t size)
{
    return fails() ? nullptr : __real_realloc(block, size);
}

} // extern "C"

void* operator new(std::size_t size)
{
    if (void* block = std::malloc(size > 0 ? size : 1))
        return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return std::malloc(size > 0 ? size : 1);
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

static void* allocate(std::size_t size)
{
    return std::malloc(size);
}
static void* reallocate(void* block, std::size_t size)
{
    return std::realloc(block, size);
}
static char* duplicate(const char* text)
{
    const std::size_t size = std::strlen(text) + 1;
    auto* copy = static_cast<char*>(std::malloc(size));
    return copy ? static_cast<char*>(std::memcpy(copy, text, size)) : nullptr;
}

bool is_inside(bool now)
{
    return std::exchange(inside, now);
}

void fail_at(std::size_t number, Failing failing)
{
    static const int installed = xmlMemSetup(std::free, allocate, reallocate, duplicate);
    static_cast<void>(installed);
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

} // namespace torture::memory
