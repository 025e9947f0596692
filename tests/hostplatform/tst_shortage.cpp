// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "descriptorhoard.h"
#include "hostfiles.h"
#include "peer.h"

#include <memory>
#include <vector>

using namespace morvek;

/*! What happens while this process lacks something, and when it has it again: no event tells that. */
class ShortageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { DescriptorHoard::limit(200); }
    void anObjectWasTakenForRemovedWithoutDescriptors();
    void anObjectThatCameWithoutDescriptorsWasNeverAnnounced();
    void anObjectWasAnnouncedThatCouldNotBeOpened();
    void aSlotsOwnEventLoopHeardNothingAfterwards();
    void aControlObjectThatCameWithoutDescriptorsWasNeverAnnounced();
    void valuesWereToldAsRemovedWithoutDescriptors();
    void theNextFileWasNotReadWhenDescriptorsWereBack();
    void aFolderThatCouldNotBeWatchedWasForgotten();
    void valuesWereToldBeforeTheNamesThatTheySpeakOf();
    void anUpdateWasToldBeforeTheObjectThatCouldNotBeAnnounced();
    void connectingWithoutDescriptorsTellsWhatIsMissing();
    void aRootThatCannotBeHeldIsAskedAgain();
    void aSlotLeftNoDescriptorsToTheNextName_data();
    void aSlotLeftNoDescriptorsToTheNextName();
    void aNameWaitsForNoMoreThanItNeeds();
};

void ShortageTest::anObjectWasTakenForRemovedWithoutDescriptors()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    watcher.setNameCacheEnabled(true);
    DescriptorHoard hoard;
    QVERIFY(hoard.takeAll() > 0);
    watcher.setNameCacheEnabled(true); // lists the folder, which takes a descriptor
    hoard.giveBack();
    QVERIFY(publish(testPath("end"), QString()));
    QVERIFY(events.wait(QStringLiteral("+end")));
    QCOMPARE(events.lines, QStringList({"+object", "+end"}));
}

void ShortageTest::anObjectThatCameWithoutDescriptorsWasNeverAnnounced()
{
    Peer peer;
    QVERIFY(publish(testPath("first"), QString()));
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    watcher.setNameCacheEnabled(true);
    ZopObject beside(testPath("first"), ZopObject::Subscribe, false);
    const Events ofBeside(&beside);
    DescriptorHoard hoard;
    QVERIFY(hoard.takeAll() > 0);
    QVERIFY(peer.ask(QStringLiteral("create %1 a=1").arg(testPath("object")), QStringLiteral("created")));
    QVERIFY(peer.ask(QStringLiteral("open f %1 2").arg(testPath("first")), QStringLiteral("f open")));
    QVERIFY(peer.ask(QStringLiteral("set f later=1"), QStringLiteral("f set")));
    hoard.giveBack();
    QVERIFY(events.wait(QStringLiteral("+object")));
    QVERIFY(ofBeside.wait(QStringLiteral("{later=1}")));
    QCOMPARE(events.lines, QStringList({"+first", "+object"}));
}

void ShortageTest::anObjectWasAnnouncedThatCouldNotBeOpened()
{
    Peer peer;
    QVERIFY(publish(testPath("first"), QString()));
    ZopDirWatcher watcher(testFolder());
    watcher.setNameCacheEnabled(true);
    std::unique_ptr<ZopObject> opened;
    connect(&watcher, &ZopDirWatcher::objectAdded, [&opened](const QString &name) {
        opened = std::make_unique<ZopObject>(testFolder() + name, ZopObject::Subscribe, false);
    });
    DescriptorHoard hoard;
    QVERIFY(hoard.takeAll() > 0);
    QVERIFY(peer.ask(QStringLiteral("create %1 a=1").arg(testPath("object")), QStringLiteral("created")));
    QVERIFY(peer.ask(QStringLiteral("verbosity"), QStringLiteral("verbosity 7"))); // meanwhile the event was heard
    QVERIFY(!opened);
    hoard.giveBack();
    QVERIFY(waitUntil([&opened] { return opened != nullptr; }));
    QVERIFY2(opened->isValid(), qPrintable(opened->errorString()));
}

void ShortageTest::aSlotsOwnEventLoopHeardNothingAfterwards()
{
    Peer peer;
    QVERIFY(publish(testPath("first"), QString()));
    QVERIFY(peer.ask(QStringLiteral("open f %1 2").arg(testPath("first")), QStringLiteral("f open")));
    ZopObject first(testPath("first"), ZopObject::Subscribe, false);
    const Events ofFirst(&first);
    ZopDirWatcher watcher(testFolder());
    watcher.setNameCacheEnabled(true);
    bool heard = false;
    connect(&watcher, &ZopDirWatcher::objectAdded, [&] {
        peer.send(QStringLiteral("set f x=1"));
        heard = ofFirst.wait(QStringLiteral("{x=1}"));
    });
    const LogLines log;
    DescriptorHoard hoard;
    QVERIFY(hoard.takeAll() > 0);
    QVERIFY(peer.ask(QStringLiteral("create %1 a=1").arg(testPath("object")), QStringLiteral("created")));
    QVERIFY(peer.ask(QStringLiteral("verbosity"), QStringLiteral("verbosity 7"))); // meanwhile the event was heard
    hoard.giveBack();
    QVERIFY(waitUntil([&heard] { return heard; }));
    const QStringList told = log.lines.filter(QStringLiteral("Nothing is told until there are file descriptors"));
    QCOMPARE(told.size(), 1);
}

void ShortageTest::aControlObjectThatCameWithoutDescriptorsWasNeverAnnounced()
{
    Peer daemon;
    QVERIFY(publish(testPath("first"), QString()));
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    watcher.setNameCacheEnabled(true);
    DescriptorHoard hoard;
    QVERIFY(hoard.takeAll() > 0);
    QVERIFY(daemon.ask(QStringLiteral("serve s ") + testPath("control"), QStringLiteral("s open")));
    hoard.giveBack();
    QVERIFY(events.wait(QStringLiteral("+control")));
}

void ShortageTest::valuesWereToldAsRemovedWithoutDescriptors()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject object(testPath("object"), ZopObject::Subscribe, false);
    object.setAttributeCacheEnabled(true);
    const Events events(&object);
    DescriptorHoard hoard;
    QVERIFY(hoard.takeAll() > 0);
    object.setAttributeCacheEnabled(true);
    QCOMPARE(events.updates(), QStringList({"{a=1}"}));
    QCOMPARE(object.attribute(QStringLiteral("a")).toInt(), 1);
    hoard.giveBack();
    QVERIFY(set(testPath("object"), QStringLiteral("a=2")));
    QVERIFY(events.wait(QStringLiteral("{a=2}")));
    QCOMPARE(events.updates(), QStringList({"{a=1}", "{a=2}"}));
}

void ShortageTest::theNextFileWasNotReadWhenDescriptorsWereBack()
{
    Peer peer;
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject object(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&object);
    QVERIFY(peer.ask(QStringLiteral("open o %1 2").arg(testPath("object")), QStringLiteral("o open")));
    DescriptorHoard hoard;
    QVERIFY(hoard.takeAll() > 0);
    for (int n = 1; n <= 8; ++n)
        QVERIFY(peer.ask(QStringLiteral("set o n=%1 p=50000*p").arg(n), QStringLiteral("o set")));
    QVERIFY(QFile::exists(fileOf(testPath(".object.old"))));
    hoard.giveBack();
    QVERIFY(waitUntil([&events] { return events.updates().size() == 8; }));
    for (int n = 1; n <= 8; ++n)
        QVERIFY(events.updates()[n - 1].contains(QStringLiteral("n=%1 ").arg(n)));
}

void ShortageTest::aFolderThatCouldNotBeWatchedWasForgotten()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    watcher.setNameCacheEnabled(true);
    const QString folder = fileOf(testFolder()).chopped(1);
    QVERIFY(QDir().rename(folder, folder + QStringLiteral(".away")));
    QVERIFY(plant(testFolder().chopped(1), "no folder at all"));
    QVERIFY(events.wait(QStringLiteral("-object")));
    QVERIFY(QFile::remove(folder));
    QVERIFY(QDir().rename(folder + QStringLiteral(".away"), folder));
    QVERIFY(waitUntil([&events] { return events.lines == QStringList({"+object", "-object", "+object"}); }));
}

void ShortageTest::valuesWereToldBeforeTheNamesThatTheySpeakOf()
{
    // Many, as folders are looked at in an order that nobody knows.
    constexpr int Pairs = 10;
    const auto status = [](int n) { return testFolder() + QStringLiteral("values%1/status").arg(n); };
    const auto names = [](int n) { return testFolder() + QStringLiteral("names%1/").arg(n); };
    Peer peer;
    QStringList told;
    std::vector<std::unique_ptr<QObject>> listeners;
    for (int n = 0; n < Pairs; ++n) {
        QVERIFY(publish(status(n), QString()));
        QVERIFY(publish(names(n) + QStringLiteral("known"), QString()));
        auto object = std::make_unique<ZopObject>(status(n), ZopObject::Subscribe, false);
        auto watcher = std::make_unique<ZopDirWatcher>(names(n));
        watcher->setNameCacheEnabled(true);
        connect(object.get(), &ZopObject::attributesChanged, [&told, n] { told << QStringLiteral("status%1").arg(n); });
        connect(watcher.get(), &ZopDirWatcher::objectAdded, [&told](const QString &name) { told << name; });
        listeners.push_back(std::move(object));
        listeners.push_back(std::move(watcher));
    }
    DescriptorHoard hoard;
    QVERIFY(hoard.takeAll() > 0);
    for (int n = 0; n < Pairs; ++n)
        QVERIFY(peer.ask(QStringLiteral("create %1fresh%2 a=1").arg(names(n)).arg(n), QStringLiteral("created")));
    for (int n = 0; n < Pairs; ++n) {
        QVERIFY(peer.ask(QStringLiteral("open s%1 %2 2").arg(n).arg(status(n)), QStringLiteral("s%1 open").arg(n)));
        QVERIFY(peer.ask(QStringLiteral("set s%1 best=fresh%1").arg(n), QStringLiteral("s%1 set").arg(n)));
    }
    QCOMPARE(told, QStringList());
    hoard.giveBack();
    QVERIFY(waitUntil([&told] { return told.size() == 2 * Pairs; }));
    for (int n = 0; n < Pairs; ++n) {
        const int name = told.indexOf(QStringLiteral("fresh%1").arg(n));
        QVERIFY(name != -1);
        QVERIFY2(name < told.indexOf(QStringLiteral("status%1").arg(n)), qPrintable(told.join(' ')));
    }
}

void ShortageTest::anUpdateWasToldBeforeTheObjectThatCouldNotBeAnnounced()
{
    QVERIFY(publish(testPath("status"), QString()));
    QVERIFY(publish(testPath("all/first"), QString()));
    ZopObject writer(testPath("status"), ZopObject::ReadWrite, false);
    QVERIFY(set(writer, QStringLiteral("list=first")));
    ZopObject status(testPath("status"), ZopObject::Subscribe, false);
    ZopDirWatcher watcher(testPath("all"));
    watcher.setNameCacheEnabled(true);
    QStringList told;
    connect(&watcher, &ZopDirWatcher::objectAdded, [&told](const QString &name) { told << '+' + name; });
    connect(&status, &ZopObject::attributesChanged, [&told](const ZopChangeset &changes) { told << toText(changes); });
    // The event of the first update comes before that of the object, which the second one speaks of.
    QVERIFY(set(writer, QStringLiteral("n=1")));
    QVERIFY(publish(testPath("all/second"), QString()));
    QVERIFY(set(writer, QStringLiteral("list=first,second")));
    DescriptorHoard hoard;
    QVERIFY(hoard.takeAll() > 0);
    QCoreApplication::processEvents();
    hoard.giveBack();
    QVERIFY(waitUntil([&told] { return told.size() == 3; }));
    QVERIFY2(told.indexOf(QStringLiteral("+second")) < told.indexOf(QStringLiteral("{list=first,second}")),
             qPrintable(told.join(QLatin1Char(' '))));
}

void ShortageTest::connectingWithoutDescriptorsTellsWhatIsMissing()
{
    if (DescriptorHoard::ofSanitizers() > 0)
        return QTest::qSkip("sanitizers need descriptors, too", __FILE__, __LINE__);
    Peer daemon;
    QVERIFY(daemon.ask(QStringLiteral("serve s ") + testPath("control"), QStringLiteral("s open")));
    DescriptorHoard hoard;
    QVERIFY(hoard.takeAll() > 0);
    close(STDIN_FILENO); // enough for the folder, and not for the socket
    const ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    QVERIFY(!client.isValid());
    QCOMPARE(client.errorString(), QString::fromLocal8Bit(strerror(EMFILE)));
}

void ShortageTest::aRootThatCannotBeHeldIsAskedAgain()
{
    QVERIFY(publish(testPath("object"), QString()));
    const QString reason = QString::fromLocal8Bit(strerror(EMFILE));
    if (DescriptorHoard::ofSanitizers() > 0)
        return QTest::qSkip("sanitizers need descriptors, too", __FILE__, __LINE__);
    DescriptorHoard hoard;
    QVERIFY(hoard.takeAll() > 0);
    QString error;
    QVERIFY(!ZopObject::remove(testPath("object"), &error));
    QCOMPARE(error, reason);
    ZopObject object(testPath("object"), ZopObject::Subscribe, false);
    QVERIFY(!object.isValid());
    QVERIFY2(object.errorString().contains(reason), qPrintable(object.errorString()));
    hoard.giveBack();
    QVERIFY(ZopObject::remove(testPath("object"), &error));
}

void ShortageTest::aSlotLeftNoDescriptorsToTheNextName_data()
{
    QTest::addColumn<bool>("limits");
    QTest::newRow("it took them") << false;
    QTest::newRow("it lowered the limit") << true;
}

void ShortageTest::aSlotLeftNoDescriptorsToTheNextName()
{
    QFETCH(bool, limits);
    const QString folder = testFolder() + QStringLiteral("%1/").arg(limits);
    QVERIFY(publish(folder + QStringLiteral("first"), QString()));
    QVERIFY(publish(folder + QStringLiteral("second"), QString()));
    ZopDirWatcher watcher(folder);
    const Events events(&watcher);
    DescriptorHoard hoard;
    connect(&watcher, &ZopDirWatcher::objectAdded, [&](const QString &name) {
        const int lowest = dup(STDOUT_FILENO);
        close(lowest);
        if (name == QLatin1String("first") && limits)
            DescriptorHoard::limit(rlim_t(lowest) + 3); // one less than are wanted
        else if (name == QLatin1String("first"))
            hoard.takeAll();
    });
    watcher.setNameCacheEnabled(true);
    const QStringList told = events.lines;
    DescriptorHoard::limit(200);
    hoard.giveBack();
    QCOMPARE(told, QStringList({"+first"}));
    QVERIFY(events.wait(QStringLiteral("+second")));
    QCOMPARE(events.lines, QStringList({"+first", "+second"}));
}

void ShortageTest::aNameWaitsForNoMoreThanItNeeds()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    const int last = dup2(STDOUT_FILENO, 199); // of the numbers below the limit; others are free
    QCOMPARE(last, 199);
    watcher.setNameCacheEnabled(true);
    close(last);
    QCOMPARE(events.lines, QStringList({"+object"}));
}

CONTRACT_TEST_MAIN(ShortageTest)

#include "tst_shortage.moc"
