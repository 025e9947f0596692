// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"

using namespace morvek;

namespace {

int queueLength()
{
    QFile file(QStringLiteral("/proc/sys/fs/inotify/max_queued_events"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toInt() : 0;
}

/*! More events than the kernel keeps: updates of two objects in turn, as those of one would merge. */
class Flood
{
public:
    Flood()
        : m_first(testPath("a"), ZopObject::ReadWrite, false),
          m_second(testPath("b"), ZopObject::ReadWrite, false)
    {
    }

    /*! Writes as many updates as the queue is long. */
    bool write()
    {
        bool done = true;
        for (int i = 0; i < queueLength() / 2 + 10; ++i) {
            const QString update = QStringLiteral("n=%1").arg(++m_written);
            done = set(m_first, update) && set(m_second, update) && done;
        }
        return done;
    }

    QStringList expected() const
    {
        QStringList result;
        for (int n = 1; n <= m_written; ++n)
            result << QStringLiteral("{n=%1}").arg(n);
        return result;
    }

private:
    ZopObject m_first;
    ZopObject m_second;
    int m_written = 0;
};

} // namespace

/*! The kernel drops events when a process does not read them for long: they are hints, nothing hangs on them. */
class OverflowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void everyUpdateIsToldOnce();
    void directoriesAreLookedThrough();
    void aFolderThatWasReplacedIsFound();
    void anObjectInAFolderThatWasReplacedIsFound();
    void anAwaitedFolderIsFound();
    void removedObjectsAreToldAsRemoved();
    void theWholeRootMayBeMadeAnew();
};

void OverflowTest::init()
{
    if (queueLength() == 0 || queueLength() > 100000)
        return QTest::qSkip("the queue is too long to be filled here", __FILE__, __LINE__);
    QVERIFY(publish(testPath("a"), QString()));
    QVERIFY(publish(testPath("b"), QString()));
}

void OverflowTest::everyUpdateIsToldOnce()
{
    Flood flood;
    ZopObject first(testPath("a"), ZopObject::Subscribe, false);
    ZopObject second(testPath("b"), ZopObject::Subscribe, false);
    const Events ofFirst(&first);
    const Events ofSecond(&second);
    QVERIFY(flood.write());
    const QStringList expected = flood.expected();
    QVERIFY(ofFirst.wait(expected.last()));
    QVERIFY(ofSecond.wait(expected.last()));
    QVERIFY(set(testPath("a"), QStringLiteral("end=1")));
    QVERIFY(set(testPath("b"), QStringLiteral("end=1")));
    QVERIFY(ofFirst.wait(QStringLiteral("{end=1}")));
    QVERIFY(ofSecond.wait(QStringLiteral("{end=1}")));
    QCOMPARE(ofFirst.updates(), expected + QStringList({"{end=1}"}));
    QCOMPARE(ofSecond.updates(), expected + QStringList({"{end=1}"}));
}

void OverflowTest::directoriesAreLookedThrough()
{
    Flood flood;
    ZopDirWatcher watcher(testFolder());
    watcher.setNameCacheEnabled(true);
    const Events events(&watcher);
    QVERIFY(flood.write());
    QVERIFY(publish(testPath("come"), QString()));
    QVERIFY(ZopObject::remove(testPath("b")));
    QVERIFY(events.wait(QStringLiteral("+come")));
    QVERIFY(publish(testPath("end"), QString()));
    QVERIFY(events.wait(QStringLiteral("+end")));
    QStringList lines = events.lines;
    lines.sort();
    QCOMPARE(lines, QStringList({"+come", "+end", "-b"}));
}

void OverflowTest::aFolderThatWasReplacedIsFound()
{
    QVERIFY(publish(testPath("below/old"), QString()));
    Flood flood;
    ZopDirWatcher watcher(testPath("below"));
    watcher.setNameCacheEnabled(true);
    const Events events(&watcher);
    QVERIFY(flood.write());
    QVERIFY(QDir(fileOf(testPath("below"))).removeRecursively());
    QVERIFY(publish(testPath("below/new"), QString()));
    QVERIFY(events.wait(QStringLiteral("+new")));
    // It is watched as any other.
    QVERIFY(publish(testPath("below/end"), QString()));
    QVERIFY(events.wait(QStringLiteral("+end")));
    QCOMPARE(events.lines, QStringList({"-old", "+new", "+end"}));
}

void OverflowTest::anObjectInAFolderThatWasReplacedIsFound()
{
    QVERIFY(publish(testPath("below/object"), QStringLiteral("a=0")));
    Flood flood;
    ZopObject object(testPath("below/object"), ZopObject::Subscribe, false);
    const Events events(&object);
    QVERIFY(flood.write());
    QVERIFY(QDir(fileOf(testPath("below"))).removeRecursively());
    QVERIFY(publish(testPath("below/object"), QStringLiteral("a=1")));
    QVERIFY(events.wait(QStringLiteral("{a=1}")));
    QVERIFY(set(testPath("below/object"), QStringLiteral("a=2")));
    QVERIFY(events.wait(QStringLiteral("{a=2}")));
    QCOMPARE(events.updates(), QStringList({"{-a}", "{a=1}", "{a=2}"}));
}

void OverflowTest::anAwaitedFolderIsFound()
{
    Flood flood;
    ZopDirWatcher watcher(testPath("missing/deeper"));
    const Events events(&watcher);
    watcher.setNameCacheEnabled(true);
    QVERIFY(flood.write());
    QVERIFY(publish(testPath("missing/deeper/x"), QString()));
    QVERIFY(events.wait(QStringLiteral("+x")));
    QVERIFY(publish(testPath("missing/deeper/end"), QString()));
    QVERIFY(events.wait(QStringLiteral("+end")));
    QCOMPARE(events.lines, QStringList({"+x", "+end"}));
}

void OverflowTest::removedObjectsAreToldAsRemoved()
{
    QVERIFY(publish(testPath("c"), QStringLiteral("x=1")));
    QVERIFY(publish(testPath("d"), QStringLiteral("x=1")));
    Flood flood;
    ZopObject removed(testPath("c"), ZopObject::Subscribe, false);
    ZopObject anew(testPath("d"), ZopObject::Subscribe, false);
    removed.setAttributeCacheEnabled(true);
    anew.setAttributeCacheEnabled(true);
    const Events ofRemoved(&removed);
    const Events ofAnew(&anew);
    QVERIFY(flood.write());
    QVERIFY(ZopObject::remove(testPath("c")));
    QVERIFY(ZopObject::remove(testPath("d")));
    QVERIFY(publish(testPath("d"), QStringLiteral("x=2")));
    QVERIFY(ofRemoved.wait(QStringLiteral("{-x}")));
    QVERIFY(ofAnew.wait(QStringLiteral("{x=2}")));
    QCOMPARE(ofRemoved.updates(), QStringList({"{-x}"}));
    QCOMPARE(ofAnew.updates(), QStringList({"{-x}", "{x=2}"}));
}

void OverflowTest::theWholeRootMayBeMadeAnew()
{
    ZopDirWatcher watcher(testFolder());
    watcher.setNameCacheEnabled(true);
    ZopObject object(testPath("a"), ZopObject::Subscribe, false);
    const Events events(&watcher);
    const Events ofObject(&object);
    for (int round = 1; round <= 3; ++round) {
        QVERIFY(QDir(fileOf(QString())).removeRecursively());
        if (round == 2) // with turns of the event loop in between, or without
            QVERIFY(waitUntil([&events] { return events.lines.count(QStringLiteral("-a")) == 2; }));
        QVERIFY(publish(testPath("a"), QStringLiteral("round=%1").arg(round)));
        QVERIFY(ofObject.wait(QStringLiteral("{round=%1}").arg(round)));
        QVERIFY(waitUntil([&] { return events.lines.count(QStringLiteral("+a")) == round; }));
        QVERIFY(publish(testPath("end") + QString::number(round), QString()));
        QVERIFY(events.wait(QStringLiteral("+end%1").arg(round)));
        QCOMPARE(events.lines.count(QStringLiteral("-a")), round);
    }
    QCOMPARE(ofObject.updates(), QStringList({"{round=1}", "{-round}", "{round=2}", "{-round}", "{round=3}"}));
}

CONTRACT_TEST_MAIN(OverflowTest)

#include "tst_overflow.moc"
