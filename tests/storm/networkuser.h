// SPDX-License-Identifier: Apache-2.0
#ifndef NETWORKUSER_H
#define NETWORKUSER_H

#include "hotspotservice.h"
#include "networkinterfaceservice.h"
#include "networklibraryexports.h"
#include "wifiservice.h"

#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QSet>
#include <QtCore/QTimer>

#include <random>

/*!
 * Uses the three services as an application does. A service that has not become ready within a second is made anew, as
 * the services' manual says.
 */
class NetworkUser : public QObject
{
public:
    NetworkUser();
    ~NetworkUser() override;

    void startRequests(int interval, quint32 seed);
    /*! No more requests; leaves the network and scans, which ends whatever waits for the radio. */
    void stopRequests();

    /*! How many operations must still end, how many were started and have ended, and how many ended too often. */
    QString openText() const;
    /*! What the services tell, on one line. */
    QString view() const;
    /*! How many commands the requests of this user have made, at least. */
    int commands() const { return m_commands; }
    /*! How many signals the services have emitted. */
    int told() const { return m_told; }

private:
    void makeInterfaces();
    void makeWifi();
    void makeHotspot();
    void renew();
    void request();
    void configure();
    void scan();
    void join();
    void setHotspot();
    void nameHotspot();
    template<typename Operation>
    void follow(Operation *operation, bool mustEnd, bool mayFailFirst = false);

    morvek::NetworkInterfaceService *m_interfaces = nullptr;
    morvek::WifiService *m_wifi = nullptr;
    morvek::HotSpotService *m_hotspot = nullptr;
    QTimer m_renewal;
    QTimer m_requests;
    std::mt19937 m_random;
    QMap<int, bool> m_open; // and whether it must end
    QSet<int> m_goingOn;    // have failed, and may end once more
    int m_lastOperation = 0;
    int m_ended = 0;
    int m_endedTwice = 0;
    int m_commands = 0;
    int m_told = 0;
};

#endif
