// SPDX-License-Identifier: Apache-2.0
#ifndef NAMEDINTERFACE_H
#define NAMEDINTERFACE_H

#include "networkinterface.h"
#include "networkinterfaceservice.h"

/*! The interface that \a service tells under this name; empty when there is none. */
inline morvek::NetworkInterface named(const morvek::NetworkInterfaceService &service, const char *name)
{
    const QList<morvek::NetworkInterface> interfaces = service.interfaces();
    for (const morvek::NetworkInterface &networkInterface : interfaces) {
        if (networkInterface.name() == QLatin1String(name))
            return networkInterface;
    }
    return morvek::NetworkInterface();
}

#endif
