// SPDX-License-Identifier: Apache-2.0
#include "commandtable.h"

#include "configurecommand.h"
#include "helpcommand.h"
#include "hotspotmonitorcommand.h"
#include "hotspotprofilecommands.h"
#include "hotspotstatecommands.h"
#include "listcommands.h"
#include "monitorcommand.h"
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

} // namespace

const std::vector<CommandInfo> &commands()
{
    static const std::vector<CommandInfo> table {
        interfacesCommand(),    showCommand(),           preferredCommand(),      configureCommand(),
        monitorCommand(),       wifiStatusCommand(),     wifiOnCommand(),         wifiOffCommand(),
        wifiScanCommand(),      wifiConnectCommand(),    wifiDisconnectCommand(), wifiMonitorCommand(),
        hotspotStatusCommand(), hotspotOnCommand(),      hotspotOffCommand(),     hotspotProfileCommand(),
        hotspotSetCommand(),    hotspotMonitorCommand(), helpCommand(),
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
    return QStringLiteral("there is no command \"%1\": see %2")
        .arg(name, helpFor(nextWords(group).isEmpty() ? QString() : group));
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
    static const Option option {QStringLiteral("help"), {}, QStringLiteral("tell how a command is used, and stop")};
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
