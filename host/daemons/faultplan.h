// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_FAULTPLAN_H
#define MORVEK_HOSTD_FAULTPLAN_H

#include "fault.h"

#include <QtCore/QVector>

namespace morvek {

/*! Says which requests meet a fault. It outlives the daemon, so that a fault of one request hits only one. */
class FaultPlan
{
public:
    explicit FaultPlan(const QVector<Fault> &faults = {});

    /*! The first fault that fits the request, counted off; null when the request is to be treated well. */
    const Fault *next(const QString &message, const QString &interface, const QString &ssid);

    /*! Adds a fault that comes before those of the start, but after what was added earlier; false when it is full. */
    bool add(const Fault &fault);
    void clear();
    /*! In the order in which they are looked at; those that hit nothing any more have their times at 0. */
    const QVector<Fault> &faults() const { return m_faults; }

private:
    static constexpr int Most = 1000; // of those that are added

    QVector<Fault> m_faults;
    int m_added = 0; // so many of them, the first ones
};

} // namespace morvek

#endif
