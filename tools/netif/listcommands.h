// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_LISTCOMMANDS_H
#define MORVEK_LISTCOMMANDS_H

#include "command.h"

namespace morvek {

class NetworkInterface;

CommandInfo interfacesCommand();
CommandInfo showCommand();
CommandInfo preferredCommand();

/*! Writes everything known of \a networkInterface, one property a line, or as one JSON object. */
void writeInterface(const NetworkInterface &networkInterface, const NetworkInterface &preferred, bool json);

} // namespace morvek

#endif
