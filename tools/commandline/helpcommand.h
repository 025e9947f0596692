// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HELPCOMMAND_H
#define MORVEK_HELPCOMMAND_H

#include "command.h"

namespace morvek {

CommandInfo helpCommand();

/*! The help of \a name, a command's or a group's; that of the whole program when it is empty. */
QString helpText(const QString &name);
/*! What is told to who types nothing. */
QString shortHelp();

} // namespace morvek

#endif
