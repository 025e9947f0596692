// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "playeddaemon.h"
#include "publishedsecurity.h"
#include "wifichoice.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace morvek;

/*! Which access point is taken for a name. */
class WifiChoiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { PlayedDaemon::forgetAll(); }

    void chooses_data();
    void chooses();
};

void WifiChoiceTest::chooses_data()
{
    QTest::addColumn<QStringList>("inRange"); // "NAME LEVEL FLAG,FLAG"
    QTest::addColumn<bool>("withPasskey");
    QTest::addColumn<int>("outcome");
    QTest::addColumn<QString>("security");
    QTest::addColumn<int>("taken"); // of those in range; -1: none
    QTest::addColumn<bool>("hasOpenTwin");
    const auto row = [](const char *name, std::initializer_list<const char *> inRange, bool withPasskey,
                        WifiChoice::Outcome outcome, const char *security, int taken, bool hasOpenTwin = false) {
        QStringList lines;
        for (const char *line : inRange)
            lines += QLatin1String(line);
        QTest::newRow(name) << lines << withPasskey << int(outcome) << QString::fromLatin1(security) << taken
                            << hasOpenTwin;
    };
    const char *wpa = "Inn -50 WPA-PSK-TKIP,ESS";
    const char *weakWpa2 = "Inn -70 WPA2-PSK-CCMP,ESS";
    row("strongest first", {wpa, weakWpa2}, true, WifiChoice::Joinable, "WPA", 0);
    row("strongest last", {weakWpa2, wpa}, true, WifiChoice::Joinable, "WPA", 1);
    row("equal", {"Inn -50 WPA2-PSK-CCMP,ESS", wpa}, true, WifiChoice::Joinable, "WPA2", 0);
    row("level that is not known first", {"Inn 0 WPA-PSK-TKIP,ESS", weakWpa2}, true, WifiChoice::Joinable, "WPA2", 1);
    row("level that is not known last", {weakWpa2, "Inn 0 WPA-PSK-TKIP,ESS"}, true, WifiChoice::Joinable, "WPA2", 0);
    row("only one that fits", {"Inn -30 WEP,ESS", weakWpa2, "Inn -20 WPA2-EAP-CCMP,ESS"}, true, WifiChoice::Joinable,
        "WPA2", 1);
    row("another name", {"Inns -30 WPA2-PSK-CCMP,ESS", "inn -30 ESS"}, true, WifiChoice::NotInRange, "unknown", -1);
    row("nothing", {}, false, WifiChoice::NotInRange, "unknown", -1);
    row("no passkey", {wpa, weakWpa2}, false, WifiChoice::NeedsPasskey, "WPA", 0);
    row("open", {"Inn -40 ESS", "Inn -30 ESS", "Inn -50 ESS"}, false, WifiChoice::Joinable, "open", 1);
    row("open, with a passkey", {"Inn -30 ESS"}, true, WifiChoice::TakesNone, "open", 0);
    row("open with WPS", {"Inn -30 WPS,ESS"}, false, WifiChoice::Joinable, "open + WPS", 0);
    row("open with WPS, with a passkey", {"Inn -30 WPS,ESS"}, true, WifiChoice::TakesNone, "open + WPS", 0);
    row("open twin with WPS", {"Inn -30 WPS,ESS", weakWpa2}, true, WifiChoice::Joinable, "WPA2", 1, true);
    row("open twin first", {"Inn -30 ESS", weakWpa2}, true, WifiChoice::Joinable, "WPA2", 1, true);
    row("open twin last", {weakWpa2, "Inn -30 ESS"}, false, WifiChoice::NeedsPasskey, "WPA2", 0, true);
    row("of several kinds", {"Inn -30 WEP,ESS", "Inn -40 WPA2-EAP-CCMP,ESS"}, true, WifiChoice::Unsupported,
        "WEP + WPA2 Enterprise", -1);
    row("unsupported with an open twin", {"Inn -30 ESS", "Inn -40 WPA3-SAE-CCMP,ESS"}, false, WifiChoice::Unsupported,
        "WPA3", -1, true);
}

void WifiChoiceTest::chooses()
{
    QFETCH(QStringList, inRange);
    QFETCH(bool, withPasskey);
    QFETCH(QString, security);
    QList<WifiAccessPoint> accessPoints;
    QJsonArray results;
    for (const QString &line : qAsConst(inRange)) {
        const QStringList words = line.split(QLatin1Char(' '));
        WifiAccessPoint accessPoint;
        accessPoint.setBssid(QStringLiteral("02:00:00:00:50:0%1").arg(accessPoints.size()));
        accessPoint.setSsid(words[0]);
        accessPoint.setRssi(words[1].toInt());
        accessPoints += accessPoint;
        results +=
            QJsonObject {{QStringLiteral("bssid"), accessPoint.bssid()},
                         {QStringLiteral("flags"), QJsonArray::fromStringList(words[2].split(QLatin1Char(',')))}};
    }
    PlayedDaemon daemon(PlayedDaemon::Wifi);
    const ZopVariant published(QString::fromUtf8(QJsonDocument(results).toJson(QJsonDocument::Compact)));
    QVERIFY(daemon.status().setAttributes({{{QStringLiteral("scan_results"), published}}, {}}));

    const WifiChoice choice(accessPoints, PublishedSecurity(), QStringLiteral("Inn"), withPasskey);
    QTEST(int(choice.outcome), "outcome");
    QCOMPARE(choice.security.name(), security);
    QFETCH(int, taken);
    QCOMPARE(choice.accessPoint, taken < 0 ? WifiAccessPoint() : accessPoints.at(taken));
    QTEST(choice.hasOpenTwin, "hasOpenTwin");
}

CONTRACT_TEST_MAIN(WifiChoiceTest)
#include "tst_wifichoice.moc"
