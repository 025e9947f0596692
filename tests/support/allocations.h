// SPDX-License-Identifier: Apache-2.0
#ifndef ALLOCATIONS_H
#define ALLOCATIONS_H

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

/*!
 * What the program allocates with operator new, which this header replaces: one source of the program includes it.
 *
 * While it watches, the allocations that the program's own code makes are numbered from 1. Those of Qt and of the
 * platform are not: they are called from libraries.
 */
struct Allocations
{
    /*! Numbers allocations while it lives; the one that is number \a failing fails. */
    explicit Allocations(int failing = 0)
    {
        s_failing = failing;
        s_made = 0;
        s_watching = true;
    }
    ~Allocations() { s_watching = false; }
    Allocations(const Allocations &) = delete;
    Allocations &operator=(const Allocations &) = delete;

    /*! Called with each that is numbered, before its memory is given away, which holds nothing that was there before.
     */
    using Listener = void (*)(void *memory, std::size_t size);

    static int s_made;
    static int s_failing;
    static bool s_watching;
    static long s_blocks; //!< that live, of everybody's
    static Listener s_listener;
};

int Allocations::s_made = 0;
int Allocations::s_failing = 0;
bool Allocations::s_watching = false;
long Allocations::s_blocks = 0;
Allocations::Listener Allocations::s_listener = nullptr;

extern "C" char __executable_start; // NOLINT: the linker's names for where the program's code begins and ends
extern "C" char etext;

void *operator new(std::size_t size)
{
    const auto *caller = static_cast<const char *>(__builtin_return_address(0));
    const bool numbered = Allocations::s_watching && caller >= &__executable_start && caller < &etext;
    if (numbered && ++Allocations::s_made == Allocations::s_failing)
        throw std::bad_alloc();
    void *memory = std::malloc(size ? size : 1);
    if (!memory)
        throw std::bad_alloc();
    ++Allocations::s_blocks;
    if (numbered && Allocations::s_listener) {
        std::memset(memory, 0xa5, size);
        Allocations::s_listener(memory, size);
    }
    return memory;
}

void operator delete(void *memory) noexcept
{
    if (memory)
        --Allocations::s_blocks;
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    operator delete(memory);
}

#endif
