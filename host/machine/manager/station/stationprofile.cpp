// SPDX-License-Identifier: Apache-2.0
#include "stationprofile.h"

#include "wifirequest.h"

namespace morvek {

namespace {

// What marks a profile as one of these, in the folder of the user's profiles.
constexpr auto KeptMark = "morvek.kept";

const char *keyManagementOf(AccessPointText::Way way)
{
    switch (way) {
    case AccessPointText::Way::Owe:
        return "owe";
    case AccessPointText::Way::Psk:
        return "wpa-psk";
    case AccessPointText::Way::Sae:
        return "sae";
    default:
        return nullptr;
    }
}

} // namespace

GRef<NMConnection> StationProfile::make(const WifiNetwork &network, AccessPointText::Way way, bool isHidden)
{
    GRef<NMConnection> profile(nm_simple_connection_new());
    const QByteArray ssid = network.ssid.toUtf8();
    const std::unique_ptr<char, decltype(&g_free)> uuid(nm_utils_uuid_generate(), g_free);
    NMSetting *connection = nm_setting_connection_new();
    g_object_set(connection, NM_SETTING_CONNECTION_ID, ssid.constData(), NM_SETTING_CONNECTION_UUID, uuid.get(),
                 NM_SETTING_CONNECTION_TYPE, NM_SETTING_WIRELESS_SETTING_NAME, NM_SETTING_CONNECTION_AUTOCONNECT, FALSE,
                 nullptr);
    nm_connection_add_setting(profile.get(), connection);

    NMSetting *wireless = nm_setting_wireless_new();
    const std::unique_ptr<GBytes, decltype(&g_bytes_unref)> name(g_bytes_new(ssid.constData(), gsize(ssid.size())),
                                                                 g_bytes_unref);
    g_object_set(wireless, NM_SETTING_WIRELESS_SSID, name.get(), NM_SETTING_WIRELESS_MODE,
                 NM_SETTING_WIRELESS_MODE_INFRA, NM_SETTING_WIRELESS_HIDDEN, isHidden, nullptr);
    nm_connection_add_setting(profile.get(), wireless);

    if (const char *keyManagement = keyManagementOf(way)) {
        NMSetting *security = nm_setting_wireless_security_new();
        g_object_set(security, NM_SETTING_WIRELESS_SECURITY_KEY_MGMT, keyManagement, nullptr);
        if (!network.passkey.isEmpty())
            g_object_set(security, NM_SETTING_WIRELESS_SECURITY_PSK, network.passkey.toUtf8().constData(), nullptr);
        nm_connection_add_setting(profile.get(), security);
    }
    return profile;
}

void StationProfile::setKept(NMConnection *profile)
{
    g_object_set(nm_connection_get_setting_connection(profile), NM_SETTING_CONNECTION_AUTOCONNECT, TRUE, nullptr);
    NMSetting *mark = nm_setting_user_new();
    nm_setting_user_set_data(NM_SETTING_USER(mark), KeptMark, "yes", nullptr);
    nm_connection_add_setting(profile, mark);
}

bool StationProfile::isKept(NMConnection *profile)
{
    NMSetting *mark = nm_connection_get_setting(profile, NM_TYPE_SETTING_USER);
    return mark && nm_setting_user_get_data(NM_SETTING_USER(mark), KeptMark);
}

QString StationProfile::ssidOf(NMConnection *profile)
{
    NMSettingWireless *wireless = nm_connection_get_setting_wireless(profile);
    GBytes *ssid = wireless ? nm_setting_wireless_get_ssid(wireless) : nullptr;
    gsize size = 0;
    const void *data = ssid ? g_bytes_get_data(ssid, &size) : nullptr;
    return QString::fromUtf8(static_cast<const char *>(data), int(size));
}

} // namespace morvek
