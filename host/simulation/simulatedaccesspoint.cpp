// SPDX-License-Identifier: Apache-2.0
#include "simulatedaccesspoint.h"

#include "stationtext.h"
#include "wifirequest.h"
#include "wifitext.h"
#include "wirenames.h"

namespace morvek {

namespace {

constexpr int StepOfDrift = 2;

const auto Wep = QLatin1String("WEP");
/*! What the flags of a protected network begin with. */
const QLatin1String Protocols[] = {QLatin1String("WPA"), QLatin1String("RSN"), QLatin1String("OWE")};

} // namespace

SimulatedAccessPoint::SimulatedAccessPoint(const ScenarioAccessPoint &settings)
    : m_settings(settings),
      m_level(settings.signalLevel)
{
}

WifiNetwork SimulatedAccessPoint::network() const
{
    return {m_settings.ssid, m_settings.passkey};
}

void SimulatedAccessPoint::setLevel(int level)
{
    m_settings.signalLevel = level;
    m_level = level;
}

void SimulatedAccessPoint::drift(Pace *pace)
{
    if (pace->isHeld())
        return;
    m_level = qBound(m_settings.signalLevel - m_settings.drift, m_level + pace->pick(-StepOfDrift, StepOfDrift),
                     m_settings.signalLevel + m_settings.drift);
}

bool SimulatedAccessPoint::belongsTo(const WifiNetwork &network) const
{
    return network.ssid == m_settings.ssid && (network.passkey.isEmpty() ? isOpen() : asksForPasskey());
}

bool SimulatedAccessPoint::accepts(const WifiNetwork &network) const
{
    return WifiText::isSameKey(network.passkey, m_settings.passkey, m_settings.ssid);
}

QJsonObject SimulatedAccessPoint::scanResult() const
{
    return StationText::scanResult(m_settings.bssid, m_settings.ssid, m_level, m_settings.frequency, m_settings.flags);
}

QJsonObject SimulatedAccessPoint::status() const
{
    QString protocol = Wire::None;
    QString cipher = Wire::None;
    if (!isOpen()) {
        protocol = keyManagement();
        const QStringList own = m_settings.flags.filter(protocol + QLatin1Char('-'));
        cipher = own.isEmpty() || own.join(QLatin1Char(' ')).contains(Wire::Ccmp) ? Wire::Ccmp : Wire::Tkip;
    }
    return StationText::status(m_settings.bssid, m_settings.ssid, protocol, cipher);
}

/*! The best of what it offers; and what an access point of today has, when its flags do not tell. */
QString SimulatedAccessPoint::keyManagement() const
{
    if (offers(QStringLiteral("WPA2-PSK")))
        return Wire::Wpa2Psk;
    if (offers(QStringLiteral("WPA-PSK-")))
        return Wire::WpaPsk;
    return m_settings.flags.filter(QStringLiteral("SAE")).isEmpty() ? Wire::Wpa2Psk : Wire::Wpa3Sae;
}

bool SimulatedAccessPoint::isOpen() const
{
    const bool flagged = m_settings.flags.contains(Wep)
        || std::any_of(std::begin(Protocols), std::end(Protocols), [this](QLatin1String p) { return offers(p); });
    return m_settings.passkey.isEmpty() && !flagged;
}

bool SimulatedAccessPoint::asksForPasskey() const
{
    return !m_settings.passkey.isEmpty() || offers(QStringLiteral("WPA-PSK")) || offers(QStringLiteral("WPA2-PSK"));
}

bool SimulatedAccessPoint::offers(const QString &protocol) const
{
    return std::any_of(m_settings.flags.begin(), m_settings.flags.end(),
                       [&protocol](const QString &flag) { return flag.startsWith(protocol); });
}

} // namespace morvek
