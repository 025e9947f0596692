// SPDX-License-Identifier: Apache-2.0
#include "faultplan.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

/*! A fault that says by its code which one it is. */
Fault makeFault(int code, const char *message, const char *interface, int skip, int times)
{
    Fault fault;
    fault.code = code;
    fault.message = QLatin1String(message);
    fault.interface = QLatin1String(interface);
    fault.skip = skip;
    fault.times = times;
    return fault;
}

int codeOf(const Fault *fault)
{
    return fault ? fault->code : 0;
}

} // namespace

class FaultPlanTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutFaults();
    void matchesMessageAndInterface();
    void matchesName();
    void countsTimes();
    void skipsFirst();
    void firstThatFits();
    void addedOnesComeFirst();
    void spentOnesMakeRoom();
    void clears();
};

void FaultPlanTest::withoutFaults()
{
    FaultPlan plan;
    QVERIFY(!plan.next(QStringLiteral("net_connected"), QStringLiteral("eth0"), QString()));
}

void FaultPlanTest::matchesMessageAndInterface()
{
    FaultPlan plan({makeFault(7, "net_connected", "eth0", 0, -1)});
    QCOMPARE(codeOf(plan.next(QStringLiteral("net_disconnected"), QStringLiteral("eth0"), QString())), 0);
    QCOMPARE(codeOf(plan.next(QStringLiteral("net_connected"), QStringLiteral("wlan0"), QString())), 0);
    QCOMPARE(codeOf(plan.next(QStringLiteral("net_connected"), QString(), QString())), 0);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(codeOf(plan.next(QStringLiteral("net_connected"), QStringLiteral("eth0"), QString())), 7);
}

void FaultPlanTest::matchesName()
{
    Fault fault = makeFault(7, "wnet_new", "", 0, -1);
    fault.ssid = QStringLiteral("Garage");
    FaultPlan plan({fault});
    QCOMPARE(codeOf(plan.next(QStringLiteral("wnet_new"), QString(), QStringLiteral("Home"))), 0);
    QCOMPARE(codeOf(plan.next(QStringLiteral("wnet_new"), QString(), QString())), 0);
    QCOMPARE(codeOf(plan.next(QStringLiteral("wnet_new"), QString(), QStringLiteral("Garage"))), 7);
    QCOMPARE(codeOf(plan.next(QStringLiteral("wnet_select"), QString(), QStringLiteral("Garage"))), 0);
}

void FaultPlanTest::countsTimes()
{
    FaultPlan plan({makeFault(7, "", "", 0, 2)});
    QCOMPARE(codeOf(plan.next(QStringLiteral("net_connected"), QStringLiteral("eth0"), QString())), 7);
    QCOMPARE(codeOf(plan.next(QStringLiteral("nonsense"), QString(), QString())), 7);
    QCOMPARE(codeOf(plan.next(QStringLiteral("net_connected"), QStringLiteral("eth0"), QString())), 0);
}

void FaultPlanTest::skipsFirst()
{
    FaultPlan plan({makeFault(7, "net_connected", "", 2, 1)});
    QCOMPARE(codeOf(plan.next(QStringLiteral("net_connected"), QStringLiteral("eth0"), QString())), 0);
    QCOMPARE(codeOf(plan.next(QStringLiteral("net_disconnected"), QStringLiteral("eth0"), QString())), 0);
    QCOMPARE(codeOf(plan.next(QStringLiteral("net_connected"), QStringLiteral("wlan0"), QString())), 0);
    QCOMPARE(codeOf(plan.next(QStringLiteral("net_connected"), QStringLiteral("eth0"), QString())), 7);
    QCOMPARE(codeOf(plan.next(QStringLiteral("net_connected"), QStringLiteral("eth0"), QString())), 0);
}

void FaultPlanTest::firstThatFits()
{
    FaultPlan plan(
        {makeFault(1, "", "wlan0", 0, -1), makeFault(2, "net_connected", "", 0, 1), makeFault(3, "", "", 0, -1)});
    QCOMPARE(codeOf(plan.next(QStringLiteral("net_connected"), QStringLiteral("wlan0"), QString())), 1);
    QCOMPARE(codeOf(plan.next(QStringLiteral("net_connected"), QStringLiteral("eth0"), QString())), 2);
    QCOMPARE(codeOf(plan.next(QStringLiteral("net_connected"), QStringLiteral("eth0"), QString())), 3);
}

void FaultPlanTest::addedOnesComeFirst()
{
    FaultPlan plan({makeFault(1, "", "", 0, 1), makeFault(2, "", "", 0, -1)});
    QVERIFY(plan.add(makeFault(3, "", "", 0, 2)));
    QVERIFY(plan.add(makeFault(4, "", "", 0, 1)));
    const auto next = [&plan] { return codeOf(plan.next(QStringLiteral("scan"), QString(), QString())); };
    QCOMPARE(next(), 3);
    QCOMPARE(next(), 3);
    QVERIFY(plan.add(makeFault(5, "", "", 0, 1)));
    QCOMPARE(next(), 4);
    QCOMPARE(next(), 5);
    QCOMPARE(next(), 1);
    QVERIFY(plan.add(makeFault(6, "", "", 0, 1)));
    QCOMPARE(next(), 6);
    QCOMPARE(next(), 2);
    QCOMPARE(next(), 2);
}

void FaultPlanTest::spentOnesMakeRoom()
{
    FaultPlan plan({makeFault(1, "", "", 0, -1)});
    QVERIFY(plan.add(makeFault(2, "", "", 0, 1)));
    for (int i = 1; i < 1000; ++i)
        QVERIFY(plan.add(makeFault(3, "", "", 0, -1)));
    QVERIFY(!plan.add(makeFault(4, "", "", 0, 1)));
    QCOMPARE(plan.faults().size(), 1001);
    QCOMPARE(codeOf(plan.next(QStringLiteral("scan"), QString(), QString())), 2);
    QVERIFY(plan.add(makeFault(4, "", "", 0, 1)));
    QVERIFY(!plan.add(makeFault(5, "", "", 0, 1)));
    QCOMPARE(plan.faults().size(), 1001);
}

void FaultPlanTest::clears()
{
    FaultPlan plan({makeFault(1, "", "", 0, -1)});
    QVERIFY(plan.add(makeFault(2, "", "", 0, -1)));
    plan.clear();
    QVERIFY(!plan.next(QStringLiteral("scan"), QString(), QString()));
    QVERIFY(plan.add(makeFault(3, "", "", 0, 1)));
    QCOMPARE(codeOf(plan.next(QStringLiteral("scan"), QString(), QString())), 3);
}

QTEST_GUILESS_MAIN(FaultPlanTest)
#include "tst_faultplan.moc"
