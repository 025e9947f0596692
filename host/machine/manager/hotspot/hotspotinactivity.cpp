// SPDX-License-Identifier: Apache-2.0
#include "hotspotinactivity.h"

#include "eventlog.h"
#include "hotspotstations.h"
#include "pace.h"

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
        if (isTime && (end > now || end == 0)) // 0: it has none
            return true;
    }
    return false;
}

} // namespace

HotspotInactivity::HotspotInactivity(const Pace *pace, const EventLog *log, const QString &leases, QObject *parent)
    : QObject(parent),
      m_pace(pace),
      m_log(log),
      m_folder(leases)
{
}

HotspotInactivity::~HotspotInactivity() = default;

void HotspotInactivity::begin(const QString &interface, int milliseconds)
{
    end();
    if (milliseconds == 0)
        return;
    m_interface = interface;
    m_time = milliseconds;
    m_readsLeases = false;
    m_stations = new HotspotStations(interface, this);
    connect(m_stations, &HotspotStations::counted, this, &HotspotInactivity::onCounted);
    connect(m_stations, &HotspotStations::unreadable, this, &HotspotInactivity::onUnreadable);
    m_stations->watch();
}

void HotspotInactivity::end()
{
    ++m_step;
    m_isWaiting = false;
    if (!m_stations)
        return;
    m_stations->disconnect(this);
    std::exchange(m_stations, nullptr)->deleteLater(); // it may be telling something
}

void HotspotInactivity::onCounted(int stations)
{
    const bool wasCounting = m_isWaiting && !m_readsLeases;
    m_readsLeases = false;
    if (stations != 0) {
        ++m_step;
        m_isWaiting = false;
    } else if (!wasCounting) {
        waitFor(m_time);
    }
}

void HotspotInactivity::onUnreadable(const QString &reason)
{
    m_log->happened("hotspot", QStringLiteral("the supplicant tells no stations: ") + reason);
    if (std::exchange(m_readsLeases, true))
        return;
    m_rest = m_time;
    waitForLook(); // the DHCP server may not have made its file yet
}

void HotspotInactivity::lookAtLeases()
{
    QFile file(QStringLiteral("%1/dnsmasq-%2.leases").arg(m_folder, m_interface));
    const bool isReadable = file.open(QIODevice::ReadOnly);
    if (!isReadable && !std::exchange(m_hasSaid, true))
        m_log->trouble(QStringLiteral("the hotspot does not stop by itself: neither the supplicant nor \"%1\" tells "
                                      "who has joined it")
                           .arg(file.fileName()));
    if (!isReadable || hasLease(&file)) // a client that leaves is taken to be there until then
        m_rest = m_time;
    if (m_rest == 0)
        Q_EMIT expired();
    else
        waitForLook();
}

void HotspotInactivity::waitForLook()
{
    const int interval = std::min(m_rest, LookInterval);
    m_rest -= interval;
    waitFor(interval);
}

void HotspotInactivity::waitFor(int milliseconds)
{
    m_isWaiting = true;
    m_pace->after(milliseconds, this, [this, step = ++m_step] {
        if (step == m_step)
            onTime();
    });
}

void HotspotInactivity::onTime()
{
    if (m_readsLeases)
        lookAtLeases();
    else
        Q_EMIT expired();
}

} // namespace morvek
