// SPDX-License-Identifier: Apache-2.0
#include "daemonwatch.h"

#include "zoplook_p.h"

#include <utility>

namespace morvek {

namespace {

constexpr int LookPause = 500; // in milliseconds
const QString ControlObject = QStringLiteral("control");

QString folderOf(const QString &daemon)
{
    return QStringLiteral("/zop/services/") + daemon.toLower().remove(QLatin1Char('-'));
}

} // namespace

DaemonWatch::DaemonWatch(const QString &daemon, QObject *parent)
    : QObject(parent),
      m_daemon(daemon),
      m_folder(folderOf(daemon), nullptr)
{
    // The folder tells a daemon that ends in order, or is replaced. The object of one that was killed may stay until
    // then, but cannot be opened. That it can is no news: the folder has not told yet, perhaps, that it is another one.
    connect(&m_folder, &ZopDirWatcher::objectAdded, this, [this](const QString &added) {
        if (added == ControlObject)
            set(true);
    });
    connect(&m_folder, &ZopDirWatcher::objectRemoved, this, [this](const QString &removed) {
        if (removed == ControlObject)
            set(false);
    });
    m_folder.setNameCacheEnabled(true);
    m_hasDied = !m_isThere;
    if (m_hasDied)
        QTimer::singleShot(0, this, &DaemonWatch::died);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (!isServed(m_daemon))
            set(false);
    });
    m_timer.start(LookPause);
}

DaemonWatch::~DaemonWatch() = default;

void DaemonWatch::setPause(int milliseconds)
{
    m_timer.setInterval(milliseconds);
}

bool DaemonWatch::isServed(const QString &daemon)
{
    return canBeOpened(folderOf(daemon) + QLatin1Char('/') + ControlObject, ToAsk);
}

void DaemonWatch::look()
{
    set(isServed(m_daemon));
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
