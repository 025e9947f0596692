// SPDX-License-Identifier: Apache-2.0
#include "simulatedaccesspoint.h"

#include "wifirequest.h"
#include "wifitext.h"
#include "wirenames.h"

#include <QtCore/QJsonArray>

namespace morvek {

namespace {

constexpr int StepOfDrift = 2;

const auto Wpa = QLatin1String("WPA");
const auto Wep = QLatin1String("WEP");

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
    return {
        {Wire::Bssid, m_settings.bssid},
        {Wire::Ssid, m_settings.ssid},
        {Wire::SignalLevel, QString::number(m_level)},
        {Wire::Frequency, QString::number(m_settings.frequency)},
        {Wire::Flags, QJsonArray::fromStringList(m_settings.flags)},
    };
}

QJsonObject SimulatedAccessPoint::status() const
{
    QString keyManagement = Wire::None;
    QString cipher = Wire::None;
    if (!isOpen()) {
        // The better of what it offers; and what an access point of today has, when its flags do not tell.
        const bool onlyWpa = offers(QStringLiteral("WPA-PSK-")) && !offers(QStringLiteral("WPA2-PSK-"));
        const QString protocol = onlyWpa ? Wire::WpaPsk : Wire::Wpa2Psk;
        const QStringList own = m_settings.flags.filter(protocol + QLatin1Char('-'));
        keyManagement = protocol;
        cipher = own.isEmpty() || own.join(QLatin1Char(' ')).contains(Wire::Ccmp) ? Wire::Ccmp : Wire::Tkip;
    }
    return {
        {Wire::Bssid, m_settings.bssid},
        {Wire::Ssid, m_settings.ssid},
        {Wire::KeyMgmt, keyManagement},
        {Wire::PairwiseCipher, cipher},
    };
}

bool SimulatedAccessPoint::isOpen() const
{
    if (!m_settings.passkey.isEmpty())
        return false;
    return std::none_of(m_settings.flags.begin(), m_settings.flags.end(),
                        [](const QString &flag) { return flag == Wep || flag.startsWith(Wpa); });
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
