// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_MEMORY_H
#define MORVEK_MEMORY_H

#include <QtCore/QString>

class Report;

/*! The memory that each service takes from its application, and the size of the libraries for ARM below \a armBuild. */
void measureMemory(Report *report, const QString &armBuild);

#endif
