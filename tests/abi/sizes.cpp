// SPDX-License-Identifier: Apache-2.0
// Arrays whose sizes tell those of the public types, on targets too whose programs do not run here.
#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "asyncnetworkinterfaceoperation.h"
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "hotspotservice.h"
#include "networkinterfaceservice.h"
#include "wificonnectionconfig.h"
#include "wifiservice.h"

using namespace morvek;

#define RECORD(Name, Type)                                                                                             \
    char sizeof_##Name[sizeof(Type)];                                                                                  \
    char alignof_##Name[alignof(Type)];

extern "C" {
RECORD(AsyncHotspotConfigOperation, AsyncHotspotConfigOperation)
RECORD(AsyncHotspotEnableOperation, AsyncHotspotEnableOperation)
RECORD(AsyncNetworkInterfaceOperation, AsyncNetworkInterfaceOperation)
RECORD(AsyncOperationBase, AsyncOperationBase)
RECORD(AsyncOperationError, AsyncOperationError)
RECORD(AsyncWifiConnectOperation, AsyncWifiConnectOperation)
RECORD(AsyncWifiScanOperation, AsyncWifiScanOperation)
RECORD(HotSpotService, HotSpotService)
RECORD(NetworkInterface, NetworkInterface)
RECORD(NetworkInterface_InterfaceType, NetworkInterface::InterfaceType)
RECORD(NetworkInterfaceConfig, NetworkInterfaceConfig)
RECORD(NetworkInterfaceConfig_ConfigurationType, NetworkInterfaceConfig::ConfigurationType)
RECORD(NetworkInterfaceService, NetworkInterfaceService)
RECORD(ServiceBase, ServiceBase)
RECORD(WifiAccessPoint, WifiAccessPoint)
RECORD(WifiBand, WifiBand)
RECORD(WifiCipher, WifiCipher)
RECORD(WifiConnectionConfig, WifiConnectionConfig)
RECORD(WifiHotspot, WifiHotspot)
RECORD(WifiKeyManagementType, WifiKeyManagementType)
RECORD(WifiSecurityProtocol, WifiSecurityProtocol)
RECORD(WifiService, WifiService)
RECORD(WifiServiceSet, WifiServiceSet)
}
