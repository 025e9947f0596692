// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTPROVIDER_P_H
#define MORVEK_HOTSPOTPROVIDER_P_H

#include "serviceproviderbase.h"
#include "wifihotspot.h"

namespace morvek {

class AsyncHotspotConfigOperation;
class AsyncHotspotEnableOperation;

/*!
 * What stands behind HotSpotService: it knows whether the hotspot is on, switches it and passes on its profile. It
 * completes the operations that it is given, unless they have been deleted by then.
 */
class HotspotProvider : public ServiceProviderBase
{
    Q_OBJECT

public:
    virtual void setConfiguration(AsyncHotspotConfigOperation *operation, const WifiHotspot &profile) = 0;
    virtual void configuration(AsyncHotspotConfigOperation *operation) = 0;
    virtual void setEnabled(AsyncHotspotEnableOperation *operation, bool enable) = 0;
    virtual bool enabled() const = 0;

Q_SIGNALS:
    void enabledChanged(bool enabled);
    // The type goes by the name that the concrete provider registers for it.
    void configurationChanged(const WifiHotspot &configutaion);
};

} // namespace morvek

#endif
