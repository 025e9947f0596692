// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_WIFIREADER_H
#define MORVEK_HOSTD_WIFIREADER_H

#include "scenario.h"

namespace morvek {

class JsonNode;

/*! The Wi-Fi of \a node, for \a scenario, which has its interfaces already. */
ScenarioWifi readWifi(const JsonNode &node, const Scenario &scenario);

/*! The bssid of an access point of \a scenario, which has its Wi-Fi already; notes an unknown one. */
QString readBssid(const JsonNode &node, const Scenario &scenario);

int readSignalLevel(const JsonNode &node);

/*! The name of access points of \a scenario that have a passkey. */
QString readSecuredName(const JsonNode &node, const Scenario &scenario);
/*! Notes that there is no Wi-Fi in \a scenario, when there is none. */
void expectWifi(const JsonNode &node, const Scenario &scenario);

} // namespace morvek

#endif
