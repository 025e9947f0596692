// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_COUNTS_H
#define MORVEK_COUNTS_H

#include <QtCore/QString>

class Report;

/*! The instructions, system calls, allocations and descriptors that one event, start or object costs. */
void measureCounts(Report *report);

/*! The instructions of an application that is told of an update of three attributes. */
double instructionsOfUpdate(int interfaces);
/*! The instructions of a service's constructor; \a kind is "plain" or "virtual". */
double instructionsOfStart(int interfaces, const QString &kind = QStringLiteral("plain"));
/*! The instructions of a scan, for each access point. */
double instructionsOfScan(int accessPoints);

#endif
