// SPDX-License-Identifier: Apache-2.0
#include "seenaccesspoint.h"

namespace morvek {

namespace {

// In seconds. The manager keeps access points for minutes; a scan takes some seconds, and may miss one that is there.
constexpr qint64 LongestUnseen = 20;

QString nameOf(NMAccessPoint *accessPoint)
{
    gsize size = 0;
    GBytes *ssid = nm_access_point_get_ssid(accessPoint);
    const void *data = ssid ? g_bytes_get_data(ssid, &size) : nullptr;
    return QString::fromUtf8(static_cast<const char *>(data), int(size));
}

/*! The manager also lists what it only looks for, and the hotspot of this machine. */
bool isSeen(NMAccessPoint *accessPoint, qint64 lastScan)
{
    const qint64 lastSeen = nm_access_point_get_last_seen(accessPoint);
    return lastSeen >= 0 && lastSeen >= lastScan / 1000 - LongestUnseen
        && nm_access_point_get_mode(accessPoint) != NM_802_11_MODE_AP;
}

} // namespace

SeenAccessPoint SeenAccessPoint::read(NMAccessPoint *accessPoint)
{
    SeenAccessPoint seen;
    seen.bssid = QString::fromUtf8(nm_access_point_get_bssid(accessPoint)).toLower();
    seen.ssid = nameOf(accessPoint);
    seen.path = nm_object_get_path(NM_OBJECT(accessPoint));
    seen.percent = nm_access_point_get_strength(accessPoint);
    seen.frequency = int(nm_access_point_get_frequency(accessPoint));
    seen.infrastructure = nm_access_point_get_mode(accessPoint) == NM_802_11_MODE_INFRA;
    seen.security = {quint32(nm_access_point_get_flags(accessPoint)),
                     quint32(nm_access_point_get_wpa_flags(accessPoint)),
                     quint32(nm_access_point_get_rsn_flags(accessPoint))};
    return seen;
}

QVector<SeenAccessPoint> SeenAccessPoint::readAll(NMDeviceWifi *radio)
{
    QVector<SeenAccessPoint> seen;
    const bool isStation = nm_device_wifi_get_mode(radio) != NM_802_11_MODE_AP;
    const qint64 lastScan = nm_device_wifi_get_last_scan(radio);
    const GPtrArray *all = nm_device_wifi_get_access_points(radio);
    for (guint i = 0; all && i < all->len; ++i) {
        auto *accessPoint = static_cast<NMAccessPoint *>(all->pdata[i]);
        const bool inUse = isStation && accessPoint == nm_device_wifi_get_active_access_point(radio)
            && nm_device_get_state(NM_DEVICE(radio)) >= NM_DEVICE_STATE_IP_CONFIG;
        if (inUse || isSeen(accessPoint, lastScan))
            seen += read(accessPoint);
    }
    return seen;
}

} // namespace morvek
