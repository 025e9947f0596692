// SPDX-License-Identifier: Apache-2.0
#include "qmldocument.h"
#include "testunit.h"

#include <QtQuick/QQuickItem>
#include <QtTest/QtTest>

using namespace morvek;

namespace {

const char Networks[] = R"(
    ListView {
        id: list

        property NetworkServices services: NetworkServices {}
        property WifiController wifi: WifiController { services: list.services }
        property NetworkRequest request: null

        width: 800
        height: 2000
        model: list.wifi.networks
        delegate: Text {
            required property string ssid
            required property string displayName
            required property int level
            required property int bars
            required property string security
            required property bool isProtected
            required property bool joinable
            required property bool needsPasskey
            required property bool inUse
            required property bool joining
            required property bool openTwin
            required property int accessPoints

            text: [ssid, displayName.length - ssid.length, level, bars, security, isProtected, joinable, needsPasskey,
                   inUse, joining, openTwin, accessPoints].join(" ")
            textFormat: Text.PlainText
        }
    }
)";

const char Interfaces[] = R"(
    ListView {
        id: list

        property NetworkServices services: NetworkServices {}
        property InterfaceController unit: InterfaceController { services: list.services }

        width: 800
        height: 2000
        model: list.unit.interfaces
        delegate: Text {
            required property string name
            required property int type
            required property string typeText
            required property int interfaceState
            required property string stateText
            required property bool connected
            required property bool available
            required property bool preferred
            required property int priority
            required property string macAddress
            required property int mtu
            required property string address
            required property int prefixLength
            required property string netmask
            required property string gateway
            required property bool automatic
            required property string parentName

            text: [name, type === InterfaceType.Wired, typeText !== "", interfaceState === InterfaceModel.Connected,
                   stateText !== "", connected, available, preferred, priority, macAddress, mtu, address, prefixLength,
                   netmask, gateway, automatic, parentName].join(" ")
            textFormat: Text.PlainText
        }
    }
)";

const char TwoNetworks[] = R"({
    "interfaces": [{"name": "wlan0", "type": "wifi", "connected": true,
                    "lease": {"ip_addresses": ["192.168.43.17/24"], "ip_gateway": ["192.168.43.1"]}}],
    "wifi": {
        "interface": "wlan0",
        "connected": "02:00:00:00:00:01",
        "access_points": [
            {"bssid": "02:00:00:00:00:01", "ssid": "Home", "frequency": 2437, "signal_level": -48,
             "flags": ["WPA2-PSK-CCMP", "ESS"], "passkey": "correct horse 7"},
            {"bssid": "02:00:00:00:00:02", "ssid": "Home", "frequency": 2412, "signal_level": -60,
             "flags": ["WPA2-PSK-CCMP", "ESS"], "passkey": "correct horse 7"},
            {"bssid": "02:00:00:00:00:03", "ssid": "Kiosk", "frequency": 2462, "signal_level": -88, "flags": ["ESS"]}
        ]
    }
})";

} // namespace

/*! Models in views whose delegates ask for what they need. */
class TestQmlModels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void networks();
    void interfaces();
    void delegatesStay();
};

void TestQmlModels::networks()
{
    TestUnit unit;
    QVERIFY(unit.start(QString::fromUtf8(TwoNetworks)));
    const QmlDocument document(Networks);
    QVERIFY2(document.root(), qPrintable(document.errors()));
    QVERIFY(unit.waitForReady(document.object("wifi")));
    document.evaluate("request = wifi.scan()");
    QTRY_VERIFY(document.evaluate("request.done").toBool());
    // Two isolates stand around a name.
    QTRY_COMPARE(document.texts(),
                 QStringList({QStringLiteral("Home 2 -48 4 WPA2 true true true true false false 2"),
                              QStringLiteral("Kiosk 2 -88 0 open false true false false false false 1")}));
    QCOMPARE(document.evaluate("wifi.networks.count"), QVariant(2));
    QCOMPARE(document.evaluate("wifi.networks.rowOf('Kiosk')"), QVariant(1));
    QCOMPARE(document.evaluate("wifi.networks.displayName('a\\tb')").toString(),
             QStringLiteral("\u2068a\u2409b\u2069"));
}

void TestQmlModels::interfaces()
{
    TestUnit unit;
    QVERIFY(unit.start());
    const QmlDocument document(Interfaces);
    QVERIFY2(document.root(), qPrintable(document.errors()));
    QTRY_COMPARE(document.texts().value(1),
                 QStringLiteral("eth0 true true true true true true false 2 02:00:00:00:10:02 1500 10.20.0.40 16 "
                                "255.255.0.0 10.20.0.1 true "));
    QCOMPARE(document.texts().value(2),
             QStringLiteral("eth0.5 true true true true true true false 4 02:00:00:00:10:02 1496 172.16.5.2 24 "
                            "255.255.255.0 172.16.5.1 false eth0"));
    QCOMPARE(document.texts().size(), 4);
    QVERIFY(unit.act(QStringLiteral("vanish"), {{QStringLiteral("interface"), QStringLiteral("eth0.5")}}));
    QTRY_COMPARE(document.texts().size(), 3);
}

/*! A row that changes, and one that moves, keep what shows them, and with it the focus and what is typed there. */
void TestQmlModels::delegatesStay()
{
    TestUnit unit;
    QVERIFY(unit.start(QString::fromUtf8(TwoNetworks)));
    const QmlDocument document(Networks);
    QVERIFY(unit.waitForReady(document.object("wifi")));
    document.evaluate("request = wifi.scan()");
    QTRY_COMPARE(document.texts().size(), 2);
    const QQuickItem *kiosk = document.item(document.texts().last());
    QVERIFY(kiosk);

    document.evaluate("request = wifi.join('Kiosk')");
    QTRY_VERIFY(document.evaluate("request.done").toBool());
    const QString joined = QStringLiteral("Kiosk 2 -88 0 open false true false true false false 1");
    QTRY_COMPARE(document.texts().value(0), joined);
    QCOMPARE(document.item(joined), kiosk);
}

QTEST_MAIN(TestQmlModels)
#include "tst_qmlmodels.moc"
