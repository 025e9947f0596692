// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_CROWD_H
#define MORVEK_CROWD_H

class Report;

/*! How long an update takes to the last of many applications, beside many bare processes and many that hear a D-Bus
 * signal. */
void measureCrowd(Report *report);

#endif
