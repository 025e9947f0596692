// SPDX-License-Identifier: Apache-2.0
#include "metaobject.h"
#include "networkinterfaceservice.h"
#include "networklibraryexports.h"
#include "zopdouble.h"

#include <QtTest/QtTest>

#include <dlfcn.h>

using namespace morvek;

class TestNetworkLibraryExports : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void namesAreNotDecorated();
    void makesAndDeletesAService();
    void deleteIgnoresNull();
    void servicesAreIndependent();
};

void TestNetworkLibraryExports::namesAreNotDecorated()
{
    QVERIFY(dlsym(RTLD_DEFAULT, "newNetworkInterfaceService"));
    QVERIFY(dlsym(RTLD_DEFAULT, "deleteNetworkInterfaceService"));
}

void TestNetworkLibraryExports::makesAndDeletesAService()
{
    NetworkInterfaceService *service = newNetworkInterfaceService();
    QVERIFY(service);
    QVERIFY(!service->parent());
    QVERIFY(service->available());
    QVERIFY(!service->ready());
    const QPointer<NetworkInterfaceService> alive(service);
    deleteNetworkInterfaceService(&service);
    QVERIFY(!alive);
    QVERIFY(!service);
    deleteNetworkInterfaceService(&service);
    QVERIFY(!service);
}

void TestNetworkLibraryExports::deleteIgnoresNull()
{
    deleteNetworkInterfaceService(nullptr);
    NetworkInterfaceService *none = nullptr;
    deleteNetworkInterfaceService(&none);
    QVERIFY(!none);
}

void TestNetworkLibraryExports::servicesAreIndependent()
{
    NetworkInterfaceService *first = newNetworkInterfaceService();
    NetworkInterfaceService *second = newNetworkInterfaceService();
    QVERIFY(first != second);
    const QPointer<NetworkInterfaceService> alive(second);
    deleteNetworkInterfaceService(&first);
    QVERIFY(alive);
    deleteNetworkInterfaceService(&second);
    QVERIFY(!alive);
}

QTEST_GUILESS_MAIN(TestNetworkLibraryExports)
#include "tst_networklibraryexports.moc"
