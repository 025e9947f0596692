// SPDX-License-Identifier: Apache-2.0
#include "candidates.h"
#include "helpentries.h"

#include <QtTest/QtTest>

using namespace morvek;

/*! What the programs' help and the shells are made of. */
class UsageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesOfValues_data();
    void namesOfValues();
    void attaches();
    void tellsWhatFits_data();
    void tellsWhatFits();
    void leavesOutWhatNobodyCanType_data();
    void leavesOutWhatNobodyCanType();
    void helpHasTwoColumns();
};

void UsageTest::namesOfValues_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("words"); // separated by blanks
    QTest::addColumn<int>("files");
    QTest::newRow("words") << "on|off"
                           << "on off" << int(Candidates::NoFiles);
    QTest::newRow("numbers") << "2.4|5"
                             << "2.4 5" << int(Candidates::NoFiles);
    QTest::newRow("the user's") << "NAME"
                                << "" << int(Candidates::NoFiles);
    QTest::newRow("words in capitals") << "open|WPA|WPA/WPA2"
                                       << "open WPA WPA/WPA2" << int(Candidates::NoFiles);
    QTest::newRow("the user's or a word") << "NAME|auto"
                                          << "auto" << int(Candidates::NoFiles);
    QTest::newRow("file") << "FILE"
                          << "" << int(Candidates::AllFiles);
    QTest::newRow("file or name") << "NAME|FILE"
                                  << "" << int(Candidates::AllFiles);
    QTest::newRow("folder") << "DIR"
                            << "" << int(Candidates::Directories);
    QTest::newRow("nothing") << ""
                             << "" << int(Candidates::NoFiles);
}

void UsageTest::namesOfValues()
{
    QFETCH(QString, name);
    const Candidates candidates = candidatesOfValue(name);
    QTEST(candidates.words.join(QLatin1Char(' ')), "words");
    QTEST(int(candidates.files), "files");
}

void UsageTest::attaches()
{
    const Candidates candidates = attachedTo(QStringLiteral("--name=a=b"),
                                             {{QStringLiteral("one"), QStringLiteral("two")}, Candidates::AllFiles});
    QCOMPARE(candidates.words, QStringList({QStringLiteral("--name=one"), QStringLiteral("--name=two")}));
    QCOMPARE(candidates.files, Candidates::AllFiles);
}

void UsageTest::tellsWhatFits_data()
{
    QTest::addColumn<int>("files");
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QString>("lines");
    const QString one = QStringLiteral("one");
    QTest::newRow("all") << int(Candidates::NoFiles) << QStringList {QString()} << "words one other two";
    QTest::newRow("nothing typed") << int(Candidates::NoFiles) << QStringList() << "words one other two";
    QTest::newRow("some") << int(Candidates::AllFiles) << QStringList {one, QStringLiteral("o")} << "files one other";
    QTest::newRow("a whole one") << int(Candidates::Directories) << QStringList {one} << "directories one";
    QTest::newRow("none") << int(Candidates::Directories) << QStringList {QStringLiteral("O")} << "directories";
}

void UsageTest::tellsWhatFits()
{
    QFETCH(int, files);
    QFETCH(QStringList, words);
    const Candidates candidates {{QStringLiteral("one"), QString(), QStringLiteral("other"), QStringLiteral("two")},
                                 Candidates::Files(files)};
    QTEST(completionLines(candidates, words).join(QLatin1Char(' ')), "lines");
}

void UsageTest::leavesOutWhatNobodyCanType_data()
{
    QTest::addColumn<uint>("character");
    QTest::addColumn<bool>("left");
    const auto row = [](const char *name, uint character, bool left) { QTest::newRow(name) << character << left; };
    row("end of line", '\n', false);
    row("tabulator", '\t', false);
    row("escape", 0x1b, false);
    row("control of eight bits", 0x9b, false);
    row("right to left", 0x202e, false);
    row("line separator", 0x2028, false);
    row("paragraph separator", 0x2029, false);
    row("half a pair", 0xd800, false);
    row("private use", 0xe000, false);
    row("unassigned", 0x378, false);
    row("no text", 0xfffd, false);
    row("tag", 0xe0041, false);
    row("blank", ' ', true);
    row("sign", '$', true);
    row("letter", 0xf6, true);
    row("picture", 0x1f697, true);
}

void UsageTest::leavesOutWhatNobodyCanType()
{
    QFETCH(uint, character);
    QFETCH(bool, left);
    QString word = QStringLiteral("a");
    word += QChar::requiresSurrogates(character) ? QString::fromUcs4(&character, 1) : QString(QChar(character));
    QStringList lines {QStringLiteral("words")};
    if (left)
        lines += word;
    QCOMPARE(completionLines({{word}}, {QString()}), lines);
}

void UsageTest::helpHasTwoColumns()
{
    QCOMPARE(helpLines({{QStringLiteral("a"), QStringLiteral("short")},
                        {QStringLiteral("01234567890123456789"), QStringLiteral("just fits")},
                        {QStringLiteral("012345678901234567890"), QStringLiteral("has a line of its own")}}),
             QStringLiteral("  a                     short\n"
                            "  01234567890123456789  just fits\n"
                            "  012345678901234567890\n"
                            "                        has a line of its own\n"));
}

QTEST_APPLESS_MAIN(UsageTest)
#include "tst_usage.moc"
