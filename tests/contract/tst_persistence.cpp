// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"

using namespace morvek;

namespace {

constexpr int Updates = 100; // of up to 60 KB each: some 3 MB

/*! Removals may be told in any order. */
QStringList sorted(QStringList lines)
{
    lines.sort();
    return lines;
}

} // namespace

class PersistenceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesOutliveTheirWriter();
    void removalTellsTheAttributesAsRemoved();
    void removalIsToldToAnUncachedObjectToo();
    void theLastUpdateIsToldBeforeTheRemoval();
    void recreationTellsTheNewValues();
    void recreationIsToldToAnUncachedObjectToo();
    void recreationWithoutValuesTellsNothing();
    void everyUpdateSinceTheRecreationIsTold();
    void removalIsToldThoughTheCacheIsEnabledAgain();
    void aRemovedObjectCannotBeWritten();
    void anObjectOpenedAfterManyUpdatesHasThePresentState();
    void aLargeStateSurvivesManyUpdates();
};

void PersistenceTest::valuesOutliveTheirWriter()
{
    {
        ZopObject writer(testPath("object"), ZopObject::Publish, false);
        QVERIFY(set(writer, QStringLiteral("a=1 b=1")));
        QVERIFY(set(writer, QStringLiteral("a=2 -b")));
    }
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    reader.setAttributeCacheEnabled(true);
    QCOMPARE(events.lines, QStringList({"a=2", "{a=2}"}));
}

void PersistenceTest::removalTellsTheAttributesAsRemoved()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("b=1 a=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    const Events events(&reader);
    QVERIFY(ZopObject::remove(testPath("object")));
    QVERIFY(events.wait(QStringLiteral("{-a -b}")));
    QCOMPARE(sorted(events.lines.mid(0, 2)), QStringList({"-a", "-b"}));
    QCOMPARE(events.lines.mid(2), QStringList({"{-a -b}"}));
    QVERIFY(!reader.attribute(QStringLiteral("a")).isValid());
    QVERIFY(reader.isValid());
}

void PersistenceTest::removalIsToldToAnUncachedObjectToo()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1 b=1")));
    QVERIFY(set(testPath("object"), QStringLiteral("c=1 -b")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    QVERIFY(ZopObject::remove(testPath("object")));
    QVERIFY(events.wait(QStringLiteral("{-a -c}")));
    QCOMPARE(sorted(events.lines.mid(0, 2)), QStringList({"-a", "-c"}));
    QCOMPARE(events.lines.mid(2), QStringList({"{-a -c}"}));
}

void PersistenceTest::theLastUpdateIsToldBeforeTheRemoval()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    const Events events(&reader);
    QVERIFY(set(testPath("object"), QStringLiteral("a=2")));
    QVERIFY(set(testPath("object"), QStringLiteral("b=2")));
    QVERIFY(ZopObject::remove(testPath("object")));
    QVERIFY(events.wait(QStringLiteral("{-a -b}")));
    QCOMPARE(events.updates(), QStringList({"{a=2}", "{b=2}", "{-a -b}"}));
}

void PersistenceTest::recreationTellsTheNewValues()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1 b=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    const Events events(&reader);
    // First with a turn of the event loop between removal and creation, then without one.
    QVERIFY(ZopObject::remove(testPath("object")));
    QVERIFY(events.wait(QStringLiteral("{-a -b}")));
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1 c=2")));
    QVERIFY(events.wait(QStringLiteral("{a=1 c=2}")));
    QVERIFY(ZopObject::remove(testPath("object")));
    QVERIFY(publish(testPath("object"), QStringLiteral("d=3")));
    QVERIFY(events.wait(QStringLiteral("{d=3}")));
    QVERIFY(set(testPath("object"), QStringLiteral("d=4")));
    QVERIFY(events.wait(QStringLiteral("{d=4}")));
    QCOMPARE(events.updates(), QStringList({"{-a -b}", "{a=1 c=2}", "{-a -c}", "{d=3}", "{d=4}"}));
    QCOMPARE(reader.attribute(QStringLiteral("d")).toString(), QStringLiteral("4"));
    QVERIFY(!reader.attribute(QStringLiteral("c")).isValid());
}

void PersistenceTest::recreationIsToldToAnUncachedObjectToo()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    QVERIFY(ZopObject::remove(testPath("object")));
    QVERIFY(publish(testPath("object"), QStringLiteral("b=2")));
    QVERIFY(events.wait(QStringLiteral("{b=2}")));
    QVERIFY(set(testPath("object"), QStringLiteral("b=3")));
    QVERIFY(events.wait(QStringLiteral("{b=3}")));
    QCOMPARE(events.updates(), QStringList({"{-a}", "{b=2}", "{b=3}"}));
}

void PersistenceTest::recreationWithoutValuesTellsNothing()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    const Events events(&reader);
    for (int round = 0; round < 2; ++round) { // the second time there is nothing to remove either
        QVERIFY(ZopObject::remove(testPath("object")));
        QVERIFY(publish(testPath("object"), QString()));
    }
    QVERIFY(set(testPath("object"), QStringLiteral("end=1")));
    QVERIFY(events.wait(QStringLiteral("{end=1}")));
    QCOMPARE(events.updates(), QStringList({"{-a}", "{end=1}"}));
}

void PersistenceTest::everyUpdateSinceTheRecreationIsTold()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    const Events events(&reader);
    QVERIFY(ZopObject::remove(testPath("object")));
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    for (const char *update : {"a=1", "a=2", "a=2", "-a", "end=1"})
        QVERIFY(set(testPath("object"), QLatin1String(update)));
    QVERIFY(events.wait(QStringLiteral("{end=1}")));
    QCOMPARE(events.updates(), QStringList({"{-a}", "{a=1}", "{a=1}", "{a=2}", "{a=2}", "{-a}", "{end=1}"}));
}

void PersistenceTest::removalIsToldThoughTheCacheIsEnabledAgain()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1 b=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    reader.setAttributeCacheEnabled(true);
    QVERIFY(ZopObject::remove(testPath("object")));
    reader.setAttributeCacheEnabled(true);
    QVERIFY(events.wait(QStringLiteral("{-a -b}")));
    QVERIFY(!reader.attribute(QStringLiteral("a")).isValid());
    QVERIFY(publish(testPath("object"), QStringLiteral("a=2 b=2")));
    QVERIFY(events.wait(QStringLiteral("{a=2 b=2}")));

    QVERIFY(ZopObject::remove(testPath("object")));
    QVERIFY(publish(testPath("object"), QStringLiteral("a=3")));
    reader.setAttributeCacheEnabled(true);
    QVERIFY(set(testPath("object"), QStringLiteral("end=1")));
    QVERIFY(events.wait(QStringLiteral("{end=1}")));
    QCOMPARE(events.lines.count(QStringLiteral("-b")), 2);
    QCOMPARE(reader.attribute(QStringLiteral("a")).toString(), QStringLiteral("3"));
}

void PersistenceTest::aRemovedObjectCannotBeWritten()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    QVERIFY(set(writer, QStringLiteral("a=2")));
    QVERIFY(ZopObject::remove(testPath("object")));
    QVERIFY(!set(writer, QStringLiteral("a=3")));
    QVERIFY(!writer.errorString().isEmpty());
    const ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    QVERIFY(!reader.isValid());
    QVERIFY(publish(testPath("object"), QString()));
    QVERIFY(set(writer, QStringLiteral("a=4")));
    ZopObject later(testPath("object"), ZopObject::Subscribe, false);
    later.setAttributeCacheEnabled(true);
    QCOMPARE(later.attribute(QStringLiteral("a")).toString(), QStringLiteral("4"));
}

void PersistenceTest::anObjectOpenedAfterManyUpdatesHasThePresentState()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("gone=1 kept=1")));
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    QVERIFY(set(writer, QStringLiteral("-gone")));
    for (int n = 1; n <= Updates; ++n) {
        QVERIFY(set(writer, QStringLiteral("p=40000*p n=%1").arg(n)));
        ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
        const Events events(&reader);
        reader.setAttributeCacheEnabled(true);
        QCOMPARE(events.updates(), QStringList({QStringLiteral("{kept=1 n=%1 p=40000*p}").arg(n)}));
    }
}

void PersistenceTest::aLargeStateSurvivesManyUpdates()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    // Written in parts, more of them than one update may be.
    for (const char *name : {"a", "b", "c"}) {
        for (int i = 0; i < 3; ++i)
            QVERIFY(set(writer, QStringLiteral("%1=5000000*%1").arg(QLatin1String(name))));
    }
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    reader.setAttributeCacheEnabled(true);
    QCOMPARE(events.updates(), QStringList({"{a=5000000*a b=5000000*b c=5000000*c}"}));
}

CONTRACT_TEST_MAIN(PersistenceTest)

#include "tst_persistence.moc"
