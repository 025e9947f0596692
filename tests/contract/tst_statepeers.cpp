// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "peer.h"

using namespace morvek;

namespace {

constexpr int Updates = 100; // of up to 20 KB each: some 1 MB, which a reader may be behind

/*! Whether \a updates, as a peer tells them, are the first \a count ones of \a writer, whole and in order. */
bool isComplete(const QStringList &updates, int writer, int count)
{
    int next = 1;
    for (const QString &update : updates) {
        if (!update.endsWith(QStringLiteral(" w=%1}").arg(writer)))
            continue;
        if (!update.startsWith(QStringLiteral("n=%1 p=").arg(next)))
            return false;
        ++next;
    }
    return next == count + 1;
}

} // namespace

class StatePeersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void worksInAnotherProcess();
    void onlyOneOfManyCreates();
    void valuesOutliveAKilledWriter();
    void manyUpdatesReachManyReaders();
    void aSlowReaderMissesNothing();
    void aReaderThatIsFarBehindIsToldThePresentState();
    void tellsOtherProcesses();
    void twoWritersHaveOneOrderForEveryReader();
    void carriesLargeValues();
};

void StatePeersTest::worksInAnotherProcess()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("b=2 a=1")));
    Peer reader;
    QVERIFY(reader.ask(QStringLiteral("open o %1 1").arg(testPath("object")), QStringLiteral("o open")));
    QVERIFY(reader.ask(QStringLiteral("cache o"), QStringLiteral("o cached")));
    QCOMPARE(reader.heard(QStringLiteral("o ")), QStringList({"open", "a=1", "b=2", "{a=1 b=2}", "cached"}));
}

void StatePeersTest::onlyOneOfManyCreates()
{
    Peer peers[4];
    for (Peer &peer : peers)
        peer.send(QStringLiteral("verbosity")); // which shows that it runs
    for (Peer &peer : peers)
        QVERIFY(peer.wait(QStringLiteral("verbosity 7")));
    QString commands;
    for (int round = 0; round < 40; ++round) // large ones, so that the peers meet
        commands += QStringLiteral("create %1%2 a=1000000*x\n").arg(testPath("object")).arg(round);
    for (Peer &peer : peers)
        QVERIFY(peer.ask(QStringLiteral("hold"), QStringLiteral("held")));
    for (Peer &peer : peers)
        peer.send(QStringLiteral("go\n") + commands.chopped(1));
    for (Peer &peer : peers)
        QVERIFY(peer.quit());
    int created = 0;
    int refused = 0;
    for (const Peer &peer : peers) {
        created += peer.heard(QStringLiteral("created")).size();
        refused += peer.heard(QStringLiteral("not created")).size();
    }
    QCOMPARE(created, 40);
    QCOMPARE(refused, 120);
}

void StatePeersTest::valuesOutliveAKilledWriter()
{
    Peer writer;
    QVERIFY(writer.ask(QStringLiteral("open o %1 3").arg(testPath("object")), QStringLiteral("o open")));
    QVERIFY(writer.ask(QStringLiteral("set o a=1 b=60000*x"), QStringLiteral("o set")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    QVERIFY(writer.ask(QStringLiteral("set o a=2"), QStringLiteral("o set")));
    writer.kill();
    QVERIFY(events.wait(QStringLiteral("{a=2}")));
    QCOMPARE(events.updates(), QStringList({"{a=2}"}));
    reader.setAttributeCacheEnabled(true);
    QCOMPARE(events.updates(), QStringList({"{a=2}", "{a=2 b=60000*x}"}));
    QVERIFY(set(testPath("object"), QStringLiteral("a=3")));
    QVERIFY(events.wait(QStringLiteral("{a=3}")));
}

void StatePeersTest::manyUpdatesReachManyReaders()
{
    QVERIFY(publish(testPath("object"), QString()));
    Peer readers[2];
    for (Peer &reader : readers)
        QVERIFY(reader.ask(QStringLiteral("open o %1 1").arg(testPath("object")), QStringLiteral("o open")));
    Peer writers[2];
    for (Peer &writer : writers)
        QVERIFY(writer.ask(QStringLiteral("open o %1 2").arg(testPath("object")), QStringLiteral("o open")));
    writers[0].send(QStringLiteral("write o 1 %1 20000").arg(Updates));
    writers[1].send(QStringLiteral("write o 2 %1 20000").arg(Updates));
    QVERIFY(writers[0].wait(QStringLiteral("1 wrote %1").arg(Updates)));
    QVERIFY(writers[1].wait(QStringLiteral("2 wrote %1").arg(Updates)));
    QVERIFY(set(testPath("object"), QStringLiteral("end=1")));
    for (Peer &reader : readers) {
        QVERIFY(reader.wait(QStringLiteral("o {end=1}")));
        const QStringList updates = reader.heard(QStringLiteral("o {"));
        QCOMPARE(updates.size(), 2 * Updates + 1);
        QVERIFY(isComplete(updates, 1, Updates));
        QVERIFY(isComplete(updates, 2, Updates));
    }
    QCOMPARE(readers[0].heard(QStringLiteral("o ")), readers[1].heard(QStringLiteral("o ")));
}

void StatePeersTest::aSlowReaderMissesNothing()
{
    QVERIFY(publish(testPath("object"), QString()));
    Peer slow;
    Peer fast;
    for (Peer *reader : {&slow, &fast})
        QVERIFY(reader->ask(QStringLiteral("open o %1 1").arg(testPath("object")), QStringLiteral("o open")));
    QVERIFY(slow.ask(QStringLiteral("hold"), QStringLiteral("held")));
    Peer writer;
    QVERIFY(writer.ask(QStringLiteral("open o %1 2").arg(testPath("object")), QStringLiteral("o open")));
    QVERIFY(writer.ask(QStringLiteral("write o 1 %1 20000").arg(Updates), QStringLiteral("1 wrote %1").arg(Updates)));
    QVERIFY(fast.wait(QStringLiteral("o w=1")));
    slow.send(QStringLiteral("go"));
    QVERIFY(writer.ask(QStringLiteral("write o 2 %1 20000").arg(Updates), QStringLiteral("2 wrote %1").arg(Updates)));
    QVERIFY(set(testPath("object"), QStringLiteral("end=1")));
    for (Peer *reader : {&slow, &fast}) {
        QVERIFY(reader->wait(QStringLiteral("o {end=1}")));
        const QStringList updates = reader->heard(QStringLiteral("o {"));
        QCOMPARE(updates.size(), 2 * Updates + 1);
        QVERIFY(isComplete(updates, 1, Updates));
        QVERIFY(isComplete(updates, 2, Updates));
    }
}

void StatePeersTest::aReaderThatIsFarBehindIsToldThePresentState()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("event=1 gone=1 kept=1 n=0")));
    Peer behind({QStringLiteral("KREL_VERBOSITY=2")});
    QVERIFY(behind.ask(QStringLiteral("open o %1 1").arg(testPath("object")), QStringLiteral("o open")));
    QVERIFY(behind.ask(QStringLiteral("cache o"), QStringLiteral("o cached")));
    const int known = behind.heard(QString()).size();
    QVERIFY(behind.ask(QStringLiteral("hold"), QStringLiteral("held")));
    // What was known is written again, and is no news.
    QVERIFY(set(testPath("object"), QStringLiteral("event=1 -gone")));
    for (int n = 1; n <= 60; ++n) // 12 MB, with a state of 200 KB
        QVERIFY(set(testPath("object"), QStringLiteral("n=%1 p=200000*p").arg(n)));
    QVERIFY(set(testPath("object"), QStringLiteral("n=61")));
    behind.send(QStringLiteral("go"));
    QVERIFY(behind.wait(QStringLiteral("o {n=61 p=200000*p -gone}")));
    QVERIFY(set(testPath("object"), QStringLiteral("end=1")));
    QVERIFY(behind.wait(QStringLiteral("o {end=1}")));
    QCOMPARE(behind.heard(QString()).mid(known),
             QStringList(
                 {"held", "o n=61", "o p=200000*p", "o -gone", "o {n=61 p=200000*p -gone}", "o end=1", "o {end=1}"}));
    QVERIFY(behind.quit());
    const QByteArray log = behind.standardError();
    QCOMPARE(log.count("\n"), 1);
    QVERIFY2(log.contains(" error ") && log.contains(testPath("object").toUtf8()), log.constData());
}

void StatePeersTest::tellsOtherProcesses()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject here(testPath("object"), ZopObject::ReadWrite, false);
    const Events events(&here);
    Peer there;
    QVERIFY(there.ask(QStringLiteral("open o %1 2").arg(testPath("object")), QStringLiteral("o open")));
    QVERIFY(set(here, QStringLiteral("b=2 a=1")));
    QVERIFY(there.wait(QStringLiteral("o {a=1 b=2}")));
    QCOMPARE(there.heard(QStringLiteral("o ")), QStringList({"open", "a=1", "b=2", "{a=1 b=2}"}));
    QVERIFY(there.ask(QStringLiteral("set o a=2 -b"), QStringLiteral("o set")));
    QVERIFY(events.wait(QStringLiteral("{a=2 -b}")));
    QCOMPARE(events.lines, QStringList({"a=2", "-b", "{a=2 -b}"}));
}

void StatePeersTest::twoWritersHaveOneOrderForEveryReader()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject here(testPath("object"), ZopObject::ReadWrite, false);
    const Events events(&here);
    Peer writers[2];
    Peer reader;
    QVERIFY(reader.ask(QStringLiteral("open o %1 1").arg(testPath("object")), QStringLiteral("o open")));
    for (Peer &writer : writers)
        QVERIFY(writer.ask(QStringLiteral("open o %1 2").arg(testPath("object")), QStringLiteral("o open")));
    writers[0].send(QStringLiteral("write o 1 300 99"));
    writers[1].send(QStringLiteral("write o 2 300 99"));
    QVERIFY(writers[0].wait(QStringLiteral("1 wrote 300")));
    QVERIFY(writers[1].wait(QStringLiteral("2 wrote 300")));
    QVERIFY(set(here, QStringLiteral("end=1")));
    QVERIFY(set(testPath("object"), QStringLiteral("end=2")));
    QVERIFY(reader.wait(QStringLiteral("o {end=2}")));
    QVERIFY(events.wait(QStringLiteral("{end=2}")));

    QStringList there = reader.heard(QStringLiteral("o {"));
    QCOMPARE(there.size(), 602);
    QCOMPARE(there.takeAt(600), QStringLiteral("end=1}")); // which this process wrote itself
    QStringList mine;
    for (const QString &update : events.updates())
        mine << update.mid(1);
    QCOMPARE(mine, there);
    for (int writer = 1; writer <= 2; ++writer) {
        QStringList expected;
        for (int n = 1; n <= 300; ++n)
            expected << QStringLiteral("n=%1 ").arg(n);
        QStringList numbers;
        for (const QString &update : qAsConst(there)) {
            if (update.endsWith(QStringLiteral("w=%1}").arg(writer)))
                numbers << update.section(QLatin1Char(' '), 0, 0) + QLatin1Char(' ');
        }
        QCOMPARE(numbers, expected);
    }
}

void StatePeersTest::carriesLargeValues()
{
    QVERIFY(publish(testPath("object"), QString()));
    Peer reader;
    QVERIFY(reader.ask(QStringLiteral("open o %1 1").arg(testPath("object")), QStringLiteral("o open")));
    QVERIFY(set(testPath("object"), QStringLiteral("a=3000000*x")));
    QVERIFY(set(testPath("object"), QStringLiteral("a=1")));
    QVERIFY(reader.wait(QStringLiteral("o {a=1}")));
    QCOMPARE(reader.heard(QStringLiteral("o {")), QStringList({"a=3000000*x}", "a=1}"}));
}

CONTRACT_TEST_MAIN(StatePeersTest)

#include "tst_statepeers.moc"
