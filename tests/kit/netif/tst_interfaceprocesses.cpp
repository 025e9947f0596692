// SPDX-License-Identifier: Apache-2.0
#include "interfacecontroller.h"
#include "interfacemodel.h"
#include "ipv4form.h"
#include "modelmirror.h"
#include "networkservices.h"
#include "testunit.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

const char World[] = R"({
    "interfaces": [
        {"name": "eth0", "type": "wired", "connected": true,
         "lease": {"ip_addresses": ["10.20.0.40/16"], "ip_gateway": ["10.20.0.1"]}},
        {"name": "eth1", "type": "wired",
         "lease": {"ip_addresses": ["10.30.0.40/16"], "ip_gateway": ["10.30.0.1"]}},
        {"name": "usb0", "type": "usb", "connected": true,
         "manual": {"ip_addresses": ["10.40.0.5/16"], "ip_gateway": ["10.40.0.1"]}}
    ]
})";

QString interfacePath(const char *name)
{
    return QStringLiteral("/zop/services/networking/all/interfaces/") + QLatin1String(name);
}

} // namespace

/*! The controller and the daemons, all as they are shipped, each in a process of its own. */
class TestInterfaceProcesses : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void configures();
    void configuresTwoAtATime();
    void isRefused();
    void isNotAnsweredByDhcp();
    void repairs();
    void isOvertaken();
    void vanishesMeanwhile();
    void daemonDiesMeanwhile();
    void daemonIsKilledMeanwhile();
    void staysUntilItCanEnd();
    void followsLinks();
    void isRightInEveryScenario_data();
    void isRightInEveryScenario();

private:
    bool begin(const QString &scenario = QLatin1String(World));
    QVariant told(const char *name, int role) const
    {
        const InterfaceModel *model = m_controller->interfaces();
        return model->data(model->index(model->rowOf(QLatin1String(name))), role);
    }
    int state(const char *name) const { return told(name, InterfaceModel::StateRole).toInt(); }
    QJsonValue published(const char *name, const char *attribute)
    {
        return m_unit->published(interfacePath(name), QLatin1String(attribute));
    }
    static void fill(Ipv4Form *form, const char *address, const char *gateway)
    {
        form->setAddress(QLatin1String(address));
        form->setNetmask(QStringLiteral("16"));
        form->setGateway(QLatin1String(gateway));
    }

    std::unique_ptr<TestUnit> m_unit;
    std::unique_ptr<NetworkServices> m_services;
    std::unique_ptr<InterfaceController> m_controller;
    std::unique_ptr<ModelMirror> m_mirror;
};

bool TestInterfaceProcesses::begin(const QString &scenario)
{
    m_unit = std::make_unique<TestUnit>();
    if (!m_unit->start(scenario))
        return false;
    m_services = std::make_unique<NetworkServices>();
    m_services->setWatchPause(20);
    m_controller = std::make_unique<InterfaceController>(m_services.get());
    m_controller->interfaces()->setLeaseTime(0);
    m_mirror = std::make_unique<ModelMirror>(m_controller->interfaces());
    return m_unit->waitForReady(m_controller.get());
}

void TestInterfaceProcesses::cleanup()
{
    m_mirror->compare();
    m_mirror.reset();
    m_controller.reset();
    m_services.reset();
    m_unit.reset();
}

void TestInterfaceProcesses::configures()
{
    QVERIFY(begin());
    Ipv4Form form;
    fill(&form, "10.20.0.77", "10.20.0.1");
    QCOMPARE(m_unit->endOf(m_controller->configureManual(QStringLiteral("eth0"), &form)), QStringLiteral("done"));
    QCOMPARE(published("eth0", "manual"), QJsonValue(QStringLiteral("yes")));
    QCOMPARE(published("eth0", "ip_addresses"), QJsonValue(QJsonArray {QStringLiteral("10.20.0.77/255.255.0.0")}));
    QCOMPARE(published("eth0", "ip_gateway"), QJsonValue(QJsonArray {QStringLiteral("10.20.0.1")}));
    QCOMPARE(told("eth0", InterfaceModel::AddressRole), QVariant(QStringLiteral("10.20.0.77")));
    QVERIFY(m_services->isIdle());

    QCOMPARE(m_unit->endOf(m_controller->configureAutomatic(QStringLiteral("eth0"))), QStringLiteral("done"));
    QCOMPARE(published("eth0", "manual"), QJsonValue(QStringLiteral("no")));
    QCOMPARE(told("eth0", InterfaceModel::AddressRole), QVariant(QStringLiteral("10.20.0.40")));
    QCOMPARE(told("eth0", InterfaceModel::AutomaticRole), QVariant(true));
    const int requests = m_unit->requests().size();
    QCOMPARE(requests, 4);
    QCOMPARE(m_unit->endOf(m_controller->configureAutomatic(QStringLiteral("eth0"))), QStringLiteral("done"));
    QCOMPARE(m_unit->requests().size(), requests);
}

void TestInterfaceProcesses::configuresTwoAtATime()
{
    QVERIFY(begin());
    Ipv4Form form;
    fill(&form, "10.20.0.77", "10.20.0.1");
    NetworkRequest *first = m_controller->configureManual(QStringLiteral("eth0"), &form);
    fill(&form, "10.40.0.77", "10.40.0.1");
    NetworkRequest *second = m_controller->configureManual(QStringLiteral("usb0"), &form);
    QVERIFY(first->isRunning() && second->isRunning());
    QCOMPARE(m_unit->endOf(first), QStringLiteral("done"));
    QCOMPARE(m_unit->endOf(second), QStringLiteral("done"));
    QCOMPARE(published("eth0", "ip_addresses"), QJsonValue(QJsonArray {QStringLiteral("10.20.0.77/255.255.0.0")}));
    QCOMPARE(published("usb0", "ip_addresses"), QJsonValue(QJsonArray {QStringLiteral("10.40.0.77/255.255.0.0")}));
}

void TestInterfaceProcesses::isRefused()
{
    QVERIFY(begin());
    QVERIFY(m_unit->act(QStringLiteral("refuse"),
                        {{QStringLiteral("message"), QStringLiteral("net_disconnected")},
                         {QStringLiteral("err"), 16},
                         {QStringLiteral("errmsg"), QStringLiteral("busy")}}));
    Ipv4Form form;
    fill(&form, "10.20.0.77", "10.20.0.1");
    const QPointer<NetworkRequest> request = m_controller->configureManual(QStringLiteral("eth0"), &form);
    QCOMPARE(m_unit->endOf(request), QStringLiteral("Refused"));
    QCOMPARE(request->code(), 16);
    QCOMPARE(request->text(), QStringLiteral("The system was unable to configure the interface. (busy)"));
    QCOMPARE(state("eth0"), int(InterfaceModel::Connected));
    QVERIFY(m_services->isIdle());
}

/*! Made automatic where nobody serves DHCP, and repaired in vain. */
void TestInterfaceProcesses::isNotAnsweredByDhcp()
{
    QVERIFY(begin());
    NetworkRequest *request = m_controller->configureAutomatic(QStringLiteral("usb0"));
    QVERIFY(m_unit->waitForRequest(QStringLiteral("net_connected")).isValid());
    QTRY_COMPARE(told("usb0", InterfaceModel::AutomaticRole), QVariant(true));
    QVERIFY(m_services->isIdle());
    request->setDeadline(100);
    QCOMPARE(m_unit->endOf(request), QStringLiteral("TimedOut"));
    QCOMPARE(state("usb0"), int(InterfaceModel::WithoutAddress));

    NetworkRequest *repair = m_controller->repair(QStringLiteral("usb0"));
    QTRY_COMPARE(m_unit->requests().size(), 5);
    QTRY_COMPARE(told("usb0", InterfaceModel::AutomaticRole), QVariant(true));
    QTRY_VERIFY(m_services->isIdle());
    repair->setDeadline(100);
    QCOMPARE(m_unit->endOf(repair), QStringLiteral("TimedOut"));
    QCOMPARE(state("usb0"), int(InterfaceModel::WithoutAddress));
}

void TestInterfaceProcesses::repairs()
{
    QVERIFY(begin());
    QTRY_COMPARE(state("eth1"), int(InterfaceModel::WithoutAddress));
    QCOMPARE(m_unit->endOf(m_controller->repair(QStringLiteral("eth1"))), QStringLiteral("done"));
    QCOMPARE(state("eth1"), int(InterfaceModel::Connected));
    QCOMPARE(told("eth1", InterfaceModel::AddressRole), QVariant(QStringLiteral("10.30.0.40")));
    QStringList requests;
    for (const TestRequest &request : m_unit->requests())
        requests.append(request.message + QLatin1Char(' ') + request.answers.join(QLatin1Char(',')));
    QCOMPARE(requests,
             (QStringList {QStringLiteral("net_connected ok"), QStringLiteral("net_disconnected ok"),
                           QStringLiteral("net_connected ok")}));
    QVERIFY(m_services->isIdle());
}

/*! The daemon accepts it and lets it lie, and somebody else gets through. */
void TestInterfaceProcesses::isOvertaken()
{
    QVERIFY(begin());
    QVERIFY(m_unit->act(QStringLiteral("ignore"),
                        {{QStringLiteral("message"), QStringLiteral("net_connected")}, {QStringLiteral("times"), 1}}));
    Ipv4Form form;
    fill(&form, "10.20.0.77", "10.20.0.1");
    NetworkRequest *request = m_controller->configureManual(QStringLiteral("eth0"), &form);
    QTRY_COMPARE(m_unit->requests().size(), 2);

    NetworkServices elsewhere;
    InterfaceController other(&elsewhere);
    fill(&form, "10.20.0.78", "10.20.0.1");
    QCOMPARE(m_unit->endOf(other.configureManual(QStringLiteral("eth0"), &form)), QStringLiteral("done"));
    QCOMPARE(m_unit->endOf(request), QStringLiteral("Overtaken"));
    QCOMPARE(told("eth0", InterfaceModel::AddressRole), QVariant(QStringLiteral("10.20.0.78")));
}

void TestInterfaceProcesses::vanishesMeanwhile()
{
    QVERIFY(begin());
    QVERIFY(m_unit->act(QStringLiteral("no-reply"), {{QStringLiteral("message"), QStringLiteral("net_disconnected")}}));
    Ipv4Form form;
    fill(&form, "10.20.0.77", "10.20.0.1");
    NetworkRequest *request = m_controller->configureManual(QStringLiteral("eth0"), &form);
    QVERIFY(m_unit->waitForRequest(QStringLiteral("net_disconnected")).isValid());
    QVERIFY(!m_services->isIdle());
    QVERIFY(m_unit->act(QStringLiteral("vanish"), {{QStringLiteral("interface"), QStringLiteral("eth0")}}));
    QCOMPARE(m_unit->endOf(request), QStringLiteral("Lost"));
    QVERIFY(m_services->isIdle());
    QCOMPARE(m_controller->interfaces()->rowOf(QStringLiteral("eth0")), -1);

    QVERIFY(m_unit->act(QStringLiteral("appear"), {{QStringLiteral("interface"), QStringLiteral("eth0")}}));
    QTRY_COMPARE(m_controller->interfaces()->rowOf(QStringLiteral("eth0")), 0);
}

void TestInterfaceProcesses::daemonDiesMeanwhile()
{
    QVERIFY(begin());
    QVERIFY(
        m_unit->act(QStringLiteral("no-reply"),
                    {{QStringLiteral("message"), QStringLiteral("net_disconnected")}, {QStringLiteral("times"), 1}}));
    Ipv4Form form;
    fill(&form, "10.20.0.77", "10.20.0.1");
    NetworkRequest *request = m_controller->configureManual(QStringLiteral("eth0"), &form);
    QVERIFY(m_unit->waitForRequest(QStringLiteral("net_disconnected")).isValid());
    QVERIFY(m_unit->act(QStringLiteral("daemon-dies")));
    QCOMPARE(m_unit->endOf(request), QStringLiteral("Lost"));
    QVERIFY(m_services->isIdle());
    QTRY_COMPARE(m_controller->availability(), NetworkController::Gone);
    QCOMPARE(state("eth0"), int(InterfaceModel::Connected));

    QVERIFY(m_unit->act(QStringLiteral("daemon-back")));
    QTRY_COMPARE(m_controller->availability(), NetworkController::Ready);
    QCOMPARE(m_unit->endOf(m_controller->configureManual(QStringLiteral("eth0"), &form)), QStringLiteral("done"));
}

void TestInterfaceProcesses::daemonIsKilledMeanwhile()
{
    QVERIFY(begin());
    QVERIFY(m_unit->act(QStringLiteral("no-reply"), {{QStringLiteral("message"), QStringLiteral("net_connected")}}));
    Ipv4Form form;
    fill(&form, "10.20.0.77", "10.20.0.1");
    NetworkRequest *request = m_controller->configureManual(QStringLiteral("eth0"), &form);
    QVERIFY(m_unit->waitForRequest(QStringLiteral("net_connected")).isValid());
    m_unit->kill();
    QCOMPARE(m_unit->endOf(request), QStringLiteral("Lost"));
    QTRY_COMPARE(m_controller->availability(), NetworkController::Gone);
    QVERIFY(m_unit->restart());
    QTRY_COMPARE(m_controller->availability(), NetworkController::Ready);
    QTRY_COMPARE(state("eth0"), int(InterfaceModel::Connected));
}

/*! Who ends as soon as the services are idle leaves the interface with what it is to have. */
void TestInterfaceProcesses::staysUntilItCanEnd()
{
    m_unit = std::make_unique<TestUnit>();
    m_unit->setHeld(false);
    QVERIFY(m_unit->start(QLatin1String(World)));
    m_services = std::make_unique<NetworkServices>();
    m_controller = std::make_unique<InterfaceController>(m_services.get());
    m_mirror = std::make_unique<ModelMirror>(m_controller->interfaces());
    QVERIFY(m_unit->waitForReady(m_controller.get()));
    Ipv4Form form;
    fill(&form, "10.20.0.77", "10.20.0.1");
    NetworkRequest *request = m_controller->configureManual(QStringLiteral("eth0"), &form);
    request->cancel();
    QVERIFY(!m_services->isIdle());
    m_mirror->compare();
    m_mirror.reset();
    m_controller.reset();
    QTRY_VERIFY(m_services->isIdle());
    m_services.reset();
    QTRY_COMPARE(published("eth0", "ip_addresses"), QJsonValue(QJsonArray {QStringLiteral("10.20.0.77/255.255.0.0")}));

    m_services = std::make_unique<NetworkServices>();
    m_controller = std::make_unique<InterfaceController>(m_services.get());
    m_mirror = std::make_unique<ModelMirror>(m_controller->interfaces());
    QCOMPARE(told("eth0", InterfaceModel::AddressRole), QVariant(QStringLiteral("10.20.0.77")));
}

void TestInterfaceProcesses::followsLinks()
{
    QVERIFY(begin());
    QTRY_COMPARE(state("eth0"), int(InterfaceModel::Connected));
    QCOMPARE(m_controller->preferred(), QStringLiteral("eth0"));
    QVERIFY(m_unit->act(QStringLiteral("link-lost"), {{QStringLiteral("interface"), QStringLiteral("eth0")}}));
    QTRY_COMPARE(state("eth0"), int(InterfaceModel::Unavailable));
    QTRY_COMPARE(m_controller->preferred(), QStringLiteral("usb0"));
    QVERIFY(m_controller->isOnline());
    QVERIFY(m_unit->act(QStringLiteral("link-regained"), {{QStringLiteral("interface"), QStringLiteral("eth0")}}));
    QTRY_COMPARE(state("eth0"), int(InterfaceModel::Connected));
    QTRY_COMPARE(m_controller->preferred(), QStringLiteral("eth0"));
}

void TestInterfaceProcesses::isRightInEveryScenario_data()
{
    QTest::addColumn<int>("length"); // of its timeline, in seconds
    QTest::newRow("come-and-go") << 21;
    QTest::newRow("daemon-restart") << 32;
    QTest::newRow("headunit") << 1;
    QTest::newRow("no-reply") << 1;
    QTest::newRow("refused") << 1;
    QTest::newRow("wifi-out-of-range") << 31;
    QTest::newRow("wifi-roaming") << 22;
    QTest::newRow("wifi-garbage") << 13;
}

/*! The model tells what it becomes by no more than what changes, and is what the objects are in the end. */
void TestInterfaceProcesses::isRightInEveryScenario()
{
    QFETCH(int, length);
    QVERIFY(begin(QString::fromLatin1(QTest::currentDataTag())));
    for (int second = 0; second < length; ++second) {
        QVERIFY(m_unit->pass(1000));
        QCoreApplication::processEvents();
    }
    QVariantList names;
    const QStringList objects = m_unit->look(QStringLiteral("objects")).toObject().keys();
    for (const QString &path : objects) {
        if (path.startsWith(interfacePath("")))
            names.append(path.mid(interfacePath("").size()));
    }
    QVERIFY(!names.isEmpty());
    QTRY_COMPARE(m_mirror->values("name"), names);
    for (const QVariant &name : qAsConst(names)) {
        const QByteArray latin = name.toString().toLatin1();
        QTRY_COMPARE(told(latin.constData(), InterfaceModel::ConnectedRole).toBool(),
                     published(latin.constData(), "connected").toString() == QLatin1String("true"));
        QCOMPARE(told(latin.constData(), InterfaceModel::AutomaticRole).toBool(),
                 published(latin.constData(), "manual").toString() == QLatin1String("no"));
    }
    QTRY_COMPARE(m_controller->preferred(),
                 m_unit
                     ->published(QStringLiteral("/zop/services/networking/all/status_public"),
                                 QStringLiteral("default_interface"))
                     .toString());
}

QTEST_GUILESS_MAIN(TestInterfaceProcesses)
#include "tst_interfaceprocesses.moc"
