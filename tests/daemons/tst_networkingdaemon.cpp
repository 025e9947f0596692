// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "lockholder.h"
#include "zopdirwatcher.h"

#include <QtCore/QDir>
#include <QtTest/QtTest>

using namespace morvek;

/*! What the networking daemon publishes and answers, as its clients see it. */
class NetworkingDaemonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_daemon = std::make_unique<DaemonFixture>(); }
    void cleanup() { m_daemon.reset(); }

    void publishes();
    void publishesInterfacesBeforeTheStatus();
    void overwritesNothingOfAnotherDaemon();
    void configuresManuallyAndBack();
    void repliesBeforeTheWorldChanges();
    void refuses_data();
    void refuses();
    void takesOverAFormerRun();

private:
    std::unique_ptr<DaemonFixture> m_daemon;
};

void NetworkingDaemonTest::publishes()
{
    QVERIFY(m_daemon->start(QStringLiteral("headunit")));
    ZopDirWatcher watcher {QLatin1String(Interfaces)};
    QSignalSpy added(&watcher, &ZopDirWatcher::objectAdded);
    watcher.setNameCacheEnabled(true);
    QStringList names;
    for (const QList<QVariant> &arguments : added)
        names += arguments.first().toString();
    names.sort();
    QCOMPARE(names,
             QStringList(
                 {QStringLiteral("cell0"), QStringLiteral("eth0"), QStringLiteral("eth0.5"), QStringLiteral("wlan0")}));

    const Seen eth0(interfacePath("eth0"));
    QCOMPARE(eth0.text("type"), QStringLiteral("wired"));
    QCOMPARE(eth0.text("link_address"), QStringLiteral("02:00:00:00:10:02"));
    QCOMPARE(eth0.object.attribute(QStringLiteral("mtu")), ZopVariant(1500));
    QCOMPARE(eth0.text("up"), QStringLiteral("true"));
    QCOMPARE(eth0.text("connected"), QStringLiteral("true"));
    QCOMPARE(eth0.text("manual"), QStringLiteral("no"));
    QCOMPARE(eth0.object.attribute(QStringLiteral("ip_addresses")),
             ZopVariant("[\"fe80::12/64\",\"10.20.0.40/255.255.0.0\"]", "json"));
    QCOMPARE(eth0.text("ip_gateway"), QStringLiteral("[\"10.20.0.1\"]"));
    QVERIFY(!eth0.object.attribute(QStringLiteral("parent_interface")).isValid());

    const Seen vlan(interfacePath("eth0.5"));
    QCOMPARE(vlan.text("parent_interface"), QStringLiteral("eth0"));
    QCOMPARE(vlan.text("manual"), QStringLiteral("yes"));

    const Seen status {QLatin1String(Status)};
    QCOMPARE(status.text("default_interface"), QStringLiteral("wlan0"));
    QCOMPARE(status.object.attribute(QStringLiteral("priority")),
             ZopVariant("[\"wlan0\",\"eth0\",\"cell0\",\"eth0.5\"]", "json"));
}

// Where an object cannot be created, the ones before it are there, and the ones behind it are not.
void NetworkingDaemonTest::publishesInterfacesBeforeTheStatus()
{
    const QString networking = m_daemon->root() + QStringLiteral("/zop/services/networking");
    QVERIFY(QDir().mkpath(networking + QStringLiteral("/all")));
    QVERIFY(m_daemon->makeRoot());
    const LockHolder holder(networking + QStringLiteral("/all"));
    QVERIFY(holder.holds());
    const auto ended = HostdProcess::run({QStringLiteral("--root"), m_daemon->root()});
    QCOMPARE(ended.code, 1);
    QCOMPARE(ended.output, QByteArray());
    QVERIFY2(ended.errors.startsWith("morvek-hostd: "), ended.errors.constData());
    QCOMPARE(ended.errors.count('\n'), 1);
    QVERIFY(ZopObject(interfacePath("wlan0"), ZopObject::Subscribe, false).isValid());
    QVERIFY(ZopObject(interfacePath("cell0"), ZopObject::Subscribe, false).isValid());
    QVERIFY(!QFile::exists(networking + QStringLiteral("/control")));
}

void NetworkingDaemonTest::overwritesNothingOfAnotherDaemon()
{
    QVERIFY(m_daemon->makeRoot());
    const ZopObject another(QLatin1String(Control), ZopObject::Publish, true);
    QVERIFY2(another.isValid(), qPrintable(another.errorString()));
    ZopChangeset values;
    values.assignments.insert(QStringLiteral("mtu"), 1280);
    QVERIFY(ZopObject::create(interfacePath("wlan0"), values));
    QVERIFY(ZopObject::create(interfacePath("ppp0"), values));
    const auto ended = HostdProcess::run({QStringLiteral("--root"), m_daemon->root()});
    QCOMPARE(ended.code, 1);
    QCOMPARE(ended.output, QByteArray());
    QCOMPARE(ended.errors.count('\n'), 1);
    QCOMPARE(Seen(interfacePath("wlan0")).text("mtu"), QStringLiteral("1280"));
    QCOMPARE(Seen(interfacePath("ppp0")).text("mtu"), QStringLiteral("1280"));
    QVERIFY(!ZopObject(QLatin1String(Status), ZopObject::Subscribe, false).isValid());
    QVERIFY(ZopObject(QLatin1String(Control), ZopObject::ReadWrite, true).isValid());
}

void NetworkingDaemonTest::configuresManuallyAndBack()
{
    QVERIFY(m_daemon->start(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    QVERIFY2(control.isValid(), qPrintable(control.errorString()));
    Seen wlan0(interfacePath("wlan0"));
    Seen status {QLatin1String(Status)};

    QCOMPARE(Request(&control, "net_disconnected", "'wlan0'").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(wlan0.updates.count(), 1);
    QCOMPARE(wlan0.text("connected"), QStringLiteral("false"));
    QCOMPARE(wlan0.text("ip_addresses"), QStringLiteral("[]"));
    QCOMPARE(wlan0.text("ip_gateway"), QStringLiteral("[]"));
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("eth0"));

    Request manual(&control, "net_connected",
                   "['wlan0',{'gateway':'10.1.1.1','ip_address':'10.1.1.20','manual':'yes','manual6':'off',"
                   "'netmask':'255.255.255.0'}]");
    QCOMPARE(manual.outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(wlan0.updates.count(), 2);
    QCOMPARE(wlan0.text("connected"), QStringLiteral("true"));
    QCOMPARE(wlan0.text("manual"), QStringLiteral("yes"));
    QCOMPARE(wlan0.text("ip_addresses"), QStringLiteral("[\"10.1.1.20/255.255.255.0\"]"));
    QCOMPARE(wlan0.text("ip_gateway"), QStringLiteral("[\"10.1.1.1\"]"));
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("wlan0"));

    QCOMPARE(Request(&control, "net_disconnected", "'wlan0'").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(wlan0.updates.count(), 3);
    QCOMPARE(Request(&control, "net_connected", "['wlan0',{'manual':'no','manual6':'off'}]").outcome(),
             QStringLiteral("ok"));
    QTRY_COMPARE(wlan0.updates.count(), 4);
    QCOMPARE(wlan0.text("manual"), QStringLiteral("no"));
    QCOMPARE(wlan0.text("ip_addresses"), QStringLiteral("[\"fe80::11/64\",\"192.168.43.17/255.255.255.0\"]"));
    QCOMPARE(wlan0.text("ip_gateway"), QStringLiteral("[\"192.168.43.1\"]"));
}

void NetworkingDaemonTest::repliesBeforeTheWorldChanges()
{
    const char scenario[] =
        "{'delays': {'release': 86400000}, 'interfaces': [{'name': 'a', 'type': 'wired', 'connected': true, "
        "'lease': {'ip_addresses': ['10.0.0.5/255.0.0.0']}}]}";
    QVERIFY(m_daemon->startWith(scenario));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    QCOMPARE(Request(&control, "net_disconnected", "'a'").outcome(), QStringLiteral("ok"));
    QCOMPARE(Seen(interfacePath("a")).text("connected"), QStringLiteral("true"));
}

void NetworkingDaemonTest::refuses_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("dat");
    QTest::addColumn<QString>("outcome");

    QTest::addRow("message") << QByteArray("net_explode") << QByteArray("'eth0'")
                             << "1 unknown message \"net_explode\"";
    QTest::addRow("dat of connect") << QByteArray("net_connected") << QByteArray("['eth0'")
                                    << "2 dat must be [interface name, {settings}]";
    QTest::addRow("dat of disconnect") << QByteArray("net_disconnected") << QByteArray("eth0")
                                       << "2 dat must be \"interface name\"";
    QTest::addRow("connect an unknown one")
        << QByteArray("net_connected") << QByteArray("['wlan9',{'manual':'no'}]") << "3 no interface \"wlan9\"";
    QTest::addRow("disconnect an unknown one")
        << QByteArray("net_disconnected") << QByteArray("'wlan9'") << "3 no interface \"wlan9\"";
    QTest::addRow("half an address")
        << QByteArray("net_connected")
        << QByteArray("['eth0',{'manual':'yes','ip_address':'10.1','netmask':'255.0.0.0','gateway':'10.1.1.1'}]")
        << "4 \"10.1\" is not the IPv4 address of a host";
    QTest::addRow("no link") << QByteArray("net_connected") << QByteArray("['down0',{'manual':'no'}]")
                             << "5 \"down0\" has no link";
}

void NetworkingDaemonTest::refuses()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, dat);
    const char scenario[] =
        "{'interfaces': [{'name': 'eth0', 'type': 'wired'}, {'name': 'down0', 'type': 'wired', 'up': false}]}";
    QVERIFY(m_daemon->startWith(scenario));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    QTEST(Request(&control, message.constData(), dat.constData()).outcome(), "outcome");
}

void NetworkingDaemonTest::takesOverAFormerRun()
{
    QVERIFY(m_daemon->start(QStringLiteral("headunit")));
    m_daemon->kill();
    ZopObject writer(interfacePath("eth0"), ZopObject::ReadWrite, false);
    ZopChangeset stale;
    stale.assignments.insert(QStringLiteral("stale"), QStringLiteral("yes"));
    QVERIFY(writer.setAttributes(stale));

    Seen eth0(interfacePath("eth0"));
    const char scenario[] = "{'interfaces': [{'name': 'eth0', 'type': 'usb'}, {'name': 'new0', 'type': 'usb'}]}";
    QVERIFY(m_daemon->startWith(scenario));
    QTRY_COMPARE(eth0.updates.count(), 1);
    const ZopChangeset whole = eth0.update(0);
    QCOMPARE(whole.removals,
             QSet<QString>({QStringLiteral("stale"), QStringLiteral("link_address"), QStringLiteral("mtu")}));
    const QMap<QString, ZopVariant> expected {
        {QStringLiteral("connected"), ZopVariant("false", "text")},
        {QStringLiteral("ip_addresses"), ZopVariant("[]", "json")},
        {QStringLiteral("ip_gateway"), ZopVariant("[]", "json")},
        {QStringLiteral("manual"), ZopVariant("no", "text")},
        {QStringLiteral("type"), ZopVariant("usb", "text")},
        {QStringLiteral("up"), ZopVariant("true", "text")},
    };
    QCOMPARE(whole.assignments, expected);
    QVERIFY(ZopObject(interfacePath("new0"), ZopObject::Subscribe, false).isValid());
    for (const char *gone : {"wlan0", "cell0", "eth0.5"})
        QVERIFY2(!ZopObject(interfacePath(gone), ZopObject::Subscribe, false).isValid(), gone);
    const Seen status {QLatin1String(Status)};
    QCOMPARE(status.text("default_interface"), QString());
    QCOMPARE(status.text("priority"), QStringLiteral("[\"eth0\",\"new0\"]"));
}

QTEST_GUILESS_MAIN(NetworkingDaemonTest)
#include "tst_networkingdaemon.moc"
