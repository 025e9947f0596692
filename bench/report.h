// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_REPORT_H
#define MORVEK_REPORT_H

#include <QtCore/QJsonArray>
#include <QtCore/QString>

/*! The figures of one run: each stands beside a yardstick that was measured in the same run, if it has one. */
class Report
{
public:
    void add(const QString &name, double value, const QString &unit);
    /*! \a limit is the ratio to reach; 0 when none is set. */
    void compare(const QString &name, double value, const QString &unit, const QString &yardstick,
                 double yardstickValue, double limit = 0);

    void printTable() const;
    QByteArray toJson() const;
    bool reachesAll() const { return m_reachesAll; }

private:
    QJsonArray m_figures;
    bool m_reachesAll = true;
};

#endif
