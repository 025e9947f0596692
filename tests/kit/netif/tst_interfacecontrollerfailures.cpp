// SPDX-License-Identifier: Apache-2.0
#include "interfacecontrollerfixture.h"

using namespace morvek;
using namespace NetworkingDaemon;

/*! Every way in which a configuration fails, what is told then, and what may still come of it. */
class TestInterfaceControllerFailures : public InterfaceControllerFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        begin();
        addInterface("en0", wired());
        QTRY_COMPARE(state("en0"), Model::Connected);
    }
    void cleanup() { InterfaceControllerFixture::end(); }

    void isInvalid_data();
    void isInvalid();
    void isNotThere();
    void isNotReady();
    void isBusy();
    void isNotBusyAfterwards();

    void isRefusedAtItsRelease();
    void isRefusedWithItsAddress();
    void isRefusedWithoutAddress();

    void isOvertaken_data();
    void isOvertaken();
    void isOvertakenWhileMoreIsTold();
    void isNotOvertakenForAMoment_data();
    void isNotOvertakenForAMoment();

    void timesOutAtItsRelease();
    void timesOutUnanswered();
    void timesOutWithoutALease();
    void timesOutWithoutALink();
    void timesOutUnconnected();

    void isCancelledAtItsRelease();
    void isCancelledUnanswered();
    void isCancelledWhenAccepted();
    void isIdleAtLast();

    void vanishesAtItsRelease();
    void vanishesUnanswered();
    void vanishesWhenAccepted();
    void daemonDies();
    void daemonIsNotThere();
    void servicesAreDeleted();
    void namesFromOutsideAreShown();
};

void TestInterfaceControllerFailures::isInvalid_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("netmask");
    QTest::addColumn<QString>("gateway");
    QTest::addColumn<QString>("sentence");
    QTest::newRow("address") << "10.1"
                             << "24"
                             << ""
                             << "Address: Not an address: four numbers from 0 to 255 with dots between them.";
    QTest::newRow("netmask") << "10.0.0.7"
                             << "32"
                             << ""
                             << "Netmask: Not a netmask: one is like 255.255.255.0, or like 24.";
    QTest::newRow("gateway") << "10.0.0.7"
                             << "24"
                             << "10.0.1.1"
                             << "Gateway: Not in the network of address and netmask.";
}

void TestInterfaceControllerFailures::isInvalid()
{
    QFETCH(QString, address);
    QFETCH(QString, netmask);
    QFETCH(QString, gateway);
    QFETCH(QString, sentence);
    Ipv4Form form;
    form.setAddress(address);
    form.setNetmask(netmask);
    form.setGateway(gateway);
    const Request *request = m_controller->configureManual(QStringLiteral("en0"), &form);
    QVERIFY(request->isRunning());
    QCOMPARE(state("en0"), Model::Connected);
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("Invalid: ") + sentence);
    QCOMPARE(requests(), QStringList());
}

void TestInterfaceControllerFailures::isNotThere()
{
    QCOMPARE(InterfaceControllerFixture::end(m_controller->configureAutomatic(QStringLiteral("en7"))),
             QStringLiteral("Invalid: en7 is not there."));
    QCOMPARE(InterfaceControllerFixture::end(m_controller->repair(QString())),
             QStringLiteral("Invalid:  is not there."));
    QCOMPARE(InterfaceControllerFixture::end(m_controller->configureManual(QStringLiteral("en0"), nullptr)),
             QStringLiteral("Invalid: The addresses are missing."));
}

void TestInterfaceControllerFailures::isNotReady()
{
    InterfaceController alone;
    QCOMPARE(InterfaceControllerFixture::end(alone.configureAutomatic(QStringLiteral("en0"))),
             QStringLiteral("NotReady: The network service has not started yet."));
    ZopDouble::refuse(QLatin1String(Control), QStringLiteral("dead"));
    QTRY_COMPARE(m_controller->availability(), NetworkController::Gone);
    QCOMPARE(InterfaceControllerFixture::end(configureManual("en0")),
             QStringLiteral("NotReady: The network service has stopped."));
    QCOMPARE(requests(), QStringList());
    QVERIFY(isIdle());
}

/*! Whoever of the application has asked first. */
void TestInterfaceControllerFailures::isBusy()
{
    addInterface("en1", wired());
    InterfaceController other(m_services.get());
    const Request *first = configureManual("en0");
    const Request *again = m_controller->configureAutomatic(QStringLiteral("en0"));
    const Request *repair = m_controller->repair(QStringLiteral("en0"));
    const Request *elsewhere = other.configureAutomatic(QStringLiteral("en0"));
    const Request *another = configureManual("en1");
    for (const Request *request : {again, repair, elsewhere})
        QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("Busy: en0 is being changed already."));
    QVERIFY(first->isRunning());
    QVERIFY(another->isRunning());
    QCOMPARE(state("en0"), Model::Configuring);
    QCOMPARE(ZopDouble::commands().size(), 2);
}

void TestInterfaceControllerFailures::isNotBusyAfterwards()
{
    Request *first = configureManual("en0");
    first->cancel();
    const Request *second = m_controller->configureAutomatic(QStringLiteral("en0"));
    QCOMPARE(InterfaceControllerFixture::end(second), QStringLiteral("done"));
    const Request *third = configureManual("en0");
    releaseInterface("en0");
    const QString connectManual = ZopDouble::commands().last().message;
    QCOMPARE(connectManual, QStringLiteral("net_connected"));
    QVERIFY(third->isRunning());
    QTRY_VERIFY(isIdle());
}

void TestInterfaceControllerFailures::isRefusedAtItsRelease()
{
    const Request *request = configureManual("en0");
    ZopDouble::answerError(0, 16, QStringLiteral("busy"));
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("Refused: en0 was refused its new settings."));
    QCOMPARE(request->code(), 16);
    QCOMPARE(request->text(), QStringLiteral("The system was unable to configure the interface. (busy)"));
    QVERIFY(isIdle());
    QCOMPARE(state("en0"), Model::Connected);
}

void TestInterfaceControllerFailures::isRefusedWithItsAddress()
{
    change("en0", "connected", text("false"));
    const Request *request = configureManual("en0");
    ZopDouble::answerError(0, 13, QString());
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("Refused: en0 was refused its new settings."));
    QCOMPARE(request->text(), QStringLiteral("The system was unable to configure the interface."));
}

void TestInterfaceControllerFailures::isRefusedWithoutAddress()
{
    const Request *request = configureManual("en0");
    ZopDouble::answer(0);
    releaseInterface("en0");
    ZopDouble::answerError(1, 13, QStringLiteral("permission denied"));
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("Refused: en0 was refused its new settings. It has no address now."));
    QCOMPARE(request->code(), 13);
    QVERIFY(isIdle());
    QCOMPARE(state("en0"), Model::WithoutAddress);
}

void TestInterfaceControllerFailures::isOvertaken_data()
{
    QTest::addColumn<QByteArray>("manual");
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<QByteArray>("gateway");
    QTest::newRow("another address") << QByteArray("yes") << QByteArray("10.0.0.8/255.0.0.0") << QByteArray("10.0.0.1");
    QTest::newRow("another netmask") << QByteArray("yes") << QByteArray("10.0.0.7/255.255.0.0")
                                     << QByteArray("10.0.0.1");
    QTest::newRow("another gateway") << QByteArray("yes") << QByteArray("10.0.0.7/255.0.0.0") << QByteArray("10.0.0.2");
    QTest::newRow("another mode") << QByteArray("no") << QByteArray("10.0.0.7/255.0.0.0") << QByteArray("10.0.0.1");
}

void TestInterfaceControllerFailures::isOvertaken()
{
    QFETCH(QByteArray, manual);
    QFETCH(QByteArray, address);
    QFETCH(QByteArray, gateway);
    const Request *request = configureManual("en0");
    ZopDouble::answer(0);
    releaseInterface("en0");
    ZopDouble::answer(1);
    settle();
    QElapsedTimer timer;
    timer.start();
    connectInterface("en0", manual.constData(), address.constData(), gateway.constData());
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("Overtaken: en0 has other settings now: they were changed meanwhile."));
    QVERIFY2(timer.elapsed() >= 450 && timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
}

void TestInterfaceControllerFailures::isOvertakenWhileMoreIsTold()
{
    const Request *request = configureManual("en0");
    releaseInterface("en0");
    ZopDouble::answer(1);
    connectInterface("en0", "yes", "10.0.0.8/255.0.0.0", "10.0.0.1");
    QTimer teller;
    int mtu = 1000;
    connect(&teller, &QTimer::timeout, this, [&] { change("en0", "mtu", ZopVariant(++mtu)); });
    teller.start(50);
    QVERIFY(InterfaceControllerFixture::end(request).startsWith(QLatin1String("Overtaken")));
}

void TestInterfaceControllerFailures::isNotOvertakenForAMoment_data()
{
    QTest::addColumn<QString>("attribute"); // which tells that the other configuration is over
    QTest::addColumn<ZopVariant>("value");
    QTest::newRow("connection") << "connected" << text("false");
    QTest::newRow("addresses") << "ip_addresses" << json("[]");
}

void TestInterfaceControllerFailures::isNotOvertakenForAMoment()
{
    QFETCH(QString, attribute);
    QFETCH(ZopVariant, value);
    addInterface("en1", wired());
    const Request *overtaken = configureManual("en1");
    Request *request = configureManual("en0");
    for (const char *name : {"en1", "en0"})
        releaseInterface(name);
    ZopDouble::answer(2);
    ZopDouble::answer(3);
    connectInterface("en0", "yes", "10.0.0.8/255.0.0.0", "10.0.0.1");
    settle();
    change("en0", qPrintable(attribute), value);
    settle();
    // This one's other settings stand since later.
    connectInterface("en1", "yes", "10.0.0.8/255.0.0.0", "10.0.0.1");
    QVERIFY(InterfaceControllerFixture::end(overtaken).startsWith(QLatin1String("Overtaken")));
    QVERIFY(request->isRunning());
    connectInterface("en0", "yes", "10.0.0.7/255.0.0.0", "10.0.0.1");
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("done"));
}

void TestInterfaceControllerFailures::timesOutAtItsRelease()
{
    Request *request = configureManual("en0");
    ZopDouble::answer(0);
    request->setDeadline(30);
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("TimedOut: en0 has not let go of its address in time. It may still get the new settings."));
    QVERIFY(!isIdle());
    releaseInterface("en0");
    QTRY_VERIFY(isIdle());
    QCOMPARE(ZopDouble::commands().size(), 2);
}

void TestInterfaceControllerFailures::timesOutUnanswered()
{
    Request *request = configureManual("en0");
    releaseInterface("en0");
    QTRY_VERIFY(isIdle());
    request->setDeadline(30);
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("TimedOut: en0 waits for the network service, which has not answered in time."));
    QVERIFY(isIdle());
}

void TestInterfaceControllerFailures::timesOutWithoutALease()
{
    change("en0", "manual", text("yes"));
    Request *request = m_controller->configureAutomatic(QStringLiteral("en0"));
    releaseInterface("en0");
    ZopDouble::answer(1);
    change("en0", "manual", text("no"));
    settle();
    request->setDeadline(30);
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("TimedOut: en0 has got no address: no network has answered it."));
    QCOMPARE(state("en0"), Model::WithoutAddress);
}

void TestInterfaceControllerFailures::timesOutWithoutALink()
{
    releaseInterface("en0");
    change("en0", "up", text("false"));
    Request *request = configureManual("en0");
    ZopDouble::answer(0);
    settle();
    request->setDeadline(30);
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("TimedOut: en0 has no link. It gets its address when it has one again."));
    QCOMPARE(state("en0"), Model::Unavailable);
}

void TestInterfaceControllerFailures::timesOutUnconnected()
{
    Request *request = configureManual("en0");
    releaseInterface("en0");
    ZopDouble::answer(1);
    change("en0", "manual", text("yes"));
    settle();
    request->setDeadline(30);
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("TimedOut: en0 has its new settings, but has not connected in time."));
    QCOMPARE(state("en0"), Model::Disconnected);

    change("en0", "manual", text("no"));
    change("en0", "ip_addresses", json(R"(["10.0.0.5/255.0.0.0"])"));
    settle();
    Request *automatic = m_controller->configureAutomatic(QStringLiteral("en0"));
    automatic->setDeadline(30);
    QCOMPARE(InterfaceControllerFixture::end(automatic),
             QStringLiteral("TimedOut: en0 has its new settings, but has not connected in time."));
}

void TestInterfaceControllerFailures::isCancelledAtItsRelease()
{
    Request *request = configureManual("en0");
    request->cancel();
    QVERIFY(request->isRunning());
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("Cancelled: Cancelled. en0 may still lose its address, and get the new settings."));
    QCOMPARE(state("en0"), Model::Connected);
    QVERIFY(!isIdle());
    ZopDouble::answer(0);
    settle();
    QVERIFY(!isIdle());
    releaseInterface("en0");
    QVERIFY(!isIdle());
    QTRY_VERIFY_WITH_TIMEOUT(isIdle() && isNothingLeft(), 2000); // before it would be given up
    QCOMPARE(ZopDouble::commands().size(), 2);
}

void TestInterfaceControllerFailures::isCancelledUnanswered()
{
    Request *request = configureManual("en0");
    releaseInterface("en0");
    settle();
    request->cancel();
    QVERIFY(isIdle());
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("Cancelled: Cancelled. en0 may still get the new settings."));
}

void TestInterfaceControllerFailures::isCancelledWhenAccepted()
{
    Request *request = configureManual("en0");
    releaseInterface("en0");
    ZopDouble::answer(1);
    settle();
    request->cancel();
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("Cancelled: Cancelled. en0 may still connect with the new settings."));
}

/*! What never loses its addresses does not keep an application for ever. */
void TestInterfaceControllerFailures::isIdleAtLast()
{
    Request *request = configureManual("en0");
    QElapsedTimer timer;
    timer.start();
    request->cancel();
    QTRY_VERIFY_WITH_TIMEOUT(isIdle(), 20000);
    QVERIFY2(timer.elapsed() >= 4500, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(ZopDouble::commands().size(), 1);
}

void TestInterfaceControllerFailures::vanishesAtItsRelease()
{
    const Request *request = configureManual("en0");
    ZopDouble::answer(0);
    removeInterface("en0");
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("Lost: en0 is not there any more."));
    QVERIFY(isIdle());
    QCOMPARE(m_controller->interfaces()->rowOf(QStringLiteral("en0")), -1);
}

void TestInterfaceControllerFailures::vanishesUnanswered()
{
    const Request *request = configureManual("en0");
    releaseInterface("en0");
    removeInterface("en0");
    ZopDouble::answerError(1, 19, QStringLiteral("no interface"));
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("Lost: en0 is not there any more."));
}

void TestInterfaceControllerFailures::vanishesWhenAccepted()
{
    const Request *request = configureManual("en0");
    releaseInterface("en0");
    ZopDouble::answer(1);
    settle();
    removeInterface("en0");
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("Lost: en0 is not there any more."));
}

void TestInterfaceControllerFailures::daemonDies()
{
    const Request *request = configureManual("en0");
    ZopDouble::refuse(QLatin1String(Control), QStringLiteral("dead"));
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("Lost: The network service has stopped. en0 may be without an address."));
    QVERIFY(isIdle());
    QCOMPARE(m_controller->availability(), NetworkController::Gone);
}

/*! The library tells it sooner than the watch. */
void TestInterfaceControllerFailures::daemonIsNotThere()
{
    m_services->setWatchPause(86400000);
    const Request *request = configureManual("en0");
    ZopDouble::answerError(0, -1, QStringLiteral("the daemon has died"));
    QCOMPARE(InterfaceControllerFixture::end(request),
             QStringLiteral("Lost: The network service has stopped. en0 may be without an address."));
    QCOMPARE(request->code(), -1);
    QVERIFY(isIdle());
}

void TestInterfaceControllerFailures::servicesAreDeleted()
{
    const Request *request = configureManual("en0");
    m_services.reset();
    QCOMPARE(QVariant::fromValue(request->failure()).toString(), QStringLiteral("NoFailure"));
    QVERIFY(InterfaceControllerFixture::end(request).startsWith(QLatin1String("Lost: ")));
    QVERIFY(m_controller->preferred().isEmpty());
    QVERIFY(InterfaceControllerFixture::end(configureManual("en0")).startsWith(QLatin1String("NotReady: ")));
}

void TestInterfaceControllerFailures::namesFromOutsideAreShown()
{
    const Request *request = m_controller->configureAutomatic(QStringLiteral("abcdefghijklmnopqrstuvwxyz"));
    QTRY_VERIFY(!request->isRunning());
    QCOMPARE(request->sentence(), QStringLiteral(u"\u2068abcdefghijklmnopqrstuvw\u2026\u2069 is not there."));
    QCOMPARE(request->subject(), QStringLiteral("abcdefghijklmnopqrstuvwxyz"));
    const Request *longest = m_controller->configureAutomatic(QStringLiteral("abcdefghijklmnopqrstuvwx"));
    QTRY_VERIFY(!longest->isRunning());
    QCOMPARE(longest->sentence(), QStringLiteral(u"\u2068abcdefghijklmnopqrstuvwx\u2069 is not there."));
}

QTEST_GUILESS_MAIN(TestInterfaceControllerFailures)
#include "tst_interfacecontrollerfailures.moc"
