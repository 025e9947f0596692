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

private:
    QVector<Fault> m_faults;
};

} // namespace morvek

#endif
