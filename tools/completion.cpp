// SPDX-License-Identifier: Apache-2.0
#include "completion.h"

#include "commandtable.h"

namespace morvek {

namespace {

QStringList optionNames(const CommandInfo *command, const QStringList &given)
{
    QStringList names {QStringLiteral("--") + helpOption().name};
    if (!command)
        return names << QStringLiteral("--") + versionOption().name;
    for (const Option &option : command->options)
        names += QStringLiteral("--") + option.name;
    for (const QString &option : given)
        names.removeAll(option);
    return names;
}

QStringList candidates(const CommandInfo *command, int position, const QStringList &given)
{
    QStringList names;
    if (!command) {
        for (const CommandInfo &known : commands())
            names += known.name;
    } else if (position < int(command->words.size())) {
        return command->words[size_t(position)].candidates();
    }
    return names + optionNames(command, given);
}

} // namespace

QStringList completions(const QStringList &words)
{
    if (words.isEmpty())
        return completions({QString()});
    const CommandInfo *command = nullptr;
    int position = 0;
    QStringList given;
    for (int i = 0; i + 1 < words.size(); ++i) {
        const QString &word = words[i];
        if (word.startsWith(QLatin1String("--"))) {
            given += word;
            const Option *option = findOption(word.mid(2));
            if (option && !option->value.isEmpty() && ++i + 1 == words.size())
                return {}; // the value of an option
        } else if (command) {
            ++position;
        } else if (!(command = findCommand(word))) {
            return {};
        }
    }
    const QString &typed = words.last();
    const bool isOption = typed.startsWith(QLatin1Char('-'));
    const QStringList all = isOption ? optionNames(command, given) : candidates(command, position, given);
    QStringList fitting;
    for (const QString &candidate : all) {
        if (candidate.startsWith(typed))
            fitting += candidate;
    }
    return fitting;
}

} // namespace morvek
