// SPDX-License-Identifier: Apache-2.0
#include "serviceproviderbase.h"

namespace morvek {

ServiceProviderBase::ServiceProviderBase() = default;

ServiceProviderBase::~ServiceProviderBase() = default;

bool ServiceProviderBase::ready() const
{
    return m_ready;
}

void ServiceProviderBase::setReady(bool ready)
{
    if (m_ready == ready)
        return;
    m_ready = ready;
    emit readyChanged(ready);
}

} // namespace morvek
