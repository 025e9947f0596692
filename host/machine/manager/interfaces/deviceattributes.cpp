// SPDX-License-Identifier: Apache-2.0
#include "deviceattributes.h"

#include "gobject.h"
#include "managerclient.h"
#include "wirenames.h"

#include <QtNetwork/QHostAddress>

#include <algorithm>

#include <sys/socket.h>

namespace morvek {

namespace {

bool isOnUsb(NMDevice *device)
{
    // The path of the hardware, as the kernel names it; its end is the interface's name.
    const QByteArray path = nm_device_get_udi(device);
    return path.left(path.lastIndexOf("/net/")).contains("/usb");
}

QString typeOf(NMDevice *device)
{
    switch (nm_device_get_device_type(device)) {
    case NM_DEVICE_TYPE_MODEM:
        return Wire::TypeCellular;
    case NM_DEVICE_TYPE_TUN:
    case NM_DEVICE_TYPE_WIREGUARD:
        return Wire::TypeVpn;
    case NM_DEVICE_TYPE_BT:
        return Wire::TypeBluetooth;
    case NM_DEVICE_TYPE_WIFI:
        return Wire::TypeWifi;
    case NM_DEVICE_TYPE_ETHERNET:
        return isOnUsb(device) ? Wire::TypeUsb : Wire::TypeWired;
    case NM_DEVICE_TYPE_VETH:
    case NM_DEVICE_TYPE_VLAN:
    case NM_DEVICE_TYPE_BOND:
    case NM_DEVICE_TYPE_BRIDGE:
    case NM_DEVICE_TYPE_TEAM:
    case NM_DEVICE_TYPE_MACVLAN:
    case NM_DEVICE_TYPE_VXLAN:
    case NM_DEVICE_TYPE_MACSEC:
        return Wire::TypeWired;
    default:
        return Wire::TypeUnknown;
    }
}

/*! The name of the interface that carries \a device; empty when there is none. */
QString parentOf(NMDevice *device)
{
    // Those that have one have it as a property of this name.
    if (!g_object_class_find_property(G_OBJECT_GET_CLASS(device), "parent"))
        return QString();
    NMDevice *parent = nullptr;
    g_object_get(device, "parent", &parent, nullptr);
    const GRef<NMDevice> owner(parent);
    return parent ? ManagerClient::nameOf(parent) : QString();
}

QString netmask(guint prefix)
{
    return QHostAddress(prefix == 0 ? 0 : ~quint32(0) << (32 - prefix)).toString();
}

QStringList addresses(NMIPConfig *config)
{
    QStringList texts;
    const GPtrArray *all = config ? nm_ip_config_get_addresses(config) : nullptr;
    for (guint i = 0; all && i < all->len; ++i) {
        auto *address = static_cast<NMIPAddress *>(all->pdata[i]);
        const guint prefix = nm_ip_address_get_prefix(address);
        const bool ipv4 = nm_ip_address_get_family(address) == AF_INET;
        texts += QString::fromUtf8(nm_ip_address_get_address(address)) + QLatin1Char('/')
            + (ipv4 ? netmask(prefix) : QString::number(prefix));
    }
    return texts;
}

QStringList gateways(NMDevice *device)
{
    QStringList texts;
    for (NMIPConfig *config : {nm_device_get_ip4_config(device), nm_device_get_ip6_config(device)}) {
        if (const char *gateway = config ? nm_ip_config_get_gateway(config) : nullptr)
            texts += QString::fromUtf8(gateway);
    }
    return texts;
}

/*! The metric of the best default route in \a config; -1 when there is none. */
qint64 defaultMetric(NMIPConfig *config)
{
    qint64 best = -1;
    const GPtrArray *routes = config ? nm_ip_config_get_routes(config) : nullptr;
    for (guint i = 0; routes && i < routes->len; ++i) {
        auto *route = static_cast<NMIPRoute *>(routes->pdata[i]);
        // Those in tables of their own are for what some rule picks out.
        if (nm_ip_route_get_prefix(route) != 0 || nm_ip_route_get_attribute(route, NM_IP_ROUTE_ATTRIBUTE_TABLE))
            continue;
        // A metric that is not told is the kernel's.
        const qint64 metric = std::max<qint64>(nm_ip_route_get_metric(route), 0);
        best = best == -1 ? metric : std::min(best, metric);
    }
    return best;
}

} // namespace

QStringList DeviceAttributes::ipv4Addresses(NMDevice *device)
{
    QStringList texts = addresses(nm_device_get_ip4_config(device));
    std::reverse(texts.begin(), texts.end());
    return texts;
}

QStringList DeviceAttributes::ipv6Addresses(NMDevice *device)
{
    return addresses(nm_device_get_ip6_config(device));
}

bool DeviceAttributes::hasLease(NMDevice *device)
{
    return nm_device_get_dhcp4_config(device) != nullptr;
}

bool DeviceAttributes::isActive(NMDevice *device)
{
    const NMDeviceState state = nm_device_get_state(device);
    return state >= NM_DEVICE_STATE_PREPARE && state <= NM_DEVICE_STATE_ACTIVATED;
}

Attributes DeviceAttributes::read(NMDevice *device)
{
    const NMDeviceState state = nm_device_get_state(device);
    const QStringList ipv4 = ipv4Addresses(device);
    Attributes attributes;
    attributes.insert(Wire::Connected, truthValue(state == NM_DEVICE_STATE_ACTIVATED));
    attributes.insert(Wire::IpAddresses, textList(ipv6Addresses(device) + ipv4));
    attributes.insert(Wire::IpGateway, textList(gateways(device)));
    attributes.insert(Wire::LinkAddress, QString::fromUtf8(nm_device_get_hw_address(device)).toLower());
    attributes.insert(Wire::Manual, yesOrNo(!ipv4.isEmpty() && !hasLease(device)));
    attributes.insert(Wire::Mtu, int(nm_device_get_mtu(device)));
    attributes.insert(Wire::Type, typeOf(device));
    attributes.insert(Wire::Up, truthValue(state >= NM_DEVICE_STATE_DISCONNECTED));
    const QString parent = parentOf(device);
    if (!parent.isEmpty())
        attributes.insert(Wire::ParentInterface, parent);
    return attributes;
}

QStringList DeviceAttributes::routed(const QVector<NMDevice *> &devices)
{
    using Way = std::pair<qint64, QString>;
    QStringList names;
    for (const auto config : {&nm_device_get_ip4_config, &nm_device_get_ip6_config}) {
        QVector<Way> ways;
        for (NMDevice *device : devices) {
            const qint64 metric = defaultMetric(config(device));
            if (metric >= 0)
                ways += {metric, ManagerClient::nameOf(device)};
        }
        std::sort(ways.begin(), ways.end());
        for (const Way &way : qAsConst(ways))
            names += way.second;
    }
    return names;
}

} // namespace morvek
