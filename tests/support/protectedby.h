// SPDX-License-Identifier: Apache-2.0
#ifndef PROTECTEDBY_H
#define PROTECTEDBY_H

#include "wificonnectionconfig.h"

/*! What joins the WPA2 network \a ssid with \a passkey. */
inline morvek::WifiConnectionConfig protectedBy(const char *passkey, const char *ssid)
{
    morvek::WifiConnectionConfig config;
    config.setSsid(QString::fromUtf8(ssid));
    config.setKeyManagementType(morvek::WifiKeyManagementPsk);
    config.setSecurityProtocol(morvek::WifiSecurityProtocolWpa2);
    config.setPasskey(QString::fromUtf8(passkey));
    return config;
}

#endif
