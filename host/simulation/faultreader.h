// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_FAULTREADER_H
#define MORVEK_HOSTD_FAULTREADER_H

#include "scenario.h"

namespace morvek {

class JsonNode;

/*! What faults are called. */
QStringList faultWords();
/*! A fault, for \a scenario, which has its interfaces already. */
Fault readFault(const JsonNode &node, const Scenario &scenario);
/*! The faults of \a node, likewise. */
QVector<Fault> readFaults(const JsonNode &node, const Scenario &scenario);

} // namespace morvek

#endif
