// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_COMMANDLINE_H
#define MORVEK_COMMANDLINE_H

#include <QtCore/QMap>
#include <QtCore/QStringList>

namespace morvek {

struct CommandInfo;

/*! What was typed, sorted but not yet understood. */
struct CommandLine
{
    QString name;                         //!< of a command, or the beginning of one
    const CommandInfo *command = nullptr; //!< null when the name is not complete
    QStringList words;                    //!< those that follow the command
    QMap<QString, QString> options;       //!< by name, without dashes; those without a value hold an empty text
    int timeout = -1;                     //!< in milliseconds, -1 for none

    bool has(const QString &option) const { return options.contains(option); }
};

/*! Sorts \a arguments. False, with a sentence for the user in \a error, when they do not fit the command table. */
bool parseCommandLine(const QStringList &arguments, CommandLine *line, QString *error);

} // namespace morvek

#endif
