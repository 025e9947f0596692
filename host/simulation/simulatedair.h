// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SIMULATEDAIR_H
#define MORVEK_HOSTD_SIMULATEDAIR_H

#include "simulatedaccesspoint.h"

#include <QtCore/QJsonArray>
#include <QtCore/QSet>

#include <functional>

namespace morvek {

/*! The access points of a scenario, in its order. */
class SimulatedAir
{
public:
    explicit SimulatedAir(const QVector<ScenarioAccessPoint> &accessPoints);

    /*! The access point with this bssid, or null. */
    SimulatedAccessPoint *find(const QString &bssid);
    const SimulatedAccessPoint *find(const QString &bssid) const;
    QSet<QString> inRange() const;
    /*! The strongest access point in range that \a fits, the first of equal ones; null when none does. */
    const SimulatedAccessPoint *strongest(const std::function<bool(const SimulatedAccessPoint &)> &fits) const;
    /*! Lets the signal levels stray a little; the access points in range, as they stand in "scan_results". */
    QJsonArray scan(Pace *pace);

private:
    QVector<SimulatedAccessPoint> m_accessPoints;
};

} // namespace morvek

#endif
