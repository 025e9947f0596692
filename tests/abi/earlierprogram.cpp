// SPDX-License-Identifier: Apache-2.0
// An application that uses every public class. It is built against the library of an earlier commit and runs with
// today's: it tells what it sees, line by line, and ends.
#include <asynchotspotconfigoperation.h>
#include <asynchotspotenableoperation.h>
#include <asyncnetworkinterfaceoperation.h>
#include <asyncwificonnectoperation.h>
#include <asyncwifiscanoperation.h>
#include <hotspotservice.h>
#include <networkinterfaceservice.h>
#include <networklibraryexports.h>
#include <wificonnectionconfig.h>
#include <wifiservice.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

#include <algorithm>

using namespace morvek;

class Story : public QObject
{
    Q_OBJECT

public:
    void begin();

private Q_SLOTS:
    void configured(morvek::AsyncNetworkInterfaceOperation *operation);
    void scanned(morvek::AsyncWifiScanOperation *operation);
    void joined(morvek::AsyncWifiConnectOperation *operation);
    void refused(morvek::AsyncWifiConnectOperation *operation);
    void profileRead(morvek::AsyncHotspotConfigOperation *operation);
    void profileWritten(morvek::AsyncHotspotConfigOperation *operation);
    void switched(morvek::AsyncHotspotEnableOperation *operation);

private:
    void useWifi();
    void useHotspot();
    void join(const QString &passkey);
    void end();

    QTextStream m_out {stdout};
    NetworkInterfaceService *m_interfaces = nullptr;
    WifiService *m_wifi = nullptr;
    HotSpotService *m_hotspot = nullptr;
};

void Story::begin()
{
    m_interfaces = newNetworkInterfaceService();
    const ServiceBase *base = m_interfaces;
    m_out << "interfaces: available " << base->available() << ", ready " << base->ready() << Qt::endl;
    QList<NetworkInterface> list = m_interfaces->interfaces();
    NetworkInterface wired;
    for (const NetworkInterface &one : qAsConst(list)) {
        const NetworkInterfaceConfig config = one.configuration();
        m_out << one.name() << ": type " << one.type() << ", priority " << one.priority() << ", mode " << config.type()
              << ", gateway " << config.gatewayAddresses().value(0).toString() << ", parent '" << one.parent().name()
              << '\'' << Qt::endl;
        if (one.name() == QLatin1String("eth0"))
            wired = one;
    }
    m_out << "preferred: " << m_interfaces->preferredInterface().name() << Qt::endl;

    QNetworkAddressEntry address;
    address.setIp(QHostAddress(QStringLiteral("10.20.0.77")));
    address.setNetmask(QHostAddress(QStringLiteral("255.255.0.0")));
    NetworkInterfaceConfig config;
    config.setType(NetworkInterfaceConfig::Manual);
    config.addIpAddress(address);
    config.addGatewayAddress(QHostAddress(QStringLiteral("10.20.0.1")));
    connect(m_interfaces, &NetworkInterfaceService::interfaceConfigurationChanged, this,
            [this](const NetworkInterface &changed) {
                if (changed.name() != QLatin1String("eth0") || changed.configuration().ipAddresses().isEmpty())
                    return;
                disconnect(m_interfaces, nullptr, this, nullptr);
                m_out << "eth0 has " << changed.configuration().ipAddresses().first().ip().toString() << Qt::endl;
                useWifi();
            });
    AsyncNetworkInterfaceOperation *operation = m_interfaces->configure(wired, config);
    connect(operation, SIGNAL(success(morvek::AsyncNetworkInterfaceOperation *)), this,
            SLOT(configured(morvek::AsyncNetworkInterfaceOperation *)));
}

void Story::configured(AsyncNetworkInterfaceOperation *operation)
{
    m_out << "configured: " << operation->results().first().name() << Qt::endl;
    operation->deleteLater();
}

void Story::useWifi()
{
    m_wifi = newWifiService();
    connect(m_wifi, &WifiService::readyChanged, this, [this](bool ready) {
        m_out << "Wi-Fi: ready " << ready << ", powered " << m_wifi->powered() << ", connected to "
              << m_wifi->connectedAccessPoint().ssid() << Qt::endl;
        AsyncWifiScanOperation *operation = m_wifi->scan();
        connect(operation, SIGNAL(success(morvek::AsyncWifiScanOperation *)), this,
                SLOT(scanned(morvek::AsyncWifiScanOperation *)), Qt::QueuedConnection);
    });
}

void Story::scanned(AsyncWifiScanOperation *operation)
{
    QList<WifiAccessPoint> found = operation->results();
    std::sort(found.begin(), found.end(), [](const WifiAccessPoint &left, const WifiAccessPoint &right) {
        return left.frequency() < right.frequency();
    });
    m_out << "found: " << found.size() << Qt::endl;
    for (const WifiAccessPoint &accessPoint : qAsConst(found)) {
        if (accessPoint.ssid() == QLatin1String("Garage"))
            m_out << "Garage: " << accessPoint.bssid() << ", frequency " << accessPoint.frequency() << ", protocols "
                  << accessPoint.securityProtocols() << Qt::endl;
    }
    operation->deleteLater();
    join(QString());
}

void Story::join(const QString &passkey)
{
    WifiConnectionConfig config;
    config.setSsid(QStringLiteral("Garage"));
    config.setPasskey(passkey);
    config.setKeyManagementType(WifiKeyManagementPsk);
    config.setSecurityProtocol(WifiSecurityProtocolWpa2);
    const WifiConnectionConfig copy = config;
    m_out << "valid " << copy.isValid() << Qt::endl;
    AsyncWifiConnectOperation *operation = m_wifi->connectAccessPoint(copy);
    connect(operation, &AsyncWifiConnectOperation::success, this, &Story::joined);
    connect(operation, &AsyncWifiConnectOperation::failure, this, &Story::refused);
}

void Story::refused(AsyncWifiConnectOperation *operation)
{
    m_out << "refused: " << operation->error().code() << ' ' << operation->error().message() << Qt::endl;
    operation->deleteLater();
    if (operation->error().message() == QLatin1String("Wifi Configuration provided is not valid"))
        join(QStringLiteral("open sesame 42"));
}

void Story::joined(AsyncWifiConnectOperation *operation)
{
    m_out << "joined: " << operation->results().first().ssid() << Qt::endl;
    operation->deleteLater();
    useHotspot();
}

void Story::useHotspot()
{
    m_hotspot = newHotSpotService();
    connect(m_hotspot, &HotSpotService::enabledChanged, this, [this](bool enabled) {
        m_out << "hotspot: " << (enabled ? "on" : "off") << Qt::endl;
        end();
    });
    connect(m_hotspot, &HotSpotService::readyChanged, this, [this] {
        connect(m_hotspot->configuration(), &AsyncHotspotConfigOperation::success, this, &Story::profileRead);
    });
}

void Story::profileRead(AsyncHotspotConfigOperation *operation)
{
    WifiHotspot profile = operation->results().first();
    operation->deleteLater();
    m_out << "profile: " << profile.name() << ", band " << profile.band() << ", clients " << profile.maxClients()
          << ", security " << profile.securityType() << Qt::endl;
    profile.setName(QStringLiteral("Back seat"));
    connect(m_hotspot->setConfiguration(profile), SIGNAL(success(morvek::AsyncHotspotConfigOperation *)), this,
            SLOT(profileWritten(morvek::AsyncHotspotConfigOperation *)));
}

void Story::profileWritten(AsyncHotspotConfigOperation *operation)
{
    m_out << "profile written" << Qt::endl;
    operation->deleteLater();
    connect(m_hotspot->setEnabled(true), &AsyncHotspotEnableOperation::success, this, &Story::switched);
}

void Story::switched(AsyncHotspotEnableOperation *operation)
{
    m_out << "switched: " << operation->results().first() << Qt::endl;
    operation->deleteLater();
}

void Story::end()
{
    deleteHotSpotService(&m_hotspot);
    deleteWifiService(&m_wifi);
    deleteNetworkInterfaceService(&m_interfaces);
    m_out << "end: " << (m_hotspot || m_wifi || m_interfaces ? "left" : "gone") << Qt::endl;
    QCoreApplication::quit();
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    Story story;
    story.begin();
    return application.exec();
}

#include "earlierprogram.moc"
