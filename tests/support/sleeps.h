// SPDX-License-Identifier: Apache-2.0
#ifndef SLEEPS_H
#define SLEEPS_H

#include <algorithm>
#include <limits>

#include <sys/resource.h>

/*!
 * How often \a action makes this thread sleep, by the least of several times: the system may make any of them wait for
 * something else.
 */
template<typename Action>
long leastSleepsIn(const Action &action)
{
    long least = std::numeric_limits<long>::max();
    for (int i = 0; i < 10; ++i) {
        rusage before = {};
        rusage after = {};
        getrusage(RUSAGE_THREAD, &before);
        action();
        getrusage(RUSAGE_THREAD, &after);
        least = std::min(least, after.ru_nvcsw - before.ru_nvcsw);
    }
    return least;
}

#endif
