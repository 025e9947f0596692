// SPDX-License-Identifier: Apache-2.0
#include "interfacemodel.h"
#include "modelmirror.h"
#include "networkingdaemon.h"
#include "networkinterfaceservice.h"
#include "servicepointer.h"

#include <QtTest/QtTest>

#include <algorithm>
#include <iterator>

using namespace morvek;
using namespace NetworkingDaemon;

namespace {

QVariant told(const InterfaceModel &model, const char *name, int role)
{
    return model.data(model.index(model.rowOf(QLatin1String(name))), role);
}

InterfaceModel::State state(const InterfaceModel &model, const char *name)
{
    return told(model, name, InterfaceModel::StateRole).value<InterfaceModel::State>();
}

QStringList names(const InterfaceModel &model)
{
    QStringList names;
    for (int i = 0; i < model.rowCount(); ++i)
        names.append(model.index(i).data(InterfaceModel::NameRole).toString());
    return names;
}

} // namespace

/*! The rows of the model, and the fewest signals that tell their changes. */
class TestInterfaceModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void namesItsRoles();
    void tellsAnInterface();
    void tellsOneWithoutAnything();
    void tellsTheTypes_data();
    void tellsTheTypes();
    void tellsAddresses_data();
    void tellsAddresses();
    void namesTheParentThatIsThere();
    void isInTheOrderOfNames();
    void addsAndRemovesRows_data();
    void addsAndRemovesRows();
    void tellsExactlyWhatHasChanged();
    void tellsRowsTogether();
    void tellsNothingAnew();
    void tellsTheStates_data();
    void tellsTheStates();
    void waitsForALease();
    void waitsForALeaseFromItsLoss();
    void waitsForSeveralLeases();
    void waitsForEachLease();
    void isConfiguring();
    void configuresWhatIsNotThereYet();
    void isToldInSlots();
    void hasNothingElsewhere();

private:
    void read(const char *preferred = "") { m_model->setInterfaces(m_service->interfaces(), QLatin1String(preferred)); }

    NetworkInterfaceServicePointer m_service;
    std::unique_ptr<InterfaceModel> m_model;
    std::unique_ptr<ModelMirror> m_mirror;
};

void TestInterfaceModel::init()
{
    ZopDouble::reset();
    start();
    m_service.reset(newNetworkInterfaceService());
    m_model = std::make_unique<InterfaceModel>();
    m_mirror = std::make_unique<ModelMirror>(m_model.get());
}

void TestInterfaceModel::cleanup()
{
    m_mirror->compare();
    m_mirror.reset();
    m_model.reset();
    m_service.reset();
}

void TestInterfaceModel::namesItsRoles()
{
    QStringList roles;
    const QHash<int, QByteArray> names = m_model->roleNames();
    for (int role = InterfaceModel::NameRole; role <= InterfaceModel::DisplayNameRole; ++role)
        roles.append(QString::fromLatin1(names.value(role)));
    QCOMPARE(roles.join(QLatin1Char(' ')),
             QStringLiteral(
                 "name type typeText interfaceState stateText connected available preferred priority macAddress mtu "
                 "address prefixLength netmask gateway automatic parentName displayName"));
    QCOMPARE(names.size(), roles.size());
}

void TestInterfaceModel::tellsAnInterface()
{
    addInterface("en0", with(wired(), "manual", text("yes")));
    changeStatus("priority", json(R"(["wl0","en0"])"));
    read("en0");
    QCOMPARE(m_model->data(m_model->index(0)).toString(), QStringLiteral("\u2068en0\u2069"));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::DisplayNameRole), QVariant(QStringLiteral("\u2068en0\u2069")));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::NameRole), QVariant(QStringLiteral("en0")));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::TypeRole), QVariant(1));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::TypeTextRole), QVariant(QStringLiteral("Ethernet")));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::StateRole), QVariant(1));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::StateTextRole), QVariant(QStringLiteral("Connected.")));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::ConnectedRole), QVariant(true));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::AvailableRole), QVariant(true));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::PreferredRole), QVariant(true));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::PriorityRole), QVariant(2));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::MacAddressRole), QVariant(QStringLiteral("02:00:00:00:00:01")));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::MtuRole), QVariant(1500));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::AddressRole), QVariant(QStringLiteral("10.0.0.5")));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::PrefixLengthRole), QVariant(8));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::NetmaskRole), QVariant(QStringLiteral("255.0.0.0")));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::GatewayRole), QVariant(QStringLiteral("10.0.0.1")));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::AutomaticRole), QVariant(false));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::ParentRole), QVariant(QString()));
}

void TestInterfaceModel::tellsOneWithoutAnything()
{
    addInterface("en0", {});
    read();
    QCOMPARE(told(*m_model, "en0", InterfaceModel::TypeRole), QVariant(0));
    QCOMPARE(state(*m_model, "en0"), InterfaceModel::Unavailable);
    QCOMPARE(told(*m_model, "en0", InterfaceModel::PreferredRole), QVariant(false));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::PriorityRole), QVariant(-1));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::MacAddressRole), QVariant(QString()));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::MtuRole), QVariant(0));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::AddressRole), QVariant(QString()));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::PrefixLengthRole), QVariant(-1));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::NetmaskRole), QVariant(QString()));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::GatewayRole), QVariant(QString()));
    QCOMPARE(told(*m_model, "en0", InterfaceModel::AutomaticRole), QVariant(true));
}

void TestInterfaceModel::tellsTheTypes_data()
{
    QTest::addColumn<QString>("published");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("typeText");
    QTest::newRow("other") << "token-ring" << 0 << "Other network";
    QTest::newRow("wired") << "wired" << 1 << "Ethernet";
    QTest::newRow("wifi") << "wifi" << 2 << "Wi-Fi";
    QTest::newRow("usb") << "usb" << 3 << "USB";
    QTest::newRow("cellular") << "cellular" << 4 << "Mobile network";
    QTest::newRow("bluetooth") << "bluetooth_dun" << 5 << "Bluetooth";
    QTest::newRow("vpn") << "vpn" << 6 << "VPN";
    QTest::newRow("bridge") << "qv" << 7 << "Orvan bridge";
}

void TestInterfaceModel::tellsTheTypes()
{
    QFETCH(QString, published);
    addInterface("en0", with(wired(), "type", ZopVariant(published)));
    read();
    QTEST(told(*m_model, "en0", InterfaceModel::TypeRole).toInt(), "type");
    QTEST(told(*m_model, "en0", InterfaceModel::TypeTextRole).toString(), "typeText");
}

void TestInterfaceModel::tellsAddresses_data()
{
    QTest::addColumn<QByteArray>("published");
    QTest::addColumn<QString>("address");
    QTest::addColumn<int>("prefixLength");
    QTest::addColumn<QString>("netmask");
    QTest::newRow("longest") << QByteArray(R"(["10.0.0.5/255.255.255.255"])") << "10.0.0.5" << 32 << "255.255.255.255";
    QTest::newRow("no netmask") << QByteArray(R"(["10.0.0.5/255.0.255.0"])") << "10.0.0.5" << -1 << "";
    QTest::newRow("no address") << QByteArray(R"(["10.0.0.500/255.0.0.0"])") << "" << -1 << "";
    QTest::newRow("none") << QByteArray("[]") << "" << -1 << "";
    QTest::newRow("no IPv4 address") << QByteArray(R"(["fe80::1/64"])") << "" << -1 << "";
}

void TestInterfaceModel::tellsAddresses()
{
    QFETCH(QByteArray, published);
    addInterface("en0", with(wired(), "ip_addresses", json(published.constData())));
    read();
    QTEST(told(*m_model, "en0", InterfaceModel::AddressRole).toString(), "address");
    QTEST(told(*m_model, "en0", InterfaceModel::PrefixLengthRole).toInt(), "prefixLength");
    QTEST(told(*m_model, "en0", InterfaceModel::NetmaskRole).toString(), "netmask");
}

void TestInterfaceModel::namesTheParentThatIsThere()
{
    addInterface("en0.5", standingOn("en0"));
    read();
    QCOMPARE(told(*m_model, "en0.5", InterfaceModel::ParentRole), QVariant(QString()));
    addInterface("en0", wired());
    read();
    QCOMPARE(told(*m_model, "en0.5", InterfaceModel::ParentRole), QVariant(QStringLiteral("en0")));
    m_mirror->takeTold();
    removeInterface("en0");
    read();
    QCOMPARE(told(*m_model, "en0.5", InterfaceModel::ParentRole), QVariant(QString()));
    QCOMPARE(m_mirror->takeTold(),
             (QStringList {QStringLiteral("remove 0-0"), QStringLiteral("change 0-0 parentName")}));
}

void TestInterfaceModel::isInTheOrderOfNames()
{
    for (const char *name : {"wl0", "en1", "en0", "usb0", "en0.5"})
        addInterface(name, wired());
    read();
    QCOMPARE(names(*m_model),
             (QStringList {QStringLiteral("en0"), QStringLiteral("en0.5"), QStringLiteral("en1"),
                           QStringLiteral("usb0"), QStringLiteral("wl0")}));
    QCOMPARE(m_model->rowOf(QStringLiteral("en1")), 2);
    QCOMPARE(m_model->rowOf(QStringLiteral("en2")), -1);
    QCOMPARE(m_model->count(), 5);
}

void TestInterfaceModel::addsAndRemovesRows_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QStringList>("lines");
    const auto row = [](const char *before, const char *after, const QStringList &lines) {
        QTest::addRow("%s to %s", before, after) << before << after << lines;
    };
    row("", "bdf", {QStringLiteral("insert 0-2")});
    row("bdf", "", {QStringLiteral("remove 0-2")});
    row("bdf", "bdf", {});
    row("bdf", "abdf", {QStringLiteral("insert 0-0")});
    row("bdf", "bcdf", {QStringLiteral("insert 1-1")});
    row("bdf", "bdfg", {QStringLiteral("insert 3-3")});
    row("bdf", "abcdefgh",
        {QStringLiteral("insert 0-0"), QStringLiteral("insert 2-2"), QStringLiteral("insert 4-4"),
         QStringLiteral("insert 6-7")});
    row("abcdefgh", "bdf",
        {QStringLiteral("remove 6-7"), QStringLiteral("remove 4-4"), QStringLiteral("remove 2-2"),
         QStringLiteral("remove 0-0")});
    row("bdf", "df", {QStringLiteral("remove 0-0")});
    row("bcdf", "bf", {QStringLiteral("remove 1-2")});
    row("bd", "ce", {QStringLiteral("remove 0-1"), QStringLiteral("insert 0-1")});
    row("bd", "bc", {QStringLiteral("remove 1-1"), QStringLiteral("insert 1-1")});
}

void TestInterfaceModel::addsAndRemovesRows()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    for (const QChar name : before)
        addInterface(QByteArray(1, name.toLatin1()).constData(), wired());
    read();
    QCOMPARE(names(*m_model).join(QString()), before);
    m_mirror->takeTold();
    const QSignalSpy countChanged(m_model.get(), &InterfaceModel::countChanged);
    for (const QChar name : before)
        removeInterface(QByteArray(1, name.toLatin1()).constData());
    for (const QChar name : after)
        addInterface(QByteArray(1, name.toLatin1()).constData(), wired());
    read();
    QCOMPARE(names(*m_model).join(QString()), after);
    QTEST(m_mirror->takeTold(), "lines");
    QCOMPARE(m_model->count(), after.size());
    QCOMPARE(countChanged.count(), before.size() == after.size() ? 0 : 1);
}

void TestInterfaceModel::tellsExactlyWhatHasChanged()
{
    addInterface("en0", wired());
    addInterface("en1", wired());
    read("en0");
    m_mirror->takeTold();
    change("en1", "mtu", ZopVariant(1400));
    read("en0");
    QCOMPARE(m_mirror->takeTold(), (QStringList {QStringLiteral("change 1-1 mtu")}));
    QCOMPARE(told(*m_model, "en1", InterfaceModel::MtuRole), QVariant(1400));
    change("en0", "ip_addresses", json(R"(["10.0.0.6/255.0.0.0"])"));
    read("en0");
    QCOMPARE(m_mirror->takeTold(), (QStringList {QStringLiteral("change 0-0 address")}));
    change("en0", "connected", text("false"));
    read("en0");
    QCOMPARE(m_mirror->takeTold(), (QStringList {QStringLiteral("change 0-0 interfaceState stateText connected")}));
}

void TestInterfaceModel::tellsRowsTogether()
{
    for (const char *name : {"a", "b", "c", "d", "e"})
        addInterface(name, wired());
    read("a");
    m_mirror->takeTold();
    read("b");
    QCOMPARE(m_mirror->takeTold(), (QStringList {QStringLiteral("change 0-1 preferred")}));
    read("e");
    QCOMPARE(m_mirror->takeTold(),
             (QStringList {QStringLiteral("change 1-1 preferred"), QStringLiteral("change 4-4 preferred")}));
    changeStatus("priority", json(R"(["b","a","c","e"])"));
    change("c", "mtu", ZopVariant(1400));
    read("e");
    QCOMPARE(m_mirror->takeTold(),
             (QStringList {QStringLiteral("change 0-1 priority"), QStringLiteral("change 2-2 priority mtu"),
                           QStringLiteral("change 4-4 priority")}));
}

void TestInterfaceModel::tellsNothingAnew()
{
    addInterface("en0", wired());
    read("en0");
    m_mirror->takeTold();
    change("en0", "mtu", ZopVariant(1500));
    read("en0");
    m_model->setConfiguring(QStringLiteral("en0"), false);
    m_model->setLeaseTime(5000);
    QCOMPARE(m_mirror->takeTold(), QStringList());
}

void TestInterfaceModel::tellsTheStates_data()
{
    QTest::addColumn<QByteArray>("connected");
    QTest::addColumn<QByteArray>("up");
    QTest::addColumn<QByteArray>("manual");
    QTest::addColumn<bool>("hasAddress");
    QTest::addColumn<bool>("configuring");
    QTest::addColumn<InterfaceModel::State>("state");
    QTest::addColumn<QString>("stateText");
    const auto row = [](const char *connected, const char *up, const char *manual, bool hasAddress, bool configuring,
                        InterfaceModel::State state, const char *stateText) {
        QTest::addRow("connected %s, up %s, manual %s, address %d, configuring %d", connected, up, manual, hasAddress,
                      configuring)
            << QByteArray(connected) << QByteArray(up) << QByteArray(manual) << hasAddress << configuring << state
            << stateText;
    };
    row("true", "true", "no", true, true, InterfaceModel::Configuring, "Its settings are being changed.");
    row("false", "false", "no", false, true, InterfaceModel::Configuring, "Its settings are being changed.");
    row("true", "true", "no", true, false, InterfaceModel::Connected, "Connected.");
    row("true", "true", "no", false, false, InterfaceModel::Connected, "Connected.");
    row("true", "false", "yes", true, false, InterfaceModel::Connected, "Connected.");
    row("false", "false", "no", false, false, InterfaceModel::Unavailable, "No link: it cannot be used now.");
    row("false", "false", "yes", true, false, InterfaceModel::Unavailable, "No link: it cannot be used now.");
    row("false", "true", "no", false, false, InterfaceModel::WithoutAddress, "It has not got an address.");
    row("false", "true", "no", true, false, InterfaceModel::Disconnected, "Not connected.");
    row("false", "true", "yes", false, false, InterfaceModel::Disconnected, "Not connected.");
}

void TestInterfaceModel::tellsTheStates()
{
    QFETCH(QByteArray, connected);
    QFETCH(QByteArray, up);
    QFETCH(QByteArray, manual);
    QFETCH(bool, hasAddress);
    QFETCH(bool, configuring);
    m_model->setLeaseTime(0);
    addInterface("en0",
                 with(with(with(with(wired(), "connected", text(connected.constData())), "up", text(up.constData())),
                           "manual", text(manual.constData())),
                      "ip_addresses", json(hasAddress ? R"(["10.0.0.5/255.0.0.0"])" : "[]")));
    m_model->setConfiguring(QStringLiteral("en0"), configuring);
    read();
    QTEST(state(*m_model, "en0"), "state");
    QTEST(told(*m_model, "en0", InterfaceModel::StateTextRole).toString(), "stateText");
}

void TestInterfaceModel::waitsForALease()
{
    QCOMPARE(m_model->leaseTime(), 5000);
    QSignalSpy leaseTimeChanged(m_model.get(), &InterfaceModel::leaseTimeChanged);
    m_model->setLeaseTime(300);
    m_model->setLeaseTime(300);
    QCOMPARE(leaseTimeChanged.count(), 1);
    addInterface("en0", unplugged());
    QElapsedTimer timer;
    timer.start();
    read();
    QCOMPARE(state(*m_model, "en0"), InterfaceModel::Obtaining);
    QCOMPARE(told(*m_model, "en0", InterfaceModel::StateTextRole), QVariant(QStringLiteral("Waiting for an address.")));
    m_mirror->takeTold();
    QTRY_COMPARE(state(*m_model, "en0"), InterfaceModel::WithoutAddress);
    QVERIFY2(timer.elapsed() >= 300, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(m_mirror->takeTold(), (QStringList {QStringLiteral("change 0-0 interfaceState stateText")}));
    m_model->setLeaseTime(5000);
    QCOMPARE(state(*m_model, "en0"), InterfaceModel::Obtaining);
    change("en0", "connected", text("true"));
    read();
    QCOMPARE(state(*m_model, "en0"), InterfaceModel::Connected);
}

/*! What has had an address meanwhile waits anew; a request that is over does not. */
void TestInterfaceModel::waitsForALeaseFromItsLoss()
{
    m_model->setLeaseTime(500);
    addInterface("en0", unplugged());
    addInterface("en1", unplugged());
    m_model->setConfiguring(QStringLiteral("en0"), true);
    read();
    QTRY_COMPARE(state(*m_model, "en1"), InterfaceModel::WithoutAddress);
    QCOMPARE(state(*m_model, "en0"), InterfaceModel::Configuring);
    m_model->setConfiguring(QStringLiteral("en0"), false);
    QCOMPARE(state(*m_model, "en0"), InterfaceModel::WithoutAddress);
    change("en0", "connected", text("true"));
    read();
    change("en0", "connected", text("false"));
    read();
    QCOMPARE(state(*m_model, "en0"), InterfaceModel::Obtaining);
    m_model->setLeaseTime(0);
    QCOMPARE(state(*m_model, "en0"), InterfaceModel::WithoutAddress);
}

void TestInterfaceModel::waitsForSeveralLeases()
{
    m_model->setLeaseTime(600);
    addInterface("en0", unplugged());
    read();
    QElapsedTimer timer;
    timer.start();
    QTRY_VERIFY(timer.elapsed() >= 300);
    addInterface("en1", unplugged());
    read();
    const QSignalSpy changed(m_model.get(), &InterfaceModel::dataChanged);
    QTRY_COMPARE(changed.count(), 1);
    QCOMPARE(state(*m_model, "en0"), InterfaceModel::WithoutAddress);
    QCOMPARE(state(*m_model, "en1"), InterfaceModel::Obtaining);
    QTRY_COMPARE(state(*m_model, "en1"), InterfaceModel::WithoutAddress);
}

void TestInterfaceModel::waitsForEachLease()
{
    m_model->setLeaseTime(300);
    QElapsedTimer timer;
    timer.start();
    addInterface("en0", unplugged());
    read();
    QTRY_VERIFY(timer.elapsed() > 100);
    addInterface("en1", unplugged());
    read();
    m_mirror->takeTold();
    QTRY_COMPARE(state(*m_model, "en1"), InterfaceModel::WithoutAddress);
    QCOMPARE(m_mirror->takeTold(),
             (QStringList {QStringLiteral("change 0-0 interfaceState stateText"),
                           QStringLiteral("change 1-1 interfaceState stateText")}));
}

void TestInterfaceModel::isConfiguring()
{
    addInterface("en0", wired());
    addInterface("en1", wired());
    read();
    m_mirror->takeTold();
    m_model->setConfiguring(QStringLiteral("en1"), true);
    m_model->setConfiguring(QStringLiteral("en1"), true);
    QCOMPARE(m_mirror->takeTold(), (QStringList {QStringLiteral("change 1-1 interfaceState stateText")}));
    QCOMPARE(state(*m_model, "en1"), InterfaceModel::Configuring);
    QCOMPARE(state(*m_model, "en0"), InterfaceModel::Connected);
    m_model->setConfiguring(QStringLiteral("en1"), false);
    QCOMPARE(m_mirror->takeTold(), (QStringList {QStringLiteral("change 1-1 interfaceState stateText")}));
    QCOMPARE(state(*m_model, "en1"), InterfaceModel::Connected);
}

void TestInterfaceModel::configuresWhatIsNotThereYet()
{
    m_model->setConfiguring(QStringLiteral("en0"), true);
    QCOMPARE(m_mirror->takeTold(), QStringList());
    addInterface("en0", wired());
    read();
    QCOMPARE(state(*m_model, "en0"), InterfaceModel::Configuring);
}

void TestInterfaceModel::isToldInSlots()
{
    for (const char *name : {"a", "b", "c", "d", "e", "f"})
        addInterface(name, wired());
    const QList<NetworkInterface> all = m_service->interfaces();
    const auto tell = [&](const QString &some) {
        QList<NetworkInterface> interfaces;
        std::copy_if(all.begin(), all.end(), std::back_inserter(interfaces),
                     [&some](const NetworkInterface &one) { return some.contains(one.name()); });
        m_model->setInterfaces(interfaces, some.left(1));
    };
    tell(QStringLiteral("abcd"));
    // Each change of rows is answered with something else, once.
    QStringList answers {QStringLiteral("bf"), QStringLiteral("cd"), QStringLiteral("ef"), QStringLiteral("be")};
    const auto answer = [&] {
        if (!answers.isEmpty())
            tell(answers.takeFirst());
    };
    connect(m_model.get(), &InterfaceModel::rowsAboutToBeRemoved, this, answer);
    connect(m_model.get(), &InterfaceModel::rowsInserted, this, answer);
    connect(m_model.get(), &InterfaceModel::dataChanged, this, [&] {
        m_model->setConfiguring(QStringLiteral("b"), true);
        m_model->setConfiguring(QStringLiteral("e"), true);
    });
    tell(QStringLiteral("ef"));
    QVERIFY(answers.isEmpty());
    QCOMPARE(names(*m_model), (QStringList {QStringLiteral("b"), QStringLiteral("e")}));
    QCOMPARE(told(*m_model, "b", InterfaceModel::PreferredRole), QVariant(true));
    change("b", "mtu", ZopVariant(1400));
    change("e", "mtu", ZopVariant(1300));
    read("e");
    QCOMPARE(state(*m_model, "e"), InterfaceModel::Configuring);
}

void TestInterfaceModel::hasNothingElsewhere()
{
    addInterface("en0", wired());
    read();
    QCOMPARE(m_model->data(QModelIndex(), InterfaceModel::NameRole), QVariant());
    QCOMPARE(m_model->data(m_model->index(1), InterfaceModel::NameRole), QVariant());
    QCOMPARE(m_model->data(m_model->index(0), Qt::DecorationRole), QVariant());
    QCOMPARE(m_model->rowCount(m_model->index(0)), 0);
}

QTEST_GUILESS_MAIN(TestInterfaceModel)
#include "tst_interfacemodel.moc"
