// SPDX-License-Identifier: Apache-2.0
#include "completion.h"

#include "commandtable.h"

namespace morvek {

namespace {

QStringList optionNames(const CommandLine &line, const QStringList &given)
{
    QStringList names {QStringLiteral("--") + helpOption().name};
    if (line.name.isEmpty())
        names += QStringLiteral("--") + versionOption().name;
    if (line.command) {
        for (const Option &option : line.command->options)
            names += QStringLiteral("--") + option.name;
    }
    for (const QString &option : given)
        names.removeAll(option);
    return names;
}

Candidates candidates(const CommandLine &line, const QStringList &given)
{
    const size_t position = size_t(line.words.size());
    if (line.command && position < line.command->words.size())
        return {line.command->words[position].candidates(line.words)};
    return {(line.command ? QStringList() : nextWords(line.name)) + optionNames(line, given)};
}

} // namespace

Candidates completions(const QStringList &words)
{
    if (words.isEmpty())
        return completions({QString()});
    CommandLine line;
    QStringList given;
    for (int i = 0; i + 1 < words.size(); ++i) {
        const QString &word = words[i];
        if (word.startsWith(QLatin1String("--"))) {
            given += word;
            const Option *option = findOption(word.mid(2));
            if (option && !option->value.isEmpty() && ++i + 1 == words.size())
                return candidatesOfValue(option->value);
        } else if (line.command) {
            line.words += word;
        } else {
            line.name = longerName(line.name, word);
            line.command = findCommand(line.name);
            if (!line.command && nextWords(line.name).isEmpty())
                return {};
        }
    }
    const QString &typed = words.last();
    if (!typed.startsWith(QLatin1Char('-')))
        return candidates(line, given);
    const int nameEnd = typed.indexOf(QLatin1Char('='));
    const Option *option = nameEnd < 0 ? nullptr : findOption(typed.mid(2, nameEnd - 2));
    return option ? attachedTo(typed, candidatesOfValue(option->value)) : Candidates {optionNames(line, given)};
}

} // namespace morvek
