// SPDX-License-Identifier: Apache-2.0
#include "hotspotplace.h"

#include "addresstext.h"
#include "radiofrequencies.h"

#include <QtCore/QFile>

#include <algorithm>
#include <utility>

namespace morvek {

namespace {

bool isConnected(NMDeviceWifi *radio)
{
    return nm_device_get_state(NM_DEVICE(radio)) > NM_DEVICE_STATE_DISCONNECTED;
}

/*! The radios that can be access points, the best first. */
QVector<NMDeviceWifi *> radios(const ManagerClient &client)
{
    QVector<NMDeviceWifi *> all;
    const QVector<NMDevice *> devices = client.devices();
    for (NMDevice *device : devices) {
        if (NM_IS_DEVICE_WIFI(device)
            && (nm_device_wifi_get_capabilities(NM_DEVICE_WIFI(device)) & NM_WIFI_DEVICE_CAP_AP) != 0)
            all += NM_DEVICE_WIFI(device);
    }
    const auto cost = [station = client.radio()](NMDeviceWifi *radio) {
        return std::make_pair(isConnected(radio), radio == station);
    };
    std::stable_sort(all.begin(), all.end(),
                     [&cost](NMDeviceWifi *left, NMDeviceWifi *right) { return cost(left) < cost(right); });
    return all;
}

/*! What names the hardware behind an interface. */
QString hardware(NMDeviceWifi *radio)
{
    return QFile::symLinkTarget(
        QStringLiteral("/sys/class/net/%1/phy80211").arg(ManagerClient::nameOf(NM_DEVICE(radio))));
}

/*! The frequency at which another interface of the same hardware is connected, or 0. */
quint32 boundFrequency(const ManagerClient &client, NMDeviceWifi *radio)
{
    const QString own = hardware(radio);
    const GPtrArray *all = nm_client_get_devices(client.get());
    for (guint i = 0; !own.isEmpty() && all && i < all->len; ++i) {
        if (!NM_IS_DEVICE_WIFI(all->pdata[i]) || all->pdata[i] == radio)
            continue;
        auto *other = NM_DEVICE_WIFI(all->pdata[i]);
        NMAccessPoint *point = nm_device_wifi_get_active_access_point(other);
        if (point && isConnected(other) && hardware(other) == own)
            return nm_access_point_get_frequency(point);
    }
    return 0;
}

} // namespace

bool HotspotPlace::exists(const ManagerClient &client)
{
    return !radios(client).isEmpty();
}

NMDeviceWifi *HotspotPlace::radio(const ManagerClient &client, Refusal *refusal)
{
    *refusal = {Refusal::NotFound, QStringLiteral("no radio is there that can be an access point")};
    const QVector<NMDeviceWifi *> all = radios(client);
    for (auto it = all.rbegin(); it != all.rend(); ++it) { // so that the best one's objection remains
        if (Refusal reason = objection(client, *it))
            *refusal = std::move(reason);
    }
    const auto usable =
        std::find_if(all.begin(), all.end(), [&client](NMDeviceWifi *radio) { return !objection(client, radio); });
    return usable == all.end() ? nullptr : *usable;
}

Refusal HotspotPlace::objection(const ManagerClient &client, NMDeviceWifi *radio)
{
    const QString name = ManagerClient::nameOf(NM_DEVICE(radio));
    if (Refusal refusal = client.refusesToTouch(NM_DEVICE(radio)))
        return refusal;
    if (nm_client_get_state(client.get()) == NM_STATE_ASLEEP)
        return {Refusal::ManagerRefused, QStringLiteral("the network manager sleeps")};
    if (nm_device_get_state(NM_DEVICE(radio)) >= NM_DEVICE_STATE_DISCONNECTED)
        return {};
    if (nm_device_get_state(NM_DEVICE(radio)) <= NM_DEVICE_STATE_UNMANAGED)
        return {Refusal::Unmanaged, QStringLiteral("the network manager leaves %1 alone").arg(name)};
    if (!nm_client_wireless_get_enabled(client.get()) || !nm_client_wireless_hardware_get_enabled(client.get()))
        return {Refusal::RadioOff, QStringLiteral("the radio is off")};
    return {Refusal::ManagerRefused, QStringLiteral("%1 is not ready").arg(name)};
}

HotspotAir HotspotPlace::air(const ManagerClient &client, NMDeviceWifi *radio)
{
    HotspotAir air;
    const guint capabilities = nm_device_wifi_get_capabilities(radio);
    if ((capabilities & NM_WIFI_DEVICE_CAP_FREQ_VALID) != 0) {
        air.has2GHz = (capabilities & NM_WIFI_DEVICE_CAP_FREQ_2GHZ) != 0;
        air.has5GHz = (capabilities & NM_WIFI_DEVICE_CAP_FREQ_5GHZ) != 0;
    }
    air.bound = boundFrequency(client, radio);
    air.allowed = RadioFrequencies::read(ManagerClient::nameOf(NM_DEVICE(radio)));
    const GPtrArray *points = nm_device_wifi_get_access_points(radio);
    for (guint i = 0; points && i < points->len; ++i)
        air.heard += nm_access_point_get_frequency(NM_ACCESS_POINT(points->pdata[i]));
    return air;
}

QVector<HotspotSubnet> HotspotPlace::takenSubnets(const ManagerClient &client, NMDeviceWifi *radio)
{
    QVector<HotspotSubnet> taken;
    const GPtrArray *all = nm_client_get_devices(client.get());
    for (guint i = 0; all && i < all->len; ++i) {
        NMIPConfig *config = nm_device_get_ip4_config(NM_DEVICE(all->pdata[i]));
        if (!config || all->pdata[i] == radio)
            continue;
        const GPtrArray *addresses = nm_ip_config_get_addresses(config);
        for (guint j = 0; addresses && j < addresses->len; ++j) {
            auto *address = static_cast<NMIPAddress *>(addresses->pdata[j]);
            HotspotSubnet subnet {0, int(nm_ip_address_get_prefix(address))};
            if (AddressText::isIpv4(QString::fromUtf8(nm_ip_address_get_address(address)), &subnet.address))
                taken += subnet;
        }
    }
    return taken;
}

} // namespace morvek
