// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_MANAGED_H
#define MORVEK_MANAGED_H

class QStringList;
class Report;

/*! What comes from a network manager, through morvek-hostd and the library, beside who listens to the manager. */
void measureManaged(Report *report);

/*! What listens to the manager, or is the manager; -1 when \a arguments do not name it. */
int runManagedRole(const QStringList &arguments);

#endif
