// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_STAND_H
#define MORVEK_TEST_STAND_H

#include "daemonclient.h"
#include "wifihotspot.h"

#include <QtCore/QVector>

/*! An access point as an application sees it. */
struct StandAccessPoint
{
    const char *bssid;
    const char *ssid;
    const char *passkey;
    int frequency; // MHz
    int weakest;   // dBm
    int strongest;
    int protocols;
    int keyManagement;
    int ciphers;
};

/*!
 * What is behind the daemons of a test, and what it is called there. Cases that are written with it hold on each stand;
 * a program of them is linked with the one that it is for.
 */
class Stand
{
public:
    /*! That of this program. */
    static std::unique_ptr<Stand> make();
    Stand();
    virtual ~Stand() = default;

    /*! Starts a daemon on a stand that is as described here, whatever has happened to it before. */
    virtual bool start(DaemonFixture *daemon) = 0;

    QString preferred;
    /*! Connected by DHCP, and the one that is preferred when the other is not connected. */
    QString wired;
    QString leases;  //!< "10.0.0.0/8": where its addresses come from
    QString gateway; //!< of these
    QString netmask;
    QString free; //!< one of these addresses that nobody has

    QVector<StandAccessPoint> air; //!< what a scan finds; empty without a radio
    int home = 0;                  //!< which of them is joined at the start
    int garage = 0;                //!< which of them is joined with a passkey
    int open = 0;                  //!< which of them needs none

    morvek::WifiHotspot car; //!< the hotspot's profile at the start, which the cases write where it is another one
};

#endif
