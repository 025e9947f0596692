// SPDX-License-Identifier: Apache-2.0
#include "scanrun_p.h"

#include "publishedsecurity.h"
#include "sharedstation_p.h"

#include <asyncwifiscanoperation.h>
#include <wifiservice.h>

namespace morvek {

ScanRun::ScanRun(SharedStation *station)
    : m_station(station),
      m_operation(station->service()->scan())
{
    connect(m_operation.get(), &AsyncWifiScanOperation::success, this, &ScanRun::onSuccess);
    connect(m_operation.get(), &AsyncWifiScanOperation::failure, this,
            [this] { Q_EMIT failed(m_operation->error().message()); });
    station->beginScan();
}

ScanRun::~ScanRun()
{
    if (m_station)
        m_station->endScan();
}

void ScanRun::onSuccess()
{
    const QList<WifiAccessPoint> accessPoints = m_operation->results();
    const PublishedSecurity security;
    SharedStation::Found networks;
    networks.reserve(accessPoints.size());
    for (const WifiAccessPoint &accessPoint : accessPoints)
        networks.append({accessPoint.ssid(), accessPoint.rssi(), security.ofScanned(accessPoint)});
    m_station->setFound(networks);
    Q_EMIT found(accessPoints, security);
}

} // namespace morvek
