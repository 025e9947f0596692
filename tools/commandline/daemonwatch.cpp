// SPDX-License-Identifier: Apache-2.0
#include "daemonwatch.h"

#include <zopobject.h>

#include <utility>

namespace morvek {

namespace {

constexpr int LookPause = 500; // in milliseconds

} // namespace

DaemonWatch::DaemonWatch(const QString &controlObject)
    : m_controlObject(controlObject),
      m_folder(controlObject.section(QLatin1Char('/'), 0, -2))
{
    // The folder tells a daemon that ends in order, or is replaced. The object of one that was killed may stay until
    // then, but cannot be opened. That it can is no news: the folder has not told yet, perhaps, that it is another one.
    const QString name = controlObject.section(QLatin1Char('/'), -1);
    connect(&m_folder, &ZopDirWatcher::objectAdded, this, [this, name](const QString &added) {
        if (added == name)
            set(true);
    });
    connect(&m_folder, &ZopDirWatcher::objectRemoved, this, [this, name](const QString &removed) {
        if (removed == name)
            set(false);
    });
    m_folder.setNameCacheEnabled(true);
    m_isThere = m_isThere || isServed();
    m_hasDied = !m_isThere;
    if (m_hasDied)
        QTimer::singleShot(0, this, &DaemonWatch::died);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (!isServed())
            set(false);
    });
    m_timer.start(LookPause);
}

bool DaemonWatch::isServed() const
{
    return ZopObject(m_controlObject, ZopObject::ReadWrite, false).isValid();
}

void DaemonWatch::set(bool isThere)
{
    if (std::exchange(m_isThere, isThere) == isThere)
        return;
    m_hasDied = true;
    if (isThere)
        Q_EMIT returned();
    else
        Q_EMIT died();
}

} // namespace morvek
