// SPDX-License-Identifier: Apache-2.0
#include "report.h"

#include <QtCore/QTextStream>

#include <cmath>

namespace {

QString lineOf(const QJsonObject &figure)
{
    const QString name = figure[QStringLiteral("name")].toString();
    const QString unit = figure[QStringLiteral("unit")].toString();
    if (figure[QStringLiteral("value")].isNull())
        return QStringLiteral("%1 skipped: %2 cannot be told here").arg(name, -58).arg(unit);
    QString line = QStringLiteral("%1 %2 %3")
                       .arg(name, -58)
                       .arg(figure[QStringLiteral("value")].toDouble(), 12, 'f', 1)
                       .arg(unit, -12);
    if (figure.contains(QStringLiteral("yardstick")))
        line += QStringLiteral("  %1 x %2 (%3)")
                    .arg(figure[QStringLiteral("ratio")].toDouble(), 0, 'f', 2)
                    .arg(figure[QStringLiteral("yardstick")].toString())
                    .arg(figure[QStringLiteral("yardstickValue")].toDouble(), 0, 'f', 1);
    if (figure.contains(QStringLiteral("reached"))) {
        const QJsonValue limit = figure[QStringLiteral("limit")];
        const QString atMost = limit.isUndefined()
            ? QString::number(figure[QStringLiteral("ratioToReach")].toDouble(), 'f', 2)
            : QString::number(limit.toDouble(), 'f', 0);
        line +=
            QStringLiteral(", to reach: %1: %2")
                .arg(atMost, figure[QStringLiteral("reached")].toBool() ? QStringLiteral("yes") : QStringLiteral("NO"));
    }
    return line;
}

} // namespace

void Report::add(const QString &name, double value, const QString &unit)
{
    append(name, value, unit, {});
}

void Report::compare(const QString &name, double value, const QString &unit, const QString &yardstick,
                     double yardstickValue, double limit)
{
    const double ratio = yardstickValue > 0 ? value / yardstickValue : 0;
    QJsonObject more {{QStringLiteral("yardstick"), yardstick},
                      {QStringLiteral("yardstickValue"), yardstickValue},
                      {QStringLiteral("ratio"), ratio}};
    if (limit > 0) {
        more.insert(QStringLiteral("ratioToReach"), limit);
        more.insert(QStringLiteral("reached"), ratio <= limit);
    }
    append(name, value, unit, more);
}

void Report::bound(const QString &name, double value, const QString &unit, double limit)
{
    append(name, value, unit, {{QStringLiteral("limit"), limit}, {QStringLiteral("reached"), value <= limit}});
}

void Report::append(const QString &name, double value, const QString &unit, const QJsonObject &more)
{
    const bool isTold = !std::isnan(value);
    QJsonObject figure = isTold ? more : QJsonObject();
    figure.insert(QStringLiteral("name"), name);
    figure.insert(QStringLiteral("value"), isTold ? QJsonValue(value) : QJsonValue());
    figure.insert(QStringLiteral("unit"), unit);
    m_figures.append(figure);
    m_reachesAll = m_reachesAll && figure[QStringLiteral("reached")].toBool(true);
}

void Report::printTable() const
{
    QTextStream out(stdout);
    for (const QJsonValue &figure : m_figures)
        out << lineOf(figure.toObject()) << '\n';
}
