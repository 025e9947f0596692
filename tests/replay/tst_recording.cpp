// SPDX-License-Identifier: Apache-2.0
#include "recording.h"
#include "recordingline.h"

#include <QtTest/QtTest>

using namespace morvek;

/*! The reader of recordings. */
class RecordingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsWhatIsWritten();
    void lines();
    void mistakes_data();
    void mistakes();
    void aFileThatIsNotThere();
};

void RecordingTest::readsWhatIsWritten()
{
    RecordedEvent event;
    event.object = QStringLiteral("/zop/a");
    event.changes.assignments = {{QStringLiteral("x"), ZopVariant(QByteArray("\xff\0\n", 3), "json")},
                                 {QStringLiteral("y"),
                                  ZopVariant(QByteArray("\xef\xbb\xbf"
                                                        "a"),
                                             "text")},
                                 {QStringLiteral("z"), 7}};
    QByteArray lines = RecordingLine::first(QDateTime::fromMSecsSinceEpoch(0, Qt::UTC), true);
    QCOMPARE(lines, QByteArray("{\"recording\":1,\"start\":\"1970-01-01T00:00:00.000Z\",\"redacted\":true}\n"));
    QVector<RecordedEvent> written;
    const auto add = [&](RecordedEvent::Kind kind, qint64 time) {
        event.kind = kind;
        event.time = time;
        written += event;
        lines += RecordingLine::of(event);
    };
    add(RecordedEvent::Present, 0);
    add(RecordedEvent::Updated, 3);
    event.changes = {{}, {QStringLiteral("x")}};
    add(RecordedEvent::Updated, 3);
    event.changes = {};
    add(RecordedEvent::Updated, 3);
    add(RecordedEvent::Gone, 2147483647);
    add(RecordedEvent::Created, 2147483647);
    Recording recording;
    QString error;
    QVERIFY2(Recording::read(lines, &recording, &error), qPrintable(error));
    QCOMPARE(recording.events.size(), 6);
    for (int i = 0; i < 6; ++i) {
        QCOMPARE(int(recording.events.at(i).kind), int(written.at(i).kind));
        QCOMPARE(recording.events.at(i).time, written.at(i).time);
        QCOMPARE(recording.events.at(i).object, written.at(i).object);
        QCOMPARE(recording.events.at(i).changes.assignments, written.at(i).changes.assignments);
        QCOMPARE(recording.events.at(i).changes.removals, written.at(i).changes.removals);
    }
}

void RecordingTest::lines()
{
    RecordedEvent event;
    event.kind = RecordedEvent::Updated;
    event.time = 7;
    event.object = QStringLiteral("/a");
    QCOMPARE(RecordingLine::of(event), QByteArray("{\"t\":7,\"object\":\"/a\",\"set\":{}}\n"));
    const QStringList names {QStringLiteral("f"), QStringLiteral("b"), QStringLiteral("d"),
                             QStringLiteral("e"), QStringLiteral("c"), QStringLiteral("a")};
    event.changes.removals = QSet<QString>(names.begin(), names.end());
    QCOMPARE(RecordingLine::of(event),
             QByteArray("{\"t\":7,\"object\":\"/a\",\"removed\":[\"a\",\"b\",\"c\",\"d\",\"e\",\"f\"]}\n"));
    event.changes = {{{QStringLiteral("x"), 1}}, {QStringLiteral("y")}};
    QCOMPARE(RecordingLine::of(event),
             QByteArray("{\"t\":7,\"object\":\"/a\",\"removed\":[\"y\"],\"set\":{\"x\":{\"encoding\":\"number\","
                        "\"text\":\"1\"}}}\n"));
    event.kind = RecordedEvent::Gone;
    QCOMPARE(RecordingLine::of(event), QByteArray("{\"t\":7,\"object\":\"/a\",\"gone\":true}\n"));
}

void RecordingTest::mistakes_data()
{
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *name, const QByteArray &lines, const char *error) {
        QTest::newRow(name) << lines << QString::fromUtf8(error);
    };
    const auto second = [&row](const char *name, const char *line, const char *error) {
        row(name, QByteArray("{\"recording\":1}\n{\"t\":5,\"object\":\"/a\",\"present\":{}}\n") + line + '\n', error);
    };
    row("empty", "", "line 1: this is no recording");
    row("something else", "{}\n", "line 1: this is no recording");
    row("a scenario", "{\n", "line 1: column 2: unterminated object");
    row("a list", "[]\n", "line 1: this is no recording");
    row("later version", "{\"recording\":2}\n", "line 1: version 2 is too new: this one knows version 1");
    row("no version", "{\"recording\":\"1\"}\n", "line 1: recording: must be a whole number from 1 to 2147483647");
    row("cut off", "{\"recording\":1}\n{\"t\":5,\"object\":\"/a\",\"present\":{}}", "line 2: is cut off");
    second("empty line", "", "line 3: column 1: illegal value");
    second("no time", "{\"object\":\"/a\",\"gone\":true}", "line 3: \"t\" is missing");
    second("negative time", "{\"t\":-1,\"object\":\"/a\",\"gone\":true}",
           "line 3: t: must be a whole number from 0 to 2147483647");
    second("back in time", "{\"t\":4,\"object\":\"/a\",\"gone\":true}", "line 3: is earlier than the line before");
    second("no object", "{\"t\":5,\"gone\":true}", "line 3: \"object\" is missing");
    second("nothing", "{\"t\":5,\"object\":\"/a\"}",
           "line 3: needs one of \"present\", \"created\", \"gone\", or \"set\" and \"removed\"");
    second("two things", "{\"t\":5,\"object\":\"/a\",\"gone\":true,\"set\":{}}",
           "line 3: needs one of \"present\", \"created\", \"gone\", or \"set\" and \"removed\"");
    second("unknown key", "{\"t\":5,\"object\":\"/a\",\"went\":true}",
           "line 3: unknown key \"went\" (known: t, object, present, created, set, removed, gone)");
    second("a key twice", "{\"t\":5,\"t\":5,\"object\":\"/a\",\"gone\":true}", "line 3: a second \"t\"");
    second("not gone", "{\"t\":5,\"object\":\"/a\",\"gone\":false}", "line 3: \"gone\" can only be true");
    second("not there", "{\"t\":5,\"object\":\"/b\",\"set\":{}}", "line 3: \"/b\" is not there");
    second("gone twice", "{\"t\":5,\"object\":\"/a\",\"gone\":true}\n{\"t\":5,\"object\":\"/a\",\"gone\":true}",
           "line 4: \"/a\" is not there");
    second("there already", "{\"t\":5,\"object\":\"/a\",\"created\":{}}", "line 3: \"/a\" is there already");
    second("present later", "{\"t\":5,\"object\":\"/a\",\"gone\":true}\n{\"t\":5,\"object\":\"/a\",\"present\":{}}",
           "line 4: \"present\" comes before everything else");
    second("values of a list", "{\"t\":5,\"object\":\"/a\",\"set\":[1]}", "line 3: set: must be an object");
    second("bad value", "{\"t\":5,\"object\":\"/a\",\"set\":{\"x\":{\"base64\":\"?\"}}}",
           "line 3: set.x.base64: is not base64");
    second("removed what", "{\"t\":5,\"object\":\"/a\",\"removed\":\"x\"}", "line 3: removed: must be an array");
}

void RecordingTest::mistakes()
{
    QFETCH(QByteArray, lines);
    Recording recording;
    QString error;
    QVERIFY(!Recording::read(lines, &recording, &error));
    QTEST(error, "error");
}

void RecordingTest::aFileThatIsNotThere()
{
    Recording recording;
    QString error;
    QVERIFY(!Recording::load(QStringLiteral("no/such/file"), &recording, &error));
    QCOMPARE(error, QStringLiteral("no/such/file: No such file or directory"));
    error.clear();
    QVERIFY(!Recording::load(QStringLiteral("/"), &recording, &error));
    QVERIFY2(error.startsWith(QLatin1String("/: ")), qPrintable(error));
}

QTEST_APPLESS_MAIN(RecordingTest)

#include "tst_recording.moc"
