// SPDX-License-Identifier: Apache-2.0
#include "commandline.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

#include <limits>

namespace morvek {

namespace {

constexpr double LeastSpeed = 0.01;
constexpr double MostSpeed = 10000;

const QString Description = QStringLiteral(
    "Plays the networking daemon of a head unit on a Linux machine: publishes network interfaces and answers\n"
    "requests to configure them. When everything is published it prints \"ready: ROOT\"; SIGTERM ends it.\n"
    "\n"
    "Exit codes: 0 ended as asked, 1 cannot publish, 2 bad arguments, 3 bad scenario, 4 unusable root,\n"
    "5 another morvek-hostd publishes below the root.");

struct Options
{
    QCommandLineOption scenario {QStringLiteral("scenario"),
                                 QStringLiteral("The world to publish: a shipped scenario's name, or a file."),
                                 QStringLiteral("NAME|FILE"), QStringLiteral("headunit")};
    QCommandLineOption list {QStringLiteral("list-scenarios"), QStringLiteral("Lists the shipped scenarios.")};
    QCommandLineOption interfaces {QStringLiteral("interfaces"),
                                   QStringLiteral("Publishes the scenario's interfaces, or shows this machine's own."),
                                   QStringLiteral("scenario|system"), QStringLiteral("scenario")};
    QCommandLineOption root {QStringLiteral("root"), QStringLiteral("Publishes below this directory; sets ZOP_ROOT."),
                             QStringLiteral("DIR")};
    QCommandLineOption speed {QStringLiteral("speed"), QStringLiteral("Lets time pass so many times as fast."),
                              QStringLiteral("FACTOR"), QStringLiteral("1")};
    QCommandLineOption seed {QStringLiteral("seed"), QStringLiteral("Replaces the scenario's seed."),
                             QStringLiteral("N")};
    QCommandLineOption check {QStringLiteral("check"), QStringLiteral("Loads and checks the scenario, and ends.")};
    QCommandLineOption verbose {QStringLiteral("verbose"),
                                QStringLiteral("Writes a line for each request, reply and event to standard error.")};
    QCommandLineOption help {QStringLiteral("help"), QStringLiteral("Shows this text.")};
    QCommandLineOption version {QStringLiteral("version"), QStringLiteral("Shows the version.")};
};

bool readNumbers(const QCommandLineParser &parser, const Options &options, CommandLine *commandLine, QString *error)
{
    bool ok = false;
    commandLine->speed = parser.value(options.speed).toDouble(&ok);
    if (!ok || !(commandLine->speed >= LeastSpeed && commandLine->speed <= MostSpeed)) {
        *error = QStringLiteral("--speed: \"%1\" is not a factor from %2 to %3")
                     .arg(parser.value(options.speed), QString::number(LeastSpeed), QString::number(MostSpeed));
        return false;
    }
    if (!parser.isSet(options.seed))
        return true;
    constexpr qint64 largest = std::numeric_limits<int>::max();
    commandLine->seed = parser.value(options.seed).toLongLong(&ok);
    if (!ok || commandLine->seed < 0 || commandLine->seed > largest) {
        *error = QStringLiteral("--seed: \"%1\" is not a whole number from 0 to %2")
                     .arg(parser.value(options.seed), QString::number(largest));
        return false;
    }
    return true;
}

bool readPlace(const QCommandLineParser &parser, const Options &options, CommandLine *commandLine, QString *error)
{
    const QString interfaces = parser.value(options.interfaces);
    commandLine->system = interfaces == QLatin1String("system");
    if (!commandLine->system && interfaces != QLatin1String("scenario")) {
        *error = QStringLiteral("--interfaces: \"%1\" is neither scenario nor system").arg(interfaces);
        return false;
    }
    if (commandLine->system && (parser.isSet(options.scenario) || parser.isSet(options.check))) {
        *error = QStringLiteral("--interfaces system shows this machine: it goes with no scenario");
        return false;
    }
    if (parser.isSet(options.root)) {
        if (parser.value(options.root).isEmpty()) {
            *error = QStringLiteral("--root: needs a directory");
            return false;
        }
        commandLine->root = QDir::cleanPath(QDir::current().absoluteFilePath(parser.value(options.root)));
    }
    return true;
}

} // namespace

bool CommandLine::parse(const QStringList &arguments, CommandLine *commandLine, QString *error)
{
    const Options options;
    QCommandLineParser parser;
    parser.setApplicationDescription(Description);
    parser.addOptions({options.scenario, options.list, options.interfaces, options.root, options.speed, options.seed,
                       options.check, options.verbose, options.help, options.version});
    if (!parser.parse(arguments)) {
        *error = parser.errorText();
        return false;
    }
    if (!parser.positionalArguments().isEmpty()) {
        *error = QStringLiteral("unexpected argument \"%1\"").arg(parser.positionalArguments().constFirst());
        return false;
    }
    if (parser.isSet(options.help)) {
        commandLine->action = Tell;
        commandLine->text = parser.helpText();
        return true;
    }
    if (parser.isSet(options.version)) {
        commandLine->action = Tell;
        commandLine->text =
            QStringLiteral("%1 %2\n").arg(QCoreApplication::applicationName(), QCoreApplication::applicationVersion());
        return true;
    }
    if (parser.isSet(options.list))
        commandLine->action = ListScenarios;
    else if (parser.isSet(options.check))
        commandLine->action = Check;
    commandLine->scenario = parser.value(options.scenario);
    commandLine->verbose = parser.isSet(options.verbose);
    return readNumbers(parser, options, commandLine, error) && readPlace(parser, options, commandLine, error);
}

} // namespace morvek
