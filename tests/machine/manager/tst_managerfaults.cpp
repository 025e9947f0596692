// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "fakemanager.h"
#include "privatebus.h"

#include <QtCore/QElapsedTimer>
#include <QtTest/QTest>

using namespace morvek;

namespace {

const QStringList OverManager {QStringLiteral("--network"), QStringLiteral("manager")};
const QByteArray Hotspot =
    "{'type':'lan','lantype':'wlanap','wantype':'bridge',"
    "'lancfg':{'gateway_address':'192.168.0.1','gateway_subnet':'255.255.255.0','dhcp_lease_time':'120'},"
    "'lanprofile':{'ssid':'car','passphrase':'drive safely 8','mhs_band':'2.4','max_num_sta':10,"
    "'security_type':'wpa2','autoshutdown_time':600,'privacy':false,'block_conn':false}}";

/*! A unit with a cable that has an address, and a radio with one network in its range, and the daemon over them. */
class Unit
{
public:
    explicit Unit(const QString &version = QStringLiteral("1.42.4"))
        : manager(version)
    {
        wired = manager.addEthernet(QStringLiteral("eth0"));
        radio = manager.addWifi(QStringLiteral("wlan0"));
        point = manager.addAccessPoint(radio, "Garage",
                                       {{QStringLiteral("Flags"), 1}, {QStringLiteral("RsnFlags"), FakeManager::Wpa2}});
        manager.beginActivation(
            wired,
            manager.addProfile({{QStringLiteral("ipv4"), {{QStringLiteral("method"), QStringLiteral("auto")}}}}));
        manager.activate(wired);
        manager.setLease(wired, {{QStringLiteral("ip_address"), QStringLiteral("10.0.0.2")}});
        manager.setIp4(wired, {QStringLiteral("10.0.0.2/24")}, QStringLiteral("10.0.0.1"));
    }

    /*! The radio becomes an access point when it is asked to. */
    void playHotspot()
    {
        QObject::connect(&manager, &FakeManager::called, &manager, [this](const BusCall &call) {
            if (call.member != QLatin1String("AddAndActivateConnection2") || manager.heldCalls() > 0)
                return;
            manager.change(radio, {{QStringLiteral("Mode"), 3U}});
            manager.activate(radio);
        });
    }
    bool start() { return manager.start() && daemon.process().start(daemon.root(), OverManager); }

    FakeManager manager;
    DaemonFixture daemon;
    QString wired;
    QString radio;
    QString point;
};

} // namespace

/*! What a manager does to the daemon that no real one does when it is asked to. */
class ManagerFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void noManager_data();
    void noManager();
    void doesNotAnswer();
    void endsWhileTheManagerDoesNotAnswer();
    void goesDuringARequest_data();
    void goesDuringARequest();

private:
    std::unique_ptr<PrivateBus> m_bus;
};

void ManagerFaultsTest::initTestCase()
{
    m_bus = std::make_unique<PrivateBus>();
    QVERIFY2(m_bus->errorString().isEmpty(), qPrintable(m_bus->errorString()));
}

void ManagerFaultsTest::noManager_data()
{
    QTest::addColumn<QString>("version"); // of the manager that runs, or none
    QTest::addColumn<QByteArray>("variable");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("line");

    QTest::addRow("no bus") << QString() << QByteArray("DBUS_SYSTEM_BUS_ADDRESS")
                            << QByteArray("unix:path=/nowhere/bus")
                            << QByteArray("no system bus: Could not connect: No such file or directory");
    QTest::addRow("nobody on the bus") << QString() << QByteArray() << QByteArray()
                                       << QByteArray("no network manager runs on this machine");
    QTest::addRow("an old one")
        << QStringLiteral("1.19.90") << QByteArray() << QByteArray()
        << QByteArray("the network manager has version 1.19.90, and 1.20 is the first that can do what is asked of it");
    QTest::addRow("another event loop")
        << QStringLiteral("1.42.4") << QByteArray("QT_NO_GLIB") << QByteArray("1")
        << QByteArray("the network manager is heard in GLib's event loop only: do not set QT_NO_GLIB");
}

void ManagerFaultsTest::noManager()
{
    QFETCH(QString, version);
    QFETCH(QByteArray, variable);
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, line);
    FakeManager manager(version);
    if (!version.isEmpty())
        QVERIFY(manager.start());
    const QByteArray before = qgetenv(variable);
    if (!variable.isEmpty())
        qputenv(variable, value);
    const QTemporaryDir folder;
    const auto ended = HostdProcess::run(OverManager, folder.filePath(QStringLiteral("root")));
    if (before.isEmpty())
        qunsetenv(variable);
    else
        qputenv(variable, before);
    QCOMPARE(ended.errors, QByteArray("morvek-hostd: " + line + '\n'));
    QCOMPARE(ended.output, QByteArray());
    QCOMPARE(ended.code, 8);
}

void ManagerFaultsTest::doesNotAnswer()
{
    FakeManager manager;
    manager.hold(QStringLiteral("GetManagedObjects"));
    QVERIFY(manager.start());
    const QTemporaryDir folder;
    const auto ended = HostdProcess::run(OverManager, folder.filePath(QStringLiteral("root")));
    QCOMPARE(ended.errors, QByteArray("morvek-hostd: the network manager has not answered\n"));
    QCOMPARE(ended.code, 8);
}

void ManagerFaultsTest::endsWhileTheManagerDoesNotAnswer()
{
    FakeManager manager;
    manager.hold(QStringLiteral("GetManagedObjects"));
    QVERIFY(manager.start());
    const QTemporaryDir folder;
    ChildProcess daemon;
    QElapsedTimer sinceStart;
    sinceStart.start();
    daemon.start(HostdProcess::program(),
                 OverManager + QStringList {QStringLiteral("--root"), folder.filePath(QStringLiteral("root"))});
    QTRY_COMPARE_WITH_TIMEOUT(manager.heldCalls(), 1, Patience);
    daemon.terminate();
    QVERIFY(daemon.waitForFinished(Patience));
    QVERIFY(sinceStart.elapsed() < 8000); // it would wait for 10 s
    QCOMPARE(daemon.exitCode(), 0);
    QCOMPARE(daemon.readAllStandardError(), QByteArray());
}

void ManagerFaultsTest::goesDuringARequest_data()
{
    QTest::addColumn<QByteArray>("object");
    QTest::addColumn<QByteArrayList>("before"); // messages and their payloads
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("dat");

    const QByteArrayList nothing;
    const auto row = [](const char *name, const char *object, const QByteArrayList &before, const char *message,
                        const QByteArray &dat) {
        QTest::addRow("%s", name) << QByteArray(object) << before << QByteArray(message) << dat;
    };
    row("to manual", Control, nothing, "net_connected",
        "['eth0',{'manual':'yes','ip_address':'10.0.0.9','netmask':'255.255.255.0','gateway':'10.0.0.1'}]");
    row("to automatic", Control, nothing, "net_connected", "['eth0',{'manual':'no'}]");
    row("disconnect", Control, nothing, "net_disconnected", "'eth0'");
    const QByteArrayList added {"wnet_new", "{'ssid':'Garage','key_mgmt':'WPA-PSK','psk':'open sesame 42'}"};
    row("power off", WifiControl, nothing, "wifi_power", "off");
    row("scan", WifiControl, nothing, "scan", {});
    row("select", WifiControl, added, "wnet_select", "0");
    row("leave", WifiControl, added + QByteArrayList {"wnet_select", "0"}, "wnet_disableall", {});
    row("start the hotspot", TetheringControl, nothing, "start", Hotspot);
    row("stop the hotspot", TetheringControl, {"start", Hotspot}, "stop", {});
}

void ManagerFaultsTest::goesDuringARequest()
{
    QFETCH(QByteArray, object);
    QFETCH(QByteArrayList, before);
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, dat);
    // At each of the calls that the request makes.
    int answered = 0;
    for (bool all = false; !all; ++answered) {
        Unit unit;
        if (object == TetheringControl)
            unit.playHotspot();
        QVERIFY(unit.start());
        ZopObject control(QString::fromLatin1(object), ZopObject::ReadWrite, true);
        for (int i = 0; i < before.size(); i += 2)
            QCOMPARE(Request(&control, before.at(i), before.at(i + 1).constData()).outcome(), QStringLiteral("ok"));
        unit.manager.holdAfter(answered);
        Request request(&control, message, dat.isEmpty() ? nullptr : dat.constData());
        QTRY_VERIFY_WITH_TIMEOUT(!request.finished.isEmpty() || unit.manager.heldCalls() > 0, Patience);
        all = !request.finished.isEmpty();
        if (all)
            break;
        unit.manager.stop();
        const QString outcome = request.outcome();
        // A network that the manager has taken on stays wanted.
        if (message != "wnet_select" || outcome != QLatin1String("ok"))
            QCOMPARE(outcome, QStringLiteral("10 the network manager does not run"));
        unit.manager.holdAfter(-1);
        QVERIFY(unit.manager.start());
    }
    QVERIFY(answered > 0);
}

QTEST_GUILESS_MAIN(ManagerFaultsTest)
#include "tst_managerfaults.moc"
