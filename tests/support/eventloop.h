// SPDX-License-Identifier: Apache-2.0
#ifndef EVENTLOOP_H
#define EVENTLOOP_H

#include <QtCore/QEventLoop>

/*! Lets everything run that is queued by now. */
inline void runQueued()
{
    QEventLoop loop;
    QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    loop.exec();
}

#endif
