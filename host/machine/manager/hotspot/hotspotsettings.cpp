// SPDX-License-Identifier: Apache-2.0
#include "hotspotsettings.h"

namespace morvek {

namespace {

// Not by its macro, which the headers of older versions do not have.
const char IsolationKey[] = "ap-isolation";

/*! Adds a setting to \a connection, which owns it. */
template<typename Setting>
Setting *add(NMConnection *connection, NMSetting *setting)
{
    nm_connection_add_setting(connection, setting);
    return reinterpret_cast<Setting *>(setting);
}

void addIdentity(NMConnection *connection, const QString &ssid, const char *uuid, const QString &interface)
{
    g_object_set(add<GObject>(connection, nm_setting_connection_new()), //
                 NM_SETTING_CONNECTION_ID, qUtf8Printable(QStringLiteral("Hotspot ") + ssid),
                 NM_SETTING_CONNECTION_UUID, uuid,                                //
                 NM_SETTING_CONNECTION_TYPE, NM_SETTING_WIRELESS_SETTING_NAME,    //
                 NM_SETTING_CONNECTION_INTERFACE_NAME, qUtf8Printable(interface), //
                 NM_SETTING_CONNECTION_AUTOCONNECT, FALSE, nullptr);
}

void addAccessPoint(NMConnection *connection, const HotspotProfile::Network &network, const HotspotChannel &channel,
                    bool canIsolate)
{
    const QByteArray name = network.ssid.toUtf8();
    const std::unique_ptr<GBytes, decltype(&g_bytes_unref)> ssid(g_bytes_new(name.constData(), gsize(name.size())),
                                                                 g_bytes_unref);
    auto *setting = add<GObject>(connection, nm_setting_wireless_new());
    g_object_set(setting, NM_SETTING_WIRELESS_SSID, ssid.get(),          //
                 NM_SETTING_WIRELESS_MODE, NM_SETTING_WIRELESS_MODE_AP,  //
                 NM_SETTING_WIRELESS_BAND, qUtf8Printable(channel.band), //
                 NM_SETTING_WIRELESS_CHANNEL, guint(channel.number), nullptr);
    if (canIsolate && g_object_class_find_property(G_OBJECT_GET_CLASS(setting), IsolationKey))
        g_object_set(setting, IsolationKey, int(network.isolated), nullptr);
}

void addSecurity(NMConnection *connection, const HotspotProfile::Network &network)
{
    if (network.security == HotspotProfile::None)
        return;
    auto *setting = add<NMSettingWirelessSecurity>(connection, nm_setting_wireless_security_new());
    g_object_set(setting, NM_SETTING_WIRELESS_SECURITY_KEY_MGMT, "wpa-psk", //
                 NM_SETTING_WIRELESS_SECURITY_PSK, qUtf8Printable(network.passphrase), nullptr);
    const bool first = network.security != HotspotProfile::Wpa2;
    const bool second = network.security != HotspotProfile::Wpa;
    // Who knows the first version alone may know no other cipher than its first one; groups share what all of them
    // know.
    if (first) {
        nm_setting_wireless_security_add_proto(setting, "wpa");
        nm_setting_wireless_security_add_pairwise(setting, "tkip");
    }
    if (second) {
        nm_setting_wireless_security_add_proto(setting, "rsn");
        nm_setting_wireless_security_add_pairwise(setting, "ccmp");
    }
    nm_setting_wireless_security_add_group(setting, first ? "tkip" : "ccmp");
}

void addNetwork(NMConnection *connection, const HotspotSubnet &subnet)
{
    auto *ipv4 = add<NMSettingIPConfig>(connection, nm_setting_ip4_config_new());
    g_object_set(ipv4, NM_SETTING_IP_CONFIG_METHOD, NM_SETTING_IP4_CONFIG_METHOD_SHARED, nullptr);
    const std::unique_ptr<NMIPAddress, decltype(&nm_ip_address_unref)> address(
        nm_ip_address_new(AF_INET, qUtf8Printable(subnet.addressText()), guint(subnet.prefix), nullptr),
        nm_ip_address_unref);
    nm_setting_ip_config_add_address(ipv4, address.get());
    g_object_set(add<GObject>(connection, nm_setting_ip6_config_new()), //
                 NM_SETTING_IP_CONFIG_METHOD, NM_SETTING_IP6_CONFIG_METHOD_IGNORE, nullptr);
}

} // namespace

GRef<NMConnection> HotspotSettings::make(const HotspotProfile::Network &network, const char *uuid,
                                         const QString &interface, const HotspotChannel &channel,
                                         const HotspotSubnet &subnet, bool canIsolate)
{
    GRef<NMConnection> connection(nm_simple_connection_new());
    addIdentity(connection.get(), network.ssid, uuid, interface);
    addAccessPoint(connection.get(), network, channel, canIsolate);
    addSecurity(connection.get(), network);
    addNetwork(connection.get(), subnet);
    return connection;
}

} // namespace morvek
