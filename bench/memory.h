// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_MEMORY_H
#define MORVEK_MEMORY_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

class Process;
class Report;

/*! A figure of the memory of \a process, by the name that the kernel has for it. */
double kibibytes(const Process &process, const QByteArray &field);

/*! The memory that each service takes from its application, and the size of the libraries for ARM below \a armBuild. */
void measureMemory(Report *report, const QString &armBuild);

#endif
