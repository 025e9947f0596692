// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_FETCHING_H
#define MORVEK_FETCHING_H

#include <QtCore/QStringList>

class Report;

/*! How long it takes to fetch the hotspot's profile, beside a bare round trip, and the memory that requests need. */
void measureFetching(Report *report);
/*! One process of such a measurement; -1 when \a arguments name none. */
int runFetchingRole(const QStringList &arguments);

#endif
