// SPDX-License-Identifier: Apache-2.0
#include "networkuser.h"

#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "asyncnetworkinterfaceoperation.h"
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "networkinterfaceconfig.h"
#include "wificonnectionconfig.h"

#include <QtCore/QTextStream>

#include <algorithm>

using namespace morvek;

namespace {

constexpr int RenewalPause = 1000;

} // namespace

NetworkUser::NetworkUser()
{
    makeInterfaces();
    makeWifi();
    makeHotspot();
    connect(&m_renewal, &QTimer::timeout, this, &NetworkUser::renew);
    connect(&m_requests, &QTimer::timeout, this, &NetworkUser::request);
    m_renewal.start(RenewalPause);
}

NetworkUser::~NetworkUser()
{
    deleteNetworkInterfaceService(&m_interfaces);
    deleteWifiService(&m_wifi);
    deleteHotSpotService(&m_hotspot);
}

void NetworkUser::makeInterfaces()
{
    m_interfaces = newNetworkInterfaceService();
    const auto count = [this] { ++m_told; };
    connect(m_interfaces, &NetworkInterfaceService::interfaceConfigurationChanged, this, count);
    connect(m_interfaces, &NetworkInterfaceService::preferredInterfaceChanged, this, count);
    connect(m_interfaces, &NetworkInterfaceService::interfaceConnected, this, count);
    connect(m_interfaces, &NetworkInterfaceService::interfaceDisconnected, this, count);
}

void NetworkUser::makeWifi()
{
    m_wifi = newWifiService();
    connect(m_wifi, &WifiService::poweredChanged, this, [this] { ++m_told; });
    connect(m_wifi, &WifiService::connectedChanged, this, [this] { ++m_told; });
}

void NetworkUser::makeHotspot()
{
    m_hotspot = newHotSpotService();
    connect(m_hotspot, &HotSpotService::enabledChanged, this, [this] { ++m_told; });
}

void NetworkUser::renew()
{
    if (!m_interfaces->ready()) {
        deleteNetworkInterfaceService(&m_interfaces);
        makeInterfaces();
    }
    if (!m_wifi->ready()) {
        deleteWifiService(&m_wifi);
        makeWifi();
    }
    if (!m_hotspot->ready()) {
        deleteHotSpotService(&m_hotspot);
        makeHotspot();
    }
}

void NetworkUser::startRequests(int interval, quint32 seed)
{
    m_random.seed(seed);
    m_requests.start(interval);
}

void NetworkUser::stopRequests()
{
    m_requests.stop();
    if (!m_wifi->ready())
        return;
    m_wifi->powerOn();
    m_wifi->disconnectAccessPoint();
    m_commands += 2;
    scan();
}

void NetworkUser::request()
{
    switch (m_random() % 8) {
    case 0:
    case 1:
        scan();
        break;
    case 2:
        join();
        break;
    case 3:
        m_wifi->disconnectAccessPoint();
        ++m_commands;
        break;
    case 4:
        if (m_random() % 4) {
            m_wifi->powerOn();
        } else {
            m_wifi->powerOff();
        }
        ++m_commands;
        break;
    case 5:
    case 6:
        setHotspot();
        break;
    default:
        configure();
    }
}

void NetworkUser::configure()
{
    const QList<NetworkInterface> interfaces = m_interfaces->interfaces();
    if (interfaces.isEmpty())
        return;
    const NetworkInterface chosen = interfaces.at(int(m_random() % uint(interfaces.size())));
    NetworkInterfaceConfig config;
    if (chosen.configuration().type() == NetworkInterfaceConfig::Auto) {
        config.setType(NetworkInterfaceConfig::Manual);
        QNetworkAddressEntry address;
        address.setIp(QHostAddress(quint32(0x0a000001U + m_random() % 200)));
        address.setNetmask(QHostAddress(QStringLiteral("255.0.0.0")));
        config.addIpAddress(address);
        config.addGatewayAddress(QHostAddress(QStringLiteral("10.0.0.254")));
    }
    m_commands += 2;
    // It waits for addresses to go, which a daemon that has died meanwhile may never tell. When it is refused, it goes
    // on waiting, and what comes of that is told, too.
    follow(m_interfaces->configure(chosen, config), false, true);
}

void NetworkUser::scan()
{
    ++m_commands;
    follow(m_wifi->scan(), true);
}

void NetworkUser::join()
{
    WifiConnectionConfig config;
    config.setKeyManagementType(WifiKeyManagementPsk);
    config.setSecurityProtocol(WifiSecurityProtocolWpa2);
    config.setSsid(m_random() % 2 ? QStringLiteral("Home") : QStringLiteral("Garage"));
    config.setPasskey(config.ssid() == QLatin1String("Home") || m_random() % 4 == 0 ? QStringLiteral("correct horse 7")
                                                                                    : QStringLiteral("open sesame 42"));
    m_commands += 2;
    follow(m_wifi->connectAccessPoint(config), true);
}

void NetworkUser::setHotspot()
{
    switch (m_random() % 4) {
    case 0:
        follow(m_hotspot->configuration(), true);
        break;
    case 1:
        nameHotspot();
        break;
    case 2:
        follow(m_hotspot->setEnabled(true), true);
        break;
    default:
        follow(m_hotspot->setEnabled(false), true);
    }
}

/*! Which the tethering manager stores. */
void NetworkUser::nameHotspot()
{
    WifiHotspot profile;
    profile.setName(QStringLiteral("Car %1").arg(m_random() % 1000));
    profile.setPassphrase(QStringLiteral("correct horse 7"));
    profile.setSecurityType(WifiSecurityProtocolWpa2);
    profile.setInactivityTime(600);
    profile.setMaxClients(5);
    // Without the manager it is not written, and the operation stays open.
    const bool mustEnd = m_hotspot->ready();
    follow(m_hotspot->setConfiguration(profile), mustEnd);
}

template<typename Operation>
void NetworkUser::follow(Operation *operation, bool mustEnd, bool mayFailFirst)
{
    const int number = ++m_lastOperation;
    m_open.insert(number, mustEnd);
    const auto end = [this, operation, number](bool goesOn) {
        const bool isFirst = m_open.remove(number) != 0;
        if (isFirst)
            ++m_ended;
        else if (!m_goingOn.remove(number))
            ++m_endedTwice;
        if (isFirst && goesOn)
            m_goingOn.insert(number);
        operation->deleteLater();
    };
    connect(operation, &Operation::success, this, [end] { end(false); });
    connect(operation, &Operation::failure, this, [end, mayFailFirst] { end(mayFailFirst); });
}

QString NetworkUser::openText() const
{
    const auto waited = std::count(m_open.begin(), m_open.end(), true);
    return QStringLiteral("%1 %2 %3 %4").arg(waited).arg(m_lastOperation).arg(m_ended).arg(m_endedTwice);
}

QString NetworkUser::view() const
{
    QString text;
    QTextStream stream(&text);
    const auto truth = [](bool value) { return value ? "yes" : "no"; };
    stream << "ready " << truth(m_interfaces->ready()) << ' ' << truth(m_wifi->ready()) << ' '
           << truth(m_hotspot->ready());
    const QList<NetworkInterface> interfaces = m_interfaces->interfaces();
    for (const NetworkInterface &one : interfaces)
        stream << " / " << one << " under " << one.parent().name();
    WifiAccessPoint accessPoint = m_wifi->connectedAccessPoint();
    stream << " / preferred " << m_interfaces->preferredInterface() << " / powered " << truth(m_wifi->powered())
           << " connected " << truth(m_wifi->connected()) << ' ' << accessPoint << " / hotspot "
           << truth(m_hotspot->enabled());
    stream.flush();
    return text.simplified();
}
