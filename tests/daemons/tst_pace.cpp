// SPDX-License-Identifier: Apache-2.0
#include "pace.h"

#include <QtTest/QtTest>

using namespace morvek;

class PaceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void factor();
    void drawsWithinTheRange();
    void picksWithoutTheFactor();
    void seedRepeatsEveryChoice();
    void calls();
    void doesNotCallWhatIsGone();
    void heldTimeStandsStill();
    void heldTimePassesInOrder();
    void heldDoesNotCallWhatIsGone();
};

void PaceTest::factor()
{
    QCOMPARE(Pace(1, 0).real(1000), 1000);
    QCOMPARE(Pace(10, 0).real(1000), 100);
    QCOMPARE(Pace(0.5, 0).real(1000), 2000);
    QCOMPARE(Pace(10000, 0).real(1000), 0);
    QCOMPARE(Pace(0.01, 0).real(24 * 60 * 60 * 1000), 2147483647);
}

void PaceTest::drawsWithinTheRange()
{
    Pace pace(1, 42);
    QSet<int> drawn;
    for (int i = 0; i < 200; ++i)
        drawn += pace.draw({3, 5});
    QCOMPARE(drawn, QSet<int>({3, 4, 5}));
    QCOMPARE(pace.draw({7, 7}), 7);
}

void PaceTest::picksWithoutTheFactor()
{
    Pace pace(100, 42);
    QSet<int> picked;
    for (int i = 0; i < 200; ++i)
        picked += pace.pick(-1, 2);
    QCOMPARE(picked, QSet<int>({-1, 0, 1, 2}));
}

void PaceTest::seedRepeatsEveryChoice()
{
    Pace first(1, 42);
    Pace same(1, 42);
    Pace other(1, 43);
    QVector<int> drawn;
    QVector<int> repeated;
    QVector<int> others;
    for (int i = 0; i < 20; ++i) {
        drawn += first.draw({0, 1000000});
        repeated += same.draw({0, 1000000});
        others += other.draw({0, 1000000});
    }
    QCOMPARE(drawn, repeated);
    QVERIFY(drawn != others);
}

void PaceTest::calls()
{
    const Pace pace(10000, 0);
    bool called = false;
    pace.after(1000, this, [&called] { called = true; });
    QVERIFY(!called);
    QTRY_VERIFY(called);
}

void PaceTest::doesNotCallWhatIsGone()
{
    const Pace pace(10000, 0);
    bool gone = false;
    bool later = false;
    auto context = std::make_unique<QObject>();
    pace.after(1000, context.get(), [&gone] { gone = true; });
    pace.after(20000, this, [&later] { later = true; });
    context.reset();
    QTRY_VERIFY(later);
    QVERIFY(!gone);
}

void PaceTest::heldTimeStandsStill()
{
    Pace pace(10000, 0);
    QVERIFY(!pace.isHeld());
    pace.hold();
    QVERIFY(pace.isHeld());
    bool waits = true;
    int called = 0;
    pace.after(1, this, [&waits] { waits = false; });
    pace.after(DelayRange {5000, 6000}, this, [&called] { ++called; });
    pace.after(0, this, [&called] { ++called; });
    QCOMPARE(called, 0); // never inside the call
    QTRY_COMPARE(called, 2);
    QVERIFY(waits);
    pace.pass(0);
    QVERIFY(waits);
    pace.pass(1);
    QVERIFY(!waits);
}

void PaceTest::heldTimePassesInOrder()
{
    Pace pace(1, 0);
    pace.hold();
    QStringList called;
    const auto note = [&called](const char *word) { return [&called, word] { called += QLatin1String(word); }; };
    pace.after(30, this, note("30"));
    pace.after(20, this, [&] {
        called += QStringLiteral("20");
        pace.after(DelayRange {7, 7}, this, note("at once"));
        pace.after(10, this, note("30, begun later"));
        pace.after(11, this, note("31"));
    });
    pace.after(20, this, note("20, the second"));
    pace.pass(30);
    QCOMPARE(called,
             QStringList({QStringLiteral("20"), QStringLiteral("20, the second"), QStringLiteral("at once"),
                          QStringLiteral("30"), QStringLiteral("30, begun later")}));
    pace.after(5, this, note("35"));
    pace.pass(5);
    QCOMPARE(called.mid(5), QStringList({QStringLiteral("31"), QStringLiteral("35")}));
}

void PaceTest::heldDoesNotCallWhatIsGone()
{
    Pace pace(1, 0);
    pace.hold();
    bool gone = false;
    bool later = false;
    auto context = std::make_unique<QObject>();
    pace.after(0, context.get(), [&gone] { gone = true; });
    pace.after(0, this, [&later] { later = true; });
    context.reset();
    QTRY_VERIFY(later);
    QVERIFY(!gone);
}

QTEST_GUILESS_MAIN(PaceTest)
#include "tst_pace.moc"
