// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_HOTSPOTINACTIVITY_H
#define MORVEK_HOSTD_HOTSPOTINACTIVITY_H

#include <QtCore/QObject>

namespace morvek {

class EventLog;
class HotspotStations;
class Pace;

/*!
 * Counts the time in which nobody has joined a hotspot that runs. Who has is known from the supplicant or, where that
 * does not tell, from the addresses that the manager's DHCP server has leased. While neither can be read, nothing is
 * counted.
 */
class HotspotInactivity : public QObject
{
    Q_OBJECT

public:
    /*! \a leases is the folder of the DHCP server's files. \a pace and \a log must outlive this. */
    HotspotInactivity(const Pace *pace, const EventLog *log, const QString &leases, QObject *parent = nullptr);
    ~HotspotInactivity() override;

    /*! Counts anew, for a hotspot on \a interface, until \a milliseconds have passed; 0: for ever. */
    void begin(const QString &interface, int milliseconds);
    void end();

Q_SIGNALS:
    void expired();

private:
    Q_DISABLE_COPY(HotspotInactivity)

    void onCounted(int stations);
    void onUnreadable(const QString &reason);
    void lookAtLeases();
    void waitForLook();
    void waitFor(int milliseconds);
    void onTime();

    const Pace *m_pace;
    const EventLog *m_log;
    QString m_folder;
    QString m_interface;
    int m_time = 0;
    int m_rest = 0; // of it, when leases are all there is
    bool m_readsLeases = false;
    bool m_isWaiting = false;
    int m_step = 0;                        // counts what is waited for, so that only the latest counts
    bool m_hasSaid = false;                // that nothing is counted
    HotspotStations *m_stations = nullptr; // while it counts
};

} // namespace morvek

#endif
