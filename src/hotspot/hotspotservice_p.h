// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTSERVICE_P_H
#define MORVEK_HOTSPOTSERVICE_P_H

#include "hotspotservice.h"

#include <QtCore/QObject>

namespace morvek {

class HotspotProvider;

/*!
 * Makes the provider and passes its signals on to the service.
 *
 * The provider, once it is connected, has no owner. It stays when the service goes: requests that the tethering daemon
 * has not answered yet still end.
 */
class Q_DECL_HIDDEN HotSpotService::Private : public QObject
{
    Q_OBJECT

public:
    explicit Private(HotSpotService *service);
    Private(HotSpotService *service, HotspotProvider *hotspotProvider);

    HotSpotService *q;
    HotspotProvider *provider = nullptr;

private:
    Q_DISABLE_COPY(Private)
    void connectProvider(const HotspotProvider *sender);
};

} // namespace morvek

#endif
