// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFITEXTS_P_H
#define MORVEK_WIFITEXTS_P_H

#include "wifinetworkmodel.h"

namespace morvek {

/*! Whether \a ssid is what a network calls itself; it is not when that is no UTF-8. */
inline bool isReadable(const QString &ssid)
{
    return ssid.isValidUtf16() && !ssid.contains(QChar::ReplacementCharacter);
}

/*! The network \a ssid as a sentence names it: one that is longer than names can be does not fill the screen. */
inline QString named(const QString &ssid)
{
    constexpr int Longest = 32;
    if (ssid.size() <= Longest)
        return WifiNetworkModel::displayName(ssid);
    const int length = Longest - 1;
    const bool cutsCharacter = ssid.at(length - 1).isHighSurrogate();
    return WifiNetworkModel::displayName(ssid.left(cutsCharacter ? length - 1 : length) + QChar(0x2026));
}

} // namespace morvek

#endif
