// SPDX-License-Identifier: Apache-2.0
#include "accesspointtext.h"
#include "joinattempt.h"

#include <QtTest/QtTest>

using namespace morvek;

Q_DECLARE_METATYPE(morvek::AccessPointSecurity)

/*! What stands in the manager's bit fields, with values as they were read from real access points and by hand. */
class AccessPointTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void security_data();
    void security();
    void otherServiceSet();
    void level_data();
    void level();
    void failure_data();
    void failure();
};

void AccessPointTextTest::security_data()
{
    QTest::addColumn<AccessPointSecurity>("security");
    QTest::addColumn<QString>("flags");
    QTest::addColumn<QString>("status"); // key_mgmt and pairwise_cipher
    QTest::addColumn<QString>("ways");   // without a passkey, and with one
    const auto row = [](const char *name, quint32 flags, quint32 wpa, quint32 rsn, const char *words,
                        const char *status, const char *ways) {
        QTest::newRow(name) << AccessPointSecurity {flags, wpa, rsn} << QString::fromLatin1(words)
                            << QString::fromLatin1(status) << QString::fromLatin1(ways);
    };
    row("open", 0, 0, 0, "ESS", "NONE NONE", "open -");
    row("open with WPS", 0x2, 0, 0, "WPS ESS", "NONE NONE", "open -");
    row("WEP", 0x1, 0, 0, "WEP ESS", "NONE NONE", "- -");
    row("WPA", 0x1, 0x144, 0, "WPA-PSK-TKIP ESS", "WPA-PSK TKIP", "- psk");
    row("WPA with CCMP", 0x1, 0x148, 0, "WPA-PSK-CCMP ESS", "WPA-PSK CCMP", "- psk");
    row("WPA2", 0x1, 0, 0x188, "WPA2-PSK-CCMP ESS", "WPA2-PSK CCMP", "- psk");
    row("WPA2 with TKIP", 0x1, 0, 0x144, "WPA2-PSK-TKIP ESS", "WPA2-PSK TKIP", "- psk");
    row("WPA2 with both ciphers", 0x1, 0, 0x14c, "WPA2-PSK-TKIP+CCMP ESS", "WPA2-PSK CCMP", "- psk");
    row("WPA2 with WPS", 0x3, 0, 0x188, "WPA2-PSK-CCMP WPS ESS", "WPA2-PSK CCMP", "- psk");
    row("WPA and WPA2", 0x1, 0x144, 0x148, "WPA-PSK-TKIP WPA2-PSK-CCMP ESS", "WPA2-PSK CCMP", "- psk");
    row("WPA3", 0x1, 0, 0x488, "WPA2-SAE-CCMP ESS", "WPA3-SAE CCMP", "- sae");
    row("WPA2 and WPA3", 0x1, 0, 0x588, "WPA2-PSK-CCMP WPA2-SAE-CCMP ESS", "WPA2-PSK CCMP", "- psk");
    row("OWE", 0x1, 0, 0x888, "WPA2-OWE-CCMP ESS", "OWE CCMP", "owe -");
    row("open beside OWE", 0, 0, 0x1000, "OWE-TRANS ESS", "NONE NONE", "owe -");
    row("enterprise", 0x1, 0, 0x288, "WPA2-EAP-CCMP ESS", "WPA2-EAP CCMP", "- -");
    row("old enterprise", 0x1, 0x244, 0, "WPA-EAP-TKIP ESS", "WPA-EAP TKIP", "- -");
    row("enterprise of 192 bits", 0x1, 0, 0x2000, "WPA2-EAP-GCMP ESS", "WPA2-EAP GCMP", "- -");
    row("enterprise beside WPA2", 0x1, 0, 0x388, "WPA2-PSK-CCMP WPA2-EAP-CCMP ESS", "WPA2-PSK CCMP", "- psk");
}

void AccessPointTextTest::security()
{
    QFETCH(const AccessPointSecurity, security);
    QTEST(AccessPointText::flags(security, true).join(QLatin1Char(' ')), "flags");
    QTEST(AccessPointText::keyManagement(security) + QLatin1Char(' ') + AccessPointText::cipher(security), "status");
    const QMap<AccessPointText::Way, QString> names {{AccessPointText::Way::None, QStringLiteral("-")},
                                                     {AccessPointText::Way::Open, QStringLiteral("open")},
                                                     {AccessPointText::Way::Owe, QStringLiteral("owe")},
                                                     {AccessPointText::Way::Psk, QStringLiteral("psk")},
                                                     {AccessPointText::Way::Sae, QStringLiteral("sae")}};
    QTEST(names.value(AccessPointText::wayToJoin(security, false)) + QLatin1Char(' ')
              + names.value(AccessPointText::wayToJoin(security, true)),
          "ways");
}

void AccessPointTextTest::otherServiceSet()
{
    QCOMPARE(AccessPointText::flags({0x1, 0, 0x188}, false), QStringList {QStringLiteral("WPA2-PSK-CCMP")});
}

void AccessPointTextTest::level_data()
{
    QTest::addColumn<int>("level");
    QTest::newRow("100") << -40;
    QTest::newRow("99") << -41;
    QTest::newRow("97") << -42;
    QTest::newRow("85") << -49;
    QTest::newRow("50") << -70;
    QTest::newRow("34") << -80;
    QTest::newRow("1") << -99;
    QTest::newRow("0") << -100;
    QTest::newRow("-1") << -100;
    QTest::newRow("255") << -40;
}

void AccessPointTextTest::level()
{
    QTEST(AccessPointText::level(QByteArray(QTest::currentDataTag()).toInt()), "level");
}

void AccessPointTextTest::failure_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<int>("failure");
    for (const char *reason : {"7", "8", "9", "10", "11"})
        QTest::newRow(reason) << 120 << int(JoinAttempt::NotLetIn);
    QTest::newRow("53") << 120 << int(JoinAttempt::NotFound);
    for (const char *reason : {"0", "5", "6", "12", "35", "36", "37", "39", "40", "42", "52", "54", "60"})
        QTest::newRow(reason) << 120 << int(JoinAttempt::Ended);
    QTest::newRow("39 at the end") << 110 << int(JoinAttempt::Left);
    QTest::newRow("60 at the end") << 110 << int(JoinAttempt::Ended);
    QTest::newRow("53 at the end") << 110 << int(JoinAttempt::Ended);
    QTest::newRow("39 after the end") << 30 << int(JoinAttempt::Ended);
}

void AccessPointTextTest::failure()
{
    QFETCH(const int, state);
    const int reason = QByteArray(QTest::currentDataTag()).split(' ').constFirst().toInt();
    QTEST(int(JoinAttempt::failureOf(NMDeviceState(state), NMDeviceStateReason(reason))), "failure");
}

QTEST_GUILESS_MAIN(AccessPointTextTest)

#include "tst_accesspointtext.moc"
