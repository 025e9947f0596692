// SPDX-License-Identifier: Apache-2.0
#include "measurement.h"

#include "process.h"
#include "rounds.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QRegularExpression>

Quantiles quantiles(const QVector<double> &samples)
{
    return {samples[samples.size() / 2], samples[samples.size() * 99 / 100]};
}

Quantiles measure(int warmUp, int counted,
                  const std::function<void(const QString &page, const QString &folder)> &processes)
{
    const Root root;
    const QString page = root.folder() + QStringLiteral("/page");
    const Rounds rounds(page, warmUp, counted);
    processes(page, root.folder());
    return quantiles(rounds.samples());
}

double countInstructions(const QStringList &arguments, const std::function<void(Process *counted)> &feed)
{
    Process counted(QStringLiteral("valgrind"),
                    QStringList {QStringLiteral("--tool=callgrind"), QStringLiteral("--instr-atstart=no"),
                                 QStringLiteral("--callgrind-out-file=/dev/null"),
                                 QCoreApplication::applicationFilePath(), QStringLiteral("--role")}
                        + arguments);
    if (feed)
        feed(&counted);
    counted.finish();
    const QRegularExpression total(QStringLiteral("Collected : (\\d+)"));
    const QRegularExpressionMatch match = total.match(QString::fromLatin1(counted.errors()));
    if (!match.hasMatch())
        qFatal("callgrind counted nothing");
    return match.captured(1).toDouble();
}
