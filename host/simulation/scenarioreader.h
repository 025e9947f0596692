// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SCENARIOREADER_H
#define MORVEK_HOSTD_SCENARIOREADER_H

#include "scenario.h"

namespace morvek {

class JsonNode;

/*! The longest time that a scenario may name: a day, in milliseconds. */
constexpr int LongestTime = 24 * 60 * 60 * 1000;

/*! Parses a document; notes in \a error where that ends, and clears it otherwise. */
QJsonValue parseJson(const QByteArray &json, QString *error);

/*! Reads and checks a whole scenario. False when something is wrong with it; \a error then names the place. */
bool readScenario(const QByteArray &json, Scenario *scenario, QString *error);

/*! Notes a text that is not of the form \a pattern, a regular expression, and what is wrong with it then. */
void checkForm(const JsonNode &node, const QString &pattern, const QString &fault);
/*! Notes a text that is not a hardware address. */
void checkHardwareAddress(const JsonNode &node);

AddressSet readAddressSet(const JsonNode &node);

/*! The name of an interface of \a scenario, which has its interfaces already; notes an unknown one. */
QString readInterfaceName(const JsonNode &node, const Scenario &scenario);

/*! The names of interfaces of \a scenario, each once. */
QStringList readRanking(const JsonNode &node, const Scenario &scenario);

} // namespace morvek

#endif
