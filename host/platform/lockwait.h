// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_LOCKWAIT_H
#define MORVEK_LOCKWAIT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <functional>

namespace morvek {

/*!
 * Tries \a lock, which gives 0 or -1 with errno, until it succeeds or others have held it for 50 ms: one of them may be
 * a stopped process. What was waited for in vain under the name \a what is tried once only, until it was had again: who
 * has much to do there would otherwise do nothing else. False with \a error.
 */
bool waitForLock(const QByteArray &what, const std::function<int()> &lock, QString *error);

} // namespace morvek

#endif
