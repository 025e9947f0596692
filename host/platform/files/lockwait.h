// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_LOCKWAIT_H
#define MORVEK_LOCKWAIT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <functional>

namespace morvek {

/*!
 * Tries \a lock, which gives 0 or -1 with errno, until it succeeds or others have held it for 50 ms: one of them may be
 * a stopped process. False with \a error, which calls it \a what.
 */
bool waitForLock(const QByteArray &what, const std::function<int()> &lock, QString *error);

/*! Whether this thread waits for locks at all; it does unless it says otherwise. Gives what it said before. */
bool setWaitingForLocks(bool waiting);

} // namespace morvek

#endif
