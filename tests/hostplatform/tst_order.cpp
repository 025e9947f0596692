// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"

#include <QtCore/QDir>

using namespace morvek;

namespace {

/*! An object that speaks of others, and their directory. */
struct Scene
{
    ZopObject status {testPath("status"), ZopObject::Subscribe, false};
    ZopDirWatcher watcher {testPath("all")};
};

} // namespace

/*!
 * What is told of several objects, in the order in which it was done. Everything is done before any of it is told, as
 * by a daemon while the application is busy.
 */
class OrderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void anObjectIsAnnouncedBeforeWhatIsSaidOfIt();
    void soItIsAfterUpdatesThatCameOneByOne_data();
    void soItIsAfterUpdatesThatCameOneByOne();
    void soItIsAfterAWriteThatFailed();
    void soItIsAfterReadingThePresentState();
    void goingAndComingAgainAreToldInOrder();
    void theLastUpdateOfAnObjectComesBeforeItsEnd();
    void theReaderMayBeDeletedByAnAnnouncement();
    void anEventThatIsReadAheadIsNotForgotten();
    void anExchangedFolderIsLookedAtBeforeWhatIsSaidOfIt();
    void aReplyComesBehindTheStateThatWasWrittenBefore();

private:
    void follow(ZopObject *object, const char *name);
    void follow(ZopDirWatcher *watcher);
    void follow(Scene *scene);

    QStringList m_told;
};

void OrderTest::init()
{
    m_told.clear();
}

void OrderTest::follow(ZopObject *object, const char *name)
{
    connect(object, &ZopObject::attributesChanged, this,
            [this, name](const ZopChangeset &changes) { m_told << QLatin1String(name) + toText(changes); });
}

void OrderTest::follow(ZopDirWatcher *watcher)
{
    connect(watcher, &ZopDirWatcher::objectAdded, this, [this](const QString &name) { m_told << '+' + name; });
    connect(watcher, &ZopDirWatcher::objectRemoved, this, [this](const QString &name) { m_told << '-' + name; });
}

void OrderTest::follow(Scene *scene)
{
    scene->watcher.setNameCacheEnabled(true);
    follow(&scene->status, "status ");
    follow(&scene->watcher);
}

void OrderTest::anObjectIsAnnouncedBeforeWhatIsSaidOfIt()
{
    QVERIFY(publish(testPath("status"), QString()));
    QVERIFY(publish(testPath("all/first"), QString()));
    Scene scene;
    follow(&scene);
    QVERIFY(set(testPath("status"), QStringLiteral("list=first")));
    QVERIFY(publish(testPath("all/second"), QString()));
    QVERIFY(set(testPath("status"), QStringLiteral("list=first,second")));
    QVERIFY(waitUntil([this] { return m_told.size() == 3; }));
    m_told.removeAll(QStringLiteral("status {list=first}")); // which may come before it or after
    QCOMPARE(m_told, QStringList({"+second", "status {list=first,second}"}));
    // Once, and what was read ahead is not forgotten.
    QVERIFY(publish(testPath("all/third"), QString()));
    QVERIFY(waitUntil([this] { return m_told.contains(QStringLiteral("+third")); }));
    QCOMPARE(m_told.count(QStringLiteral("+second")), 1);
}

void OrderTest::soItIsAfterUpdatesThatCameOneByOne_data()
{
    QTest::addColumn<int>("updates");
    for (const int updates : {0, 1, 2, 3})
        QTest::addRow("after %d", updates) << updates;
}

/*! Each update is written, with the object that it speaks of, while something is told that was written before. */
void OrderTest::soItIsAfterUpdatesThatCameOneByOne()
{
    QFETCH(int, updates);
    const QString place = testFolder() + QString::number(updates);
    QVERIFY(publish(place + QStringLiteral("/bell"), QString()));
    QVERIFY(publish(place + QStringLiteral("/status"), QString()));
    QVERIFY(publish(place + QStringLiteral("/all/0"), QString()));
    ZopObject bell(place + QStringLiteral("/bell"), ZopObject::Subscribe, false);
    ZopObject status(place + QStringLiteral("/status"), ZopObject::Subscribe, false);
    ZopDirWatcher watcher(place + QStringLiteral("/all"));
    watcher.setNameCacheEnabled(true);
    follow(&status, "");
    follow(&watcher);
    for (int n = 1; n <= updates; ++n) {
        QVERIFY(set(place + QStringLiteral("/status"), QStringLiteral("n=%1").arg(n)));
        QVERIFY(waitUntil([&] { return m_told.contains(QStringLiteral("{n=%1}").arg(n)); }));
    }
    m_told.clear();

    int created = 0;
    const auto speakOfAnother = [&] {
        const QString name = QString::number(++created);
        publish(place + QStringLiteral("/all/") + name, QString());
        set(place + QStringLiteral("/status"), QStringLiteral("speaksof=") + name);
    };
    connect(&bell, &ZopObject::attributesChanged, this, speakOfAnother);
    connect(&status, &ZopObject::attributesChanged, this, [&] {
        if (created < 4)
            speakOfAnother();
    });
    QVERIFY(set(place + QStringLiteral("/bell"), QStringLiteral("rings=1")));
    QVERIFY(set(place + QStringLiteral("/status"), QStringLiteral("speaksof=0")));
    QVERIFY(waitUntil([this] { return m_told.size() == 9; }));
    // An object may be announced earlier than it has to be.
    for (int n = 1; n <= 4; ++n)
        QVERIFY2(m_told.indexOf(QStringLiteral("+%1").arg(n)) < m_told.indexOf(QStringLiteral("{speaksof=%1}").arg(n)),
                 qPrintable(m_told.join(QLatin1Char(' '))));
    QCOMPARE(m_told.filter(QStringLiteral("speaksof")),
             QStringList({"{speaksof=0}", "{speaksof=1}", "{speaksof=2}", "{speaksof=3}", "{speaksof=4}"}));
    QCOMPARE(m_told.filter(QStringLiteral("+")), QStringList({"+1", "+2", "+3", "+4"}));
}

void OrderTest::soItIsAfterAWriteThatFailed()
{
    QVERIFY(publish(testPath("status"), QString()));
    QVERIFY(publish(testPath("all/first"), QString()));
    Scene scene;
    follow(&scene);
    for (int n = 1; n <= 2; ++n) {
        QVERIFY(set(testPath("status"), QStringLiteral("n=%1").arg(n)));
        QVERIFY(waitUntil([&] { return m_told.size() == n; }));
    }
    m_told.clear();
    // On a full disk, what a writer has written of its update is cut off again.
    QFile file(fileOf(testPath("status")));
    const qint64 size = file.size();
    QVERIFY(file.open(QIODevice::Append) && file.putChar('x') && file.flush() && file.resize(size));
    QVERIFY(publish(testPath("all/second"), QString()));
    QVERIFY(set(testPath("status"), QStringLiteral("list=first,second")));
    QVERIFY(waitUntil([this] { return m_told.size() == 2; }));
    QCOMPARE(m_told, QStringList({"+second", "status {list=first,second}"}));
}

void OrderTest::soItIsAfterReadingThePresentState()
{
    for (const char *name : {"bell", "status", "all/first"})
        QVERIFY(publish(testPath(name), QString()));
    ZopObject bell(testPath("bell"), ZopObject::Subscribe, false);
    ZopObject status(testPath("status"), ZopObject::Subscribe, false);
    ZopDirWatcher watcher(testPath("all"));
    watcher.setNameCacheEnabled(true);
    for (int n = 1; n <= 2; ++n) {
        QVERIFY(set(testPath("status"), QStringLiteral("n=%1").arg(n)));
        QVERIFY(waitUntil([&] { return status.attribute(QStringLiteral("n")).toInt() == n; }));
    }
    connect(&bell, &ZopObject::attributesChanged, this, [&] {
        status.setAttributeCacheEnabled(true); // the event of what is read here comes afterwards
        follow(&status, "status ");
        follow(&watcher);
        publish(testPath("all/second"), QString());
        set(testPath("status"), QStringLiteral("list=first,second"));
    });
    QVERIFY(set(testPath("bell"), QStringLiteral("rings=1")));
    QVERIFY(set(testPath("status"), QStringLiteral("n=3")));
    QVERIFY(waitUntil([this] { return m_told.size() == 2; }));
    QCOMPARE(m_told, QStringList({"+second", "status {list=first,second}"}));
}

void OrderTest::goingAndComingAgainAreToldInOrder()
{
    QVERIFY(publish(testPath("status"), QString()));
    QVERIFY(publish(testPath("all/one"), QString()));
    Scene scene;
    follow(&scene);
    QVERIFY(set(testPath("status"), QStringLiteral("n=1")));
    QVERIFY(ZopObject::remove(testPath("all/one")));
    QVERIFY(publish(testPath("all/one"), QString()));
    QVERIFY(set(testPath("status"), QStringLiteral("n=2")));
    QVERIFY(waitUntil([this] { return m_told.size() == 4; }));
    m_told.removeAll(QStringLiteral("status {n=1}"));
    m_told.removeAll(QStringLiteral("status {n=2}"));
    QCOMPARE(m_told, QStringList({"-one", "+one"}));
}

void OrderTest::theLastUpdateOfAnObjectComesBeforeItsEnd()
{
    QVERIFY(publish(testPath("status"), QString()));
    QVERIFY(publish(testPath("all/one"), QString()));
    ZopObject status(testPath("status"), ZopObject::Subscribe, false);
    ZopObject one(testPath("all/one"), ZopObject::Subscribe, false);
    ZopDirWatcher watcher(testPath("all"));
    watcher.setNameCacheEnabled(true);
    follow(&status, "status ");
    follow(&one, "one ");
    follow(&watcher);
    QVERIFY(set(testPath("status"), QStringLiteral("n=1")));
    QVERIFY(set(testPath("all/one"), QStringLiteral("up=no")));
    QVERIFY(ZopObject::remove(testPath("all/one")));
    QVERIFY(set(testPath("status"), QStringLiteral("n=2")));
    QVERIFY(waitUntil([this] { return m_told.contains(QStringLiteral("-one")); }));
    QVERIFY(m_told.indexOf(QStringLiteral("one {up=no}")) != -1);
    QVERIFY(m_told.indexOf(QStringLiteral("one {up=no}")) < m_told.indexOf(QStringLiteral("-one")));
}

void OrderTest::theReaderMayBeDeletedByAnAnnouncement()
{
    QVERIFY(publish(testPath("status"), QString()));
    QVERIFY(publish(testPath("all/one"), QString()));
    auto status = std::make_unique<ZopObject>(testPath("status"), ZopObject::Subscribe, false);
    ZopDirWatcher watcher(testPath("all"));
    watcher.setNameCacheEnabled(true);
    follow(status.get(), "status ");
    follow(&watcher);
    connect(&watcher, &ZopDirWatcher::objectAdded, this, [&status] { status.reset(); });
    QVERIFY(set(testPath("status"), QStringLiteral("n=1")));
    QVERIFY(publish(testPath("all/two"), QString()));
    QVERIFY(publish(testPath("all/three"), QString()));
    QVERIFY(waitUntil([this] { return m_told.contains(QStringLiteral("+three")); }));
    QCOMPARE(m_told, QStringList({"+two", "+three"}));
}

void OrderTest::anEventThatIsReadAheadIsNotForgotten()
{
    // So large a state that the file is not replaced, and more updates than one turn tells.
    QVERIFY(publish(testPath("flooded"), QStringLiteral("p=60000*p")));
    QVERIFY(publish(testPath("other"), QString()));
    ZopObject flooded(testPath("flooded"), ZopObject::Subscribe, false);
    ZopObject other(testPath("other"), ZopObject::Subscribe, false);
    follow(&other, "other ");
    connect(&flooded, &ZopObject::attributesChanged, this, [](const ZopChangeset &changes) {
        if (changes.assignments.value(QStringLiteral("n")).toInt() == 300) // in the second turn
            set(testPath("other"), QStringLiteral("x=1"));
    });
    ZopObject writer(testPath("flooded"), ZopObject::ReadWrite, false);
    for (int n = 1; n <= 500; ++n)
        QVERIFY(set(writer, QStringLiteral("n=%1 q=350*q").arg(n)));
    QVERIFY(waitUntil([this] { return !m_told.isEmpty(); }));
    QCOMPARE(m_told, QStringList({"other {x=1}"}));
}

void OrderTest::anExchangedFolderIsLookedAtBeforeWhatIsSaidOfIt()
{
    QVERIFY(publish(testPath("values/status"), QStringLiteral("list=old")));
    QVERIFY(publish(testPath("names/old"), QString()));
    QVERIFY(publish(testPath("next/values/status"), QStringLiteral("list=new")));
    QVERIFY(publish(testPath("next/names/new"), QString()));
    ZopObject status(testPath("values/status"), ZopObject::Subscribe, false);
    ZopDirWatcher watcher(testPath("names"));
    watcher.setNameCacheEnabled(true);
    follow(&status, "status ");
    follow(&watcher);
    const QDir folder(fileOf(testFolder()));
    for (const char *name : {"values", "names"}) {
        QVERIFY(QDir().rename(folder.filePath(QLatin1String(name)), folder.filePath(QStringLiteral("former ") + name)));
        QVERIFY(QDir().rename(folder.filePath(QStringLiteral("next/") + name), folder.filePath(QLatin1String(name))));
    }
    QVERIFY(waitUntil([this] { return m_told.size() == 4; }));
    QCOMPARE(m_told, QStringList({"status {-list}", "-old", "+new", "status {list=new}"}));
}

void OrderTest::aReplyComesBehindTheStateThatWasWrittenBefore()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    QVERIFY(publish(testPath("status"), QString()));
    ZopObject status(testPath("status"), ZopObject::Subscribe, false);
    follow(&client, "reply ");
    follow(&status, "status ");
    connect(&daemon, &ZopObject::attributesChanged, this, [&daemon](const ZopChangeset &request) {
        set(testPath("status"), QStringLiteral("n=1"));
        daemon.setAttributes(request);
    });
    QVERIFY(set(client, QStringLiteral("a=1")));
    QVERIFY(waitUntil([this] { return m_told.size() == 2; }));
    QCOMPARE(m_told, QStringList({"status {n=1}", "reply {a=1}"}));
}

CONTRACT_TEST_MAIN(OrderTest)

#include "tst_order.moc"
