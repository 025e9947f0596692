// SPDX-License-Identifier: Apache-2.0
#include "wifitile.h"

#include <testunit.h>

#include <QtTest/QtTest>

using namespace morvek;

class WifiTileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void showsTheNetwork();
    void waitsForTheUnit();
    void followsTheRadio();
    void showsWhereTheStationGoes();
    void switchesTheRadio();
    void tellsThatItWasRefused();
    void outlivesTheDaemon();

private:
    std::unique_ptr<TestUnit> m_unit; // first: it says where the tile finds its service
    std::unique_ptr<WifiTile> m_tile;
};

void WifiTileTest::init()
{
    m_unit.reset(new TestUnit);
    QVERIFY(m_unit->start());
    m_tile.reset(new WifiTile);
    QTRY_COMPARE(m_tile->text(), QString("Home"));
}

void WifiTileTest::cleanup()
{
    if (QTest::currentTestFailed())
        qInfo("%s", qPrintable(m_unit->output()));
    m_tile.reset();
    m_unit.reset();
}

void WifiTileTest::showsTheNetwork()
{
    QVERIFY(m_unit->stop());
    QVERIFY(m_unit->start(R"({
        "interfaces": [{ "name": "wlan0", "type": "wifi", "lease": { "ip_addresses": ["10.0.0.5/255.0.0.0"] } }],
        "wifi": { "interface": "wlan0", "connected": "02:00:00:00:00:01", "access_points": [
            { "bssid": "02:00:00:00:00:01", "ssid": "<b>Inn</b>", "frequency": 2412, "signal_level": -60,
              "flags": ["ESS"] }] } })"));
    QTRY_COMPARE(m_tile->text(), QString("<b>Inn</b>"));
}

void WifiTileTest::waitsForTheUnit()
{
    m_tile.reset();
    m_unit.reset(new TestUnit);
    m_tile.reset(new WifiTile);
    QCOMPARE(m_tile->text(), QString("No Wi-Fi yet"));
    QVERIFY(m_unit->start());
    QTRY_COMPARE(m_tile->text(), QString("Home"));
}

void WifiTileTest::followsTheRadio()
{
    QVERIFY(m_unit->act("radio-off"));
    QTRY_COMPARE(m_tile->text(), QString("Off"));
    QVERIFY(m_unit->act("radio-on"));
    QTRY_COMPARE(m_tile->text(), QString("Home"));
}

void WifiTileTest::showsWhereTheStationGoes()
{
    for (const char *home : {"02:00:00:00:20:01", "02:00:00:00:20:02"})
        QVERIFY(m_unit->act("out-of-range", {{"bssid", home}}));
    QTRY_COMPARE(m_tile->text(), QString("Not connected"));
}

void WifiTileTest::switchesTheRadio()
{
    m_tile->tap();
    QCOMPARE(m_tile->text(), QString("One moment"));
    const TestRequest request = m_unit->waitForRequest("wifi_power");
    QCOMPARE(request.answers, QStringList("ok"));
    QTRY_COMPARE(m_tile->text(), QString("Off"));
    m_tile->tap();
    QTRY_COMPARE(m_tile->text(), QString("Home"));
    QCOMPARE(m_unit->requests(request.number).size(), 1);
}

void WifiTileTest::tellsThatItWasRefused()
{
    QVERIFY(m_unit->act("refuse", {{"message", "wifi_power"}, {"err", 16}, {"times", 1}}));
    m_tile->tap(100);
    QTRY_COMPARE(m_tile->text(), QString("That did not work"));
    m_tile->tap();
    QTRY_COMPARE(m_tile->text(), QString("Off"));
}

void WifiTileTest::outlivesTheDaemon()
{
    QVERIFY(m_unit->act("daemon-dies", {{"daemon", "wifi"}}));
    QVERIFY(m_unit->act("radio-off"));
    QVERIFY(m_unit->act("daemon-back", {{"daemon", "wifi"}}));
    QTRY_COMPARE(m_tile->text(), QString("Off"));
}

QTEST_GUILESS_MAIN(WifiTileTest)
#include "tst_wifitile.moc"
