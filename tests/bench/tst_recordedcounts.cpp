// SPDX-License-Identifier: Apache-2.0
// What is said of counts beside those that are recorded.
#include "recordedcounts.h"

#include <QtTest/QtTest>

namespace {

QJsonObject figure(const char *name, const QJsonValue &value, const char *unit)
{
    return {{QStringLiteral("name"), QLatin1String(name)},
            {QStringLiteral("value"), value},
            {QStringLiteral("unit"), QLatin1String(unit)}};
}

} // namespace

class TestRecordedCounts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aCountIsJudged_data();
    void aCountIsJudged();
    void timesAreNotKept();
    void allIsToldAndTheWorstDecides();
    void whatNobodyRecordedIsSkipped();
    void whatAnotherCompilerMadeIsSkipped();
    void aDamagedRecordIsBad_data();
    void aDamagedRecordIsBad();

private:
    QString path() const { return m_folder.filePath(QStringLiteral("counts.json")); }
    /*! Compares \a present with \a recorded, and keeps what is said. */
    bool compare(const QJsonArray &recorded, const QJsonArray &present);
    bool compareWithFile(const QJsonArray &present);
    /*! Puts \a after in place of \a before in what was kept. */
    void change(const QByteArray &before, const QByteArray &after);

    QTemporaryDir m_folder;
    QString m_said;
};

bool TestRecordedCounts::compareWithFile(const QJsonArray &present)
{
    m_said.clear();
    QTextStream out(&m_said);
    return RecordedCounts(path()).compare(present, &out);
}

bool TestRecordedCounts::compare(const QJsonArray &recorded, const QJsonArray &present)
{
    RecordedCounts(path()).write(recorded);
    return compareWithFile(present);
}

void TestRecordedCounts::change(const QByteArray &before, const QByteArray &after)
{
    QFile file(path());
    QVERIFY(file.open(QIODevice::ReadWrite));
    QByteArray text = file.readAll();
    QVERIFY(text.contains(before));
    text.replace(before, after);
    QVERIFY(file.resize(0) && file.seek(0));
    QCOMPARE(file.write(text), text.size());
}

void TestRecordedCounts::aCountIsJudged_data()
{
    QTest::addColumn<QJsonObject>("recorded");
    QTest::addColumn<QJsonObject>("present");
    QTest::addColumn<bool>("isGood");
    QTest::addColumn<QString>("said");

    const char *const some = "an update";
    const auto row = [some](const char *name, const char *unit, const QJsonValue &recorded, const QJsonValue &present,
                            bool isGood, const QString &said) {
        QTest::addRow("%s", name) << figure(some, recorded, unit) << figure(some, present, unit) << isGood << said;
    };
    row("the same", "instructions", 1000, 1000, true, QString());
    row("within a twentieth", "instructions", 1000, 1050, true, QString());
    row("more instructions", "instructions", 1000, 1050.5, false,
        QStringLiteral("worse: an update: instructions: 1050.5, recorded: 1000\n"));
    row("fewer, within a twentieth", "instructions", 1000, 950, true, QString());
    row("fewer instructions", "instructions", 1000, 949, true,
        QStringLiteral("better, to be recorded anew: an update: instructions: 949, recorded: 1000\n"));
    row("half a call more", "system calls", 4, 4.5, true, QString());
    row("more calls", "system calls", 4, 4.6, false,
        QStringLiteral("worse: an update: system calls: 4.6, recorded: 4\n"));
    row("fewer calls", "system calls", 4, 3, true,
        QStringLiteral("better, to be recorded anew: an update: system calls: 3, recorded: 4\n"));
    row("more allocations", "allocations", 20, 20.6, false,
        QStringLiteral("worse: an update: allocations: 20.6, recorded: 20\n"));
    row("one descriptor more", "descriptors", 20, 21, true, QString());
    row("more descriptors", "descriptors", 20, 22, false,
        QStringLiteral("worse: an update: descriptors: 22, recorded: 20\n"));
    row("half a signal more", "signals", 13, 13.5, true, QString());
    row("more signals", "signals", 13, 13.6, false, QStringLiteral("worse: an update: signals: 13.6, recorded: 13\n"));
    row("not counted here", "instructions", 1000, QJsonValue(), true,
        QStringLiteral("skipped: an update: instructions\n"));
    row("not counted where it was recorded", "system calls", QJsonValue(), 4, true,
        QStringLiteral("new, to be recorded: an update: system calls: 4, recorded: \n"));
    row("counted nowhere", "system calls", QJsonValue(), QJsonValue(), true,
        QStringLiteral("skipped: an update: system calls\n"));
}

void TestRecordedCounts::aCountIsJudged()
{
    QFETCH(QJsonObject, recorded);
    QFETCH(QJsonObject, present);
    QFETCH(QString, said);
    QTEST(compare({recorded}, {present}), "isGood");
    QCOMPARE(m_said, said);
}

void TestRecordedCounts::timesAreNotKept()
{
    QVERIFY(compare({figure("an update", 10, "us")}, {figure("an update", 1000, "us")}));
    QCOMPARE(m_said, QString());
}

void TestRecordedCounts::allIsToldAndTheWorstDecides()
{
    const QJsonArray recorded {figure("a start", 100, "instructions"), figure("a request", 100, "instructions")};
    QVERIFY(!compare(recorded, {figure("a request", 100, "instructions")}));
    QCOMPARE(m_said, QStringLiteral("no longer counted: a start: instructions: , recorded: 100\n"));
    QVERIFY(!compare(recorded, {figure("a request", 200, "instructions"), figure("a start", 90, "instructions")}));
    QCOMPARE(m_said,
             QStringLiteral("worse: a request: instructions: 200, recorded: 100\n"
                            "better, to be recorded anew: a start: instructions: 90, recorded: 100\n"));
    QVERIFY(compare({}, recorded));
    QCOMPARE(m_said,
             QStringLiteral("new, to be recorded: a request: instructions: 100, recorded: \n"
                            "new, to be recorded: a start: instructions: 100, recorded: \n"));
}

void TestRecordedCounts::whatNobodyRecordedIsSkipped()
{
    QFile::remove(path());
    QVERIFY(compareWithFile({figure("a start", 100, "instructions")}));
    QCOMPARE(m_said, QStringLiteral("skipped: nothing is recorded in %1\n").arg(path()));
}

void TestRecordedCounts::whatAnotherCompilerMadeIsSkipped()
{
    RecordedCounts(path()).write({figure("a start", 100, "instructions")});
    change(qVersion(), "4.8.7");
    QVERIFY(compareWithFile({figure("a start", 200, "instructions")}));
    QCOMPARE(
        m_said,
        QStringLiteral("skipped: the counts were recorded with Qt '4.8.7', not '%1'\n").arg(QLatin1String(qVersion())));
}

void TestRecordedCounts::aDamagedRecordIsBad_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("no JSON") << QByteArray("{") << QByteArray("<<<<<<< HEAD\n{");
    QTest::newRow("no counts") << QByteArray("\"counts\"") << QByteArray("\"count\"");
    QTest::newRow("nobody made them") << QByteArray("\"made with\"") << QByteArray("\"made by\"");
}

void TestRecordedCounts::aDamagedRecordIsBad()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    RecordedCounts(path()).write({figure("a start", 100, "instructions")});
    change(before, after);
    QVERIFY(!compareWithFile({figure("a start", 100, "instructions")}));
    QCOMPARE(m_said, QStringLiteral("damaged: %1 holds no counts\n").arg(path()));
}

QTEST_GUILESS_MAIN(TestRecordedCounts)

#include "tst_recordedcounts.moc"
