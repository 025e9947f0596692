// SPDX-License-Identifier: Apache-2.0
#include "faultplan.h"

namespace morvek {

FaultPlan::FaultPlan(const QVector<Fault> &faults)
    : m_faults(faults)
{
}

const Fault *FaultPlan::next(const QString &message, const QString &interface, const QString &ssid)
{
    for (Fault &fault : m_faults) {
        const bool fits = (fault.message.isEmpty() || fault.message == message)
            && (fault.interface.isEmpty() || fault.interface == interface)
            && (fault.ssid.isEmpty() || fault.ssid == ssid);
        if (!fits || fault.times == 0)
            continue;
        if (fault.skip > 0) {
            --fault.skip;
            continue;
        }
        if (fault.times > 0)
            --fault.times;
        return &fault;
    }
    return nullptr;
}

bool FaultPlan::add(const Fault &fault)
{
    for (int i = m_faults.size() - 1; i >= 0; --i) {
        if (m_faults.at(i).times != 0)
            continue;
        m_faults.removeAt(i);
        m_added -= i < m_added ? 1 : 0;
    }
    if (m_added == Most)
        return false;
    m_faults.insert(m_added++, fault);
    return true;
}

void FaultPlan::clear()
{
    m_faults.clear();
    m_added = 0;
}

} // namespace morvek
