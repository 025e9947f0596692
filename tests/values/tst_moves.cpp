// SPDX-License-Identifier: Apache-2.0
// What moving and swapping do, which is the same for each class of values.
#include "allocations.h"
#include "networkinterfacedata.h"
#include "privatehalf.h"
#include "textform.h"
#include "wifiaccesspoint.h"
#include "wificonnectionconfig.h"
#include "wifihotspot.h"

#include <QtTest/QtTest>

#include <algorithm>
#include <iterator>
#include <type_traits>
#include <vector>

using namespace morvek;

namespace {

QString nameOf(const NetworkInterface &value)
{
    return value.name();
}

QString nameOf(const NetworkInterfaceConfig &value)
{
    return value.ipAddresses().value(0).ip().toString();
}

QString nameOf(const WifiAccessPoint &value)
{
    return value.bssid();
}

QString nameOf(const WifiConnectionConfig &value)
{
    return value.ssid();
}

QString nameOf(const WifiHotspot &value)
{
    return value.name();
}

void setName(NetworkInterface &value, const QString &name)
{
    NetworkInterfaceData data;
    data.name = name;
    PrivateHalfOf<NetworkInterfaceService>::writeData(value, data);
}

void setName(NetworkInterfaceConfig &value, const QString &name)
{
    QNetworkAddressEntry address;
    address.setIp(QHostAddress(name));
    value.setIpAddresses({address});
}

void setName(WifiAccessPoint &value, const QString &name)
{
    value.setBssid(name);
}

void setName(WifiConnectionConfig &value, const QString &name)
{
    value.setSsid(name);
}

void setName(WifiHotspot &value, const QString &name)
{
    value.setName(name);
}

template<typename Value>
Value named(const char *name)
{
    Value value;
    setName(value, QLatin1String(name));
    return value;
}

template<typename Value>
void verifyNew(Value &value)
{
    Value fresh;
    QVERIFY(value == fresh);
    QVERIFY(fresh == value);
    QVERIFY(!(value != fresh));
    QCOMPARE(nameOf(value), QString());
    QCOMPARE(textForm(value), textForm(fresh));
    const Value copy(value);
    QVERIFY(copy == fresh);
    Value assigned = named<Value>("192.0.2.9");
    assigned = value;
    QVERIFY(assigned == fresh);
}

template<typename Value>
void leaveANewValue()
{
    Value source = named<Value>("192.0.2.1");
    Value constructed(std::move(source));
    QVERIFY(constructed == named<Value>("192.0.2.1"));
    verifyNew(source);

    Value assigned = named<Value>("192.0.2.2");
    assigned = std::move(constructed);
    QVERIFY(assigned == named<Value>("192.0.2.1"));
    verifyNew(constructed);

    Value twice(std::move(source));
    verifyNew(twice);
    verifyNew(source);
}

template<typename Value>
void leaveAUsableValue()
{
    Value source = named<Value>("192.0.2.1");
    const Value first(std::move(source));
    setName(source, QStringLiteral("192.0.2.2"));
    QVERIFY(source == named<Value>("192.0.2.2"));

    const Value second(std::move(source));
    source = first;
    QVERIFY(source == first);
    setName(source, QStringLiteral("192.0.2.3"));
    QVERIFY(first == named<Value>("192.0.2.1"));
    QVERIFY(second == named<Value>("192.0.2.2"));

    const Value third(std::move(source));
    const Value &same = source;
    source = same;
    verifyNew(source);
}

template<typename Value>
void keepAValueMovedToItself()
{
    Value value = named<Value>("192.0.2.1");
    Value &same = value;
    value = std::move(same);
    QVERIFY(value == named<Value>("192.0.2.1"));
}

template<typename Value>
void exchangeValues()
{
    Value left = named<Value>("192.0.2.1");
    Value right = named<Value>("192.0.2.2");
    left.swap(right);
    QVERIFY(left == named<Value>("192.0.2.2"));
    QVERIFY(right == named<Value>("192.0.2.1"));
    swap(left, right);
    QVERIFY(left == named<Value>("192.0.2.1"));
    QVERIFY(right == named<Value>("192.0.2.2"));
    std::swap(left, right);
    QVERIFY(left == named<Value>("192.0.2.2"));
    QVERIFY(right == named<Value>("192.0.2.1"));
    left.swap(left);
    QVERIFY(left == named<Value>("192.0.2.2"));
}

/*! Values with different names, in no order. */
template<typename Value>
std::vector<Value> shuffled(int count)
{
    std::vector<Value> values(static_cast<size_t>(count));
    int number = 0;
    for (Value &value : values) {
        number = (number + 7919) % count; // a prime, so that each number comes once
        setName(value, QStringLiteral("192.0.%1.%2").arg(100 + number / 100).arg(100 + number % 100));
    }
    return values;
}

/*! Sorts by the names, and tells how often the values themselves allocated. */
template<typename Iterator>
int allocationsOfSorting(Iterator begin, Iterator end)
{
    using Value = typename std::iterator_traits<Iterator>::value_type;
    const Allocations watched;
    std::sort(begin, end, [](const Value &left, const Value &right) {
        const int before = Allocations::s_made;
        const bool less = nameOf(left) < nameOf(right);
        Allocations::s_made = before; // those of reading a name
        return less;
    });
    return Allocations::s_made;
}

template<typename Value>
void sortWithoutAllocating()
{
    std::vector<Value> values = shuffled<Value>(2000);
    QList<Value> list;
    for (const Value &value : values)
        list.append(value);
    QStringList names;
    for (const Value &value : values)
        names.append(nameOf(value));
    std::sort(names.begin(), names.end());

    QCOMPARE(allocationsOfSorting(values.begin(), values.end()), 0);
    QCOMPARE(allocationsOfSorting(list.begin(), list.end()), 0);
    for (int i = 0; i < names.size(); ++i) {
        QCOMPARE(nameOf(values.at(static_cast<size_t>(i))), names.at(i));
        QCOMPARE(nameOf(list.at(i)), names.at(i));
    }
}

template<typename Value>
constexpr bool neverThrows()
{
    return std::is_nothrow_move_constructible<Value>::value && std::is_nothrow_move_assignable<Value>::value
        && std::is_nothrow_swappable<Value>::value &&noexcept(std::declval<Value &>().swap(std::declval<Value &>()));
}

static_assert(neverThrows<NetworkInterface>(), "");
static_assert(neverThrows<NetworkInterfaceConfig>(), "");
static_assert(neverThrows<WifiAccessPoint>(), "");
static_assert(neverThrows<WifiConnectionConfig>(), "");
static_assert(neverThrows<WifiHotspot>(), "");

using Play = void (*)();

} // namespace

Q_DECLARE_METATYPE(Play)

class TestMoves : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void moves_data();
    void moves();
};

template<typename Value>
void addRows(const char *name)
{
    QTest::addRow("%s: leave a new value", name) << Play(leaveANewValue<Value>);
    QTest::addRow("%s: leave a usable value", name) << Play(leaveAUsableValue<Value>);
    QTest::addRow("%s: keep a value moved to itself", name) << Play(keepAValueMovedToItself<Value>);
    QTest::addRow("%s: exchange values", name) << Play(exchangeValues<Value>);
    QTest::addRow("%s: sort without allocating", name) << Play(sortWithoutAllocating<Value>);
}

void TestMoves::moves_data()
{
    QTest::addColumn<Play>("play");
    addRows<NetworkInterface>("NetworkInterface");
    addRows<NetworkInterfaceConfig>("NetworkInterfaceConfig");
    addRows<WifiAccessPoint>("WifiAccessPoint");
    addRows<WifiConnectionConfig>("WifiConnectionConfig");
    addRows<WifiHotspot>("WifiHotspot");
}

void TestMoves::moves()
{
    QFETCH(Play, play);
    play();
}

QTEST_APPLESS_MAIN(TestMoves)
#include "tst_moves.moc"
