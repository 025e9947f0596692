// SPDX-License-Identifier: Apache-2.0
#include "hotspotinactivity.h"

#include "eventlog.h"
#include "hotspotstations.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>

#include <algorithm>
#include <utility>

namespace morvek {

namespace {

constexpr int LookInterval = 5000; // while leases are all there is

/*! Whether \a file, of the DHCP server's, has a lease that has not ended. */
bool hasLease(QFile *file)
{
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    while (!file->atEnd()) {
        const QList<QByteArray> words = file->readLine().split(' '); // its end, the client's MAC address, ...
        bool isTime = false;
        const qint64 end = words.first().toLongLong(&isTime);
        if (isTime && words.size() > 1 && (end > now || end == 0)) // 0: it has none
            return true;
    }
    return false;
}

} // namespace

HotspotInactivity::HotspotInactivity(const EventLog *log, const QString &leases, QObject *parent)
    : QObject(parent),
      m_log(log),
      m_folder(leases)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &HotspotInactivity::onTime);
}

HotspotInactivity::~HotspotInactivity() = default;

void HotspotInactivity::begin(const QString &interface, int milliseconds)
{
    end();
    if (milliseconds == 0)
        return;
    m_interface = interface;
    m_time = milliseconds;
    m_unused.start();
    m_stations = new HotspotStations(interface, this);
    connect(m_stations, &HotspotStations::counted, this, &HotspotInactivity::onCounted);
    connect(m_stations, &HotspotStations::unreadable, this, &HotspotInactivity::onUnreadable);
    m_stations->watch();
}

void HotspotInactivity::end()
{
    m_timer.stop();
    if (!m_stations)
        return;
    m_stations->disconnect(this);
    std::exchange(m_stations, nullptr)->deleteLater(); // it may be telling something
}

void HotspotInactivity::onCounted(int stations)
{
    m_readsLeases = false;
    if (stations != 0)
        m_timer.stop();
    else if (!m_timer.isActive())
        m_timer.start(m_time);
}

void HotspotInactivity::onUnreadable(const QString &reason)
{
    m_log->happened("hotspot", QStringLiteral("the supplicant tells no stations: ") + reason);
    m_readsLeases = true;
    onTime();
}

void HotspotInactivity::onTime()
{
    if (!m_readsLeases) {
        Q_EMIT expired();
        return;
    }
    QFile file(QStringLiteral("%1/dnsmasq-%2.leases").arg(m_folder, m_interface));
    if (!file.open(QIODevice::ReadOnly)) {
        if (!std::exchange(m_hasSaid, true))
            m_log->trouble(
                QStringLiteral("the hotspot does not stop by itself: neither the supplicant nor \"%1\" tells "
                               "who has joined it")
                    .arg(file.fileName()));
        return;
    }
    if (hasLease(&file)) // a client that leaves is taken to be there until then
        m_unused.start();
    const qint64 rest = m_time - m_unused.elapsed();
    if (rest > 0)
        m_timer.start(int(std::min<qint64>(rest, LookInterval)));
    else
        Q_EMIT expired();
}

} // namespace morvek
