// SPDX-License-Identifier: Apache-2.0
#include "helpcommand.h"

#include "commandtable.h"
#include "helpentries.h"
#include "output.h"
#include "servicecommand.h"

#include <QtCore/QTextStream>

#include <algorithm>

namespace morvek {

namespace {

const QString AllOption = QStringLiteral("all");

HelpEntries optionEntries(const std::vector<Option> &options)
{
    HelpEntries entries;
    for (const Option &option : options)
        entries.emplace_back(QStringLiteral("--%1 %2").arg(option.name, option.value).trimmed(), option.help);
    return entries;
}

/*! Those of the commands whose names begin with \a beginning. */
std::vector<const CommandInfo *> commandsOf(const QString &beginning)
{
    std::vector<const CommandInfo *> found;
    for (const CommandInfo &command : commands()) {
        if (command.name.startsWith(beginning))
            found.push_back(&command);
    }
    return found;
}

HelpEntries usageEntries(const QString &beginning)
{
    HelpEntries entries;
    for (const CommandInfo *command : commandsOf(beginning)) {
        for (const Usage &usage : command->usages)
            entries.emplace_back(QStringLiteral("%1 %2").arg(command->name, usage.arguments).trimmed(), usage.help);
    }
    return entries;
}

HelpEntries exitCodeEntries()
{
    const auto entry = [](ExitCode code, const QString &meaning) {
        return std::make_pair(QString::number(code), meaning);
    };
    return {
        entry(Done, QStringLiteral("done")),
        entry(Failed, QStringLiteral("the operation failed: its code and message are on standard error")),
        entry(WrongUsage, QStringLiteral("the command line makes no sense")),
        entry(NotReady, QStringLiteral("the daemon is not there")),
        entry(TimedOut, QStringLiteral("the time is up: that of --timeout, or the command's own")),
        entry(NotFound, QStringLiteral("there is no interface or network of that name")),
    };
}

void writeExamples(QTextStream &stream, const QString &beginning)
{
    stream << "\nExamples:\n";
    for (const CommandInfo *command : commandsOf(beginning)) {
        for (const QString &example : command->examples)
            stream << "  " << example << '\n';
    }
}

QString programHelp()
{
    QString text;
    QTextStream stream(&text);
    stream << "Usage: morvekctl COMMAND [ARGUMENT]... [OPTION]...\n\n"
              "Shows and changes the network interfaces, the Wi-Fi station and the Wi-Fi hotspot of this "
              "unit.\n\nCommands:\n";
    stream << helpLines(usageEntries(QString()));
    stream << "\nOptions of most commands ('morvekctl help COMMAND' tells all):\n";
    stream << helpLines(optionEntries(serviceOptions()));
    stream << helpLines(optionEntries({helpOption(), versionOption()}));
    stream << "\nExit codes:\n";
    stream << helpLines(exitCodeEntries());
    writeExamples(stream, QString());
    stream << "\nEnvironment:\n";
    stream << helpLines({{QStringLiteral("ZOP_ROOT"), QStringLiteral("root of the daemons' objects")},
                         {QStringLiteral("KREL_VERBOSITY"),
                          QStringLiteral("set, it shows what the library logs on standard error: 0 (nothing) to 7")}});
    stream.flush();
    return text;
}

QString groupHelp(const QString &name)
{
    QString text;
    QTextStream stream(&text);
    stream << "Usage: morvekctl " << name << " COMMAND [ARGUMENT]... [OPTION]...\n\nCommands:\n";
    stream << helpLines(usageEntries(longerName(name, QString())));
    stream << "\nOptions: 'morvekctl help " << name << " COMMAND' tells them.\n";
    writeExamples(stream, longerName(name, QString()));
    stream.flush();
    return text;
}

QString commandHelp(const CommandInfo &command)
{
    QString text;
    QTextStream stream(&text);
    stream << "Usage:\n";
    for (const Usage &usage : command.usages)
        stream << "  " << QStringLiteral("morvekctl %1 %2").arg(command.name, usage.arguments).trimmed() << "\n      "
               << usage.help << '\n';
    if (!command.details.isEmpty())
        stream << '\n' << command.details << '\n';
    stream << "\nOptions:\n";
    stream << helpLines(optionEntries(command.options));
    stream << helpLines(optionEntries({helpOption()}));
    stream << "\nExamples:\n";
    for (const QString &example : command.examples)
        stream << "  " << example << '\n';
    stream.flush();
    return text;
}

QString allHelp()
{
    QString text = programHelp();
    for (const CommandInfo &command : commands())
        text += QStringLiteral("\nmorvekctl %1:\n\n").arg(command.name) + commandHelp(command);
    return text;
}

class HelpCommand : public Command
{
public:
    explicit HelpCommand(const QString &text)
        : m_text(text)
    {
    }

    void start() override
    {
        writeText(m_text);
        Q_EMIT finished(Done);
    }

private:
    const QString m_text;
};

QStringList nextWordsAfter(const QStringList &before)
{
    return nextWords(before.join(QLatin1Char(' ')));
}

std::unique_ptr<Command> create(const CommandLine &line, QString *error)
{
    const QString name = line.words.join(QLatin1Char(' '));
    const bool all = line.has(AllOption);
    if (all && !name.isEmpty())
        *error = QStringLiteral("--%1 tells every command: leave \"%2\" out").arg(AllOption, name);
    else if (findCommand(name) || !nextWords(name).isEmpty())
        return std::make_unique<HelpCommand>(all ? allHelp() : helpText(name));
    else
        *error = noSuchCommand(name);
    return nullptr;
}

} // namespace

CommandInfo helpCommand()
{
    return {QStringLiteral("help"),
            {{QStringLiteral("COMMAND"), nextWordsAfter}, {QStringLiteral("COMMAND"), nextWordsAfter}},
            2,
            {{AllOption, {}, QStringLiteral("tell how every command is used, as the manual's page does")}},
            {{QStringLiteral("[COMMAND]"), QStringLiteral("tell how morvekctl, or one command, is used")}},
            {},
            {QStringLiteral("morvekctl help configure"), QStringLiteral("morvekctl help wifi connect")},
            create};
}

QString shortHelp()
{
    HelpEntries entries;
    const QStringList words = nextWords(QString());
    for (const QString &word : words) {
        QStringList deeds;
        if (const CommandInfo *command = findCommand(word)) {
            for (const Usage &usage : command->usages)
                deeds += usage.help;
            entries.emplace_back(word, deeds.join(QLatin1String(", or ")));
        } else {
            entries.emplace_back(word + QLatin1String(" ..."), nextWords(word).join(QLatin1String(", ")));
        }
    }
    QString text;
    QTextStream stream(&text);
    stream << "Usage: morvekctl COMMAND [ARGUMENT]... [OPTION]...\n\nCommands:\n";
    stream << helpLines(entries);
    stream << "\n'morvekctl --help' tells all, 'morvekctl help COMMAND' how one is used.\n";
    stream.flush();
    return text;
}

QString helpText(const QString &name)
{
    if (name.isEmpty())
        return programHelp();
    const CommandInfo *command = findCommand(name);
    return command ? commandHelp(*command) : groupHelp(name);
}

} // namespace morvek
