// SPDX-License-Identifier: Apache-2.0
#include "hotspotsettings.h"

#include <QtTest/QtTest>

using namespace morvek;

/*! What the manager is sent, whole. */
class HotspotSettingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whole();
    void security_data();
    void security();
    void isolation();
    void otherPlace();
};

namespace {

const char Uuid[] = "5c2f9d4e-0000-4000-8000-000000000001";

HotspotProfile::Network network(HotspotProfile::Security security)
{
    return {QStringLiteral("caf\u00e9"), QStringLiteral("drive safely 8"), security, false, false, {}, {}};
}

GRef<NMConnection> make(const HotspotProfile::Network &network, bool canIsolate = true)
{
    return HotspotSettings::make(network, Uuid, QStringLiteral("wlan0"), {QStringLiteral("bg"), 11, {}},
                                 {0xc0a80001, 24}, canIsolate);
}

QStringList lines(GVariant *settings)
{
    QStringList result;
    GVariantIter groups;
    g_variant_iter_init(&groups, settings);
    const char *group = nullptr;
    GVariantIter *members = nullptr;
    while (g_variant_iter_loop(&groups, "{&sa{sv}}", &group, &members)) {
        const char *key = nullptr;
        GVariant *value = nullptr;
        while (g_variant_iter_loop(members, "{&sv}", &key, &value)) {
            char *text = g_variant_print(value, FALSE);
            result +=
                QStringLiteral("%1.%2 = %3").arg(QLatin1String(group), QLatin1String(key), QString::fromUtf8(text));
            g_free(text);
        }
    }
    result.sort();
    return result;
}

QStringList sent(NMConnection *connection)
{
    GVariant *settings = nm_connection_to_dbus(connection, NM_CONNECTION_SERIALIZE_ALL);
    const QStringList result = lines(settings);
    g_variant_unref(settings);
    return result;
}

QStringList sent(NMConnection *connection, const char *group)
{
    return sent(connection).filter(QLatin1String(group));
}

} // namespace

void HotspotSettingsTest::whole()
{
    const GRef<NMConnection> connection = make(network(HotspotProfile::Wpa2));
    const QStringList expected {
        QStringLiteral("802-11-wireless-security.group = ['ccmp']"),
        QStringLiteral("802-11-wireless-security.key-mgmt = 'wpa-psk'"),
        QStringLiteral("802-11-wireless-security.pairwise = ['ccmp']"),
        QStringLiteral("802-11-wireless-security.proto = ['rsn']"),
        QStringLiteral("802-11-wireless-security.psk = 'drive safely 8'"),
        QStringLiteral("802-11-wireless.ap-isolation = 0"),
        QStringLiteral("802-11-wireless.band = 'bg'"),
        QStringLiteral("802-11-wireless.channel = 11"),
        QStringLiteral("802-11-wireless.mode = 'ap'"),
        QStringLiteral("802-11-wireless.ssid = [0x63, 0x61, 0x66, 0xc3, 0xa9]"),
        QStringLiteral("connection.autoconnect = false"),
        QStringLiteral("connection.id = 'Hotspot caf\u00e9'"),
        QStringLiteral("connection.interface-name = 'wlan0'"),
        QStringLiteral("connection.type = '802-11-wireless'"),
        QStringLiteral("connection.uuid = '5c2f9d4e-0000-4000-8000-000000000001'"),
        QStringLiteral("ipv4.address-data = [{'address': <'192.168.0.1'>, 'prefix': <uint32 24>}]"),
        QStringLiteral("ipv4.method = 'shared'"),
        QStringLiteral("ipv6.method = 'ignore'"),
    };
    QStringList all = sent(connection.get());
    // The manager's library adds empty lists, and older ways to say the same.
    all = all.filter(
        QRegularExpression(QStringLiteral("\\A(?!ipv4\\.addresses |802-11-wireless\\.security |.* = \\[\\]\\z)")));
    for (const QString &line : expected)
        QVERIFY2(all.removeOne(line), qPrintable(line));
    QVERIFY2(all.isEmpty(), qPrintable(all.join(QLatin1String(", "))));
}

void HotspotSettingsTest::security_data()
{
    QTest::addColumn<int>("security");
    QTest::addColumn<QStringList>("expected");
    const QString group = QStringLiteral("802-11-wireless-security.");
    const QStringList key {group + QStringLiteral("key-mgmt = 'wpa-psk'")};
    const QStringList psk {group + QStringLiteral("psk = 'drive safely 8'")};
    const auto with = [&](const char *groups, const char *pairwise, const char *proto) {
        return QStringList {group + QStringLiteral("group = ") + QLatin1String(groups)} + key
            + QStringList {group + QStringLiteral("pairwise = ") + QLatin1String(pairwise),
                           group + QStringLiteral("proto = ") + QLatin1String(proto)}
        + psk;
    };
    QTest::addRow("none") << int(HotspotProfile::None) << QStringList();
    QTest::addRow("wpa") << int(HotspotProfile::Wpa) << with("['tkip']", "['tkip']", "['wpa']");
    QTest::addRow("wpa2") << int(HotspotProfile::Wpa2) << with("['ccmp']", "['ccmp']", "['rsn']");
    QTest::addRow("wpa_mixed") << int(HotspotProfile::WpaAndWpa2)
                               << with("['tkip']", "['tkip', 'ccmp']", "['wpa', 'rsn']");
}

void HotspotSettingsTest::security()
{
    QFETCH(int, security);
    const GRef<NMConnection> connection = make(network(HotspotProfile::Security(security)));
    QTEST(sent(connection.get(), "802-11-wireless-security."), "expected");
}

void HotspotSettingsTest::isolation()
{
    HotspotProfile::Network isolated = network(HotspotProfile::None);
    isolated.isolated = true;
    QCOMPARE(sent(make(isolated).get(), "isolation"), QStringList(QStringLiteral("802-11-wireless.ap-isolation = 1")));
    QCOMPARE(sent(make(isolated, false).get(), "isolation"), QStringList());
    QCOMPARE(sent(make(network(HotspotProfile::None), false).get(), "isolation"), QStringList());
}

void HotspotSettingsTest::otherPlace()
{
    const GRef<NMConnection> connection =
        HotspotSettings::make(network(HotspotProfile::None), Uuid, QStringLiteral("wlp2s0"),
                              {QStringLiteral("a"), 36, {}}, {0x0a2a0101, 25}, true);
    const QStringList all = sent(connection.get());
    QVERIFY(all.contains(QStringLiteral("802-11-wireless.band = 'a'")));
    QVERIFY(all.contains(QStringLiteral("802-11-wireless.channel = 36")));
    QVERIFY(all.contains(QStringLiteral("connection.interface-name = 'wlp2s0'")));
    QVERIFY(all.contains(QStringLiteral("ipv4.address-data = [{'address': <'10.42.1.1'>, 'prefix': <uint32 25>}]")));
}

QTEST_GUILESS_MAIN(HotspotSettingsTest)
#include "tst_hotspotsettings.moc"
