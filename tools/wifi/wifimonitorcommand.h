// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFIMONITORCOMMAND_H
#define MORVEK_WIFIMONITORCOMMAND_H

#include "command.h"

namespace morvek {

CommandInfo wifiMonitorCommand();

} // namespace morvek

#endif
