// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_COMMANDTABLE_H
#define MORVEK_COMMANDTABLE_H

#include "command.h"

namespace morvek {

/*! Every command, in the order of the help. */
const std::vector<CommandInfo> &commands();
/*! Null when there is none of that name. */
const CommandInfo *findCommand(const QString &name);
/*! What is said when findCommand() finds none. */
QString noSuchCommand(const QString &name);
/*! The option of that name of any command; it means the same wherever it is taken. Null when there is none. */
const Option *findOption(const QString &name);

const Option &helpOption();
const Option &versionOption();

/*! How \a command is called, on one line. */
QString usageOf(const CommandInfo &command);

} // namespace morvek

#endif
