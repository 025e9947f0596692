// SPDX-License-Identifier: Apache-2.0
#include "commandtable.h"

#include "configurecommand.h"
#include "helpcommand.h"
#include "hotspotmonitorcommand.h"
#include "hotspotprofilecommands.h"
#include "hotspotstatecommands.h"
#include "listcommands.h"
#include "monitorcommand.h"
#include "statuscommand.h"
#include "suggestion.h"
#include "wificonnectcommand.h"
#include "wifimonitorcommand.h"
#include "wifiscancommand.h"
#include "wifistatecommands.h"

#include <algorithm>

namespace morvek {

namespace {

template<typename Table>
auto findByName(const Table &table, const QString &name) -> decltype(table.data())
{
    const auto it = std::find_if(table.begin(), table.end(), [&](const auto &entry) { return entry.name == name; });
    return it == table.end() ? nullptr : &*it;
}

QString didYouMean(const QStringList &names)
{
    return names.isEmpty() ? QStringLiteral("see ")
                           : QStringLiteral("did you mean %1? See ").arg(names.join(QLatin1String(" or ")));
}

/*! The commands that \a word, which is no member of \a group, may stand for. */
QStringList meantCommands(const QString &group, const QString &word)
{
    const QString close = suggestion(word, nextWords(group));
    if (!close.isEmpty())
        return {QStringLiteral("'%1'").arg(longerName(group, close))};
    QStringList members;
    for (const CommandInfo &command : commands()) {
        if (group.isEmpty() && command.name.endsWith(QLatin1Char(' ') + word))
            members += QStringLiteral("'%1'").arg(command.name);
    }
    return members;
}

} // namespace

const std::vector<CommandInfo> &commands()
{
    static const std::vector<CommandInfo> table {
        statusCommand(),         interfacesCommand(),    showCommand(),           preferredCommand(),
        configureCommand(),      monitorCommand(),       wifiStatusCommand(),     wifiOnCommand(),
        wifiOffCommand(),        wifiScanCommand(),      wifiConnectCommand(),    wifiDisconnectCommand(),
        wifiMonitorCommand(),    hotspotStatusCommand(), hotspotOnCommand(),      hotspotOffCommand(),
        hotspotProfileCommand(), hotspotSetCommand(),    hotspotMonitorCommand(), helpCommand(),
    };
    return table;
}

const CommandInfo *findCommand(const QString &name)
{
    return findByName(commands(), name);
}

QString longerName(const QString &name, const QString &word)
{
    return name.isEmpty() ? word : name + QLatin1Char(' ') + word;
}

QStringList nextWords(const QString &name)
{
    const QString beginning = longerName(name, QString());
    QStringList words;
    for (const CommandInfo &command : commands()) {
        if (command.name.startsWith(beginning))
            words += command.name.mid(beginning.size()).section(QLatin1Char(' '), 0, 0);
    }
    words.removeDuplicates();
    return words;
}

QString noSuchCommand(const QString &name)
{
    const QString group = name.section(QLatin1Char(' '), 0, -2);
    return QStringLiteral("there is no command \"%1\": ").arg(name)
        + didYouMean(meantCommands(group, name.section(QLatin1Char(' '), -1)))
        + helpFor(nextWords(group).isEmpty() ? QString() : group);
}

QString noSuchOption(const QString &typed, const CommandInfo *command)
{
    QStringList names {helpOption().name, versionOption().name};
    for (const CommandInfo &candidate : commands()) {
        if (command && command->name != candidate.name)
            continue;
        for (const Option &option : candidate.options)
            names += option.name;
    }
    const QString bare = typed.mid(typed.startsWith(QLatin1String("--")) ? 2 : 1).section(QLatin1Char('='), 0, 0);
    const QString close = suggestion(bare, names);
    const QStringList meant = close.isEmpty() ? QStringList() : QStringList(QStringLiteral("--") + close);
    return QStringLiteral("there is no option \"%1\": ").arg(typed) + didYouMean(meant)
        + helpFor(command ? command->name : QString());
}

QString helpFor(const QString &name)
{
    return name.isEmpty() ? QStringLiteral("'morvekctl --help'") : QStringLiteral("'morvekctl help %1'").arg(name);
}

const Option *findOption(const QString &name)
{
    for (const Option *option : {&helpOption(), &versionOption()}) {
        if (option->name == name)
            return option;
    }
    for (const CommandInfo &command : commands()) {
        if (const Option *option = findByName(command.options, name))
            return option;
    }
    return nullptr;
}

const Option &helpOption()
{
    static const Option option {
        QStringLiteral("help"), {}, QStringLiteral("tell how a command is used, and stop; -h is the same")};
    return option;
}

const Option &versionOption()
{
    static const Option option {QStringLiteral("version"), {}, QStringLiteral("tell the version, and stop")};
    return option;
}

QString usageOf(const CommandInfo &command)
{
    QStringList usages;
    for (const Usage &usage : command.usages)
        usages += QStringLiteral("morvekctl %1 %2").arg(command.name, usage.arguments).trimmed();
    return usages.join(QLatin1String(" | "));
}

} // namespace morvek
