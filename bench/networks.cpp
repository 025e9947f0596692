// SPDX-License-Identifier: Apache-2.0
#include "networks.h"

#include "counts.h"
#include "pace.h"
#include "process.h"
#include "report.h"
#include "tracing.h"

void countNetworks(Report *report)
{
    constexpr int Networks = 200;
    const QString program = programBeside(QStringLiteral("morvek-bench-drifting"));
    const QString name = QStringLiteral("a drifting scan of %1 networks, the model").arg(Networks);
    report->compare(name, countInstructionsOf(program).value(0).instructions / Pace::Counted,
                    QStringLiteral("instructions"), QStringLiteral("its decoding"),
                    instructionsOfScan(Networks) * Networks, 0.5);
    const QList<QByteArray> told = Process(program, {}).finish().simplified().split(' ');
    const QString signalsTold = QStringLiteral("signals");
    report->add(name + QStringLiteral(", changes of rows"), told.value(0).toDouble() / Pace::Counted, signalsTold);
    report->add(name + QStringLiteral(", changes of data"), told.value(1).toDouble() / Pace::Counted, signalsTold);
    report->bound(name + QStringLiteral(", resets"), told.value(2).toDouble(), signalsTold, 0);
}
