// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_IDLE_H
#define MORVEK_IDLE_H

class Report;

/*! How often applications and daemons wake while nothing happens. */
void measureIdle(Report *report);

#endif
