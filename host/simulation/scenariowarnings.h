// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SCENARIOWARNINGS_H
#define MORVEK_HOSTD_SCENARIOWARNINGS_H

#include "service.h"

#include <QtCore/QStringList>

namespace morvek {

struct Scenario;
struct TimelineEvent;

/*!
 * What can never happen in \a scenario, whatever clients do: a line each, which begins with the place. Only what is
 * certain is told.
 */
QStringList warningsOf(const Scenario &scenario);

/*! Whether all that there is to tell of \a event is told by one daemon: that of \a service. */
bool isToldByOne(const TimelineEvent &event, const QString &wifiInterface, Service *service);

} // namespace morvek

#endif
