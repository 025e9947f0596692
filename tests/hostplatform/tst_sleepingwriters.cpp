// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "descriptorhoard.h"
#include "hostfiles.h"
#include "wakeups.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QThread>
#include <QtCore/QTimer>

#include <memory>

using namespace morvek;

namespace {

const QString N = QStringLiteral("n");

/*! How many folders this process has the kernel watch. */
int watches()
{
    int count = 0;
    const QStringList descriptors = QDir(QStringLiteral("/proc/self/fdinfo")).entryList(QDir::Files);
    for (const QString &descriptor : descriptors) {
        QFile info(QStringLiteral("/proc/self/fdinfo/") + descriptor);
        if (info.open(QIODevice::ReadOnly))
            count += info.readAll().count("inotify wd:");
    }
    return count;
}

/*! What the kernel has counted as \a what of this process; -1 when it does not count. */
int counted(const QByteArray &what)
{
    QFile counts(QStringLiteral("/proc/self/io"));
    if (!counts.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = counts.readAll();
    return text.mid(text.indexOf(what) + what.size()).split('\n').first().toInt();
}

} // namespace

/*! An object that may be written to, and that nobody listens to here, sleeps; what is asked of it is answered all the
 * same. */
class SleepingWritersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatItWritesDoesNotWakeItUp_data();
    void whatItWritesDoesNotWakeItUp();
    void attributesAreAnsweredAsReceived();
    void valuesFromBeforeItWasOpenedStayUnknown();
    void whatOthersWroteAtLengthIsAnswered();
    void theNextObjectOfThePathIsAnswered();
    void whoBeginsToListenHearsWhatComesThen();
    void itSleepsAgainWithoutListeners();
    void whoHasBegunToListenMissesNoGeneration();
    void anyThreadMayBeginToListen();
    void whoListensWithoutDescriptorsHearsLater();
    void whoListensWithoutDescriptorsMissesNothing();
    void aReplacementDoesNotWaitForIt();
    void aDamagedHeaderIsSeenBeforeWriting();
    void whatOthersHaveSpoiltIsToldByACheck();
    void anUnchangedFileIsNotRead();
    void aFileThatWaitsForAReaderIsReadOnce();
};

void SleepingWritersTest::whatItWritesDoesNotWakeItUp_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("publishing") << int(ZopObject::Publish);
    QTest::newRow("reading and writing") << int(ZopObject::ReadWrite);
}

void SleepingWritersTest::whatItWritesDoesNotWakeItUp()
{
    QFETCH(int, mode);
    const QString path = testPath("object") + QString::number(mode);
    QVERIFY(publish(path, QString()));
    ZopObject writer(path, ZopObject::PublicationMode(mode), false);
    QTimer end;
    end.setSingleShot(true);
    end.start(500);
    // Many generations of the file.
    for (int n = 0; n < 2000; ++n)
        QVERIFY(set(writer, QStringLiteral("n=%1").arg(n)));
    int wakeUps = 0;
    countWakeUps([&](int count) {
        wakeUps = count;
        return !end.isActive();
    });
    // Its own, for which the loop may go to sleep once more.
    QVERIFY2(wakeUps <= 2, qPrintable(QString::number(wakeUps)));
}

void SleepingWritersTest::attributesAreAnsweredAsReceived()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("old=1 gone=1")));
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    QVERIFY(set(writer, QStringLiteral("own=1 gone=2")));
    QVERIFY(set(testPath("object"), QStringLiteral("foreign=1 -gone")));
    QCOMPARE(writer.attribute(QStringLiteral("own")).toInt(), 1);
    QCOMPARE(writer.attribute(QStringLiteral("foreign")).toInt(), 1);
    QVERIFY(!writer.attribute(QStringLiteral("gone")).isValid());
    QVERIFY(!writer.attribute(QStringLiteral("old")).isValid());
    writer.setAttributeCacheEnabled(true);
    QCOMPARE(writer.attribute(QStringLiteral("old")).toInt(), 1);
    QVERIFY(set(testPath("object"), QStringLiteral("old=2")));
    QCOMPARE(writer.attribute(QStringLiteral("old")).toInt(), 2);
}

void SleepingWritersTest::valuesFromBeforeItWasOpenedStayUnknown()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("old=1")));
    ZopObject writer(testPath("object"), ZopObject::Publish, false);
    for (int n = 1; n <= 3000; ++n) {
        QVERIFY(set(writer, QStringLiteral("n=%1").arg(n)));
        QVERIFY(n % 100 != 0 || set(testPath("object"), QStringLiteral("foreign=%1").arg(n)));
    }
    QCOMPARE(writer.attribute(N).toInt(), 3000);
    QCOMPARE(writer.attribute(QStringLiteral("foreign")).toInt(), 3000);
    QVERIFY(!writer.attribute(QStringLiteral("old")).isValid());
}

void SleepingWritersTest::whatOthersWroteAtLengthIsAnswered()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1 gone=1")));
    ZopObject sleeper(testPath("object"), ZopObject::ReadWrite, false);
    sleeper.setAttributeCacheEnabled(true);
    const LogLines log;
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    QVERIFY(set(writer, QStringLiteral("-gone")));
    for (int n = 1; n <= 3000; ++n)
        QVERIFY(set(writer, QStringLiteral("n=%1").arg(n)));
    QCOMPARE(sleeper.attribute(N).toInt(), 3000);
    QCOMPARE(sleeper.attribute(QStringLiteral("a")).toInt(), 1);
    QVERIFY(!sleeper.attribute(QStringLiteral("gone")).isValid());
    // Nothing is lost for whom nobody listens to.
    QCOMPARE(log.lines, QStringList());
    // Nor does the file wait for it that it has read last.
    for (int n = 1; n <= 3000; ++n)
        QVERIFY(set(writer, QStringLiteral("n=%1").arg(n)));
    QVERIFY(content(testPath("object")).size() < 40000);
}

void SleepingWritersTest::theNextObjectOfThePathIsAnswered()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject sleeper(testPath("object"), ZopObject::ReadWrite, false);
    sleeper.setAttributeCacheEnabled(true);
    QVERIFY(ZopObject::remove(testPath("object")));
    QVERIFY(!sleeper.attribute(QStringLiteral("a")).isValid());
    QVERIFY(publish(testPath("object"), QStringLiteral("b=2")));
    QCOMPARE(sleeper.attribute(QStringLiteral("b")).toInt(), 2);
    QVERIFY(set(sleeper, QStringLiteral("c=3")));
    QCOMPARE(sleeper.attribute(QStringLiteral("c")).toInt(), 3);
}

void SleepingWritersTest::whoBeginsToListenHearsWhatComesThen()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject object(testPath("object"), ZopObject::ReadWrite, false);
    for (int n = 1; n <= 1000; ++n)
        QVERIFY(set(testPath("object"), QStringLiteral("n=%1").arg(n)));
    const Events events(&object);
    QVERIFY(set(object, QStringLiteral("own=1")));
    QVERIFY(set(testPath("object"), QStringLiteral("n=1001")));
    QVERIFY(ZopObject::remove(testPath("object")));
    QVERIFY(events.wait(QStringLiteral("{-n -own}")));
    QCOMPARE(events.updates(), QStringList({"{n=1001}", "{-n -own}"}));
}

void SleepingWritersTest::itSleepsAgainWithoutListeners()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject object(testPath("object"), ZopObject::ReadWrite, false);
    QCOMPARE(watches(), 0);
    const QMetaObject::Connection connection = connect(&object, &ZopObject::attributesChanged, this, [] {});
    auto listener = std::make_unique<QObject>();
    connect(&object, &ZopObject::attributeRemoved, listener.get(), [] {});
    const int awake = watches();
    QCOMPARE(awake, 2);
    disconnect(connection);
    QVERIFY(set(testPath("object"), QStringLiteral("n=1")));
    QCoreApplication::processEvents();
    QCOMPARE(watches(), awake);
    // Listeners go without a word: one more event is heard.
    listener.reset();
    QVERIFY(set(testPath("object"), QStringLiteral("n=2")));
    QVERIFY(waitUntil([awake] { return watches() < awake; })); // of the folder; the root stays watched
    QCOMPARE(object.attribute(N).toInt(), 2);
    // Nor does its file wait for it any more.
    for (int n = 1; n <= 3000; ++n)
        QVERIFY(set(testPath("object"), QStringLiteral("n=%1").arg(n)));
    QVERIFY(content(testPath("object")).size() < 40000);
}

void SleepingWritersTest::whoHasBegunToListenMissesNoGeneration()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject object(testPath("object"), ZopObject::ReadWrite, false);
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    const Events events(&object);
    for (int n = 1; n <= 3000; ++n)
        QVERIFY(set(writer, QStringLiteral("n=%1").arg(n)));
    QVERIFY(events.wait(QStringLiteral("{n=3000}")));
    QCOMPARE(events.updates().size(), 3000);
}

void SleepingWritersTest::anyThreadMayBeginToListen()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject object(testPath("object"), ZopObject::ReadWrite, false);
    QStringList told;
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        connect(&object, &ZopObject::attributeChanged, this,
                [&told](const QString &name, const ZopVariant &value) { told << name + value.toString(); });
    }));
    thread->start();
    QVERIFY(thread->wait());
    QCoreApplication::processEvents();
    QVERIFY(set(testPath("object"), QStringLiteral("n=1")));
    QVERIFY(waitUntil([&] { return !told.isEmpty(); }));
    QCOMPARE(told, QStringList({"n1"}));
}

void SleepingWritersTest::whoListensWithoutDescriptorsHearsLater()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("n=1")));
    ZopObject object(testPath("object"), ZopObject::ReadWrite, false);
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    QVERIFY(set(writer, QStringLiteral("n=2")));
    DescriptorHoard hoard;
    QVERIFY(hoard.takeAll() > 0);
    const Events events(&object);
    hoard.giveBack();
    QVERIFY(waitUntil([&] { return set(writer, QStringLiteral("n=3")) && !events.updates().isEmpty(); }));
    QCOMPARE(events.updates().first(), QStringLiteral("{n=3}"));
}

void SleepingWritersTest::whoListensWithoutDescriptorsMissesNothing()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject object(testPath("object"), ZopObject::ReadWrite, false);
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    QVERIFY(set(writer, QStringLiteral("n=1")));
    DescriptorHoard hoard;
    QVERIFY(hoard.takeAll() > 0);
    const Events events(&object);
    QVERIFY(set(writer, QStringLiteral("n=2")));
    hoard.giveBack();
    QVERIFY(events.wait(QStringLiteral("{n=2}")));
    QVERIFY(set(writer, QStringLiteral("n=3")));
    QVERIFY(events.wait(QStringLiteral("{n=3}")));
    QCOMPARE(events.updates(), QStringList({"{n=2}", "{n=3}"}));
}

void SleepingWritersTest::aReplacementDoesNotWaitForIt()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("n=1000")));
    const ZopObject sleeper(testPath("object"), ZopObject::ReadWrite, false);
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    // The record of an update takes 24 bytes and 4, three lengths of 4, a name of 1, an encoding of 4 and the value;
    // the state takes one behind the file's 48 bytes.
    constexpr qint64 Record = 24 + 4 + 12 + 1 + 4 + 4;
    constexpr qint64 State = 48 + Record;
    constexpr qint64 Updates = (16384 + 4 * State - State) / Record;
    qint64 largest = 0;
    for (int n = 1000; n < 3000; ++n) {
        QVERIFY(set(writer, QStringLiteral("n=%1").arg(n)));
        largest = qMax(largest, QFileInfo(fileOf(testPath("object"))).size());
    }
    QCOMPARE(largest, State + Updates * Record);
}

void SleepingWritersTest::aDamagedHeaderIsSeenBeforeWriting()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("n=1")));
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    QVERIFY(set(writer, QStringLiteral("n=2")));
    QFile file(fileOf(testPath("object")));
    QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(47) && file.putChar('\xff'));
    file.close();
    const QByteArray damaged = content(testPath("object"));
    QVERIFY(!set(writer, QStringLiteral("n=3")));
    QCOMPARE(writer.errorString(),
             QStringLiteral("malformed content in \"%1\": the header is another one").arg(fileOf(testPath("object"))));
    QCOMPARE(content(testPath("object")), damaged);
    // It does not keep others from mending that.
    QString error;
    QVERIFY2(ZopObject::createAnew(testPath("object"), {}, &error), qPrintable(error));
    QVERIFY(set(writer, QStringLiteral("n=4")));
}

void SleepingWritersTest::whatOthersHaveSpoiltIsToldByACheck()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("n=1")));
    ZopObject object(testPath("object"), ZopObject::ReadWrite, false);
    QVERIFY(object.check());
    QFile file(fileOf(testPath("object")));
    QVERIFY(file.open(QIODevice::Append) && file.write("garbage") == 7);
    file.close();
    QVERIFY(set(testPath("object"), QStringLiteral("n=2")));
    const LogLines log;
    QVERIFY(!object.check());
    QCOMPARE(log.lines,
             QStringList(
                 {QStringLiteral("Skipped 7 bytes of malformed content in \"%1\"").arg(fileOf(testPath("object")))}));
}

void SleepingWritersTest::anUnchangedFileIsNotRead()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("n=1")));
    ZopObject object(testPath("object"), ZopObject::ReadWrite, false);
    const auto reads = [] { return counted("syscr: "); };
    const auto readsOfCheck = [&] {
        const int before = reads();
        const int own = reads() - before;
        const bool isSound = object.check();
        return isSound ? reads() - before - 2 * own : -1;
    };
    if (reads() < 0)
        return QTest::qSkip("the kernel does not count what is read", __FILE__, __LINE__);
    QVERIFY(readsOfCheck() > 0);
    // A moment after its last change, nothing has to be read to know that there was none.
    QVERIFY(waitUntil([&readsOfCheck] { return readsOfCheck() == 0; }));
    QVERIFY(set(testPath("object"), QStringLiteral("n=2")));
    QVERIFY(readsOfCheck() > 0);
}

void SleepingWritersTest::aFileThatWaitsForAReaderIsReadOnce()
{
    const auto bytes = [] { return counted("rchar: "); };
    if (bytes() < 0)
        return QTest::qSkip("the kernel does not count what is read", __FILE__, __LINE__);
    QVERIFY(publish(testPath("object"), QString()));
    const ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    const auto isLong = [] { return QFileInfo(fileOf(testPath("object"))).size() > 4194304; };
    for (int writes = 0; !isLong() && writes < 50; ++writes)
        QVERIFY(set(writer, QStringLiteral("p=100000*p")));
    QVERIFY(isLong());
    // The writer has counted what is there; now it adds to that.
    const int before = bytes();
    QVERIFY(set(writer, QStringLiteral("p=100000*p")));
    const int read = bytes() - before;
    QVERIFY2(read < 1000000, qPrintable(QString::number(read)));
    QVERIFY(isLong());
}

CONTRACT_TEST_MAIN(SleepingWritersTest)

#include "tst_sleepingwriters.moc"
