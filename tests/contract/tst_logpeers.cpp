// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "peer.h"

#include <QtCore/QRegularExpression>

using namespace morvek;

namespace {

/*! What another process writes to standard error when it logs \a text. */
QByteArray logged(const QString &level, int code, const QString &text)
{
    Peer peer({QStringLiteral("LC_ALL=C.UTF-8")});
    peer.send(QStringLiteral("log %1 %2 %3").arg(level).arg(code).arg(text));
    return peer.quit() ? peer.standardError() : QByteArray("the process did not end");
}

} // namespace

class LogPeersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesTimeLevelCodeAndText_data();
    void writesTimeLevelCodeAndText();
    void noValueForgesASecondLine();
    void readsItsVerbosity_data();
    void readsItsVerbosity();
    void isTwoWhenTheEnvironmentSaysNothing();
};

void LogPeersTest::writesTimeLevelCodeAndText_data()
{
    QTest::addColumn<QString>("level");
    for (const char *level : {"error", "warning", "debug1", "debug2"})
        QTest::newRow(level) << QString::fromLatin1(level);
}

void LogPeersTest::writesTimeLevelCodeAndText()
{
    QFETCH(QString, level);
    const QByteArray line = logged(level, 1300, QStringLiteral("no such interface: gr\u00fc\u00df"));
    QCOMPARE(line.count('\n'), 1);
    const QString text = QString::fromUtf8(line);
    QVERIFY2(text.endsWith(QStringLiteral("no such interface: gr\u00fc\u00df\n")), line.constData());
    const QRegularExpression format(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d[T ]\\d\\d:\\d\\d:\\d\\d\\S* (\\S+) (\\d+) "));
    const QRegularExpressionMatch match = format.match(text);
    QVERIFY2(match.hasMatch(), line.constData());
    QCOMPARE(match.captured(1), level);
    QCOMPARE(match.captured(2), QStringLiteral("1300"));
}

void LogPeersTest::noValueForgesASecondLine()
{
    for (const char *level : {"error", "warning"}) {
        const QByteArray line = logged(QLatin1String(level), 7, QStringLiteral("a\\nb\\ec\\ud"));
        QCOMPARE(line.count('\n'), 1);
        QVERIFY(line.endsWith('\n'));
        QVERIFY(!line.contains('\x1b'));
        QVERIFY(!QString::fromUtf8(line).contains(QChar(0x2028)));
        for (const char letter : {'a', 'b', 'c', 'd'})
            QVERIFY2(line.contains(letter), line.constData());
    }
}

void LogPeersTest::readsItsVerbosity_data()
{
    QTest::addColumn<QString>("environment");
    QTest::addColumn<QString>("verbosity");
    QTest::newRow("lowest") << "0"
                            << "0";
    QTest::newRow("three") << "3"
                           << "3";
    QTest::newRow("highest") << "7"
                             << "7";
    QTest::newRow("too high") << "8"
                              << "2";
    QTest::newRow("negative") << "-1"
                              << "2";
    QTest::newRow("junk") << "junk"
                          << "2";
    QTest::newRow("number and junk") << "7x"
                                     << "2";
    QTest::newRow("empty") << ""
                           << "2";
    QTest::newRow("huge") << "99999999999999999999"
                          << "2";
}

void LogPeersTest::readsItsVerbosity()
{
    QFETCH(QString, environment);
    QFETCH(QString, verbosity);
    Peer peer({QStringLiteral("KREL_VERBOSITY=") + environment});
    QVERIFY(peer.ask(QStringLiteral("verbosity"), QStringLiteral("verbosity ") + verbosity));
}

void LogPeersTest::isTwoWhenTheEnvironmentSaysNothing()
{
    qunsetenv("KREL_VERBOSITY");
    Peer peer;
    const bool answered = peer.ask(QStringLiteral("verbosity"), QStringLiteral("verbosity 2"));
    qputenv("KREL_VERBOSITY", "7");
    QVERIFY(answered);
}

CONTRACT_TEST_MAIN(LogPeersTest)

#include "tst_logpeers.moc"
