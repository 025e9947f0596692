// SPDX-License-Identifier: Apache-2.0
// What programs that were built earlier rely on and no header guards: where things stand, and under which names.
#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "asyncnetworkinterfaceoperation.h"
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "hotspotservice.h"
#include "metaobject.h"
#include "networkinterfaceservice.h"
#include "networklibraryexports.h"
#include "wificonnectionconfig.h"
#include "wifiservice.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <cstring>
#include <type_traits>

using namespace morvek;

namespace {

/*! A size or an alignment where pointers have 8 bytes, and where they have 4. */
constexpr size_t bytes(size_t on64Bit, size_t on32Bit)
{
    return sizeof(void *) == 8 ? on64Bit : on32Bit;
}

template<typename Type>
constexpr bool occupies(size_t on64Bit, size_t on32Bit)
{
    return sizeof(Type) == bytes(on64Bit, on32Bit) && alignof(Type) == bytes(8, 4);
}

static_assert(occupies<ServiceBase>(16, 8), "");
static_assert(occupies<NetworkInterfaceService>(24, 12), "");
static_assert(occupies<WifiService>(24, 12), "");
static_assert(occupies<HotSpotService>(24, 12), "");
static_assert(occupies<AsyncOperationError>(16, 8), "");
static_assert(occupies<AsyncOperationBase>(40, 20), "");
static_assert(occupies<AsyncNetworkInterfaceOperation>(48, 24), "");
static_assert(occupies<AsyncWifiScanOperation>(48, 24), "");
static_assert(occupies<AsyncWifiConnectOperation>(48, 24), "");
static_assert(occupies<AsyncHotspotEnableOperation>(48, 24), "");
static_assert(occupies<AsyncHotspotConfigOperation>(48, 24), "");
static_assert(occupies<NetworkInterface>(8, 4), "");
static_assert(occupies<NetworkInterfaceConfig>(8, 4), "");
static_assert(occupies<WifiAccessPoint>(8, 4), "");
static_assert(occupies<WifiConnectionConfig>(8, 4), "");
static_assert(occupies<WifiHotspot>(8, 4), "");

/*! Whether \a Enumeration stands in memory, and is passed, as \a Number. */
template<typename Enumeration, typename Number>
constexpr bool isLike()
{
    return std::is_same<std::underlying_type_t<Enumeration>, Number>::value && sizeof(Enumeration) == 4;
}

static_assert(isLike<NetworkInterface::InterfaceType, int>(), "");
static_assert(isLike<NetworkInterfaceConfig::ConfigurationType, int>(), "");
static_assert(isLike<WifiBand, int>(), "");
static_assert(isLike<WifiServiceSet, int>(), "");
static_assert(isLike<WifiCipher, int>(), "");
static_assert(isLike<WifiKeyManagementType, int>(), "");
static_assert(isLike<WifiSecurityProtocol, int>(), "");
static_assert(sizeof(QFlags<WifiCipher>) == 4, "");
static_assert(sizeof(QFlags<WifiKeyManagementType>) == 4, "");
static_assert(sizeof(QFlags<WifiSecurityProtocol>) == 4, "");

/*! Whether a list holds the very values of \a Type; otherwise it holds pointers to them. */
template<typename Type>
constexpr bool standsInLists()
{
    return !QTypeInfo<Type>::isStatic && !QTypeInfo<Type>::isLarge;
}

static_assert(standsInLists<WifiAccessPoint>(), "");
static_assert(standsInLists<NetworkInterface>(), "");
static_assert(standsInLists<NetworkInterfaceConfig>(), "");
static_assert(standsInLists<WifiConnectionConfig>(), "");
static_assert(standsInLists<WifiHotspot>(), "");
static_assert(!standsInLists<AsyncOperationError>(), "");

/*! Whether values of \a Type are copied and destroyed by their own functions, wherever Qt keeps them. */
template<typename Type>
constexpr bool isCopiedByItself()
{
    return QTypeInfo<Type>::isComplex;
}

static_assert(isCopiedByItself<WifiAccessPoint>(), "");
static_assert(isCopiedByItself<NetworkInterface>(), "");
static_assert(isCopiedByItself<NetworkInterfaceConfig>(), "");
static_assert(isCopiedByItself<WifiConnectionConfig>(), "");
static_assert(isCopiedByItself<WifiHotspot>(), "");
static_assert(isCopiedByItself<AsyncOperationError>(), "");

/*! Adds a virtual function, as programs do in classes of their own: its position tells how many \a Base has. */
template<typename Base>
class Derived : public Base
{
public:
    static quintptr virtualsOfBase() { return virtualPosition(&Derived::added); }

    virtual void added() { }
};

template<typename Type>
Type valueAt(const void *object, size_t offset)
{
    Type value;
    std::memcpy(&value, static_cast<const char *>(object) + offset, sizeof value);
    return value;
}

/*! Each method that a class adds to its base: its index, its kind, its signature, and its parameters' names. */
QStringList indexedMethods(const QMetaObject &metaObject)
{
    QStringList lines = ownMethods(metaObject);
    for (int i = 0; i < lines.size(); ++i) {
        const int index = metaObject.methodOffset() + i;
        lines[i].prepend(QStringLiteral("%1 ").arg(index));
        for (const QByteArray &name : metaObject.method(index).parameterNames())
            lines[i].append(QLatin1Char(' ') + QString::fromLatin1(name));
    }
    return lines;
}

QStringList lines(std::initializer_list<const char *> texts)
{
    QStringList result;
    for (const char *text : texts)
        result << QString::fromLatin1(text);
    return result;
}

/*! What an application does before it needs a type by its name. */
using Use = void (*)();

template<typename Operation>
Use construct()
{
    return [] { const Operation operation; };
}

struct MetaObject
{
    const QMetaObject *object;
};

} // namespace

Q_DECLARE_METATYPE(Use)
Q_DECLARE_METATYPE(MetaObject)

class TestBinaryInterface : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void namesItsTypes_data();
    void namesItsTypes();
    void declaresItsTypes_data();
    void declaresItsTypes();
    void placesItsMethods_data();
    void placesItsMethods();
    void placesItsVirtuals();
    void hasNoOtherVirtuals();
    void placesTheErrorOfAnOperation();

private:
    QTemporaryDir m_root;
};

void TestBinaryInterface::initTestCase()
{
    QVERIFY(m_root.isValid());
    qputenv("ZOP_ROOT", QFile::encodeName(m_root.path()));
}

// Runs first, so that nothing but the library has registered the types.
void TestBinaryInterface::namesItsTypes_data()
{
    QTest::addColumn<Use>("use");
    const Use interfaces = [] {
        NetworkInterfaceService *service = newNetworkInterfaceService();
        deleteNetworkInterfaceService(&service);
    };
    const Use hotspot = [] {
        HotSpotService *service = newHotSpotService();
        deleteHotSpotService(&service);
    };
    QTest::newRow("morvek::NetworkInterface") << interfaces;
    QTest::newRow("morvek::WifiHotspot") << hotspot;
    QTest::newRow("WifiHotspot") << hotspot; // as the provider's signals name it
    QTest::newRow("morvek::AsyncNetworkInterfaceOperation*") << construct<AsyncNetworkInterfaceOperation>();
    QTest::newRow("morvek::AsyncWifiScanOperation*") << construct<AsyncWifiScanOperation>();
    QTest::newRow("morvek::AsyncWifiConnectOperation*") << construct<AsyncWifiConnectOperation>();
    QTest::newRow("morvek::AsyncHotspotEnableOperation*") << construct<AsyncHotspotEnableOperation>();
    QTest::newRow("morvek::AsyncHotspotConfigOperation*") << construct<AsyncHotspotConfigOperation>();
}

void TestBinaryInterface::namesItsTypes()
{
    QFETCH(Use, use);
    use();
    QVERIFY(QMetaType::type(QTest::currentDataTag()) != QMetaType::UnknownType);
}

// A program may put these into a QVariant, or let them travel in signals of its own, without declaring them itself.
void TestBinaryInterface::declaresItsTypes_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("morvek::NetworkInterface") << qMetaTypeId<NetworkInterface>();
    QTest::newRow("morvek::NetworkInterface::InterfaceType") << qMetaTypeId<NetworkInterface::InterfaceType>();
    QTest::newRow("morvek::NetworkInterfaceConfig") << qMetaTypeId<NetworkInterfaceConfig>();
    QTest::newRow("morvek::NetworkInterfaceConfig::ConfigurationType")
        << qMetaTypeId<NetworkInterfaceConfig::ConfigurationType>();
    QTest::newRow("morvek::WifiAccessPoint") << qMetaTypeId<WifiAccessPoint>();
    QTest::newRow("morvek::WifiConnectionConfig") << qMetaTypeId<WifiConnectionConfig>();
    QTest::newRow("morvek::WifiHotspot") << qMetaTypeId<WifiHotspot>();
    QTest::newRow("morvek::WifiBand") << qMetaTypeId<WifiBand>();
    QTest::newRow("morvek::WifiCipher") << qMetaTypeId<WifiCipher>();
    QTest::newRow("morvek::WifiKeyManagementType") << qMetaTypeId<WifiKeyManagementType>();
    QTest::newRow("morvek::WifiSecurityProtocol") << qMetaTypeId<WifiSecurityProtocol>();
    QTest::newRow("morvek::WifiServiceSet") << qMetaTypeId<WifiServiceSet>();
    QTest::newRow("QFlags<morvek::WifiCipher>") << qMetaTypeId<QFlags<WifiCipher>>();
    QTest::newRow("QFlags<morvek::WifiKeyManagementType>") << qMetaTypeId<QFlags<WifiKeyManagementType>>();
    QTest::newRow("QFlags<morvek::WifiSecurityProtocol>") << qMetaTypeId<QFlags<WifiSecurityProtocol>>();
}

void TestBinaryInterface::declaresItsTypes()
{
    QFETCH(int, type);
    QCOMPARE(QByteArray(QMetaType::typeName(type)), QByteArray(QTest::currentDataTag()));
}

void TestBinaryInterface::placesItsMethods_data()
{
    QTest::addColumn<MetaObject>("metaObject");
    QTest::addColumn<QByteArray>("base");
    QTest::addColumn<QStringList>("methods");
    QTest::newRow("morvek::ServiceBase") << MetaObject {&ServiceBase::staticMetaObject} << QByteArray("QObject")
                                         << lines({"5 signal readyChanged(bool) ready"});
    QTest::newRow("morvek::NetworkInterfaceService")
        << MetaObject {&NetworkInterfaceService::staticMetaObject} << QByteArray("morvek::ServiceBase")
        << lines({
               "6 signal interfaceConfigurationChanged(morvek::NetworkInterface) networkInterface",
               "7 signal preferredInterfaceChanged(morvek::NetworkInterface) networkInterface",
               "8 signal interfaceConnected(morvek::NetworkInterface) networkInterface",
               "9 signal interfaceDisconnected(morvek::NetworkInterface) networkInterface",
           });
    QTest::newRow("morvek::WifiService") << MetaObject {&WifiService::staticMetaObject}
                                         << QByteArray("morvek::ServiceBase")
                                         << lines({
                                                "6 signal poweredChanged(bool) powered",
                                                "7 signal connectedChanged(bool) connected",
                                            });
    QTest::newRow("morvek::HotSpotService")
        << MetaObject {&HotSpotService::staticMetaObject} << QByteArray("morvek::ServiceBase")
        << lines({
               "6 signal enabledChanged(bool) enabled",
               "7 signal configurationChanged(morvek::WifiHotspot) configutaion",
           });
    QTest::newRow("morvek::AsyncOperationBase")
        << MetaObject {&AsyncOperationBase::staticMetaObject} << QByteArray("QObject") << QStringList();
    QTest::newRow("morvek::AsyncNetworkInterfaceOperation")
        << MetaObject {&AsyncNetworkInterfaceOperation::staticMetaObject} << QByteArray("morvek::AsyncOperationBase")
        << lines({
               "5 signal success(morvek::AsyncNetworkInterfaceOperation*) asyncop",
               "6 signal failure(morvek::AsyncNetworkInterfaceOperation*) asyncop",
               "7 method notifySuccess()",
               "8 method notifyFailure()",
           });
    QTest::newRow("morvek::AsyncWifiScanOperation")
        << MetaObject {&AsyncWifiScanOperation::staticMetaObject} << QByteArray("morvek::AsyncOperationBase")
        << lines({
               "5 signal success(morvek::AsyncWifiScanOperation*) asyncop",
               "6 signal failure(morvek::AsyncWifiScanOperation*) asyncop",
               "7 method notifySuccess()",
               "8 method notifyFailure()",
           });
    QTest::newRow("morvek::AsyncWifiConnectOperation")
        << MetaObject {&AsyncWifiConnectOperation::staticMetaObject} << QByteArray("morvek::AsyncOperationBase")
        << lines({
               "5 signal success(morvek::AsyncWifiConnectOperation*) asyncop",
               "6 signal failure(morvek::AsyncWifiConnectOperation*) asyncop",
               "7 method notifySuccess()",
               "8 method notifyFailure()",
           });
    QTest::newRow("morvek::AsyncHotspotEnableOperation")
        << MetaObject {&AsyncHotspotEnableOperation::staticMetaObject} << QByteArray("morvek::AsyncOperationBase")
        << lines({
               "5 signal success(morvek::AsyncHotspotEnableOperation*) asyncop",
               "6 signal failure(morvek::AsyncHotspotEnableOperation*) asyncop",
               "7 method notifySuccess()",
               "8 method notifyFailure()",
           });
    QTest::newRow("morvek::AsyncHotspotConfigOperation")
        << MetaObject {&AsyncHotspotConfigOperation::staticMetaObject} << QByteArray("morvek::AsyncOperationBase")
        << lines({
               "5 signal success(morvek::AsyncHotspotConfigOperation*) asyncop",
               "6 signal failure(morvek::AsyncHotspotConfigOperation*) asyncop",
               "7 method notifySuccess()",
               "8 method notifyFailure()",
           });
}

void TestBinaryInterface::placesItsMethods()
{
    QFETCH(MetaObject, metaObject);
    QFETCH(QByteArray, base);
    QFETCH(QStringList, methods);
    const QMetaObject &object = *metaObject.object;
    QCOMPARE(QByteArray(object.className()), QByteArray(QTest::currentDataTag()));
    QCOMPARE(QByteArray(object.superClass()->className()), base);
    QCOMPARE(indexedMethods(object), methods);
    QCOMPARE(object.propertyCount(), 1); // QObject's
    QCOMPARE(object.enumeratorCount(), 0);
    QCOMPARE(object.constructorCount(), 0);
}

void TestBinaryInterface::placesItsVirtuals()
{
    // Behind the twelve entries of QObject.
    QCOMPARE(virtualPosition(&ServiceBase::available), quintptr(12));
    QCOMPARE(virtualPosition(&ServiceBase::ready), quintptr(13));
    QCOMPARE(virtualPosition(&NetworkInterfaceService::available), quintptr(12));
    QCOMPARE(virtualPosition(&NetworkInterfaceService::ready), quintptr(13));
    QCOMPARE(virtualPosition(&WifiService::available), quintptr(12));
    QCOMPARE(virtualPosition(&WifiService::ready), quintptr(13));
    QCOMPARE(virtualPosition(&HotSpotService::available), quintptr(12));
    QCOMPARE(virtualPosition(&HotSpotService::ready), quintptr(13));
    QCOMPARE(virtualPosition(&AsyncNetworkInterfaceOperation::notifySuccess), quintptr(12));
    QCOMPARE(virtualPosition(&AsyncNetworkInterfaceOperation::notifyFailure), quintptr(13));
    QCOMPARE(virtualPosition(&AsyncWifiScanOperation::notifySuccess), quintptr(12));
    QCOMPARE(virtualPosition(&AsyncWifiScanOperation::notifyFailure), quintptr(13));
    QCOMPARE(virtualPosition(&AsyncWifiConnectOperation::notifySuccess), quintptr(12));
    QCOMPARE(virtualPosition(&AsyncWifiConnectOperation::notifyFailure), quintptr(13));
    QCOMPARE(virtualPosition(&AsyncHotspotEnableOperation::notifySuccess), quintptr(12));
    QCOMPARE(virtualPosition(&AsyncHotspotEnableOperation::notifyFailure), quintptr(13));
    QCOMPARE(virtualPosition(&AsyncHotspotConfigOperation::notifySuccess), quintptr(12));
    QCOMPARE(virtualPosition(&AsyncHotspotConfigOperation::notifyFailure), quintptr(13));
}

// A class that derives from one of these has its own behind them.
void TestBinaryInterface::hasNoOtherVirtuals()
{
    QCOMPARE(Derived<ServiceBase>::virtualsOfBase(), quintptr(14));
    QCOMPARE(Derived<NetworkInterfaceService>::virtualsOfBase(), quintptr(14));
    QCOMPARE(Derived<WifiService>::virtualsOfBase(), quintptr(14));
    QCOMPARE(Derived<HotSpotService>::virtualsOfBase(), quintptr(14));
    QCOMPARE(Derived<AsyncOperationBase>::virtualsOfBase(), quintptr(12));
    QCOMPARE(Derived<AsyncNetworkInterfaceOperation>::virtualsOfBase(), quintptr(14));
    QCOMPARE(Derived<AsyncWifiScanOperation>::virtualsOfBase(), quintptr(14));
    QCOMPARE(Derived<AsyncWifiConnectOperation>::virtualsOfBase(), quintptr(14));
    QCOMPARE(Derived<AsyncHotspotEnableOperation>::virtualsOfBase(), quintptr(14));
    QCOMPARE(Derived<AsyncHotspotConfigOperation>::virtualsOfBase(), quintptr(14));
}

// The error's text and code come behind QObject, and then whether there is an error.
void TestBinaryInterface::placesTheErrorOfAnOperation()
{
    AsyncOperationBase operation;
    QCOMPARE(valueAt<bool>(&operation, bytes(32, 16)), false);
    QString text = QStringLiteral("out of range");
    operation.setError(AsyncOperationError(1234567, text));
    QCOMPARE(valueAt<const void *>(&operation, bytes(16, 8)), static_cast<const void *>(text.data_ptr()));
    QCOMPARE(valueAt<int>(&operation, bytes(24, 12)), 1234567);
    QCOMPARE(valueAt<bool>(&operation, bytes(32, 16)), true);
}

QTEST_GUILESS_MAIN(TestBinaryInterface)

#include "tst_binaryinterface.moc"
