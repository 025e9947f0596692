// SPDX-License-Identifier: Apache-2.0
#include "textform.h"
#include "wifihotspot.h"

#include <QtTest/QtTest>

#include <functional>

using namespace morvek;

static_assert(WifiBand2_4GHz == 0, "");
static_assert(WifiBand5GHz == 1, "");

template<typename T, typename = void>
constexpr bool IsWritable = false;
template<typename T>
constexpr bool IsWritable<T, decltype(std::declval<QTextStream &>() << std::declval<T>(), void())> = true;
static_assert(IsWritable<WifiHotspot &>, "");
static_assert(!IsWritable<const WifiHotspot &>, "");
static_assert(!IsWritable<WifiHotspot>, "");

namespace {

using Change = std::function<void(WifiHotspot &)>;

WifiHotspot completeHotspot()
{
    WifiHotspot hotspot;
    hotspot.setName(QStringLiteral("Car"));
    hotspot.setPassphrase(QStringLiteral("open sesame"));
    hotspot.setSecurityType(WifiSecurityProtocolWpa | WifiSecurityProtocolWpa2);
    hotspot.setBand(WifiBand5GHz);
    hotspot.setInactivityTime(20);
    hotspot.setMaxClients(0);
    hotspot.setPrivacy(true);
    hotspot.setBlockConn(true);
    return hotspot;
}

} // namespace

Q_DECLARE_METATYPE(Change)

class TestWifiHotspot : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults();
    void keepsWhatIsSet();
    void emptiness_data();
    void emptiness();
    void comparesEveryField_data();
    void comparesEveryField();
    void tellsTheSwitchesApart();
    void copiesAreIndependent();
    void textForm_data();
    void textForm();
    void textFormInAnyStream();
    void isAMetaType();
};

void TestWifiHotspot::defaults()
{
    const WifiHotspot hotspot;
    QVERIFY(hotspot.name().isNull());
    QVERIFY(hotspot.passphrase().isNull());
    QCOMPARE(int(hotspot.securityType()), 8);
    QCOMPARE(int(hotspot.band()), 0);
    QCOMPARE(hotspot.inactivityTime(), -1);
    QCOMPARE(hotspot.maxClients(), -1);
    QCOMPARE(hotspot.privacy(), false);
    QCOMPARE(hotspot.blockConn(), false);
    QVERIFY(hotspot.isEmpty());
    QVERIFY(hotspot == WifiHotspot());
}

void TestWifiHotspot::keepsWhatIsSet()
{
    const WifiHotspot hotspot = completeHotspot();
    QCOMPARE(hotspot.name(), QStringLiteral("Car"));
    QCOMPARE(hotspot.passphrase(), QStringLiteral("open sesame"));
    QCOMPARE(int(hotspot.securityType()), 0xc);
    QCOMPARE(int(hotspot.band()), 1);
    QCOMPARE(hotspot.inactivityTime(), 20);
    QCOMPARE(hotspot.maxClients(), 0);
    QCOMPARE(hotspot.privacy(), true);
    QCOMPARE(hotspot.blockConn(), true);
}

void TestWifiHotspot::emptiness_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<bool>("empty");
    const auto row = [](const char *name, bool empty, const Change &change) { QTest::newRow(name) << change << empty; };
    row("complete, no clients", false, [](WifiHotspot &) {});
    row("name", true, [](WifiHotspot &h) { h.setName(QString()); });
    row("empty name", true, [](WifiHotspot &h) { h.setName(QLatin1String("")); });
    row("passphrase", true, [](WifiHotspot &h) { h.setPassphrase(QString()); });
    row("empty passphrase", true, [](WifiHotspot &h) { h.setPassphrase(QLatin1String("")); });
    row("inactivity time", true, [](WifiHotspot &h) { h.setInactivityTime(-1); });
    row("inactivity time 0", false, [](WifiHotspot &h) { h.setInactivityTime(0); });
    row("inactivity time -2", false, [](WifiHotspot &h) { h.setInactivityTime(-2); });
    row("maximum of clients", true, [](WifiHotspot &h) { h.setMaxClients(-1); });
    row("maximum of clients -2", false, [](WifiHotspot &h) { h.setMaxClients(-2); });
    row("no security", false, [](WifiHotspot &h) { h.setSecurityType({}); });
    row("switches off", false, [](WifiHotspot &h) {
        h.setPrivacy(false);
        h.setBlockConn(false);
    });
}

void TestWifiHotspot::emptiness()
{
    QFETCH(Change, change);
    WifiHotspot hotspot = completeHotspot();
    change(hotspot);
    QTEST(hotspot.isEmpty(), "empty");
}

void TestWifiHotspot::comparesEveryField_data()
{
    QTest::addColumn<Change>("change");
    const auto row = [](const char *name, const Change &change) { QTest::newRow(name) << change; };
    row("name", [](WifiHotspot &h) { h.setName(QStringLiteral("car")); });
    row("passphrase", [](WifiHotspot &h) { h.setPassphrase(QStringLiteral("Open sesame")); });
    row("security type", [](WifiHotspot &h) { h.setSecurityType(WifiSecurityProtocolWpa2); });
    row("band", [](WifiHotspot &h) { h.setBand(WifiBand2_4GHz); });
    row("inactivity time", [](WifiHotspot &h) { h.setInactivityTime(21); });
    row("maximum of clients", [](WifiHotspot &h) { h.setMaxClients(1); });
    row("privacy", [](WifiHotspot &h) { h.setPrivacy(false); });
    row("block connections", [](WifiHotspot &h) { h.setBlockConn(false); });
}

void TestWifiHotspot::comparesEveryField()
{
    QFETCH(Change, change);
    const WifiHotspot reference = completeHotspot();
    WifiHotspot changed = completeHotspot();
    QVERIFY(reference == changed);
    QVERIFY(!(reference != changed));
    change(changed);
    QVERIFY(!(reference == changed));
    QVERIFY(reference != changed);
}

void TestWifiHotspot::tellsTheSwitchesApart()
{
    WifiHotspot isPrivate;
    isPrivate.setPrivacy(true);
    WifiHotspot blocks;
    blocks.setBlockConn(true);
    QVERIFY(isPrivate != blocks);
    QVERIFY(isPrivate != WifiHotspot());
    QVERIFY(blocks != WifiHotspot());
}

void TestWifiHotspot::copiesAreIndependent()
{
    WifiHotspot source = completeHotspot();
    WifiHotspot copy(source);
    WifiHotspot assigned;
    assigned = source;
    QVERIFY(copy == source);
    QVERIFY(assigned == source);
    copy.setName(QString());
    assigned.setBlockConn(false);
    QVERIFY(source == completeHotspot());
    const WifiHotspot &same = source;
    source = same;
    QVERIFY(source == completeHotspot());
}

void TestWifiHotspot::textForm_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("text");
    QTest::newRow("default") << Change([](WifiHotspot &h) { h = WifiHotspot(); })
                             << "Wifi Hotspot {name:,passprase:,Security Type:8,Band:0, InactivityTime:-1, "
                                "Max Clients:-1, Privacy:0, Blocking connections:0}";
    QTest::newRow("complete") << Change([](WifiHotspot &h) { h.setPrivacy(false); })
                              << "Wifi Hotspot {name:Car,passprase:open sesame,Security Type:12,Band:1, "
                                 "InactivityTime:20, Max Clients:0, Privacy:0, Blocking connections:1}";
    QTest::newRow("private") << Change([](WifiHotspot &h) { h.setBlockConn(false); })
                             << "Wifi Hotspot {name:Car,passprase:open sesame,Security Type:12,Band:1, "
                                "InactivityTime:20, Max Clients:0, Privacy:1, Blocking connections:0}";
}

void TestWifiHotspot::textForm()
{
    QFETCH(Change, change);
    QFETCH(QString, text);
    WifiHotspot hotspot = completeHotspot();
    change(hotspot);
    QCOMPARE(::textForm(hotspot), text);
}

void TestWifiHotspot::textFormInAnyStream()
{
    WifiHotspot hotspot = completeHotspot();
    hotspot.setMaxClients(10);
    QCOMPARE(::textFormInAnyStream(hotspot),
             QStringLiteral("Wifi Hotspot {name:Car,passprase:open sesame,Security Type:12,Band:1, InactivityTime:20, "
                            "Max Clients:10, Privacy:1, Blocking connections:1}"));
}

void TestWifiHotspot::isAMetaType()
{
    const int type = qRegisterMetaType<WifiHotspot>();
    QCOMPARE(QByteArray(QMetaType::typeName(type)), QByteArray("morvek::WifiHotspot"));
    QVERIFY(QVariant::fromValue(completeHotspot()).value<WifiHotspot>() == completeHotspot());
}

QTEST_APPLESS_MAIN(TestWifiHotspot)
#include "tst_wifihotspot.moc"
