// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFIPROVIDER_P_H
#define MORVEK_WIFIPROVIDER_P_H

#include "serviceproviderbase.h"
#include "wifiaccesspoint.h"

namespace morvek {

class AsyncWifiConnectOperation;
class AsyncWifiScanOperation;
class WifiConnectionConfig;

/*!
 * What stands behind WifiService: it knows the state of the Wi-Fi station and changes it. It completes the operations
 * that it is given, unless they have been deleted by then.
 */
class WifiProvider : public ServiceProviderBase
{
    Q_OBJECT

public:
    virtual void powerOn() = 0;
    virtual void powerOff() = 0;
    virtual bool powered() const = 0;
    virtual void scan(AsyncWifiScanOperation *operation) = 0;
    virtual void connectAccessPoint(AsyncWifiConnectOperation *operation, const WifiConnectionConfig &config) = 0;
    virtual void disconnectAccessPoint() = 0;
    virtual WifiAccessPoint connectedAccessPoint() const = 0;
    virtual bool connected() const = 0;

Q_SIGNALS:
    void poweredChanged(bool powered);
    void connectedChanged(bool connected);
};

} // namespace morvek

#endif
