// SPDX-License-Identifier: Apache-2.0
#include "wifirequest_p.h"

#include "publishedsecurity.h"

#include <wifiservice.h>

namespace morvek {

WifiRequest::WifiRequest(NetworkController *controller, SharedStation *station, const QString &subject, int deadline)
    : NetworkRequest(controller, subject, deadline),
      m_station(station)
{
}

WifiRequest::~WifiRequest() = default;

bool WifiRequest::needRadio()
{
    if (station().state().powered)
        return true;
    fail(NotReady, tr("Wi-Fi is off: switch it on first."));
    return false;
}

void WifiRequest::onRadioOff()
{
    if (!station().state().powered)
        fail(Overtaken, tr("Wi-Fi was switched off meanwhile."));
}

void WifiRequest::scan()
{
    m_scan.reset();
    m_scan = std::make_unique<ScanRun>(m_station);
    connect(m_scan.get(), &ScanRun::found, this, &WifiRequest::onScanned);
    connect(m_scan.get(), &ScanRun::failed, this,
            [this](const QString &text) { fail(NotReady, tr("The Wi-Fi service is not ready."), 0, text); });
}

void WifiRequest::onScanned(const QList<WifiAccessPoint> &, const PublishedSecurity &) { }

} // namespace morvek
