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
    const QString scan = QStringLiteral("a scan of %1 drifting networks").arg(Networks);
    report->compare(QStringLiteral("the model, ") + scan,
                    countInstructionsOf(program).value(0).instructions / Pace::Counted, QStringLiteral("instructions"),
                    QStringLiteral("its decoding"), instructionsOfScan(Networks) * Networks, 0.5);
    const QList<QByteArray> told = Process(program, {}).finish().simplified().split(' ');
    const QString signalsTold = QStringLiteral("signals");
    report->add(QStringLiteral("changes of rows, ") + scan, told.value(0).toDouble() / Pace::Counted, signalsTold);
    report->add(QStringLiteral("changes of data, ") + scan, told.value(1).toDouble() / Pace::Counted, signalsTold);
    report->bound(QStringLiteral("resets, ") + scan, told.value(2).toDouble(), signalsTold, 0);
}
