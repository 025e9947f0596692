// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"
#include "krellogger.h"

#include <QtCore/QFileInfo>

#include <csignal>
#include <random>

#include <sys/resource.h>
#include <unistd.h>

using namespace morvek;

namespace {

/*! An object's file after the updates a=1 and a=2, and a reader that has not been told of them yet. */
struct TwoUpdates
{
    explicit TwoUpdates(const QString &objectPath)
        : path(objectPath)
    {
        publish(path, QString());
        reader.reset(new ZopObject(path, ZopObject::Subscribe, false));
        events.reset(new Events(reader.get()));
        set(path, QStringLiteral("a=1"));
        firstEnd = int(content(path).size());
        set(path, QStringLiteral("a=2"));
        bytes = content(path);
    }

    QString path;
    std::unique_ptr<ZopObject> reader;
    std::unique_ptr<Events> events;
    int firstEnd = 0;
    QByteArray bytes;
};

} // namespace

class JournalTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTornRecordIsSteppedOver();
    void aDamagedRecordIsSteppedOver();
    void aTornRecordIsNoNewsBeforeAnotherFollows();
    void garbageIsReportedAndSteppedOver();
    void aMalformedFileIsRefused_data();
    void aMalformedFileIsRefused();
    void aMalformedFileMayBeRemoved();
    void aFileThatTurnsMalformedHarmsNobody();
    void afterMalformedContentTheObjectGoesOn();
    void randomDamageHarmsNobody();
    void aFileDoesNotGrow();
    void anUpdateThatIsTooLargeIsNotWritten();
    void aStateThatWouldBeTooLargeIsRefused();
    void aFullDiskLeavesNothingBehind();
    void aFloodLeavesTurnsToOthers();
    void whoIsLeftBehindAgainMissesNoAttribute();
};

void JournalTest::aTornRecordIsSteppedOver()
{
    const int length = TwoUpdates(testPath("measure")).bytes.size();
    const int start = TwoUpdates(testPath("measure2")).firstEnd;
    for (int cut = start + 1; cut < length; ++cut) {
        const TwoUpdates object(testPath("object") + QString::number(cut));
        const LogLines log;
        QVERIFY(QFile::resize(fileOf(object.path), cut));
        QVERIFY(set(object.path, QStringLiteral("a=3")));
        QVERIFY(object.events->wait(QStringLiteral("{a=3}")));
        QCOMPARE(object.events->updates(), QStringList({"{a=1}", "{a=3}"}));
        QCOMPARE(log.lines.size(), 1);
        QVERIFY2(log.lines.first().contains(fileOf(object.path)), qPrintable(log.lines.first()));
        ZopObject later(object.path, ZopObject::Subscribe, false);
        later.setAttributeCacheEnabled(true);
        QCOMPARE(later.attribute(QStringLiteral("a")).toString(), QStringLiteral("3"));
    }
}

void JournalTest::aDamagedRecordIsSteppedOver()
{
    const TwoUpdates measure(testPath("measure"));
    for (int at = measure.firstEnd; at < measure.bytes.size(); ++at) {
        const TwoUpdates object(testPath("object") + QString::number(at));
        QByteArray damaged = object.bytes;
        damaged[at] = char(damaged[at] ^ 0x10);
        QVERIFY(plant(object.path, damaged));
        QVERIFY(set(object.path, QStringLiteral("a=3")));
        QVERIFY(object.events->wait(QStringLiteral("{a=3}")));
        QCOMPARE(object.events->updates(), QStringList({"{a=1}", "{a=3}"}));
    }
}

void JournalTest::aTornRecordIsNoNewsBeforeAnotherFollows()
{
    const TwoUpdates object(testPath("object"));
    QVERIFY(QFile::resize(fileOf(object.path), object.bytes.size() - 1));
    QVERIFY(object.events->wait(QStringLiteral("{a=1}")));
    const LogLines log;
    // It may still be under way: a reader waits for its rest.
    QVERIFY(plant(object.path, object.bytes));
    QVERIFY(object.events->wait(QStringLiteral("{a=2}")));
    QCOMPARE(object.events->updates(), QStringList({"{a=1}", "{a=2}"}));
    QCOMPARE(log.lines, QStringList());
}

void JournalTest::garbageIsReportedAndSteppedOver()
{
    for (const int size : {1, 23, 24, 25, 100, 65535, 65536, 300000}) {
        const TwoUpdates object(testPath("object") + QString::number(size));
        const LogLines log;
        QFile file(fileOf(object.path));
        QVERIFY(file.open(QIODevice::Append));
        file.write(QByteArray(size, '\x55'));
        file.close();
        QVERIFY(set(object.path, QStringLiteral("a=3")));
        QVERIFY(object.events->wait(QStringLiteral("{a=3}")));
        QCOMPARE(object.events->updates(), QStringList({"{a=1}", "{a=2}", "{a=3}"}));
        const QStringList reported = log.lines.filter(fileOf(object.path));
        QVERIFY(!reported.isEmpty());
        QVERIFY2(reported.first().contains(QString::number(size)), qPrintable(reported.first()));
    }
}

void JournalTest::aMalformedFileIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    publish(QStringLiteral("/zop/sound"), QStringLiteral("a=1"));
    const QByteArray sound = content(QStringLiteral("/zop/sound"));
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("one byte") << QByteArray("Z");
    QTest::newRow("text") << QByteArray("a=1\nb=2\n").repeated(100);
    QTest::newRow("zeros") << QByteArray(1000000, '\0');
    QTest::newRow("half a header") << sound.left(20);
    for (const int at : {0, 7, 8, 16, 24, 32, 40}) {
        QByteArray damaged = sound;
        damaged[at] = char(damaged[at] ^ 1);
        QTest::addRow("byte %d", at) << damaged;
    }
}

void JournalTest::aMalformedFileIsRefused()
{
    QFETCH(QByteArray, bytes);
    const QString path = testPath("object") + QString::number(qHash(QByteArray(QTest::currentDataTag())));
    QVERIFY(plant(path, bytes));
    for (const auto mode : {ZopObject::Subscribe, ZopObject::ReadWrite, ZopObject::Publish}) {
        ZopObject object(path, mode, false);
        QVERIFY(!object.isValid());
        QVERIFY2(object.errorString().contains(fileOf(path)), qPrintable(object.errorString()));
        QVERIFY(!set(object, QStringLiteral("a=2")));
    }
    QVERIFY(!publish(path, QString()));
    QCOMPARE(content(path), bytes); // nothing is overwritten
}

void JournalTest::aMalformedFileMayBeRemoved()
{
    QVERIFY(plant(testPath("object"), "garbage"));
    QVERIFY(ZopObject::remove(testPath("object")));
    const ZopObject object(testPath("object"), ZopObject::Publish, false);
    QVERIFY(object.isValid());
}

void JournalTest::aFileThatTurnsMalformedHarmsNobody()
{
    QVERIFY(publish(testPath("beside"), QString()));
    ZopObject beside(testPath("beside"), ZopObject::Subscribe, false);
    const Events ofBeside(&beside);
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject reader(testPath("object"), ZopObject::ReadWrite, false);
    reader.setAttributeCacheEnabled(true);
    const Events events(&reader);
    QVERIFY(QFile::remove(fileOf(testPath("object"))));
    QVERIFY(plant(testPath("object"), "garbage"));
    QVERIFY(set(testPath("beside"), QStringLiteral("b=1")));
    QVERIFY(ofBeside.wait(QStringLiteral("{b=1}")));
    QVERIFY(!set(reader, QStringLiteral("a=2")));
    QVERIFY(reader.errorString().contains(fileOf(testPath("object"))));
    // Once there is an object again it is told.
    QVERIFY(ZopObject::remove(testPath("object")));
    QVERIFY(publish(testPath("object"), QStringLiteral("a=3")));
    QVERIFY(events.wait(QStringLiteral("{a=3}")));
    QCOMPARE(events.updates(), QStringList({"{-a}", "{a=3}"}));

    // The same when the malformed file itself becomes a sound one.
    QVERIFY(publish(testPath("sound"), QStringLiteral("a=4")));
    QVERIFY(QFile::remove(fileOf(testPath("object"))));
    QVERIFY(plant(testPath("object"), "garbage"));
    QVERIFY(set(testPath("beside"), QStringLiteral("b=2")));
    QVERIFY(ofBeside.wait(QStringLiteral("{b=2}")));
    QVERIFY(plant(testPath("object"), content(testPath("sound"))));
    QVERIFY(events.wait(QStringLiteral("{a=4}")));
    QCOMPARE(events.updates(), QStringList({"{-a}", "{a=3}", "{-a}", "{a=4}"}));
}

void JournalTest::afterMalformedContentTheObjectGoesOn()
{
    const TwoUpdates object(testPath("object"));
    QVERIFY(object.events->wait(QStringLiteral("{a=2}")));
    QVERIFY(QFile::resize(fileOf(object.path), 0)); // while it is open
    set(object.path, QStringLiteral("a=3"));
    QVERIFY(ZopObject::remove(object.path));
    QVERIFY(publish(object.path, QStringLiteral("a=4")));
    QVERIFY(object.events->wait(QStringLiteral("{a=4}")));
}

void JournalTest::randomDamageHarmsNobody()
{
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        const TwoUpdates object(testPath("object") + QString::number(round));
        QByteArray damaged = object.bytes;
        for (int i = 0; i < 4; ++i)
            damaged[int(random() % unsigned(damaged.size()))] = char(random());
        damaged.truncate(int(random() % unsigned(damaged.size() + 1)));
        QVERIFY(plant(object.path, damaged));
        QCoreApplication::processEvents();
        ZopObject later(object.path, ZopObject::Subscribe, false);
        later.setAttributeCacheEnabled(true);
        const QString told = later.attribute(QStringLiteral("a"), ZopVariant(QStringLiteral("none"))).toString();
        QVERIFY2(QStringList({"none", "1", "2"}).contains(told), qPrintable(told));
    }
}

void JournalTest::aFileDoesNotGrow()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    qint64 largest = 0;
    for (int n = 0; n < 20000; ++n) {
        QVERIFY(set(writer, QStringLiteral("n=%1").arg(n)));
        if (n % 1000 == 0)
            QCoreApplication::processEvents();
        largest = qMax(largest, QFileInfo(fileOf(testPath("object"))).size());
    }
    QVERIFY2(largest < 600000, qPrintable(QString::number(largest)));
    QStringList files = QDir(fileOf(testFolder())).entryList(QDir::Files | QDir::Hidden);
    files.removeAll(QStringLiteral(".object.old"));
    QCOMPARE(files, QStringList({"object"}));
}

void JournalTest::anUpdateThatIsTooLargeIsNotWritten()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    QVERIFY(!set(writer, QStringLiteral("a=17000000*x")));
    QVERIFY(!writer.errorString().isEmpty());
    QString error;
    QVERIFY(!ZopObject::create(testPath("other"), changesFrom(QStringLiteral("a=17000000*x")), &error));
    QVERIFY(!error.isEmpty());
    QVERIFY(set(writer, QStringLiteral("b=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    reader.setAttributeCacheEnabled(true);
    QCOMPARE(events.updates(), QStringList({"{a=1 b=1}"}));
    QStringList files = QDir(fileOf(testFolder())).entryList(QDir::Files | QDir::Hidden);
    QCOMPARE(files, QStringList({"object"}));
}

void JournalTest::aStateThatWouldBeTooLargeIsRefused()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=6000000*a")));
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    QVERIFY(set(writer, QStringLiteral("b=6000000*b")));
    // The state's record: 24 bytes and 4, then 4 bytes for each length, names of 1, encodings of 4, and the values.
    constexpr int Room = 16777216 - 28 - 3 * (12 + 1 + 4) - 12000000;
    const auto ofSize = [](const char *name, int size) {
        return QStringLiteral("%1=%2*%1").arg(QLatin1String(name)).arg(size);
    };
    const qint64 size = content(testPath("object")).size();
    QVERIFY(!set(writer, ofSize("c", Room + 1)));
    QCOMPARE(writer.errorString(), QStringLiteral("with this update the object's state would be too large"));
    QCOMPARE(qint64(content(testPath("object")).size()), size);

    QVERIFY(set(writer, ofSize("c", Room)));
    QVERIFY(!set(writer, ofSize("d", 1)));
    QVERIFY(!set(testPath("object"), ofSize("d", 1)));
    // What takes the place of something, or goes, makes room.
    QVERIFY(set(writer, ofSize("a", 6000000)));
    QVERIFY(!set(writer, ofSize("a", 6000001)));
    QVERIFY(set(testPath("object"), QStringLiteral("-a -none b=1 ") + ofSize("d", 11000000)));
    QVERIFY(!set(writer, ofSize("e", 2000000)));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    reader.setAttributeCacheEnabled(true);
    QCOMPARE(events.updates(),
             QStringList({QStringLiteral("{b=1 %1 %2}").arg(ofSize("c", Room), ofSize("d", 11000000))}));
    // So the file can be replaced, however often something large is written.
    for (int i = 0; i < 10; ++i)
        QVERIFY(set(writer, ofSize("d", 11000000)));
    QVERIFY(content(testPath("object")).size() < 100000000);
}

void JournalTest::aFullDiskLeavesNothingBehind()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    const QByteArray before = content(testPath("object"));
    const LogLines log;

    // A limit of the file's size, as a full disk, takes only a part of the update.
    rlimit usual = {};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &usual), 0);
    const rlimit tight = {rlim_t(before.size() + 1000), usual.rlim_max};
    signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &tight), 0);
    const bool written = set(writer, QStringLiteral("a=2 p=5000*p"));
    QString error;
    const bool created = ZopObject::create(testPath("other"), changesFrom(QStringLiteral("p=9000*p")), &error);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &usual), 0);
    QVERIFY(!written);
    QVERIFY(!writer.errorString().isEmpty());
    QVERIFY(!created);
    QVERIFY(!error.isEmpty());
    QCOMPARE(content(testPath("object")), before);
    QCOMPARE(QDir(fileOf(testFolder())).entryList(QDir::Files | QDir::Hidden), QStringList({"object"}));

    QVERIFY(set(writer, QStringLiteral("a=3")));
    QVERIFY(events.wait(QStringLiteral("{a=3}")));
    QCOMPARE(events.updates(), QStringList({"{a=3}"}));
    QCOMPARE(log.lines, QStringList());
}

void JournalTest::aFloodLeavesTurnsToOthers()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    int toldBefore = 0;
    const auto note = [&] { toldBefore = events.updates().size(); };
    connect(&reader, &ZopObject::attributesChanged, this, [&] {
        if (toldBefore == 0)
            QMetaObject::invokeMethod(this, note, Qt::QueuedConnection);
    });
    for (int n = 1; n <= 3000; ++n)
        QVERIFY(set(writer, QStringLiteral("n=%1").arg(n)));
    QVERIFY(events.wait(QStringLiteral("{n=3000}")));
    QVERIFY2(toldBefore > 0 && toldBefore < 1000, qPrintable(QString::number(toldBefore)));
}

void JournalTest::whoIsLeftBehindAgainMissesNoAttribute()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("kept=1 p=3000000*p")));
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    const Events events(&reader);
    // Beyond 4 MiB and four times the state, twice.
    const auto leaveBehind = [&writer](int n) {
        for (int i = 0; i < 16; ++i)
            set(writer, QStringLiteral("p=3000000*p n=%1").arg(n));
    };
    leaveBehind(1);
    // Reading such a state takes several turns: the file is emptied between two of them.
    int losses = 0;
    KrelLogger::setSink([&](KrelLogger::Level, unsigned short, const QString &) {
        if (++losses == 1)
            QMetaObject::invokeMethod(
                this, [&leaveBehind] { leaveBehind(2); }, Qt::QueuedConnection);
    });
    const bool isTold = waitUntil([&reader] { return reader.attribute(QStringLiteral("n")).toInt() == 2; });
    KrelLogger::setSink(KrelLogger::Sink());
    QVERIFY(isTold);
    QCOMPARE(losses, 2);
    QCOMPARE(events.lines, QStringList({"n=2", "{n=2}"}));
}

CONTRACT_TEST_MAIN(JournalTest)

#include "tst_journal.moc"
