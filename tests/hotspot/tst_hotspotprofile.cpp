// SPDX-License-Identifier: Apache-2.0
#include "hotspotproviderfixture.h"
#include "logcapture.h"

#include <QtTest/QtTest>

#include <functional>

using namespace morvek;

static_assert(HotspotProviderZop::Ssid == 0, "");
static_assert(HotspotProviderZop::Passphrase == 1, "");
static_assert(HotspotProviderZop::MhsBand == 2, "");
static_assert(HotspotProviderZop::Band == 3, "");
static_assert(HotspotProviderZop::MaxNumSta == 4, "");
static_assert(HotspotProviderZop::SecurityType == 5, "");
static_assert(HotspotProviderZop::AutoshutdownTime == 6, "");
static_assert(HotspotProviderZop::Privacy == 7, "");
static_assert(HotspotProviderZop::BlockConn == 8, "");

namespace {

using Change = std::function<void(WifiHotspot &hotspot)>;
using Protocols = QFlags<WifiSecurityProtocol>;

/*! A table as "KEY TEXT" in its order. */
template<typename Table>
QStringList tableText(const Table &table)
{
    QStringList texts;
    for (auto it = table.begin(); it != table.end(); ++it)
        texts.append(QStringLiteral("%1 ").arg(int(it.key())) + it.value());
    return texts;
}

/*! All of a hotspot: name|passphrase|security|band|inactivity|clients|privacy|block. */
QString fieldsText(const WifiHotspot &hotspot)
{
    const QString numbers = QStringLiteral("|%1|%2|%3|%4|%5|%6")
                                .arg(int(hotspot.securityType()))
                                .arg(int(hotspot.band()))
                                .arg(hotspot.inactivityTime())
                                .arg(hotspot.maxClients())
                                .arg(int(hotspot.privacy()))
                                .arg(int(hotspot.blockConn()));
    return hotspot.name() + QLatin1Char('|') + hotspot.passphrase() + numbers;
}

const char *const Defaults = "||8|0|-1|-1|0|0";

/*! The text \a fields inside the profile that serializeProfile() writes. */
QByteArray written(const char *fields)
{
    return QByteArray(R"({"lancfg":{"dhcp_lease_time":"120","gateway_address":"192.168.0.1",)"
                      R"("gateway_subnet":"255.255.255.0"},"lanprofile":)")
        + fields + R"(,"lantype":"wlanap","type":"lan","wantype":"bridge"})";
}

} // namespace

Q_DECLARE_METATYPE(Change)

class TestHotspotProfile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void hasItsTables();
    void tablesAreFilledAgain();

    void serializes_data();
    void serializes();
    void serializesNothingOfAnEmptyProfile_data();
    void serializesNothingOfAnEmptyProfile();
    void keysComeFromTheTable();
    void unknownKeysGetAnEmptyText();

    void convertsBands_data();
    void convertsBands();
    void convertsProtocols_data();
    void convertsProtocols();

    void parses_data();
    void parses();
    void parsesWhatItWrites_data();
    void parsesWhatItWrites();

private:
    std::unique_ptr<HotspotProviderZop> m_provider;
};

void TestHotspotProfile::init()
{
    m_provider.reset();
    ZopDouble::reset();
    HotspotProviderZop::s_hotspotConfigFieldsMap.clear();
    HotspotProviderZop::s_hotspotBandMap.clear();
    HotspotProviderZop::s_hotspotProtocolMap.clear();
    m_provider = std::make_unique<HotspotProviderZop>();
}

void TestHotspotProfile::hasItsTables()
{
    QCOMPARE(tableText(HotspotProviderZop::s_hotspotConfigFieldsMap),
             lines({"0 ssid", "1 passphrase", "2 mhs_band", "3 band", "4 max_num_sta", "5 security_type",
                    "6 autoshutdown_time", "7 privacy", "8 block_conn"}));
    QCOMPARE(tableText(HotspotProviderZop::s_hotspotBandMap), lines({"0 2.4", "1 5.0"}));
    QCOMPARE(tableText(HotspotProviderZop::s_hotspotProtocolMap), lines({"1 none", "4 wpa", "8 wpa2", "12 wpa_mixed"}));
}

// Another provider restores the texts that it knows, and leaves the others.
void TestHotspotProfile::tablesAreFilledAgain()
{
    for (QString &key : HotspotProviderZop::s_hotspotConfigFieldsMap)
        key += QLatin1Char('x');
    for (QString &band : HotspotProviderZop::s_hotspotBandMap)
        band.clear();
    for (QString &protocol : HotspotProviderZop::s_hotspotProtocolMap)
        protocol.clear();
    m_provider->bandEnumerationToString(WifiBand(7));
    m_provider->protocolEnumerationToString(WifiSecurityProtocolWep);
    const HotspotProviderZop second;
    QCOMPARE(tableText(HotspotProviderZop::s_hotspotConfigFieldsMap),
             lines({"0 ssid", "1 passphrase", "2 mhs_band", "3 band", "4 max_num_sta", "5 security_type",
                    "6 autoshutdown_time", "7 privacy", "8 block_conn"}));
    QCOMPARE(tableText(HotspotProviderZop::s_hotspotBandMap), lines({"0 2.4", "1 5.0", "7 "}));
    QCOMPARE(tableText(HotspotProviderZop::s_hotspotProtocolMap),
             lines({"1 none", "2 ", "4 wpa", "8 wpa2", "12 wpa_mixed"}));
    const HotspotProviderZop third;
    QCOMPARE(tableText(HotspotProviderZop::s_hotspotProtocolMap),
             lines({"1 none", "2 ", "4 wpa", "8 wpa2", "12 wpa_mixed"}));
}

void TestHotspotProfile::serializes_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QByteArray>("profile");
    const auto row = [](const char *title, const Change &change, const char *fields) {
        QTest::newRow(title) << change << written(fields);
    };
    row(
        "car", [](WifiHotspot &) {},
        R"({"autoshutdown_time":0,"block_conn":true,"max_num_sta":10,"mhs_band":"5.0","passphrase":"open sesame",)"
        R"("privacy":false,"security_type":"wpa2","ssid":"Car"})");
    row(
        "everything else",
        [](WifiHotspot &h) {
            h.setName(QStringLiteral("a\"b\\"));
            h.setPassphrase(QString::fromUtf8("\xc3\xa9\xf0\x9f\x9a\x97"));
            h.setBand(WifiBand2_4GHz);
            h.setSecurityType(WifiSecurityProtocolWpa | WifiSecurityProtocolWpa2);
            h.setInactivityTime(2147483647);
            h.setMaxClients(-2147483647);
            h.setPrivacy(true);
            h.setBlockConn(false);
        },
        R"({"autoshutdown_time":2147483647,"block_conn":false,"max_num_sta":-2147483647,"mhs_band":"2.4",)"
        "\"passphrase\":\"\xc3\xa9\xf0\x9f\x9a\x97\","
        R"("privacy":true,"security_type":"wpa_mixed","ssid":"a\"b\\"})");
    row(
        "zeros",
        [](WifiHotspot &h) {
            h.setName(QStringLiteral("a") + QChar(0) + QStringLiteral("b"));
            h.setPassphrase(QString(QChar(0)));
            h.setSecurityType(WifiSecurityProtocolNone);
        },
        R"({"autoshutdown_time":0,"block_conn":true,"max_num_sta":10,"mhs_band":"5.0","passphrase":"\u0000",)"
        R"("privacy":false,"security_type":"none","ssid":"a\u0000b"})");
    row(
        "WPA, no clients",
        [](WifiHotspot &h) {
            h.setSecurityType(WifiSecurityProtocolWpa);
            h.setMaxClients(0);
        },
        R"({"autoshutdown_time":0,"block_conn":true,"max_num_sta":0,"mhs_band":"5.0","passphrase":"open sesame",)"
        R"("privacy":false,"security_type":"wpa","ssid":"Car"})");
    row(
        "no such security, no such band",
        [](WifiHotspot &h) {
            h.setSecurityType(Protocols(WifiSecurityProtocolWep));
            h.setBand(WifiBand(2));
        },
        R"({"autoshutdown_time":0,"block_conn":true,"max_num_sta":10,"mhs_band":"","passphrase":"open sesame",)"
        R"("privacy":false,"security_type":"","ssid":"Car"})");
}

void TestHotspotProfile::serializes()
{
    QFETCH(Change, change);
    QFETCH(QByteArray, profile);
    WifiHotspot hotspot = car();
    change(hotspot);
    LogCapture log(7);
    QCOMPARE(QJsonDocument(m_provider->serializeProfile(hotspot)).toJson(QJsonDocument::Compact), profile);
    QVERIFY(log.take().isEmpty());
}

void TestHotspotProfile::serializesNothingOfAnEmptyProfile_data()
{
    QTest::addColumn<Change>("change");
    const auto row = [](const char *title, const Change &change) { QTest::newRow(title) << change; };
    row("default", [](WifiHotspot &h) { h = WifiHotspot(); });
    row("no name", [](WifiHotspot &h) { h.setName(QString()); });
    row("no passphrase", [](WifiHotspot &h) { h.setPassphrase(QLatin1String("")); });
    row("no inactivity time", [](WifiHotspot &h) { h.setInactivityTime(-1); });
    row("no number of clients", [](WifiHotspot &h) { h.setMaxClients(-1); });
}

void TestHotspotProfile::serializesNothingOfAnEmptyProfile()
{
    QFETCH(Change, change);
    WifiHotspot hotspot = car();
    change(hotspot);
    LogCapture log(2);
    QCOMPARE(m_provider->serializeProfile(hotspot), QJsonObject());
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(3);
    QCOMPARE(m_provider->serializeProfile(hotspot), QJsonObject());
    QCOMPARE(log.take(), lines({EmptyProfileLine}));
    // No table has been asked.
    QCOMPARE(HotspotProviderZop::s_hotspotBandMap.size(), 2);
}

void TestHotspotProfile::keysComeFromTheTable()
{
    for (QString &key : HotspotProviderZop::s_hotspotConfigFieldsMap)
        key = key.toUpper();
    QCOMPARE(QJsonDocument(m_provider->serializeProfile(car())).toJson(QJsonDocument::Compact),
             written(R"({"AUTOSHUTDOWN_TIME":0,"BLOCK_CONN":true,"MAX_NUM_STA":10,"MHS_BAND":"5.0",)"
                     R"("PASSPHRASE":"open sesame","PRIVACY":false,"SECURITY_TYPE":"wpa2","SSID":"Car"})"));
    const QByteArray profile = R"({"lanprofile":{"AUTOSHUTDOWN_TIME":1,"BLOCK_CONN":true,"MAX_NUM_STA":10,)"
                               R"("MHS_BAND":"5.0","PASSPHRASE":"p","PRIVACY":true,"SECURITY_TYPE":"wpa","SSID":"S",)"
                               R"("ssid":"Car"}})";
    QCOMPARE(fieldsText(m_provider->parseProfile(QJsonDocument::fromJson(profile))),
             QStringLiteral("S|p|4|1|1|10|1|1"));
}

// From then on it stands for the empty text, the lowest one first.
void TestHotspotProfile::unknownKeysGetAnEmptyText()
{
    WifiHotspot hotspot = car();
    hotspot.setSecurityType(Protocols(WifiSecurityProtocolWep));
    hotspot.setBand(WifiBand(5));
    m_provider->serializeProfile(hotspot);
    QCOMPARE(tableText(HotspotProviderZop::s_hotspotProtocolMap),
             lines({"1 none", "2 ", "4 wpa", "8 wpa2", "12 wpa_mixed"}));
    QCOMPARE(tableText(HotspotProviderZop::s_hotspotBandMap), lines({"0 2.4", "1 5.0", "5 "}));
    const QJsonDocument profile = QJsonDocument::fromJson(R"({"lanprofile":{"ssid":"Car"}})");
    QCOMPARE(fieldsText(m_provider->parseProfile(profile)), QStringLiteral("Car||2|5|0|0|0|0"));
    QCOMPARE(m_provider->bandEnumerationToString(WifiBand(-1)), QString());
    QCOMPARE(m_provider->protocolEnumerationToString(Protocols()), QString());
    QCOMPARE(int(m_provider->bandStringToEnumeration(QString())), -1);
    QCOMPARE(int(m_provider->protocolStringToEnumeration(QString())), 0);
    QCOMPARE(int(m_provider->protocolStringToEnumeration(QStringLiteral("wpa2"))), 8);
}

void TestHotspotProfile::convertsBands_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("band");
    const auto row = [](const char *text, int band) { QTest::newRow(text) << QString::fromLatin1(text) << band; };
    row("2.4", 0);
    row("5.0", 1);
    for (const char *unknown : {"", "5", "5 GHz", "5.00", " 5.0", "5.0 ", "1"})
        row(unknown, 0);
}

void TestHotspotProfile::convertsBands()
{
    QFETCH(QString, text);
    QFETCH(int, band);
    QCOMPARE(int(m_provider->bandStringToEnumeration(text)), band);
    QCOMPARE(m_provider->bandEnumerationToString(WifiBand2_4GHz), QStringLiteral("2.4"));
    QCOMPARE(m_provider->bandEnumerationToString(WifiBand5GHz), QStringLiteral("5.0"));
    QCOMPARE(HotspotProviderZop::s_hotspotBandMap.size(), 2);
}

void TestHotspotProfile::convertsProtocols_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("protocols");
    const auto row = [](const char *text, int protocols) {
        QTest::newRow(text) << QString::fromLatin1(text) << protocols;
    };
    row("none", 1);
    row("wpa", 4);
    row("wpa2", 8);
    row("wpa_mixed", 12);
    for (const char *unknown : {"", "wep", "WPA2", "None", "wpa ", "wpa3", "8"})
        row(unknown, 0);
}

void TestHotspotProfile::convertsProtocols()
{
    QFETCH(QString, text);
    QFETCH(int, protocols);
    QCOMPARE(int(m_provider->protocolStringToEnumeration(text)), protocols);
    if (protocols != 0)
        QCOMPARE(m_provider->protocolEnumerationToString(Protocols(protocols)), text);
    QCOMPARE(HotspotProviderZop::s_hotspotProtocolMap.size(), 4);
}

void TestHotspotProfile::parses_data()
{
    QTest::addColumn<QByteArray>("profile");
    QTest::addColumn<QString>("fields");
    const auto row = [](const char *title, const QByteArray &profile, const QString &fields) {
        QTest::newRow(title) << profile << fields;
    };
    const auto profileOf = [](const QByteArray &fields) { return "{\"lanprofile\":" + fields + '}'; };
    const auto rowOf = [&](const char *title, const QByteArray &fields, const char *expected) {
        row(title, profileOf(fields), QString::fromUtf8(expected));
    };
    const QString defaults = QString::fromLatin1(Defaults);

    row("car", TetheringDaemon::CarProfile, QStringLiteral("Car|open sesame|8|1|0|10|0|1"));
    row("all others",
        profileOf(R"({"ssid":"Caf\u00e9","passphrase":"a\u0000b","mhs_band":"2.4","max_num_sta":-7,)"
                  R"("security_type":"wpa_mixed","autoshutdown_time":20,"privacy":true,"block_conn":false})"),
        QString::fromUtf8("Caf\xc3\xa9|a") + QChar(0) + QLatin1String("b|12|0|20|-7|1|0"));
    rowOf("only ssid", R"({"ssid":"Car"})", "Car||0|0|0|0|0|0");
    rowOf("only an unknown key", R"({"SSID":"Car"})", "||0|0|0|0|0|0");
    rowOf("band is not looked at", R"({"band":"5.0"})", "||0|0|0|0|0|0");
    rowOf("only clients", R"({"max_num_sta":4})", "||0|0|0|4|0|0");
    rowOf("all null",
          R"({"ssid":null,"passphrase":null,"mhs_band":null,"max_num_sta":null,"security_type":null,)"
          R"("autoshutdown_time":null,"privacy":null,"block_conn":null})",
          "||0|0|0|0|0|0");
    rowOf("texts where others belong",
          R"({"ssid":"Car","max_num_sta":"10","autoshutdown_time":"5","privacy":"true","block_conn":"1"})",
          "Car||0|0|0|0|0|0");
    rowOf("others where texts belong",
          R"({"ssid":5,"passphrase":true,"mhs_band":5.0,"security_type":["wpa2"],"privacy":1,"block_conn":{}})",
          "||0|0|0|0|0|0");
    rowOf("fractions", R"({"ssid":"Car","max_num_sta":3.5,"autoshutdown_time":-0.5})", "Car||0|0|0|0|0|0");
    rowOf("whole numbers", R"({"ssid":"Car","max_num_sta":3.0,"autoshutdown_time":1e2})", "Car||0|0|100|3|0|0");
    rowOf("the largest numbers", R"({"max_num_sta":2147483647,"autoshutdown_time":-2147483648})",
          "||0|0|-2147483648|2147483647|0|0");
    rowOf("too large numbers", R"({"max_num_sta":2147483648,"autoshutdown_time":1e300})", "||0|0|0|0|0|0");
    rowOf("too small numbers", R"({"max_num_sta":-2147483649,"autoshutdown_time":-1e300})", "||0|0|0|0|0|0");
    rowOf("twice", R"({"ssid":"Car","ssid":"Van"})", "Van||0|0|0|0|0|0");
    rowOf("unknown band and security", R"({"mhs_band":"5","security_type":"wpa3"})", "||0|0|0|0|0|0");
    rowOf("empty", "{}", Defaults);
    rowOf("not an object", R"([{"ssid":"Car"}])", Defaults);
    rowOf("text", R"("ssid")", Defaults);
    rowOf("null", "null", Defaults);
    row("no profile", R"({"type":"lan","ssid":"Car"})", defaults);
    row("another name", R"({"LanProfile":{"ssid":"Car"}})", defaults);
    row("array", R"([{"lanprofile":{"ssid":"Car"}}])", defaults);
    row("not JSON", R"({"lanprofile":{"ssid":"Car"})", defaults);
    row("nothing", "", defaults);
    row("behind a zero", QByteArray("\0{\"lanprofile\":{\"ssid\":\"Car\"}}", 30), defaults);
    row("bad UTF-8", "{\"lanprofile\":{\"ssid\":\"\xff\xfe\"}}", defaults);
    row("deep", "{\"lanprofile\":{\"ssid\":\"Car\",\"a\":" + QByteArray(100000, '[') + QByteArray(100000, ']') + "}}",
        defaults);
}

void TestHotspotProfile::parses()
{
    QFETCH(QByteArray, profile);
    QFETCH(QString, fields);
    LogCapture log(7);
    QCOMPARE(fieldsText(m_provider->parseProfile(QJsonDocument::fromJson(profile))), fields);
    QVERIFY(log.take().isEmpty());
}

void TestHotspotProfile::parsesWhatItWrites_data()
{
    QTest::addColumn<int>("band");
    QTest::addColumn<int>("protocols");
    for (const int band : {0, 1}) {
        for (const int protocols : {1, 4, 8, 12})
            QTest::addRow("band %d, security %d", band, protocols) << band << protocols;
    }
}

void TestHotspotProfile::parsesWhatItWrites()
{
    QFETCH(int, band);
    QFETCH(int, protocols);
    WifiHotspot hotspot = car();
    hotspot.setBand(WifiBand(band));
    hotspot.setSecurityType(Protocols(protocols));
    hotspot.setPrivacy(true);
    QVERIFY(m_provider->parseProfile(QJsonDocument(m_provider->serializeProfile(hotspot))) == hotspot);
}

QTEST_GUILESS_MAIN(TestHotspotProfile)
#include "tst_hotspotprofile.moc"
