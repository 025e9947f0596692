// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_FAULTREADER_H
#define MORVEK_HOSTD_FAULTREADER_H

#include "scenario.h"

namespace morvek {

class JsonNode;

/*! The faults of \a node, for \a scenario, which has its interfaces already. */
QVector<Fault> readFaults(const JsonNode &node, const Scenario &scenario);

} // namespace morvek

#endif
