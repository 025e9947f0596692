// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"

using namespace morvek;

class UpdateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsAssignmentsByNameThenRemovalsThenTheWhole();
    void tellsOnlyFromTheEventLoop();
    void tellsTheSameValueAgain();
    void tellsEveryUpdateOfABurst();
    void attributeAnswersFromTheUpdateThatIsTold();
    void aWholeUpdateIsAppliedBeforeAnyOfItIsTold();
    void anUpdateOfRemovalsAssignsNothing();
    void tellsEveryoneButTheWriter();
    void carriesAnyBytes_data();
    void carriesAnyBytes();
    void carriesAnyName_data();
    void carriesAnyName();
};

void UpdateTest::tellsAssignmentsByNameThenRemovalsThenTheWhole()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("x=1 y=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    QVERIFY(set(testPath("object"), QStringLiteral("b=2 -x a=1 C=3 -y")));
    QVERIFY(events.wait(QStringLiteral("{C=3 a=1 b=2 -x -y}")));
    QCOMPARE(events.lines.mid(0, 3), QStringList({"C=3", "a=1", "b=2"}));
    QStringList removals = events.lines.mid(3, 2);
    removals.sort();
    QCOMPARE(removals, QStringList({"-x", "-y"}));
    QCOMPARE(events.lines.mid(5), QStringList({"{C=3 a=1 b=2 -x -y}"}));
}

void UpdateTest::tellsOnlyFromTheEventLoop()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    QVERIFY(set(writer, QStringLiteral("a=1")));
    QCOMPARE(events.lines, QStringList());
    QCOMPARE(reader.attribute(QStringLiteral("a")), ZopVariant());
    QVERIFY(events.wait(QStringLiteral("{a=1}")));
}

void UpdateTest::tellsTheSameValueAgain()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    const Events events(&reader);
    for (int i = 0; i < 3; ++i)
        QVERIFY(set(testPath("object"), QStringLiteral("a=1")));
    QVERIFY(set(testPath("object"), QStringLiteral("-b")));
    QVERIFY(set(testPath("object"), QStringLiteral("end=1")));
    QVERIFY(events.wait(QStringLiteral("{end=1}")));
    QCOMPARE(events.lines,
             QStringList({"a=1", "{a=1}", "a=1", "{a=1}", "a=1", "{a=1}", "-b", "{-b}", "end=1", "{end=1}"}));
}

void UpdateTest::tellsEveryUpdateOfABurst()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject writer(testPath("object"), ZopObject::Publish, false);
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    QStringList expected;
    for (int n = 1; n <= 3000; ++n) {
        QVERIFY(set(writer, QStringLiteral("n=%1").arg(n)));
        expected << QStringLiteral("{n=%1}").arg(n);
    }
    QVERIFY(events.wait(QStringLiteral("{n=3000}")));
    QCOMPARE(events.updates(), expected);
}

void UpdateTest::attributeAnswersFromTheUpdateThatIsTold()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    QStringList seen;
    const auto note = [&reader, &seen] { seen << reader.attribute(QStringLiteral("a")).toString(); };
    connect(&reader, &ZopObject::attributeChanged, this, note);
    connect(&reader, &ZopObject::attributeRemoved, this, note);
    connect(&reader, &ZopObject::attributesChanged, this, note);
    // All are there before the first is told.
    for (const char *update : {"a=1", "a=2 b=2", "-a", "a=4"})
        QVERIFY(set(testPath("object"), QLatin1String(update)));
    QVERIFY(waitUntil([&seen] { return seen.contains(QStringLiteral("4")); }));
    QCOMPARE(seen.join(QLatin1Char(',')), QStringLiteral("1,1,2,2,2,,,4,4"));
}

void UpdateTest::aWholeUpdateIsAppliedBeforeAnyOfItIsTold()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=0 b=0 c=0")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    QString seen;
    connect(&reader, &ZopObject::attributeChanged, this, [&reader, &seen](const QString &name) {
        if (name == QLatin1String("a"))
            seen = reader.attribute(QStringLiteral("b")).toString() + reader.attribute(QStringLiteral("c")).toString();
    });
    const Events events(&reader);
    QVERIFY(set(testPath("object"), QStringLiteral("a=1 b=1 -c")));
    QVERIFY(events.wait(QStringLiteral("{a=1 b=1 -c}")));
    QCOMPARE(seen, QStringLiteral("1"));
}

void UpdateTest::anUpdateOfRemovalsAssignsNothing()
{
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    reader.setAttributeCacheEnabled(true);
    QSignalSpy changed(&reader, &ZopObject::attributesChanged);
    QVERIFY(set(testPath("object"), QStringLiteral("-a")));
    QVERIFY(changed.wait());
    const auto changes = changed.first().first().value<ZopChangeset>();
    QVERIFY(changes.assignments.isEmpty());
    QCOMPARE(changes.removals, QSet<QString>({QStringLiteral("a")}));
    QVERIFY(!reader.attribute(QStringLiteral("a")).isValid());
}

void UpdateTest::tellsEveryoneButTheWriter()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject first(testPath("object"), ZopObject::ReadWrite, false);
    ZopObject second(testPath("object"), ZopObject::ReadWrite, false);
    ZopObject third(testPath("object"), ZopObject::Subscribe, false);
    const Events ofFirst(&first);
    const Events ofSecond(&second);
    const Events ofThird(&third);
    QVERIFY(set(first, QStringLiteral("a=1")));
    QVERIFY(set(second, QStringLiteral("a=2")));
    QVERIFY(set(first, QStringLiteral("a=3")));
    QVERIFY(set(second, QStringLiteral("a=4")));
    QVERIFY(ofThird.wait(QStringLiteral("{a=4}")));
    QVERIFY(ofFirst.wait(QStringLiteral("{a=4}")));
    QVERIFY(ofSecond.wait(QStringLiteral("{a=3}")));
    QCOMPARE(ofFirst.updates(), QStringList({"{a=2}", "{a=4}"}));
    QCOMPARE(ofSecond.updates(), QStringList({"{a=1}", "{a=3}"}));
    QCOMPARE(ofThird.updates(), QStringList({"{a=1}", "{a=2}", "{a=3}", "{a=4}"}));
}

void UpdateTest::carriesAnyBytes_data()
{
    QTest::addColumn<ZopVariant>("value");
    QTest::newRow("text") << ZopVariant(QStringLiteral("gr\u00fc\u00dfe \U0001F697"));
    QTest::newRow("empty") << ZopVariant(QString());
    QTest::newRow("number") << ZopVariant(-7);
    QTest::newRow("json") << ZopVariant(QJsonObject {{QStringLiteral("a"), 1}});
    QTest::newRow("zeros") << ZopVariant(QByteArray("a\0b\0", 4), "text");
    QTest::newRow("no utf-8") << ZopVariant(QByteArray("\xff\xfe\x80"), "text");
    QTest::newRow("line breaks") << ZopVariant(QByteArray("a\nb\r\n"), "text");
    QTest::newRow("another encoding") << ZopVariant(QByteArray("x"), "of its own");
}

void UpdateTest::carriesAnyBytes()
{
    QFETCH(ZopVariant, value);
    const QString path = testPath(QTest::currentDataTag());
    ZopChangeset changes;
    changes.assignments.insert(QStringLiteral("a"), value);
    QVERIFY(publish(path, QString()));
    ZopObject reader(path, ZopObject::Subscribe, false);
    QSignalSpy told(&reader, &ZopObject::attributeChanged);
    ZopObject writer(path, ZopObject::ReadWrite, false);
    QVERIFY(writer.setAttributes(changes));
    QVERIFY(told.wait());
    QCOMPARE(told.first().at(1).value<ZopVariant>(), value);
    ZopObject later(path, ZopObject::Subscribe, false);
    later.setAttributeCacheEnabled(true);
    QCOMPARE(later.attribute(QStringLiteral("a")), value);
    QCOMPARE(later.attribute(QStringLiteral("a")).encoding(), value.encoding());
}

void UpdateTest::carriesAnyName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("blanks") << QStringLiteral(" a b ");
    QTest::newRow("line break") << QStringLiteral("a\nb");
    QTest::newRow("slash") << QStringLiteral("../a/b");
    QTest::newRow("outside ASCII") << QStringLiteral("gr\u00fc\u00dfe");
    QTest::newRow("long") << QString(5000, QLatin1Char('n'));
}

void UpdateTest::carriesAnyName()
{
    QFETCH(QString, name);
    const QString path = testPath(QTest::currentDataTag());
    ZopChangeset changes;
    changes.assignments.insert(name, ZopVariant(1));
    QVERIFY(publish(path, QString()));
    ZopObject reader(path, ZopObject::Subscribe, false);
    QSignalSpy told(&reader, &ZopObject::attributeChanged);
    ZopObject writer(path, ZopObject::ReadWrite, false);
    QVERIFY(writer.setAttributes(changes));
    QVERIFY(told.wait());
    QCOMPARE(told.first().first().toString(), name);
    QCOMPARE(reader.attribute(name), ZopVariant(1));
}

CONTRACT_TEST_MAIN(UpdateTest)

#include "tst_update.moc"
