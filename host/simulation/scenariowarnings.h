// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SCENARIOWARNINGS_H
#define MORVEK_HOSTD_SCENARIOWARNINGS_H

#include <QtCore/QStringList>

namespace morvek {

struct Scenario;

/*!
 * What can never happen in \a scenario, whatever clients do: a line each, which begins with the place. Only what is
 * certain is told.
 */
QStringList warningsOf(const Scenario &scenario);

} // namespace morvek

#endif
