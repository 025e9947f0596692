// SPDX-License-Identifier: Apache-2.0
#include "hostd.h"
#include "hostdoptions.h"
#include "recording.h"
#include "scenariofiles.h"
#include "scenariowarnings.h"
#include "signalwatcher.h"
#include "stagecommand.h"
#include "supervisor.h"

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QCoreApplication>
#include <QtCore/QFile>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <utility>

using namespace morvek;

namespace {

int fail(HostdExitCode code, const QString &error)
{
    const bool isMisuse = code == HostdExitCode::BadArguments;
    EventLog::write(isMisuse ? error + QStringLiteral(" (--help lists the options)") : error);
    return static_cast<int>(code);
}

/*! The same for what may be wrong with the root: that is mended by what has named it. */
int fail(HostdExitCode code, QString error, const HostdOptions &options)
{
    if (!options.root.isEmpty())
        error.replace(QLatin1String("set ZOP_ROOT to"), QLatin1String("set --root to"));
    return fail(code, error);
}

void print(const QString &text)
{
    std::fputs(text.toUtf8().constData(), stdout);
    std::fflush(stdout);
}

int listScenarios()
{
    const QStringList names = ScenarioFiles::shipped();
    int width = 0;
    for (const QString &name : names)
        width = std::max(width, name.size());
    for (const QString &name : names) {
        Scenario scenario;
        QString error;
        if (!ScenarioFiles::load(name, &scenario, &error))
            return fail(HostdExitCode::BadScenario, error);
        print(QStringLiteral("%1  %2\n").arg(name, -width).arg(scenario.description));
    }
    return static_cast<int>(HostdExitCode::Success);
}

int complete(const QStringList &words)
{
    const QStringList lines = completionLines(HostdOptions::candidates(words), words);
    for (const QString &line : lines)
        print(line + QLatin1Char('\n'));
    return static_cast<int>(HostdExitCode::Success);
}

/*! Wipes what calls that have returned left on the stack: passphrases pass by there. */
[[gnu::noinline]] void wipeStack()
{
    char left[256 * 1024]; // files are read through buffers of 64 KiB
    explicit_bzero(left, sizeof(left));
}

int run(const HostdOptions &options, Scenario scenario, Recording recording)
{
    SignalWatcher signalWatcher;
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, wipeStack);

    Hostd hostd(options, scenario, recording);
    recording = Recording();
    QObject::connect(&signalWatcher, &SignalWatcher::terminationAsked, qApp, [&hostd] {
        Supervisor::tell(Supervisor::Stopping);
        hostd.end(HostdExitCode::Success);
    });
    scenario = Scenario(); // nor does it keep what is replaced later
    QString error;
    const HostdExitCode code = hostd.start(&error);
    wipeStack();
    if (hostd.isAskedToEnd())
        return static_cast<int>(HostdExitCode::Success);
    if (code != HostdExitCode::Success)
        return fail(code, error, options);
    print(QStringLiteral("ready: %1\n").arg(hostd.root()));
    Supervisor::tell(Supervisor::Ready);
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("morvek-hostd"));
    QCoreApplication::setApplicationVersion(QStringLiteral(MORVEK_VERSION));

    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QLatin1String("complete"))
        return complete(arguments.mid(arguments.value(2) == QLatin1String("--") ? 3 : 2));

    HostdOptions options;
    QString error;
    if (!HostdOptions::parse(arguments, &options, &error))
        return fail(HostdExitCode::BadArguments, error);
    if (options.action == HostdOptions::Tell) {
        print(options.text);
        return static_cast<int>(HostdExitCode::Success);
    }
    if (options.action == HostdOptions::ListScenarios)
        return listScenarios();
    // Clients and readers of our output may go at any time.
    std::signal(SIGPIPE, SIG_IGN);
    if (!options.root.isEmpty())
        qputenv("ZOP_ROOT", QFile::encodeName(options.root));
    if (options.action == HostdOptions::Call) {
        const HostdExitCode code = StageCommand::run(options, &error);
        return code == HostdExitCode::Success ? 0 : fail(code, error, options);
    }

    Scenario scenario;
    if (options.network == NetworkSource::Scenario && !ScenarioFiles::load(options.scenario, &scenario, &error))
        return fail(HostdExitCode::BadScenario, error);
    Recording recording;
    if (options.network == NetworkSource::Recording && !Recording::load(options.recording, &recording, &error))
        return fail(HostdExitCode::BadScenario, error);
    const QStringList warnings = warningsOf(scenario);
    for (const QString &warning : warnings)
        EventLog::write(QStringLiteral("%1: warning: %2").arg(options.scenario, warning));
    if (options.action == HostdOptions::Check) {
        print(QStringLiteral("ok: %1\n").arg(options.scenario));
        return static_cast<int>(HostdExitCode::Success);
    }
    return run(options, std::move(scenario), std::move(recording));
}
