// SPDX-License-Identifier: Apache-2.0
#include "wifitile.h"

#include <networklibraryexports.h>
#include <wifiservice.h>

using namespace morvek;

WifiTile::WifiTile(QObject *parent)
    : QObject(parent),
      m_wifi(newWifiService())
{
    m_switching.setSingleShot(true);
    connect(m_wifi, &WifiService::poweredChanged, &m_switching, &QTimer::stop);
    connect(m_wifi, &WifiService::poweredChanged, this, [this] { m_hasFailed = false; });
    connect(&m_switching, &QTimer::timeout, this, [this] { m_hasFailed = true; });
}

WifiTile::~WifiTile()
{
    deleteWifiService(&m_wifi);
}

QString WifiTile::text() const
{
    if (!m_wifi->ready())
        return tr("No Wi-Fi yet");
    if (m_hasFailed)
        return tr("That did not work");
    if (m_switching.isActive())
        return tr("One moment");
    if (!m_wifi->powered())
        return tr("Off");
    return m_wifi->connected() ? m_wifi->connectedAccessPoint().ssid() : tr("Not connected");
}

void WifiTile::tap(int patience)
{
    m_hasFailed = false;
    m_switching.start(patience);
    if (m_wifi->powered())
        m_wifi->powerOff();
    else
        m_wifi->powerOn();
}
