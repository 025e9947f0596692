// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_WIRENAMES_H
#define MORVEK_HOSTD_WIRENAMES_H

#include <QtCore/QString>

namespace morvek {

/*! The words of the networking daemon's objects and messages. */
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

inline const QString NetConnected = QStringLiteral("net_connected");
inline const QString NetDisconnected = QStringLiteral("net_disconnected");

inline const QString Dat = QStringLiteral("dat");
inline const QString Err = QStringLiteral("err");
inline const QString ErrMsg = QStringLiteral("errmsg");
inline const QString Id = QStringLiteral("id");
inline const QString Msg = QStringLiteral("msg");
inline const QString Peer = QStringLiteral("peer");
inline const QString Res = QStringLiteral("res");

} // namespace Wire

} // namespace morvek

#endif
