// SPDX-License-Identifier: Apache-2.0
#include "managedinterfacescase.h"

using namespace morvek;

const char ManagedInterfacesCase::Automatic[] = "['eth0',{'manual':'no','manual6':'off'}]";
const char ManagedInterfacesCase::Manual[] =
    "['eth0',{'manual':'yes','manual6':'off','ip_address':'10.0.0.7','netmask':'255.255.255.0',"
    "'gateway':'10.0.0.1'}]";

void ManagedInterfacesCase::initTestCase()
{
    m_bus = std::make_unique<PrivateBus>();
    QVERIFY2(m_bus->errorString().isEmpty(), qPrintable(m_bus->errorString()));
}

void ManagedInterfacesCase::init()
{
    m_manager = std::make_unique<FakeManager>();
    m_device = m_manager->addEthernet(QStringLiteral("eth0"));
    m_daemon = std::make_unique<DaemonFixture>();
}

void ManagedInterfacesCase::cleanup()
{
    m_control.reset();
    m_daemon.reset();
    m_manager.reset();
}

void ManagedInterfacesCase::addProfile()
{
    m_profile =
        m_manager->addProfile({{QStringLiteral("connection"),
                                {{QStringLiteral("id"), QStringLiteral("house")},
                                 {QStringLiteral("uuid"), QStringLiteral("6a8e5ea9-6b3e-4d1f-9c39-0d3a4bb1c001")},
                                 {QStringLiteral("type"), QStringLiteral("802-3-ethernet")}}},
                               {QStringLiteral("802-3-ethernet"), {}},
                               {QStringLiteral("ipv4"), {{QStringLiteral("method"), QStringLiteral("auto")}}},
                               {QStringLiteral("ipv6"), {{QStringLiteral("method"), QStringLiteral("auto")}}}});
    m_manager->change(
        m_device,
        {{QStringLiteral("AvailableConnections"), QVariant::fromValue(BusPaths {QDBusObjectPath(m_profile)})}});
}

bool ManagedInterfacesCase::connectDevice()
{
    addProfile();
    m_manager->beginActivation(m_device, m_profile);
    m_manager->activate(m_device);
    m_manager->setIp4(m_device, {QStringLiteral("10.0.0.2/24"), QStringLiteral("10.0.0.3/24")},
                      QStringLiteral("10.0.0.1"));
    m_manager->setLease(m_device, {{QStringLiteral("ip_address"), QStringLiteral("10.0.0.2")}});
    return start();
}

bool ManagedInterfacesCase::start(const QStringList &arguments)
{
    const QStringList usual {QStringLiteral("--verbose"), QStringLiteral("--network"), QStringLiteral("manager")};
    if (!m_manager->start() || !m_daemon->process().start(m_daemon->root(), usual + arguments))
        return false;
    m_control = std::make_unique<ZopObject>(QLatin1String(Control), ZopObject::ReadWrite, true);
    return m_control->isValid();
}

bool ManagedInterfacesCase::tellMtu(const Seen &eth0, uint mtu)
{
    m_manager->change(m_device, {{QStringLiteral("Mtu"), mtu}});
    return QTest::qWaitFor([&eth0, mtu] { return eth0.text("mtu") == QString::number(mtu); }, Patience);
}

bool ManagedInterfacesCase::answersAnother()
{
    return Request(m_control.get(), "net_disconnected", "'nowhere'").outcome()
        == QLatin1String("3 no interface \"nowhere\"");
}

BusSettings ManagedInterfacesCase::richProfile(int metric, const char *uuid)
{
    const QList<QVariantMap> address {
        {{QStringLiteral("address"), QStringLiteral("10.0.0.50")}, {QStringLiteral("prefix"), 24U}}};
    const QList<QVariantMap> route {{{QStringLiteral("dest"), QStringLiteral("10.10.0.0")},
                                     {QStringLiteral("prefix"), 16U},
                                     {QStringLiteral("next-hop"), QStringLiteral("10.0.0.1")}}};
    return {{QStringLiteral("connection"),
             {{QStringLiteral("id"), QStringLiteral("house")},
              {QStringLiteral("uuid"), QLatin1String(uuid)},
              {QStringLiteral("type"), QStringLiteral("802-3-ethernet")}}},
            {QStringLiteral("802-3-ethernet"), {}},
            {QStringLiteral("ipv4"),
             {{QStringLiteral("method"), QStringLiteral("auto")},
              {QStringLiteral("address-data"), QVariant::fromValue(address)},
              {QStringLiteral("never-default"), true},
              {QStringLiteral("dns"), QVariant::fromValue(QList<uint> {0x0100000a})},
              {QStringLiteral("dns-search"), QStringList {QStringLiteral("example.org")}},
              {QStringLiteral("route-data"), QVariant::fromValue(route)},
              {QStringLiteral("route-metric"), QVariant::fromValue(qlonglong(metric))}}}};
}
