// SPDX-License-Identifier: Apache-2.0
#ifndef SERVICEPOINTER_H
#define SERVICEPOINTER_H

#include "networklibraryexports.h"

#include <memory>

/*! A service, obtained and given back as an application does it. */
template<typename Service, void (*deleteService)(Service **)>
struct ServiceDeleter
{
    void operator()(Service *service) const { deleteService(&service); }
};

using HotSpotServicePointer =
    std::unique_ptr<morvek::HotSpotService, ServiceDeleter<morvek::HotSpotService, deleteHotSpotService>>;
using NetworkInterfaceServicePointer =
    std::unique_ptr<morvek::NetworkInterfaceService,
                    ServiceDeleter<morvek::NetworkInterfaceService, deleteNetworkInterfaceService>>;
using WifiServicePointer = std::unique_ptr<morvek::WifiService, ServiceDeleter<morvek::WifiService, deleteWifiService>>;

#endif
