// SPDX-License-Identifier: Apache-2.0
#include "hotspotservice.h"
#include "networkinterfaceservice.h"
#include "networklibraryexports.h"
#include "wifiservice.h"
#include "zopdouble.h"

#include <QtTest/QtTest>

#include <dlfcn.h>

using namespace morvek;

namespace {

/*! The entry points of one service. */
template<typename T>
struct Entry
{
    using Service = T;
    const char *newName;
    T *(*newService)();
    const char *deleteName;
    void (*deleteService)(T **);
};

/*! Calls \a test with the entry points of each service. */
template<typename Test>
void forEachService(Test test)
{
    test(
        Entry<HotSpotService> {"newHotSpotService", &newHotSpotService, "deleteHotSpotService", &deleteHotSpotService});
    test(Entry<NetworkInterfaceService> {"newNetworkInterfaceService", &newNetworkInterfaceService,
                                         "deleteNetworkInterfaceService", &deleteNetworkInterfaceService});
    test(Entry<WifiService> {"newWifiService", &newWifiService, "deleteWifiService", &deleteWifiService});
}

} // namespace

class TestNetworkLibraryExports : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { ZopDouble::reset(); }

    void namesAreNotDecorated();
    void makesAndDeletesAService();
    void deleteIgnoresNull();
    void servicesAreIndependent();
};

void TestNetworkLibraryExports::namesAreNotDecorated()
{
    forEachService([](const auto &entry) {
        QCOMPARE(dlsym(RTLD_DEFAULT, entry.newName), reinterpret_cast<void *>(entry.newService));
        QCOMPARE(dlsym(RTLD_DEFAULT, entry.deleteName), reinterpret_cast<void *>(entry.deleteService));
    });
}

void TestNetworkLibraryExports::makesAndDeletesAService()
{
    forEachService([](const auto &entry) {
        auto *service = entry.newService();
        QVERIFY(service);
        QVERIFY(!service->parent());
        QVERIFY(service->available());
        QVERIFY(!service->ready());
        const QPointer<QObject> alive(service);
        bool wasThere = false;
        connect(service, &QObject::destroyed, [&] { wasThere = service; });
        entry.deleteService(&service);
        QVERIFY(!alive);
        QVERIFY(wasThere); // the pointer is cleared after the service is gone
        QVERIFY(!service);
        entry.deleteService(&service);
        QVERIFY(!service);
    });
}

void TestNetworkLibraryExports::deleteIgnoresNull()
{
    forEachService([](const auto &entry) {
        entry.deleteService(nullptr);
        typename std::decay<decltype(entry)>::type::Service *none = nullptr;
        entry.deleteService(&none);
        QVERIFY(!none);
    });
}

void TestNetworkLibraryExports::servicesAreIndependent()
{
    forEachService([](const auto &entry) {
        auto *first = entry.newService();
        auto *second = entry.newService();
        QVERIFY(first != second);
        const QPointer<QObject> alive(second);
        entry.deleteService(&first);
        QVERIFY(alive);
        entry.deleteService(&second);
        QVERIFY(!alive);
    });
}

QTEST_GUILESS_MAIN(TestNetworkLibraryExports)
#include "tst_networklibraryexports.moc"
