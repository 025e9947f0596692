// SPDX-License-Identifier: Apache-2.0
#include "measurement.h"

#include "process.h"
#include "rounds.h"

Quantiles quantiles(const QVector<double> &samples)
{
    return {samples[samples.size() / 2], samples[samples.size() * 99 / 100]};
}

Quantiles measure(int warmUp, int counted,
                  const std::function<void(const QString &page, const QString &folder)> &processes, int receivers)
{
    const Root root;
    const QString page = root.folder() + QStringLiteral("/page");
    const Rounds rounds(page, warmUp, counted, receivers);
    processes(page, root.folder());
    return quantiles(rounds.samples());
}
