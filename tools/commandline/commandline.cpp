// SPDX-License-Identifier: Apache-2.0
#include "commandline.h"

#include "command.h"
#include "commandtable.h"

#include <QtCore/QLocale>

#include <algorithm>

namespace morvek {

namespace {

bool fail(QString *error, const QString &sentence)
{
    *error = sentence;
    return false;
}

bool takeOption(const QString &argument, QStringList *rest, CommandLine *line, QString *error)
{
    const QString name = argument.mid(2).section(QLatin1Char('='), 0, 0);
    const Option *option = argument.startsWith(QLatin1String("--")) ? findOption(name) : nullptr;
    if (!option)
        return fail(error, noSuchOption(argument, line->command));
    if (line->options.contains(name))
        return fail(error, QStringLiteral("--%1 is given twice: give it once").arg(name));

    const bool attached = argument.contains(QLatin1Char('='));
    if (option->value.isEmpty() && attached)
        return fail(error, QStringLiteral("--%1 takes no value: leave \"=\" and what follows out").arg(name));
    if (option->value.isEmpty()) {
        line->options.insert(name, QString());
        return true;
    }
    if (!attached && rest->isEmpty())
        return fail(error, QStringLiteral("--%1 needs a value: --%1 %2").arg(name, option->value));
    line->options.insert(name, attached ? argument.section(QLatin1Char('='), 1) : rest->takeFirst());
    return true;
}

bool checkWords(const CommandLine &line, QString *error)
{
    const CommandInfo &command = *line.command;
    const int most = int(command.words.size());
    if (line.words.size() > most)
        return fail(error, QStringLiteral("\"%1\" is too much: %2").arg(line.words[most], usageOf(command)));
    if (line.words.size() < most - command.optionalWords)
        return fail(
            error,
            QStringLiteral("%1 is missing: %2").arg(command.words[size_t(line.words.size())].name, usageOf(command)));
    return true;
}

bool checkOptions(const CommandLine &line, QString *error)
{
    const auto &known = line.command->options;
    for (auto it = line.options.begin(); it != line.options.end(); ++it) {
        const bool fits = std::any_of(known.begin(), known.end(), [&](const Option &o) { return o.name == it.key(); });
        if (!fits && it.key() != helpOption().name)
            return fail(
                error, QStringLiteral("'%1' takes no --%2: see 'morvekctl help %1'").arg(line.command->name, it.key()));
    }
    return true;
}

bool readTimeout(CommandLine *line, QString *error)
{
    const QString option = QStringLiteral("timeout");
    if (!line->has(option))
        return true;
    bool isNumber = false;
    const double seconds = QLocale::c().toDouble(line->options[option], &isNumber);
    if (!isNumber || !(seconds >= 0.001 && seconds <= 86400))
        return fail(error,
                    QStringLiteral("--timeout \"%1\" is no number of seconds: give one from 0.001 to 86400")
                        .arg(line->options[option]));
    line->timeout = int(seconds * 1000);
    return true;
}

} // namespace

bool parseCommandLine(const QStringList &arguments, CommandLine *line, QString *error)
{
    QStringList rest = arguments;
    bool onlyWords = false;
    while (!rest.isEmpty()) {
        QString argument = rest.takeFirst();
        if (!onlyWords && argument == QLatin1String("-h"))
            argument = QStringLiteral("--") + helpOption().name;
        if (!onlyWords && argument == QLatin1String("--")) {
            onlyWords = true;
        } else if (!onlyWords && argument.startsWith(QLatin1Char('-')) && argument.size() > 1) {
            if (!takeOption(argument, &rest, line, error))
                return false;
        } else if (line->command) {
            line->words.append(argument);
        } else {
            line->name = longerName(line->name, argument);
            line->command = findCommand(line->name);
            if (!line->command && (argument.isEmpty() || nextWords(line->name).isEmpty()))
                return fail(error, noSuchCommand(line->name));
        }
    }
    if (line->has(helpOption().name) || line->has(versionOption().name))
        return true;
    if (!line->command)
        return fail(error, QStringLiteral("a command is missing: see %1").arg(helpFor(line->name)));
    return checkOptions(*line, error) && checkWords(*line, error) && readTimeout(line, error);
}

} // namespace morvek
