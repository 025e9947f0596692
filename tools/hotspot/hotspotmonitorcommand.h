// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTMONITORCOMMAND_H
#define MORVEK_HOTSPOTMONITORCOMMAND_H

#include "command.h"

namespace morvek {

CommandInfo hotspotMonitorCommand();

} // namespace morvek

#endif
