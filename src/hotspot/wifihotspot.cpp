// SPDX-License-Identifier: Apache-2.0
#include "wifihotspot.h"

#include <QtCore/QTextStream>

namespace morvek {

class Q_DECL_HIDDEN WifiHotspot::Private
{
public:
    QString name;
    QString passphrase;
    QFlags<WifiSecurityProtocol> securityType = WifiSecurityProtocolWpa2;
    WifiBand band = WifiBand2_4GHz;
    int inactivityTime = -1;
    int maxClients = -1;
    bool privacy = false;
    bool blockConn = false;
};

WifiHotspot::WifiHotspot() = default;
WifiHotspot::WifiHotspot(const WifiHotspot &other) = default;
WifiHotspot::WifiHotspot(WifiHotspot &&other) noexcept = default;
WifiHotspot::~WifiHotspot() = default;
WifiHotspot &WifiHotspot::operator=(const WifiHotspot &other) = default;
WifiHotspot &WifiHotspot::operator=(WifiHotspot &&other) noexcept = default;

bool WifiHotspot::operator==(const WifiHotspot &other) const
{
    return d->name == other.d->name && d->passphrase == other.d->passphrase && d->securityType == other.d->securityType
        && d->band == other.d->band && d->inactivityTime == other.d->inactivityTime
        && d->maxClients == other.d->maxClients && d->privacy == other.d->privacy && d->blockConn == other.d->blockConn;
}

bool WifiHotspot::operator!=(const WifiHotspot &other) const
{
    return !(*this == other);
}

bool WifiHotspot::isEmpty() const
{
    return d->name.isEmpty() || d->passphrase.isEmpty() || d->inactivityTime == -1 || d->maxClients == -1;
}

QString WifiHotspot::name() const
{
    return d->name;
}

void WifiHotspot::setName(const QString &name)
{
    d->name = name;
}

QString WifiHotspot::passphrase() const
{
    return d->passphrase;
}

void WifiHotspot::setPassphrase(const QString &passphrase)
{
    d->passphrase = passphrase;
}

QFlags<WifiSecurityProtocol> WifiHotspot::securityType() const
{
    return d->securityType;
}

void WifiHotspot::setSecurityType(const QFlags<WifiSecurityProtocol> &securityType)
{
    d->securityType = securityType;
}

WifiBand WifiHotspot::band() const
{
    return d->band;
}

void WifiHotspot::setBand(WifiBand band)
{
    d->band = band;
}

int WifiHotspot::inactivityTime() const
{
    return d->inactivityTime;
}

void WifiHotspot::setInactivityTime(int inactivityTime)
{
    d->inactivityTime = inactivityTime;
}

int WifiHotspot::maxClients() const
{
    return d->maxClients;
}

void WifiHotspot::setMaxClients(int maxClients)
{
    d->maxClients = maxClients;
}

bool WifiHotspot::privacy() const
{
    return d->privacy;
}

void WifiHotspot::setPrivacy(bool privacy)
{
    d->privacy = privacy;
}

bool WifiHotspot::blockConn() const
{
    return d->blockConn;
}

void WifiHotspot::setBlockConn(bool blockConn)
{
    d->blockConn = blockConn;
}

// The irregular labels are part of the format.
QTextStream &operator<<(QTextStream &stream, WifiHotspot &hotspot)
{
    return stream << "Wifi Hotspot {name:" << hotspot.name() << ",passprase:" << hotspot.passphrase()
                  << ",Security Type:" << QString::number(hotspot.securityType())
                  << ",Band:" << QString::number(hotspot.band())
                  << ", InactivityTime:" << QString::number(hotspot.inactivityTime())
                  << ", Max Clients:" << QString::number(hotspot.maxClients())
                  << ", Privacy:" << (hotspot.privacy() ? '1' : '0')
                  << ", Blocking connections:" << (hotspot.blockConn() ? '1' : '0') << "}";
}

} // namespace morvek
