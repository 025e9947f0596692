// SPDX-License-Identifier: Apache-2.0
#include "logcapture.h"
#include "networklog_p.h"

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
    QTest::addColumn<QStringList>("lines");
    const QStringList all {
        QStringLiteral("error 1300 e"),
        QStringLiteral("warning 1300 w"),
        QStringLiteral("debug1 1300 d"),
        QStringLiteral("debug2 1300 D"),
    };
    QTest::newRow("0") << QStringList();
    QTest::newRow("1") << QStringList();
    QTest::newRow("2") << QStringList(all.mid(0, 1));
    QTest::newRow("3") << QStringList(all.mid(0, 2));
    QTest::newRow("5") << QStringList(all.mid(0, 2));
    QTest::newRow("6") << QStringList(all.mid(0, 3));
    QTest::newRow("7") << all;
}

void TestNetworkLog::thresholds()
{
    QFETCH(QStringList, lines);
    LogCapture log(QByteArray(QTest::currentDataTag()).toInt());
    NetworkLog::error("e");
    NetworkLog::warning("w");
    NetworkLog::debug1("d");
    NetworkLog::debug2("D");
    QCOMPARE(log.take(), lines);
}

void TestNetworkLog::joinsPieces()
{
    LogCapture log(7);
    NetworkLog::error("a", QStringLiteral("b"), 3, "):", QString());
    NetworkLog::warning("a", QStringLiteral("b"), 3, "):", QString());
    NetworkLog::debug1("a", QStringLiteral("b"), 3, "):", QString());
    NetworkLog::debug2("a", QStringLiteral("b"), 3, "):", QString());
    QCOMPARE(log.take(),
             (QStringList {
                 QStringLiteral("error 1300 ab3):"),
                 QStringLiteral("warning 1300 ab3):"),
                 QStringLiteral("debug1 1300 ab3):"),
                 QStringLiteral("debug2 1300 ab3):"),
             }));
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
    const auto logAll = [&count] {
        NetworkLog::error(Counted {&count});
        NetworkLog::warning(Counted {&count});
        NetworkLog::debug1(Counted {&count});
        NetworkLog::debug2(Counted {&count});
    };
    const LogCapture log(1);
    logAll();
    QCOMPARE(count, 0);
    KrelLogger::setVerbosity(7);
    logAll();
    QCOMPARE(count, 4);
}

QTEST_APPLESS_MAIN(TestNetworkLog)
#include "tst_networklog.moc"
