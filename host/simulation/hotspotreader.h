// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_HOTSPOTREADER_H
#define MORVEK_HOSTD_HOTSPOTREADER_H

#include "scenario.h"

namespace morvek {

class JsonNode;

/*! The hotspot of \a node. */
ScenarioHotspot readHotspot(const JsonNode &node);

/*! Notes that there is no hotspot in \a scenario, which would have it already, when there is none. */
void expectHotspot(const JsonNode &node, const Scenario &scenario);

} // namespace morvek

#endif
