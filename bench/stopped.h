// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_STOPPED_H
#define MORVEK_STOPPED_H

#include <QtCore/QStringList>

class Report;

/*! How large an object's file becomes while an application is stopped, and what the application is told when it goes
 * on. */
void measureStopped(Report *report);
/*! One process of such a measurement; -1 when \a arguments name none. */
int runStoppedRole(const QStringList &arguments);

#endif
