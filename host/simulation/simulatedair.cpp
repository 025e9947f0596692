// SPDX-License-Identifier: Apache-2.0
#include "simulatedair.h"

#include <utility>

namespace morvek {

SimulatedAir::SimulatedAir(const QVector<ScenarioAccessPoint> &accessPoints)
{
    for (const ScenarioAccessPoint &settings : accessPoints)
        m_accessPoints += SimulatedAccessPoint(settings);
}

SimulatedAccessPoint *SimulatedAir::find(const QString &bssid)
{
    return const_cast<SimulatedAccessPoint *>(std::as_const(*this).find(bssid));
}

const SimulatedAccessPoint *SimulatedAir::find(const QString &bssid) const
{
    const auto found = std::find_if(m_accessPoints.begin(), m_accessPoints.end(),
                                    [&bssid](const SimulatedAccessPoint &one) { return one.bssid() == bssid; });
    return found == m_accessPoints.end() ? nullptr : &*found;
}

QSet<QString> SimulatedAir::inRange() const
{
    QSet<QString> bssids;
    for (const SimulatedAccessPoint &one : m_accessPoints) {
        if (one.isInRange())
            bssids.insert(one.bssid());
    }
    return bssids;
}

const SimulatedAccessPoint *SimulatedAir::strongest(const std::function<bool(const SimulatedAccessPoint &)> &fits) const
{
    const SimulatedAccessPoint *best = nullptr;
    for (const SimulatedAccessPoint &one : m_accessPoints) {
        if (one.isInRange() && fits(one) && (!best || one.level() > best->level()))
            best = &one;
    }
    return best;
}

QJsonArray SimulatedAir::scan(Pace *pace)
{
    QJsonArray results;
    for (SimulatedAccessPoint &one : m_accessPoints) {
        // Every one of them strays, so that the levels do not depend on who was in range before.
        one.drift(pace);
        if (one.isInRange())
            results += one.scanResult();
    }
    return results;
}

} // namespace morvek
