// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SCANNING_H
#define MORVEK_SCANNING_H

#include <QtCore/QStringList>

class Report;

/*! How long the results of a Wi-Fi scan take to the application, beside parsing them and beside D-Bus. */
void measureScanning(Report *report);
/*! One process of such a measurement; -1 when \a arguments name none. */
int runScanningRole(const QStringList &arguments);

#endif
