// SPDX-License-Identifier: Apache-2.0
#include "report.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTextStream>

void Report::add(const QString &name, double value, const QString &unit)
{
    m_figures.append(
        QJsonObject {{QStringLiteral("name"), name}, {QStringLiteral("value"), value}, {QStringLiteral("unit"), unit}});
}

void Report::compare(const QString &name, double value, const QString &unit, const QString &yardstick,
                     double yardstickValue, double limit)
{
    add(name, value, unit);
    const double ratio = yardstickValue > 0 ? value / yardstickValue : 0;
    QJsonObject figure = m_figures.takeAt(m_figures.size() - 1).toObject();
    figure.insert(QStringLiteral("yardstick"), yardstick);
    figure.insert(QStringLiteral("yardstickValue"), yardstickValue);
    figure.insert(QStringLiteral("ratio"), ratio);
    if (limit > 0) {
        figure.insert(QStringLiteral("ratioToReach"), limit);
        figure.insert(QStringLiteral("reached"), ratio <= limit);
        m_reachesAll = m_reachesAll && ratio <= limit;
    }
    m_figures.append(figure);
}

void Report::printTable() const
{
    QTextStream out(stdout);
    for (const QJsonValue &value : m_figures) {
        const QJsonObject figure = value.toObject();
        out << QStringLiteral("%1 %2 %3")
                   .arg(figure[QStringLiteral("name")].toString(), -58)
                   .arg(figure[QStringLiteral("value")].toDouble(), 10, 'f', 1)
                   .arg(figure[QStringLiteral("unit")].toString(), -12);
        if (figure.contains(QStringLiteral("yardstick"))) {
            out << QStringLiteral("  %1 x %2 (%3)")
                       .arg(figure[QStringLiteral("ratio")].toDouble(), 0, 'f', 2)
                       .arg(figure[QStringLiteral("yardstick")].toString())
                       .arg(figure[QStringLiteral("yardstickValue")].toDouble(), 0, 'f', 1);
        }
        if (figure.contains(QStringLiteral("ratioToReach"))) {
            out << QStringLiteral(", to reach: %1: %2")
                       .arg(figure[QStringLiteral("ratioToReach")].toDouble(), 0, 'f', 2)
                       .arg(figure[QStringLiteral("reached")].toBool() ? QStringLiteral("yes") : QStringLiteral("NO"));
        }
        out << '\n';
    }
}

QByteArray Report::toJson() const
{
    return QJsonDocument(m_figures).toJson();
}
