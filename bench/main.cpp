// SPDX-License-Identifier: Apache-2.0
#include "counting.h"
#include "latency.h"
#include "report.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QFile>

namespace {

int runRole(const QStringList &arguments)
{
    const int result = runGrowthRole(arguments);
    return result != -1 ? result : runLatencyRole(arguments);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QLatin1String("--role"))
        return runRole(arguments.mid(2));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Measures the library beside what it rests on and beside D-Bus. "
                                                    "Exits with 1 when a ratio to reach is missed."));
    parser.addHelpOption();
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Write the figures to <file>."),
                                  QStringLiteral("file"));
    parser.addOption(json);
    parser.process(application);

    Report report;
    measureLatency(&report);
    measureGrowth(&report);
    report.printTable();
    if (parser.isSet(json)) {
        QFile file(parser.value(json));
        if (!file.open(QIODevice::WriteOnly) || file.write(report.toJson()) == -1)
            qFatal("cannot write %s", qPrintable(parser.value(json)));
    }
    return report.reachesAll() ? 0 : 1;
}
