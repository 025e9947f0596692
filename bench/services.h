// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SERVICES_H
#define MORVEK_SERVICES_H

#include "asyncnetworkinterfaceoperation.h"
#include "hotspotservice.h"
#include "networkinterfaceservice.h"
#include "networklibraryexports.h"
#include "wifiservice.h"

#include <QtCore/QCoreApplication>

// New services, as soon as they are ready.
morvek::NetworkInterfaceService *readyNetworkInterfaceService();
morvek::WifiService *readyWifiService();
morvek::HotSpotService *readyHotSpotService();

/*! Requests that go to the first interface, and tell three addresses: its own, the netmask and the gateway. */
class ManualRequests
{
public:
    explicit ManualRequests(morvek::NetworkInterfaceService *service);
    morvek::AsyncNetworkInterfaceOperation *next() const { return m_service->configure(m_target, m_config); }

private:
    morvek::NetworkInterfaceService *m_service;
    morvek::NetworkInterface m_target;
    morvek::NetworkInterfaceConfig m_config;
};

/*! Waits for \a operation, which must end well, and deletes it. */
template<typename Operation>
void await(Operation *operation)
{
    bool ended = false;
    QObject::connect(operation, &Operation::success, [&ended] { ended = true; });
    while (!ended)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    delete operation;
}

#endif
