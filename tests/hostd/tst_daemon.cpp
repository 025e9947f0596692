// SPDX-License-Identifier: Apache-2.0
#include "eventlog.h"
#include "faultplan.h"
#include "wifidaemon.h"
#include "worldfixture.h"
#include "zopcontrolcommand.h"
#include "zopobject.h"

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

using namespace morvek;

/*! What only a daemon in the test's own process can show. */
class DaemonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void repliesBeforeTheWorldChanges_data();
    void repliesBeforeTheWorldChanges();
    void servesNothingWhenItCannotPublish();
};

void DaemonTest::repliesBeforeTheWorldChanges_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("dat");

    QTest::addRow("power") << "wifi_power"
                           << "off";
    QTest::addRow("scan") << "scan" << QString();
    QTest::addRow("select") << "wnet_select"
                            << "0";
    QTest::addRow("disable all") << "wnet_disableall" << QString();
}

void DaemonTest::repliesBeforeTheWorldChanges()
{
    QFETCH(QString, message);
    QFETCH(QString, dat);
    const QTemporaryDir root;
    qputenv("ZOP_ROOT", QFile::encodeName(root.path()));
    WorldFixture fixture(R"({'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'connected': true,
            'lease': {'ip_addresses': ['192.168.1.7/255.255.255.0']}}],
        'wifi': {'interface': 'wlan0', 'connected': '02:00:00:00:00:01', 'access_points': [
            {'bssid': '02:00:00:00:00:01', 'ssid': 'Home', 'frequency': 1, 'signal_level': 0, 'flags': []}]}})");
    FaultPlan faults;
    const EventLog log(false);
    WifiDaemon daemon(fixture.radio.get(), {&fixture.world, &faults, &fixture.pace, &log});
    QString error;
    QVERIFY2(daemon.start(&error), qPrintable(error));

    ZopObject control(QStringLiteral("/zop/services/wifi/control"), ZopObject::ReadWrite, true);
    ZopControlCommand command(&control);
    command.setMessage(message);
    command.setDat(dat);
    QSignalSpy finished(&command, &ZopControlCommand::finished);
    // The reply can only arrive while the world waits here if it was on its way before.
    int arrived = -1;
    connect(&fixture.world, &World::wifiStatusChanged, &command, [&finished, &arrived] {
        if (arrived == -1)
            arrived = finished.count() > 0 || finished.wait() ? 1 : 0;
    });
    command.start();
    QTRY_VERIFY(arrived != -1);
    QCOMPARE(arrived, 1);
    QVERIFY2(!command.hasError(), qPrintable(command.errorString()));
}

void DaemonTest::servesNothingWhenItCannotPublish()
{
    const QTemporaryDir root;
    qputenv("ZOP_ROOT", QFile::encodeName(root.path()));
    QVERIFY(QDir().mkpath(root.filePath(QStringLiteral("zop/services/wifi/status/directory"))));
    WorldFixture fixture(R"({'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'up': false}],
        'wifi': {'interface': 'wlan0', 'access_points': []}})");
    FaultPlan faults;
    const EventLog log(false);
    WifiDaemon daemon(fixture.radio.get(), {&fixture.world, &faults, &fixture.pace, &log});
    QString error;
    QVERIFY(!daemon.start(&error));
    QVERIFY(!error.isEmpty());
    QVERIFY(!ZopObject(QStringLiteral("/zop/services/wifi/control"), ZopObject::ReadWrite, true).isValid());
}

QTEST_GUILESS_MAIN(DaemonTest)
#include "tst_daemon.moc"
