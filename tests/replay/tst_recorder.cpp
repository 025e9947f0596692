// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "recorder.h"
#include "recordingline.h"

using namespace morvek;

namespace {

/*! What a recorder tells, without times. */
class Told
{
public:
    explicit Told(const QStringList &directories)
        : recorder(directories)
    {
        QObject::connect(&recorder, &Recorder::happened, &recorder, [this](const RecordedEvent &event) {
            times += event.time;
            QString line = QString::fromUtf8(RecordingLine::of(event));
            line = line.mid(line.indexOf(QLatin1Char(',')) + 1).replace(testFolder(), QString()).chopped(2);
            lines += line.replace(QLatin1Char('"'), QString());
        });
        QObject::connect(&recorder, &Recorder::missed, &recorder,
                         [this](const QString &path, const QString &) { missed += path; });
    }

    /*! Turns the event loop until there are so many lines. */
    bool wait(int number)
    {
        return waitUntil([this, number] { return lines.size() >= number; });
    }

    Recorder recorder;
    QStringList lines;
    QStringList missed;
    QVector<qint64> times;
};

ZopChangeset setting(const char *name, const ZopVariant &value)
{
    ZopChangeset changes;
    changes.assignments.insert(QLatin1String(name), value);
    return changes;
}

} // namespace

class RecorderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsThePresentFirst();
    void tellsEachUpdate();
    void tellsARemovalAsOneEvent();
    void tellsWhatComesBeforeARemoval();
    void tellsAnEmptiedObjectAsEmptied();
    void leavesOutControlObjects();
    void followsADirectoryThatComesLater();
    void refusesWhatIsNoDirectory();
};

void RecorderTest::tellsThePresentFirst()
{
    QVERIFY(ZopObject::create(testPath("b"), setting("x", 1)));
    QVERIFY(ZopObject::create(testPath("a"), {}));
    Told told({testFolder().chopped(1), testFolder().chopped(1)}); // once, however often it is named
    QString error;
    QVERIFY(told.recorder.start(&error));
    QCOMPARE(told.lines,
             QStringList({QStringLiteral("object:a,present:{}"),
                          QStringLiteral("object:b,present:{x:{encoding:number,text:1}}")}));
}

void RecorderTest::tellsEachUpdate()
{
    ZopObject object(testPath("a"), ZopObject::Publish, false);
    QVERIFY(object.setAttributes(setting("x", QStringLiteral("1"))));
    Told told({testFolder().chopped(1)});
    QString error;
    QVERIFY(told.recorder.start(&error));
    QVERIFY(object.setAttributes(setting("x", QStringLiteral("1")))); // again
    QVERIFY(object.setAttributes(setting("y", ZopVariant(QByteArray("\xff", 1), "json"))));
    QVERIFY(object.setAttributes(setting("z", QString::fromUtf8("\xc3\xa9\n"))));
    ZopChangeset both = setting("y", QJsonArray {1});
    both.removals = {QStringLiteral("z"), QStringLiteral("x")};
    QVERIFY(object.setAttributes(both));
    QVERIFY(told.wait(5));
    QVERIFY(told.times.first() >= 0 && told.times.last() < 3600000);
    QVERIFY(std::is_sorted(told.times.begin(), told.times.end()));
    QCOMPARE(told.lines.mid(1),
             QStringList({QStringLiteral("object:a,set:{x:{encoding:text,text:1}}"),
                          QStringLiteral("object:a,set:{y:{base64:/w==,encoding:json}}"),
                          QString::fromUtf8("object:a,set:{z:{encoding:text,text:\xc3\xa9\\n}}"),
                          QStringLiteral("object:a,removed:[x,z],set:{y:{encoding:json,text:[1]}}")}));
}

/*! Not as an update besides; and what comes in its place is told as what it is from its beginning. */
void RecorderTest::tellsARemovalAsOneEvent()
{
    QVERIFY(ZopObject::create(testPath("a"), setting("x", 1)));
    QVERIFY(ZopObject::create(testPath("b"), setting("x", 1)));
    Told told({testFolder().chopped(1)});
    QString error;
    QVERIFY(told.recorder.start(&error));
    QVERIFY(ZopObject::remove(testPath("a")));
    QVERIFY(ZopObject::create(testPath("a"), setting("x", 2)));
    QVERIFY(ZopObject::remove(testPath("b")));
    QVERIFY(told.wait(5));
    QCOMPARE(told.lines.mid(2),
             QStringList({QStringLiteral("object:a,gone:true"),
                          QStringLiteral("object:a,created:{x:{encoding:number,text:2}}"),
                          QStringLiteral("object:b,gone:true")}));
}

/*! An update that is no removal, though it takes attributes away. */
void RecorderTest::tellsWhatComesBeforeARemoval()
{
    ZopObject object(testPath("a"), ZopObject::Publish, false);
    ZopObject other(testPath("b"), ZopObject::Publish, false);
    ZopChangeset both = setting("x", 1);
    both.assignments.insert(QStringLiteral("y"), 2);
    QVERIFY(object.setAttributes(both));
    QVERIFY(other.setAttributes(setting("x", 1)));
    Told told({testFolder().chopped(1)});
    QString error;
    QElapsedTimer sinceStart;
    sinceStart.start();
    QVERIFY(told.recorder.start(&error));
    QTRY_VERIFY(sinceStart.elapsed() >= 3);
    ZopChangeset removal;
    removal.removals.insert(QStringLiteral("x"));
    ZopChangeset exchange = setting("z", 3);
    exchange.removals.insert(QStringLiteral("y"));
    QVERIFY(other.setAttributes(removal)); // waits, and all the others with it
    QVERIFY(object.setAttributes(removal));
    QVERIFY(object.setAttributes(exchange));
    QVERIFY(ZopObject::remove(testPath("a")));
    QVERIFY(told.wait(6));
    QCOMPARE(told.lines.mid(2),
             QStringList({QStringLiteral("object:b,removed:[x]"), QStringLiteral("object:a,removed:[x]"),
                          QStringLiteral("object:a,removed:[y],set:{z:{encoding:number,text:3}}"),
                          QStringLiteral("object:a,gone:true")}));
    QVERIFY(told.times.last() >= 3);
}

void RecorderTest::tellsAnEmptiedObjectAsEmptied()
{
    ZopObject object(testPath("a"), ZopObject::Publish, false);
    ZopObject other(testPath("b"), ZopObject::Publish, false);
    QVERIFY(object.setAttributes(setting("x", 1)));
    Told told({testFolder().chopped(1)});
    QString error;
    QVERIFY(told.recorder.start(&error));
    ZopChangeset removal;
    removal.removals.insert(QStringLiteral("x"));
    QVERIFY(object.setAttributes(removal));
    QVERIFY(other.setAttributes(setting("x", 1)));
    QVERIFY(told.wait(4));
    QCOMPARE(told.lines.mid(2),
             QStringList({QStringLiteral("object:a,removed:[x]"),
                          QStringLiteral("object:b,set:{x:{encoding:number,text:1}}")}));
    QVERIFY(object.setAttributes(setting("x", 1)));
    QVERIFY(told.wait(5));
    QVERIFY(other.setAttributes(removal));
    QVERIFY(ZopObject::remove(testPath("a")));
    QVERIFY(told.wait(7));
    QCOMPARE(told.lines.mid(4),
             QStringList({QStringLiteral("object:a,set:{x:{encoding:number,text:1}}"),
                          QStringLiteral("object:b,removed:[x]"), QStringLiteral("object:a,gone:true")}));
    QVERIFY(other.setAttributes(setting("x", 1)));
    QVERIFY(told.wait(8));
    QVERIFY(other.setAttributes(removal));
    told.recorder.finish(); // whatever waits, in order
    QVERIFY(told.wait(9));
    QCOMPARE(told.lines.at(8), QStringLiteral("object:b,removed:[x]"));
}

void RecorderTest::leavesOutControlObjects()
{
    const ZopObject control(testPath("control"), ZopObject::Publish, true);
    auto other = std::make_unique<ZopObject>(testPath("other"), ZopObject::Publish, true);
    QVERIFY(control.isValid() && other->isValid());
    QVERIFY(ZopObject::create(testPath("uncontrol"), {}));
    Told told({testFolder().chopped(1)});
    told.recorder.leaveOut([](const QString &path) { return path == testPath("other"); });
    QString error;
    QVERIFY(told.recorder.start(&error));
    QCOMPARE(told.lines, QStringList {QStringLiteral("object:uncontrol,present:{}")});
    QCOMPARE(told.missed, QStringList());
    // Nor are they told to go.
    other.reset();
    QVERIFY(ZopObject::remove(testPath("uncontrol")));
    QVERIFY(told.wait(2));
    QCOMPARE(told.lines.mid(1), QStringList {QStringLiteral("object:uncontrol,gone:true")});
}

void RecorderTest::followsADirectoryThatComesLater()
{
    Told told({testFolder() + QLatin1String("later")});
    QString error;
    QVERIFY(told.recorder.start(&error));
    QCOMPARE(told.lines, QStringList());
    QVERIFY(ZopObject::create(testPath("later/a"), setting("x", 1)));
    QVERIFY(told.wait(1));
    QCOMPARE(told.lines, QStringList {QStringLiteral("object:later/a,created:{x:{encoding:number,text:1}}")});
}

void RecorderTest::refusesWhatIsNoDirectory()
{
    Told told({QStringLiteral("/../x")});
    QString error;
    QVERIFY(!told.recorder.start(&error));
    QVERIFY2(error.startsWith(QLatin1String("/../x: ")), qPrintable(error));
}

CONTRACT_TEST_MAIN(RecorderTest)

#include "tst_recorder.moc"
