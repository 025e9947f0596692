// SPDX-License-Identifier: Apache-2.0
#ifndef NOWAITING_H
#define NOWAITING_H

#include <QtCore/QByteArrayList>

/*!
 * Notes each system call that may wait, for however long, while it lives. The event loop must not run meanwhile, as
 * that waits by nature.
 */
class NoWaiting
{
public:
    NoWaiting();
    ~NoWaiting();

    /*! The calls since the last look. */
    static QByteArrayList take();

private:
    NoWaiting(const NoWaiting &) = delete;
    NoWaiting &operator=(const NoWaiting &) = delete;
};

#endif
