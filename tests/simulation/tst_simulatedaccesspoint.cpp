// SPDX-License-Identifier: Apache-2.0
#include "simulatedaccesspoint.h"
#include "wifirequest.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

ScenarioAccessPoint makeSettings(const QStringList &flags, const char *passkey = "")
{
    ScenarioAccessPoint settings;
    settings.bssid = QStringLiteral("02:00:00:00:00:0A");
    settings.ssid = QStringLiteral("Home");
    settings.frequency = 2437;
    settings.signalLevel = -48;
    settings.flags = flags;
    settings.passkey = QLatin1String(passkey);
    return settings;
}

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

class SimulatedAccessPointTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void scanResult();
    void security_data();
    void security();
    void belongsToItsNameOnly();
    void acceptsItsPasskeyOnly();
    void driftsWithinItsBounds();
    void staysWithoutDrift();
    void setLevel();
};

void SimulatedAccessPointTest::scanResult()
{
    const SimulatedAccessPoint point(makeSettings(words("WPA2-PSK-CCMP ESS what-ever"), "correct horse 7"));
    QCOMPARE(QJsonDocument(point.scanResult()).toJson(QJsonDocument::Compact),
             QByteArray(R"({"bssid":"02:00:00:00:00:0A","flags":["WPA2-PSK-CCMP","ESS","what-ever"],)"
                        R"("frequency":"2437","signal_level":"-48","ssid":"Home"})"));
}

void SimulatedAccessPointTest::security_data()
{
    QTest::addColumn<QString>("flags");
    QTest::addColumn<QString>("passkey");
    QTest::addColumn<bool>("open");
    QTest::addColumn<bool>("asks");
    QTest::addColumn<bool>("joinable");
    QTest::addColumn<QString>("status"); // key management and cipher of those that can be joined

    const char secret[] = "correct horse 7";
    QTest::addRow("open") << "ESS"
                          << "" << true << false << true << "NONE NONE";
    QTest::addRow("no flags") << ""
                              << "" << true << false << true << "NONE NONE";
    QTest::addRow("WPS alone") << "WPS ESS"
                               << "" << true << false << true << "NONE NONE";
    QTest::addRow("WPA2") << "WPA2-PSK-CCMP ESS" << secret << false << true << true << "WPA2-PSK CCMP";
    QTest::addRow("WPA2, TKIP") << "WPA2-PSK-TKIP ESS" << secret << false << true << true << "WPA2-PSK TKIP";
    QTest::addRow("WPA") << "WPA-PSK-TKIP ESS" << secret << false << true << true << "WPA-PSK TKIP";
    QTest::addRow("WPA, CCMP") << "WPA-PSK-CCMP ESS" << secret << false << true << true << "WPA-PSK CCMP";
    QTest::addRow("WPA, both ciphers") << "WPA-PSK-TKIP+CCMP" << secret << false << true << true << "WPA-PSK CCMP";
    QTest::addRow("both") << "WPA-PSK-TKIP WPA2-PSK-CCMP" << secret << false << true << true << "WPA2-PSK CCMP";
    QTest::addRow("both, WPA better") << "WPA-PSK-CCMP WPA2-PSK-TKIP" << secret << false << true << true
                                      << "WPA2-PSK TKIP";
    QTest::addRow("flags that do not tell") << "ESS" << secret << false << true << true << "WPA2-PSK CCMP";
    QTest::addRow("passkey forgotten") << "WPA2-PSK-CCMP ESS"
                                       << "" << false << true << false << "";
    QTest::addRow("WPA, passkey forgotten") << "WPA-PSK-TKIP ESS"
                                            << "" << false << true << false << "";
    QTest::addRow("WEP") << "WEP ESS"
                         << "" << false << false << false << "";
    QTest::addRow("enterprise") << "WPA2-EAP-CCMP ESS"
                                << "" << false << false << false << "";
    QTest::addRow("SAE") << "WPA3-SAE-CCMP ESS"
                         << "" << false << false << false << "";
    QTest::addRow("WPA3") << "WPA3-SAE-CCMP ESS" << secret << false << true << true << "WPA3-SAE CCMP";
    QTest::addRow("WPA3 and WPA2") << "WPA2-PSK+SAE-CCMP ESS" << secret << false << true << true << "WPA2-PSK CCMP";
    QTest::addRow("RSN") << "RSN-SAE-CCMP ESS"
                         << "" << false << false << false << "";
    QTest::addRow("OWE") << "OWE ESS"
                         << "" << false << false << false << "";
    QTest::addRow("unknown WPA") << "WPA ESS"
                                 << "" << false << false << false << "";
}

void SimulatedAccessPointTest::security()
{
    QFETCH(QString, flags);
    QFETCH(QString, passkey);
    const SimulatedAccessPoint point(
        makeSettings(flags.split(QLatin1Char(' '), Qt::SkipEmptyParts), qPrintable(passkey)));
    QTEST(point.belongsTo({QStringLiteral("Home"), QString()}), "open");
    QTEST(point.belongsTo({QStringLiteral("Home"), QStringLiteral("whatever it is")}), "asks");
    QTEST(point.canBeJoined(), "joinable");
    if (!point.canBeJoined())
        return;
    const QJsonObject status = point.status();
    QCOMPARE(status.keys(),
             QStringList({QStringLiteral("bssid"), QStringLiteral("key_mgmt"), QStringLiteral("pairwise_cipher"),
                          QStringLiteral("ssid")}));
    QCOMPARE(status.value(QStringLiteral("bssid")).toString(), QStringLiteral("02:00:00:00:00:0A"));
    QCOMPARE(status.value(QStringLiteral("ssid")).toString(), QStringLiteral("Home"));
    QTEST(status.value(QStringLiteral("key_mgmt")).toString() + QLatin1Char(' ')
              + status.value(QStringLiteral("pairwise_cipher")).toString(),
          "status");
}

void SimulatedAccessPointTest::belongsToItsNameOnly()
{
    const SimulatedAccessPoint point(makeSettings(words("ESS")));
    QVERIFY(point.belongsTo({QStringLiteral("Home"), QString()}));
    QVERIFY(!point.belongsTo({QStringLiteral("home"), QString()}));
    QVERIFY(!point.belongsTo({QStringLiteral("Home "), QString()}));
}

void SimulatedAccessPointTest::acceptsItsPasskeyOnly()
{
    const SimulatedAccessPoint point(makeSettings(words("WPA2-PSK-CCMP"), "correct horse 7"));
    QVERIFY(point.accepts({QStringLiteral("Home"), QStringLiteral("correct horse 7")}));
    QVERIFY(!point.accepts({QStringLiteral("Home"), QStringLiteral("correct horse 8")}));
    QVERIFY(!point.accepts({QStringLiteral("Home"), QStringLiteral("correct horse 7 ")}));
    const SimulatedAccessPoint forgotten(makeSettings(words("WPA2-PSK-CCMP")));
    QVERIFY(!forgotten.accepts({QStringLiteral("Home"), QStringLiteral("correct horse 7")}));
    QVERIFY(SimulatedAccessPoint(makeSettings(words("ESS"))).accepts({QStringLiteral("Home"), QString()}));
}

void SimulatedAccessPointTest::driftsWithinItsBounds()
{
    ScenarioAccessPoint settings = makeSettings(words("ESS"));
    settings.drift = 3;
    SimulatedAccessPoint point(settings);
    QCOMPARE(point.level(), -48);
    Pace pace(1, 1);
    QSet<int> levels;
    for (int i = 0; i < 1000; ++i) {
        const int before = point.level();
        point.drift(&pace);
        QVERIFY(qAbs(point.level() - before) <= 2);
        levels.insert(point.level());
    }
    QCOMPARE(levels, QSet<int>({-51, -50, -49, -48, -47, -46, -45}));

    // The same seed repeats the walk.
    const auto walk = [&settings] {
        SimulatedAccessPoint walker(settings);
        Pace own(1, 7);
        QVector<int> steps;
        for (int i = 0; i < 20; ++i) {
            walker.drift(&own);
            steps += walker.level();
        }
        return steps;
    };
    QCOMPARE(walk(), walk());
}

void SimulatedAccessPointTest::staysWithoutDrift()
{
    SimulatedAccessPoint point(makeSettings(words("ESS")));
    Pace pace(1, 1);
    for (int i = 0; i < 100; ++i) {
        point.drift(&pace);
        QCOMPARE(point.level(), -48);
    }
}

void SimulatedAccessPointTest::setLevel()
{
    ScenarioAccessPoint settings = makeSettings(words("ESS"));
    settings.drift = 3;
    SimulatedAccessPoint point(settings);
    point.setLevel(-80);
    QCOMPARE(point.level(), -80);
    Pace pace(1, 1);
    for (int i = 0; i < 100; ++i) {
        point.drift(&pace);
        QVERIFY(point.level() >= -83 && point.level() <= -77);
    }
}

QTEST_GUILESS_MAIN(SimulatedAccessPointTest)
#include "tst_simulatedaccesspoint.moc"
