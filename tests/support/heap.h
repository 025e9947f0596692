// SPDX-License-Identifier: Apache-2.0
#ifndef HEAP_H
#define HEAP_H

#include "sanitizedheap.h"

#include <cerrno>
#include <cstddef>

#include <malloc.h>

/*!
 * The bytes that the program holds on the heap, libraries included. One source of a program includes this header; the
 * functions below take the C library's place, unless a sanitizer's do: then nothing is counted.
 */
struct Heap
{
    /*! The most that \a call holds beyond what was held before. */
    template<typename Call>
    static long peakOf(Call call)
    {
        const long before = s_held;
        s_peak = before;
        call();
        return s_peak - before;
    }

    static void count(void *memory, int sign)
    {
        s_held += sign * static_cast<long>(malloc_usable_size(memory));
        if (s_held > s_peak)
            s_peak = s_held;
    }

    static long s_held;
    static long s_peak;
};

long Heap::s_held = 0;
long Heap::s_peak = 0;

#ifndef HEAP_IS_SANITIZED

extern "C" {

void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *memory, std::size_t size);
void __libc_free(void *memory);

void *malloc(std::size_t size) noexcept
{
    void *memory = __libc_malloc(size);
    Heap::count(memory, 1);
    return memory;
}

void *calloc(std::size_t count, std::size_t size) noexcept
{
    void *memory = __libc_calloc(count, size);
    Heap::count(memory, 1);
    return memory;
}

void *realloc(void *memory, std::size_t size) noexcept
{
    Heap::count(memory, -1);
    void *moved = __libc_realloc(memory, size);
    Heap::count(moved ? moved : size ? memory : nullptr, 1);
    return moved;
}

void free(void *memory) noexcept
{
    Heap::count(memory, -1);
    __libc_free(memory);
}
}

#endif

#endif
