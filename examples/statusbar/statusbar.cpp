// SPDX-License-Identifier: Apache-2.0
#include "statusbar.h"

#include <asynchotspotconfigoperation.h>
#include <hotspotservice.h>
#include <networkinterfaceservice.h>
#include <networklibraryexports.h>
#include <wifiservice.h>

#include <QtCore/QTextStream>
#include <QtCore/QTimer>

using namespace morvek;

StatusBar::StatusBar()
    : m_interfaces(newNetworkInterfaceService()),
      m_wifi(newWifiService()),
      m_hotspot(newHotSpotService())
{
    connect(m_interfaces, &NetworkInterfaceService::preferredInterfaceChanged, this, &StatusBar::show);
    connect(m_interfaces, &NetworkInterfaceService::interfaceConfigurationChanged, this, &StatusBar::show);
    connect(m_wifi, &WifiService::readyChanged, this, &StatusBar::show);
    connect(m_wifi, &WifiService::poweredChanged, this, &StatusBar::show);
    connect(m_wifi, &WifiService::connectedChanged, this, &StatusBar::show);
    connect(m_hotspot, &HotSpotService::readyChanged, this, &StatusBar::readHotspotName);
    connect(m_hotspot, &HotSpotService::enabledChanged, this, &StatusBar::readHotspotName);
    show();
}

StatusBar::~StatusBar()
{
    delete m_reading;
    deleteHotSpotService(&m_hotspot);
    deleteWifiService(&m_wifi);
    deleteNetworkInterfaceService(&m_interfaces);
}

bool StatusBar::ready() const
{
    return m_interfaces->ready();
}

void StatusBar::show()
{
    const QString line = network() + QLatin1String(" | ") + wifi() + QLatin1String(" | ") + hotspot();
    if (line == m_shown || !ready())
        return;
    m_shown = line;
    QTextStream(stdout) << line << Qt::endl;
}

// Another application may have given the hotspot another name since it was on last.
void StatusBar::readHotspotName()
{
    delete m_reading; // what it would still tell is old
    setHotspotName(QString());
    if (!m_hotspot->enabled())
        return;
    AsyncHotspotConfigOperation *operation = m_hotspot->configuration();
    m_reading = operation;
    connect(operation, &AsyncHotspotConfigOperation::success, this, [this, operation] {
        setHotspotName(operation->results().value(0).name());
        operation->deleteLater();
    });
    connect(operation, &AsyncHotspotConfigOperation::failure, this, [this, operation] {
        setHotspotName(QLatin1Char('(') + operation->error().message() + QLatin1Char(')'));
        operation->deleteLater();
    });
    // A daemon that does not answer leaves an operation open for ever.
    QTimer::singleShot(3000, operation, [this, operation] {
        setHotspotName(QStringLiteral("(no answer)"));
        operation->deleteLater();
    });
}

void StatusBar::setHotspotName(const QString &name)
{
    m_hotspotName = name;
    show();
}

QString StatusBar::network() const
{
    const NetworkInterface preferred = m_interfaces->preferredInterface();
    if (!preferred.connected())
        return QStringLiteral("offline");
    const QList<QNetworkAddressEntry> addresses = preferred.configuration().ipAddresses();
    return preferred.name() + QLatin1Char(' ') + addresses.value(0).ip().toString();
}

QString StatusBar::wifi() const
{
    if (!m_wifi->ready())
        return QStringLiteral("no Wi-Fi yet");
    if (!m_wifi->powered())
        return QStringLiteral("Wi-Fi off");
    if (!m_wifi->connected())
        return QStringLiteral("Wi-Fi not connected");
    return QLatin1String("Wi-Fi ") + m_wifi->connectedAccessPoint().ssid();
}

QString StatusBar::hotspot() const
{
    if (!m_hotspot->ready())
        return QStringLiteral("no hotspot yet");
    if (!m_hotspot->enabled())
        return QStringLiteral("hotspot off");
    if (m_hotspotName.isEmpty())
        return QStringLiteral("hotspot on");
    return QLatin1String("hotspot on ") + m_hotspotName;
}
