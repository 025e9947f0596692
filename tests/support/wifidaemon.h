// SPDX-License-Identifier: Apache-2.0
#ifndef WIFIDAEMON_H
#define WIFIDAEMON_H

#include "attributevalue.h"
#include "zopdouble.h"

/*! What the Wi-Fi daemon publishes, played by the double. */
namespace WifiDaemon {

const char *const Directory = "/zop/services/wifi/";
const char *const Status = "/zop/services/wifi/status";
const char *const Control = "/zop/services/wifi/control";

/*! Lets whoever watches the daemon's directory know of \a name. */
inline void announce(const char *name)
{
    ZopDouble::announce(QLatin1String(Directory), QLatin1String(name));
}

/*! The control and status objects, of which nobody is told yet. */
inline void store(const ZopDouble::Values &status = {})
{
    ZopDouble::store(QLatin1String(Control), {});
    ZopDouble::store(QLatin1String(Status), status);
}

/*! The daemon comes up as \a status says: clients become ready. */
inline void start(const ZopDouble::Values &status)
{
    store(status);
    announce("control");
    announce("status");
}

/*! The daemon comes up with the radio off. (Not a default argument: GCC takes two such lists in two headers for one.)
 */
inline void start()
{
    start({{QStringLiteral("wifi_power"), text("off")}});
}

/*! One update of one attribute of the status object. */
inline void change(const char *attribute, const morvek::ZopVariant &value)
{
    ZopDouble::publish(QLatin1String(Status), {{QLatin1String(attribute), value}});
}

/*! One update that removes one attribute of the status object. */
inline void removeAttribute(const char *attribute)
{
    ZopDouble::publish(QLatin1String(Status), {}, {QLatin1String(attribute)});
}

/*! A connection to \a bssid, an access point of the network "Home" with WPA2. */
inline morvek::ZopVariant connection(const char *bssid = "02:00:00:00:01:0a")
{
    return morvek::ZopVariant(QJsonObject {
        {QStringLiteral("bssid"), QLatin1String(bssid)},
        {QStringLiteral("ssid"), QStringLiteral("Home")},
        {QStringLiteral("key_mgmt"), QStringLiteral("WPA2-PSK")},
        {QStringLiteral("pairwise_cipher"), QStringLiteral("CCMP")},
    });
}

} // namespace WifiDaemon

#endif
