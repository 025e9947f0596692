// SPDX-License-Identifier: Apache-2.0
#include "writers.h"

#include "patience.h"
#include "updatecheck.h"
#include "zopobject.h"

using namespace morvek;

void WritingStorm::createObjects()
{
    const QStringList all = paths();
    for (const QString &path : all) {
        QString error;
        demand(ZopObject::create(path, ZopChangeset(), &error), path + QStringLiteral(": ") + error);
    }
}

QStringList WritingStorm::paths() const
{
    QStringList all;
    for (int i = 0; i < Objects; ++i)
        all << QStringLiteral("/zop/storm/object%1").arg(i);
    return all;
}

void WritingStorm::startReader()
{
    m_readers.push_back(start(StormProcess::Peer, QStringLiteral("reader")));
    const QString number =
        m_readers.back()->ask(QStringLiteral("read ") + paths().join(QLatin1Char(' ')), QStringLiteral("reading "));
    demand(number.toInt() == Objects, QStringLiteral("a reader opens %1 objects").arg(number));
}

void WritingStorm::startWriter(int pause, int largest)
{
    const int number = ++m_lastWriter;
    demand(number < Tally::Writers, QStringLiteral("more writers than can be counted"));
    m_writers.push_back(start(StormProcess::Peer, QStringLiteral("writer")));
    m_writers.back()->send(QStringLiteral("write %1 %2 %3 %4 %5")
                               .arg(number)
                               .arg(scratch("tally"))
                               .arg(pause)
                               .arg(largest)
                               .arg(paths().join(QLatin1Char(' '))));
}

void WritingStorm::killWriter()
{
    const int index = random(int(m_writers.size()));
    kill(&m_writers[size_t(index)]);
    m_writers.erase(m_writers.begin() + index);
    count("writers killed");
}

void WritingStorm::endWriting()
{
    for (const Process &writer : m_writers) {
        const QString failed = writer->ask(QStringLiteral("hush"), QStringLiteral("hushed "));
        demand(!failed.isNull(), writer->name() + QStringLiteral(" does not answer"));
        count("updates refused", failed.toLongLong());
    }
    const QStringList all = paths();
    for (const QString &path : all) {
        ZopObject object(path, ZopObject::ReadWrite, false);
        ZopChangeset end;
        end.assignments.insert(QStringLiteral("end"), ZopVariant(1));
        demand(object.setAttributes(end), path + QStringLiteral(" cannot be written: ") + object.errorString());
    }
}

void WritingStorm::expectAllSeen()
{
    endWriting();
    QStringList reports;
    for (const Process &reader : m_readers) {
        QString report;
        const bool done = waitUntil([&] {
            report = reader->ask(QStringLiteral("report"), QStringLiteral("report "));
            const QStringList objects = report.split(QLatin1Char('|'));
            return objects.size() == Objects && std::all_of(objects.begin(), objects.end(), [](const QString &object) {
                       return object.section(QLatin1Char(' '), 3, 3) == QLatin1String("1");
                   });
        });
        demand(done, QStringLiteral("%1 has not seen the end: %2").arg(reader->name(), report));
        reports << report;
    }
    const QStringList first = reports.first().split(QLatin1Char('|'));
    for (int object = 0; object < Objects; ++object) {
        compare(first[object], object);
        for (const QString &report : qAsConst(reports))
            demand(report.section(QLatin1Char('|'), object, object) == first[object],
                   QStringLiteral("two readers saw\n  %1\n  %2").arg(first[object], report));
    }
    for (const QString &object : first)
        count("updates seen by each reader", object.section(QLatin1Char(' '), 0, 0).toLongLong());
}

void WritingStorm::compare(const QString &report, int object)
{
    demand(report.section(QLatin1Char(' '), 2, 2) == QLatin1String("0"), QStringLiteral("faults: ") + report);
    QMap<int, qint64> seen;
    const QStringList lasts = report.section(QLatin1Char(' '), 4, 4).split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString &last : lasts)
        seen.insert(last.section(QLatin1Char(':'), 0, 0).toInt(), last.section(QLatin1Char(':'), 1, 1).toLongLong());
    Tally tally(scratch("tally"));
    for (int writer = 1; writer <= m_lastWriter; ++writer) {
        const qint64 done = tally.done(writer, object);
        count("updates written", done);
        demand(seen.value(writer) >= done && seen.value(writer) <= tally.begun(writer, object),
               QStringLiteral("of object %1, writer %2 has written %3, begun %4, and %5 were seen")
                   .arg(object)
                   .arg(writer)
                   .arg(done)
                   .arg(tally.begun(writer, object))
                   .arg(seen.value(writer)));
    }
}
