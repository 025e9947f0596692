// SPDX-License-Identifier: Apache-2.0
#ifndef PATIENCE_H
#define PATIENCE_H

#include <QtCore/QCoreApplication>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QTimer>

/*! Milliseconds; reached only by what hangs. */
constexpr int Patience = 60000;

/*! Turns the event loop for \a milliseconds. */
inline void letPass(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

/*! Turns the event loop until \a condition holds; false when that takes too long. */
template<typename Condition>
bool waitUntil(const Condition &condition)
{
    const QDeadlineTimer deadline(Patience);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        letPass(5);
    }
    return true;
}

#endif
