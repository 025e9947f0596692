// SPDX-License-Identifier: Apache-2.0
#include <cstddef>
#include <cstring>

#include <malloc.h>

// What a passphrase passes through on its way (texts, documents, requests that wait) leaves it behind in freed memory,
// where a dump of the process shows it. So this program wipes whatever it frees, in its libraries too. It comes to
// nothing beside what a daemon does otherwise.

extern "C" {

void __libc_free(void *memory);   // NOLINT(bugprone-reserved-identifier): the C library's own
void *__libc_malloc(size_t size); // NOLINT(bugprone-reserved-identifier)

void free(void *memory)
{
    if (memory)
        explicit_bzero(memory, malloc_usable_size(memory));
    __libc_free(memory);
}

/*! Always moves, as only then the former place is known to be wiped. */
void *realloc(void *memory, size_t size)
{
    if (memory && size == 0) {
        free(memory);
        return nullptr;
    }
    void *place = __libc_malloc(size);
    if (memory && place) {
        const size_t present = malloc_usable_size(memory);
        std::memcpy(place, memory, present < size ? present : size);
        free(memory);
    }
    return place;
}

} // extern "C"
