// SPDX-License-Identifier: Apache-2.0
#include "networkinterface.h"

#include "networkinterfacedata.h"

#include <QtCore/QTextStream>

namespace morvek {

namespace {

const char *typeText(NetworkInterface::InterfaceType type)
{
    switch (type) {
    case NetworkInterface::Unknown:
        return "unknown";
    case NetworkInterface::Wired:
        return "wired";
    case NetworkInterface::Wifi:
        return "wifi";
    case NetworkInterface::Usb:
        return "usb";
    case NetworkInterface::Cellular:
        return "cellular";
    case NetworkInterface::Bluetooth:
        return "bluetooth";
    case NetworkInterface::Vpn:
        return "vpn";
    case NetworkInterface::OrvanBridge:
        return "orvanbridge";
    }
    return "";
}

} // namespace

NetworkInterface::NetworkInterface() = default;
NetworkInterface::NetworkInterface(const NetworkInterface &other) = default;
NetworkInterface::NetworkInterface(NetworkInterface &&other) noexcept = default;
NetworkInterface::~NetworkInterface() = default;
NetworkInterface &NetworkInterface::operator=(const NetworkInterface &other) = default;
NetworkInterface &NetworkInterface::operator=(NetworkInterface &&other) noexcept = default;

bool NetworkInterface::operator==(const NetworkInterface &other) const
{
    return d->data == other.d->data;
}

bool NetworkInterface::operator!=(const NetworkInterface &other) const
{
    return !(*this == other);
}

bool NetworkInterface::isEmpty() const
{
    return d->data.isEmpty();
}

QString NetworkInterface::name() const
{
    return d->data.name;
}

int NetworkInterface::priority() const
{
    return d->data.priority;
}

NetworkInterfaceConfig NetworkInterface::configuration() const
{
    return d->data.configuration;
}

NetworkInterface::InterfaceType NetworkInterface::type() const
{
    return d->data.type;
}

QString NetworkInterface::macAddress() const
{
    return d->data.macAddress;
}

int NetworkInterface::maxTransmissionUnit() const
{
    return d->data.maxTransmissionUnit;
}

bool NetworkInterface::available() const
{
    return d->data.available;
}

bool NetworkInterface::connected() const
{
    return d->data.connected;
}

bool NetworkInterface::isVirtual() const
{
    return d->data.isVirtual;
}

NetworkInterface NetworkInterface::parent() const
{
    NetworkInterface parent;
    if (const NetworkInterfaceData *record = d->data.parent)
        parent.d->data = *record;
    return parent;
}

// The spelling of the empty form is part of the format.
QTextStream &operator<<(QTextStream &stream, const NetworkInterface &networkInterface)
{
    if (networkInterface.isEmpty())
        return stream << "NetworkInterace{empty}";
    return stream << "NetworkInterface {name:" << networkInterface.name()
                  << ",type:" << typeText(networkInterface.type()) << ",mac:" << networkInterface.macAddress()
                  << ",available:" << (networkInterface.available() ? '1' : '0')
                  << ",priority:" << QString::number(networkInterface.priority())
                  << ",connected:" << (networkInterface.connected() ? "true" : "false")
                  << ",configuration:" << networkInterface.configuration() << "}";
}

} // namespace morvek
