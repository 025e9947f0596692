// SPDX-License-Identifier: Apache-2.0
#include "interfacecontrollerfixture.h"

using namespace morvek;
using namespace NetworkingDaemon;

/*! The controller's interfaces are right when they come, change and go, and when the daemon does. */
class TestInterfaceController : public InterfaceControllerFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { begin(); }
    void cleanup() { end(); }

    void hasNothingWithoutServices();
    void knowsWhatIsThereAtOnce();
    void followsWhatComesAndGoes();
    void followsEverySignal_data();
    void followsEverySignal();
    void readsOnceATurn();
    void followsParents();
    void followsThePreferred();
    void losesThePreferredSilently();
    void isOnlineWhileThePreferredIs();
    void tellsNothingAnew();
    void hasItsStateBeforeItsSignals();
    void keepsWhatADeadDaemonHasTold();
    void isHealed();
    void sharesItsServices();
    void outlivesItsServices();
};

void TestInterfaceController::hasNothingWithoutServices()
{
    const InterfaceController controller;
    QCOMPARE(controller.interfaces()->count(), 0);
    QCOMPARE(controller.preferred(), QString());
    QVERIFY(!controller.isOnline());
}

void TestInterfaceController::knowsWhatIsThereAtOnce()
{
    addInterface("en0", wired());
    changeStatus("default_interface", text("en0"));
    NetworkServices services;
    InterfaceController controller;
    controller.setServices(&services);
    QCOMPARE(controller.availability(), NetworkController::Ready);
    QCOMPARE(controller.interfaces()->count(), 1);
    QCOMPARE(controller.preferred(), QStringLiteral("en0"));
    QVERIFY(controller.isOnline());
}

void TestInterfaceController::followsWhatComesAndGoes()
{
    addInterface("en0", wired());
    QTRY_COMPARE(m_controller->interfaces()->count(), 1);
    addInterface("cell0", wired());
    QTRY_COMPARE(m_controller->interfaces()->rowOf(QStringLiteral("en0")), 1);
    removeInterface("en0");
    QTRY_COMPARE(m_controller->interfaces()->count(), 1);
    QCOMPARE(m_controller->interfaces()->rowOf(QStringLiteral("cell0")), 0);
}

void TestInterfaceController::followsEverySignal_data()
{
    QTest::addColumn<QString>("attribute");
    QTest::addColumn<ZopVariant>("value");
    QTest::addColumn<int>("role");
    QTest::addColumn<QString>("expected");
    QTest::newRow("another property") << "mtu" << ZopVariant(1400) << int(Model::MtuRole) << "1400";
    QTest::newRow("connected") << "connected" << text("true") << int(Model::ConnectedRole) << "true";
    QTest::newRow("disconnected") << "connected" << text("false") << int(Model::ConnectedRole) << "false";
}

void TestInterfaceController::followsEverySignal()
{
    QFETCH(QString, attribute);
    QFETCH(ZopVariant, value);
    QFETCH(int, role);
    QFETCH(QString, expected);
    addInterface("en0", expected == QLatin1String("true") ? unplugged() : wired());
    settle();
    QVERIFY(told("en0", role).toString() != expected);
    change("en0", qPrintable(attribute), value);
    QTRY_COMPARE(told("en0", role).toString(), expected);
}

/*! All that the daemon tells in one turn is told in as few signals as one reading needs. */
void TestInterfaceController::readsOnceATurn()
{
    settle();
    const QSignalSpy inserted(m_controller->interfaces(), &QAbstractItemModel::rowsInserted);
    const QSignalSpy changed(m_controller->interfaces(), &QAbstractItemModel::dataChanged);
    for (const char *name : {"a", "b", "c"})
        addInterface(name, wired());
    QCOMPARE(m_controller->interfaces()->count(), 1);
    QTRY_COMPARE(m_controller->interfaces()->count(), 4);
    QCOMPARE(inserted.count(), 1);
    QCOMPARE(changed.count(), 0);
    for (const char *name : {"a", "b", "c"}) {
        change(name, "mtu", ZopVariant(1300));
        change(name, "mtu", ZopVariant(1400));
    }
    QTRY_COMPARE(told("c", Model::MtuRole), QVariant(1400));
    QCOMPARE(changed.count(), 1);
}

void TestInterfaceController::followsParents()
{
    addInterface("en0.5", standingOn("en0"));
    settle();
    QCOMPARE(told("en0.5", Model::ParentRole), QVariant(QString()));
    addInterface("en0", wired());
    QTRY_COMPARE(told("en0.5", Model::ParentRole), QVariant(QStringLiteral("en0")));
    removeInterface("en0");
    QTRY_COMPARE(told("en0.5", Model::ParentRole), QVariant(QString()));
}

void TestInterfaceController::followsThePreferred()
{
    addInterface("en0", wired());
    addInterface("en1", wired());
    settle();
    QSignalSpy changed(m_controller.get(), &InterfaceController::preferredChanged);
    changeStatus("default_interface", text("en1"));
    QVERIFY(changed.wait());
    QCOMPARE(m_controller->preferred(), QStringLiteral("en1"));
    QCOMPARE(told("en1", Model::PreferredRole), QVariant(true));
    QCOMPARE(told("en0", Model::PreferredRole), QVariant(false));
    changeStatus("default_interface", text("en0"));
    QVERIFY(changed.wait());
    QCOMPARE(m_controller->preferred(), QStringLiteral("en0"));
    changeStatus("default_interface", text(""));
    QVERIFY(changed.wait());
    QCOMPARE(m_controller->preferred(), QString());
    QVERIFY(!m_controller->isOnline());
    QCOMPARE(changed.count(), 3);
}

void TestInterfaceController::losesThePreferredSilently()
{
    addInterface("en0", wired());
    changeStatus("default_interface", text("en0"));
    QTRY_COMPARE(m_controller->preferred(), QStringLiteral("en0"));
    removeInterface("en0");
    QTRY_COMPARE(m_controller->preferred(), QString());
    QVERIFY(!m_controller->isOnline());
    addInterface("en0", wired());
    settle();
    QCOMPARE(m_controller->preferred(), QString());
    changeStatus("default_interface", text("en0"));
    QTRY_COMPARE(m_controller->preferred(), QStringLiteral("en0"));
}

void TestInterfaceController::isOnlineWhileThePreferredIs()
{
    addInterface("en0", unplugged());
    addInterface("en1", wired());
    changeStatus("default_interface", text("en0"));
    settle();
    QVERIFY(!m_controller->isOnline());
    QSignalSpy changed(m_controller.get(), &InterfaceController::preferredChanged);
    change("en0", "connected", text("true"));
    QVERIFY(changed.wait());
    QVERIFY(m_controller->isOnline());
    change("en0", "connected", text("false"));
    QVERIFY(changed.wait());
    QVERIFY(!m_controller->isOnline());
}

void TestInterfaceController::tellsNothingAnew()
{
    addInterface("en0", wired());
    changeStatus("default_interface", text("en0"));
    settle();
    const QSignalSpy changed(m_controller.get(), &InterfaceController::preferredChanged);
    changeStatus("default_interface", text("en0"));
    change("en0", "connected", text("true"));
    change("en0", "mtu", ZopVariant(1400));
    settle();
    QCOMPARE(changed.count(), 0);
}

void TestInterfaceController::hasItsStateBeforeItsSignals()
{
    settle();
    QStringList heard;
    connect(m_controller->interfaces(), &QAbstractItemModel::rowsInserted, this,
            [&] { heard.append(QStringLiteral("rows ") + m_controller->preferred()); });
    connect(m_controller.get(), &InterfaceController::preferredChanged, this,
            [&] { heard.append(QStringLiteral("preferred %1").arg(told("en0", Model::PreferredRole).toBool())); });
    addInterface("en0", wired());
    changeStatus("default_interface", text("en0"));
    settle();
    QCOMPARE(heard, (QStringList {QStringLiteral("rows en0"), QStringLiteral("preferred 1")}));
}

void TestInterfaceController::keepsWhatADeadDaemonHasTold()
{
    addInterface("en0", wired());
    changeStatus("default_interface", text("en0"));
    settle();
    ZopDouble::refuse(QLatin1String(Control), QStringLiteral("dead"));
    QTRY_COMPARE(m_controller->availability(), NetworkController::Gone);
    QCOMPARE(m_controller->preferred(), QStringLiteral("en0"));
    QCOMPARE(state("en0"), Model::Connected);
}

/*! There is nothing at first but a folder that cannot be read. */
void TestInterfaceController::isHealed()
{
    end();
    ZopDouble::reset();
    ZopDouble::publish(interfacePath(QStringLiteral("en0")), wired());
    NetworkServices services;
    services.setRetryPause(5);
    InterfaceController controller(&services);
    QCOMPARE(controller.availability(), NetworkController::Waiting);
    QCOMPARE(controller.interfaces()->count(), 0);
    QStringList heard;
    connect(&controller, &NetworkController::availabilityChanged, this,
            [&] { heard.append(QString::number(controller.interfaces()->count()) + controller.preferred()); });
    start();
    changeStatus("default_interface", text("en0"));
    QTRY_COMPARE(heard, QStringList {QStringLiteral("1en0")});
    addInterface("en1", wired());
    QTRY_COMPARE(controller.interfaces()->count(), 2);
    // The model, and what listens to the service.
    QTRY_COMPARE(controller.children().size(), 2);
}

void TestInterfaceController::sharesItsServices()
{
    addInterface("en0", wired());
    settle();
    InterfaceController other(m_services.get());
    QCOMPARE(other.interfaces()->count(), 2);
    addInterface("en1", wired());
    QTRY_COMPARE(other.interfaces()->count(), 3);
    QTRY_COMPARE(m_controller->interfaces()->count(), 3);
}

void TestInterfaceController::outlivesItsServices()
{
    addInterface("en0", wired());
    settle();
    m_services.reset();
    QCOMPARE(m_controller->availability(), NetworkController::Waiting);
    QCOMPARE(state("en0"), Model::Connected);
    addInterface("en1", wired());
    runQueued();
    QCOMPARE(m_controller->interfaces()->rowOf(QStringLiteral("en1")), -1);
}

QTEST_GUILESS_MAIN(TestInterfaceController)
#include "tst_interfacecontroller.moc"
