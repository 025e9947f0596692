// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_COMMANDTABLE_H
#define MORVEK_COMMANDTABLE_H

#include "command.h"

namespace morvek {

/*! Every command, in the order of the help. */
const std::vector<CommandInfo> &commands();
/*! Null when there is none of that name. */
const CommandInfo *findCommand(const QString &name);
/*! \a name, which may be empty, with \a word added. */
QString longerName(const QString &name, const QString &word);
/*! The words that lead on from \a name, which is empty or a group's; none when it is neither. */
QStringList nextWords(const QString &name);
/*! What is said when \a name is neither a command's nor a group's. */
QString noSuchCommand(const QString &name);
/*! What is said when \a typed is no option of \a command, or of any when that is null. */
QString noSuchOption(const QString &typed, const CommandInfo *command);
/*! How to ask for the help of \a name, a command's or a group's; of the program when it is empty. */
QString helpFor(const QString &name);
/*! The option of that name of any command; it means the same wherever it is taken. Null when there is none. */
const Option *findOption(const QString &name);

const Option &helpOption();
const Option &versionOption();

/*! How \a command is called, on one line. */
QString usageOf(const CommandInfo &command);

} // namespace morvek

#endif
