// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_GROWTH_H
#define MORVEK_GROWTH_H

#include <QtCore/QStringList>

class Report;

/*! What grows with the number of interfaces and of finished requests: instructions, and memory. */
void measureGrowth(Report *report);
/*! One process of such a measurement; -1 when \a arguments name none. */
int runGrowthRole(const QStringList &arguments);

#endif
