// SPDX-License-Identifier: Apache-2.0
#include "hostdoptions.h"

#include "helpentries.h"
#include "hostdexitcode.h"
#include "scenariofiles.h"
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
    "published it prints \"ready: ROOT\"; SIGTERM ends it.");

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
    QCommandLineOption network {QStringLiteral("network"),
                                QStringLiteral("Publishes the scenario's networks, shows this machine's interfaces as "
                                               "its kernel does, or carries requests out by its network manager."),
                                QStringLiteral("scenario|kernel|manager"), QStringLiteral("scenario")};
    QCommandLineOption interfaces {QStringLiteral("interfaces"),
                                   QStringLiteral("The older name of --network; \"system\" stands for kernel."),
                                   QStringLiteral("scenario|system"), QStringLiteral("scenario")};
    QCommandLineOption only {QStringLiteral("only"),
                             QStringLiteral("With the network manager: shows and touches this interface and no other; "
                                            "may be given more than once."),
                             QStringLiteral("IFACE")};
    QCommandLineOption force {
        QStringLiteral("force"),
        QStringLiteral("With the network manager: touches the interface that carries your remote session, too.")};
    QCommandLineOption remember {
        QStringLiteral("remember"),
        QStringLiteral("With the network manager: what applications have asked for stays when it ends: networks "
                       "with their passkeys, addresses, and the power of the radio.")};
    QCommandLineOption replay {QStringLiteral("replay"),
                               QStringLiteral("Plays what morvek-zop record has written, and refuses requests."),
                               QStringLiteral("FILE")};
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
    QCommandLineOption help {{QStringLiteral("help"), QStringLiteral("h")}, QStringLiteral("Shows this text.")};
    QCommandLineOption version {QStringLiteral("version"), QStringLiteral("Shows the version.")};

    /*! In the order of the help. */
    QList<QCommandLineOption> all() const
    {
        return {scenario, list, network, interfaces, only,    force, remember, replay, without, root,
                speed,    seed, fresh,   hold,       timeout, check, verbose,  help,   version};
    }
};

QString nameOf(const QCommandLineOption &option)
{
    return QLatin1String("--") + option.names().constFirst();
}

HelpEntries optionEntries(const Switches &switches)
{
    HelpEntries entries;
    const QList<QCommandLineOption> options = switches.all();
    for (const QCommandLineOption &option : options) {
        const QString shortName = option.names().value(1);
        entries.emplace_back((shortName.isEmpty() ? QString() : QStringLiteral("-%1, ").arg(shortName))
                                 + QStringLiteral("%1 %2").arg(nameOf(option), option.valueName()).trimmed(),
                             option.description());
    }
    return entries;
}

/*! Of the words to one that runs below the root already. */
HelpEntries wordEntries()
{
    return {
        {QStringLiteral("act EVENT|FAULT [KEY=VALUE|KEY:=JSON]..."),
         QStringLiteral("Lets an event of a timeline, or a fault, happen now.")},
        {QStringLiteral("act JSON, act -"),
         QStringLiteral("The same from JSON, or from lines of it on standard input.")},
        {QStringLiteral("look [requests|objects|faults|daemons]"),
         QStringLiteral("Shows what was requested, what is published, and more.")},
        {QStringLiteral("pass MILLISECONDS"), QStringLiteral("Lets time pass, after --hold.")},
        {QStringLiteral("wait"), QStringLiteral("Waits until everything is published.")},
    };
}

HelpEntries exitCodeEntries()
{
    const auto entry = [](HostdExitCode code, const QString &meaning) {
        return std::make_pair(QString::number(int(code)), meaning);
    };
    return {
        entry(HostdExitCode::Success, QStringLiteral("ended as asked")),
        entry(HostdExitCode::CannotPublish, QStringLiteral("cannot publish")),
        entry(HostdExitCode::BadArguments, QStringLiteral("bad arguments")),
        entry(HostdExitCode::BadScenario, QStringLiteral("bad scenario or recording")),
        entry(HostdExitCode::UnusableRoot, QStringLiteral("unusable root")),
        entry(HostdExitCode::AlreadyRunning, QStringLiteral("another morvek-hostd publishes below the root")),
        entry(HostdExitCode::NotDone, QStringLiteral("the running one refuses")),
        entry(HostdExitCode::NotRunning, QStringLiteral("none runs or answers")),
        entry(HostdExitCode::NoManager, QStringLiteral("no network manager that can be used")),
        entry(HostdExitCode::NothingToServe, QStringLiteral("no such interface, or no radio, and so nothing to serve")),
    };
}

QString helpText(const Switches &switches)
{
    return QStringLiteral("Usage: morvek-hostd [OPTION]... [WORD]...\n\n%1\n\nOptions:\n%2\n"
                          "Words to one that runs below the root already:\n%3\nExit codes:\n%4")
        .arg(Description, helpLines(optionEntries(switches)), helpLines(wordEntries()), helpLines(exitCodeEntries()));
}

/*! Which option, or which daemon to leave out, is given twice; empty when none is. */
QString repetition(const QCommandLineParser &parser, const Switches &switches)
{
    const auto firstTwice = [](QStringList given) {
        while (!given.isEmpty()) {
            QString one = given.takeFirst();
            if (given.contains(one))
                return one;
        }
        return QString();
    };
    QStringList names = parser.optionNames();
    for (const QCommandLineOption &several : {switches.without, switches.only}) {
        const QString value = firstTwice(parser.values(several));
        if (!value.isEmpty())
            return nameOf(several) + QLatin1Char(' ') + value;
        names.removeAll(several.names().constFirst());
    }
    const QString name = firstTwice(names);
    return name.isEmpty() ? QString() : QString(name.size() == 1 ? 1 : 2, QLatin1Char('-')) + name;
}

/*! The option and the value that say where networks come from, as they were given. */
QString givenNetwork(const QCommandLineParser &parser, const Switches &switches)
{
    const QCommandLineOption &given = parser.isSet(switches.interfaces) ? switches.interfaces : switches.network;
    return nameOf(given) + QLatin1Char(' ') + parser.value(given);
}

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

void readReplay(const QCommandLineParser &parser, const Switches &switches, HostdOptions *options, QString *error)
{
    options->network = NetworkSource::Recording;
    options->recording = parser.value(switches.replay);
    for (const QCommandLineOption &one :
         {switches.network, switches.interfaces, switches.scenario, switches.seed, switches.check}) {
        if (parser.isSet(one))
            *error = QStringLiteral("--replay plays what was recorded: it does not go with %1").arg(nameOf(one));
    }
}

bool readNetwork(const QCommandLineParser &parser, const Switches &switches, HostdOptions *options, QString *error)
{
    const QMap<QString, NetworkSource> sources {{QStringLiteral("scenario"), NetworkSource::Scenario},
                                                {QStringLiteral("kernel"), NetworkSource::Kernel},
                                                {QStringLiteral("manager"), NetworkSource::Manager}};
    const QString network = parser.value(switches.network);
    const QString interfaces = parser.value(switches.interfaces);
    options->network = interfaces == QLatin1String("system") ? NetworkSource::Kernel : sources.value(network);
    if (!sources.contains(network))
        *error = QStringLiteral("--network: \"%1\" is none of scenario, kernel, manager").arg(network);
    else if (interfaces != QLatin1String("system") && interfaces != QLatin1String("scenario"))
        *error = QStringLiteral("--interfaces: \"%1\" is neither scenario nor system").arg(interfaces);
    else if (parser.isSet(switches.network) && parser.isSet(switches.interfaces))
        *error = QStringLiteral("--interfaces is the older name of --network: give one of them");
    else if (options->network != NetworkSource::Scenario
             && (parser.isSet(switches.scenario) || parser.isSet(switches.check)))
        *error = QStringLiteral("%1 has this machine's networks: it goes with neither --scenario nor --check")
                     .arg(givenNetwork(parser, switches));
    else if (parser.isSet(switches.replay))
        readReplay(parser, switches, options, error);
    if (!error->isEmpty())
        return false;
    for (const QCommandLineOption &one : {switches.only, switches.force, switches.remember}) {
        if (parser.isSet(one) && options->network != NetworkSource::Manager) {
            *error = QStringLiteral("%1 goes with --network manager only").arg(nameOf(one));
            return false;
        }
    }
    options->manager = {parser.values(switches.only), parser.isSet(switches.force), parser.isSet(switches.remember)};
    return true;
}

bool readPlace(const QCommandLineParser &parser, const Switches &switches, HostdOptions *options, QString *error)
{
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
    const bool isPlayed = options->network == NetworkSource::Scenario || options->network == NetworkSource::Recording;
    if (options->hold && (!isPlayed || parser.isSet(switches.speed)))
        *error = QStringLiteral("--hold has a scenario's time stand still: it goes with --network scenario or --replay "
                                "only, and not with --speed");
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
    parser.addOptions(switches.all());
    if (!parser.parse(arguments)) {
        *error = parser.errorText();
        return false;
    }
    const QString twice = repetition(parser, switches);
    if (!twice.isEmpty()) {
        *error = QStringLiteral("%1 is given twice: give it once").arg(twice);
        return false;
    }
    if (parser.isSet(switches.help)) {
        options->action = Tell;
        options->text = helpText(switches);
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
        && readWithout(parser, switches, options, error) && readNetwork(parser, switches, options, error)
        && readPlace(parser, switches, options, error) && readHold(parser, switches, options, error);
}

Candidates HostdOptions::candidates(const QStringList &words)
{
    const Switches switches;
    const QString typed = words.value(words.size() - 1);
    const QString before = words.value(words.size() - 2);
    const QList<QCommandLineOption> options = switches.all();
    const auto valuesOf = [](const QCommandLineOption &option) {
        Candidates values = candidatesOfValue(option.valueName());
        if (option.names().constFirst() == QLatin1String("scenario"))
            values.words += ScenarioFiles::shipped();
        return values;
    };
    const bool asks = StageCommand::verbs().contains(words.value(0));
    Candidates names;
    names.words = StageCommand::candidates(words);
    for (const QCommandLineOption &option : options) {
        const QString name = nameOf(option);
        if (before == name && !option.valueName().isEmpty())
            return valuesOf(option);
        if (typed.startsWith(name + QLatin1Char('=')))
            return attachedTo(typed, valuesOf(option));
        if (asks && name != nameOf(switches.root) && name != nameOf(switches.timeout))
            continue;
        if (name == nameOf(switches.without) || name == nameOf(switches.only)
            || !words.mid(0, words.size() - 1).contains(name))
            names.words += name;
    }
    return names;
}

} // namespace morvek
