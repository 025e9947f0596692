// SPDX-License-Identifier: Apache-2.0
#include "qmldocument.h"
#include "testunit.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

QVariantMap daemon(const char *name)
{
    return {{QStringLiteral("daemon"), QString::fromUtf8(name)}};
}

} // namespace

/*! What is bound to the controllers' properties follows them. */
class TestQmlBindings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void wifi();
    void interfaces();
    void hotspot();
    void ipv4Form();
    void hotspotForm();
    void idle();
    void handlers();

private:
    std::unique_ptr<TestUnit> m_unit;
};

void TestQmlBindings::init()
{
    m_unit.reset();
    m_unit.reset(new TestUnit);
    QVERIFY2(m_unit->start(), qPrintable(m_unit->errorString()));
}

void TestQmlBindings::wifi()
{
    const QmlDocument document(R"(
        QtObject {
            property NetworkServices services: NetworkServices { watchPause: 50 }
            property WifiController wifi: WifiController { services: root.services; scanPause: 2000 }
            property NetworkRequest request: null
            property string shown: wifi.state + " " + wifi.ssid + " " + wifi.powered + " " + wifi.connected
            property string away: wifi.availability === NetworkController.Gone ? "gone" : ""
            property string outcome: !request ? "" : request.running ? "running" : request.done ? "done"
                                   : "failure " + request.failure
            readonly property int connected: WifiController.Connected
            id: root
        }
    )");
    QTRY_COMPARE(document.evaluate("shown").toString(), QStringLiteral("6 Home true true"));
    QCOMPARE(document.evaluate("wifi.state === connected"), QVariant(true));
    QCOMPARE(document.evaluate("wifi.scanPause"), QVariant(2000));

    document.evaluate("request = wifi.join('Garage', 'open sesame 43')");
    QCOMPARE(document.evaluate("outcome").toString(), QStringLiteral("running"));
    QCOMPARE(document.evaluate("request.subject").toString(), QStringLiteral("Garage"));
    QTRY_COMPARE(document.evaluate("outcome").toString(), QStringLiteral("failure 5"));
    QCOMPARE(document.evaluate("request.failure === NetworkRequest.WrongPasskey"), QVariant(true));

    document.evaluate("request = wifi.join('Garage', 'open sesame 42')");
    QTRY_COMPARE(document.evaluate("outcome").toString(), QStringLiteral("done"));
    QTRY_COMPARE(document.evaluate("shown").toString(), QStringLiteral("6 Garage true true"));

    document.evaluate("request = wifi.setPowered(false)");
    QTRY_COMPARE(document.evaluate("outcome").toString(), QStringLiteral("done"));
    QTRY_COMPARE(document.evaluate("shown").toString(), QStringLiteral("3  false false"));

    QVERIFY(m_unit->act(QStringLiteral("daemon-dies"), daemon("wifi")));
    QTRY_COMPARE(document.evaluate("away").toString(), QStringLiteral("gone"));
    QVERIFY(m_unit->act(QStringLiteral("daemon-back"), daemon("wifi")));
    QTRY_COMPARE(document.evaluate("away").toString(), QString());
}

void TestQmlBindings::interfaces()
{
    const QmlDocument document(R"(
        QtObject {
            id: root
            property NetworkServices services: NetworkServices {}
            property InterfaceController unit: InterfaceController { services: root.services }
            property string shown: unit.preferred + " " + unit.online
        }
    )");
    QTRY_COMPARE(document.evaluate("shown").toString(), QStringLiteral("wlan0 true"));
    QVERIFY(m_unit->act(QStringLiteral("default"), {{QStringLiteral("interface"), QStringLiteral("eth0")}}));
    QTRY_COMPARE(document.evaluate("shown").toString(), QStringLiteral("eth0 true"));
}

void TestQmlBindings::hotspot()
{
    const QmlDocument document(R"(
        QtObject {
            id: root
            property NetworkServices services: NetworkServices {}
            property HotspotController hotspot: HotspotController { services: root.services }
            property NetworkRequest request: null
            property string shown: hotspot.on + " " + hotspot.busy + " " + hotspot.name
            property string typed: hotspot.form.name + " " + hotspot.form.maxClients
        }
    )");
    QTRY_COMPARE(document.evaluate("shown").toString(), QStringLiteral("false false Morvek Car"));
    QTRY_COMPARE(document.evaluate("typed").toString(), QStringLiteral("Morvek Car 10"));
    document.evaluate("request = hotspot.setOn(true)");
    QCOMPARE(document.evaluate("hotspot.state === HotspotController.SwitchingOn"), QVariant(true));
    QTRY_COMPARE(document.evaluate("shown").toString(), QStringLiteral("true false Morvek Car"));
    document.evaluate("hotspot.form.name = 'Back seat'");
    QCOMPARE(document.evaluate("typed").toString(), QStringLiteral("Back seat 10"));
    document.evaluate("hotspot.form.setPassphrase('twelve bells')");
    document.evaluate("request = hotspot.apply()");
    QTRY_VERIFY(document.evaluate("request.done").toBool());
    QCOMPARE(document.evaluate("shown").toString(), QStringLiteral("true false Back seat"));
    QCOMPARE(document.evaluate("hotspot.reveal()").toString(), QStringLiteral("twelve bells"));
}

void TestQmlBindings::ipv4Form()
{
    const QmlDocument document(R"(
        Ipv4Form {
            property string shown: addressFault + " " + netmaskFault + " " + gatewayFault + " " + valid
            property bool tells: addressText !== ""

            address: "10.20.0.77"
        }
    )");
    QCOMPARE(document.evaluate("shown").toString(), QStringLiteral("0 1 1 false"));
    document.evaluate("netmask = '24'");
    document.evaluate("gateway = '10.20.1.1'");
    QCOMPARE(document.evaluate("gatewayFault === Ipv4Form.NotInNetwork"), QVariant(true));
    document.evaluate("gateway = '10.20.0.1'");
    QCOMPARE(document.evaluate("shown").toString(), QStringLiteral("0 0 0 true"));
    QCOMPARE(document.evaluate("tells"), QVariant(false));
    document.evaluate("address = '10.20.0.255'");
    QCOMPARE(document.evaluate("addressFault === Ipv4Form.Broadcast"), QVariant(true));
    QCOMPARE(document.evaluate("tells"), QVariant(true));
}

void TestQmlBindings::hotspotForm()
{
    const QmlDocument document(R"(
        QtObject {
            id: root
            property NetworkServices services: NetworkServices {}
            property HotspotController hotspot: HotspotController { services: root.services }
            property HotspotForm form: hotspot.form
            property string shown: form.nameFault + " " + form.passphraseFault + " " + form.valid + " " + form.edited
        }
    )");
    QTRY_VERIFY(document.evaluate("hotspot.profileKnown").toBool());
    QCOMPARE(document.evaluate("shown").toString(), QStringLiteral("0 0 true false"));
    document.evaluate("form.name = ''");
    document.evaluate("form.setPassphrase('short')");
    QCOMPARE(document.evaluate("shown").toString(), QStringLiteral("1 3 false true"));
    QCOMPARE(document.evaluate("form.passphraseFault === HotspotForm.TooShort"), QVariant(true));
    document.evaluate("form.security = HotspotForm.Open");
    QCOMPARE(document.evaluate("form.security === HotspotForm.Open"), QVariant(true));
    document.evaluate("form.revert()");
    QCOMPARE(document.evaluate("shown").toString(), QStringLiteral("0 0 true false"));
}

void TestQmlBindings::idle()
{
    const QmlDocument document("NetworkServices { property bool follows: !idle }");
    QCOMPARE(document.evaluate("follows"), QVariant(false));
    QCOMPARE(document.evaluate("retryPause"), QVariant(1000));
    QCOMPARE(document.evaluate("watchPause"), QVariant(1000));
}

/*! Signals by their names, and Connections. */
void TestQmlBindings::handlers()
{
    const QmlDocument document(R"(
        Item {
            id: root

            property string log: ""
            property NetworkServices services: NetworkServices {}
            property NetworkRequest request: null

            WifiController {
                id: wifi
                services: root.services
                onAvailabilityChanged: root.log += availability === WifiController.Ready ? "ready " : "away "
                onStateChanged: root.log += state === WifiController.Connected ? "connected " : ""
            }
            Connections {
                target: root.request
                function onFinished() {
                    root.log += root.request.subject + (wifi.state === WifiController.Connected ? " it is " : " not yet ")
                }
            }
            function begin() {
                request = wifi.join("Home", "correct horse 7")
            }
        }
    )");
    QTRY_COMPARE(document.evaluate("log").toString(), QStringLiteral("connected ready "));
    document.evaluate("begin()");
    QTRY_VERIFY(!document.evaluate("request.running").toBool());
    QCOMPARE(document.evaluate("log").toString(), QStringLiteral("connected ready connected Home it is "));
}

QTEST_MAIN(TestQmlBindings)
#include "tst_qmlbindings.moc"
