#include "harness.h"

#include <cstdint>
#include <cstdio>

namespace fuzz {

namespace {

bool failing = false;

} // namespace

bool memory_fails()
{
    return failing;
}

void check(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

void check_described(long status)
{
    switch (status) {
    case KH_ERR_MEMORY:
    case KH_ERR_CREATE_DOCUMENT:
        check(memory_fails(), "memory ran out only where it was made to");
        break;
    case KH_ERR_UNKNOWN:
    case KH_ERR_GENERIC:
    case KH_ERR_PATH_NODE_LENGTH:
    case KH_ERR_TABLE_FULL:
    case KH_ERR_DESCRIPTOR:
    case KH_ERR_HEADER_TAGS:
    case KH_ERR_UNUSED_LOCK:
    case KH_ERR_LOCK:
    case KH_WARN_GENERIC:
        check(false, "the status is one that can come about");
        break;
    default:
        check(status >= KH_ERR_LOCK && status <= KH_WARN_HEADER_EXISTS, "the status is one of the table");
    }
}

long status_of_object(const std::function<void()>& body)
{
    long status = KH_OK;
    try {
        const torture::memory::Inside inside;
        body();
    } catch (const KALV::KalvError& error) {
        std::vector<long> codes;
        error.getCodes(codes);
        check(!codes.empty(), "an error has a code");
        status = codes.front();
    } catch (const std::bad_alloc&) {
        status = KH_ERR_MEMORY;
    }
    // A call on an object without document is a mistake that programs make.
    if (status != KH_ERR_DESCRIPTOR)
        check_described(status);
    return status;
}

} // namespace fuzz

/// Freed memory is remembered for as long as a run lasts, and not for long behind it: that is twice as fast.
extern "C" const char* __asan_default_options()
{
    return "quarantine_size_mb=1:thread_local_quarantine_size_kb=256:malloc_context_size=1:max_malloc_fill_"
           "size=64";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Decided by the last bytes: an XML file that ends with a line break is read as it is, without failures.
    fuzz::Bytes bytes(data, size);
    torture::memory::fail_never();
    fuzz::failing = bytes.ConsumeIntegralInRange(0, 7) >= 6;
    if (fuzz::failing) {
        const auto number = bytes.ConsumeIntegralInRange<std::size_t>(0, 400);
        torture::memory::fail_at(number, bytes.ConsumeBool() ? torture::memory::Failing::once
                                                             : torture::memory::Failing::from_then_on);
    }
    fuzz::run(bytes);
    torture::memory::fail_never();
    for (const kh_document_slot* slot : global_current_status)
        fuzz::check(!slot, "all documents are released");
    return 0;
}
