// SPDX-License-Identifier: Apache-2.0
#include "wificonnectionconfig.h"

#include <QtCore/QTextStream>

namespace morvek {

class Q_DECL_HIDDEN WifiConnectionConfig::Private
{
public:
    QString ssid;
    QString passkey;
    WifiKeyManagementType keyManagementType = WifiKeyManagementNone;
    WifiSecurityProtocol securityProtocol = WifiSecurityProtocolNone;
};

WifiConnectionConfig::WifiConnectionConfig() = default;
WifiConnectionConfig::WifiConnectionConfig(const WifiConnectionConfig &other) = default;
WifiConnectionConfig::WifiConnectionConfig(WifiConnectionConfig &&other) noexcept = default;
WifiConnectionConfig::~WifiConnectionConfig() = default;
WifiConnectionConfig &WifiConnectionConfig::operator=(const WifiConnectionConfig &other) = default;
WifiConnectionConfig &WifiConnectionConfig::operator=(WifiConnectionConfig &&other) noexcept = default;

bool WifiConnectionConfig::operator==(const WifiConnectionConfig &other) const
{
    return d->ssid == other.d->ssid && d->passkey == other.d->passkey
        && d->keyManagementType == other.d->keyManagementType && d->securityProtocol == other.d->securityProtocol;
}

bool WifiConnectionConfig::operator!=(const WifiConnectionConfig &other) const
{
    return !(*this == other);
}

bool WifiConnectionConfig::isValid() const
{
    switch (d->keyManagementType) {
    case WifiKeyManagementPsk:
        return !d->passkey.isEmpty()
            && (d->securityProtocol == WifiSecurityProtocolWpa || d->securityProtocol == WifiSecurityProtocolWpa2);
    case WifiKeyManagementNone:
        return d->securityProtocol == WifiSecurityProtocolNone;
    default:
        return false;
    }
}

QString WifiConnectionConfig::ssid() const
{
    return d->ssid;
}

void WifiConnectionConfig::setSsid(const QString &ssid)
{
    d->ssid = ssid;
}

QString WifiConnectionConfig::passkey() const
{
    return d->passkey;
}

void WifiConnectionConfig::setPasskey(const QString &passkey)
{
    d->passkey = passkey;
}

WifiKeyManagementType WifiConnectionConfig::keyManagementType() const
{
    return d->keyManagementType;
}

void WifiConnectionConfig::setKeyManagementType(WifiKeyManagementType type)
{
    d->keyManagementType = type;
}

WifiSecurityProtocol WifiConnectionConfig::securityProtocol() const
{
    return d->securityProtocol;
}

void WifiConnectionConfig::setSecurityProtocol(WifiSecurityProtocol protocol)
{
    d->securityProtocol = protocol;
}

QTextStream &operator<<(QTextStream &stream, WifiConnectionConfig &config)
{
    return stream << "WifiConfig { ssid: " << config.ssid()
                  << ", key management: " << QString::number(config.keyManagementType())
                  << ", protocols: " << QString::number(config.securityProtocol()) << " }";
}

} // namespace morvek
