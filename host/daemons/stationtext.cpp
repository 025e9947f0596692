// SPDX-License-Identifier: Apache-2.0
#include "stationtext.h"

#include "wifitext.h"
#include "wirenames.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QStringList>

namespace morvek {

QString StationText::connectedEvent(const QString &bssid, int identifier)
{
    return QStringLiteral("CTRL-EVENT-CONNECTED - Connection to %1 completed [id=%2 id_str=]")
        .arg(bssid)
        .arg(identifier);
}

QString StationText::disconnectedEvent(const QString &bssid, int reason)
{
    return QStringLiteral("CTRL-EVENT-DISCONNECTED bssid=%1 reason=%2").arg(bssid).arg(reason);
}

QString StationText::wrongKeyEvent(int identifier, const QString &ssid)
{
    return QStringLiteral("CTRL-EVENT-SSID-TEMP-DISABLED id=%1 ssid=%2 auth_failures=1 duration=10 reason=WRONG_KEY")
        .arg(QString::number(identifier), WifiText::quoted(ssid));
}

QString StationText::power(bool on)
{
    return on ? Wire::On : Wire::Off;
}

QJsonObject StationText::scanResult(const QString &bssid, const QString &ssid, int level, int frequency,
                                    const QStringList &flags)
{
    return {
        {Wire::Bssid, bssid},
        {Wire::Ssid, ssid},
        {Wire::SignalLevel, QString::number(level)},
        {Wire::Frequency, QString::number(frequency)},
        {Wire::Flags, QJsonArray::fromStringList(flags)},
    };
}

QString StationText::scanResults(const QJsonArray &results)
{
    return QString::fromUtf8(QJsonDocument(results).toJson(QJsonDocument::Compact));
}

QJsonObject StationText::status(const QString &bssid, const QString &ssid, const QString &keyManagement,
                                const QString &cipher)
{
    return {
        {Wire::Bssid, bssid},
        {Wire::Ssid, ssid},
        {Wire::KeyMgmt, keyManagement},
        {Wire::PairwiseCipher, cipher},
    };
}

} // namespace morvek
