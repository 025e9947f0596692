// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_REPORT_H
#define MORVEK_REPORT_H

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

/*!
 * The figures of one run: each stands beside a yardstick that was measured in the same run, if it has one. What is no
 * number could not be measured here, and is told as skipped.
 */
class Report
{
public:
    void add(const QString &name, double value, const QString &unit);
    /*! \a limit is the ratio to reach; 0 when none is set. */
    void compare(const QString &name, double value, const QString &unit, const QString &yardstick,
                 double yardstickValue, double limit = 0);

    /*! \a limit is the most that is to be reached. */
    void bound(const QString &name, double value, const QString &unit, double limit);
    void printTable() const;
    QJsonArray figures() const { return m_figures; }
    bool reachesAll() const { return m_reachesAll; }

private:
    void append(const QString &name, double value, const QString &unit, const QJsonObject &more);

    QJsonArray m_figures;
    bool m_reachesAll = true;
};

#endif
