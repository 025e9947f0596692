// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_RESTINGAPPLICATION_H
#define MORVEK_RESTINGAPPLICATION_H

#include "process.h"

/*! morvek-hostd; without \a arguments with its usual scenario, in which nothing happens by itself. */
std::unique_ptr<Process> startHostd(const QStringList &arguments = {});

/*! The services, by the names that the roles know. */
QStringList serviceNames();
/*! An application whose service of this name is ready, if it has one, and which waits for events. */
std::unique_ptr<Process> startRestingApplication(const QString &service = QString());
/*! That application; -1 when \a arguments do not name it. */
int runRestingApplication(const QStringList &arguments);

#endif
