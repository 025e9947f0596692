// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HELPCOMMAND_H
#define MORVEK_HELPCOMMAND_H

#include "command.h"

namespace morvek {

CommandInfo helpCommand();

/*! The help of \a command; that of the whole program when it is null. */
QString helpText(const CommandInfo *command);

} // namespace morvek

#endif
