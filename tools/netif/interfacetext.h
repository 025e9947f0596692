// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_INTERFACETEXT_H
#define MORVEK_INTERFACETEXT_H

#include <networkinterface.h>

#include <QtCore/QJsonObject>

namespace morvek {

/*! "wired", "wifi" and so on. */
QString typeName(NetworkInterface::InterfaceType type);
/*! "auto" or "manual". */
QString modeName(const NetworkInterfaceConfig &config);

/*! "192.168.0.2/24"; with a netmask in place of the prefix when it is none; several are separated by commas. */
QString addressText(const NetworkInterfaceConfig &config);
QString gatewayText(const NetworkInterfaceConfig &config);

/*! Everything known of \a networkInterface; what is not known is null. */
QJsonObject toJson(const NetworkInterface &networkInterface);

} // namespace morvek

#endif
