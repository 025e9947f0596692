// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SCENARIOREADER_H
#define MORVEK_HOSTD_SCENARIOREADER_H

#include "scenario.h"

namespace morvek {

class JsonNode;

/*! The longest time that a scenario may name: a day, in milliseconds. */
constexpr int LongestTime = 24 * 60 * 60 * 1000;

/*! Reads and checks a whole scenario. False when something is wrong with it; \a error then names the place. */
bool readScenario(const QByteArray &json, Scenario *scenario, QString *error);

/*! The name of an interface of \a scenario, which has its interfaces already; notes an unknown one. */
QString readInterfaceName(const JsonNode &node, const Scenario &scenario);

/*! The names of interfaces of \a scenario, each once. */
QStringList readRanking(const JsonNode &node, const Scenario &scenario);

} // namespace morvek

#endif
