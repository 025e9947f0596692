// SPDX-License-Identifier: Apache-2.0
#include "interfacecontrollerfixture.h"

using namespace morvek;
using namespace NetworkingDaemon;

namespace {

const QString Disconnect = QStringLiteral(R"(net_disconnected "en0")");
const QString ConnectAutomatic = QStringLiteral(R"(net_connected ["en0",{"manual":"no","manual6":"off"}])");

} // namespace

/*! An automatic interface without an address is made to ask for one again. */
class TestInterfaceControllerRepair : public InterfaceControllerFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        begin();
        addInterface("en0", unplugged());
        QTRY_COMPARE(state("en0"), Model::WithoutAddress);
    }
    void cleanup() { InterfaceControllerFixture::end(); }

    void givesAnAddressByHandFirst();
    void choosesTheAddress_data();
    void choosesTheAddress();
    void isInvalidForOthers_data();
    void isInvalidForOthers();
    void isHelpedByALease();
    void isHelpedByOthers();
    void goesOnAfterALease();
    void goesOnWhenItIsCancelled();
    void doesNotGoOnForEver();
    void leavesItToTheNext();
    void isRefusedAtFirst();
    void isRefusedAfterwards();
    void isRefusedItsRelease();
    void timesOut();

private:
    /*! What was asked for by hand: "ADDRESS/NETMASK" and the gateway. */
    static QJsonObject given()
    {
        return QJsonDocument::fromJson(ZopDouble::commands().first().dat.toString().toUtf8()).array().at(1).toObject();
    }
    static QByteArray givenAddress()
    {
        return given().value(QLatin1String("ip_address")).toString().toLatin1() + "/255.255.0.0";
    }
    static void connectByHand() { connectInterface("en0", "yes", givenAddress().constData(), "169.254.0.1"); }
};

void TestInterfaceControllerRepair::givesAnAddressByHandFirst()
{
    const QSignalSpy idleChanged(m_services.get(), &NetworkServices::idleChanged);
    const Request *request = m_controller->repair(QStringLiteral("en0"));
    QCOMPARE(state("en0"), Model::Configuring);
    QCOMPARE(ZopDouble::commands().size(), 1);
    QVERIFY(!isIdle());
    ZopDouble::answer(0);
    settle();
    QCOMPARE(ZopDouble::commands().size(), 1);
    connectByHand();
    QTRY_COMPARE(ZopDouble::commands().size(), 2);
    QCOMPARE(requests().at(1), Disconnect);
    QVERIFY(!isIdle());
    ZopDouble::answer(1);
    settle();
    QVERIFY(!isIdle());
    QVERIFY(request->isRunning());
    releaseInterface("en0");
    QCOMPARE(requests().mid(2), QStringList {ConnectAutomatic});
    QVERIFY(!isIdle());
    QTRY_VERIFY(isIdle());
    ZopDouble::answer(2);
    change("en0", "manual", text("no"));
    settle();
    QVERIFY(request->isRunning());
    connectInterface("en0", "no", "10.0.0.5/255.0.0.0", "10.0.0.1");
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("done"));
    QCOMPARE(idleChanged.count(), 2);
    QCOMPARE(state("en0"), Model::Connected);
}

void TestInterfaceControllerRepair::choosesTheAddress_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("macAddress");
    QTest::addColumn<QString>("address");
    // The checksum of hardware address and name, of ISO 3309, modulo 65024, behind 169.254.1.0.
    QTest::newRow("one") << QByteArray("en0") << QByteArray("02:00:00:00:00:01") << "169.254.39.95";
    QTest::newRow("another unit's") << QByteArray("en0") << QByteArray("02:00:00:00:00:02") << "169.254.4.146";
    QTest::newRow("another") << QByteArray("en1") << QByteArray("02:00:00:00:00:01") << "169.254.56.214";
    QTest::newRow("beyond the last") << QByteArray("en18") << QByteArray("02:00:00:00:00:01") << "169.254.1.63";
    QTest::newRow("no hardware address") << QByteArray("tun0") << QByteArray() << "169.254.164.212";
}

void TestInterfaceControllerRepair::choosesTheAddress()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, macAddress);
    removeInterface("en0");
    addInterface(name.constData(), with(unplugged(), "link_address", text(macAddress.constData())));
    m_controller->repair(QString::fromLatin1(name));
    QCOMPARE(ZopDouble::commands().first().message, QStringLiteral("net_connected"));
    QTEST(given().value(QLatin1String("ip_address")).toString(), "address");
    QCOMPARE(given().value(QLatin1String("netmask")).toString(), QStringLiteral("255.255.0.0"));
    QCOMPARE(given().value(QLatin1String("gateway")).toString(), QStringLiteral("169.254.0.1"));
    QCOMPARE(given().value(QLatin1String("manual")).toString(), QStringLiteral("yes"));
}

void TestInterfaceControllerRepair::isInvalidForOthers_data()
{
    QTest::addColumn<QString>("attribute");
    QTest::addColumn<ZopVariant>("value");
    QTest::addColumn<QString>("end");
    QTest::newRow("by hand") << "manual" << text("yes") << "Invalid: en0 does not wait for an address.";
    QTest::newRow("with an address") << "ip_addresses" << json(R"(["10.0.0.5/255.0.0.0"])")
                                     << "Invalid: en0 does not wait for an address.";
    QTest::newRow("without a link") << "up" << text("false") << "Invalid: en0 has no link.";
}

void TestInterfaceControllerRepair::isInvalidForOthers()
{
    QFETCH(QString, attribute);
    QFETCH(ZopVariant, value);
    change("en0", qPrintable(attribute), value);
    QTEST(InterfaceControllerFixture::end(m_controller->repair(QStringLiteral("en0"))), "end");
    QCOMPARE(requests(), QStringList());
    QVERIFY(isIdle());
}

/*! A lease that comes by itself before anything has been answered, and stays. */
void TestInterfaceControllerRepair::isHelpedByALease()
{
    const Request *request = m_controller->repair(QStringLiteral("en0"));
    change("en0", "connected", text("true"));
    settle();
    QVERIFY(request->isRunning());
    change("en0", "connected", text("false"));
    change("en0", "ip_addresses", json(R"(["10.0.0.5/255.0.0.0"])"));
    settle();
    QVERIFY(request->isRunning());
    change("en0", "connected", text("true"));
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("done"));
}

void TestInterfaceControllerRepair::isHelpedByOthers()
{
    const Request *request = m_controller->repair(QStringLiteral("en0"));
    ZopDouble::answer(0);
    connectInterface("en0", "yes", "10.0.0.8/255.0.0.0", "10.0.0.1");
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("done"));
}

/*! What was asked for by hand before it came is put right behind it. */
void TestInterfaceControllerRepair::goesOnAfterALease()
{
    const Request *request = m_controller->repair(QStringLiteral("en0"));
    connectInterface("en0", "no", "10.0.0.5/255.0.0.0", "10.0.0.1");
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("done"));
    QVERIFY(!isIdle());
    ZopDouble::answer(0);
    connectByHand();
    QTRY_COMPARE(ZopDouble::commands().size(), 2);
    releaseInterface("en0");
    QCOMPARE(requests().mid(1), (QStringList {Disconnect, ConnectAutomatic}));
    QTRY_VERIFY(isIdle());
}

void TestInterfaceControllerRepair::goesOnWhenItIsCancelled()
{
    Request *request = m_controller->repair(QStringLiteral("en0"));
    ZopDouble::answer(0);
    settle();
    request->cancel();
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("Cancelled: Cancelled. en0 may still get an address."));
    QVERIFY(!isIdle());
    connectByHand();
    QTRY_COMPARE(ZopDouble::commands().size(), 2);
    ZopDouble::answer(1);
    settle();
    QVERIFY(!isIdle());
    releaseInterface("en0");
    QCOMPARE(requests().mid(1), (QStringList {Disconnect, ConnectAutomatic}));
    QTRY_VERIFY(isIdle());
}

void TestInterfaceControllerRepair::doesNotGoOnForEver()
{
    Request *request = m_controller->repair(QStringLiteral("en0"));
    QElapsedTimer timer;
    timer.start();
    request->cancel();
    QTRY_VERIFY_WITH_TIMEOUT(isIdle(), 20000);
    QVERIFY2(timer.elapsed() >= 4500, qPrintable(QString::number(timer.elapsed())));
    ZopDouble::answer(0);
    connectByHand();
    settle();
    QCOMPARE(ZopDouble::commands().size(), 1);
}

/*! What is asked for next is not undone by the rest of a repair that was cancelled. */
void TestInterfaceControllerRepair::leavesItToTheNext()
{
    m_controller->repair(QStringLiteral("en0"))->cancel();
    ZopDouble::answer(0);
    connectByHand();
    const Request *request = configureManual("en0");
    releaseInterface("en0");
    QTRY_VERIFY(isIdle());
    QCOMPARE(ZopDouble::commands().size(), 3);
    ZopDouble::answer(2);
    connectInterface("en0", "yes", "10.0.0.7/255.0.0.0", "10.0.0.1");
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("done"));
    settle();
    QCOMPARE(ZopDouble::commands().size(), 3);
}

void TestInterfaceControllerRepair::isRefusedAtFirst()
{
    const Request *request = m_controller->repair(QStringLiteral("en0"));
    ZopDouble::answerError(0, 13, QStringLiteral("permission denied"));
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("Refused: en0 was refused its new settings. It has no address now."));
    QCOMPARE(request->code(), 13);
    QVERIFY(isIdle());
}

void TestInterfaceControllerRepair::isRefusedAfterwards()
{
    const Request *request = m_controller->repair(QStringLiteral("en0"));
    ZopDouble::answer(0);
    connectByHand();
    QTRY_COMPARE(ZopDouble::commands().size(), 2);
    releaseInterface("en0");
    ZopDouble::answerError(2, 13, QStringLiteral("permission denied"));
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("Refused: en0 was refused its new settings. It has no address now."));
    QVERIFY(isIdle());
}

void TestInterfaceControllerRepair::isRefusedItsRelease()
{
    const Request *request = m_controller->repair(QStringLiteral("en0"));
    ZopDouble::answer(0);
    connectByHand();
    QTRY_COMPARE(ZopDouble::commands().size(), 2);
    ZopDouble::answerError(1, 16, QStringLiteral("busy"));
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("Refused: en0 was refused its new settings."));
    QVERIFY(isIdle());
}

void TestInterfaceControllerRepair::timesOut()
{
    Request *request = m_controller->repair(QStringLiteral("en0"));
    ZopDouble::answer(0);
    connectByHand();
    QTRY_COMPARE(ZopDouble::commands().size(), 2);
    releaseInterface("en0");
    ZopDouble::answer(2);
    change("en0", "manual", text("no"));
    settle();
    request->setDeadline(30);
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("TimedOut: en0 has got no address: no network has answered it."));
    QVERIFY(isIdle());
    QCOMPARE(state("en0"), Model::WithoutAddress);
}

QTEST_GUILESS_MAIN(TestInterfaceControllerRepair)
#include "tst_interfacecontrollerrepair.moc"
