// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTSTATECOMMANDS_H
#define MORVEK_HOTSPOTSTATECOMMANDS_H

#include "command.h"

namespace morvek {

CommandInfo hotspotStatusCommand();
CommandInfo hotspotOnCommand();
CommandInfo hotspotOffCommand();

} // namespace morvek

#endif
