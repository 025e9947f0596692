// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_MEASUREMENT_H
#define MORVEK_MEASUREMENT_H

#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <functional>

/*! Microseconds. */
struct Quantiles
{
    double median;
    double percentile99;
};

/*! Of \a samples in ascending order. */
Quantiles quantiles(const QVector<double> &samples);

/*! Runs \a processes, which take turns on a fresh shared page, on a fresh root; so many \a receivers are reached each
 * time. */
Quantiles measure(int warmUp, int counted,
                  const std::function<void(const QString &page, const QString &folder)> &processes, int receivers = 1);

#endif
