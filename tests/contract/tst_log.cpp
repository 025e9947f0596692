// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "krellogger.h"

#include <QtCore/QRegularExpression>

using namespace morvek;

namespace {

/*! What another process writes to standard error when it logs \a text. */
QByteArray logged(const QString &level, int code, const QString &text)
{
    Peer peer;
    peer.send(QStringLiteral("log %1 %2 %3").arg(level).arg(code).arg(text));
    return peer.quit() ? peer.standardError() : QByteArray("the process did not end");
}

} // namespace

class LogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void writesTimeLevelCodeAndText_data();
    void writesTimeLevelCodeAndText();
    void noValueForgesASecondLine();
    void readsItsVerbosity_data();
    void readsItsVerbosity();
    void isTwoWhenTheEnvironmentSaysNothing();
    void canBeSetToAnotherVerbosity();
    void levelsAreTheirThresholds();
    void aSinkGetsEveryLineAsItIs();
    void aStreamIsOneLine();
};

void LogTest::cleanup()
{
    KrelLogger::setSink(KrelLogger::Sink());
    KrelLogger::setVerbosity(7);
}

void LogTest::writesTimeLevelCodeAndText_data()
{
    QTest::addColumn<QString>("level");
    for (const char *level : {"error", "warning", "debug1", "debug2"})
        QTest::newRow(level) << QString::fromLatin1(level);
}

void LogTest::writesTimeLevelCodeAndText()
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

void LogTest::noValueForgesASecondLine()
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

void LogTest::readsItsVerbosity_data()
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

void LogTest::readsItsVerbosity()
{
    QFETCH(QString, environment);
    QFETCH(QString, verbosity);
    Peer peer({QStringLiteral("KREL_VERBOSITY=") + environment});
    QVERIFY(peer.ask(QStringLiteral("verbosity"), QStringLiteral("verbosity ") + verbosity));
}

void LogTest::isTwoWhenTheEnvironmentSaysNothing()
{
    qunsetenv("KREL_VERBOSITY");
    Peer peer;
    const bool answered = peer.ask(QStringLiteral("verbosity"), QStringLiteral("verbosity 2"));
    qputenv("KREL_VERBOSITY", "7");
    QVERIFY(answered);
}

void LogTest::canBeSetToAnotherVerbosity()
{
    for (const int verbosity : {0, 3, 7}) {
        KrelLogger::setVerbosity(verbosity);
        QCOMPARE(KrelLogger::getVerbosity(), verbosity);
    }
}

void LogTest::levelsAreTheirThresholds()
{
    QCOMPARE(int(KrelLogger::Error), 2);
    QCOMPARE(int(KrelLogger::Warning), 3);
    QCOMPARE(int(KrelLogger::Debug1), 6);
    QCOMPARE(int(KrelLogger::Debug2), 7);
}

void LogTest::aSinkGetsEveryLineAsItIs()
{
    QStringList lines;
    KrelLogger::setSink([&lines](KrelLogger::Level level, unsigned short code, const QString &text) {
        lines << QStringLiteral("%1 %2 %3").arg(level).arg(code).arg(text);
    });
    KrelLogger().error(1) << "a\nb" << 5;
    KrelLogger().debug1(2) << QStringLiteral("c");
    KrelLogger().error(3, "%s %d", "gr\xc3\xbc\xc3\x9f", 6);
    KrelLogger().warning(4, "w");
    KrelLogger().warning(65535) << "x";
    KrelLogger().debug1(5, "d1");
    KrelLogger().debug2(6, "%%");
    KrelLogger().debug2(7) << "d2";
    QCOMPARE(lines,
             QStringList({"2 1 a\nb5", "6 2 c", QStringLiteral("2 3 gr\u00fc\u00df 6"), "3 4 w", "3 65535 x", "6 5 d1",
                          "7 6 %", "7 7 d2"}));
}

void LogTest::aStreamIsOneLine()
{
    QStringList lines;
    KrelLogger::setSink([&lines](KrelLogger::Level, unsigned short, const QString &text) { lines << text; });
    {
        KrelStream stream = KrelLogger().error(1);
        stream << "a" << Qt::endl;
        stream.flush();
        QCOMPARE(lines, QStringList());
        stream << "b";
    }
    QCOMPARE(lines, QStringList({"a\nb"}));
    KrelLogger().error(1);
    QCOMPARE(lines, QStringList({"a\nb", ""}));
}

CONTRACT_TEST_MAIN(LogTest)

#include "tst_log.moc"
