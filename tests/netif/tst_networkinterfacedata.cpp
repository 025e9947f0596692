// SPDX-License-Identifier: Apache-2.0
#include "networkinterfacedata.h"
#include "privatehalf.h"
#include "textform.h"

#include <QtTest/QtTest>

#include <algorithm>
#include <functional>
#include <list>
#include <type_traits>

using namespace morvek;

static_assert(NetworkInterface::Unknown == 0, "");
static_assert(NetworkInterface::Wired == 1, "");
static_assert(NetworkInterface::Wifi == 2, "");
static_assert(NetworkInterface::Usb == 3, "");
static_assert(NetworkInterface::Cellular == 4, "");
static_assert(NetworkInterface::Bluetooth == 5, "");
static_assert(NetworkInterface::Vpn == 6, "");
static_assert(NetworkInterface::OrvanBridge == 7, "");
static_assert(std::is_same<std::underlying_type<NetworkInterface::InterfaceType>::type, int>::value, "");

namespace {

using ServicePrivate = PrivateHalfOf<NetworkInterfaceService>;
using Change = std::function<void(NetworkInterfaceData &)>;

NetworkInterface publicValue(const NetworkInterfaceData &data)
{
    NetworkInterface networkInterface;
    ServicePrivate::writeData(networkInterface, data);
    return networkInterface;
}

NetworkInterfaceConfig configuration()
{
    QNetworkAddressEntry entry;
    entry.setIp(QHostAddress(QStringLiteral("10.0.0.5")));
    entry.setNetmask(QHostAddress(QStringLiteral("255.0.0.0")));
    NetworkInterfaceConfig config;
    config.addIpAddress(entry);
    config.addGatewayAddress(QHostAddress(QStringLiteral("10.0.0.1")));
    return config;
}

/*! Changes the first address. */
void setNetmask(NetworkInterfaceConfig &config, const char *netmask)
{
    QNetworkAddressEntry entry = config.ipAddresses().first();
    entry.setNetmask(QHostAddress(QLatin1String(netmask)));
    config.setIpAddresses({entry});
}

NetworkInterfaceData complete()
{
    NetworkInterfaceData data;
    data.name = QStringLiteral("en0");
    data.priority = 2;
    data.configuration = configuration();
    data.type = NetworkInterface::Wired;
    data.macAddress = QStringLiteral("02:00:00:00:00:01");
    data.maxTransmissionUnit = 1500;
    data.available = true;
    data.connected = true;
    data.isVirtual = true;
    return data;
}

NetworkInterfaceData named(const char *name)
{
    NetworkInterfaceData data;
    data.name = QLatin1String(name);
    return data;
}

void addFieldRows()
{
    QTest::addColumn<Change>("change");
    const auto row = [](const char *name, const Change &change) { QTest::newRow(name) << change; };
    row("name", [](NetworkInterfaceData &d) { d.name = QStringLiteral("en1"); });
    row("priority", [](NetworkInterfaceData &d) { d.priority = 3; });
    row("configuration", [](NetworkInterfaceData &d) { d.configuration.setType(NetworkInterfaceConfig::Manual); });
    row("netmask", [](NetworkInterfaceData &d) { setNetmask(d.configuration, "255.255.0.0"); });
    row("no netmask", [](NetworkInterfaceData &d) { setNetmask(d.configuration, ""); });
    row("a further address", [](NetworkInterfaceData &d) { d.configuration.addIpAddress(QNetworkAddressEntry()); });
    row("no address", [](NetworkInterfaceData &d) { d.configuration.setIpAddresses({}); });
    row("gateway", [](NetworkInterfaceData &d) {
        d.configuration.setGatewayAddresses({QHostAddress(QStringLiteral("10.0.0.2"))});
    });
    row("a further gateway", [](NetworkInterfaceData &d) { d.configuration.addGatewayAddress(QHostAddress()); });
    row("no gateway", [](NetworkInterfaceData &d) { d.configuration.setGatewayAddresses({}); });
    row("type", [](NetworkInterfaceData &d) { d.type = NetworkInterface::Wifi; });
    row("macAddress", [](NetworkInterfaceData &d) { d.macAddress = QStringLiteral("02:00:00:00:00:02"); });
    row("maxTransmissionUnit", [](NetworkInterfaceData &d) { d.maxTransmissionUnit = 1400; });
    row("available", [](NetworkInterfaceData &d) { d.available = false; });
    row("connected", [](NetworkInterfaceData &d) { d.connected = false; });
    row("isVirtual", [](NetworkInterfaceData &d) { d.isVirtual = false; });
}

} // namespace

Q_DECLARE_METATYPE(Change)

class TestNetworkInterfaceData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults();
    void fieldsAreInOrder();
    void emptyInterface();
    void emptinessLooksAtEveryField_data();
    void emptinessLooksAtEveryField();
    void everyFieldReachesThePublicValue();
    void equalityLooksAtEveryField_data() { addFieldRows(); }
    void equalityLooksAtEveryField();
    void equalityLooksAtEveryFieldOfParents_data() { addFieldRows(); }
    void equalityLooksAtEveryFieldOfParents();
    void sharedParentEndsTheWalk();
    void oneParentMissing();
    void parentAgainstPublicInterface();
    void circlesEnd_data();
    void circlesEnd();
    void circlesThatDifferAreUnequal();
    void longChains();
    void copiesAreIndependentButShareTheParent();
    void parentCarriesItsOwnParent();
    void linksFollowTheRecordOnly();
    void linksReadNullWhenTheRecordIsGone();
    void textForm_data();
    void textForm();
    void textFormInAnyStream();
    void isAMetaType();
};

void TestNetworkInterfaceData::defaults()
{
    const NetworkInterfaceData data;
    QVERIFY(data.name.isEmpty());
    QCOMPARE(data.priority, -1);
    QVERIFY(data.configuration.isEmpty());
    QCOMPARE(int(data.type), 0);
    QVERIFY(data.macAddress.isEmpty());
    QCOMPARE(data.maxTransmissionUnit, 0);
    QCOMPARE(data.available, false);
    QCOMPARE(data.connected, false);
    QCOMPARE(data.isVirtual, false);
    QVERIFY(data.parent == nullptr);
    QVERIFY(data.isEmpty());
}

void TestNetworkInterfaceData::fieldsAreInOrder()
{
    const NetworkInterfaceData data;
    const QList<const void *> fields {
        &data.name,      &data.priority,   &data.configuration,
        &data.type,      &data.macAddress, &data.maxTransmissionUnit,
        &data.available, &data.connected,  &data.isVirtual,
        &data.parent,
    };
    QVERIFY(std::is_sorted(fields.begin(), fields.end()));
}

void TestNetworkInterfaceData::emptyInterface()
{
    const NetworkInterface networkInterface;
    QVERIFY(networkInterface.isEmpty());
    QVERIFY(networkInterface.name().isEmpty());
    QCOMPARE(networkInterface.priority(), -1);
    QVERIFY(networkInterface.configuration().isEmpty());
    QCOMPARE(int(networkInterface.type()), 0);
    QVERIFY(networkInterface.macAddress().isEmpty());
    QCOMPARE(networkInterface.maxTransmissionUnit(), 0);
    QCOMPARE(networkInterface.available(), false);
    QCOMPARE(networkInterface.connected(), false);
    QCOMPARE(networkInterface.isVirtual(), false);
    QVERIFY(networkInterface.parent().isEmpty());
    QVERIFY(networkInterface == NetworkInterface());
}

void TestNetworkInterfaceData::emptinessLooksAtEveryField_data()
{
    QTest::addColumn<Change>("change");
    static NetworkInterfaceData parent;
    const auto row = [](const char *name, const Change &change) { QTest::newRow(name) << change; };
    row("name", [](NetworkInterfaceData &d) { d.name = QStringLiteral("a"); });
    row("priority", [](NetworkInterfaceData &d) { d.priority = 0; });
    row("configuration", [](NetworkInterfaceData &d) { d.configuration.setType(NetworkInterfaceConfig::Manual); });
    row("type", [](NetworkInterfaceData &d) { d.type = NetworkInterface::Wired; });
    row("macAddress", [](NetworkInterfaceData &d) { d.macAddress = QStringLiteral("a"); });
    row("maxTransmissionUnit", [](NetworkInterfaceData &d) { d.maxTransmissionUnit = 1; });
    row("available", [](NetworkInterfaceData &d) { d.available = true; });
    row("connected", [](NetworkInterfaceData &d) { d.connected = true; });
    row("isVirtual", [](NetworkInterfaceData &d) { d.isVirtual = true; });
    row("parent", [](NetworkInterfaceData &d) { d.parent = &parent; });
}

void TestNetworkInterfaceData::emptinessLooksAtEveryField()
{
    QFETCH(Change, change);
    NetworkInterfaceData data;
    change(data);
    QVERIFY(!data.isEmpty());
    QVERIFY(!publicValue(data).isEmpty());
}

void TestNetworkInterfaceData::everyFieldReachesThePublicValue()
{
    NetworkInterfaceData parent = named("bridge");
    NetworkInterfaceData data = complete();
    data.parent = &parent;
    NetworkInterface networkInterface = publicValue(data);
    QCOMPARE(networkInterface.name(), QStringLiteral("en0"));
    QCOMPARE(networkInterface.priority(), 2);
    QVERIFY(networkInterface.configuration() == configuration());
    QCOMPARE(int(networkInterface.type()), 1);
    QCOMPARE(networkInterface.macAddress(), QStringLiteral("02:00:00:00:00:01"));
    QCOMPARE(networkInterface.maxTransmissionUnit(), 1500);
    QCOMPARE(networkInterface.available(), true);
    QCOMPARE(networkInterface.connected(), true);
    QCOMPARE(networkInterface.isVirtual(), true);
    QCOMPARE(networkInterface.parent().name(), QStringLiteral("bridge"));
    ServicePrivate::writeData(networkInterface, NetworkInterfaceData());
    QVERIFY(networkInterface.isEmpty());
    ServicePrivate::writeData(networkInterface, data);
    QVERIFY(data == networkInterface);
}

void TestNetworkInterfaceData::equalityLooksAtEveryField()
{
    QFETCH(Change, change);
    const NetworkInterfaceData reference = complete();
    NetworkInterfaceData changed = complete();
    QVERIFY(reference == changed);
    QVERIFY(!(reference != changed));
    QVERIFY(reference == publicValue(changed));
    QVERIFY(!(reference != publicValue(changed)));
    QVERIFY(publicValue(reference) == publicValue(changed));
    QVERIFY(!(publicValue(reference) != publicValue(changed)));
    change(changed);
    QVERIFY(!(reference == changed));
    QVERIFY(reference != changed);
    QVERIFY(!(reference == publicValue(changed)));
    QVERIFY(reference != publicValue(changed));
    QVERIFY(!(publicValue(reference) == publicValue(changed)));
    QVERIFY(publicValue(reference) != publicValue(changed));
}

void TestNetworkInterfaceData::equalityLooksAtEveryFieldOfParents()
{
    QFETCH(Change, change);
    NetworkInterfaceData grandparents[2] {complete(), complete()};
    NetworkInterfaceData parents[2] {complete(), complete()};
    NetworkInterfaceData children[2] {named("child"), named("child")};
    for (int i = 0; i < 2; ++i) {
        parents[i].parent = &grandparents[i];
        children[i].parent = &parents[i];
    }
    QVERIFY(children[0] == children[1]);
    QVERIFY(children[0] == publicValue(children[1]));
    QVERIFY(publicValue(children[0]) == publicValue(children[1]));
    change(grandparents[1]);
    QVERIFY(children[0] != children[1]);
    QVERIFY(children[1] != children[0]);
    QVERIFY(children[0] != publicValue(children[1]));
    QVERIFY(children[1] != publicValue(children[0]));
    QVERIFY(publicValue(children[0]) != publicValue(children[1]));
}

void TestNetworkInterfaceData::sharedParentEndsTheWalk()
{
    NetworkInterfaceData parent = complete();
    NetworkInterfaceData first = named("child");
    NetworkInterfaceData second = named("child");
    first.parent = &parent;
    second.parent = &parent;
    QVERIFY(first == second);
    QVERIFY(first == publicValue(second));
    second.name = QStringLiteral("other");
    QVERIFY(first != second);
}

void TestNetworkInterfaceData::oneParentMissing()
{
    NetworkInterfaceData parent = named("parent");
    const NetworkInterfaceData orphan = named("child");
    NetworkInterfaceData child = named("child");
    child.parent = &parent;
    QVERIFY(!(orphan == child));
    QVERIFY(!(child == orphan));
    QVERIFY(!(orphan == publicValue(child)));
    QVERIFY(!(child == publicValue(orphan)));
    QVERIFY(!(publicValue(orphan) == publicValue(child)));
    QVERIFY(!(publicValue(child) == publicValue(orphan)));
}

// To parent(), an empty record and none are the same; to the comparison of records they are not.
void TestNetworkInterfaceData::parentAgainstPublicInterface()
{
    NetworkInterfaceData empty;
    NetworkInterfaceData grandparent = named("grandparent");
    NetworkInterfaceData almostEmpty;
    almostEmpty.parent = &grandparent;
    const NetworkInterfaceData orphan = named("child");
    NetworkInterfaceData child = named("child");
    child.parent = &empty;
    QVERIFY(!(orphan == child));
    QVERIFY(!(child == orphan));
    QVERIFY(orphan == publicValue(child));
    QVERIFY(child == publicValue(orphan));
    child.parent = &almostEmpty;
    QVERIFY(!(orphan == publicValue(child)));
    QVERIFY(!(child == publicValue(orphan)));
    almostEmpty.parent = &empty;
    QVERIFY(!(orphan == publicValue(child)));
    QVERIFY(child == publicValue(orphan));
}

void TestNetworkInterfaceData::circlesEnd_data()
{
    QTest::addColumn<int>("leftTail");
    QTest::addColumn<int>("leftCircle");
    QTest::addColumn<int>("rightTail");
    QTest::addColumn<int>("rightCircle");
    for (const int leftTail : {0, 1, 2, 5})
        for (const int leftCircle : {1, 2, 3, 7})
            for (const int rightTail : {0, 3})
                for (const int rightCircle : {1, 2, 4})
                    QTest::addRow("%d+%d, %d+%d", leftTail, leftCircle, rightTail, rightCircle)
                        << leftTail << leftCircle << rightTail << rightCircle;
}

namespace {

/*! Equal records, the first \a tail of them leading into a circle of the other \a circle ones. */
QList<NetworkInterfaceData *> chainWithCircle(std::list<NetworkInterfaceData> &owner, int tail, int circle)
{
    QList<NetworkInterfaceData *> records;
    for (int i = 0; i < tail + circle; ++i) {
        owner.push_back(named("same"));
        records.append(&owner.back());
    }
    for (int i = 0; i + 1 < records.size(); ++i)
        records.at(i)->parent = records.at(i + 1);
    records.last()->parent = records.at(tail);
    return records;
}

} // namespace

void TestNetworkInterfaceData::circlesEnd()
{
    QFETCH(int, leftTail);
    QFETCH(int, leftCircle);
    QFETCH(int, rightTail);
    QFETCH(int, rightCircle);
    std::list<NetworkInterfaceData> owner;
    const NetworkInterfaceData &left = *chainWithCircle(owner, leftTail, leftCircle).first();
    const NetworkInterfaceData &right = *chainWithCircle(owner, rightTail, rightCircle).first();
    QVERIFY(left == right);
    QVERIFY(!(left != right));
    QVERIFY(left == publicValue(right));
    QVERIFY(publicValue(left) == publicValue(right));
    QVERIFY(left == publicValue(left));
    NetworkInterfaceData orphan = named("same");
    QVERIFY(left != orphan);
    QVERIFY(orphan != left);
    QVERIFY(orphan != publicValue(left));
    QVERIFY(left != publicValue(orphan));
    QVERIFY(!publicValue(left).isEmpty());
    QVERIFY(!::textForm(publicValue(left)).isEmpty());
}

// Each record of a circle is compared before the circle counts as equal.
void TestNetworkInterfaceData::circlesThatDifferAreUnequal()
{
    for (int tail = 0; tail < 6; ++tail) {
        for (int circle = 1; circle < 10; ++circle) {
            for (int changed = 0; changed < tail + circle; ++changed) {
                std::list<NetworkInterfaceData> owner;
                const auto left = chainWithCircle(owner, tail, circle);
                const auto right = chainWithCircle(owner, tail, circle);
                right.at(changed)->priority = 9;
                QVERIFY(*left.first() != *right.first());
                QVERIFY(*left.first() != publicValue(*right.first()));
                QVERIFY(*right.first() != publicValue(*left.first()));
            }
        }
    }
}

// A daemon that stacks many interfaces must not exhaust the stack.
void TestNetworkInterfaceData::longChains()
{
    constexpr int Length = 100000;
    std::list<NetworkInterfaceData> owner;
    NetworkInterfaceData *tops[2] = {nullptr, nullptr};
    for (NetworkInterfaceData *&top : tops) {
        for (int i = 0; i < Length; ++i) {
            owner.push_back(named("same"));
            owner.back().parent = top;
            top = &owner.back();
        }
    }
    QVERIFY(*tops[0] == *tops[1]);
    QVERIFY(*tops[0] == publicValue(*tops[1]));
    owner.front().priority = 9;
    QVERIFY(*tops[0] != *tops[1]);
    QVERIFY(*tops[0] != publicValue(*tops[1]));
}

void TestNetworkInterfaceData::copiesAreIndependentButShareTheParent()
{
    NetworkInterfaceData parent = named("parent");
    NetworkInterfaceData data = complete();
    data.parent = &parent;
    NetworkInterface source = publicValue(data);
    const NetworkInterface copy(source);
    NetworkInterface assigned;
    assigned = source;
    QVERIFY(copy == source);
    NetworkInterfaceData rewritten = named("en9");
    ServicePrivate::writeData(source, rewritten);
    QCOMPARE(copy.name(), QStringLiteral("en0"));
    QCOMPARE(assigned.name(), QStringLiteral("en0"));
    parent.priority = 7;
    QCOMPARE(copy.parent().priority(), 7);
    QCOMPARE(assigned.parent().priority(), 7);
    const NetworkInterface &same = assigned;
    assigned = same;
    QVERIFY(assigned == copy);
    NetworkInterfaceData &sameData = data;
    data = sameData;
    QVERIFY(data == copy);
}

void TestNetworkInterfaceData::parentCarriesItsOwnParent()
{
    NetworkInterfaceData grandparent = named("grandparent");
    NetworkInterfaceData parent = complete();
    parent.parent = &grandparent;
    NetworkInterfaceData child = named("child");
    child.parent = &parent;
    const NetworkInterface networkInterface = publicValue(child);
    QVERIFY(parent == networkInterface.parent());
    QCOMPARE(networkInterface.parent().parent().name(), QStringLiteral("grandparent"));
    QVERIFY(networkInterface.parent().parent().parent().isEmpty());
}

// A copy of a record is another record: what points to the one does not point to the other.
void TestNetworkInterfaceData::linksFollowTheRecordOnly()
{
    NetworkInterfaceData parent = named("parent");
    NetworkInterfaceData other = named("other");
    NetworkInterfaceData first;
    NetworkInterfaceData second;
    first.parent = &parent;
    second.parent = &other;
    other = parent;
    QVERIFY(first.parent == &parent);
    QVERIFY(second.parent == &other);
    QVERIFY(first.parent != second.parent);
    {
        const NetworkInterfaceData copy(parent);
        QVERIFY(copy == parent);
    }
    QVERIFY(first.parent == &parent);
    QCOMPARE(first.parent->name, QStringLiteral("parent"));
    first.parent = nullptr;
    QVERIFY(!first.parent);
    first.parent = &parent;
    const NetworkInterfaceData copyOfChild(first);
    QVERIFY(copyOfChild.parent == &parent);
}

void TestNetworkInterfaceData::linksReadNullWhenTheRecordIsGone()
{
    NetworkInterfaceData child = named("child");
    NetworkInterface held;
    {
        NetworkInterfaceData parent = named("parent");
        child.parent = &parent;
        held = publicValue(child);
        QCOMPARE(held.parent().name(), QStringLiteral("parent"));
        QVERIFY(child == held);
    }
    QVERIFY(child.parent == nullptr);
    QVERIFY(held.parent().isEmpty());
    QVERIFY(child == held);
    QVERIFY(held == held);
    QVERIFY(named("child") == child);
    QVERIFY(named("child") == held);
    child = NetworkInterfaceData();
    QVERIFY(child.isEmpty());
}

void TestNetworkInterfaceData::textForm_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const Change &change, const char *text) {
        QTest::newRow(name) << change << QString::fromLatin1(text);
    };
    row(
        "empty", [](NetworkInterfaceData &) {}, "NetworkInterace{empty}");
    row(
        "priority 0", [](NetworkInterfaceData &d) { d.priority = 0; },
        "NetworkInterface {name:,type:unknown,mac:,available:0,priority:0,connected:false,"
        "configuration:NetworkInterfaceConfig{empty}}");
    row(
        "complete", [](NetworkInterfaceData &d) { d = complete(); },
        "NetworkInterface {name:en0,type:wired,mac:02:00:00:00:00:01,available:1,priority:2,connected:true,"
        "configuration:NetworkInterfaceConfig{type:autoip:[10.0.0.5/255.0.0.0]gateways:[10.0.0.1]}}");
    const char *const types[] = {"unknown", "wired", "wifi", "usb", "cellular", "bluetooth", "vpn", "orvanbridge"};
    for (int type = 0; type < 8; ++type) {
        QTest::newRow(types[type])
            << Change([type](NetworkInterfaceData &d) {
                   d.maxTransmissionUnit = 1;
                   d.type = NetworkInterface::InterfaceType(type);
               })
            << QStringLiteral("NetworkInterface {name:,type:%1,mac:,available:0,priority:-1,connected:false,"
                              "configuration:NetworkInterfaceConfig{empty}}")
                   .arg(QLatin1String(types[type]));
    }
    row(
        "type out of range", [](NetworkInterfaceData &d) { d.type = NetworkInterface::InterfaceType(8); },
        "NetworkInterface {name:,type:,mac:,available:0,priority:-1,connected:false,"
        "configuration:NetworkInterfaceConfig{empty}}");
    row(
        "negative type", [](NetworkInterfaceData &d) { d.type = NetworkInterface::InterfaceType(-1); },
        "NetworkInterface {name:,type:,mac:,available:0,priority:-1,connected:false,"
        "configuration:NetworkInterfaceConfig{empty}}");
}

void TestNetworkInterfaceData::textForm()
{
    QFETCH(Change, change);
    QFETCH(QString, text);
    NetworkInterfaceData data;
    change(data);
    QCOMPARE(::textForm(publicValue(data)), text);
}

void TestNetworkInterfaceData::textFormInAnyStream()
{
    NetworkInterfaceData data;
    data.priority = 26;
    data.available = true;
    QCOMPARE(::textFormInAnyStream(publicValue(data)),
             QStringLiteral("NetworkInterface {name:,type:unknown,mac:,available:1,priority:26,connected:false,"
                            "configuration:NetworkInterfaceConfig{empty}}"));
}

void TestNetworkInterfaceData::isAMetaType()
{
    const int type = qRegisterMetaType<NetworkInterface>();
    QCOMPARE(QByteArray(QMetaType::typeName(type)), QByteArray("morvek::NetworkInterface"));
    const NetworkInterface networkInterface = publicValue(complete());
    QVERIFY(QVariant::fromValue(networkInterface).value<NetworkInterface>() == networkInterface);
}

QTEST_GUILESS_MAIN(TestNetworkInterfaceData)
#include "tst_networkinterfacedata.moc"
