// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"

using namespace morvek;

class DirectoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void announcesPresentNamesOnTheNextTurn();
    void announcesPresentNamesInsideTheCall();
    void announcesEachNameOnce();
    void whatHappensBeforeTheFirstTurnIsAnnouncedOnce();
    void aSlashAtTheEndOfThePathChangesNothing();
    void aDirectoryThatDoesNotExistIsAwaited();
    void severalMissingLevelsAreAwaited();
    void aDirectoryMayBeAwaitedByMany();
    void tellsCreationRemovalAndCreationAsThreeEvents();
    void tellsRemovalAndCreationOfAKnownName();
    void updatesAreNoEvents();
    void aDirectoryBelowIsNoObject();
    void anImpossiblePathIsAnError();
};

void DirectoryTest::announcesPresentNamesOnTheNextTurn()
{
    QVERIFY(publish(testPath("a"), QString()));
    QVERIFY(publish(testPath("b"), QString()));
    ZopDirWatcher watcher(testFolder());
    QVERIFY(watcher.isValid());
    QCOMPARE(watcher.errorString(), QString());
    const Events events(&watcher);
    QCOMPARE(events.lines, QStringList());
    QCoreApplication::processEvents();
    QStringList names = events.lines;
    names.sort();
    QCOMPARE(names, QStringList({"+a", "+b"}));
}

void DirectoryTest::announcesPresentNamesInsideTheCall()
{
    QVERIFY(publish(testPath("a"), QString()));
    QVERIFY(publish(testPath("b"), QString()));
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    watcher.setNameCacheEnabled(false);
    QCOMPARE(events.lines, QStringList());
    watcher.setNameCacheEnabled(true);
    QStringList names = events.lines;
    names.sort();
    QCOMPARE(names, QStringList({"+a", "+b"}));
}

void DirectoryTest::announcesEachNameOnce()
{
    QVERIFY(publish(testPath("a"), QString()));
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    watcher.setNameCacheEnabled(true);
    QVERIFY(publish(testPath("b"), QString()));
    watcher.setNameCacheEnabled(true);
    QCOMPARE(events.lines, QStringList({"+a", "+b"}));
    QVERIFY(publish(testPath("c"), QString()));
    QVERIFY(events.wait(QStringLiteral("+c")));
    watcher.setNameCacheEnabled(true);
    QVERIFY(ZopObject::remove(testPath("c")));
    QVERIFY(events.wait(QStringLiteral("-c")));
    QCOMPARE(events.lines, QStringList({"+a", "+b", "+c", "-c"}));
}

void DirectoryTest::whatHappensBeforeTheFirstTurnIsAnnouncedOnce()
{
    QVERIFY(publish(testPath("a"), QString()));
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    QVERIFY(publish(testPath("b"), QString()));
    QVERIFY(ZopObject::remove(testPath("a")));
    QVERIFY(publish(testPath("end"), QString()));
    QVERIFY(events.wait(QStringLiteral("+end")));
    QVERIFY(ZopObject::remove(testPath("end")));
    QVERIFY(events.wait(QStringLiteral("-end")));
    QCOMPARE(events.lines.count(QStringLiteral("+b")), 1);
    QCOMPARE(events.lines.count(QStringLiteral("+end")), 1);
    QCOMPARE(events.lines.count(QStringLiteral("+a")), events.lines.count(QStringLiteral("-a")));
}

void DirectoryTest::aSlashAtTheEndOfThePathChangesNothing()
{
    QString folder = testFolder();
    folder.chop(1);
    ZopDirWatcher plain(folder);
    ZopDirWatcher slashed(folder + QLatin1Char('/'));
    const Events ofPlain(&plain);
    const Events ofSlashed(&slashed);
    QVERIFY(publish(testPath("a"), QString()));
    QVERIFY(ofPlain.wait(QStringLiteral("+a")));
    QVERIFY(ofSlashed.wait(QStringLiteral("+a")));
}

void DirectoryTest::aDirectoryThatDoesNotExistIsAwaited()
{
    QVERIFY(publish(testPath("above"), QString()));
    ZopDirWatcher watcher(testPath("missing"));
    QVERIFY(watcher.isValid());
    const Events events(&watcher);
    watcher.setNameCacheEnabled(true);
    QCOMPARE(events.lines, QStringList());
    QVERIFY(publish(testPath("missing/a"), QString()));
    QVERIFY(events.wait(QStringLiteral("+a")));
    QVERIFY(publish(testPath("missing/b"), QString()));
    QVERIFY(events.wait(QStringLiteral("+b")));
    QVERIFY(ZopObject::remove(testPath("missing/a")));
    QVERIFY(events.wait(QStringLiteral("-a")));
    QCOMPARE(events.lines, QStringList({"+a", "+b", "-a"}));
}

void DirectoryTest::severalMissingLevelsAreAwaited()
{
    ZopDirWatcher watcher(testPath("one/two/three/"));
    QVERIFY(watcher.isValid());
    const Events events(&watcher);
    ZopDirWatcher above(testPath("one"));
    const Events ofAbove(&above);
    // One level after the other, with turns of the event loop between them.
    QVERIFY(publish(testPath("one/x"), QString()));
    QVERIFY(ofAbove.wait(QStringLiteral("+x")));
    QVERIFY(publish(testPath("one/two/y"), QString()));
    QVERIFY(publish(testPath("one/z"), QString()));
    QVERIFY(ofAbove.wait(QStringLiteral("+z")));
    QVERIFY(publish(testPath("one/two/three/a"), QString()));
    QVERIFY(events.wait(QStringLiteral("+a")));
    QCOMPARE(events.lines, QStringList({"+a"}));

    // And all at once.
    ZopDirWatcher deep(testPath("four/five/six/"));
    const Events ofDeep(&deep);
    QVERIFY(publish(testPath("four/five/six/b"), QString()));
    QVERIFY(publish(testPath("four/five/six/c"), QString()));
    QVERIFY(ofDeep.wait(QStringLiteral("+c")));
    QCOMPARE(ofDeep.lines.count(QStringLiteral("+b")), 1);
}

void DirectoryTest::aDirectoryMayBeAwaitedByMany()
{
    ZopDirWatcher first(testPath("missing/deep"));
    auto second = std::make_unique<ZopDirWatcher>(testPath("missing/deep"));
    ZopDirWatcher third(testPath("missing"));
    const Events ofFirst(&first);
    const Events ofThird(&third);
    second.reset();
    QVERIFY(publish(testPath("missing/deep/a"), QString()));
    QVERIFY(ofFirst.wait(QStringLiteral("+a")));
    QVERIFY(publish(testPath("missing/b"), QString()));
    QVERIFY(ofThird.wait(QStringLiteral("+b")));
    QCOMPARE(ofFirst.lines, QStringList({"+a"}));
    QCOMPARE(ofThird.lines, QStringList({"+b"}));
}

void DirectoryTest::tellsCreationRemovalAndCreationAsThreeEvents()
{
    QVERIFY(publish(testPath("first"), QString()));
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    watcher.setNameCacheEnabled(true);
    QVERIFY(publish(testPath("a"), QString()));
    QVERIFY(ZopObject::remove(testPath("a")));
    QVERIFY(publish(testPath("a"), QString()));
    QVERIFY(publish(testPath("end"), QString()));
    QVERIFY(events.wait(QStringLiteral("+end")));
    QCOMPARE(events.lines, QStringList({"+first", "+a", "-a", "+a", "+end"}));
}

void DirectoryTest::tellsRemovalAndCreationOfAKnownName()
{
    QVERIFY(publish(testPath("a"), QString()));
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    watcher.setNameCacheEnabled(true);
    for (int i = 0; i < 2; ++i) {
        QVERIFY(ZopObject::remove(testPath("a")));
        QVERIFY(publish(testPath("a"), QString()));
    }
    QVERIFY(publish(testPath("end"), QString()));
    QVERIFY(events.wait(QStringLiteral("+end")));
    QVERIFY(ZopObject::remove(testPath("a")));
    QCOMPARE(events.lines.mid(0, 6), QStringList({"+a", "-a", "+a", "-a", "+a", "+end"}));
    QVERIFY(waitUntil([&events] { return events.lines.size() == 7; }));
    QCOMPARE(events.lines.last(), QStringLiteral("-a"));
}

void DirectoryTest::updatesAreNoEvents()
{
    QVERIFY(publish(testPath("a"), QString()));
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    watcher.setNameCacheEnabled(true);
    ZopObject writer(testPath("a"), ZopObject::ReadWrite, false);
    for (int n = 0; n < 60; ++n)
        QVERIFY(set(writer, QStringLiteral("p=50000*p n=%1").arg(n)));
    QVERIFY(publish(testPath("end"), QString()));
    QVERIFY(events.wait(QStringLiteral("+end")));
    QCOMPARE(events.lines, QStringList({"+a", "+end"}));
}

void DirectoryTest::aDirectoryBelowIsNoObject()
{
    QVERIFY(publish(testPath("below/a"), QString()));
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    watcher.setNameCacheEnabled(true);
    QVERIFY(publish(testPath("deeper/a"), QString()));
    QVERIFY(publish(testPath("end"), QString()));
    QVERIFY(events.wait(QStringLiteral("+end")));
    QCOMPARE(events.lines, QStringList({"+end"}));
}

void DirectoryTest::anImpossiblePathIsAnError()
{
    for (const char *path : {"", "zop", "/zop/../zop", "/zop//a", "/zop/."}) {
        ZopDirWatcher watcher {QLatin1String(path)};
        const Events events(&watcher);
        QVERIFY2(!watcher.isValid(), path);
        QVERIFY2(!watcher.errorString().isEmpty(), path);
        watcher.setNameCacheEnabled(true);
        QCOMPARE(events.lines, QStringList());
    }
}

CONTRACT_TEST_MAIN(DirectoryTest)

#include "tst_directory.moc"
