// SPDX-License-Identifier: Apache-2.0
#include "services.h"

using namespace morvek;

namespace {

template<typename Service>
Service *awaitReady(Service *service)
{
    while (!service->ready())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return service;
}

} // namespace

NetworkInterfaceService *readyNetworkInterfaceService()
{
    NetworkInterfaceService *service = newNetworkInterfaceService();
    if (!service->ready())
        qFatal("the service is not ready");
    return service;
}

WifiService *readyWifiService()
{
    return awaitReady(newWifiService());
}

HotSpotService *readyHotSpotService()
{
    return awaitReady(newHotSpotService());
}

ManualRequests::ManualRequests(NetworkInterfaceService *service)
    : m_service(service),
      m_target(service->interfaces().constFirst()),
      m_config(m_target.configuration())
{
    m_config.setType(NetworkInterfaceConfig::Manual);
}
