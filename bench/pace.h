// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PACE_H
#define MORVEK_PACE_H

#include "sharedmemory.h"

#include <atomic>
#include <functional>

/*!
 * Lets a process do one thing at a time: the next one is asked for only when it has come to rest, so that events never
 * merge. Nothing that the process itself calls here is a system call, but for the marks of what is counted.
 */
class Pace
{
public:
    static constexpr int WarmUp = 10;
    static constexpr int Counted = 40;

    explicit Pace(const QString &file);

    // The side of the process.
    /*! Just before it waits for the first thing. */
    void setReady();
    /*! A thing begins. The marks are set here: after the warm-up, and then each time that all counted ones are done. */
    void begin();
    void end();
    /*! Waits for mayGoOn() without sleeping. */
    void awaitLeave() const;

    // The side of who asks.
    /*! Waits until the process waits for the first thing. */
    void awaitReady() const;
    /*! Waits until so many things have begun. */
    void awaitBegun(int things) const;
    /*! Waits until so many things are done, and the process sleeps. */
    void awaitRest(int things) const;
    void awaitSleep() const;
    void mayGoOn() const;

private:
    struct Page
    {
        std::atomic<int> process;
        std::atomic<int> begun;
        std::atomic<int> done;
        std::atomic<int> leaves;
    };

    SharedMemory m_memory;
    Page *m_page;
};

#endif
