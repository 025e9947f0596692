// SPDX-License-Identifier: Apache-2.0
#include "tetheringrequest.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

/*! The client's update; single quotes in \a dat stand for double ones. */
TetheringRequest read(const char *message, const QByteArray &dat)
{
    ZopChangeset changes;
    changes.assignments.insert(QStringLiteral("msg"), QString::fromUtf8(message));
    changes.assignments.insert(QStringLiteral("id"), 17);
    changes.assignments.insert(QStringLiteral("peer"), QStringLiteral("client-3"));
    if (!dat.isNull())
        changes.assignments.insert(QStringLiteral("dat"), ZopVariant(QByteArray(dat).replace('\'', '"'), "json"));
    return TetheringRequest::read(changes);
}

const QByteArray Profile =
    "{'type':'lan','lantype':'wlanap','wantype':'bridge',"
    "'lancfg':{'gateway_address':'192.168.0.1','gateway_subnet':'255.255.255.0','dhcp_lease_time':'120'},"
    "'lanprofile':{'ssid':'Morvek Car','passphrase':'drive safely 8','mhs_band':'5.0','max_num_sta':10,"
    "'security_type':'wpa2','autoshutdown_time':600,'privacy':false,'block_conn':true}}";

QByteArray profileWith(const char *before, const QByteArray &after)
{
    if (Profile.count(before) != 1)
        qFatal("%s is not there once", before);
    return QByteArray(Profile).replace(before, after);
}

} // namespace

class TetheringRequestTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void retrieve();
    void withAProfile();
    void stop();
    void acceptsProfiles_data();
    void acceptsProfiles();
    void refusals_data();
    void refusals();
    void refusesProfiles_data();
    void refusesProfiles();
    void neverShowsAPassphrase_data();
    void neverShowsAPassphrase();
};

void TetheringRequestTest::retrieve()
{
    const TetheringRequest request = read("retrieve_profile", "{'lan_type':'wlanap','type':'lan'}");
    QCOMPARE(request.refusal.code, 0);
    QCOMPARE(request.kind, TetheringRequest::RetrieveProfile);
    QCOMPARE(request.id, ZopVariant(17));
    QCOMPARE(request.peer, ZopVariant(QStringLiteral("client-3")));
    QCOMPARE(request.toString(), QStringLiteral("retrieve_profile id=17"));
}

void TetheringRequestTest::withAProfile()
{
    const QJsonObject profile = QJsonDocument::fromJson(QByteArray(Profile).replace('\'', '"')).object();
    const TetheringRequest update = read("update_profile", Profile);
    QCOMPARE(update.refusal.text, QString());
    QCOMPARE(update.kind, TetheringRequest::UpdateProfile);
    QCOMPARE(update.profile, profile);
    QCOMPARE(update.toString(), QStringLiteral("update_profile id=17 \"Morvek Car\" wpa2"));
    const TetheringRequest start = read("start", Profile);
    QCOMPARE(start.refusal.text, QString());
    QCOMPARE(start.kind, TetheringRequest::Start);
    QCOMPARE(start.profile, profile);
    QCOMPARE(start.toString(), QStringLiteral("start id=17 \"Morvek Car\" wpa2"));
}

void TetheringRequestTest::stop()
{
    for (const QByteArray &dat : {QByteArray(), QByteArray("")}) {
        const TetheringRequest request = read("stop", dat);
        QCOMPARE(request.refusal.code, 0);
        QCOMPARE(request.kind, TetheringRequest::Stop);
        QCOMPARE(request.toString(), QStringLiteral("stop id=17"));
    }
}

void TetheringRequestTest::acceptsProfiles_data()
{
    QTest::addColumn<QByteArray>("dat");

    const auto row = [](const char *name, const char *before, const QByteArray &after) {
        QTest::addRow("%s", name) << profileWith(before, after);
    };
    row("address", "192.168.0.1", "10.255.255.254");
    row("subnet", "255.255.255.0", "255.255.255.252");
    row("lease: one minute", "'120'", "'1'");
    row("lease: long", "'120'", "'100000000'");
    row("ssid: one byte", "Morvek Car", "M");
    row("ssid: 32 bytes", "Morvek Car", QByteArray(32, 'x'));
    row("ssid: 32 bytes of 16 letters", "Morvek Car", QByteArray("\xc3\xa9").repeated(16));
    row("passphrase: shortest", "drive safely 8", "eightbit");
    row("passphrase: longest", "drive safely 8", QByteArray(63, '~'));
    row("passphrase: blanks", "drive safely 8", QByteArray(8, ' '));
    row("passphrase: key", "drive safely 8", QByteArray("0aF9").repeated(16));
    row("open", "'drive safely 8','mhs_band':'5.0','max_num_sta':10,'security_type':'wpa2'",
        "'','mhs_band':'5.0','max_num_sta':10,'security_type':'none'");
    row("open, with a passphrase", "'wpa2'", "'none'");
    row("wpa", "'wpa2'", "'wpa'");
    row("mixed", "'wpa2'", "'wpa_mixed'");
    row("band", "'5.0'", "'2.4'");
    row("clients: one", ":10,", ":1,");
    row("clients: most", ":10,", ":32,");
    row("clients: as a fraction", ":10,", ":10.0,");
    row("inactivity: never", ":600,", ":0,");
    row("inactivity: a day", ":600,", ":86400,");
    row("privacy", "'privacy':false", "'privacy':true");
    row("block", "'block_conn':true", "'block_conn':false");
    row("the other band", "'ssid'", "'band':'5 GHz','ssid'");
    row("the other band, any type", "'ssid'", "'band':[],'ssid'");
}

void TetheringRequestTest::acceptsProfiles()
{
    QFETCH(QByteArray, dat);
    for (const char *message : {"update_profile", "start"})
        QCOMPARE(read(message, dat).refusal.text, QString());
}

void TetheringRequestTest::refusals_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("dat");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");

    const auto row = [](const char *name, const char *message, const char *dat, int code, const char *text) {
        QTest::addRow("%s", name) << QByteArray(message) << QByteArray(dat) << code << text;
    };
    row("message", "restart", nullptr, 1, "unknown message \"restart\"");
    row("another daemon's", "scan", nullptr, 1, "unknown message \"scan\"");
    row("none", "", nullptr, 1, "unknown message \"\"");
    const char scope[] = "dat must be {\"type\": \"lan\", \"lan_type\": \"wlanap\"}";
    row("retrieve: none", "retrieve_profile", nullptr, 2, scope);
    row("retrieve: empty", "retrieve_profile", "{}", 2, scope);
    row("retrieve: no JSON", "retrieve_profile", "wlanap", 2, scope);
    row("retrieve: half", "retrieve_profile", "{'type':'lan'}", 2, scope);
    row("retrieve: as in a profile", "retrieve_profile", "{'type':'lan','lantype':'wlanap'}", 2, scope);
    row("retrieve: another type", "retrieve_profile", "{'type':'wan','lan_type':'wlanap'}", 2, scope);
    row("retrieve: another lan type", "retrieve_profile", "{'type':'lan','lan_type':'usb'}", 2, scope);
    row("retrieve: more", "retrieve_profile", "{'type':'lan','lan_type':'wlanap','x':1}", 2, scope);
    row("stop: an object", "stop", "{}", 2, "stop takes no dat");
    row("stop: a text", "stop", "0", 2, "stop takes no dat");
}

void TetheringRequestTest::refusals()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, dat);
    const TetheringRequest request = read(message.constData(), dat);
    QTEST(request.refusal.text, "text");
    QTEST(request.refusal.code, "code");
}

void TetheringRequestTest::refusesProfiles_data()
{
    QTest::addColumn<QByteArray>("dat");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");

    const auto whole = [](const char *name, const char *dat, const char *text) {
        QTest::addRow("%s", name) << QByteArray(dat) << 2 << text;
    };
    whole("none", nullptr, "dat must be a profile");
    whole("no JSON", "Morvek Car", "dat must be a profile");
    whole("cut off", "{'type':'lan'", "dat must be a profile");
    whole("array", "[{}]", "dat must be a profile");
    whole("empty", "{}", "dat holds no profile");

    const auto malformed = [](const char *name, const char *before, const char *after, const char *text) {
        QTest::addRow("%s", name) << profileWith(before, after) << 2 << text;
    };
    malformed("no type", "'type':'lan',", "", "\"type\" is missing");
    malformed("type is a number", "'lan',", "1,", "\"type\" is not a text");
    malformed("no lantype", "'lantype':'wlanap',", "", "\"lantype\" is missing");
    malformed("lantype is null", "'wlanap'", "null", "\"lantype\" is not a text");
    malformed("as in a request", "'lantype'", "'lan_type'", "\"lantype\" is missing");
    malformed("no wantype", "'wantype':'bridge',", "", "\"wantype\" is missing");
    malformed("wantype is an array", "'bridge'", "[]", "\"wantype\" is not a text");
    malformed("no lancfg", "'lancfg'", "'lanconfig'", "\"lancfg\" is missing");
    malformed("lancfg is a text", "'lancfg':{", "'lancfg':'x','lanconfig':{", "\"lancfg\" is not an object");
    malformed("no lanprofile", "'lanprofile'", "'profile'", "\"lanprofile\" is missing");
    malformed("lanprofile is an array", "'lanprofile':{", "'lanprofile':[],'profile':{",
              "\"lanprofile\" is not an object");
    malformed("member too many", "'type'", "'id':1,'type'", "the profile has an unknown member");

    malformed("no address", "'gateway_address'", "'gateway'", "\"gateway_address\" is missing");
    malformed("address is a number", "'192.168.0.1'", "3232235521", "\"gateway_address\" is not a text");
    malformed("no subnet", "'gateway_subnet'", "'subnet'", "\"gateway_subnet\" is missing");
    malformed("subnet is a number", "'255.255.255.0'", "24", "\"gateway_subnet\" is not a text");
    malformed("no lease", ",'dhcp_lease_time':'120'", "", "\"dhcp_lease_time\" is missing");
    malformed("lease is a number", "'120'", "120", "\"dhcp_lease_time\" is not a text");
    malformed("network with more", "'gateway_address'", "'dns':'x','gateway_address'",
              "\"lancfg\" has an unknown member");

    malformed("no ssid", "'ssid':'Morvek Car',", "", "\"ssid\" is missing");
    malformed("ssid is a number", "'Morvek Car'", "7", "\"ssid\" is not a text");
    malformed("no passphrase", "'passphrase':'drive safely 8',", "", "\"passphrase\" is missing");
    malformed("passphrase is a number", "'drive safely 8'", "12345678", "\"passphrase\" is not a text");
    malformed("no band", "'mhs_band':'5.0',", "", "\"mhs_band\" is missing");
    malformed("the other band is none", "'mhs_band'", "'band'", "\"mhs_band\" is missing");
    malformed("band is a number", "'5.0'", "5.0", "\"mhs_band\" is not a text");
    malformed("no clients", "'max_num_sta':10,", "", "\"max_num_sta\" is missing");
    malformed("clients is a text", ":10,", ":'10',", "\"max_num_sta\" is not a number");
    malformed("no security", "'security_type':'wpa2',", "", "\"security_type\" is missing");
    malformed("security is a number", "'wpa2'", "8", "\"security_type\" is not a text");
    malformed("no inactivity", "'autoshutdown_time':600,", "", "\"autoshutdown_time\" is missing");
    malformed("inactivity is a text", ":600,", ":'600',", "\"autoshutdown_time\" is not a number");
    malformed("no privacy", "'privacy':false,", "", "\"privacy\" is missing");
    malformed("privacy is a number", "'privacy':false", "'privacy':0", "\"privacy\" is not true or false");
    malformed("no block", ",'block_conn':true", "", "\"block_conn\" is missing");
    malformed("block is a text", "'block_conn':true", "'block_conn':'yes'", "\"block_conn\" is not true or false");
    malformed("hotspot with more", "'ssid'", "'hidden':false,'ssid'", "the hotspot's profile has an unknown member");

    const auto bad = [](const char *name, const char *before, const QByteArray &after, const char *text) {
        QTest::addRow("%s", name) << profileWith(before, after) << 4 << text;
    };
    bad("type", "'lan',", "'Lan',", "\"type\" must be lan");
    bad("lantype", "'wlanap'", "'usb'", "\"lantype\" must be wlanap");
    bad("wantype", "'bridge'", "''", "\"wantype\" must be bridge");
    const char address[] = "\"gateway_address\" is not the IPv4 address of a host";
    bad("address: short", "192.168.0.1", "192.168.1", address);
    bad("address: nobody's", "192.168.0.1", "0.0.0.0", address);
    bad("address: IPv6", "192.168.0.1", "fe80::1", address);
    bad("subnet", "255.255.255.0", "255.0.255.0", "\"gateway_subnet\" is not a netmask");
    const char lease[] = "\"dhcp_lease_time\" is not a whole number of minutes";
    bad("lease: empty", "'120'", "''", lease);
    bad("lease: none", "'120'", "'0'", lease);
    bad("lease: negative", "'120'", "'-1'", lease);
    bad("lease: fraction", "'120'", "'1.5'", lease);
    bad("lease: unit", "'120'", "'120m'", lease);
    bad("lease: line", "'120'", "'120\\n'", lease);
    bad("lease: too long", "'120'", "'1000000000'", lease);
    const char ssid[] = "\"ssid\" must have 1 to 32 bytes";
    bad("ssid: empty", "Morvek Car", "", ssid);
    bad("ssid: 33 bytes", "Morvek Car", QByteArray(33, 'x'), ssid);
    bad("ssid: 33 bytes of 17 letters", "Morvek Car", QByteArray("\xc3\xa9").repeated(16) + 'x', ssid);
    const char passphrase[] = "\"passphrase\" must be 8 to 63 printable ASCII characters or 64 hexadecimal digits";
    bad("passphrase: empty", "drive safely 8", "", passphrase);
    bad("passphrase: short", "drive safely 8", "seven b", passphrase);
    bad("passphrase: 64 characters", "drive safely 8", QByteArray(64, 'g'), passphrase);
    bad("passphrase: outside ASCII", "drive safely 8", "caf\xc3\xa9 au lait", passphrase);
    bad("passphrase: control", "drive safely 8", "eight\\tbits", passphrase);
    const char security[] = "\"security_type\" must be none, wpa, wpa2 or wpa_mixed";
    bad("security: empty", "'wpa2'", "''", security);
    bad("security: another", "'wpa2'", "'wep'", security);
    bad("security: capital", "'wpa2'", "'WPA2'", security);
    bad("security: more", "'wpa2'", "'wpa22'", security);
    bad("security: capital none", "'wpa2'", "'None'", security);
    const char band[] = "\"mhs_band\" must be 2.4 or 5.0";
    bad("band: empty", "'5.0'", "''", band);
    bad("band: five", "'5.0'", "'5'", band);
    bad("band: with unit", "'5.0'", "'2.4 GHz'", band);
    const char clients[] = "\"max_num_sta\" must be a whole number from 1 to 32";
    bad("clients: none", ":10,", ":0,", clients);
    bad("clients: not set", ":10,", ":-1,", clients);
    bad("clients: too many", ":10,", ":33,", clients);
    bad("clients: fraction", ":10,", ":1.5,", clients);
    bad("clients: huge", ":10,", ":1e300,", clients);
    const char inactivity[] = "\"autoshutdown_time\" must be a whole number from 0 to 86400";
    bad("inactivity: not set", ":600,", ":-1,", inactivity);
    bad("inactivity: too long", ":600,", ":86401,", inactivity);
    bad("inactivity: fraction", ":600,", ":0.5,", inactivity);
}

void TetheringRequestTest::refusesProfiles()
{
    QFETCH(QByteArray, dat);
    for (const char *message : {"update_profile", "start"}) {
        const TetheringRequest request = read(message, dat);
        QTEST(request.refusal.text, "text");
        QTEST(request.refusal.code, "code");
    }
}

void TetheringRequestTest::neverShowsAPassphrase_data()
{
    QTest::addColumn<QByteArray>("dat");

    const auto row = [](const char *name, const char *before, const char *after) {
        QTest::addRow("%s", name) << profileWith(before, after);
    };
    row("outside ASCII", "drive safely 8", "TopSecret\xc3\xa9");
    row("as a key", "'passphrase'", "'TopSecret'");
    row("as a name too long", "Morvek Car", "TopSecret TopSecret TopSecret TopSecret");
    row("with a name", "drive safely 8", "TopSecret");
    row("as security", "'wpa2'", "'TopSecret'");
    row("as an address", "192.168.0.1", "TopSecret");
    row("as a type", "'lan',", "'TopSecret',");
    row("cut off", ",'privacy':false,'block_conn':true}}", ",'TopSecret");
    QTest::addRow("alone") << QByteArray("TopSecret");
}

void TetheringRequestTest::neverShowsAPassphrase()
{
    QFETCH(QByteArray, dat);
    for (const char *message : {"update_profile", "start", "stop", "retrieve_profile"}) {
        const TetheringRequest request = read(message, dat);
        const QString shown = request.toString() + request.refusal.text;
        QVERIFY2(!shown.contains(QStringLiteral("TopSecret")), qPrintable(shown));
    }
}

QTEST_GUILESS_MAIN(TetheringRequestTest)
#include "tst_tetheringrequest.moc"
