// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFISCANCOMMAND_H
#define MORVEK_WIFISCANCOMMAND_H

#include "command.h"

namespace morvek {

CommandInfo wifiScanCommand();

} // namespace morvek

#endif
