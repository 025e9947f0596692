// SPDX-License-Identifier: Apache-2.0
#include "qmldocument.h"
#include "testunit.h"

#include <QtCore/QPointer>
#include <QtTest/QtTest>

using namespace morvek;

namespace {

const char Screen[] = R"(
    QtObject {
        id: root

        property NetworkServices services: NetworkServices {}
        property WifiController wifi: WifiController { services: root.services }
        property InterfaceController unit: InterfaceController { services: root.services }
        property HotspotController hotspot: HotspotController { services: root.services }
        property var request: null
        property string ended: ""
    }
)";

/*! How many requests \a controller holds. */
int requests(const QObject *controller)
{
    int count = 0;
    for (const QObject *child : controller->children())
        count += child->inherits("morvek::NetworkRequest") ? 1 : 0;
    return count;
}

} // namespace

/*! What of the kit is handed to JavaScript is neither collected while it is used, nor left behind. */
class TestQmlOwnership : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void keepsARequestThatOnlyAHandlerHolds();
    void keepsARequestThatHasEnded();
    void keepsNoEarlierRequests();
    void losesARequestWithItsController();
    void losesAControllerThatNobodyHolds();
    void keepsModelsAndForms();
    void readsAFormAtOnce();
    void survivesItsServices();
    void survivesAnEngineThatEnds();
    void takesNoFormAtAll();
    void survivesAnEarlyEndOfARequest();

private:
    std::unique_ptr<TestUnit> m_unit;
};

void TestQmlOwnership::init()
{
    m_unit.reset();
    m_unit.reset(new TestUnit);
    QVERIFY2(m_unit->start(), qPrintable(m_unit->errorString()));
}

void TestQmlOwnership::keepsARequestThatOnlyAHandlerHolds()
{
    QmlDocument document(Screen);
    QVERIFY(m_unit->waitForReady(document.object("wifi")));
    document.evaluate(R"({
        const asked = wifi.scan();
        asked.finished.connect(() => root.ended = asked.done ? "done" : asked.sentence);
    })");
    document.collect();
    QCOMPARE(requests(document.object("wifi")), 1);
    QTRY_COMPARE(document.evaluate("ended").toString(), QStringLiteral("done"));
}

void TestQmlOwnership::keepsARequestThatHasEnded()
{
    QmlDocument document(Screen);
    QVERIFY(m_unit->waitForReady(document.object("wifi")));
    document.evaluate("wifi.join('', '')"); // held by nobody
    document.evaluate("request = wifi.scan()");
    QTRY_VERIFY(document.evaluate("request.done").toBool());
    document.collect();
    QCOMPARE(requests(document.object("wifi")), 2);
    QVERIFY(document.evaluate("request.done").toBool());
    QCOMPARE(document.evaluate("request.running"), QVariant(false));
}

void TestQmlOwnership::keepsNoEarlierRequests()
{
    QmlDocument document(Screen);
    QVERIFY(m_unit->waitForReady(document.object("wifi")));
    for (int i = 0; i < 50; ++i) {
        document.evaluate("request = wifi.scan()");
        QTRY_VERIFY(document.evaluate("request.done").toBool());
    }
    document.collect();
    QCOMPARE(requests(document.object("wifi")), 1);
}

void TestQmlOwnership::losesARequestWithItsController()
{
    QmlDocument document(R"(
        QtObject {
            id: root

            property NetworkServices services: NetworkServices {}
            property Component maker: Component { WifiController { services: root.services } }
            property NetworkRequest request: null
            property var held: null
            property string shown: request ? "a request" : "nothing"
        }
    )");
    const QPointer<QObject> wifi = document.object("held = maker.createObject(root)");
    QVERIFY(m_unit->waitForReady(wifi));
    document.evaluate("request = held.scan()");
    QCOMPARE(document.evaluate("shown").toString(), QStringLiteral("a request"));

    document.evaluate("held.destroy()");
    QTRY_VERIFY(!wifi);
    document.collect();
    QCOMPARE(document.evaluate("request === null"), QVariant(true));
    QCOMPARE(document.evaluate("shown").toString(), QStringLiteral("nothing"));
}

void TestQmlOwnership::losesAControllerThatNobodyHolds()
{
    QmlDocument document(R"(
        QtObject {
            id: root

            property NetworkServices services: NetworkServices {}
            property Component maker: Component { WifiController { services: root.services } }
            property var held: null
        }
    )");
    const QPointer<QObject> wifi = document.object("held = maker.createObject(null)");
    QVERIFY(m_unit->waitForReady(wifi));
    document.collect();
    QVERIFY(wifi);
    const QPointer<QObject> request = document.object("held.scan()");
    QVERIFY(request);

    document.evaluate("held = null");
    document.collect();
    QVERIFY(!wifi);
    QVERIFY(!request);
}

void TestQmlOwnership::keepsModelsAndForms()
{
    QmlDocument document(Screen);
    const QPointer<QObject> networks = document.object("wifi.networks");
    const QPointer<QObject> interfaces = document.object("unit.interfaces");
    const QPointer<QObject> form = document.object("hotspot.form");
    document.collect();
    QVERIFY(networks);
    QVERIFY(interfaces);
    QVERIFY(form);
    QCOMPARE(document.object("wifi.networks"), networks.data());
    QCOMPARE(document.object("unit.interfaces"), interfaces.data());
    QCOMPARE(document.object("hotspot.form"), form.data());
}

void TestQmlOwnership::readsAFormAtOnce()
{
    QmlDocument document(R"(
        QtObject {
            id: root

            property NetworkServices services: NetworkServices {}
            property InterfaceController unit: InterfaceController { services: root.services }
            property Component maker: Component {
                Ipv4Form { address: "10.20.0.77"; netmask: "16"; gateway: "10.20.0.1" }
            }
            property NetworkRequest request: null
        }
    )");
    QVERIFY(m_unit->waitForReady(document.object("unit")));
    document.evaluate("request = unit.configureManual('eth0', maker.createObject(null))");
    document.collect();
    QTRY_VERIFY(document.evaluate("!request.running").toBool());
    QCOMPARE(document.evaluate("request.sentence").toString(), QString());
    QVERIFY(document.evaluate("request.done").toBool());
}

void TestQmlOwnership::survivesItsServices()
{
    QmlDocument document(R"(
        QtObject {
            id: root

            property Component maker: Component { NetworkServices {} }
            property var services: maker.createObject(root)
            property WifiController wifi: WifiController { services: root.services }
            property NetworkRequest request: null
        }
    )");
    QVERIFY(m_unit->waitForReady(document.object("wifi")));
    QVERIFY(m_unit->act(QStringLiteral("no-reply"), {{QStringLiteral("message"), QStringLiteral("scan")}}));
    document.evaluate("request = wifi.scan()");
    document.evaluate("services.destroy()");
    QTRY_COMPARE(document.evaluate("request.failure === NetworkRequest.Lost"), QVariant(true));
    QCOMPARE(document.evaluate("wifi.services === null"), QVariant(true));
    QCOMPARE(document.evaluate("wifi.availability !== WifiController.Ready"), QVariant(true));
    QCOMPARE(document.evaluate("wifi.state === WifiController.NotReady"), QVariant(true));
}

void TestQmlOwnership::survivesAnEngineThatEnds()
{
    std::unique_ptr<QmlDocument> document(new QmlDocument(Screen));
    QVERIFY(m_unit->waitForReady(document->object("wifi")));
    const QPointer<QObject> request = document->object("request = wifi.scan()");
    const QPointer<QObject> networks = document->object("wifi.networks");
    QVERIFY(request && networks);
    document.reset();
    QVERIFY(!request);
    QVERIFY(!networks);
}

void TestQmlOwnership::takesNoFormAtAll()
{
    QmlDocument document(Screen);
    QVERIFY(m_unit->waitForReady(document.object("unit")));
    document.evaluate("request = unit.configureManual('eth0', null)");
    QTRY_COMPARE(document.evaluate("request.failure === NetworkRequest.Invalid"), QVariant(true));
}

/*! JavaScript may destroy what a function has returned. */
void TestQmlOwnership::survivesAnEarlyEndOfARequest()
{
    QmlDocument document(Screen);
    for (const char *asked : {"wifi.scan()", "unit.configureAutomatic('eth0.5')", "hotspot.setOn(true)"}) {
        QVERIFY(m_unit->waitForReady(document.object("wifi")));
        QVERIFY(m_unit->waitForReady(document.object("unit")));
        QVERIFY(m_unit->waitForReady(document.object("hotspot")));
        const QPointer<QObject> request = document.object(QByteArray("request = ") + asked);
        QVERIFY(request);
        document.evaluate("request.destroy()");
        QTRY_VERIFY(!request);
        QCOMPARE(document.evaluate("wifi.scanning || hotspot.busy"), QVariant(false));
        document.evaluate(QByteArray("request = ") + asked);
        document.evaluate("request.cancel()");
        QTRY_VERIFY2(!document.evaluate("request.running").toBool(), asked);
    }
    m_unit->kill();
    QTRY_COMPARE(document.evaluate("wifi.availability === NetworkController.Gone"), QVariant(true));
    QTRY_COMPARE(document.evaluate("hotspot.availability === NetworkController.Gone"), QVariant(true));
}

QTEST_MAIN(TestQmlOwnership)
#include "tst_qmlownership.moc"
