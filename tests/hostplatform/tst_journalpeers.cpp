// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"
#include "peer.h"

#include <QtCore/QFileInfo>

#include <unistd.h>

using namespace morvek;

class JournalPeersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatAKilledWriterLeftDoesNotMatter();
    void aFileIsNotReplacedTwiceUnderASlowReader();
    void aFileShrinksWhenAReaderIsLeftBehind();
    void whatIsLostIsToldAtTheUsualVerbosity();
};

void JournalPeersTest::whatAKilledWriterLeftDoesNotMatter()
{
    for (const char *name : {".object.new", ".object.old"})
        QVERIFY(plant(testPath(name), "garbage"));
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    Peer reader;
    QVERIFY(reader.ask(QStringLiteral("open o %1 1").arg(testPath("object")), QStringLiteral("o open")));
    for (const char *name : {".object.new", ".object.old"})
        QVERIFY(plant(testPath(name), "garbage"));
    // A writer that dies between its two steps leaves the present file under the old one's name.
    QVERIFY(publish(testPath("twice"), QStringLiteral("a=1")));
    QCOMPARE(::link(QFile::encodeName(fileOf(testPath("twice"))).constData(),
                    QFile::encodeName(fileOf(testPath(".twice.old"))).constData()),
             0);
    for (const char *name : {"object", "twice"}) {
        ZopObject writer(testPath(name), ZopObject::ReadWrite, false);
        for (int n = 0; n < 50; ++n) {
            QVERIFY(set(writer, QStringLiteral("p=50000*p n=%1").arg(n)));
            QVERIFY(waitUntil([&] { return writer.attribute(QStringLiteral("n")).toInt() == n; }));
            if (n % 10 == 0 && QLatin1String(name) == QLatin1String("object"))
                QVERIFY(reader.wait(QStringLiteral("o {n=%1 p=50000*p}").arg(n)));
        }
        const qint64 size = QFileInfo(fileOf(testPath(name))).size();
        QVERIFY2(size < 1500000, qPrintable(QString::number(size)));
    }
    QVERIFY(reader.wait(QStringLiteral("o {n=49 p=50000*p}")));
    QCOMPARE(reader.heard(QStringLiteral("o {")).size(), 50);
}

void JournalPeersTest::aFileIsNotReplacedTwiceUnderASlowReader()
{
    QVERIFY(publish(testPath("object"), QString()));
    Peer slow;
    QVERIFY(slow.ask(QStringLiteral("open o %1 1").arg(testPath("object")), QStringLiteral("o open")));
    QVERIFY(slow.ask(QStringLiteral("hold"), QStringLiteral("held")));
    for (int n = 0; n < 80; ++n)
        QVERIFY(set(testPath("object"), QStringLiteral("p=50000*p n=%1").arg(n)));
    const qint64 held = QFileInfo(fileOf(testPath("object"))).size();
    QVERIFY2(held > 3000000, qPrintable(QString::number(held)));
    slow.send(QStringLiteral("go"));
    QVERIFY(slow.wait(QStringLiteral("o {n=79 p=50000*p}")));
    // Nobody reads the previous one any more.
    QVERIFY(set(testPath("object"), QStringLiteral("n=80")));
    QVERIFY(QFileInfo(fileOf(testPath("object"))).size() < 51000);
    QVERIFY(slow.wait(QStringLiteral("o {n=80}")));
    QCOMPARE(slow.heard(QStringLiteral("o {")).size(), 81);
}

void JournalPeersTest::aFileShrinksWhenAReaderIsLeftBehind()
{
    QVERIFY(publish(testPath("object"), QString()));
    Peer behind;
    QVERIFY(behind.ask(QStringLiteral("open o %1 1").arg(testPath("object")), QStringLiteral("o open")));
    QVERIFY(behind.ask(QStringLiteral("hold"), QStringLiteral("held")));
    // Behind the file that the reader holds, one grows to 4 MiB and four times the state's record: 24 bytes and 4, then
    // 4 bytes for each length, names of 1, encodings of 4, and the values.
    constexpr qint64 Record = 24 + 4 + 2 * (12 + 1 + 4) + 100000 + 2;
    constexpr qint64 State = 48 + Record;
    constexpr int Held = (4194304 + 4 * Record - State) / Record;
    QVERIFY(set(testPath("object"), QStringLiteral("p=100000*p n=10")));
    for (int n = 0; n < Held; ++n)
        QVERIFY(set(testPath("object"), QStringLiteral("p=100000*p n=10")));
    QCOMPARE(QFileInfo(fileOf(testPath("object"))).size(), State + Held * Record);
    QVERIFY(set(testPath("object"), QStringLiteral("p=100000*p n=10")));
    QCOMPARE(QFileInfo(fileOf(testPath("object"))).size(), State);
}

void JournalPeersTest::whatIsLostIsToldAtTheUsualVerbosity()
{
    QVERIFY(publish(testPath("object"), QString()));
    Peer slow({QStringLiteral("KREL_VERBOSITY=2")});
    QVERIFY(slow.ask(QStringLiteral("open o %1 1").arg(testPath("object")), QStringLiteral("o open")));
    QFile file(fileOf(testPath("object")));
    QVERIFY(file.open(QIODevice::Append) && file.write("garbage") == 7);
    file.close();
    QVERIFY(set(testPath("object"), QStringLiteral("n=1")));
    QVERIFY(slow.wait(QStringLiteral("o {n=1}")));
    QVERIFY(slow.ask(QStringLiteral("hold"), QStringLiteral("held")));
    for (int n = 2; n <= 60; ++n)
        QVERIFY(set(testPath("object"), QStringLiteral("p=200000*p n=%1").arg(n)));
    slow.send(QStringLiteral("go"));
    QVERIFY(slow.wait(QStringLiteral("o n=60")));
    QVERIFY(slow.quit());
    const QByteArray path = QFile::encodeName(fileOf(testPath("object")));
    const QByteArray told = slow.standardError();
    QVERIFY2(told.contains(" error 1400 Skipped 7 bytes of malformed content in \"" + path + "\""), told.constData());
    QVERIFY2(told.contains(" error 1400 Updates of \"" + path + "\" were lost"), told.constData());
}

CONTRACT_TEST_MAIN(JournalPeersTest)

#include "tst_journalpeers.moc"
