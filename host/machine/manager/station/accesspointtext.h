// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_ACCESSPOINTTEXT_H
#define MORVEK_HOSTD_ACCESSPOINTTEXT_H

#include <QtCore/QStringList>

namespace morvek {

/*! What the network manager tells of an access point's protection: its bit fields "Flags", "WpaFlags", "RsnFlags". */
struct AccessPointSecurity
{
    quint32 flags = 0;
    quint32 wpa = 0;
    quint32 rsn = 0;
};

/*! Turns what the network manager tells of an access point into the words of the daemons, and into what joins it. */
namespace AccessPointText {

/*! What a network is joined by. */
enum class Way { None, Open, Owe, Psk, Sae };

/*! "flags" in "scan_results"; "ESS" is said for an \a infrastructure network only. */
QStringList flags(const AccessPointSecurity &security, bool infrastructure);
/*! "key_mgmt" in "wifi_status": the best that the access point offers to who has a passkey, or what else it asks for.
 */
QString keyManagement(const AccessPointSecurity &security);
/*! "pairwise_cipher" in "wifi_status". */
QString cipher(const AccessPointSecurity &security);
/*! How the access point is joined with a passkey or without one; None when it is not. */
Way wayToJoin(const AccessPointSecurity &security, bool hasPasskey);
/*! The level in dBm that the manager has made \a percent of. */
int level(int percent);

} // namespace AccessPointText

} // namespace morvek

#endif
