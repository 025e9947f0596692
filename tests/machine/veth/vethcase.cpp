// SPDX-License-Identifier: Apache-2.0
#include "vethcase.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace morvek;

void VethCase::initTestCase()
{
    m_manager = std::make_unique<RealManager>();
    QVERIFY(m_manager->start());
}

void VethCase::init()
{
    QVERIFY(m_manager->startServer());
    shell("nmcli connection add type ethernet ifname vt0 con-name house ipv4.dhcp-timeout 2");
    shell("nmcli connection up house");
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(startDaemon());
    QVERIFY(startApplication());
    QVERIFY(interface("vt0").connected());
}

void VethCase::cleanup()
{
    m_service.reset();
    m_daemon.reset();
    shell("nmcli --terse --fields UUID connection | xargs --no-run-if-empty nmcli connection delete || true");
    QTRY_COMPARE_WITH_TIMEOUT(shell("nmcli --terse --get-values GENERAL.STATE device show vt0"),
                              QByteArray("30 (disconnected)"), Patience);
    m_manager->stopServer();
}

void VethCase::cleanupTestCase()
{
    m_manager.reset();
}

bool VethCase::startDaemon(const QStringList &arguments)
{
    return daemon().start(
        m_daemon->root(),
        QStringList {QStringLiteral("--verbose"), QStringLiteral("--network"), QStringLiteral("manager")} + arguments);
}

bool VethCase::startApplication()
{
    m_service.reset();
    m_service.reset(newNetworkInterfaceService());
    return m_service->ready();
}

NetworkInterface VethCase::interface(NetworkInterfaceService *service, const char *name)
{
    const QList<NetworkInterface> interfaces = service->interfaces();
    for (const NetworkInterface &interface : interfaces) {
        if (interface.name() == QLatin1String(name))
            return interface;
    }
    return NetworkInterface();
}

QString VethCase::text(const NetworkInterface &interface)
{
    const NetworkInterfaceConfig config = interface.configuration();
    QStringList words {config.type() == NetworkInterfaceConfig::Manual ? QStringLiteral("manual")
                                                                       : QStringLiteral("auto")};
    const QList<QNetworkAddressEntry> addresses = config.ipAddresses();
    for (const QNetworkAddressEntry &address : addresses)
        words += QStringLiteral("%1/%2").arg(address.ip().toString()).arg(address.prefixLength());
    const QList<QHostAddress> gateways = config.gatewayAddresses();
    for (const QHostAddress &gateway : gateways)
        words += QStringLiteral("via ") + gateway.toString();
    words += interface.connected() ? QStringLiteral("connected") : QStringLiteral("apart");
    return words.join(QLatin1Char(' '));
}

NetworkInterfaceConfig VethCase::dhcp()
{
    NetworkInterfaceConfig config;
    config.setType(NetworkInterfaceConfig::Auto);
    return config;
}

NetworkInterfaceConfig VethCase::byHand(const char *address, const char *gateway)
{
    QNetworkAddressEntry entry;
    entry.setIp(QHostAddress(QLatin1String(address)));
    entry.setNetmask(QHostAddress(QStringLiteral("255.255.255.0")));
    NetworkInterfaceConfig config;
    config.setType(NetworkInterfaceConfig::Manual);
    config.addIpAddress(entry);
    config.addGatewayAddress(QHostAddress(QLatin1String(gateway)));
    return config;
}

QStringList VethCase::kernelAddresses(const char *interface)
{
    const QJsonArray links =
        QJsonDocument::fromJson(shell(QByteArray("ip -j -4 address show dev ") + interface)).array();
    QStringList addresses;
    const QJsonArray entries = links.at(0).toObject().value(QLatin1String("addr_info")).toArray();
    for (const QJsonValue &entry : entries)
        addresses += QStringLiteral("%1/%2")
                         .arg(entry.toObject().value(QLatin1String("local")).toString())
                         .arg(entry.toObject().value(QLatin1String("prefixlen")).toInt());
    return addresses;
}

QString VethCase::kernelRoute()
{
    const QJsonObject route =
        QJsonDocument::fromJson(shell("ip -j -4 route get 192.0.2.1 2>/dev/null || true")).array().at(0).toObject();
    return route.value(QLatin1String("dev")).toString() + QLatin1Char(' ')
        + route.value(QLatin1String("gateway")).toString();
}
