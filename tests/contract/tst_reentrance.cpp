// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "zopcontrolcommand.h"

#include <QtCore/QEventLoop>

#include <utility>

using namespace morvek;

/*! What slots may do to the objects that call them. Run under a memory checker, this is where it finds something. */
class ReentranceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aSlotDeletesItsObject_data();
    void aSlotDeletesItsObject();
    void aSlotDeletesItsObjectInsideEnabling();
    void aSlotDeletesAnotherObjectOfTheFolder();
    void aSlotDeletesEveryObjectOfTheProcess();
    void aSlotOpensAnotherObject();
    void aSlotWritesItsOwnObject();
    void aSlotEnablesTheCacheOfItsOwnObject();
    void aSlotRemovesItsObject();
    void aSlotDeletesItsWatcher();
    void aSlotDeletesItsWatcherInsideEnabling();
    void aSlotDeletesItsDaemon();
    void aSlotWaitsForTheNextUpdate();
    void aSlotWaitsForAnotherObject();
    void aSlotWaitsForTheNextRequest();
    void aSlotWaitsForTheNextReply();
    void aSlotWaitsAndTheLastObjectGoes();
    void aSlotWaitsAndTheDirectoryChanges();
};

void ReentranceTest::aSlotDeletesItsObject_data()
{
    QTest::addColumn<int>("inSignal");
    QTest::newRow("attributeChanged") << 0;
    QTest::newRow("attributeRemoved") << 1;
    QTest::newRow("attributesChanged") << 2;
}

void ReentranceTest::aSlotDeletesItsObject()
{
    QFETCH(int, inSignal);
    const QString path = testPath(QTest::currentDataTag());
    QVERIFY(publish(path, QStringLiteral("a=0 b=0 c=0 d=0")));
    ZopObject other(path, ZopObject::ReadWrite, false);
    const Events ofOther(&other);
    auto *object = new ZopObject(path, ZopObject::ReadWrite, false);
    object->setAttributeCacheEnabled(true);
    const Events events(object);
    const auto destroy = [object] { delete object; };
    if (inSignal == 0)
        connect(object, &ZopObject::attributeChanged, this, destroy);
    else if (inSignal == 1)
        connect(object, &ZopObject::attributeRemoved, this, destroy);
    else
        connect(object, &ZopObject::attributesChanged, this, destroy);
    QVERIFY(set(path, QStringLiteral("a=1 b=1 -c -d")));
    QVERIFY(set(path, QStringLiteral("a=2 b=2")));
    QVERIFY(ofOther.wait(QStringLiteral("{a=2 b=2}")));
    const QStringList told = events.lines;
    QVERIFY(set(path, QStringLiteral("end=1")));
    QVERIFY(ofOther.wait(QStringLiteral("{end=1}")));
    QCOMPARE(events.lines, told);
    QCOMPARE(told.size(), inSignal == 0 ? 1 : inSignal == 1 ? 3 : 5);
}

void ReentranceTest::aSlotDeletesItsObjectInsideEnabling()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1 b=1")));
    auto *object = new ZopObject(testPath("object"), ZopObject::Subscribe, false);
    const Events events(object);
    connect(object, &ZopObject::attributeChanged, this, [object] { delete object; });
    object->setAttributeCacheEnabled(true);
    QCOMPARE(events.lines, QStringList({"a=1"}));
}

void ReentranceTest::aSlotDeletesAnotherObjectOfTheFolder()
{
    QVERIFY(publish(testPath("a"), QString()));
    QVERIFY(publish(testPath("b"), QString()));
    ZopObject first(testPath("a"), ZopObject::Subscribe, false);
    auto same = std::make_unique<ZopObject>(testPath("a"), ZopObject::Subscribe, false);
    auto sibling = std::make_unique<ZopObject>(testPath("b"), ZopObject::Subscribe, false);
    auto watcher = std::make_unique<ZopDirWatcher>(testFolder());
    const Events ofSame(same.get());
    const Events ofSibling(sibling.get());
    const Events events(&first);
    connect(&first, &ZopObject::attributesChanged, this, [&] {
        same.reset();
        sibling.reset();
        watcher.reset();
    });
    QVERIFY(set(testPath("a"), QStringLiteral("a=1")));
    QVERIFY(set(testPath("b"), QStringLiteral("b=1")));
    QVERIFY(set(testPath("a"), QStringLiteral("a=2")));
    QVERIFY(events.wait(QStringLiteral("{a=2}")));
    QCOMPARE(ofSibling.lines, QStringList());
    QVERIFY(!ofSame.lines.contains(QStringLiteral("{a=2}")));
}

void ReentranceTest::aSlotDeletesEveryObjectOfTheProcess()
{
    QVERIFY(publish(testPath("a"), QString()));
    QVERIFY(publish(testPath("b"), QString()));
    QObject all;
    int told = 0;
    for (const char *name : {"a", "b", "a"}) {
        auto *object = new ZopObject(testPath(name), ZopObject::Subscribe, false, &all);
        connect(object, &ZopObject::attributesChanged, this, [&] {
            ++told;
            qDeleteAll(all.children());
        });
    }
    QVERIFY(set(testPath("b"), QStringLiteral("a=1")));
    QVERIFY(set(testPath("a"), QStringLiteral("a=1")));
    QVERIFY(waitUntil([&told] { return told > 0; }));
    // And the process can begin anew.
    ZopObject object(testPath("a"), ZopObject::Subscribe, false);
    const Events events(&object);
    QVERIFY(set(testPath("a"), QStringLiteral("end=1")));
    QVERIFY(events.wait(QStringLiteral("{end=1}")));
    QCOMPARE(told, 1);
}

void ReentranceTest::aSlotOpensAnotherObject()
{
    ZopDirWatcher watcher(testFolder());
    QObject all;
    QStringList told;
    connect(&watcher, &ZopDirWatcher::objectAdded, this, [&](const QString &name) {
        auto *object = new ZopObject(testFolder() + name, ZopObject::Subscribe, false, &all);
        connect(object, &ZopObject::attributeChanged, this,
                [&told, name](const QString &, const ZopVariant &value) { told << name + value.toString(); });
        object->setAttributeCacheEnabled(true);
    });
    QStringList expected;
    for (int n = 0; n < 20; ++n) {
        const QString name = QStringLiteral("object%1").arg(n, 2, 10, QLatin1Char('0'));
        QVERIFY(publish(testFolder() + name, QStringLiteral("a=1")));
        QVERIFY(set(testFolder() + name, QStringLiteral("a=2")));
        expected << name + QLatin1Char('2');
    }
    QVERIFY(waitUntil([&] { return told.size() >= 20; }));
    QVERIFY(set(testPath("object00"), QStringLiteral("a=3")));
    QVERIFY(waitUntil([&] { return told.contains(QStringLiteral("object003")); }));
    told.removeAll(QStringLiteral("object003"));
    told.sort();
    QCOMPARE(told, expected);
}

void ReentranceTest::aSlotWritesItsOwnObject()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject object(testPath("object"), ZopObject::ReadWrite, false);
    ZopObject other(testPath("object"), ZopObject::Subscribe, false);
    const Events ofObject(&object);
    const Events ofOther(&other);
    connect(&object, &ZopObject::attributesChanged, this, [&object](const ZopChangeset &changes) {
        const int value = changes.assignments.value(QStringLiteral("ask")).toInt();
        set(object, QStringLiteral("answer=%1").arg(value));
    });
    QVERIFY(set(testPath("object"), QStringLiteral("ask=1")));
    QVERIFY(set(testPath("object"), QStringLiteral("ask=2")));
    QVERIFY(ofOther.wait(QStringLiteral("{answer=2}")));
    QCOMPARE(ofOther.updates(), QStringList({"{ask=1}", "{ask=2}", "{answer=1}", "{answer=2}"}));
    QCOMPARE(ofObject.updates(), QStringList({"{ask=1}", "{ask=2}"}));
}

void ReentranceTest::aSlotEnablesTheCacheOfItsOwnObject()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject object(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&object);
    bool enabled = false;
    connect(&object, &ZopObject::attributesChanged, this, [&] {
        if (!std::exchange(enabled, true))
            object.setAttributeCacheEnabled(true);
    });
    QVERIFY(set(testPath("object"), QStringLiteral("b=1")));
    QVERIFY(events.wait(QStringLiteral("{a=1 b=1}")));
    QVERIFY(set(testPath("object"), QStringLiteral("end=1")));
    QVERIFY(events.wait(QStringLiteral("{end=1}")));
    QCOMPARE(events.updates(), QStringList({"{b=1}", "{a=1 b=1}", "{end=1}"}));
}

void ReentranceTest::aSlotRemovesItsObject()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject object(testPath("object"), ZopObject::Subscribe, false);
    object.setAttributeCacheEnabled(true);
    const Events events(&object);
    connect(&object, &ZopObject::attributeChanged, this, [](const QString &name) {
        if (name != QLatin1String("a"))
            return;
        ZopObject::remove(testPath("object"));
        publish(testPath("object"), QStringLiteral("b=1"));
    });
    QVERIFY(set(testPath("object"), QStringLiteral("a=2")));
    QVERIFY(events.wait(QStringLiteral("{b=1}")));
    QCOMPARE(events.updates(), QStringList({"{a=2}", "{-a}", "{b=1}"}));
}

void ReentranceTest::aSlotDeletesItsWatcher()
{
    QVERIFY(publish(testPath("a"), QString()));
    auto *watcher = new ZopDirWatcher(testFolder());
    ZopDirWatcher other(testFolder());
    const Events events(watcher);
    const Events ofOther(&other);
    connect(watcher, &ZopDirWatcher::objectAdded, this, [watcher] { delete watcher; });
    QVERIFY(publish(testPath("b"), QString()));
    QVERIFY(ofOther.wait(QStringLiteral("+b")));
    QCOMPARE(events.lines.size(), 1);

    auto *removing = new ZopDirWatcher(testFolder());
    const Events ofRemoving(removing);
    removing->setNameCacheEnabled(true);
    connect(removing, &ZopDirWatcher::objectRemoved, this, [removing] { delete removing; });
    QVERIFY(ZopObject::remove(testPath("a")));
    QVERIFY(ZopObject::remove(testPath("b")));
    QVERIFY(ofOther.wait(QStringLiteral("-b")));
    QCOMPARE(ofRemoving.lines, QStringList({"+a", "+b", "-a"}));
}

void ReentranceTest::aSlotDeletesItsWatcherInsideEnabling()
{
    QVERIFY(publish(testPath("a"), QString()));
    QVERIFY(publish(testPath("b"), QString()));
    auto *watcher = new ZopDirWatcher(testFolder());
    const Events events(watcher);
    connect(watcher, &ZopDirWatcher::objectAdded, this, [watcher] { delete watcher; });
    watcher->setNameCacheEnabled(true);
    QCOMPARE(events.lines.size(), 1);
}

void ReentranceTest::aSlotDeletesItsDaemon()
{
    auto *daemon = new ZopObject(testPath("control"), ZopObject::Publish, true);
    connect(daemon, &ZopObject::attributesChanged, this, [daemon] { delete daemon; });
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    ZopControlCommand first(&client);
    ZopControlCommand second(&client);
    QSignalSpy ofFirst(&first, &ZopControlCommand::finished);
    QSignalSpy ofSecond(&second, &ZopControlCommand::finished);
    first.start();
    second.start();
    QVERIFY(waitUntil([&] { return ofFirst.count() == 1 && ofSecond.count() == 1; }));
    QVERIFY(first.hasError() && second.hasError());
}

void ReentranceTest::aSlotWaitsForTheNextUpdate()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject object(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&object);
    bool heardInside = false;
    connect(&object, &ZopObject::attributesChanged, this, [&](const ZopChangeset &changes) {
        if (changes.assignments.contains(QStringLiteral("a")))
            heardInside = events.wait(QStringLiteral("{c=1}"));
    });
    // Both are there already, and then one that comes while the slot waits.
    QVERIFY(set(testPath("object"), QStringLiteral("a=1")));
    QVERIFY(set(testPath("object"), QStringLiteral("b=1")));
    QVERIFY(set(testPath("object"), QStringLiteral("c=1")));
    QVERIFY(events.wait(QStringLiteral("{c=1}")));
    QVERIFY(heardInside);
    QVERIFY(set(testPath("object"), QStringLiteral("end=1")));
    QVERIFY(events.wait(QStringLiteral("{end=1}")));
    QCOMPARE(events.updates(), QStringList({"{a=1}", "{b=1}", "{c=1}", "{end=1}"}));
}

void ReentranceTest::aSlotWaitsForAnotherObject()
{
    for (const char *name : {"a", "b", "c"})
        QVERIFY(publish(testPath(name), QString()));
    ZopObject first(testPath("a"), ZopObject::Subscribe, false);
    ZopObject second(testPath("b"), ZopObject::Subscribe, false);
    ZopObject third(testPath("c"), ZopObject::Subscribe, false);
    const Events ofFirst(&first);
    const Events ofSecond(&second);
    const Events ofThird(&third);
    bool secondInside = false;
    bool thirdInside = false;
    connect(&first, &ZopObject::attributesChanged, this,
            [&] { secondInside = ofSecond.wait(QStringLiteral("{x=1}")); });
    connect(&second, &ZopObject::attributesChanged, this, [&] { thirdInside = ofThird.wait(QStringLiteral("{x=1}")); });
    for (const char *name : {"a", "b", "c"})
        QVERIFY(set(testPath(name), QStringLiteral("x=1")));
    QVERIFY(ofFirst.wait(QStringLiteral("{x=1}")));
    QVERIFY(waitUntil([&] { return ofThird.updates().size() == 1; }));
    QVERIFY(secondInside);
    QVERIFY(thirdInside);
    QCOMPARE(ofSecond.updates(), QStringList({"{x=1}"}));
}

void ReentranceTest::aSlotWaitsForTheNextRequest()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    const Events requests(&daemon);
    bool isFirst = true;
    bool heardInside = false;
    // The second request comes with the first one, the third one is written only then.
    connect(&daemon, &ZopObject::attributesChanged, this, [&] {
        if (!std::exchange(isFirst, false))
            return;
        heardInside = waitUntil([&requests] { return requests.updates().size() == 2; });
        set(client, QStringLiteral("n=3"));
        heardInside = waitUntil([&requests] { return requests.updates().size() == 3; }) && heardInside;
    });
    QVERIFY(set(client, QStringLiteral("n=1")));
    QVERIFY(set(client, QStringLiteral("n=2")));
    QVERIFY(waitUntil([&requests] { return requests.updates().size() == 3; }));
    QVERIFY(heardInside);
    QVERIFY(requests.updates().at(0).startsWith(QLatin1String("{n=1 ")));
    QVERIFY(requests.updates().at(1).startsWith(QLatin1String("{n=2 ")));
    QVERIFY(requests.updates().at(2).startsWith(QLatin1String("{n=3 ")));
}

void ReentranceTest::aSlotWaitsForTheNextReply()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    connect(&daemon, &ZopObject::attributesChanged, this, [&daemon](const ZopChangeset &request) {
        daemon.setAttributes(request); // its sender and identifier are the reply's
    });
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    ZopControlCommand first(&client);
    ZopControlCommand second(&client);
    ZopControlCommand third(&client);
    QSignalSpy ofSecond(&second, &ZopControlCommand::finished);
    QSignalSpy ofThird(&third, &ZopControlCommand::finished);
    bool answeredInside = false;
    // Both replies arrive together; the third one is asked for only then.
    connect(&first, &ZopControlCommand::finished, this, [&] {
        answeredInside = waitUntil([&ofSecond] { return ofSecond.count() == 1; });
        third.start();
        answeredInside = waitUntil([&ofThird] { return ofThird.count() == 1; }) && answeredInside;
    });
    for (ZopControlCommand *command : {&first, &second}) {
        command->setMessage(QStringLiteral("echo"));
        command->start();
    }
    QVERIFY(waitUntil([&] { return ofSecond.count() == 1 && ofThird.count() == 1; }));
    QVERIFY(answeredInside);
    QVERIFY(!second.hasError() && !third.hasError());
}

void ReentranceTest::aSlotWaitsAndTheLastObjectGoes()
{
    QVERIFY(publish(testPath("a"), QString()));
    QVERIFY(publish(testPath("b"), QString()));
    auto first = std::make_unique<ZopObject>(testPath("a"), ZopObject::Subscribe, false);
    auto second = std::make_unique<ZopObject>(testPath("b"), ZopObject::Subscribe, false);
    bool done = false;
    connect(second.get(), &ZopObject::attributesChanged, this, [&] { first.reset(); });
    connect(first.get(), &ZopObject::attributesChanged, this, [&] {
        // While the slot waits, another one is told, then all are gone.
        set(testPath("b"), QStringLiteral("b=1"));
        waitUntil([&first] { return !first; });
        second.reset();
        QEventLoop().processEvents();
        done = true;
    });
    QVERIFY(set(testPath("a"), QStringLiteral("a=1")));
    QVERIFY(set(testPath("a"), QStringLiteral("a=2")));
    QVERIFY(waitUntil([&done] { return done; }));
    ZopObject object(testPath("a"), ZopObject::Subscribe, false);
    const Events events(&object);
    QVERIFY(set(testPath("a"), QStringLiteral("end=1")));
    QVERIFY(events.wait(QStringLiteral("{end=1}")));
}

void ReentranceTest::aSlotWaitsAndTheDirectoryChanges()
{
    QVERIFY(publish(testPath("b"), QString()));
    ZopDirWatcher watcher(testFolder());
    watcher.setNameCacheEnabled(true);
    const Events events(&watcher);
    bool waited = false;
    connect(&watcher, &ZopDirWatcher::objectAdded, this, [&](const QString &name) {
        if (name != QLatin1String("a"))
            return;
        publish(testPath("b"), QString());
        publish(testPath("inside"), QString());
        waited = events.wait(QStringLiteral("+inside"));
    });
    QVERIFY(publish(testPath("a"), QString()));
    QVERIFY(ZopObject::remove(testPath("b")));
    QVERIFY(events.wait(QStringLiteral("+a")));
    QVERIFY(publish(testPath("end"), QString()));
    QVERIFY(events.wait(QStringLiteral("+end")));
    QVERIFY(waited);
    // However often it was told: in the end it is there.
    QCOMPARE(events.lines.count(QStringLiteral("-b")), events.lines.count(QStringLiteral("+b")));
    QCOMPARE(events.lines.count(QStringLiteral("+inside")), 1);
    QCOMPARE(events.lines.count(QStringLiteral("+a")), 1);
}

CONTRACT_TEST_MAIN(ReentranceTest)

#include "tst_reentrance.moc"
