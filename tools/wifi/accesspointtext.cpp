// SPDX-License-Identifier: Apache-2.0
#include "accesspointtext.h"

#include "terminal.h"
#include "texts.h"

#include <publishedsecurity.h>

namespace morvek {

namespace {

const QString unknown = QStringLiteral("unknown");

// In dBm.
constexpr int GoodLevel = -60;
constexpr int MiddlingLevel = -75;

} // namespace

QString cipherName(const WifiAccessPoint &accessPoint)
{
    QStringList names;
    if (accessPoint.ciphers().testFlag(WifiCipherTkip))
        names += QStringLiteral("TKIP");
    if (accessPoint.ciphers().testFlag(WifiCipherCcmp))
        names += QStringLiteral("CCMP");
    if (names.isEmpty())
        return accessPoint.ciphers() ? QStringLiteral("none") : unknown;
    return names.join(QLatin1Char('+'));
}

int channelOf(const WifiAccessPoint &accessPoint)
{
    const unsigned int frequency = accessPoint.frequency();
    if (frequency == 2484)
        return 14;
    if (frequency >= 2412 && frequency <= 2472 && frequency % 5 == 2)
        return int(frequency - 2407) / 5;
    if (frequency >= 5160 && frequency <= 5885 && frequency % 5 == 0)
        return int(frequency - 5000) / 5;
    return 0;
}

QString signalText(const WifiAccessPoint &accessPoint)
{
    return accessPoint.rssi() == 0 ? QString() : QStringLiteral("%1 dBm").arg(accessPoint.rssi());
}

Tone signalTone(const WifiAccessPoint &accessPoint)
{
    const int level = accessPoint.rssi();
    if (level == 0)
        return Tone::Plain;
    return level >= GoodLevel ? Tone::Good : level >= MiddlingLevel ? Tone::Middling : Tone::Bad;
}

QString quoted(const QString &ssid)
{
    return ssid.isEmpty() ? QStringLiteral("a network without a name") : QLatin1Char('"') + ssid + QLatin1Char('"');
}

QString connectionText(const WifiAccessPoint &accessPoint)
{
    return quoted(accessPoint.ssid()) + QLatin1String(" by ") + accessPoint.bssid() + QLatin1String(" (")
        + PublishedSecurity().ofConnected(accessPoint).name() + QLatin1String(", ") + cipherName(accessPoint)
        + QLatin1Char(')');
}

QJsonObject toJson(const WifiAccessPoint &accessPoint, const NetworkSecurity &security)
{
    return {
        {QStringLiteral("ssid"), textOrNull(accessPoint.ssid())},
        {QStringLiteral("bssid"), textOrNull(accessPoint.bssid())},
        {QStringLiteral("signal"), numberOrNull(accessPoint.rssi())},
        {QStringLiteral("frequency"), numberOrNull(accessPoint.frequency())},
        {QStringLiteral("channel"), numberOrNull(channelOf(accessPoint))},
        {QStringLiteral("security"), security.name()},
        {QStringLiteral("cipher"), cipherName(accessPoint)},
    };
}

QJsonObject stateJson(bool powered, const WifiAccessPoint &accessPoint)
{
    const bool connected = !accessPoint.isEmpty();
    return {
        {QStringLiteral("powered"), powered},
        {QStringLiteral("connected"), connected},
        {QStringLiteral("accessPoint"),
         connected ? QJsonValue(toJson(accessPoint, PublishedSecurity().ofConnected(accessPoint))) : QJsonValue()},
    };
}

} // namespace morvek
