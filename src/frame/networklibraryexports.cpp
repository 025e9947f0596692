// SPDX-License-Identifier: Apache-2.0
#include "networklibraryexports.h"

#include "hotspotservice.h"
#include "networkinterfaceservice.h"
#include "wifiservice.h"

namespace {

template<typename Service>
void deleteService(Service **service)
{
    if (!service || !*service)
        return;
    delete *service;
    *service = nullptr;
}

} // namespace

morvek::HotSpotService *newHotSpotService()
{
    return new morvek::HotSpotService;
}

void deleteHotSpotService(morvek::HotSpotService **service)
{
    deleteService(service);
}

morvek::NetworkInterfaceService *newNetworkInterfaceService()
{
    return new morvek::NetworkInterfaceService;
}

void deleteNetworkInterfaceService(morvek::NetworkInterfaceService **service)
{
    deleteService(service);
}

morvek::WifiService *newWifiService()
{
    return new morvek::WifiService;
}

void deleteWifiService(morvek::WifiService **service)
{
    deleteService(service);
}
