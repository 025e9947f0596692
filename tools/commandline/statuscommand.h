// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_STATUSCOMMAND_H
#define MORVEK_STATUSCOMMAND_H

#include "command.h"

namespace morvek {

CommandInfo statusCommand();

} // namespace morvek

#endif
