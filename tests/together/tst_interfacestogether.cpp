// SPDX-License-Identifier: Apache-2.0
#include "asyncnetworkinterfaceoperation.h"
#include "namedinterface.h"
#include "networkinterfaceconfig.h"
#include "servicepointer.h"
#include "stand.h"
#include "watched.h"

using namespace morvek;

namespace {

using Configure = Watched<AsyncNetworkInterfaceOperation>;
using Application = NetworkInterfaceServicePointer;

Application application()
{
    return Application(newNetworkInterfaceService());
}

NetworkInterfaceConfig manual(const QString &ip, const QString &netmask, const QString &gateway)
{
    QNetworkAddressEntry address;
    address.setIp(QHostAddress(ip));
    address.setNetmask(QHostAddress(netmask));
    NetworkInterfaceConfig config;
    config.setType(NetworkInterfaceConfig::Manual);
    config.addIpAddress(address);
    config.addGatewayAddress(QHostAddress(gateway));
    return config;
}

NetworkInterfaceConfig automatic()
{
    NetworkInterfaceConfig config;
    config.setType(NetworkInterfaceConfig::Auto);
    return config;
}

QStringList ipv4Of(const NetworkInterface &networkInterface)
{
    QStringList addresses;
    for (const QNetworkAddressEntry &address : networkInterface.configuration().ipAddresses()) {
        if (address.ip().protocol() == QAbstractSocket::IPv4Protocol)
            addresses += address.ip().toString();
    }
    return addresses;
}

} // namespace

/*! The interfaces' service of the shipped library and platform against the shipped daemon, on each stand. */
class InterfacesTogetherTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void lists();
    void configuresByHandAndBack();
    void tellsWhatItRefuses();
    void tellsTheDaemonsRefusal();
    void twoApplicationsHearOfEachOther();
    void twoApplicationsConfigureAtATime();
    void outlivesTheDaemon();

private:
    NetworkInterface wired(const Application &service) const { return named(*service, qUtf8Printable(m_stand->wired)); }
    NetworkInterfaceConfig byHand() const { return manual(m_stand->free, m_stand->netmask, m_stand->gateway); }
    bool hasLease(const Application &service) const;

    std::unique_ptr<Stand> m_stand;
    std::unique_ptr<DaemonFixture> m_daemon;
};

void InterfacesTogetherTest::initTestCase()
{
    m_stand = Stand::make();
    QVERIFY(m_stand);
}

void InterfacesTogetherTest::init()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_stand->start(m_daemon.get()));
}

void InterfacesTogetherTest::cleanup()
{
    m_daemon.reset();
}

/*! Whether the wired interface has an address that the network has given it, and no other one. */
bool InterfacesTogetherTest::hasLease(const Application &service) const
{
    const NetworkInterface networkInterface = wired(service);
    const QStringList addresses = ipv4Of(networkInterface);
    return networkInterface.connected() && networkInterface.configuration().type() == NetworkInterfaceConfig::Auto
        && addresses.size() == 1 && addresses.first() != m_stand->free
        && QHostAddress(addresses.first()).isInSubnet(QHostAddress::parseSubnet(m_stand->leases));
}

void InterfacesTogetherTest::lists()
{
    const Application service = application();
    QVERIFY(service->ready());
    QVERIFY(hasLease(service));
    const NetworkInterface networkInterface = wired(service);
    QCOMPARE(networkInterface.type(), NetworkInterface::Wired);
    QVERIFY(networkInterface.available());
    QVERIFY(!networkInterface.isVirtual());
    QVERIFY(!networkInterface.macAddress().isEmpty());
    QCOMPARE(networkInterface.maxTransmissionUnit(), 1500);
    QCOMPARE(networkInterface.priority(), 2);
    QCOMPARE(networkInterface.configuration().gatewayAddresses(),
             QList<QHostAddress>({QHostAddress(m_stand->gateway)}));
    QCOMPARE(service->preferredInterface().name(), m_stand->preferred);
    QCOMPARE(service->preferredInterface().priority(), 1);
    QVERIFY(service->preferredInterface().connected());
}

void InterfacesTogetherTest::configuresByHandAndBack()
{
    const Application service = application();
    QSignalSpy preferred(service.get(), &NetworkInterfaceService::preferredInterfaceChanged);
    Configure configure(service->configure(wired(service), byHand()));
    QCOMPARE(configure.outcome(), QStringLiteral("ok"));
    QCOMPARE(configure.operation->results().size(), 1);
    QCOMPARE(configure.operation->results().first().name(), m_stand->wired);
    QTRY_COMPARE_WITH_TIMEOUT(ipv4Of(wired(service)), QStringList({m_stand->free}), Patience);
    QTRY_VERIFY_WITH_TIMEOUT(wired(service).connected(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(wired(service).configuration().gatewayAddresses(), byHand().gatewayAddresses(), Patience);
    QCOMPARE(wired(service).configuration().type(), NetworkInterfaceConfig::Manual);

    Configure back(service->configure(wired(service), automatic()));
    QCOMPARE(back.outcome(), QStringLiteral("ok"));
    QTRY_VERIFY_WITH_TIMEOUT(hasLease(service), Patience);
    QCOMPARE(service->preferredInterface().name(), m_stand->preferred);
    QVERIFY(preferred.isEmpty());
}

void InterfacesTogetherTest::tellsWhatItRefuses()
{
    const Application service = application();
    Configure same(service->configure(wired(service), automatic()));
    Configure unknown(service->configure({}, byHand()));
    QCOMPARE(same.outcome(),
             QStringLiteral("-1 The new configuration settings are the same as the current configuration settings."));
    QCOMPARE(unknown.outcome(),
             QStringLiteral("-1 The interface to configure is not in the list of known interfaces."));
    QVERIFY(hasLease(service));
}

void InterfacesTogetherTest::tellsTheDaemonsRefusal()
{
    const Application service = application();
    Configure configure(
        service->configure(wired(service), manual(m_stand->free, m_stand->netmask, QStringLiteral("192.0.2.1"))));
    QCOMPARE(configure.outcome(),
             QStringLiteral("4 The system was unable to configure the interface. (the gateway 192.0.2.1 is not a "
                            "neighbour of %1/%2)")
                 .arg(m_stand->free, m_stand->netmask));
    QVERIFY(configure.operation->results().isEmpty());
    // It has given its addresses up for that, and can be had back.
    QTRY_COMPARE_WITH_TIMEOUT(ipv4Of(wired(service)), QStringList(), Patience);
    Configure again(service->configure(wired(service), byHand()));
    QCOMPARE(again.outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(ipv4Of(wired(service)), QStringList({m_stand->free}), Patience);
}

void InterfacesTogetherTest::twoApplicationsHearOfEachOther()
{
    const Application service = application();
    const Application other = application();
    QSignalSpy disconnected(other.get(), &NetworkInterfaceService::interfaceDisconnected);
    QSignalSpy connected(other.get(), &NetworkInterfaceService::interfaceConnected);
    Configure configure(service->configure(wired(service), byHand()));
    QCOMPARE(configure.outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(ipv4Of(wired(other)), QStringList({m_stand->free}), Patience);
    QTRY_VERIFY_WITH_TIMEOUT(!connected.isEmpty(), Patience);
    QVERIFY(!disconnected.isEmpty());
    QCOMPARE(disconnected.first().first().value<NetworkInterface>().name(), m_stand->wired);
    QCOMPARE(connected.first().first().value<NetworkInterface>().name(), m_stand->wired);
    Configure back(other->configure(wired(other), automatic()));
    QCOMPARE(back.outcome(), QStringLiteral("ok"));
    QTRY_VERIFY_WITH_TIMEOUT(hasLease(service), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(wired(other), wired(service), Patience);
}

/*! Two interfaces, and one reply for each request. */
void InterfacesTogetherTest::twoApplicationsConfigureAtATime()
{
    const Application first = application();
    const Application second = application();
    const NetworkInterface preferred = second->preferredInterface();
    Configure configure(first->configure(wired(first), byHand()));
    Configure refused(
        second->configure(preferred, manual(m_stand->free, m_stand->netmask, QStringLiteral("192.0.2.1"))));
    QCOMPARE(configure.outcome(), QStringLiteral("ok"));
    QVERIFY2(refused.outcome().startsWith(QLatin1String("4 ")), qPrintable(refused.outcome()));
    QTRY_COMPARE_WITH_TIMEOUT(ipv4Of(wired(second)), QStringList({m_stand->free}), Patience);
    QCOMPARE(configure.success.count(), 1);
    QCOMPARE(refused.failure.count(), 1);
    QCOMPARE(ipv4Of(named(*first, qUtf8Printable(m_stand->preferred))), QStringList());
}

void InterfacesTogetherTest::outlivesTheDaemon()
{
    const Application service = application();
    m_daemon->kill();
    Configure refused(service->configure(wired(service), byHand()));
    QVERIFY2(refused.outcome().startsWith(QLatin1String("-1 ")), qPrintable(refused.outcome()));
    QVERIFY(m_stand->start(m_daemon.get()));
    QTRY_VERIFY_WITH_TIMEOUT(hasLease(service), Patience);
    Configure configure(service->configure(wired(service), byHand()));
    QCOMPARE(configure.outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(ipv4Of(wired(service)), QStringList({m_stand->free}), Patience);
}

QTEST_GUILESS_MAIN(InterfacesTogetherTest)
#include "tst_interfacestogether.moc"
