// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PROFILEOPTIONS_H
#define MORVEK_PROFILEOPTIONS_H

#include "command.h"

#include <wifihotspot.h>

namespace morvek {

/*! The options that name fields of the hotspot's profile, but for the passphrase. */
std::vector<Option> profileOptions();
/*! Whether \a line holds any of them. */
bool hasProfileOption(const CommandLine &line);
/*! Sets the fields that \a line names. False, with a sentence in \a error, when a value makes no sense. */
bool applyProfileOptions(const CommandLine &line, WifiHotspot *profile, QString *error);

} // namespace morvek

#endif
