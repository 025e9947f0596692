// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ACCESSPOINTTEXT_H
#define MORVEK_ACCESSPOINTTEXT_H

#include <wifiaccesspoint.h>

#include <QtCore/QJsonObject>

namespace morvek {

enum class Tone;
class NetworkSecurity;

/*! "TKIP+CCMP", "none", or "unknown". */
QString cipherName(const WifiAccessPoint &accessPoint);
/*! The number of the channel, for the frequencies in MHz that surely have one; else 0. */
int channelOf(const WifiAccessPoint &accessPoint);
/*! "-48 dBm"; empty when it is not known. */
QString signalText(const WifiAccessPoint &accessPoint);

/*! How good that level is. */
Tone signalTone(const WifiAccessPoint &accessPoint);

/*! The name in quotes; "a network without a name", without them, when it is hidden. */
QString quoted(const QString &ssid);
/*! One that the station is connected to: "Garage" by 02:00:00:00:00:01 (WPA2, CCMP), the name in quotes. */
QString connectionText(const WifiAccessPoint &accessPoint);

/*! Everything known of \a accessPoint; what is not known is null. */
QJsonObject toJson(const WifiAccessPoint &accessPoint, const NetworkSecurity &security);
/*! The station's state; \a accessPoint is empty when it is not connected. */
QJsonObject stateJson(bool powered, const WifiAccessPoint &accessPoint);

} // namespace morvek

#endif
