// Whether a sanitizer is built in, whose own allocator a test's would bypass.
#ifndef KALV_TESTS_SANITIZED_H
#define KALV_TESTS_SANITIZED_H

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define KALV_SANITIZED
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KALV_SANITIZED
#endif

#endif
