// SPDX-License-Identifier: Apache-2.0
#include "lockwait.h"

#include "zoppath.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QFile>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

namespace morvek {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds LongestWait = 50ms;
// A writer holds its lock for some microseconds, and among several each must get its turn.
constexpr std::chrono::microseconds FirstPause = 10us;
constexpr std::chrono::microseconds LongestPause = 200us;

thread_local bool isWaiting = true;

bool isHeldByOthers(int error)
{
    return error == EAGAIN || error == EACCES;
}

} // namespace

bool waitForLock(const QByteArray &what, const std::function<int()> &lock, QString *error)
{
    const QDeadlineTimer deadline(isWaiting ? LongestWait : 0ms, Qt::PreciseTimer);
    std::chrono::microseconds pause = FirstPause;
    while (lock() != 0) {
        if (errno == EINTR)
            continue;
        if (!isHeldByOthers(errno)) {
            *error = systemError(errno);
            return false;
        }
        if (deadline.hasExpired()) {
            *error = QStringLiteral("another process keeps \"%1\" locked").arg(QFile::decodeName(what));
            errno = EAGAIN;
            return false;
        }
        std::this_thread::sleep_for(pause);
        pause = std::min(2 * pause, LongestPause);
    }
    return true;
}

bool setWaitingForLocks(bool waiting)
{
    return std::exchange(isWaiting, waiting);
}

} // namespace morvek
