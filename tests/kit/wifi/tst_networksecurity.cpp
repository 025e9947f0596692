// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"

#include <publishedsecurity.h>
#include <publishedstatus.h>
#include <wifiaccesspoint.h>

#include <QtCore/QTranslator>

using namespace morvek;

namespace {

/*! "WPA2, known, passkey, WPA2" */
QString text(NetworkSecurity security)
{
    QString text = security.name();
    if (security.isOpen())
        text += QLatin1String(": open");
    if (security.isKnown())
        text += QLatin1String(", known");
    if (security.takesPasskey())
        text += QLatin1String(", passkey");
    if (security.hasWpa2())
        text += QLatin1String(", WPA2");
    return text;
}

NetworkSecurity ofFlags(const char *flags)
{
    return NetworkSecurity(QString::fromLatin1(flags).split(QLatin1Char(' '), Qt::SkipEmptyParts));
}

WifiAccessPoint accessPoint(const char *bssid)
{
    WifiAccessPoint accessPoint;
    accessPoint.setBssid(QString::fromLatin1(bssid));
    return accessPoint;
}

/*! Translates the word "open" of one context. */
class Dictionary : public QTranslator
{
public:
    QString translate(const char *context, const char *text, const char *, int) const override
    {
        return qstrcmp(context, "morvek::NetworkSecurity") == 0 ? QLatin1Char('*') + QString::fromLatin1(text)
                                                                : QString();
    }
    bool isEmpty() const override { return false; }
};

} // namespace

/*! How networks are protected, in people's words, and where that is told. */
class NetworkSecurityTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { ZopObject::remove(PublishedStatus::path()); }

    void flags_data();
    void flags();
    void knownToTheLibrary_data();
    void knownToTheLibrary();
    void together_data();
    void together();
    void nothingTold();
    void translated();
    void scanned();
    void connected_data();
    void connected();
    void publishedStatus();
};

void NetworkSecurityTest::flags_data()
{
    QTest::addColumn<QString>("told");
    const auto row = [](const char *flags, const char *told) { QTest::newRow(flags) << QString::fromLatin1(told); };
    row("", "open: open");
    row("ESS", "open: open");
    row("ESS UTF-8 P2P", "open: open");
    row("WPA2-SAE-CCMP ESS", "WPA3, known");
    row("WPA3-SAE-CCMP", "WPA3, known");
    row("WPA3-SAE", "WPA3, known");
    row("WPA3", "WPA3, known");
    row("RSN-SAE-CCMP", "WPA3, known");
    row("RSN-FT/SAE-CCMP", "WPA3, known");
    row("SAE", "WPA3, known");
    row("WPA2-PSK+SAE-CCMP", "WPA2/WPA3, known, passkey, WPA2");
    row("WPA2-PSK-CCMP WPA3-SAE-CCMP", "WPA2/WPA3, known, passkey, WPA2");
    row("WPA2-PSK-CCMP WPA2-SAE-CCMP ESS", "WPA2/WPA3, known, passkey, WPA2");
    row("WPA2-SAE-CCMP WPS", "WPA3 + WPS, known");
    row("WPA2-OWE-CCMP", "OWE, known");
    row("RSN-OWE-CCMP", "OWE, known");
    row("OWE-CCMP", "OWE, known");
    row("OWE", "OWE, known");
    row("OWE-TRANS ESS", "OWE, known");
    row("OWE-TRANS-OPEN ESS", "OWE, known");
    row("WPA2-PSK", "WPA2, known, passkey, WPA2");
    row("[WPA2-PSK-CCMP]", "WPA2, known, passkey, WPA2");
    row("wpa2-psk-ccmp", "WPA2, known, passkey, WPA2");
    row("WPA2-PSK+PSK-SHA256-CCMP-PREAUTH", "WPA2, known, passkey, WPA2");
    row("RSN-PSK-CCMP", "WPA2, known, passkey, WPA2");
    row("WPA-PSK-CCMP+TKIP", "WPA, known, passkey");
    row("WPA-PSK-TKIP RSN-PSK-CCMP", "WPA/WPA2, known, passkey, WPA2");
    row("WEP", "WEP, known");
    row("WEP WPA-PSK-TKIP", "WEP/WPA, known, passkey");
    row("WPA-EAP-TKIP", "WPA Enterprise, known");
    row("WPA2-EAP-CCMP WPA3-EAP-GCMP", "WPA2/WPA3 Enterprise, known");
    row("WPA3-EAP", "WPA3 Enterprise, known");
    row("WPA2-EAP+EAP-SHA256-CCMP", "WPA2 Enterprise, known");
    row("RSN-802.1X-CCMP", "WPA2 Enterprise, known");
    row("WPA2-8021X-CCMP", "WPA2 Enterprise, known");
    row("WPA2-PSK-CCMP WPA2-EAP-CCMP", "WPA2 + Enterprise, known, passkey, WPA2");
    row("WPA2-PSK+EAP-CCMP WPA3-SAE-CCMP", "WPA2/WPA3 + WPA2 Enterprise, known, passkey, WPA2");
    row("WPA2", "unknown protection");
    row("WPA", "unknown protection");
    row("RSN-CCMP", "unknown protection");
    row("WPA2-DPP-CCMP", "unknown protection");
    row("WPA4-NEW-CCMP", "unknown protection");
    row("PSK-CCMP", "unknown protection");
    row("PSK ESS", "unknown protection");
    row("EAP", "unknown protection");
    row("CCMP", "unknown protection");
    row("TKIP", "unknown protection");
    row("GCMP-256 ESS", "unknown protection");
    row("WEP104", "unknown protection");
    row("WAPI-PSK", "unknown protection");
    row("OSEN-OSEN-CCMP", "unknown protection");
    row("CCMP WPS", "unknown protection + WPS");
    row("WPS ESS", "open + WPS: open");
    row("WPS-PBC", "open + WPS: open");
}

void NetworkSecurityTest::flags()
{
    QTEST(text(ofFlags(QTest::currentDataTag())), "told");
}

void NetworkSecurityTest::knownToTheLibrary_data()
{
    QTest::addColumn<QFlags<WifiSecurityProtocol>>("protocols");
    QTest::addColumn<QFlags<WifiKeyManagementType>>("keys");
    QTest::addColumn<QFlags<WifiCipher>>("ciphers");
    QTest::addColumn<QString>("told");
    using Protocols = QFlags<WifiSecurityProtocol>;
    using Keys = QFlags<WifiKeyManagementType>;
    const auto row = [](Protocols protocols, Keys keys, QFlags<WifiCipher> ciphers, const char *told) {
        QTest::addRow("%x %x %x", unsigned(protocols), unsigned(keys), unsigned(ciphers))
            << protocols << keys << ciphers << QString::fromLatin1(told);
    };
    const Protocols both = Protocols(WifiSecurityProtocolWpa) | WifiSecurityProtocolWpa2;
    row(WifiSecurityProtocolNone, WifiKeyManagementNone, WifiCipherNone, "open: open");
    row(WifiSecurityProtocolNone, WifiKeyManagementNone, WifiCipherCcmp, "unknown");
    row(WifiSecurityProtocolNone, WifiKeyManagementPsk, WifiCipherNone, "unknown");
    row({}, {}, {}, "unknown");
    row(WifiSecurityProtocolWpa2, WifiKeyManagementNone, WifiCipherNone, "unknown");
    row(WifiSecurityProtocolWpa2, WifiKeyManagementPsk, WifiCipherCcmp, "WPA2, known, passkey, WPA2");
    row(WifiSecurityProtocolWpa2, WifiKeyManagementNone, WifiCipherCcmp, "unknown");
    row(WifiSecurityProtocolWpa, WifiKeyManagementPsk, WifiCipherTkip, "WPA, known, passkey");
    row(both, Keys(WifiKeyManagementPsk) | WifiKeyManagementEap, WifiCipherCcmp,
        "WPA/WPA2 + Enterprise, known, passkey, WPA2");
    row(both, WifiKeyManagementEap, WifiCipherCcmp, "WPA/WPA2 Enterprise, known");
    row(WifiSecurityProtocolWep, WifiKeyManagementNone, WifiCipherNone, "WEP, known");
    row(Protocols(WifiSecurityProtocolWpa2) | WifiSecurityProtocolWps, WifiKeyManagementPsk, WifiCipherCcmp,
        "WPA2 + WPS, known, passkey, WPA2");
    row(WifiSecurityProtocolWps, WifiKeyManagementNone, WifiCipherNone, "unknown + WPS");
}

void NetworkSecurityTest::knownToTheLibrary()
{
    QFETCH(const QFlags<WifiSecurityProtocol>, protocols);
    QFETCH(const QFlags<WifiKeyManagementType>, keys);
    QFETCH(const QFlags<WifiCipher>, ciphers);
    WifiAccessPoint accessPoint;
    accessPoint.setSecurityProtocols(protocols);
    accessPoint.setKeyManagementTypes(keys);
    accessPoint.setCiphers(ciphers);
    QTEST(text(NetworkSecurity(accessPoint)), "told");
    QCOMPARE(NetworkSecurity(accessPoint) == ofFlags("WPA2-PSK"),
             protocols == WifiSecurityProtocolWpa2 && keys == WifiKeyManagementPsk);
}

void NetworkSecurityTest::together_data()
{
    QTest::addColumn<QString>("other");
    QTest::addColumn<QString>("told");
    const auto row = [](const char *one, const char *other, const char *told) {
        QTest::newRow(one) << QString::fromLatin1(other) << QString::fromLatin1(told);
    };
    row("ESS", "ESS", "open: open");
    row("WPA2-PSK", "ESS", "WPA2, known, passkey, WPA2");
    row("WPA2-PSK ESS", "WPA3-SAE", "WPA2/WPA3, known, passkey, WPA2");
    row("CCMP", "ESS", "unknown protection");
    row("WPA3-SAE", "WPS", "WPA3 + WPS, known");
    row("OWE", "CCMP", "OWE, known");
}

void NetworkSecurityTest::together()
{
    QFETCH(const QString, other);
    const NetworkSecurity one = ofFlags(QTest::currentDataTag());
    const NetworkSecurity another = ofFlags(other.toLatin1());
    QTEST(text(one | another), "told");
    QTEST(text(another | one), "told");
    QVERIFY((one | another) == (another | one));
    QVERIFY(!((one | another) != (another | one)));
    QCOMPARE(one == another, QLatin1String("ESS") == QLatin1String(QTest::currentDataTag()));
    QCOMPARE(one != another, QLatin1String("ESS") != QLatin1String(QTest::currentDataTag()));
}

/*! What is not told is never open. */
void NetworkSecurityTest::nothingTold()
{
    QCOMPARE(text(NetworkSecurity()), QStringLiteral("unknown"));
    QCOMPARE(text(NetworkSecurity() | ofFlags("ESS")), QStringLiteral("unknown"));
    QCOMPARE(text(NetworkSecurity() | ofFlags("CCMP")), QStringLiteral("unknown protection"));
    QCOMPARE(text(NetworkSecurity() | ofFlags("WEP")), QStringLiteral("WEP, known"));
    QVERIFY(NetworkSecurity() != ofFlags("ESS"));
}

void NetworkSecurityTest::translated()
{
    Dictionary dictionary;
    QVERIFY(QCoreApplication::installTranslator(&dictionary));
    const QStringList names {ofFlags("ESS").name(), ofFlags("CCMP WPS").name(), NetworkSecurity().name(),
                             ofFlags("WPA2-EAP").name()};
    QCoreApplication::removeTranslator(&dictionary);
    QCOMPARE(names, (QStringList {"*open", "*unknown protection + WPS", "*unknown", "WPA2 Enterprise"}));
}

void NetworkSecurityTest::scanned()
{
    QVERIFY(publish(PublishedStatus::path(),
                    QStringLiteral(R"(scan_results=[{"bssid":"a","flags":["ESS",7,"WPA3-SAE-CCMP"]},)"
                                   R"({"bssid":"b","flags":["ESS"]},{"bssid":"c"},7,)"
                                   R"({"bssid":"d","flags":["ESS"]},{"bssid":"d","flags":["OWE"]},)"
                                   R"({"bssid":"e","flags":["OWE"]},{"bssid":"e","flags":["ESS"]}])")));
    const PublishedSecurity published;
    QCOMPARE(published.ofScanned(accessPoint("a")).name(), QStringLiteral("WPA3"));
    QCOMPARE(published.ofScanned(accessPoint("b")).name(), QStringLiteral("open"));
    QCOMPARE(published.ofScanned(accessPoint("c")).name(), QStringLiteral("open"));
    // Neither of two may pass for open.
    QCOMPARE(published.ofScanned(accessPoint("d")).name(), QStringLiteral("OWE"));
    QCOMPARE(published.ofScanned(accessPoint("e")).name(), QStringLiteral("OWE"));
    // One that is not published: what the library takes for open may be anything.
    QCOMPARE(published.ofScanned(accessPoint("f")).name(), QStringLiteral("unknown"));
    WifiAccessPoint known = accessPoint("f");
    known.setSecurityProtocols(WifiSecurityProtocolWpa2);
    known.setKeyManagementTypes(WifiKeyManagementPsk);
    QCOMPARE(published.ofScanned(known).name(), QStringLiteral("WPA2"));
}

void NetworkSecurityTest::connected_data()
{
    QTest::addColumn<bool>("isOpen"); // for the library, which knows nothing of it otherwise
    QTest::addColumn<QString>("published");
    QTest::addColumn<QString>("told");
    const auto row = [](const char *name, bool isOpen, const char *published, const char *told) {
        QTest::newRow(name) << isOpen << QString::fromLatin1(published) << QString::fromLatin1(told);
    };
    row("nothing", false, "x=1", "unknown");
    row("connection", false, R"(wifi_status={"bssid":"a","key_mgmt":"SAE"})", "WPA3, known");
    row("another connection", false, R"(wifi_status={"bssid":"b","key_mgmt":"SAE"})", "unknown");
    row("connection before scan", false,
        R"(wifi_status={"bssid":"a","key_mgmt":"OWE"} scan_results=[{"bssid":"a","flags":["SAE"]}])", "OWE, known");
    row("scan", false, R"(wifi_status={"bssid":"a","key_mgmt":"NEW"} scan_results=[{"bssid":"a","flags":["SAE"]}])",
        "WPA3, known");
    row("open in the scan", false, R"(scan_results=[{"bssid":"a","flags":["ESS"]}])", "unknown");
    row("open", true, R"(scan_results=[{"bssid":"a","flags":["SAE"]}])", "open: open");
}

void NetworkSecurityTest::connected()
{
    QFETCH(const bool, isOpen);
    QFETCH(const QString, published);
    QVERIFY(publish(PublishedStatus::path(), published));
    WifiAccessPoint connection = accessPoint("a");
    if (!isOpen)
        connection.setCiphers(WifiCipherCcmp);
    QTEST(text(PublishedSecurity().ofConnected(connection)), "told");
    // What the library knows is that of the connection itself.
    connection.setSecurityProtocols(WifiSecurityProtocolWpa2);
    connection.setKeyManagementTypes(WifiKeyManagementPsk);
    QCOMPARE(PublishedSecurity().ofConnected(connection).name(), QStringLiteral("WPA2"));
}

void NetworkSecurityTest::publishedStatus()
{
    QCOMPARE(PublishedStatus::path(), QStringLiteral("/zop/services/wifi/status"));
    const PublishedStatus nothing;
    QCOMPARE(nothing.scanResults(), QJsonArray());
    QCOMPARE(nothing.connection(), QJsonObject());
    QCOMPARE(nothing.levelOf(QStringLiteral("a")), 0);
    QVERIFY(publish(
        PublishedStatus::path(),
        QStringLiteral(R"(scan_results=[7,{"bssid":"a","signal_level":"-61"},)"
                       R"({"bssid":"b","signal_level":"-62"},{"bssid":"c","ssid":"Café"}] wifi_status={"ssid":"é"})")));
    const PublishedStatus status;
    QCOMPARE(status.scanResults().size(), 4);
    QCOMPARE(status.scanResults().at(3)[QLatin1String("ssid")].toString(), QStringLiteral("Café"));
    QCOMPARE(status.connection(), (QJsonObject {{"ssid", QStringLiteral("é")}}));
    QCOMPARE(status.levelOf(QStringLiteral("a")), -61);
    QCOMPARE(status.levelOf(QStringLiteral("b")), -62);
    QCOMPARE(status.levelOf(QStringLiteral("c")), 0);
    QCOMPARE(status.levelOf(QStringLiteral("d")), 0);
}

CONTRACT_TEST_MAIN(NetworkSecurityTest)

#include "tst_networksecurity.moc"
