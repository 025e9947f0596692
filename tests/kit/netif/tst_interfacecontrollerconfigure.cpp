// SPDX-License-Identifier: Apache-2.0
#include "interfacecontrollerfixture.h"

using namespace morvek;
using namespace NetworkingDaemon;

namespace {

const QString Disconnect = QStringLiteral(R"(net_disconnected "en0")");
const QString ConnectManual = QStringLiteral(R"(net_connected ["en0",{"gateway":"10.0.0.1","ip_address":"10.0.0.7",)"
                                             R"("manual":"yes","manual6":"off","netmask":"255.0.0.0"}])");
const QString ConnectAutomatic = QStringLiteral(R"(net_connected ["en0",{"manual":"no","manual6":"off"}])");

} // namespace

/*! Requests that give an interface another configuration: their steps, and when the services are idle. */
class TestInterfaceControllerConfigure : public InterfaceControllerFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { begin(); }
    void cleanup() { InterfaceControllerFixture::end(); }

    void givesAddressesByHand();
    void makesAutomatic();
    void asksAtOnceWhatIsNotConnected();
    void isDoneWithWhatIsSo_data();
    void isDoneWithWhatIsSo();
    void waitsForALease();
    void waitsForTheConnection();
    void isAppliedInParts();
    void isReleasedInParts();
    void isReleasedByItsAddresses();
    void isNotReleasedByOthers();
    void releasesOneWithoutAddresses();
    void readsTheFormAtOnce();
    void hasItsDeadline();
    void tellsTheModelFirst();
    void configuresTwoAtATime();
    void outlivesItsController();
    void replacesWhatHasEnded();
    void isDeletedInASlot();
};

void TestInterfaceControllerConfigure::givesAddressesByHand()
{
    addInterface("en0", wired());
    QTRY_COMPARE(state("en0"), Model::Connected);
    const QSignalSpy idleChanged(m_services.get(), &NetworkServices::idleChanged);
    const Request *request = configureManual("en0");
    const QSignalSpy finished(request, &NetworkRequest::finished);
    QCOMPARE(request->subject(), QStringLiteral("en0"));
    QCOMPARE(state("en0"), Model::Configuring);
    QCOMPARE(requests(), QStringList {Disconnect});
    QVERIFY(!isIdle());

    ZopDouble::answer(0);
    settle();
    QVERIFY(!isIdle());
    releaseInterface("en0");
    QVERIFY(!isIdle());
    QTRY_VERIFY(isIdle());
    QCOMPARE(requests(), (QStringList {Disconnect, ConnectManual}));

    ZopDouble::answer(1);
    settle();
    QVERIFY(request->isRunning());
    QVERIFY(told("en0", Model::AddressRole).toString().isEmpty());
    connectInterface("en0", "yes", "10.0.0.7/255.0.0.0", "10.0.0.1");
    QVERIFY(request->isRunning());
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("done"));
    QCOMPARE(finished.count(), 1);
    QCOMPARE(idleChanged.count(), 2);
    QVERIFY(isNothingLeft());
    QCOMPARE(state("en0"), Model::Connected);
    QCOMPARE(told("en0", Model::AddressRole), QVariant(QStringLiteral("10.0.0.7")));
}

void TestInterfaceControllerConfigure::makesAutomatic()
{
    addInterface("en0", with(wired(), "manual", text("yes")));
    const Request *request = m_controller->configureAutomatic(QStringLiteral("en0"));
    ZopDouble::answer(0);
    releaseInterface("en0");
    QTRY_VERIFY(isIdle());
    QCOMPARE(requests(), (QStringList {Disconnect, ConnectAutomatic}));
    ZopDouble::answer(1);
    connectInterface("en0", "yes", "10.3.0.9/255.255.0.0", "10.3.0.1");
    settle();
    QVERIFY(request->isRunning());
    change("en0", "manual", text("no"));
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("done"));
}

void TestInterfaceControllerConfigure::asksAtOnceWhatIsNotConnected()
{
    addInterface("en0", unplugged());
    const QSignalSpy idleChanged(m_services.get(), &NetworkServices::idleChanged);
    const Request *request = configureManual("en0");
    QCOMPARE(requests(), QStringList {ConnectManual});
    QVERIFY(isIdle());
    ZopDouble::answer(0);
    connectInterface("en0", "yes", "10.0.0.7/255.0.0.0", "10.0.0.1");
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("done"));
    QCOMPARE(idleChanged.count(), 0);
}

void TestInterfaceControllerConfigure::isDoneWithWhatIsSo_data()
{
    QTest::addColumn<QByteArray>("manual");
    QTest::newRow("automatic") << QByteArray("no");
    QTest::newRow("by hand") << QByteArray("yes");
}

void TestInterfaceControllerConfigure::isDoneWithWhatIsSo()
{
    QFETCH(QByteArray, manual);
    addInterface("en0", wired());
    connectInterface("en0", manual.constData(), "10.0.0.7/255.0.0.0", "10.0.0.1");
    const Request *request =
        manual == "no" ? m_controller->configureAutomatic(QStringLiteral("en0")) : configureManual("en0");
    QVERIFY(request->isRunning());
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("done"));
    QCOMPARE(requests(), QStringList());
}

/*! Nothing is asked: the library does not do that for what is automatic. */
void TestInterfaceControllerConfigure::waitsForALease()
{
    addInterface("en0", unplugged());
    const Request *request = m_controller->configureAutomatic(QStringLiteral("en0"));
    settle();
    QVERIFY(request->isRunning());
    QVERIFY(isIdle());
    change("en0", "connected", text("true"));
    settle();
    QVERIFY(request->isRunning());
    connectInterface("en0", "no", "10.0.0.5/255.0.0.0", "10.0.0.1");
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("done"));
    QCOMPARE(requests(), QStringList());
}

void TestInterfaceControllerConfigure::waitsForTheConnection()
{
    addInterface("en0", wired());
    connectInterface("en0", "yes", "10.0.0.7/255.0.0.0", "10.0.0.1");
    change("en0", "connected", text("false"));
    const Request *request = configureManual("en0");
    settle();
    QVERIFY(request->isRunning());
    change("en0", "connected", text("true"));
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("done"));
    QCOMPARE(requests(), QStringList());
}

void TestInterfaceControllerConfigure::isAppliedInParts()
{
    addInterface("en0", unplugged());
    const Request *request = configureManual("en0");
    ZopDouble::answer(0);
    for (const auto &part :
         {std::make_pair("ip_gateway", json(R"(["10.0.0.2"])")), std::make_pair("manual", text("yes")),
          std::make_pair("ip_addresses", json(R"(["10.0.0.7/255.0.0.0"])")), std::make_pair("connected", text("true")),
          std::make_pair("connected", text("false")), std::make_pair("ip_gateway", json(R"(["10.0.0.1"])")),
          std::make_pair("ip_addresses", json(R"(["10.0.0.7/255.255.0.0"])")),
          std::make_pair("connected", text("true"))}) {
        change("en0", part.first, part.second);
        settle();
        QVERIFY2(request->isRunning(), part.first);
    }
    change("en0", "ip_addresses", json(R"(["10.0.0.7/255.0.0.0"])"));
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("done"));
}

void TestInterfaceControllerConfigure::isReleasedInParts()
{
    addInterface("en0", wired());
    configureManual("en0");
    ZopDouble::answer(0);
    change("en0", "connected", text("false"));
    settle();
    QVERIFY(!isIdle());
    change("en0", "mtu", ZopVariant(1400));
    settle();
    QVERIFY(!isIdle());
    QCOMPARE(requests(), QStringList {Disconnect});
    change("en0", "ip_addresses", json("[]"));
    QTRY_VERIFY(isIdle());
    QCOMPARE(requests(), (QStringList {Disconnect, ConnectManual}));
}

void TestInterfaceControllerConfigure::isReleasedByItsAddresses()
{
    addInterface("en0", wired());
    configureManual("en0");
    releaseAddresses("en0");
    QTRY_VERIFY(isIdle());
    QCOMPARE(requests(), (QStringList {Disconnect, ConnectManual}));
    QVERIFY(told("en0", Model::ConnectedRole).toBool());
}

void TestInterfaceControllerConfigure::isNotReleasedByOthers()
{
    addInterface("en0", wired());
    addInterface("en1", wired());
    configureManual("en0");
    ZopDouble::answer(0);
    releaseInterface("en1");
    QTRY_COMPARE(told("en1", Model::ConnectedRole), QVariant(false));
    settle();
    QVERIFY(!isIdle());
}

/*! What is told of it for another reason is not the loss that is awaited. */
void TestInterfaceControllerConfigure::releasesOneWithoutAddresses()
{
    addInterface("en0", with(wired(), "ip_addresses", json("[]")));
    const Request *request = configureManual("en0");
    ZopDouble::answer(0);
    changeStatus("priority", json(R"(["en0"])"));
    QTRY_COMPARE(told("en0", Model::PriorityRole), QVariant(1));
    settle();
    QVERIFY(!isIdle());
    QCOMPARE(requests(), QStringList {Disconnect});
    releaseInterface("en0");
    QTRY_VERIFY(isIdle());
    QCOMPARE(requests(), (QStringList {Disconnect, ConnectManual}));
    ZopDouble::answer(1);
    connectInterface("en0", "yes", "10.0.0.7/255.0.0.0", "10.0.0.1");
    QCOMPARE(InterfaceControllerFixture::end(request), QStringLiteral("done"));
}

void TestInterfaceControllerConfigure::readsTheFormAtOnce()
{
    addInterface("en0", wired());
    auto form = std::make_unique<Ipv4Form>();
    form->setAddress(QStringLiteral("10.0.0.7"));
    form->setNetmask(QStringLiteral("8"));
    form->setGateway(QStringLiteral("10.0.0.1"));
    m_controller->configureManual(QStringLiteral("en0"), form.get());
    form->setAddress(QStringLiteral("10.0.0.8"));
    form.reset();
    releaseInterface("en0");
    QCOMPARE(requests(), (QStringList {Disconnect, ConnectManual}));
}

void TestInterfaceControllerConfigure::hasItsDeadline()
{
    addInterface("en0", wired());
    addInterface("en1", unplugged());
    QCOMPARE(configureManual("en0")->deadline(), 40000);
    QCOMPARE(m_controller->configureAutomatic(QStringLiteral("en0"))->deadline(), 40000);
    QCOMPARE(m_controller->repair(QStringLiteral("en1"))->deadline(), 60000);
}

/*! Who hears of the end finds the model as it will stay. */
void TestInterfaceControllerConfigure::tellsTheModelFirst()
{
    addInterface("en0", unplugged());
    const Request *request = configureManual("en0");
    QString heard;
    connect(request, &NetworkRequest::finished, this,
            [&] { heard = QStringLiteral("%1 %2").arg(state("en0")).arg(told("en0", Model::AddressRole).toString()); });
    connectInterface("en0", "yes", "10.0.0.7/255.0.0.0", "10.0.0.1");
    ZopDouble::answer(0);
    // Without what rings only later.
    for (int round = 0; heard.isEmpty() && round < 10; ++round)
        QCoreApplication::sendPostedEvents();
    QCOMPARE(heard, QStringLiteral("1 10.0.0.7"));
}

void TestInterfaceControllerConfigure::configuresTwoAtATime()
{
    addInterface("en0", wired());
    addInterface("en1", with(wired(), "manual", text("yes")));
    const Request *first = configureManual("en0");
    const Request *second = m_controller->configureAutomatic(QStringLiteral("en1"));
    QTRY_COMPARE(state("en1"), Model::Configuring);
    releaseInterface("en0");
    QTRY_COMPARE(ZopDouble::commands().size(), 3);
    settle();
    QVERIFY(!isIdle());
    releaseInterface("en1");
    QTRY_VERIFY(isIdle());
    ZopDouble::answer(3);
    connectInterface("en1", "no", "10.0.0.5/255.0.0.0", "10.0.0.1");
    QCOMPARE(InterfaceControllerFixture::end(second), QStringLiteral("done"));
    QVERIFY(first->isRunning());
    QCOMPARE(state("en0"), Model::Configuring);
    QCOMPARE(state("en1"), Model::Connected);
    ZopDouble::answer(2);
    connectInterface("en0", "yes", "10.0.0.7/255.0.0.0", "10.0.0.1");
    QCOMPARE(InterfaceControllerFixture::end(first), QStringLiteral("done"));
}

/*! A screen that is closed leaves no interface between two requests behind an application that believes to be idle. */
void TestInterfaceControllerConfigure::outlivesItsController()
{
    addInterface("en0", wired());
    configureManual("en0");
    endController();
    QVERIFY(!isIdle());
    ZopDouble::answer(0);
    releaseInterface("en0");
    QVERIFY(!isIdle());
    QTRY_VERIFY_WITH_TIMEOUT(isIdle() && isNothingLeft(), 2000); // before it would be given up
    QCOMPARE(requests(), (QStringList {Disconnect, ConnectManual}));
}

/*! One that has ended stays until the next for its interface. */
void TestInterfaceControllerConfigure::replacesWhatHasEnded()
{
    addInterface("en0", wired());
    addInterface("en1", wired());
    const QPointer<Request> first = m_controller->configureAutomatic(QStringLiteral("en0"));
    const QPointer<Request> other = m_controller->configureAutomatic(QStringLiteral("en1"));
    QTRY_VERIFY(first->isDone() && other->isDone());
    const QPointer<Request> second = configureManual("en0");
    QTRY_VERIFY(first.isNull());
    QVERIFY(other);
    QVERIFY(second->isRunning());
}

/*! A page that closes as soon as the unit is online, which is told at the end of a request. */
void TestInterfaceControllerConfigure::isDeletedInASlot()
{
    addInterface("en0", unplugged());
    changeStatus("default_interface", text("en0"));
    QTRY_COMPARE(m_controller->preferred(), QStringLiteral("en0"));
    configureManual("en0");
    connect(m_controller.get(), &InterfaceController::preferredChanged, this, [this] { endController(); });
    connectInterface("en0", "yes", "10.0.0.7/255.0.0.0", "10.0.0.1");
    ZopDouble::answer(0);
    for (int round = 0; m_controller && round < 10; ++round)
        QCoreApplication::sendPostedEvents(); // before what rings only later
    QVERIFY(!m_controller);
}

QTEST_GUILESS_MAIN(TestInterfaceControllerConfigure)
#include "tst_interfacecontrollerconfigure.moc"
