// SPDX-License-Identifier: Apache-2.0
#include "localencoding.h"
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
    void asksForPiecesOnlyWhenTheyAreWanted();
    void streamsText();
    void printsTextInTheLocalEncoding();
    void printsEachTextUpToItsZero();
    void printsNoFormats();
};

void TestNetworkLog::thresholds_data()
{
    QTest::addColumn<QStringList>("lines");
    const QStringList all {
        QStringLiteral("error 1300 e"),  QStringLiteral("error 1300 E"),  QStringLiteral("warning 1300 w"),
        QStringLiteral("debug1 1300 d"), QStringLiteral("debug2 1300 D"),
    };
    QTest::newRow("0") << QStringList();
    QTest::newRow("1") << QStringList();
    QTest::newRow("2") << QStringList(all.mid(0, 2));
    QTest::newRow("3") << QStringList(all.mid(0, 3));
    QTest::newRow("5") << QStringList(all.mid(0, 3));
    QTest::newRow("6") << QStringList(all.mid(0, 4));
    QTest::newRow("7") << all;
}

void TestNetworkLog::thresholds()
{
    QFETCH(QStringList, lines);
    LogCapture log(QByteArray(QTest::currentDataTag()).toInt());
    NetworkLog::error("e");
    NetworkLog::printError("E");
    NetworkLog::printWarning("w");
    NetworkLog::debug1("d");
    NetworkLog::printDebug2("D");
    QCOMPARE(log.take(), lines);
}

void TestNetworkLog::joinsPieces()
{
    LogCapture log(7);
    const auto three = [] { return 3; };
    NetworkLog::error("a", QStringLiteral("b"), three, "):", QString());
    NetworkLog::printError("a", QStringLiteral("b"), three, "):", QString());
    NetworkLog::printWarning("a", QStringLiteral("b"), three, "):", QString());
    NetworkLog::debug1("a", QStringLiteral("b"), three, "):", QString());
    NetworkLog::printDebug2("a", QStringLiteral("b"), three, "):", QString());
    QCOMPARE(log.take(),
             (QStringList {
                 QStringLiteral("error 1300 ab3):"),
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
        NetworkLog::printError(Counted {&count});
        NetworkLog::printWarning(Counted {&count});
        NetworkLog::debug1(Counted {&count});
        NetworkLog::printDebug2(Counted {&count});
    };
    const LogCapture log(1);
    logAll();
    QCOMPARE(count, 0);
    KrelLogger::setVerbosity(7);
    logAll();
    QCOMPARE(count, 5);
}

void TestNetworkLog::asksForPiecesOnlyWhenTheyAreWanted()
{
    QStringList asked;
    const auto logAll = [&asked] {
        const auto piece = [&asked](const char *name) {
            return [&asked, name] {
                asked << QLatin1String(name);
                return 1;
            };
        };
        NetworkLog::error(piece("error"));
        NetworkLog::printError(piece("printError"));
        NetworkLog::printWarning(piece("printWarning"));
        NetworkLog::debug1(piece("debug1"));
        NetworkLog::printDebug2(piece("printDebug2"));
    };
    const LogCapture log(1);
    logAll();
    QCOMPARE(asked, QStringList());
    KrelLogger::setVerbosity(3);
    logAll();
    QCOMPARE(asked, QStringList({"error", "printError", "printWarning"}));
    KrelLogger::setVerbosity(7);
    logAll();
    QCOMPARE(asked.mid(3), QStringList({"error", "printError", "printWarning", "debug1", "printDebug2"}));
}

void TestNetworkLog::streamsText()
{
    const LocalEncoding latin("ISO-8859-1");
    LogCapture log(7);
    const QString text = QStringLiteral("\u4e2d") + QChar(0) + QLatin1Char('b');
    NetworkLog::error("<", text, ">");
    NetworkLog::debug1("<", text, ">");
    const QString line = QStringLiteral("<\u4e2d") + QChar(0) + QStringLiteral("b>");
    QCOMPARE(log.take(), QStringList({QStringLiteral("error 1300 ") + line, QStringLiteral("debug1 1300 ") + line}));
}

void TestNetworkLog::printsTextInTheLocalEncoding()
{
    const LocalEncoding latin("ISO-8859-1");
    LogCapture log(7);
    const QString text = QStringLiteral("\u00fc\u4e2d");
    NetworkLog::printError("<", text, ">");
    NetworkLog::printWarning("<", text, ">");
    NetworkLog::printDebug2("<", text, ">");
    const QString line = QStringLiteral("1300 <\u00fc?>");
    QCOMPARE(log.take(),
             QStringList({QStringLiteral("error ") + line, QStringLiteral("warning ") + line,
                          QStringLiteral("debug2 ") + line}));
}

void TestNetworkLog::printsEachTextUpToItsZero()
{
    LogCapture log(7);
    const QString text = QStringLiteral("a") + QChar(0) + QStringLiteral("b");
    const auto zero = [] { return QString(QChar(0)); };
    NetworkLog::printError("<", text, "|", zero, ">");
    NetworkLog::printWarning("<", text, "|", zero, ">");
    NetworkLog::printDebug2("<", text, "|", zero, ">");
    QCOMPARE(log.take(), QStringList({"error 1300 <a|>", "warning 1300 <a|>", "debug2 1300 <a|>"}));
}

void TestNetworkLog::printsNoFormats()
{
    LogCapture log(7);
    NetworkLog::printError("%s", QStringLiteral("%n"));
    NetworkLog::printWarning("%s", QStringLiteral("%n"));
    NetworkLog::printDebug2("%s", QStringLiteral("%n"));
    QCOMPARE(log.take(), QStringList({"error 1300 %s%n", "warning 1300 %s%n", "debug2 1300 %s%n"}));
}

QTEST_APPLESS_MAIN(TestNetworkLog)
#include "tst_networklog.moc"
