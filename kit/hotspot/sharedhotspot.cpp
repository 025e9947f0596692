// SPDX-License-Identifier: Apache-2.0
#include "sharedhotspot_p.h"

#include "hotspotrequest_p.h"
#include "networkservices.h"

#include <algorithm>

namespace morvek {

SharedHotspot *SharedHotspot::of(NetworkServices *services)
{
    auto *shared = services->findChild<SharedHotspot *>(QString(), Qt::FindDirectChildrenOnly);
    return shared ? shared : new SharedHotspot(services);
}

SharedHotspot::SharedHotspot(NetworkServices *services)
    : QObject(services)
{
}

SharedHotspot::~SharedHotspot() = default;

void SharedHotspot::add(HotspotRequest *request)
{
    const auto isOver = [](const HotspotRequest *other) { return !other || other->hasEnded(); };
    m_requests.erase(std::remove_if(m_requests.begin(), m_requests.end(), isOver), m_requests.end());
    m_requests.append(request);
}

QVector<HotspotRequest *> SharedHotspot::open() const
{
    QVector<HotspotRequest *> open;
    for (HotspotRequest *request : m_requests) {
        if (request && !request->hasEnded())
            open.append(request);
    }
    return open;
}

} // namespace morvek
