// SPDX-License-Identifier: Apache-2.0
#include "timedapplication.h"

#include <QtCore/QElapsedTimer>

#include <algorithm>
#include <utility>

TimedApplication *TimedApplication::instance()
{
    return static_cast<TimedApplication *>(QCoreApplication::instance());
}

bool TimedApplication::notify(QObject *receiver, QEvent *event)
{
    if (!m_isTiming || m_depth > 0)
        return QCoreApplication::notify(receiver, event);
    QElapsedTimer timer;
    timer.start();
    ++m_depth;
    const bool result = QCoreApplication::notify(receiver, event);
    --m_depth;
    m_longest = std::max(m_longest, timer.nsecsElapsed());
    return result;
}

qint64 TimedApplication::takeLongest()
{
    return std::exchange(m_longest, 0);
}
