// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_LATENCY_H
#define MORVEK_LATENCY_H

#include <QtCore/QStringList>

class Report;

/*! How long an update takes to the application's slot, and a request to its result, beside bare and D-Bus ways. */
void measureLatency(Report *report);
/*! One process of such a measurement; -1 when \a arguments name none. */
int runLatencyRole(const QStringList &arguments);

#endif
