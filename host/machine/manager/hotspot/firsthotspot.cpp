// SPDX-License-Identifier: Apache-2.0
#include "firsthotspot.h"

#include "hotspotprofile.h"
#include "wifitext.h"

#include <QtCore/QRandomGenerator>

namespace morvek {

namespace {

// None that people take for another one.
const auto Characters = QLatin1String("abcdefghijkmnpqrstuvwxyz23456789");
constexpr int PassphraseLength = 12;

QString makePassphrase()
{
    QString passphrase;
    while (passphrase.size() < PassphraseLength)
        passphrase += Characters.at(QRandomGenerator::system()->bounded(Characters.size()));
    return passphrase;
}

QString ssidOf(QString hostName)
{
    while (!WifiText::isSsid(hostName))
        hostName.chop(1);
    // The kernel's word for having none
    return hostName.isEmpty() || hostName == QLatin1String("(none)") ? QStringLiteral("Hotspot") : hostName;
}

} // namespace

QJsonObject FirstHotspot::profile(const QString &hostName)
{
    return HotspotProfile::first(ssidOf(hostName), makePassphrase());
}

} // namespace morvek
