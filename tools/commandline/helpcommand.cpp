// SPDX-License-Identifier: Apache-2.0
#include "helpcommand.h"

#include "commandtable.h"
#include "output.h"
#include "servicecommand.h"

#include <QtCore/QTextStream>

#include <algorithm>

namespace morvek {

namespace {

using Entries = std::vector<std::pair<QString, QString>>;

// An entry that is too long for its column has its text on the next line.
void writeEntries(QTextStream &stream, const Entries &entries)
{
    const int column = 24;
    for (const auto &[left, right] : entries) {
        stream << "  " << padded(left, column - 3);
        if (left.size() > column - 3)
            stream << "\n  " << padded(QString(), column - 3);
        stream << ' ' << right << '\n';
    }
}

Entries optionEntries(const std::vector<Option> &options)
{
    Entries entries;
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

Entries usageEntries(const QString &beginning)
{
    Entries entries;
    for (const CommandInfo *command : commandsOf(beginning)) {
        for (const Usage &usage : command->usages)
            entries.emplace_back(QStringLiteral("%1 %2").arg(command->name, usage.arguments).trimmed(), usage.help);
    }
    return entries;
}

Entries exitCodeEntries()
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
    writeEntries(stream, usageEntries(QString()));
    stream << "\nOptions of most commands ('morvekctl help COMMAND' tells all):\n";
    writeEntries(stream, optionEntries(serviceOptions()));
    writeEntries(stream, optionEntries({helpOption(), versionOption()}));
    stream << "\nExit codes:\n";
    writeEntries(stream, exitCodeEntries());
    writeExamples(stream, QString());
    stream << "\nEnvironment:\n";
    writeEntries(stream,
                 {{QStringLiteral("ZOP_ROOT"), QStringLiteral("root of the daemons' objects")},
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
    writeEntries(stream, usageEntries(longerName(name, QString())));
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
    writeEntries(stream, optionEntries(command.options));
    writeEntries(stream, optionEntries({helpOption()}));
    stream << "\nExamples:\n";
    for (const QString &example : command.examples)
        stream << "  " << example << '\n';
    stream.flush();
    return text;
}

class HelpCommand : public Command
{
public:
    explicit HelpCommand(const QString &name)
        : m_name(name)
    {
    }

    void start() override
    {
        writeText(helpText(m_name));
        Q_EMIT finished(Done);
    }

private:
    const QString m_name;
};

QStringList nextWordsAfter(const QStringList &before)
{
    return nextWords(before.join(QLatin1Char(' ')));
}

std::unique_ptr<Command> create(const CommandLine &line, QString *error)
{
    const QString name = line.words.join(QLatin1Char(' '));
    if (findCommand(name) || !nextWords(name).isEmpty())
        return std::make_unique<HelpCommand>(name);
    *error = noSuchCommand(name);
    return nullptr;
}

} // namespace

CommandInfo helpCommand()
{
    return {QStringLiteral("help"),
            {{QStringLiteral("COMMAND"), nextWordsAfter}, {QStringLiteral("COMMAND"), nextWordsAfter}},
            2,
            {},
            {{QStringLiteral("[COMMAND]"), QStringLiteral("tell how morvekctl, or one command, is used")}},
            {},
            {QStringLiteral("morvekctl help configure"), QStringLiteral("morvekctl help wifi connect")},
            create};
}

QString shortHelp()
{
    Entries entries;
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
    writeEntries(stream, entries);
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
