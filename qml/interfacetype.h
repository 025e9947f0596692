// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_INTERFACETYPE_H
#define MORVEK_INTERFACETYPE_H

#include <networkinterface.h>

#include <QtCore/QObject>

namespace morvek {

/*! What QML compares the "type" of an interface with. */
class InterfaceType
{
    Q_GADGET

public:
    enum Type {
        Unknown = NetworkInterface::Unknown,
        Wired = NetworkInterface::Wired,
        Wifi = NetworkInterface::Wifi,
        Usb = NetworkInterface::Usb,
        Cellular = NetworkInterface::Cellular,
        Bluetooth = NetworkInterface::Bluetooth,
        Vpn = NetworkInterface::Vpn,
        OrvanBridge = NetworkInterface::OrvanBridge,
    };
    Q_ENUM(Type)
};

} // namespace morvek

#endif
