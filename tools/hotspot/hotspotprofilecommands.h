// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTPROFILECOMMANDS_H
#define MORVEK_HOTSPOTPROFILECOMMANDS_H

#include "command.h"

namespace morvek {

CommandInfo hotspotProfileCommand();
CommandInfo hotspotSetCommand();

} // namespace morvek

#endif
