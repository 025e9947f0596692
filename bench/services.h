// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SERVICES_H
#define MORVEK_SERVICES_H

#include "hotspotservice.h"
#include "networkinterfaceservice.h"
#include "networklibraryexports.h"
#include "wifiservice.h"

#include <QtCore/QCoreApplication>

// New services, as soon as they are ready.
morvek::NetworkInterfaceService *readyNetworkInterfaceService();
morvek::WifiService *readyWifiService();
morvek::HotSpotService *readyHotSpotService();

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
