// SPDX-License-Identifier: Apache-2.0
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "networkinterfaceservice.h"
#include "networklibraryexports.h"
#include "protectedby.h"
#include "servicepointer.h"
#include "watched.h"
#include "wificonnectionconfig.h"
#include "wifiservice.h"
#include "zopdirwatcher.h"

using namespace morvek;

namespace {

WifiConnectionConfig open(const char *ssid)
{
    WifiConnectionConfig config;
    config.setSsid(QString::fromUtf8(ssid));
    return config;
}

using Scan = Watched<AsyncWifiScanOperation>;
using Connect = Watched<AsyncWifiConnectOperation>;

WifiAccessPoint found(const Scan &scan, const char *bssid)
{
    const QList<WifiAccessPoint> results = scan.operation->results();
    for (const WifiAccessPoint &accessPoint : results) {
        if (accessPoint.bssid() == QLatin1String(bssid))
            return accessPoint;
    }
    return WifiAccessPoint();
}

using Application = WifiServicePointer;

} // namespace

/*! The Wi-Fi service of the shipped library on the shipped platform, against the daemons as they are shipped. */
class WifiTogetherTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void becomesReadyFromTheEventLoop();
    void waitsForTheDaemon();
    void switchesTheRadio();
    void scans();
    void joinsAndLeaves();
    void oneStoryWithTheInterfaces();
    void tellsAWrongPasskey();
    void tellsTheDaemonsRefusal();
    void joinsAnOpenNetwork();
    void cancelsWhenLeaving();
    void twoApplicationsScan();
    void twoApplicationsJoin();
    void twoProcesses();
    void laterScanWaitsForLaterResults();
    void outlivesTheDaemon();
    void madeWhileTheDaemonIsDead();
    void oldResultsCompleteNothing();
    void hostileResults_data();
    void hostileResults();
    void manyResults();
    void deletedInItsOwnSlot_data();
    void deletedInItsOwnSlot();
    void deletedWithOperationsOpen();

private:
    Application application();
    void publish(const char *name, const ZopVariant &value);

    std::unique_ptr<DaemonFixture> m_daemon;
};

void WifiTogetherTest::init()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_daemon->start(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("20")}));
}

void WifiTogetherTest::cleanup()
{
    m_daemon.reset();
}

/*! A service that is ready, unless the test has failed. */
Application WifiTogetherTest::application()
{
    Application service(newWifiService());
    if (!service->ready())
        QSignalSpy(service.get(), &ServiceBase::readyChanged).wait(Patience);
    return service;
}

/*! Writes into the status object, as its daemon does. */
void WifiTogetherTest::publish(const char *name, const ZopVariant &value)
{
    ZopObject status(QLatin1String(WifiStatus), ZopObject::ReadWrite, false);
    ZopChangeset changes;
    changes.assignments.insert(QLatin1String(name), value);
    QVERIFY2(status.setAttributes(changes), qPrintable(status.errorString()));
}

void WifiTogetherTest::becomesReadyFromTheEventLoop()
{
    const Application service(newWifiService());
    QSignalSpy ready(service.get(), &ServiceBase::readyChanged);
    QSignalSpy powered(service.get(), &WifiService::poweredChanged);
    QSignalSpy connected(service.get(), &WifiService::connectedChanged);
    QVERIFY(service->available());
    QVERIFY(!service->ready());
    Scan early(service->scan());
    QCOMPARE(early.outcome(), QStringLiteral("-1 Service is not ready"));

    QTRY_COMPARE(ready.count(), 1);
    QCOMPARE(ready.first().first().toBool(), true);
    QVERIFY(service->ready());
    QVERIFY(service->powered());
    QVERIFY(service->connected());
    const WifiAccessPoint home = service->connectedAccessPoint();
    QCOMPARE(home.bssid(), QStringLiteral("02:00:00:00:20:01"));
    QCOMPARE(home.ssid(), QStringLiteral("Home"));
    QCOMPARE(int(home.securityProtocols()), 0x8);
    QCOMPARE(int(home.keyManagementTypes()), 0x2);
    QCOMPARE(int(home.ciphers()), 0x2);
    // What was so from the start is not told as a change, not even before the next one.
    service->powerOff();
    QTRY_COMPARE(powered.count(), 1);
    QCOMPARE(powered.first().first().toBool(), false);
    QTRY_COMPARE(connected.count(), 1);
    QCOMPARE(connected.first().first().toBool(), false);
}

void WifiTogetherTest::waitsForTheDaemon()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(m_daemon->makeRoot());
    const Application service(newWifiService());
    QSignalSpy ready(service.get(), &ServiceBase::readyChanged);
    Scan early(service->scan());
    QCOMPARE(early.outcome(), QStringLiteral("-1 Service is not ready"));
    QVERIFY(ready.isEmpty());
    QVERIFY(m_daemon->start(QStringLiteral("headunit")));
    QTRY_COMPARE_WITH_TIMEOUT(ready.count(), 1, Patience);
    QVERIFY(service->connected());
}

void WifiTogetherTest::switchesTheRadio()
{
    const Application service = application();
    const Application other = application();
    QSignalSpy powered(service.get(), &WifiService::poweredChanged);
    QSignalSpy othersPowered(other.get(), &WifiService::poweredChanged);
    service->powerOff();
    QVERIFY(service->powered());
    QVERIFY(powered.wait(Patience));
    QVERIFY(!service->powered());
    QTRY_VERIFY(!service->connected());
    QVERIFY(service->connectedAccessPoint().isEmpty());
    service->powerOff(); // already so: nothing is told
    service->powerOn();
    QTRY_COMPARE_WITH_TIMEOUT(powered.count(), 2, Patience);
    QCOMPARE(powered.last().first().toBool(), true);
    QTRY_COMPARE_WITH_TIMEOUT(othersPowered.count(), 2, Patience);
    QTRY_VERIFY_WITH_TIMEOUT(service->connected(), Patience); // the network that was selected is joined again
}

void WifiTogetherTest::scans()
{
    const Application service = application();
    Scan scan(service->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(scan.operation->results().size(), 7);

    const WifiAccessPoint garage = found(scan, "02:00:00:00:20:03");
    QCOMPARE(garage.ssid(), QStringLiteral("Garage"));
    QVERIFY2(garage.rssi() >= -60 && garage.rssi() <= -54, qPrintable(QString::number(garage.rssi())));
    QCOMPARE(garage.frequency(), 2412U);
    QCOMPARE(int(garage.securityProtocols()), 0x1c);
    QCOMPARE(int(garage.keyManagementTypes()), 0x3);
    QCOMPARE(int(garage.ciphers()), 0x7);
    QCOMPARE(garage.serviceSet(), WifiServiceSetEss);

    const WifiAccessPoint cafe = found(scan, "02:00:00:00:20:04");
    QCOMPARE(cafe.ssid(), QString::fromUtf8("Caf\u00e9 am Markt"));
    QCOMPARE(int(cafe.securityProtocols()), 0x1);
    QCOMPARE(int(cafe.keyManagementTypes()), 0x1);
    QCOMPARE(int(cafe.ciphers()), 0x1);

    QCOMPARE(int(found(scan, "02:00:00:00:20:05").securityProtocols()), 0x2);
    QCOMPARE(int(found(scan, "02:00:00:00:20:06").keyManagementTypes()), 0x4);
    QCOMPARE(int(found(scan, "02:00:00:00:20:07").ciphers()), 0x3);
}

void WifiTogetherTest::joinsAndLeaves()
{
    const Application service = application();
    QSignalSpy connected(service.get(), &WifiService::connectedChanged);
    Connect connect(service->connectAccessPoint(protectedBy("open sesame 42", "Garage")));
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    QCOMPARE(connect.operation->results().size(), 1);
    QCOMPARE(connect.operation->results().first().ssid(), QStringLiteral("Garage"));
    QVERIFY(connect.operation->results().first() == service->connectedAccessPoint());
    QCOMPARE(connected.count(), 2); // the former network is left first
    QCOMPARE(connected.first().first().toBool(), false);
    QCOMPARE(connected.last().first().toBool(), true);

    service->disconnectAccessPoint();
    QVERIFY(service->connected());
    QVERIFY(connected.wait(Patience));
    QVERIFY(!service->connected());
    QVERIFY(service->connectedAccessPoint().isEmpty());
}

void WifiTogetherTest::oneStoryWithTheInterfaces()
{
    const Application service = application();
    NetworkInterfaceService *interfaces = newNetworkInterfaceService();
    QVERIFY(interfaces->ready());
    QCOMPARE(interfaces->preferredInterface().name(), QStringLiteral("wlan0"));
    QSignalSpy preferred(interfaces, &NetworkInterfaceService::preferredInterfaceChanged);

    service->disconnectAccessPoint();
    QTRY_COMPARE_WITH_TIMEOUT(interfaces->preferredInterface().name(), QStringLiteral("eth0"), Patience);
    QTRY_VERIFY_WITH_TIMEOUT(!service->connected(), Patience);
    Connect connect(service->connectAccessPoint(protectedBy("correct horse 7", "Home")));
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(interfaces->preferredInterface().name(), QStringLiteral("wlan0"), Patience);
    QVERIFY(interfaces->preferredInterface().connected());
    QVERIFY(!interfaces->preferredInterface().configuration().ipAddresses().isEmpty());
    deleteNetworkInterfaceService(&interfaces);
}

void WifiTogetherTest::tellsAWrongPasskey()
{
    const Application service = application();
    Connect connect(service->connectAccessPoint(protectedBy("wrong and long", "Garage")));
    QCOMPARE(connect.outcome(), QStringLiteral("-1 Failed to connect to Access Point"));
    QVERIFY(connect.success.isEmpty());
    QVERIFY(connect.operation->results().isEmpty());
    QVERIFY(!service->connected());
    Connect again(service->connectAccessPoint(protectedBy("open sesame 42", "Garage")));
    QCOMPARE(again.outcome(), QStringLiteral("ok"));
}

void WifiTogetherTest::tellsTheDaemonsRefusal()
{
    const Application service = application();
    service->powerOff();
    QTRY_VERIFY_WITH_TIMEOUT(!service->powered(), Patience);
    Connect connect(service->connectAccessPoint(protectedBy("open sesame 42", "Garage")));
    const QString outcome = connect.outcome();
    QVERIFY2(outcome.startsWith(QLatin1String("-1 ")), qPrintable(outcome));
    QVERIFY2(outcome.contains(QLatin1String("radio")), qPrintable(outcome));
}

void WifiTogetherTest::joinsAnOpenNetwork()
{
    const Application service = application();
    Connect connect(service->connectAccessPoint(open("Caf\u00e9 am Markt")));
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    const WifiAccessPoint cafe = connect.operation->results().first();
    QCOMPARE(cafe.ssid(), QString::fromUtf8("Caf\u00e9 am Markt"));
    QCOMPARE(int(cafe.securityProtocols()), 0x1);
    QCOMPARE(int(cafe.keyManagementTypes()), 0x1);
    QCOMPARE(int(cafe.ciphers()), 0x1);
}

void WifiTogetherTest::cancelsWhenLeaving()
{
    const Application service = application();
    Connect pending(service->connectAccessPoint(open("Nowhere")));
    Connect second(service->connectAccessPoint(protectedBy("open sesame 42", "Garage")));
    QCOMPARE(second.outcome(), QStringLiteral("-1 Another connect operation in progress."));
    QVERIFY(pending.isOpen());
    service->disconnectAccessPoint();
    QCOMPARE(pending.outcome(), QStringLiteral("-1 Cancelling connect operation, due to issued disconnect command"));
    Connect next(service->connectAccessPoint(protectedBy("open sesame 42", "Garage")));
    QCOMPARE(next.outcome(), QStringLiteral("ok"));
    QCOMPARE(pending.failure.count(), 1);
    QVERIFY(pending.success.isEmpty());
}

void WifiTogetherTest::twoApplicationsScan()
{
    const Application first = application();
    const Application second = application();
    Scan scan(first->scan());
    Scan othersScan(second->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(othersScan.outcome(), QStringLiteral("ok"));
    QVERIFY(scan.operation->results() == othersScan.operation->results());
}

void WifiTogetherTest::twoApplicationsJoin()
{
    const Application first = application();
    const Application second = application();
    Connect connect(first->connectAccessPoint(protectedBy("open sesame 42", "Garage")));
    Connect othersConnect(second->connectAccessPoint(open("Caf\u00e9 am Markt")));
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
    QCOMPARE(othersConnect.outcome(), QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(first->connectedAccessPoint().ssid(), second->connectedAccessPoint().ssid(), Patience);
    QVERIFY(first->connected());
    QCOMPARE(connect.success.count(), 1);
    QCOMPARE(othersConnect.success.count(), 1);
}

/*! Their requests carry the same identifiers, and yet each gets its own replies. */
void WifiTogetherTest::twoProcesses()
{
    const Application service = application();
    for (int i = 0; i < 3; ++i) {
        QProcess other;
        other.start(
            QStringLiteral(MORVEKCTL),
            {QStringLiteral("wifi"), QStringLiteral("connect"), QStringLiteral("Nowhere"), QStringLiteral("--json")});
        QVERIFY(other.waitForStarted(Patience));
        Connect connect(service->connectAccessPoint(protectedBy("too few", "Garage")));
        Scan scan(service->scan());
        QCOMPARE(connect.outcome(),
                 QStringLiteral("-1 \"psk\" must be 8 to 63 ASCII characters or 64 hexadecimal digits"));
        QCOMPARE(scan.outcome(), QStringLiteral("ok"));
        QTRY_COMPARE_WITH_TIMEOUT(other.state(), QProcess::NotRunning, Patience);
        QCOMPARE(other.exitCode(), 5); // it has scanned too, and found no such network
    }
}

void WifiTogetherTest::laterScanWaitsForLaterResults()
{
    const Application first = application();
    const Application second = application();
    Scan scan(first->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    Scan othersScan(second->scan());
    QVERIFY(othersScan.isOpen());
    QCOMPARE(othersScan.outcome(), QStringLiteral("ok"));
    QCOMPARE(scan.success.count(), 1);
}

void WifiTogetherTest::outlivesTheDaemon()
{
    const Application service = application();
    m_daemon->kill();
    Scan waiting(service->scan());
    Connect refused(service->connectAccessPoint(protectedBy("open sesame 42", "Garage")));
    const QString outcome = refused.outcome();
    QVERIFY2(outcome.startsWith(QLatin1String("-1 ")), qPrintable(outcome));
    QVERIFY(service->ready());
    QVERIFY(service->connected()); // what the daemon has published stays

    QVERIFY(m_daemon->start(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("20")}));
    QVERIFY(waiting.isOpen());
    Scan scan(service->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(waiting.outcome(), QStringLiteral("ok"));
    QVERIFY(waiting.operation->results() == scan.operation->results());
    Connect connect(service->connectAccessPoint(protectedBy("open sesame 42", "Garage")));
    QCOMPARE(connect.outcome(), QStringLiteral("ok"));
}

void WifiTogetherTest::madeWhileTheDaemonIsDead()
{
    m_daemon->kill();
    const Application tooEarly(newWifiService());
    QSignalSpy ready(tooEarly.get(), &ServiceBase::readyChanged);
    // It has looked when a watcher that was made later has announced the status.
    ZopDirWatcher watcher(QStringLiteral("/zop/services/wifi/"));
    QSignalSpy announced(&watcher, &ZopDirWatcher::objectAdded);
    QTRY_VERIFY_WITH_TIMEOUT(!announced.isEmpty(), Patience);
    QVERIFY(m_daemon->start(QStringLiteral("headunit")));
    const Application inTime = application();
    QVERIFY(inTime->ready());
    QVERIFY(ready.isEmpty());
    QVERIFY(!tooEarly->ready());
}

void WifiTogetherTest::oldResultsCompleteNothing()
{
    publish("scan_results", QStringLiteral(R"([{"bssid":"02:00:00:00:99:99"}])"));
    const Application service = application();
    Scan scan(service->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(scan.operation->results().size(), 7);
    QVERIFY(found(scan, "02:00:00:00:99:99").isEmpty());
}

void WifiTogetherTest::hostileResults_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("ssids");
    const QStringList none;
    const auto one = [](const char *ssid) { return QStringList(QString::fromUtf8(ssid)); };
    QTest::newRow("nothing") << QByteArray("") << none;
    QTest::newRow("an object") << QByteArray(R"({"bssid":"02:00:00:00:00:01","ssid":"a"})") << none;
    QTest::newRow("cut off") << QByteArray(R"([{"bssid":"02:00:00:00:00:01","ssid":"a"},{"bss)") << none;
    QTest::newRow("invalid UTF-8") << QByteArray("[{\"ssid\":\"\xff\xfe\"}]")
                                   << QStringList(QString::fromUtf8("\ufffd\ufffd"));
    QTest::newRow("nested") << QByteArray(10000, '[') + QByteArray(10000, ']') << none;
    QTest::newRow("wrong types") << QByteArray(R"([1,null,"x",[],{"ssid":7,"flags":{},"signal_level":-4}])")
                                 << QStringList({QString(), QString(), QString(), QString(), QString()});
    QTest::newRow("a zero byte") << QByteArray(R"([{"ssid":"a\u0000b"}])")
                                 << QStringList(QString(QLatin1String("a\0b", 3)));
    QTest::newRow("quotes") << QByteArray(R"([{"ssid":"\"a\\'\n"}])") << one("\"a\\'\n");
    QTest::newRow("many scripts") << QByteArray("[{\"ssid\":\"\u041c\u043e\u0440\u0435 \U0001f697\"}]")
                                  << one("\u041c\u043e\u0440\u0435 \U0001f697");
}

void WifiTogetherTest::hostileResults()
{
    QFETCH(QByteArray, text);
    QFETCH(QStringList, ssids);
    const Application service = application();
    service->powerOff(); // no results but those of the test
    QTRY_VERIFY_WITH_TIMEOUT(!service->powered(), Patience);
    Scan scan(service->scan());
    publish("scan_results", ZopVariant(text, "text"));
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QStringList read;
    const QList<WifiAccessPoint> results = scan.operation->results();
    for (const WifiAccessPoint &accessPoint : results)
        read += accessPoint.ssid();
    QCOMPARE(read, ssids);
}

void WifiTogetherTest::manyResults()
{
    QJsonArray results;
    for (int i = 0; i < 5000; ++i)
        results.append(QJsonObject {{QStringLiteral("bssid"), QString::number(i)}});
    const Application service = application();
    service->powerOff();
    QTRY_VERIFY_WITH_TIMEOUT(!service->powered(), Patience);
    Scan scan(service->scan());
    publish("scan_results", results);
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(scan.operation->results().size(), 5000);
    QCOMPARE(scan.operation->results().at(4999).bssid(), QStringLiteral("4999"));
}

void WifiTogetherTest::deletedInItsOwnSlot_data()
{
    QTest::addColumn<QByteArray>("signal");
    QTest::newRow("readyChanged") << QByteArray(SIGNAL(readyChanged(bool)));
    QTest::newRow("poweredChanged") << QByteArray(SIGNAL(poweredChanged(bool)));
    QTest::newRow("connectedChanged") << QByteArray(SIGNAL(connectedChanged(bool)));
}

void WifiTogetherTest::deletedInItsOwnSlot()
{
    QFETCH(QByteArray, signal);
    WifiService *service = newWifiService();
    const QPointer<WifiService> alive(service);
    QTimer slotOwner; // stands for an object of the application
    connect(&slotOwner, &QTimer::timeout, [&service] { deleteWifiService(&service); });
    connect(service, signal.constData(), &slotOwner, SIGNAL(timeout()));
    connect(service, &ServiceBase::readyChanged, service, [&service] {
        if (service)
            service->powerOff();
    });
    QTRY_VERIFY_WITH_TIMEOUT(!alive, Patience);
    QVERIFY(!service);
    // The daemon and the platform go on: another service sees them well.
    const Application next = application();
    next->powerOn();
    QTRY_VERIFY_WITH_TIMEOUT(next->powered(), Patience);
    Scan scan(next->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
}

void WifiTogetherTest::deletedWithOperationsOpen()
{
    Application service = application();
    Scan scan(service->scan());
    Connect connect(service->connectAccessPoint(open("Nowhere")));
    service.reset();
    const Application next = application();
    Scan later(next->scan());
    QCOMPARE(later.outcome(), QStringLiteral("ok"));
    QVERIFY(scan.isOpen());
    QVERIFY(connect.isOpen());
}

QTEST_GUILESS_MAIN(WifiTogetherTest)
#include "tst_wifitogether.moc"
