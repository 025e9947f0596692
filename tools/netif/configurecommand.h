// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_CONFIGURECOMMAND_H
#define MORVEK_CONFIGURECOMMAND_H

#include "command.h"

namespace morvek {

CommandInfo configureCommand();

} // namespace morvek

#endif
