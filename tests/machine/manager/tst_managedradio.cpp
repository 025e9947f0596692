// SPDX-License-Identifier: Apache-2.0
#include "managedradiocase.h"

using namespace morvek;

namespace {

const QString ScanStarted = QStringLiteral("last_event=CTRL-EVENT-SCAN-STARTED ");
const QString House = QStringLiteral(R"({"bssid":"0a:00:00:00:00:01","flags":["WPA2-PSK-CCMP","ESS"],)"
                                     R"("frequency":"2412","signal_level":"-70","ssid":"House"})");
const QString Guest = QStringLiteral(R"({"bssid":"0a:00:00:00:00:03","flags":["ESS"],"frequency":"2412",)"
                                     R"("signal_level":"-70","ssid":"Guest"})");
const QString Results = QStringLiteral("last_event=CTRL-EVENT-SCAN-RESULTS  scan_results=");
const QString NotAllowed = QStringLiteral("org.freedesktop.NetworkManager.Device.NotAllowed");

} // namespace

/*! Power, scans and the connection of a real manager's radio, as an application sees them. */
class ManagedRadioTest : public ManagedRadioCase
{
    Q_OBJECT

private Q_SLOTS:
    void startsAsItIs();
    void startsConnected();
    void power();
    void refusesPower();
    void scans();
    void scanOfOthers();
    void tooEarlyToScan_data();
    void tooEarlyToScan();
    void whileScanning();
    void asksOnceForTwo();
    void refusesScans();
    void whatIsNotSeen();
    void hardNames();
    void levelsOfTheSupplicant();
    void roams();
    void losesTheAccessPoint();
    void hotspotIsNoNetwork();

private:
    static QString results(const QStringList &all)
    {
        return Results + QLatin1Char('[') + all.join(QLatin1Char(',')) + QLatin1Char(']');
    }
    void use(const QString &accessPoint)
    {
        m_manager->change(m_wifi,
                          {{QStringLiteral("ActiveAccessPoint"), QVariant::fromValue(QDBusObjectPath(accessPoint))}});
    }
};

void ManagedRadioTest::startsAsItIs()
{
    m_manager->change(FakeManager::managerPath(), {{QStringLiteral("WirelessEnabled"), false}});
    startDaemons();
    QVERIFY(!m_service->powered());
    QVERIFY(!m_service->connected());
    QCOMPARE(m_status->text("wifi_power"), QStringLiteral("off"));
    QVERIFY(!m_status->has("wifi_status"));
    QVERIFY(!m_status->has("scan_results"));
    QVERIFY(!m_status->has("last_event"));
}

void ManagedRadioTest::startsConnected()
{
    joinAsTheUser("House", m_house);
    startDaemons();
    QVERIFY(m_service->powered());
    QVERIFY(m_service->connected());
    QCOMPARE(m_service->connectedAccessPoint().ssid(), QStringLiteral("House"));
    QCOMPARE(int(m_service->connectedAccessPoint().securityProtocols()), int(WifiSecurityProtocolWpa2));
    QVERIFY(!m_status->has("last_event"));
}

void ManagedRadioTest::power()
{
    joinAsTheUser("House", m_house);
    startDaemons();
    m_service->powerOff();
    QVERIFY(m_manager->waitForCalls(QStringLiteral("Set")));
    const BusCall call = m_manager->calls(QStringLiteral("Set")).first();
    QCOMPARE(call.text(1), QStringLiteral("WirelessEnabled"));
    QCOMPARE(call.arguments.at(2), QVariant(false));
    QTRY_VERIFY(!m_service->powered());
    QTRY_VERIFY(!m_service->connected());
    m_manager->setState(m_wifi, 20);
    m_service->powerOn();
    QTRY_VERIFY(m_service->powered());
    QCOMPARE(told(2),
             (QStringList {QStringLiteral("last_event=CTRL-EVENT-DISCONNECTED bssid=0a:00:00:00:00:01 reason=3 "
                                          "wifi_power=off -wifi_status"),
                           QStringLiteral("wifi_power=on")}));
    // A switch of the machine, and a key on its keyboard.
    m_manager->change(FakeManager::managerPath(), {{QStringLiteral("WirelessHardwareEnabled"), false}});
    QTRY_VERIFY(!m_service->powered());
    QCOMPARE(request("wifi_power", "on"), QStringLiteral("7 the radio is switched off at the machine"));
    m_manager->change(FakeManager::managerPath(), {{QStringLiteral("WirelessHardwareEnabled"), true}});
    QTRY_VERIFY(m_service->powered());
}

void ManagedRadioTest::refusesPower()
{
    startDaemons();
    m_manager->refuse(QStringLiteral("Set"), QStringLiteral("org.freedesktop.NetworkManager.PermissionDenied"),
                      QStringLiteral("Not authorized"));
    QCOMPARE(request("wifi_power", "off"), QStringLiteral("9 Not authorized"));
    QVERIFY(m_service->powered());
}

void ManagedRadioTest::scans()
{
    startDaemons();
    Scan scan(m_service->scan());
    QCOMPARE(told(1), QStringList {ScanStarted});
    QCOMPARE(m_manager->calls(QStringLiteral("RequestScan")).size(), 1);
    // Whoever asks meanwhile gets the same results.
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("RequestScan")).size(), 1);
    QVERIFY(scan.isOpen());
    m_manager->finishScan(m_wifi);
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(scan.operation->results().size(), 2);
    QCOMPARE(told(2), (QStringList {ScanStarted, results({House, Guest})}));
    // The next one is another one.
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("RequestScan")).size(), 2);
    QCOMPARE(told(3).constLast(), ScanStarted);
}

void ManagedRadioTest::scanOfOthers()
{
    startDaemons();
    m_manager->finishScan(m_wifi);
    QCOMPARE(told(1), QStringList {results({House, Guest})});
    m_manager->finishScan(m_wifi);
    QCOMPARE(told(2), (QStringList {results({House, Guest}), results({House, Guest})}));
}

void ManagedRadioTest::tooEarlyToScan_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("old") << QStringLiteral("Scanning not allowed immediately following previous scan");
    QTest::newRow("new") << QStringLiteral("Scanning not allowed at this time");
}

void ManagedRadioTest::tooEarlyToScan()
{
    QFETCH(const QString, text);
    startDaemons();
    m_manager->refuse(QStringLiteral("RequestScan"), NotAllowed, text);
    Scan scan(m_service->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(scan.operation->results().size(), 2);
    QCOMPARE(told(1), QStringList {results({House, Guest})});
    QCOMPARE(request("scan"), QStringLiteral("ok"));
}

void ManagedRadioTest::whileScanning()
{
    startDaemons();
    m_manager->refuse(QStringLiteral("RequestScan"), NotAllowed,
                      QStringLiteral("Scanning not allowed while already scanning"));
    Scan scan(m_service->scan());
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    QVERIFY(scan.isOpen());
    QCOMPARE(m_status->lines(), QStringList());
    m_manager->finishScan(m_wifi);
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(told(1), QStringList {results({House, Guest})});
}

/*! The manager would refuse the second one as too early, and its last results are no scan's. */
void ManagedRadioTest::asksOnceForTwo()
{
    startDaemons();
    m_manager->hold(QStringLiteral("RequestScan"));
    Scan scan(m_service->scan());
    QVERIFY(m_manager->waitForCalls(QStringLiteral("RequestScan")));
    QCOMPARE(request("scan"), QStringLiteral("ok"));
    m_manager->release(QStringLiteral("RequestScan"));
    QTRY_COMPARE(m_status->lines().size(), 1);
    m_manager->finishScan(m_wifi);
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(m_manager->calls(QStringLiteral("RequestScan")).size(), 1);
}

void ManagedRadioTest::refusesScans()
{
    startDaemons();
    m_manager->refuse(QStringLiteral("RequestScan"), NotAllowed,
                      QStringLiteral("Scanning not allowed while unavailable"));
    QCOMPARE(request("scan"), QStringLiteral("13 Scanning not allowed while unavailable"));
    m_manager->refuse(QStringLiteral("RequestScan"), QStringLiteral("org.freedesktop.NetworkManager.PermissionDenied"),
                      QStringLiteral("Not authorized"));
    QCOMPARE(request("scan"), QStringLiteral("9 Not authorized"));
    m_manager->change(FakeManager::managerPath(), {{QStringLiteral("WirelessEnabled"), false}});
    QTRY_VERIFY(!m_service->powered());
    QCOMPARE(request("scan"), QStringLiteral("7 the radio is off"));
    m_manager->change(FakeManager::managerPath(), {{QStringLiteral("WirelessEnabled"), true}});
    QTRY_VERIFY(m_service->powered());
    m_manager->setState(m_wifi, 10);
    QTRY_COMPARE(request("scan"), QStringLiteral("11 the network manager leaves the radio alone"));
}

/*! The manager keeps access points for minutes. */
void ManagedRadioTest::whatIsNotSeen()
{
    startDaemons();
    m_manager->finishScan(m_wifi);
    told(1);
    const qlonglong finished = m_manager->value<qlonglong>(m_wifi, QStringLiteral("LastScan")) / 1000;
    m_manager->change(m_house, {{QStringLiteral("LastSeen"), int(finished - 22)}});
    m_manager->change(m_guest, {{QStringLiteral("LastSeen"), int(finished - 18)}});
    m_manager->change(addAccessPoint("Wanted", 4, 0), {{QStringLiteral("LastSeen"), -1}});
    m_manager->change(addAccessPoint("Own", 5, 0), {{QStringLiteral("Mode"), 3U}});
    m_manager->change(m_wifi, {{QStringLiteral("LastScan"), finished * 1000 + 1}});
    QCOMPARE(told(2).constLast(), results({Guest}));
    // The one in use always is.
    joinAsTheUser("House", m_house);
    told(3);
    m_manager->change(m_wifi, {{QStringLiteral("LastScan"), finished * 1000 + 2}});
    QCOMPARE(told(4).constLast(), results({House, Guest}));
}

void ManagedRadioTest::hardNames()
{
    m_manager->removeAccessPoint(m_guest);
    m_manager->removeAccessPoint(m_house);
    m_manager->addAccessPoint(m_wifi, QByteArray("Caf\xc3\xa9 \"\\\n"), {{"HwAddress", "0A:00:00:00:00:0F"}});
    m_manager->addAccessPoint(m_wifi, QByteArray(), {{"HwAddress", "0A:00:00:00:00:0E"}, {"Strength", 100}});
    m_manager->addAccessPoint(m_wifi, QByteArray("\xff"), {{"HwAddress", "0A:00:00:00:00:0D"}, {"Strength", 0}});
    startDaemons();
    Scan scan(m_service->scan());
    told(1);
    m_manager->finishScan(m_wifi);
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QStringList found;
    for (const WifiAccessPoint &one : scan.operation->results())
        found += one.bssid() + QLatin1Char(' ') + one.ssid() + QLatin1Char(' ') + QString::number(one.rssi());
    QCOMPARE(found,
             (QStringList {QStringLiteral("0a:00:00:00:00:0f Café \"\\\n -70"),
                           QStringLiteral("0a:00:00:00:00:0e  -40"), QStringLiteral("0a:00:00:00:00:0d \ufffd -100")}));
}

void ManagedRadioTest::levelsOfTheSupplicant()
{
    const QString folder = QStringLiteral("/fi/w1/wpa_supplicant1");
    const QString interface = folder + QStringLiteral("/Interfaces/0");
    const QString accessPoint = QStringLiteral("fi.w1.wpa_supplicant1.BSS");
    const QStringList points {interface + QStringLiteral("/BSSs/1"), interface + QStringLiteral("/BSSs/2")};
    BusObjects supplicant(QStringLiteral("fi.w1.wpa_supplicant1"), folder);
    const QVariant interfaces = QVariant::fromValue(BusPaths {QDBusObjectPath(interface)});
    supplicant.add(folder, {{QStringLiteral("fi.w1.wpa_supplicant1"), {{QStringLiteral("Interfaces"), interfaces}}}});
    supplicant.add(interface,
                   {{QStringLiteral("fi.w1.wpa_supplicant1.Interface"),
                     {{QStringLiteral("BSSs"), QVariant::fromValue(BusPaths {QDBusObjectPath(points.first())})}}}});
    const auto properties = [](const char *address, short level) {
        return QVariantMap {{QStringLiteral("BSSID"), QByteArray::fromHex(address)},
                            {QStringLiteral("Signal"), QVariant::fromValue(level)}};
    };
    supplicant.add(points.first(), {{accessPoint, properties("0a0000000001", -33)}});
    QVERIFY(supplicant.start());
    startDaemons();
    const auto levels = [this] {
        Scan scan(m_service->scan());
        toldUntil(ScanStarted);
        m_manager->finishScan(m_wifi);
        if (scan.outcome() != QLatin1String("ok"))
            return QList<int>();
        QList<int> found;
        for (const WifiAccessPoint &one : scan.operation->results())
            found += one.rssi();
        return found;
    };
    // What it knew already; the other one has a percentage only.
    QTRY_COMPARE(levels(), (QList<int> {-33, -70}));
    supplicant.forgetCalls();
    supplicant.emitSignal(
        interface, QStringLiteral("fi.w1.wpa_supplicant1.Interface"), QStringLiteral("BSSAdded"),
        {QVariant::fromValue(QDBusObjectPath(points.last())), QVariant::fromValue(properties("0a0000000003", -91))});
    QTRY_COMPARE(levels(), (QList<int> {-33, -91}));
    supplicant.change(points.first(), {{QStringLiteral("Signal"), QVariant::fromValue(short(-35))}});
    QTRY_COMPARE(levels(), (QList<int> {-35, -91}));
    supplicant.emitSignal(interface, QStringLiteral("fi.w1.wpa_supplicant1.Interface"), QStringLiteral("BSSRemoved"),
                          {QVariant::fromValue(QDBusObjectPath(points.last()))});
    QTRY_COMPARE(levels(), (QList<int> {-35, -70}));
}

void ManagedRadioTest::roams()
{
    joinAsTheUser("House", m_house);
    startDaemons();
    QSignalSpy changed(m_service.get(), &WifiService::connectedChanged);
    use(addAccessPoint("House", 2, FakeManager::Wpa2));
    QCOMPARE(told(1), QStringList {connected("0a:00:00:00:00:02", -1)});
    QTRY_COMPARE(m_service->connectedAccessPoint().bssid(), QStringLiteral("0a:00:00:00:00:02"));
    m_manager->deactivate(m_wifi);
    QTRY_COMPARE(changed.count(), 1);
    QCOMPARE(changed.first().first().toBool(), false);
}

void ManagedRadioTest::losesTheAccessPoint()
{
    joinAsTheUser("House", m_house);
    startDaemons();
    use(QStringLiteral("/"));
    QTRY_VERIFY(!m_service->connected());
    use(m_house);
    QTRY_VERIFY(m_service->connected());
    m_manager->setState(m_wifi, 120, 53);
    QTRY_VERIFY(!m_service->connected());
    QCOMPARE(told(3),
             (QStringList {disconnected("0a:00:00:00:00:01", 4), connected("0a:00:00:00:00:01", -1),
                           disconnected("0a:00:00:00:00:01", 4)}));
}

void ManagedRadioTest::hotspotIsNoNetwork()
{
    startDaemons();
    m_manager->change(m_wifi, {{QStringLiteral("Mode"), 3U}});
    joinAsTheUser("House", m_house);
    m_manager->finishScan(m_wifi);
    QCOMPARE(told(1), QStringList {results({House, Guest})});
    QVERIFY(!m_service->connected());
}

QTEST_GUILESS_MAIN(ManagedRadioTest)

#include "tst_managedradio.moc"
