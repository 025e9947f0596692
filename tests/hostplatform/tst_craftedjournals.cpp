// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"
#include "journalbytes.h"
#include "journalreader.h"
#include "sanitizedheap.h"

#include <QtCore/QTimer>

#include <csignal>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace morvek;

namespace {

constexpr qint64 MiB = 1024 * 1024;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int MostGrowth = 200; // of which a sanitizer has the most
#else
constexpr int MostGrowth = 32;
#endif

/*! An update that sets the attribute n, and another one to \a size bytes. */
QByteArray update(int n, int size = 0)
{
    using namespace JournalBytes;
    return record(5,
                  number(2, 4) + block("n") + block(QByteArray::number(n)) + block("text") + block("p")
                      + block(QByteArray(size, 'p')) + block("text"));
}

/*! What a killed writer leaves of it. */
QByteArray torn(int size)
{
    return update(0, size).left(size / 2);
}

/*! What reading a file has brought. */
struct Reading
{
    QList<int> told; // the attribute n of each update
    qint64 work = 0;
    bool isMalformed = false;
    qint64 skipped = 0;
};

Reading readAll(Journal::Reader *reader)
{
    Reading reading;
    reader->setReport([&reading](qint64, qint64 size) { reading.skipped += size; });
    Journal::Record record;
    while (reader->next(&record))
        reading.told << record.changes.assignments.value(QStringLiteral("n")).toInt();
    reading.work = reader->work();
    reading.isMalformed = reader->isMalformed();
    return reading;
}

Reading readFile(const QString &path)
{
    Journal::Reader reader;
    QString error;
    if (!reader.open(ZopPath::object(path), &error))
        qWarning("%s", qPrintable(error));
    return readAll(&reader);
}

bool append(const QString &path, const QByteArray &bytes)
{
    QFile file(fileOf(path));
    return file.open(QIODevice::Append) && file.write(bytes) == bytes.size();
}

qint64 memoryOf(const char *what)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(what))
            return line.simplified().split(' ').value(1).toLongLong() * 1024;
    }
    return 0;
}

/*! By how many MiB reading the file of \a path, of which \a told updates are told, makes a process grow. */
int growth(const QString &path, int told)
{
    const pid_t child = fork();
    if (child == 0) {
        const qint64 before = memoryOf("VmRSS:");
        const bool asExpected = readFile(path).told.size() == told;
        const qint64 most = (memoryOf("VmHWM:") - before) / MiB;
        _exit(asExpected ? int(qMin<qint64>(most, 254)) : 255);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/*! How often the event loop has turned meanwhile. */
class Turns
{
public:
    Turns()
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { ++count; });
        m_timer.start(0);
    }

    int count = 0;

private:
    QTimer m_timer;
};

} // namespace

/*! Whatever stands in an object's file: what reading it costs is in proportion to the file. */
class CraftedJournalsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void workIsThatOfTheBytes_data();
    void workIsThatOfTheBytes();
    void workIsThatOfTheBytesWhereverTheyComeIn();
    void memoryDoesNotDependOnTheFile_data();
    void memoryDoesNotDependOnTheFile();
    void tooMuchNonsenseMakesAFileMalformed();
    void aMalformedFileIsNotWrittenTo();
    void whatIsCutOffAndWrittenAnewIsTold();
    void whatHasBecomeWholeMeanwhileIsTold();
    void readingLeavesTurnsToOthers();
    void readingWhatIsGoneLeavesTurnsToOthers();
    void anAbsurdHeaderIsRefused_data();
    void anAbsurdHeaderIsRefused();
    void whatAnEarlierVersionLeftIsRead();

private:
    QString m_path;
};

void CraftedJournalsTest::init()
{
    m_path = testPath("object") + QString::number(qHash(QByteArray(QTest::currentDataTag())));
    QVERIFY(plant(m_path, JournalBytes::header()));
}

void CraftedJournalsTest::workIsThatOfTheBytes_data()
{
    using namespace JournalBytes;
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("updates");
    const int size = 2 * int(MiB);

    QByteArray sound;
    for (int n = 0; n < 10; ++n)
        sound += update(n, size / 10);
    QTest::newRow("updates") << sound << 10;

    const QByteArray claim = recordHeader(1, quint32(MiB), 0);
    QTest::newRow("claims of 1 MiB") << claim.repeated(size / claim.size()) << 0;

    // As above, but each claim is followed by an update: it has to be read once more before it is stepped over.
    const QByteArray pair = recordHeader(1, 16 * MiB, 0) + update(1);
    QTest::newRow("claims between updates") << pair.repeated(size / pair.size()) << size / pair.size();
    const QByteArray shortPair = recordHeader(1, quint32(MiB / 4), 0) + update(1);
    QTest::newRow("claims that end, between updates")
        << shortPair.repeated(size / shortPair.size()) << size / shortPair.size();

    QTest::newRow("torn records") << torn(40000).repeated(size / 20000) << 0;
    const QByteArray tornPair = torn(4000) + update(1);
    QTest::newRow("torn records between updates")
        << tornPair.repeated(size / tornPair.size()) << size / tornPair.size();
    QTest::newRow("markers") << number(Marker, 8).repeated(size / 8) << 0;
    QTest::newRow("zeros") << QByteArray(size, '\0') << 0;
    const QByteArray noUpdate = record(1, "?");
    QTest::newRow("records of no update") << noUpdate.repeated(size / noUpdate.size()) << 0;
}

void CraftedJournalsTest::workIsThatOfTheBytes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, updates);
    QVERIFY(append(m_path, bytes));
    QVERIFY(append(m_path, update(7)));
    const Reading reading = readFile(m_path);
    QVERIFY(!reading.isMalformed);
    QCOMPARE(reading.told.size(), updates + 1);
    QCOMPARE(reading.told.last(), 7);
    // A claim costs as much as a kilobyte, and there may be one every 24 bytes.
    const qint64 most = bytes.count(JournalBytes::number(JournalBytes::Marker, 8)) * 2 * 1100 + 8 * bytes.size();
    QVERIFY2(reading.work < most, qPrintable(QString::number(reading.work)));
}

void CraftedJournalsTest::workIsThatOfTheBytesWhereverTheyComeIn()
{
    Journal::Reader reader;
    QString error;
    QVERIFY(reader.open(ZopPath::object(m_path), &error));
    QVERIFY(append(m_path, JournalBytes::recordHeader(1, 16 * MiB, 0)));
    constexpr int Pieces = 500;
    constexpr int PieceSize = 4000;
    for (int i = 0; i < Pieces; ++i) {
        QVERIFY(append(m_path, QByteArray(PieceSize, 'x')));
        QCOMPARE(readAll(&reader).told, QList<int>());
    }
    QVERIFY(append(m_path, update(7)));
    const Reading reading = readAll(&reader);
    QCOMPARE(reading.told, QList<int>({7}));
    QCOMPARE(reading.skipped, qint64(24 + Pieces * PieceSize));
    QVERIFY2(reading.work < 5LL * (PieceSize + 1000) * Pieces, qPrintable(QString::number(reading.work)));
}

void CraftedJournalsTest::memoryDoesNotDependOnTheFile_data()
{
    QTest::addColumn<qint64>("hole");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("updates");
    QTest::newRow("a hole of 3 GiB") << 3072 * MiB << QByteArray() << 1;
    QTest::newRow("60 MiB of nonsense") << qint64(0) << QByteArray(60 * MiB, 'x') << 1;
    QTest::newRow("17 MiB of claims") << qint64(0) << JournalBytes::recordHeader(1, 16 * MiB, 0).repeated(17 * MiB / 24)
                                      << 1;
    QTest::newRow("an update of 15 MiB") << qint64(0) << torn(2000) + update(3, 15 * MiB) << 2;
}

void CraftedJournalsTest::memoryDoesNotDependOnTheFile()
{
    QFETCH(qint64, hole);
    QFETCH(QByteArray, bytes);
    QFETCH(int, updates);
#ifdef HEAP_IS_SANITIZED
    // The QSKIP macro is not pedantic enough for Clang.
    return QTest::qSkip("a sanitizer keeps what was freed", __FILE__, __LINE__);
#endif
    QVERIFY(append(m_path, bytes));
    QVERIFY(QFile::resize(fileOf(m_path), QFileInfo(fileOf(m_path)).size() + hole));
    QVERIFY(append(m_path, update(7)));
    const int grown = growth(m_path, updates);
    QVERIFY2(grown >= 0 && grown <= MostGrowth, qPrintable(QString::number(grown)));
    const qint64 written = bytes.size();
    QVERIFY(readFile(m_path).work < 4 * MiB + 60 * written);
}

void CraftedJournalsTest::tooMuchNonsenseMakesAFileMalformed()
{
    QVERIFY(append(m_path, update(1) + QByteArray(64 * MiB, 'x') + update(2)));
    Reading reading = readFile(m_path);
    QCOMPARE(reading.told, QList<int>({1, 2}));
    QCOMPARE(reading.skipped, 64 * MiB);
    QVERIFY(!reading.isMalformed);

    const LogLines log;
    QVERIFY(append(m_path, torn(20) + update(3)));
    reading = readFile(m_path);
    QCOMPARE(reading.told, QList<int>({1, 2}));
    QVERIFY(reading.isMalformed);

    ZopObject object(m_path, ZopObject::Subscribe, false);
    object.setAttributeCacheEnabled(true);
    QCOMPARE(object.attribute(QStringLiteral("n")).toInt(), 2);
    QCOMPARE(log.lines.last(),
             QStringLiteral("malformed content in \"%1\": more than 64 MiB of it are no records").arg(fileOf(m_path)));
}

void CraftedJournalsTest::aMalformedFileIsNotWrittenTo()
{
    QVERIFY(append(m_path, QByteArray(64 * MiB + 30, 'x')));
    const qint64 size = QFileInfo(fileOf(m_path)).size();
    ZopObject object(m_path, ZopObject::ReadWrite, false);
    QVERIFY(!set(object, QStringLiteral("a=1")));
    QCOMPARE(object.errorString(),
             QStringLiteral("malformed content in \"%1\": more than 64 MiB of it are no records").arg(fileOf(m_path)));
    QCOMPARE(QFileInfo(fileOf(m_path)).size(), size);
}

void CraftedJournalsTest::whatIsCutOffAndWrittenAnewIsTold()
{
    // What a writer that found no room has written is seen for a moment, behind what a killed one has left.
    Journal::Reader reader;
    QString error;
    QVERIFY(reader.open(ZopPath::object(m_path), &error));
    QVERIFY(append(m_path, torn(3000)));
    const qint64 size = QFileInfo(fileOf(m_path)).size();
    QVERIFY(append(m_path, update(1, 100000).left(50000)));
    QCOMPARE(readAll(&reader).told, QList<int>());
    QVERIFY(QFile::resize(fileOf(m_path), size));
    QVERIFY(append(m_path, update(2) + update(3, 100000)));
    QCOMPARE(readAll(&reader).told, QList<int>({2, 3}));
    QVERIFY(append(m_path, update(4)));
    const Reading reading = readAll(&reader);
    QCOMPARE(reading.told, QList<int>({4}));
    QCOMPARE(reading.skipped, qint64(0));
}

void CraftedJournalsTest::whatHasBecomeWholeMeanwhileIsTold()
{
    const QByteArray whole = update(1, 3000);
    QVERIFY(append(m_path, QByteArray(whole).replace(2000, 1, "x") + update(2)));
    Journal::Reader reader;
    QString error;
    QVERIFY(reader.open(ZopPath::object(m_path), &error));
    Journal::Record record;
    // The first piece reads, the second one finds the update that follows.
    for (int i = 0; i < 2; ++i) {
        QVERIFY(reader.readOn());
        QVERIFY(!reader.nextOfRead(&record));
    }
    QFile file(fileOf(m_path));
    QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(JournalBytes::HeaderSize));
    QCOMPARE(int(file.write(whole)), whole.size());
    file.close();
    const Reading reading = readAll(&reader);
    QCOMPARE(reading.told, QList<int>({1, 2}));
    QCOMPARE(reading.skipped, qint64(0));
}

void CraftedJournalsTest::readingLeavesTurnsToOthers()
{
    ZopObject object(m_path, ZopObject::Subscribe, false);
    const Events events(&object);
    const Turns turns;
    QVERIFY(append(m_path, QByteArray(32 * MiB, 'x') + update(1)));
    QVERIFY(waitUntil([&] { return !events.updates().isEmpty(); }));
    // What follows is read at least twice, 2 MiB a turn.
    QVERIFY2(turns.count > 24, qPrintable(QString::number(turns.count)));
}

void CraftedJournalsTest::readingWhatIsGoneLeavesTurnsToOthers()
{
    QVERIFY(append(m_path, update(1) + QByteArray(32 * MiB, 'x') + update(2)));
    ZopObject object(m_path, ZopObject::Subscribe, false);
    const Events events(&object);
    const Turns turns;
    QVERIFY(ZopObject::remove(m_path));
    QVERIFY(waitUntil([&] { return !events.updates().isEmpty(); }));
    QCOMPARE(events.updates(), QStringList({"{-n -p}"}));
    // As above, to its end and once more from its beginning.
    QVERIFY2(turns.count > 48, qPrintable(QString::number(turns.count)));
}

void CraftedJournalsTest::anAbsurdHeaderIsRefused_data()
{
    using namespace JournalBytes;
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QString>("reason");
    constexpr quint64 Largest = HeaderSize + RecordHeaderSize + 16 * MiB;
    QTest::newRow("the largest state") << header(Marker, Largest) << QString();
    const QString absurd = QStringLiteral("the header is absurd");
    QTest::newRow("a larger one") << header(Marker, Largest + 1) << absurd;
    QTest::newRow("beyond any number") << header(Marker, 0x7fffffffffffffff) << absurd;
    QTest::newRow("below any number") << header(Marker, 0xffffffffffffffff) << absurd;
    QTest::newRow("within the header") << header(Marker, HeaderSize - 1) << absurd;
    QTest::newRow("no marker") << header(0) << absurd;
    QTest::newRow("another version") << header().replace(7, 1, "2")
                                     << QStringLiteral("this is a journal of another version");
    QTest::newRow("text") << QByteArray("just some text, longer than a header, that somebody has written here")
                          << QStringLiteral("this is no journal");
    QTest::newRow("nothing") << QByteArray() << QStringLiteral("this is no journal");
    QTest::newRow("damaged") << header().replace(20, 1, "x") << QStringLiteral("the header is damaged");
    QTest::newRow("cut off") << header().left(47) << QStringLiteral("the header is damaged");
}

void CraftedJournalsTest::anAbsurdHeaderIsRefused()
{
    QFETCH(QByteArray, header);
    QFETCH(QString, reason);
    QVERIFY(plant(m_path, header));
    ZopObject object(m_path, ZopObject::ReadWrite, false);
    QCOMPARE(object.isValid(), reason.isEmpty());
    QCOMPARE(object.errorString(),
             reason.isEmpty() ? QString()
                              : QStringLiteral("malformed content in \"%1\": %2").arg(fileOf(m_path), reason));
    if (reason.isEmpty())
        QVERIFY(set(object, QStringLiteral("a=1")));
}

void CraftedJournalsTest::whatAnEarlierVersionLeftIsRead()
{
    // Made by an installed one of earlier: a=1, then b=2, then -a.
    const QByteArray file = QByteArray::fromHex(
        "5a4f504a524e4c318b43d7138bea6c3d7be8cda4d13cb8fc01000000000000004c000000000000008e53c6cd00000000"
        "8b43d7138bea6c3d0000000000000000040000006fc6d57b000000008b43d7138bea6c3d515b11ac5cd8b26516000000"
        "0525f25d010000000100000061010000003104000000746578748b43d7138bea6c3d34e4f52e108c62c716000000a2b2"
        "da5a010000000100000062010000003204000000746578748b43d7138bea6c3d87a5fefecebe75a3090000002f3354d5"
        "000000000100000061");
    QVERIFY(plant(m_path, file));
    ZopObject object(m_path, ZopObject::ReadWrite, false);
    const Events events(&object);
    object.setAttributeCacheEnabled(true);
    QCOMPARE(events.updates(), QStringList({"{b=2}"}));
    QVERIFY(set(object, QStringLiteral("c=3")));
    QVERIFY(content(m_path).startsWith(file));
}

CONTRACT_TEST_MAIN(CraftedJournalsTest)

#include "tst_craftedjournals.moc"
