// SPDX-License-Identifier: Apache-2.0
#ifndef WAKEUPS_H
#define WAKEUPS_H

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>

#include <functional>

/*! Runs the event loop until \a enough of the number of times that something has woken it up; what is due goes first.
 */
inline void countWakeUps(const std::function<bool(int)> &enough)
{
    while (QCoreApplication::eventDispatcher()->processEvents(QEventLoop::AllEvents)) { }
    int count = 0;
    QEventLoop loop;
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, &loop, [&] {
        if (enough(++count))
            loop.quit();
    });
    loop.exec();
}

#endif
