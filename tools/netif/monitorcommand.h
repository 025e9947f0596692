// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_MONITORCOMMAND_H
#define MORVEK_MONITORCOMMAND_H

#include "command.h"

namespace morvek {

CommandInfo monitorCommand();

} // namespace morvek

#endif
