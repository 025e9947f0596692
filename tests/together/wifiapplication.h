// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_WIFIAPPLICATION_H
#define MORVEK_TEST_WIFIAPPLICATION_H

#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "networklibraryexports.h"
#include "protectedby.h"
#include "servicepointer.h"
#include "watched.h"
#include "wifiservice.h"

// An application that uses the Wi-Fi service.

using Scan = Watched<morvek::AsyncWifiScanOperation>;
using Connect = Watched<morvek::AsyncWifiConnectOperation>;
using Application = WifiServicePointer;

/*! One whose service is ready, unless the test has failed. */
inline Application wifiApplication()
{
    Application service(newWifiService());
    if (!service->ready())
        QSignalSpy(service.get(), &morvek::ServiceBase::readyChanged).wait(Patience);
    return service;
}

/*! What joins the network \a ssid, which is open. */
inline morvek::WifiConnectionConfig openNetwork(const QString &ssid)
{
    morvek::WifiConnectionConfig config;
    config.setSsid(ssid);
    return config;
}

/*! What \a scan has found with this BSSID; empty when there is none. */
inline morvek::WifiAccessPoint found(const Scan &scan, const QString &bssid)
{
    const QList<morvek::WifiAccessPoint> results = scan.operation->results();
    for (const morvek::WifiAccessPoint &accessPoint : results) {
        if (accessPoint.bssid() == bssid)
            return accessPoint;
    }
    return morvek::WifiAccessPoint();
}

#endif
