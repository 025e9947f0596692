// SPDX-License-Identifier: Apache-2.0
#include "logcapture.h"
#include "networklog.h"

#include <QtTest/QtTest>

using namespace morvek;

class TestNetworkLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thresholds_data();
    void thresholds();
    void joinsPieces();
    void putsTogetherOnlyWhatIsWanted();
};

void TestNetworkLog::thresholds_data()
{
    QTest::addColumn<int>("verbosity");
    QTest::addColumn<bool>("warning");
    QTest::addColumn<bool>("debug1");
    QTest::newRow("0") << 0 << false << false;
    QTest::newRow("2") << 2 << false << false;
    QTest::newRow("3") << 3 << true << false;
    QTest::newRow("5") << 5 << true << false;
    QTest::newRow("6") << 6 << true << true;
    QTest::newRow("7") << 7 << true << true;
}

void TestNetworkLog::thresholds()
{
    QFETCH(int, verbosity);
    LogCapture log(verbosity);
    QFETCH(bool, warning);
    NetworkLog::warning("text");
    QCOMPARE(log.take(), warning ? QStringList(QStringLiteral("warning 1300 text")) : QStringList());
    QFETCH(bool, debug1);
    NetworkLog::debug1("text");
    QCOMPARE(log.take(), debug1 ? QStringList(QStringLiteral("debug1 1300 text")) : QStringList());
}

void TestNetworkLog::joinsPieces()
{
    LogCapture log(6);
    NetworkLog::debug1("a", QStringLiteral("b"), 3, "):", QString());
    QCOMPARE(log.take(), QStringList(QStringLiteral("debug1 1300 ab3):")));
    NetworkLog::warning("a", QStringLiteral("b"), 3, "):", QString());
    QCOMPARE(log.take(), QStringList(QStringLiteral("warning 1300 ab3):")));
}

namespace {

struct Counted
{
    int *count;
};

QTextStream &operator<<(QTextStream &stream, const Counted &counted)
{
    ++*counted.count;
    return stream;
}

} // namespace

void TestNetworkLog::putsTogetherOnlyWhatIsWanted()
{
    int count = 0;
    LogCapture quiet(2);
    NetworkLog::warning(Counted {&count});
    NetworkLog::debug1(Counted {&count});
    QCOMPARE(count, 0);
    LogCapture log(6);
    NetworkLog::warning(Counted {&count});
    NetworkLog::debug1(Counted {&count});
    QCOMPARE(count, 2);
}

QTEST_APPLESS_MAIN(TestNetworkLog)
#include "tst_networklog.moc"
