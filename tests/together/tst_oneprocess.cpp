// SPDX-License-Identifier: Apache-2.0
#include "hostd.h"

#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "asyncnetworkinterfaceoperation.h"
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "hostdoptions.h"
#include "hotspotservice.h"
#include "namedinterface.h"
#include "networkinterfaceservice.h"
#include "protectedby.h"
#include "scenariofiles.h"
#include "servicepointer.h"
#include "wificonnectionconfig.h"
#include "wifiservice.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <type_traits>

using namespace morvek;

namespace {

constexpr int Patience = 20000; // milliseconds; reached only by what has failed

/*! How \a operation ends: "ok", "CODE MESSAGE", or "open" when it does not. It is deleted then. */
template<typename Operation>
QString outcome(Operation *operation, std::decay_t<decltype(operation->results())> *results = nullptr)
{
    const std::unique_ptr<Operation> owner(operation);
    const QSignalSpy success(operation, &Operation::success);
    const QSignalSpy failure(operation, &Operation::failure);
    if (!QTest::qWaitFor([&] { return !success.isEmpty() || !failure.isEmpty(); }, Patience))
        return QStringLiteral("open");
    if (results)
        *results = operation->results();
    return success.isEmpty() ? QStringLiteral("%1 %2").arg(operation->error().code()).arg(operation->error().message())
                             : QStringLiteral("ok");
}

NetworkInterfaceConfig manual(const char *ip, const char *netmask, const char *gateway)
{
    QNetworkAddressEntry address;
    address.setIp(QHostAddress(QLatin1String(ip)));
    address.setNetmask(QHostAddress(QLatin1String(netmask)));
    NetworkInterfaceConfig config;
    config.setType(NetworkInterfaceConfig::Manual);
    config.addIpAddress(address);
    config.addGatewayAddress(QHostAddress(QLatin1String(gateway)));
    return config;
}

} // namespace

/*! The library, the stand-in and the daemons, all as they are shipped, where nothing can be started beside the test. */
class OneProcessTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void tellsTheInterfaces();
    void configuresAnInterface();
    void scansAndJoins();
    void keepsAndSwitchesTheHotspot();
    void outlivesItsDaemons();

private:
    void startDaemons();

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<Hostd> m_daemons;
};

void OneProcessTest::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    QVERIFY(m_root->isValid());
    qputenv("ZOP_ROOT", QFile::encodeName(m_root->path()));
    startDaemons();
}

void OneProcessTest::cleanup()
{
    m_daemons.reset();
}

void OneProcessTest::startDaemons()
{
    HostdOptions options;
    options.speed = 20;
    Scenario scenario;
    QString error;
    QVERIFY2(ScenarioFiles::load(QStringLiteral("headunit"), &scenario, &error), qPrintable(error));
    m_daemons = std::make_unique<Hostd>(options, scenario);
    QVERIFY2(m_daemons->start(&error) == HostdExitCode::Success, qPrintable(error));
}

void OneProcessTest::tellsTheInterfaces()
{
    const NetworkInterfaceServicePointer service(newNetworkInterfaceService());
    QVERIFY(service->ready());
    QStringList told;
    for (const NetworkInterface &one : service->interfaces()) {
        told << QStringLiteral("%1 %2 %3 %4 '%5'")
                    .arg(one.name())
                    .arg(one.type())
                    .arg(one.priority())
                    .arg(one.maxTransmissionUnit())
                    .arg(one.parent().name());
    }
    QCOMPARE(told,
             (QStringList {
                 QStringLiteral("cell0 4 3 1430 ''"),
                 QStringLiteral("eth0 1 2 1500 ''"),
                 QStringLiteral("eth0.5 1 4 1496 'eth0'"),
                 QStringLiteral("wlan0 2 1 1500 ''"),
             }));
    QCOMPARE(service->preferredInterface().name(), QStringLiteral("wlan0"));
}

void OneProcessTest::configuresAnInterface()
{
    const NetworkInterfaceServicePointer service(newNetworkInterfaceService());
    const NetworkInterfaceConfig config = manual("10.20.0.77", "255.255.0.0", "10.20.0.1");
    QCOMPARE(outcome(service->configure(named(*service, "eth0"), config)), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(named(*service, "eth0").configuration(), config, Patience);
    QCOMPARE(outcome(service->configure(named(*service, "eth0"), config)),
             QStringLiteral("-1 The new configuration settings are the same as the current configuration settings."));
}

void OneProcessTest::scansAndJoins()
{
    const WifiServicePointer service(newWifiService());
    QTRY_VERIFY_WITH_TIMEOUT(service->ready(), Patience);
    QCOMPARE(service->connectedAccessPoint().ssid(), QStringLiteral("Home"));

    QList<WifiAccessPoint> found;
    QCOMPARE(outcome(service->scan(), &found), QStringLiteral("ok"));
    QCOMPARE(found.size(), 7);
    QCOMPARE(found.at(2).bssid(), QStringLiteral("02:00:00:00:20:03"));
    QCOMPARE(found.at(2).frequency(), 2412U);
    QVERIFY(qAbs(found.at(2).rssi() + 57) <= 3); // it drifts

    WifiConnectionConfig config = protectedBy("open sesame 24", "Garage");
    QCOMPARE(outcome(service->connectAccessPoint(config)), QStringLiteral("-1 Failed to connect to Access Point"));
    config.setPasskey(QStringLiteral("open sesame 42"));
    QList<WifiAccessPoint> joined;
    QCOMPARE(outcome(service->connectAccessPoint(config), &joined), QStringLiteral("ok"));
    QCOMPARE(joined.first().ssid(), QStringLiteral("Garage"));
    QCOMPARE(service->connectedAccessPoint(), joined.first());
}

void OneProcessTest::keepsAndSwitchesTheHotspot()
{
    const HotSpotServicePointer service(newHotSpotService());
    QTRY_VERIFY_WITH_TIMEOUT(service->ready(), Patience);
    QList<WifiHotspot> profiles;
    QCOMPARE(outcome(service->configuration(), &profiles), QStringLiteral("ok"));
    WifiHotspot profile = profiles.first();
    QCOMPARE(profile.name(), QStringLiteral("Morvek Car"));
    QCOMPARE(profile.inactivityTime(), 600);
    QCOMPARE(profile.band(), WifiBand5GHz);

    profile.setName(QStringLiteral("Back seat"));
    profile.setMaxClients(4);
    QCOMPARE(outcome(service->setConfiguration(profile)), QStringLiteral("ok"));
    QCOMPARE(outcome(service->configuration(), &profiles), QStringLiteral("ok"));
    QCOMPARE(profiles.first(), profile);

    QCOMPARE(outcome(service->setEnabled(true)), QStringLiteral("ok"));
    QTRY_VERIFY_WITH_TIMEOUT(service->enabled(), Patience);
    QCOMPARE(outcome(service->setEnabled(false)), QStringLiteral("ok"));
    QTRY_VERIFY_WITH_TIMEOUT(!service->enabled(), Patience);
}

void OneProcessTest::outlivesItsDaemons()
{
    const NetworkInterfaceServicePointer service(newNetworkInterfaceService());
    const NetworkInterfaceConfig config = manual("10.20.0.78", "255.255.0.0", "10.20.0.1");
    m_daemons.reset();
    QVERIFY(outcome(service->configure(named(*service, "eth0"), config)).startsWith(QLatin1String("-1 ")));
    startDaemons();
    QCOMPARE(outcome(service->configure(named(*service, "eth0"), config)), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(named(*service, "eth0").configuration(), config, Patience);
}

QTEST_GUILESS_MAIN(OneProcessTest)

#include "tst_oneprocess.moc"
