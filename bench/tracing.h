// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TRACING_H
#define MORVEK_TRACING_H

#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <functional>
#include <limits>

class Process;

/*!
 * What a process has cost between two marks: all of it under callgrind; the system calls are those of the median step.
 * What was not counted is no number.
 */
struct Cost
{
    double instructions = std::numeric_limits<double>::quiet_NaN();
    double allocations = std::numeric_limits<double>::quiet_NaN();
    double systemCalls = std::numeric_limits<double>::quiet_NaN();
};

/*! Ends what is counted up to here, and begins to count. */
void markCounted();
/*! Ends a step of what is counted. */
void markStep();

/*!
 * Runs this program in the role of \a arguments under callgrind, or under strace, and returns the costs between its
 * marks; none where there is no such tool, or it may not trace. \a feed does what the process waits for.
 */
QVector<Cost> countInstructions(const QStringList &arguments, const std::function<void(Process *traced)> &feed = {});
/*! The same of another \a program. */
QVector<Cost> countInstructionsOf(const QString &program);
QVector<Cost> countSystemCalls(const QStringList &arguments, const std::function<void(Process *traced)> &feed = {});
/*! The instructions of a whole program. */
double instructionsOfProgram(const QString &program);

#endif
