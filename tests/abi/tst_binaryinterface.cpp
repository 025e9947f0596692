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

static_assert(sizeof(NetworkInterface::InterfaceType) == 4, "");
static_assert(sizeof(NetworkInterfaceConfig::ConfigurationType) == 4, "");
static_assert(sizeof(WifiBand) == 4, "");
static_assert(sizeof(WifiServiceSet) == 4, "");
static_assert(sizeof(QFlags<WifiCipher>) == 4, "");
static_assert(sizeof(QFlags<WifiKeyManagementType>) == 4, "");
static_assert(sizeof(QFlags<WifiSecurityProtocol>) == 4, "");

// A list holds what may be moved itself, and pointers to anything else.
static_assert(!QTypeInfo<WifiAccessPoint>::isStatic, "");
static_assert(QTypeInfo<NetworkInterface>::isStatic, "");
static_assert(QTypeInfo<WifiHotspot>::isStatic, "");

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
    void placesItsMethods_data();
    void placesItsMethods();
    void placesItsVirtuals();

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

QTEST_GUILESS_MAIN(TestBinaryInterface)

#include "tst_binaryinterface.moc"
