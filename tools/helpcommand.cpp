// SPDX-License-Identifier: Apache-2.0
#include "helpcommand.h"

#include "commandtable.h"
#include "output.h"

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

Entries usageEntries()
{
    Entries entries;
    for (const CommandInfo &command : commands()) {
        for (const Usage &usage : command.usages)
            entries.emplace_back(QStringLiteral("%1 %2").arg(command.name, usage.arguments).trimmed(), usage.help);
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
        entry(NotReady, QStringLiteral("the networking daemon is not there")),
        entry(TimedOut, QStringLiteral("the time of --timeout is up")),
        entry(UnknownInterface, QStringLiteral("there is no interface of that name")),
    };
}

QString programHelp()
{
    QString text;
    QTextStream stream(&text);
    stream << "Usage: morvekctl COMMAND [ARGUMENT]... [OPTION]...\n\n"
              "Shows and changes the network interfaces of this unit.\n\nCommands:\n";
    writeEntries(stream, usageEntries());
    stream << "\nOptions of most commands ('morvekctl help COMMAND' tells all):\n";
    writeEntries(stream, optionEntries(commands().front().options));
    writeEntries(stream, optionEntries({helpOption(), versionOption()}));
    stream << "\nExit codes:\n";
    writeEntries(stream, exitCodeEntries());
    stream << "\nExamples:\n";
    for (const CommandInfo &command : commands()) {
        for (const QString &example : command.examples)
            stream << "  " << example << '\n';
    }
    stream << "\nEnvironment:\n";
    writeEntries(stream,
                 {{QStringLiteral("ZOP_ROOT"), QStringLiteral("root of the daemons' objects")},
                  {QStringLiteral("KREL_VERBOSITY"),
                   QStringLiteral("what the library logs on standard error: 0 (nothing) to 7")}});
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
    explicit HelpCommand(const CommandInfo *command)
        : m_command(command)
    {
    }

    void start() override
    {
        writeText(helpText(m_command));
        Q_EMIT finished(Done);
    }

private:
    const CommandInfo *const m_command;
};

QStringList commandNames()
{
    QStringList names;
    for (const CommandInfo &command : commands())
        names += command.name;
    return names;
}

std::unique_ptr<Command> create(const CommandLine &line, QString *error)
{
    if (line.words.isEmpty())
        return std::make_unique<HelpCommand>(nullptr);
    const CommandInfo *command = findCommand(line.words.first());
    if (command)
        return std::make_unique<HelpCommand>(command);
    *error = noSuchCommand(line.words.first());
    return nullptr;
}

} // namespace

CommandInfo helpCommand()
{
    return {QStringLiteral("help"),
            {{QStringLiteral("COMMAND"), commandNames}},
            1,
            {},
            {{QStringLiteral("[COMMAND]"), QStringLiteral("tell how morvekctl, or one command, is used")}},
            {},
            {QStringLiteral("morvekctl help configure")},
            create};
}

QString helpText(const CommandInfo *command)
{
    return command ? commandHelp(*command) : programHelp();
}

} // namespace morvek
