// SPDX-License-Identifier: Apache-2.0
#include "countedroles.h"
#include "counts.h"
#include "crowd.h"
#include "fetching.h"
#include "growth.h"
#include "idle.h"
#include "latency.h"
#include "managed.h"
#include "memory.h"
#include "recordedcounts.h"
#include "report.h"
#include "restingapplication.h"
#include "scanning.h"
#include "starting.h"
#include "stopped.h"
#include "timedapplication.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QTextStream>

#include <functional>
#include <utility>

namespace {

int runRole(const QStringList &arguments)
{
    for (const auto run : {runCountedRole, runRestingApplication, runGrowthRole, runFetchingRole, runScanningRole,
                           runStoppedRole, runManagedRole}) {
        const int result = run(arguments);
        if (result != -1)
            return result;
    }
    return runLatencyRole(arguments);
}

} // namespace

int main(int argc, char *argv[])
{
    TimedApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QLatin1String("--role"))
        return runRole(arguments.mid(2));

    QCommandLineParser parser;
    const QCommandLineOption arm(QStringLiteral("arm"), QStringLiteral("Where the build for ARM is."),
                                 QStringLiteral("folder"), QStringLiteral("build-arm"));
    const std::pair<QString, std::function<void(Report *)>> sections[] = {
        {QStringLiteral("counts"), measureCounts},
        {QStringLiteral("latency"), measureLatency},
        {QStringLiteral("crowd"), measureCrowd},
        {QStringLiteral("scans"), measureScanning},
        {QStringLiteral("fetches"), measureFetching},
        {QStringLiteral("growth"), measureGrowth},
        {QStringLiteral("starting"), measureStarting},
        {QStringLiteral("stopped"), measureStopped},
        {QStringLiteral("memory"), [&](Report *report) { measureMemory(report, parser.value(arm)); }},
        {QStringLiteral("idle"), measureIdle},
        {QStringLiteral("manager"), measureManaged},
    };
    QStringList names;
    for (const auto &section : sections)
        names += section.first;

    parser.setApplicationDescription(QStringLiteral("Measures the library beside what it rests on and beside D-Bus. "
                                                    "Exits with 1 when something to reach is missed."));
    parser.addHelpOption();
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Write the figures to <file>."),
                                  QStringLiteral("file"));
    const QCommandLineOption record(QStringLiteral("record"), QStringLiteral("Write what is counted to <file>."),
                                    QStringLiteral("file"));
    const QCommandLineOption compare(
        QStringLiteral("compare"),
        QStringLiteral("Compare with what <file> records, and exit with 1 only when a count has become worse."),
        QStringLiteral("file"));
    parser.addOptions({json, record, compare, arm});
    parser.addPositionalArgument(QStringLiteral("section"),
                                 QStringLiteral("Measures only these of %1.").arg(names.join(QStringLiteral(", "))),
                                 QStringLiteral("[section...]"));
    parser.process(application);

    const QStringList wanted = parser.positionalArguments();
    Report report;
    for (const auto &[name, measure] : sections) {
        if (wanted.isEmpty() || wanted.contains(name))
            measure(&report);
    }
    report.printTable();
    if (parser.isSet(json)) {
        QFile file(parser.value(json));
        if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(report.figures()).toJson()) == -1)
            qFatal("cannot write %s", qPrintable(parser.value(json)));
    }
    if (parser.isSet(record))
        RecordedCounts(parser.value(record)).write(report.figures());
    if (parser.isSet(compare)) {
        QTextStream out(stdout);
        return RecordedCounts(parser.value(compare)).compare(report.figures(), &out) ? 0 : 1;
    }
    return report.reachesAll() ? 0 : 1;
}
