// SPDX-License-Identifier: Apache-2.0
#include "stationtext.h"

#include <QtTest/QtTest>

using namespace morvek;

/*! The words of the Wi-Fi status object, to the letter. */
class StationTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void events();
    void values();
};

void StationTextTest::events()
{
    QCOMPARE(StationText::ScanStarted, QStringLiteral("CTRL-EVENT-SCAN-STARTED "));
    QCOMPARE(StationText::ScanFinished, QStringLiteral("CTRL-EVENT-SCAN-RESULTS "));
    QCOMPARE(StationText::NetworkNotFound, QStringLiteral("CTRL-EVENT-NETWORK-NOT-FOUND "));
    QCOMPARE(StationText::connectedEvent(QStringLiteral("02:00:00:00:00:01"), 7),
             QStringLiteral("CTRL-EVENT-CONNECTED - Connection to 02:00:00:00:00:01 completed [id=7 id_str=]"));
    QCOMPARE(StationText::disconnectedEvent(QStringLiteral("02:00:00:00:00:01"), StationText::LeftByItself),
             QStringLiteral("CTRL-EVENT-DISCONNECTED bssid=02:00:00:00:00:01 reason=3"));
    QCOMPARE(StationText::disconnectedEvent(QStringLiteral("02:00:00:00:00:01"), StationText::LostFromSight),
             QStringLiteral("CTRL-EVENT-DISCONNECTED bssid=02:00:00:00:00:01 reason=4"));
    QCOMPARE(StationText::wrongKeyEvent(4, QStringLiteral("a %1 \"b\"\n")),
             QStringLiteral("CTRL-EVENT-SSID-TEMP-DISABLED id=4 ssid=\"a %1 \\\"b\\\"\\x0a\" auth_failures=1 "
                            "duration=10 reason=WRONG_KEY"));
}

void StationTextTest::values()
{
    QCOMPARE(StationText::power(true), QStringLiteral("on"));
    QCOMPARE(StationText::power(false), QStringLiteral("off"));
    const QJsonObject result =
        StationText::scanResult(QStringLiteral("02:00:00:00:00:01"), QStringLiteral("House"), -61, 2437,
                                {QStringLiteral("WPA2-PSK-CCMP"), QStringLiteral("ESS")});
    QCOMPARE(StationText::scanResults({result}),
             QStringLiteral(R"([{"bssid":"02:00:00:00:00:01","flags":["WPA2-PSK-CCMP","ESS"],"frequency":"2437",)"
                            R"("signal_level":"-61","ssid":"House"}])"));
    QCOMPARE(StationText::scanResults({}), QStringLiteral("[]"));
    QCOMPARE(
        StationText::status(QStringLiteral("02:00:00:00:00:01"), QStringLiteral("House"), QStringLiteral("WPA2-PSK"),
                            QStringLiteral("CCMP")),
        (QJsonObject {
            {"bssid", "02:00:00:00:00:01"}, {"ssid", "House"}, {"key_mgmt", "WPA2-PSK"}, {"pairwise_cipher", "CCMP"}}));
}

QTEST_GUILESS_MAIN(StationTextTest)

#include "tst_stationtext.moc"
