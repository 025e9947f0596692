// SPDX-License-Identifier: Apache-2.0
#ifndef SANITIZEDHEAP_H
#define SANITIZEDHEAP_H

// Defines HEAP_IS_SANITIZED where a sanitizer brings a heap of its own, which keeps what was freed.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define HEAP_IS_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define HEAP_IS_SANITIZED
#endif
#endif

#endif
