// SPDX-License-Identifier: Apache-2.0
#ifndef UNWIPEDFREES_H
#define UNWIPEDFREES_H

#include "sanitizedheap.h"

#include <cstddef>
#include <cstring>

#include <malloc.h>

/*!
 * How often memory was freed that still held a secret. One source of a program includes this header; the functions
 * below take the C library's place, unless a sanitizer's do: then nothing is counted.
 */
struct UnwipedFrees
{
    /*! The secret, each of whose characters is one less than these, in 8 or 16 bits. */
    static constexpr char Masked[] = "uzqfe.cz.uif.esjwfs";
    static constexpr std::size_t Size = sizeof Masked - 1;

    static bool holds(const char *memory, std::size_t size, std::size_t width)
    {
        for (std::size_t i = 0; i + Size * width <= size; ++i) {
            std::size_t matching = 0;
            while (matching < Size && memory[i + matching * width] == Masked[matching] - 1)
                ++matching;
            if (matching == Size)
                return true;
        }
        return false;
    }

    static void look(void *memory)
    {
        const std::size_t size = malloc_usable_size(memory);
        if (!holds(static_cast<char *>(memory), size, 1) && !holds(static_cast<char *>(memory), size, 2))
            return;
        ++s_count;
        explicit_bzero(memory, size); // it is counted once
    }

    static long s_count;
};

long UnwipedFrees::s_count = 0;

#ifndef HEAP_IS_SANITIZED

extern "C" {

void *__libc_malloc(std::size_t size);
void __libc_free(void *memory);

void free(void *memory) noexcept
{
    if (memory)
        UnwipedFrees::look(memory);
    __libc_free(memory);
}

/*! Always moves, so that the former place is looked at. */
void *realloc(void *memory, std::size_t size) noexcept
{
    if (memory && size == 0) {
        free(memory);
        return nullptr;
    }
    void *place = __libc_malloc(size);
    if (memory && place) {
        const std::size_t present = malloc_usable_size(memory);
        std::memcpy(place, memory, present < size ? present : size);
        free(memory);
    }
    return place;
}

} // extern "C"

#endif

#endif
