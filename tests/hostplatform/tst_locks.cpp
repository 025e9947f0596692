// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"
#include "lockholder.h"
#include "sleeps.h"

#include <memory>

using namespace morvek;

namespace {

QString lockedText(const QString &path)
{
    return QStringLiteral("another process keeps \"%1\" locked").arg(fileOf(path));
}

} // namespace

/*! Whatever a stopped process keeps locked hinders nobody for long. A call that waited for it would never return. */
class LockTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anUpdateOfALockedObjectIsRefused();
    void anObjectThatIsLockedAltogetherIsRead();
    void nobodyWaitsWhoDoesNotWantTo();
    void aLockedObjectIsNotRemoved();
    void nothingIsMadeOrRemovedInALockedFolder();
    void aLockedFolderDoesNotHinderUpdates();
    void nothingIsServedInALockedFolder();
    void aServerEndsInALockedFolder();
};

void LockTest::anUpdateOfALockedObjectIsRefused()
{
    QVERIFY(publish(testPath("locked"), QStringLiteral("a=1")));
    QVERIFY(publish(testPath("other"), QStringLiteral("a=1")));
    ZopObject reader(testPath("locked"), ZopObject::Subscribe, false);
    QSignalSpy updates(&reader, &ZopObject::attributesChanged);
    ZopObject writer(testPath("locked"), ZopObject::ReadWrite, false);
    auto holder = std::make_unique<LockHolder>(fileOf(testPath("locked")));
    QVERIFY(holder->holds());
    QVERIFY(!set(writer, QStringLiteral("a=2")));
    QCOMPARE(writer.errorString(), lockedText(testPath("locked")));
    QVERIFY(set(testPath("other"), QStringLiteral("a=2")));
    ZopObject fresh(testPath("locked"), ZopObject::Subscribe, false);
    fresh.setAttributeCacheEnabled(true);
    QCOMPARE(fresh.attribute(QStringLiteral("a")).toInt(), 1);
    holder.reset();
    QVERIFY(set(writer, QStringLiteral("a=3")));
    QTRY_COMPARE(updates.count(), 1);
    QCOMPARE(reader.attribute(QStringLiteral("a")).toInt(), 3);
}

void LockTest::anObjectThatIsLockedAltogetherIsRead()
{
    QVERIFY(publish(testPath("locked"), QStringLiteral("a=1")));
    const LockHolder holder(fileOf(testPath("locked")), LockHolder::WholeFile);
    QVERIFY(holder.holds());
    ZopObject reader(testPath("locked"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    QCOMPARE(reader.attribute(QStringLiteral("a")).toInt(), 1);
}

void LockTest::nobodyWaitsWhoDoesNotWantTo()
{
    QVERIFY(publish(testPath("locked"), QStringLiteral("a=1")));
    ZopObject writer(testPath("locked"), ZopObject::ReadWrite, false);
    const auto refused = [&writer] { QVERIFY(!set(writer, QStringLiteral("a=2"))); };
    const LockHolder holder(fileOf(testPath("locked")));
    QVERIFY(holder.holds());
    QVERIFY(leastSleepsIn(refused) > 0);
    {
        const ZopObject::NoWaiting noWaiting;
        ZopObject::NoWaiting(); // ends what it has begun only
        QCOMPARE(leastSleepsIn(refused), 0L);
    }
    QVERIFY(leastSleepsIn(refused) > 0);
}

void LockTest::aLockedObjectIsNotRemoved()
{
    QVERIFY(publish(testPath("locked"), QStringLiteral("a=1")));
    QString error;
    {
        const LockHolder holder(fileOf(testPath("locked")));
        QVERIFY(holder.holds());
        QVERIFY(!ZopObject::remove(testPath("locked"), &error));
    }
    QCOMPARE(error, lockedText(testPath("locked")));
    QVERIFY(QFile::exists(fileOf(testPath("locked"))));
    QVERIFY2(ZopObject::remove(testPath("locked"), &error), qPrintable(error));
}

void LockTest::nothingIsMadeOrRemovedInALockedFolder()
{
    QVERIFY(publish(testPath("there"), QStringLiteral("a=1")));
    const QString folder = testFolder().chopped(1);
    QString error;
    {
        const LockHolder holder(fileOf(folder));
        QVERIFY(holder.holds());
        QVERIFY(!ZopObject::create(testPath("fresh"), ZopChangeset(), &error));
        QCOMPARE(error, lockedText(folder));
        error.clear();
        QVERIFY(!ZopObject::remove(testPath("there"), &error));
        QCOMPARE(error, lockedText(folder));
        QVERIFY(QFile::exists(fileOf(testPath("there"))));
        QVERIFY(!QFile::exists(fileOf(testPath("fresh"))));
    }
    QVERIFY2(ZopObject::create(testPath("fresh"), ZopChangeset(), &error), qPrintable(error));
    QVERIFY2(ZopObject::remove(testPath("there"), &error), qPrintable(error));
}

void LockTest::aLockedFolderDoesNotHinderUpdates()
{
    QVERIFY(publish(testPath("there"), QStringLiteral("a=1")));
    const LockHolder holder(fileOf(testFolder().chopped(1)));
    QVERIFY(holder.holds());
    QVERIFY(set(testPath("there"), QStringLiteral("a=2")));
}

void LockTest::nothingIsServedInALockedFolder()
{
    QVERIFY(publish(testPath("there"), QStringLiteral("a=1")));
    const QString folder = testFolder().chopped(1);
    const LockHolder holder(fileOf(folder));
    QVERIFY(holder.holds());
    const ZopObject server(testPath("control"), ZopObject::Publish, true);
    QVERIFY(!server.isValid());
    QCOMPARE(server.errorString(), lockedText(folder));
}

void LockTest::aServerEndsInALockedFolder()
{
    auto server = std::make_unique<ZopObject>(testPath("control"), ZopObject::Publish, true);
    QVERIFY(server->isValid());
    {
        const LockHolder holder(fileOf(testFolder().chopped(1)));
        QVERIFY(holder.holds());
        server.reset();
    }
    // What is left of it is what a killed one leaves.
    QVERIFY(!ZopObject(testPath("control"), ZopObject::ReadWrite, false).isValid());
    QVERIFY(ZopObject(testPath("control"), ZopObject::Publish, true).isValid());
}

CONTRACT_TEST_MAIN(LockTest)

#include "tst_locks.moc"
