// SPDX-License-Identifier: Apache-2.0
#include "ipv4settings.h"

#include "managerclient.h"
#include "networkingrequest.h"

#include <QtCore/QtAlgorithms>
#include <QtNetwork/QHostAddress>

#include <climits>
#include <memory>

#include <sys/socket.h>

namespace morvek {

namespace {

// When neither the profile nor the manager's configuration names another one.
constexpr int UsualDhcpTimeout = 45;

using Address = std::unique_ptr<NMIPAddress, decltype(&nm_ip_address_unref)>;

void setMethod(NMSettingIPConfig *settings, const char *method)
{
    g_object_set(settings, NM_SETTING_IP_CONFIG_METHOD, method, nullptr);
}

void clearAddresses(NMSettingIPConfig *settings)
{
    g_object_set(settings, NM_SETTING_IP_CONFIG_GATEWAY, nullptr, nullptr);
    nm_setting_ip_config_clear_addresses(settings);
}

/*! The manager wants no names, routes or gateways beside no addresses. */
void release(NMSettingIPConfig *settings)
{
    nm_setting_ip_config_clear_dns(settings);
    nm_setting_ip_config_clear_dns_searches(settings);
    nm_setting_ip_config_clear_routes(settings);
    setMethod(settings, NM_SETTING_IP4_CONFIG_METHOD_DISABLED);
}

void setByHand(NMSettingIPConfig *settings, const InterfaceSettings &asked)
{
    const uint prefix = qPopulationCount(QHostAddress(asked.netmask).toIPv4Address());
    const Address address(nm_ip_address_new(AF_INET, asked.address.toUtf8().constData(), prefix, nullptr),
                          &nm_ip_address_unref);
    nm_setting_ip_config_add_address(settings, address.get());
    setMethod(settings, NM_SETTING_IP4_CONFIG_METHOD_MANUAL);
    // A profile that is not to lead anywhere has no gateway; this one was asked for.
    g_object_set(settings, NM_SETTING_IP_CONFIG_NEVER_DEFAULT, FALSE, nullptr);
    g_object_set(settings, NM_SETTING_IP_CONFIG_GATEWAY, asked.gateway.toUtf8().constData(), nullptr);
}

} // namespace

GRef<NMSettingIPConfig> Ipv4Settings::copyOf(NMConnection *connection)
{
    NMSettingIPConfig *present = nm_connection_get_setting_ip4_config(connection);
    NMSetting *copy = present ? nm_setting_duplicate(NM_SETTING(present)) : nm_setting_ip4_config_new();
    return GRef<NMSettingIPConfig>(NM_SETTING_IP_CONFIG(copy));
}

bool Ipv4Settings::isShared(NMConnection *connection)
{
    NMSettingIPConfig *settings = nm_connection_get_setting_ip4_config(connection);
    return settings && qstrcmp(nm_setting_ip_config_get_method(settings), NM_SETTING_IP4_CONFIG_METHOD_SHARED) == 0;
}

GRef<NMConnection> Ipv4Settings::applied(NMConnection *present, NMSettingIPConfig *own,
                                         const NetworkingRequest &request)
{
    auto *settings = NM_SETTING_IP_CONFIG(nm_setting_duplicate(NM_SETTING(own)));
    clearAddresses(settings);
    if (request.kind == NetworkingRequest::Disconnect)
        release(settings);
    else if (request.settings.manual)
        setByHand(settings, request.settings);
    else
        setMethod(settings, NM_SETTING_IP4_CONFIG_METHOD_AUTO);
    GRef<NMConnection> next(nm_simple_connection_new_clone(present));
    nm_connection_add_setting(next.get(), NM_SETTING(settings)); // takes it
    return next;
}

GRef<NMConnection> Ipv4Settings::made(NMDevice *device, const NetworkingRequest &request)
{
    const QString name = ManagerClient::nameOf(device);
    const GRef<NMConnection> connection(nm_simple_connection_new());
    const std::unique_ptr<char, decltype(&g_free)> uuid(nm_utils_uuid_generate(), &g_free);
    NMSetting *base = nm_setting_connection_new();
    g_object_set(base, NM_SETTING_CONNECTION_UUID, uuid.get(), NM_SETTING_CONNECTION_ID,
                 QStringLiteral("morvek-hostd %1").arg(name).toUtf8().constData(), NM_SETTING_CONNECTION_TYPE,
                 NM_SETTING_WIRED_SETTING_NAME, NM_SETTING_CONNECTION_INTERFACE_NAME, name.toUtf8().constData(),
                 NM_SETTING_CONNECTION_AUTOCONNECT, FALSE, nullptr);
    nm_connection_add_setting(connection.get(), base);
    nm_connection_add_setting(connection.get(), nm_setting_wired_new());
    return applied(connection.get(), copyOf(connection.get()).get(), request);
}

int Ipv4Settings::dhcpTimeout(NMConnection *connection)
{
    NMSettingIPConfig *settings = nm_connection_get_setting_ip4_config(connection);
    const int seconds = settings ? nm_setting_ip_config_get_dhcp_timeout(settings) : 0;
    return seconds == INT_MAX ? -1 : seconds > 0 ? seconds : UsualDhcpTimeout;
}

} // namespace morvek
