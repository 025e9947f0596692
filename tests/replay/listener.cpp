// SPDX-License-Identifier: Apache-2.0
#include "listener.h"

#include "asyncwifiscanoperation.h"
#include "daemonclient.h"
#include "hotspotservice.h"
#include "networkinterfaceservice.h"
#include "wifiservice.h"

using namespace morvek;

namespace {

QString textOf(const NetworkInterface &interface)
{
    QStringList words {interface.name(),
                       QString::number(interface.type()),
                       interface.available() ? QStringLiteral("up") : QStringLiteral("down"),
                       interface.connected() ? QStringLiteral("connected") : QStringLiteral("alone"),
                       interface.macAddress(),
                       QString::number(interface.maxTransmissionUnit()),
                       QString::number(interface.priority()),
                       interface.parent().name(),
                       QString::number(interface.configuration().type())};
    const QList<QNetworkAddressEntry> addresses = interface.configuration().ipAddresses();
    for (const QNetworkAddressEntry &address : addresses)
        words += address.ip().toString() + QLatin1Char('/') + address.netmask().toString();
    const QList<QHostAddress> gateways = interface.configuration().gatewayAddresses();
    for (const QHostAddress &gateway : gateways)
        words += gateway.toString();
    return words.join(QLatin1Char(' '));
}

QString textOf(const WifiAccessPoint &accessPoint)
{
    return QStringLiteral("%1 \"%2\" %3 %4 %5")
        .arg(accessPoint.bssid(), accessPoint.ssid())
        .arg(accessPoint.rssi())
        .arg(accessPoint.frequency())
        .arg(int(accessPoint.securityProtocols()));
}

} // namespace

Listener::Listener()
    : m_interfaces(newNetworkInterfaceService()),
      m_wifi(newWifiService()),
      m_hotspot(newHotSpotService())
{
    const auto noteOf = [this](const char *what) {
        return [this, what](const NetworkInterface &interface) {
            if (interface.name() == QLatin1String("veth0"))
                m_mark = interface.maxTransmissionUnit();
            else
                note(QLatin1String(what) + QLatin1Char(' ') + textOf(interface));
        };
    };
    connect(m_interfaces.get(), &NetworkInterfaceService::interfaceConfigurationChanged, this, noteOf("changed"));
    connect(m_interfaces.get(), &NetworkInterfaceService::preferredInterfaceChanged, this, noteOf("preferred"));
    connect(m_interfaces.get(), &NetworkInterfaceService::interfaceConnected, this, noteOf("connected"));
    connect(m_interfaces.get(), &NetworkInterfaceService::interfaceDisconnected, this, noteOf("disconnected"));
    connect(m_wifi.get(), &WifiService::poweredChanged, this,
            [this](bool powered) { note(QStringLiteral("Wi-Fi powered %1").arg(powered)); });
    connect(m_wifi.get(), &WifiService::connectedChanged, this, [this](bool connected) {
        note(QStringLiteral("Wi-Fi connected %1 %2").arg(connected).arg(textOf(m_wifi->connectedAccessPoint())));
    });
    connect(m_hotspot.get(), &HotSpotService::enabledChanged, this,
            [this](bool enabled) { note(QStringLiteral("hotspot enabled %1").arg(enabled)); });
}

Listener::~Listener() = default;

bool Listener::waitForMark(int number) const
{
    const bool hasHeard = QTest::qWaitFor([&] { return m_mark == number; }, Patience);
    QCoreApplication::processEvents(); // what came before it may have been read after it
    return hasHeard;
}

bool Listener::isReady() const
{
    return m_interfaces->ready() && m_wifi->ready() && m_hotspot->ready();
}

void Listener::scan()
{
    AsyncWifiScanOperation *operation = m_wifi->scan();
    m_operations.emplace_back(operation);
    connect(operation, &AsyncWifiScanOperation::success, this, [this](AsyncWifiScanOperation *scan) {
        QStringList found;
        const QList<WifiAccessPoint> results = scan->results();
        for (const WifiAccessPoint &accessPoint : results)
            found += textOf(accessPoint);
        note(QStringLiteral("scanned ") + found.join(QStringLiteral(", ")));
    });
    connect(operation, &AsyncWifiScanOperation::failure, this, [this] { note(QStringLiteral("not scanned")); });
}

void Listener::note(const QString &text)
{
    QStringList names;
    const QList<NetworkInterface> interfaces = m_interfaces->interfaces();
    for (const NetworkInterface &interface : interfaces)
        names += interface.name();
    notes += text + QStringLiteral(" of ") + names.join(QLatin1Char(' '));
}
