// SPDX-License-Identifier: Apache-2.0
#include "commandline.h"
#include "hostd.h"
#include "scenariofiles.h"
#include "signalwatcher.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>

#include <csignal>
#include <cstdio>

using namespace morvek;

namespace {

int fail(ExitCode code, const QString &error)
{
    EventLog::write(error);
    return static_cast<int>(code);
}

void print(const QString &text)
{
    std::fputs(text.toUtf8().constData(), stdout);
    std::fflush(stdout);
}

int listScenarios()
{
    const QStringList names = ScenarioFiles::shipped();
    for (const QString &name : names) {
        Scenario scenario;
        QString error;
        if (!ScenarioFiles::load(name, &scenario, &error))
            return fail(ExitCode::BadScenario, error);
        print(QStringLiteral("%1  %2\n").arg(name, -16).arg(scenario.description));
    }
    return static_cast<int>(ExitCode::Success);
}

int run(const CommandLine &commandLine, const Scenario &scenario)
{
    // Clients and readers of our output may go at any time.
    std::signal(SIGPIPE, SIG_IGN);
    if (!commandLine.root.isEmpty())
        qputenv("ZOP_ROOT", QFile::encodeName(commandLine.root));
    SignalWatcher signalWatcher;
    QObject::connect(&signalWatcher, &SignalWatcher::terminationAsked, qApp, &QCoreApplication::quit);

    Hostd hostd(commandLine, scenario);
    QString error;
    const ExitCode code = hostd.start(&error);
    if (code != ExitCode::Success)
        return fail(code, error);
    print(QStringLiteral("ready: %1\n").arg(hostd.root()));
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("morvek-hostd"));
    QCoreApplication::setApplicationVersion(QStringLiteral(MORVEK_VERSION));

    CommandLine commandLine;
    QString error;
    if (!CommandLine::parse(QCoreApplication::arguments(), &commandLine, &error))
        return fail(ExitCode::BadArguments, error + QStringLiteral(" (--help lists the options)"));
    if (commandLine.action == CommandLine::Tell) {
        print(commandLine.text);
        return static_cast<int>(ExitCode::Success);
    }
    if (commandLine.action == CommandLine::ListScenarios)
        return listScenarios();

    Scenario scenario;
    if (!commandLine.system && !ScenarioFiles::load(commandLine.scenario, &scenario, &error))
        return fail(ExitCode::BadScenario, error);
    if (commandLine.action == CommandLine::Check) {
        print(QStringLiteral("ok: %1\n").arg(commandLine.scenario));
        return static_cast<int>(ExitCode::Success);
    }
    return run(commandLine, scenario);
}
