// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "krellogger.h"
#include "localencoding.h"

using namespace morvek;

class LogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void canBeSetToAnotherVerbosity();
    void levelsAreTheirThresholds();
    void aSinkGetsEveryLineAsItIs();
    void aStreamIsOneLine();
    void printedTextIsInTheLocalEncoding_data();
    void printedTextIsInTheLocalEncoding();
};

void LogTest::cleanup()
{
    KrelLogger::setSink(KrelLogger::Sink());
    KrelLogger::setVerbosity(7);
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
    KrelLogger().error(3, "%s %d", "green", 6);
    KrelLogger().warning(4, "w");
    KrelLogger().warning(65535) << "x";
    KrelLogger().debug1(5, "d1");
    KrelLogger().debug2(6, "%%");
    KrelLogger().debug2(7) << "d2";
    QCOMPARE(lines,
             QStringList({"2 1 a\nb5", "6 2 c", "2 3 green 6", "3 4 w", "3 65535 x", "6 5 d1", "7 6 %", "7 7 d2"}));
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

void LogTest::printedTextIsInTheLocalEncoding_data()
{
    QTest::addColumn<QByteArray>("encoding");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("UTF-8") << QByteArray("UTF-8") << QByteArray("gr\xc3\xbc\xc3\x9f");
    QTest::newRow("Latin-1") << QByteArray("ISO-8859-1") << QByteArray("gr\xfc\xdf");
}

void LogTest::printedTextIsInTheLocalEncoding()
{
    QFETCH(QByteArray, encoding);
    QFETCH(QByteArray, bytes);
    const LocalEncoding local(encoding.constData());
    QStringList lines;
    KrelLogger::setSink([&lines](KrelLogger::Level, unsigned short, const QString &text) { lines << text; });
    const QByteArray cut = bytes + QByteArray("\0 and more", 10);
    KrelLogger().error(1, "%s %d%%", bytes.constData(), 6);
    KrelLogger().warning(1, "%s.", cut.constData());
    KrelLogger().debug1(1, "%.2s|%5s|", bytes.constData(), "a");
    KrelLogger().debug2(1, "%s", "");
    const QString text = QStringLiteral("gr\u00fc\u00df");
    QCOMPARE(lines, QStringList({text + QStringLiteral(" 6%"), text + QStringLiteral("."), "gr|    a|", ""}));
}

CONTRACT_TEST_MAIN(LogTest)

#include "tst_log.moc"
