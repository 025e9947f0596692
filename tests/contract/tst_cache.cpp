// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"

using namespace morvek;

class CacheTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsPresentValuesInsideTheCallToWhoIsConnected();
    void whoConnectsAfterwardsHearsNoOldNews();
    void whatWasWrittenBeforeEnablingIsNoNewsAfterwards();
    void whatWasWrittenBeforeEnablingIsToldOnce();
    void tellsNothingOfAnEmptyObject();
    void anUncachedObjectTellsOnlyWhatComesAfterItWasOpened();
    void withFalseNothingIsTold();
    void anAbsentAttributeReadsAsTheDefault();
    void aRemovedAttributeReadsAsTheDefault();
    void everyObjectOfAProcessHasItsOwn();
};

void CacheTest::tellsPresentValuesInsideTheCallToWhoIsConnected()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("b=2 a=1")));
    QVERIFY(set(testPath("object"), QStringLiteral("c=3 b=4")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    reader.setAttributeCacheEnabled(true);
    const QStringList present({"a=1", "b=4", "c=3", "{a=1 b=4 c=3}"});
    QCOMPARE(events.lines, present);
    QVERIFY(set(testPath("object"), QStringLiteral("a=5")));
    QVERIFY(events.wait(QStringLiteral("{a=5}")));
    QCOMPARE(events.lines, present + QStringList({"a=5", "{a=5}"}));
}

void CacheTest::whoConnectsAfterwardsHearsNoOldNews()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("scan_results=old")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    QCOMPARE(reader.attribute(QStringLiteral("scan_results")).toString(), QStringLiteral("old"));
    const Events events(&reader);
    QVERIFY(set(testPath("object"), QStringLiteral("scan_results=new")));
    QVERIFY(events.wait(QStringLiteral("{scan_results=new}")));
    QCOMPARE(events.lines, QStringList({"scan_results=new", "{scan_results=new}"}));
    QCOMPARE(reader.attribute(QStringLiteral("scan_results")).toString(), QStringLiteral("new"));
}

void CacheTest::whatWasWrittenBeforeEnablingIsNoNewsAfterwards()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    QVERIFY(set(testPath("object"), QStringLiteral("scan_results=old")));
    reader.setAttributeCacheEnabled(true);
    QCOMPARE(reader.attribute(QStringLiteral("scan_results")).toString(), QStringLiteral("old"));
    const Events events(&reader);
    QVERIFY(set(testPath("object"), QStringLiteral("scan_results=new")));
    QVERIFY(events.wait(QStringLiteral("{scan_results=new}")));
    QCOMPARE(events.updates(), QStringList({"{scan_results=new}"}));
}

void CacheTest::whatWasWrittenBeforeEnablingIsToldOnce()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    QVERIFY(set(testPath("object"), QStringLiteral("a=1")));
    reader.setAttributeCacheEnabled(true);
    QCOMPARE(events.lines, QStringList({"a=1", "{a=1}"}));
    QVERIFY(set(testPath("object"), QStringLiteral("end=1")));
    QVERIFY(events.wait(QStringLiteral("{end=1}")));
    QCOMPARE(events.updates(), QStringList({"{a=1}", "{end=1}"}));
}

void CacheTest::tellsNothingOfAnEmptyObject()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    QVERIFY(set(testPath("object"), QStringLiteral("-a")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    reader.setAttributeCacheEnabled(true);
    QCOMPARE(events.lines, QStringList());
    QVERIFY(set(testPath("object"), QStringLiteral("b=1")));
    QVERIFY(events.wait(QStringLiteral("{b=1}")));
    QCOMPARE(events.lines, QStringList({"b=1", "{b=1}"}));
}

void CacheTest::anUncachedObjectTellsOnlyWhatComesAfterItWasOpened()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    QVERIFY(set(testPath("object"), QStringLiteral("b=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    QVERIFY(set(testPath("object"), QStringLiteral("c=1")));
    QVERIFY(set(testPath("object"), QStringLiteral("b=2")));
    QVERIFY(events.wait(QStringLiteral("{b=2}")));
    QCOMPARE(events.lines, QStringList({"c=1", "{c=1}", "b=2", "{b=2}"}));
    QCOMPARE(reader.attribute(QStringLiteral("b")).toString(), QStringLiteral("2"));
}

void CacheTest::withFalseNothingIsTold()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    reader.setAttributeCacheEnabled(false);
    QVERIFY(set(testPath("object"), QStringLiteral("b=1")));
    QVERIFY(events.wait(QStringLiteral("{b=1}")));
    QCOMPARE(events.lines, QStringList({"b=1", "{b=1}"}));
}

void CacheTest::anAbsentAttributeReadsAsTheDefault()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    QVERIFY(!reader.attribute(QStringLiteral("b")).isValid());
    QCOMPARE(reader.attribute(QStringLiteral("b"), ZopVariant(5)), ZopVariant(5));
    QCOMPARE(reader.attribute(QStringLiteral("a"), ZopVariant(5)).toString(), QStringLiteral("1"));
    QVERIFY(!reader.attribute(QStringLiteral("A")).isValid());
}

void CacheTest::aRemovedAttributeReadsAsTheDefault()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1 b=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    const Events events(&reader);
    QVERIFY(set(testPath("object"), QStringLiteral("-a")));
    QVERIFY(events.wait(QStringLiteral("{-a}")));
    QCOMPARE(reader.attribute(QStringLiteral("a"), ZopVariant(5)), ZopVariant(5));
    ZopObject later(testPath("object"), ZopObject::Subscribe, false);
    const Events ofLater(&later);
    later.setAttributeCacheEnabled(true);
    QCOMPARE(ofLater.lines, QStringList({"b=1", "{b=1}"}));
}

void CacheTest::everyObjectOfAProcessHasItsOwn()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject cached(testPath("object"), ZopObject::Subscribe, false);
    ZopObject uncached(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&uncached);
    cached.setAttributeCacheEnabled(true);
    QVERIFY(cached.attribute(QStringLiteral("a")).isValid());
    QVERIFY(!uncached.attribute(QStringLiteral("a")).isValid());
    QVERIFY(set(testPath("object"), QStringLiteral("b=1")));
    QVERIFY(events.wait(QStringLiteral("{b=1}")));
    QCOMPARE(events.updates(), QStringList({"{b=1}"}));
}

CONTRACT_TEST_MAIN(CacheTest)

#include "tst_cache.moc"
