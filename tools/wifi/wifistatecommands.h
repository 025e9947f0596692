// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFISTATECOMMANDS_H
#define MORVEK_WIFISTATECOMMANDS_H

#include "command.h"

namespace morvek {

CommandInfo wifiStatusCommand();
CommandInfo wifiOnCommand();
CommandInfo wifiOffCommand();
CommandInfo wifiDisconnectCommand();

} // namespace morvek

#endif
