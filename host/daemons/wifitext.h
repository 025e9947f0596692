// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_WIFITEXT_H
#define MORVEK_HOSTD_WIFITEXT_H

#include <QtCore/QString>

namespace morvek {

/*! Judges and writes what names and secures Wi-Fi networks. */
namespace WifiText {

constexpr int ShortestPasskey = 8;

/*! At most 32 bytes of UTF-8; none at all is the name of a hidden network. */
bool isSsid(const QString &text);
/*! 8 to 63 printable ASCII characters, or the 64 hexadecimal digits of a key. */
bool isPasskey(const QString &text);
/*! True when both are the same key of the network \a ssid: a key can be written as itself, too. */
bool isSameKey(const QString &passkey, const QString &other, const QString &ssid);
/*! In double quotes, with quotes, backslashes and control characters escaped, so that it stays one line. */
QString quoted(const QString &ssid);

} // namespace WifiText

} // namespace morvek

#endif
