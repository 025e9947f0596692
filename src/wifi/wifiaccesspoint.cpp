// SPDX-License-Identifier: Apache-2.0
#include "wifiaccesspoint.h"

#include <QtCore/QTextStream>

namespace morvek {

class Q_DECL_HIDDEN WifiAccessPoint::Private
{
public:
    QString bssid;
    QString ssid;
    int rssi = 0;
    unsigned int frequency = 0;
    QFlags<WifiCipher> ciphers = WifiCipherNone;
    QFlags<WifiKeyManagementType> keyManagementTypes = WifiKeyManagementNone;
    QFlags<WifiSecurityProtocol> securityProtocols = WifiSecurityProtocolNone;
    WifiServiceSet serviceSet = WifiServiceSetIbss;
};

WifiAccessPoint::WifiAccessPoint() = default;
WifiAccessPoint::WifiAccessPoint(const WifiAccessPoint &other) = default;
WifiAccessPoint::WifiAccessPoint(WifiAccessPoint &&other) noexcept = default;
WifiAccessPoint::~WifiAccessPoint() = default;
WifiAccessPoint &WifiAccessPoint::operator=(const WifiAccessPoint &other) = default;
WifiAccessPoint &WifiAccessPoint::operator=(WifiAccessPoint &&other) noexcept = default;

bool WifiAccessPoint::operator==(const WifiAccessPoint &other) const
{
    return d->bssid == other.d->bssid && d->ssid == other.d->ssid && d->rssi == other.d->rssi
        && d->frequency == other.d->frequency && d->ciphers == other.d->ciphers
        && d->keyManagementTypes == other.d->keyManagementTypes && d->securityProtocols == other.d->securityProtocols
        && d->serviceSet == other.d->serviceSet;
}

bool WifiAccessPoint::operator!=(const WifiAccessPoint &other) const
{
    return !(*this == other);
}

bool WifiAccessPoint::isEmpty() const
{
    return d->bssid.isEmpty();
}

QString WifiAccessPoint::bssid() const
{
    return d->bssid;
}

void WifiAccessPoint::setBssid(const QString &bssid)
{
    d->bssid = bssid;
}

QString WifiAccessPoint::ssid() const
{
    return d->ssid;
}

void WifiAccessPoint::setSsid(const QString &ssid)
{
    d->ssid = ssid;
}

int WifiAccessPoint::rssi() const
{
    return d->rssi;
}

void WifiAccessPoint::setRssi(int rssi)
{
    d->rssi = rssi;
}

unsigned int WifiAccessPoint::frequency() const
{
    return d->frequency;
}

void WifiAccessPoint::setFrequency(unsigned int frequency)
{
    d->frequency = frequency;
}

QFlags<WifiCipher> WifiAccessPoint::ciphers() const
{
    return d->ciphers;
}

void WifiAccessPoint::setCiphers(const QFlags<WifiCipher> &ciphers)
{
    d->ciphers = ciphers;
}

QFlags<WifiKeyManagementType> WifiAccessPoint::keyManagementTypes() const
{
    return d->keyManagementTypes;
}

void WifiAccessPoint::setKeyManagementTypes(const QFlags<WifiKeyManagementType> &types)
{
    d->keyManagementTypes = types;
}

QFlags<WifiSecurityProtocol> WifiAccessPoint::securityProtocols() const
{
    return d->securityProtocols;
}

void WifiAccessPoint::setSecurityProtocols(const QFlags<WifiSecurityProtocol> &protocols)
{
    d->securityProtocols = protocols;
}

WifiServiceSet WifiAccessPoint::serviceSet() const
{
    return d->serviceSet;
}

void WifiAccessPoint::setServiceSet(WifiServiceSet serviceSet)
{
    d->serviceSet = serviceSet;
}

QTextStream &operator<<(QTextStream &stream, WifiAccessPoint &accessPoint)
{
    return stream << "WifiAccessPoint { bssid: " << accessPoint.bssid() << ", ssid: " << accessPoint.ssid()
                  << ", rssi: " << accessPoint.rssi() << ", frequency: " << accessPoint.frequency()
                  << ", ciphers: " << int(accessPoint.ciphers())
                  << ", key management: " << int(accessPoint.keyManagementTypes())
                  << ", protocols: " << int(accessPoint.securityProtocols())
                  << ", service set: " << int(accessPoint.serviceSet()) << " }";
}

} // namespace morvek
