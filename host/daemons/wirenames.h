// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_WIRENAMES_H
#define MORVEK_HOSTD_WIRENAMES_H

#include <QtCore/QString>

namespace morvek {

/*! The words of the daemons' objects and messages. */
namespace Wire {

inline const QString InterfacesDirectory = QStringLiteral("/zop/services/networking/all/interfaces");
inline const QString StatusObject = QStringLiteral("/zop/services/networking/all/status_public");
inline const QString ControlObject = QStringLiteral("/zop/services/networking/control");

inline const QString Connected = QStringLiteral("connected");
inline const QString DefaultInterface = QStringLiteral("default_interface");
inline const QString IpAddresses = QStringLiteral("ip_addresses");
inline const QString IpGateway = QStringLiteral("ip_gateway");
inline const QString LinkAddress = QStringLiteral("link_address");
inline const QString Manual = QStringLiteral("manual");
inline const QString Mtu = QStringLiteral("mtu");
inline const QString ParentInterface = QStringLiteral("parent_interface");
inline const QString Priority = QStringLiteral("priority");
inline const QString Type = QStringLiteral("type");
inline const QString Up = QStringLiteral("up");

inline const QString TypeBluetooth = QStringLiteral("bluetooth_dun");
inline const QString TypeCellular = QStringLiteral("cellular");
inline const QString TypeUnknown = QStringLiteral("unknown");
inline const QString TypeUsb = QStringLiteral("usb");
inline const QString TypeVpn = QStringLiteral("vpn");
inline const QString TypeWifi = QStringLiteral("wifi");
inline const QString TypeWired = QStringLiteral("wired");

inline const QString NetConnected = QStringLiteral("net_connected");
inline const QString NetDisconnected = QStringLiteral("net_disconnected");

inline const QString WifiControlObject = QStringLiteral("/zop/services/wifi/control");
inline const QString WifiStatusObject = QStringLiteral("/zop/services/wifi/status");

inline const QString LastEvent = QStringLiteral("last_event");
inline const QString ScanResults = QStringLiteral("scan_results");
inline const QString WifiStatus = QStringLiteral("wifi_status");

inline const QString Scan = QStringLiteral("scan");
inline const QString WifiPower = QStringLiteral("wifi_power"); // the attribute's name, too
inline const QString WnetDisableAll = QStringLiteral("wnet_disableall");
inline const QString WnetNew = QStringLiteral("wnet_new");
inline const QString WnetSelect = QStringLiteral("wnet_select");

inline const QString Bssid = QStringLiteral("bssid");
inline const QString Flags = QStringLiteral("flags");
inline const QString Frequency = QStringLiteral("frequency");
inline const QString KeyMgmt = QStringLiteral("key_mgmt");
inline const QString PairwiseCipher = QStringLiteral("pairwise_cipher");
inline const QString Psk = QStringLiteral("psk");
inline const QString SignalLevel = QStringLiteral("signal_level");
inline const QString Ssid = QStringLiteral("ssid");

inline const QString Ccmp = QStringLiteral("CCMP");
inline const QString None = QStringLiteral("NONE");
inline const QString Off = QStringLiteral("off");
inline const QString On = QStringLiteral("on");
inline const QString Tkip = QStringLiteral("TKIP");
inline const QString WpaPsk = QStringLiteral("WPA-PSK");
inline const QString Wpa2Psk = QStringLiteral("WPA2-PSK");
inline const QString Wpa3Sae = QStringLiteral("WPA3-SAE");

inline const QString TetheringControlObject = QStringLiteral("/zop/services/tethering/control");
inline const QString TetheringStatusObject = QStringLiteral("/zop/services/tethering/status");

inline const QString State = QStringLiteral("state");
inline const QString Active = QStringLiteral("ACTIVE");
inline const QString Inactive = QStringLiteral("INACTIVE");

inline const QString RetrieveProfile = QStringLiteral("retrieve_profile");
inline const QString Start = QStringLiteral("start");
inline const QString Stop = QStringLiteral("stop");
inline const QString UpdateProfile = QStringLiteral("update_profile");

inline const QString Lan = QStringLiteral("lan");
inline const QString WlanAp = QStringLiteral("wlanap");

inline const QString Dat = QStringLiteral("dat");
inline const QString Err = QStringLiteral("err");
inline const QString ErrMsg = QStringLiteral("errmsg");
inline const QString Id = QStringLiteral("id");
inline const QString Msg = QStringLiteral("msg");
inline const QString NoError = QStringLiteral("0");
inline const QString Peer = QStringLiteral("peer");
inline const QString Res = QStringLiteral("res");

} // namespace Wire

} // namespace morvek

#endif
