// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_MEASUREMENT_H
#define MORVEK_MEASUREMENT_H

#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <functional>

class Process;

/*! Microseconds. */
struct Quantiles
{
    double median;
    double percentile99;
};

/*! Of \a samples in ascending order. */
Quantiles quantiles(const QVector<double> &samples);

/*! Runs \a processes, which take turns on a fresh shared page, on a fresh root. */
Quantiles measure(int warmUp, int counted,
                  const std::function<void(const QString &page, const QString &folder)> &processes);

/*!
 * The instructions of what this program does in the role of \a arguments between callgrind's marks. \a feed does what
 * the counted process waits for.
 */
double countInstructions(const QStringList &arguments, const std::function<void(Process *counted)> &feed = {});

#endif
