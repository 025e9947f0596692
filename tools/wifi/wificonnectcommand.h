// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFICONNECTCOMMAND_H
#define MORVEK_WIFICONNECTCOMMAND_H

#include "command.h"

namespace morvek {

CommandInfo wifiConnectCommand();

} // namespace morvek

#endif
