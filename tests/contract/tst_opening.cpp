// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"

using namespace morvek;

class OpeningTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anObjectThatDoesNotExistCannotBeOpened_data();
    void anObjectThatDoesNotExistCannotBeOpened();
    void anObjectThatCannotBeOpenedIsHarmless();
    void anOpenObjectHasNoError();
    void forReadingOnlyNothingIsWritten();
    void readingAndWriting();
    void publishingCreatesTheObject();
    void publishingKeepsWhatIsThere();
    void publishingBelowAnObjectSaysWhyNot();
    void theFlagHasNoEffectOnAStateObject();
    void creationHoldsTheValuesFromTheFirstMoment();
    void creationFailsOnAnExistingObject();
    void removalFailsWhenThereIsNone();
};

void OpeningTest::anObjectThatDoesNotExistCannotBeOpened_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("flag");
    QTest::newRow("reading") << 1 << false;
    QTest::newRow("reading, flag") << 1 << true;
    QTest::newRow("writing") << 2 << false;
    QTest::newRow("writing, flag") << 2 << true;
}

void OpeningTest::anObjectThatDoesNotExistCannotBeOpened()
{
    QFETCH(int, mode);
    QFETCH(bool, flag);
    publish(testPath("beside"), QString()); // its folder exists, the other one does not
    for (const QString &path : {testPath("missing"), testPath("no/such/folder")}) {
        const ZopObject object(path, ZopObject::PublicationMode(mode), flag);
        QVERIFY(!object.isValid());
        QVERIFY(!object.errorString().isEmpty());
        QCOMPARE(object.path(), path);
    }
}

void OpeningTest::anObjectThatCannotBeOpenedIsHarmless()
{
    ZopObject object(testPath("missing"), ZopObject::ReadWrite, false);
    const Events events(&object);
    object.setAttributeCacheEnabled(true);
    QCOMPARE(object.attribute(QStringLiteral("a"), ZopVariant(5)), ZopVariant(5));
    QVERIFY(!set(object, QStringLiteral("a=1")));
    QVERIFY(!object.errorString().isEmpty());

    // Nor does it become valid by itself.
    QVERIFY(publish(testPath("missing"), QStringLiteral("a=1")));
    ZopObject reader(testPath("missing"), ZopObject::Subscribe, false);
    const Events ofReader(&reader);
    QVERIFY(set(testPath("missing"), QStringLiteral("a=2")));
    QVERIFY(ofReader.wait(QStringLiteral("{a=2}")));
    QVERIFY(!object.isValid());
    QCOMPARE(events.lines, QStringList());
}

void OpeningTest::anOpenObjectHasNoError()
{
    const ZopObject made(testPath("object"), ZopObject::Publish, false);
    for (const auto mode : {ZopObject::Subscribe, ZopObject::ReadWrite, ZopObject::Publish}) {
        const ZopObject object(testPath("object"), mode, false);
        QVERIFY(object.isValid());
        QCOMPARE(object.errorString(), QString());
        QCOMPARE(object.path(), testPath("object"));
    }
}

void OpeningTest::forReadingOnlyNothingIsWritten()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    ZopObject other(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&other);
    QVERIFY(!set(reader, QStringLiteral("a=2")));
    QVERIFY(!reader.errorString().isEmpty());
    QVERIFY(reader.isValid());
    QVERIFY(set(testPath("object"), QStringLiteral("end=1")));
    QVERIFY(events.wait(QStringLiteral("{end=1}")));
    QCOMPARE(events.updates(), QStringList({"{end=1}"}));
    other.setAttributeCacheEnabled(true);
    QCOMPARE(other.attribute(QStringLiteral("a")).toString(), QStringLiteral("1"));
}

void OpeningTest::readingAndWriting()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject object(testPath("object"), ZopObject::ReadWrite, false);
    object.setAttributeCacheEnabled(true);
    QCOMPARE(object.attribute(QStringLiteral("a")).toString(), QStringLiteral("1"));
    QVERIFY(set(object, QStringLiteral("a=2")));
    ZopObject later(testPath("object"), ZopObject::Subscribe, false);
    later.setAttributeCacheEnabled(true);
    QCOMPARE(later.attribute(QStringLiteral("a")).toString(), QStringLiteral("2"));
}

void OpeningTest::publishingCreatesTheObject()
{
    const ZopObject published(testPath("new/folders/object"), ZopObject::Publish, false);
    QVERIFY2(published.isValid(), qPrintable(published.errorString()));
    const ZopObject reader(testPath("new/folders/object"), ZopObject::Subscribe, false);
    QVERIFY(reader.isValid());
}

void OpeningTest::publishingKeepsWhatIsThere()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject published(testPath("object"), ZopObject::Publish, false);
    const Events events(&published);
    published.setAttributeCacheEnabled(true);
    QCOMPARE(events.lines, QStringList({"a=1", "{a=1}"}));
}

void OpeningTest::publishingBelowAnObjectSaysWhyNot()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    for (const bool isControl : {false, true}) {
        const ZopObject below(testPath("object/below"), ZopObject::Publish, isControl);
        QVERIFY(!below.isValid());
        QVERIFY(!below.errorString().isEmpty());
    }
    const ZopObject object(testPath("object"), ZopObject::Subscribe, false);
    QVERIFY(object.isValid());
}

void OpeningTest::theFlagHasNoEffectOnAStateObject()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject object(testPath("object"), ZopObject::ReadWrite, true);
    QVERIFY(object.isValid());
    object.setAttributeCacheEnabled(true);
    QCOMPARE(object.attribute(QStringLiteral("a")).toString(), QStringLiteral("1"));
    QVERIFY(set(object, QStringLiteral("a=2")));
}

void OpeningTest::creationHoldsTheValuesFromTheFirstMoment()
{
    ZopDirWatcher watcher(testFolder());
    QString seen;
    connect(&watcher, &ZopDirWatcher::objectAdded, this, [&seen](const QString &name) {
        ZopObject object(testFolder() + name, ZopObject::Subscribe, false);
        object.setAttributeCacheEnabled(true);
        seen = object.attribute(QStringLiteral("a")).toString() + object.attribute(QStringLiteral("b")).toString();
    });
    QString error = QStringLiteral("untouched");
    QVERIFY(ZopObject::create(testPath("object"), changesFrom(QStringLiteral("a=1 b=2 -c")), &error));
    QCOMPARE(error, QString());
    QVERIFY(waitUntil([&seen] { return !seen.isEmpty(); }));
    QCOMPARE(seen, QStringLiteral("12"));
}

void OpeningTest::creationFailsOnAnExistingObject()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    QString error;
    QVERIFY(!ZopObject::create(testPath("object"), changesFrom(QStringLiteral("a=2")), &error));
    QVERIFY(!error.isEmpty());
    QVERIFY(!publish(testPath("object"), QStringLiteral("a=3")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    QCOMPARE(reader.attribute(QStringLiteral("a")).toString(), QStringLiteral("1"));
}

void OpeningTest::removalFailsWhenThereIsNone()
{
    QString error;
    QVERIFY(!ZopObject::remove(testPath("missing"), &error));
    QVERIFY(!error.isEmpty());
    QVERIFY(publish(testPath("object"), QString()));
    QVERIFY(ZopObject::remove(testPath("object"), &error));
    QCOMPARE(error, QString());
    const ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    QVERIFY(!reader.isValid());
    QVERIFY(!ZopObject::remove(testPath("object")));
}

CONTRACT_TEST_MAIN(OpeningTest)

#include "tst_opening.moc"
