// SPDX-License-Identifier: Apache-2.0
#include "hostdoptions.h"

#include "stagecommand.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

#include <limits>

namespace morvek {

namespace {

constexpr double LeastSpeed = 0.01;
constexpr double MostSpeed = 10000;
constexpr double MostTimeout = 86400;

const QString Description = QStringLiteral(
    "Plays the daemons of a head unit on a Linux machine: the networking daemon publishes network interfaces and\n"
    "answers requests to configure them; the Wi-Fi daemon publishes the state of the radio, scans, and joins and\n"
    "leaves networks; the tethering daemon starts and stops a hotspot, and keeps its profile. When everything is\n"
    "published it prints \"ready: ROOT\"; SIGTERM ends it.\n"
    "\n"
    "To one that runs below the root already:\n"
    "  act EVENT|FAULT [KEY=VALUE|KEY:=JSON]...   lets an event of a timeline, or a fault, happen now\n"
    "  act JSON, act -                            the same from JSON, or from lines of it on standard input\n"
    "  look [requests|objects|faults|daemons]     shows what was requested, what is published, and more\n"
    "  pass MILLISECONDS                          lets time pass, after --hold\n"
    "  wait                                       waits until everything is published\n"
    "\n"
    "Exit codes: 0 ended as asked, 1 cannot publish, 2 bad arguments, 3 bad scenario, 4 unusable root,\n"
    "5 another morvek-hostd publishes below the root, 6 the running one refuses, 7 none runs or answers.");

QString serviceNames(const QString &separator)
{
    QStringList names;
    for (const ServiceWords &one : Services)
        names += one.name;
    return names.join(separator);
}

struct Switches
{
    QCommandLineOption scenario {QStringLiteral("scenario"),
                                 QStringLiteral("The world to publish: a shipped scenario's name, or a file."),
                                 QStringLiteral("NAME|FILE"), QStringLiteral("headunit")};
    QCommandLineOption list {QStringLiteral("list-scenarios"), QStringLiteral("Lists the shipped scenarios.")};
    QCommandLineOption interfaces {QStringLiteral("interfaces"),
                                   QStringLiteral("Publishes the scenario's interfaces, or shows this machine's own."),
                                   QStringLiteral("scenario|system"), QStringLiteral("scenario")};
    QCommandLineOption without {QStringLiteral("without"),
                                QStringLiteral("Leaves out a daemon, but not its world; may be given more than once."),
                                serviceNames(QStringLiteral("|"))};
    QCommandLineOption root {QStringLiteral("root"), QStringLiteral("Publishes below this directory; sets ZOP_ROOT."),
                             QStringLiteral("DIR")};
    QCommandLineOption speed {QStringLiteral("speed"), QStringLiteral("Lets time pass so many times as fast."),
                              QStringLiteral("FACTOR"), QStringLiteral("1")};
    QCommandLineOption seed {QStringLiteral("seed"), QStringLiteral("Replaces the scenario's seed."),
                             QStringLiteral("N")};
    QCommandLineOption fresh {
        QStringLiteral("fresh"),
        QStringLiteral("First forgets what former runs left below the root: the hotspot's profile "
                       "and all objects.")};
    QCommandLineOption hold {QStringLiteral("hold"),
                             QStringLiteral("Nothing takes time, and no time passes but by \"pass\".")};
    QCommandLineOption timeout {QStringLiteral("timeout"),
                                QStringLiteral("How long act, look, pass and wait wait for the running one."),
                                QStringLiteral("SECONDS"), QStringLiteral("30")};
    QCommandLineOption check {QStringLiteral("check"), QStringLiteral("Loads and checks the scenario, and ends.")};
    QCommandLineOption verbose {QStringLiteral("verbose"),
                                QStringLiteral("Writes a line for each request, reply and event to standard error.")};
    QCommandLineOption help {QStringLiteral("help"), QStringLiteral("Shows this text.")};
    QCommandLineOption version {QStringLiteral("version"), QStringLiteral("Shows the version.")};
};

bool readNumbers(const QCommandLineParser &parser, const Switches &switches, HostdOptions *options, QString *error)
{
    bool ok = false;
    options->speed = parser.value(switches.speed).toDouble(&ok);
    if (!ok || !(options->speed >= LeastSpeed && options->speed <= MostSpeed)) {
        *error = QStringLiteral("--speed: \"%1\" is not a factor from %2 to %3")
                     .arg(parser.value(switches.speed), QString::number(LeastSpeed), QString::number(MostSpeed));
        return false;
    }
    options->timeout = parser.value(switches.timeout).toDouble(&ok);
    if (!ok || !(options->timeout >= 0 && options->timeout <= MostTimeout)) {
        *error = QStringLiteral("--timeout: \"%1\" is not a time from 0 to %2 seconds")
                     .arg(parser.value(switches.timeout), QString::number(MostTimeout));
        return false;
    }
    if (!parser.isSet(switches.seed))
        return true;
    constexpr qint64 largest = std::numeric_limits<int>::max();
    options->seed = parser.value(switches.seed).toLongLong(&ok);
    if (!ok || options->seed < 0 || options->seed > largest) {
        *error = QStringLiteral("--seed: \"%1\" is not a whole number from 0 to %2")
                     .arg(parser.value(switches.seed), QString::number(largest));
        return false;
    }
    return true;
}

bool readWithout(const QCommandLineParser &parser, const Switches &switches, HostdOptions *options, QString *error)
{
    const QStringList names = parser.values(switches.without);
    for (const QString &name : names) {
        const auto *service = std::find_if(std::begin(Services), std::end(Services),
                                           [&name](const ServiceWords &one) { return one.name == name; });
        if (service == std::end(Services)) {
            *error = QStringLiteral("--without: \"%1\" is none of %2").arg(name, serviceNames(QStringLiteral(", ")));
            return false;
        }
        options->without += service->service;
    }
    return true;
}

bool readPlace(const QCommandLineParser &parser, const Switches &switches, HostdOptions *options, QString *error)
{
    const QString interfaces = parser.value(switches.interfaces);
    options->system = interfaces == QLatin1String("system");
    if (!options->system && interfaces != QLatin1String("scenario")) {
        *error = QStringLiteral("--interfaces: \"%1\" is neither scenario nor system").arg(interfaces);
        return false;
    }
    if (options->system && (parser.isSet(switches.scenario) || parser.isSet(switches.check))) {
        *error = QStringLiteral("--interfaces system shows this machine: it goes with neither --scenario nor --check");
        return false;
    }
    if (parser.isSet(switches.root)) {
        if (parser.value(switches.root).isEmpty()) {
            *error = QStringLiteral("--root: needs a directory");
            return false;
        }
        options->root = QDir::cleanPath(QDir::current().absoluteFilePath(parser.value(switches.root)));
    }
    return true;
}

bool readHold(const QCommandLineParser &parser, const Switches &switches, HostdOptions *options, QString *error)
{
    options->hold = parser.isSet(switches.hold);
    if (options->hold && (options->system || parser.isSet(switches.speed)))
        *error =
            QStringLiteral("--hold has a scenario's time stand still: it goes with neither --interfaces system nor "
                           "--speed");
    return error->isEmpty();
}

/*! The words to the one that runs, if there are any. */
bool readWords(const QCommandLineParser &parser, const Switches &switches, HostdOptions *options, QString *error)
{
    options->words = parser.positionalArguments();
    if (options->words.isEmpty()) {
        if (parser.isSet(switches.timeout))
            *error = QStringLiteral("--timeout goes with %1 only").arg(StageCommand::verbs().join(QLatin1String(", ")));
        return error->isEmpty();
    }
    const QString &verb = options->words.constFirst();
    if (!StageCommand::verbs().contains(verb)) {
        *error = QStringLiteral("unexpected argument \"%1\"").arg(verb);
        return false;
    }
    options->action = HostdOptions::Call;
    const QStringList names = parser.optionNames();
    for (const QString &name : names) {
        if (!switches.root.names().contains(name) && !switches.timeout.names().contains(name)) {
            *error = QStringLiteral("--%1 does not go with %2").arg(name, verb);
            return false;
        }
    }
    return true;
}

} // namespace

bool HostdOptions::parse(const QStringList &arguments, HostdOptions *options, QString *error)
{
    const Switches switches;
    QCommandLineParser parser;
    parser.setApplicationDescription(Description);
    parser.addOptions({switches.scenario, switches.list, switches.interfaces, switches.without, switches.root,
                       switches.speed, switches.seed, switches.fresh, switches.hold, switches.timeout, switches.check,
                       switches.verbose, switches.help, switches.version});
    if (!parser.parse(arguments)) {
        *error = parser.errorText();
        return false;
    }
    if (parser.isSet(switches.help)) {
        options->action = Tell;
        options->text = parser.helpText();
        return true;
    }
    if (parser.isSet(switches.version)) {
        options->action = Tell;
        options->text =
            QStringLiteral("%1 %2\n").arg(QCoreApplication::applicationName(), QCoreApplication::applicationVersion());
        return true;
    }
    if (parser.isSet(switches.list))
        options->action = ListScenarios;
    else if (parser.isSet(switches.check))
        options->action = Check;
    options->scenario = parser.value(switches.scenario);
    options->fresh = parser.isSet(switches.fresh);
    options->verbose = parser.isSet(switches.verbose);
    return readWords(parser, switches, options, error) && readNumbers(parser, switches, options, error)
        && readWithout(parser, switches, options, error) && readPlace(parser, switches, options, error)
        && readHold(parser, switches, options, error);
}

} // namespace morvek
