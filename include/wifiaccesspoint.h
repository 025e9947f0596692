// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFIACCESSPOINT_H
#define MORVEK_WIFIACCESSPOINT_H

#include "networkexport.h"
#include "privatepart.h"
#include "wifisecurity.h"

#include <QtCore/QMetaType>
#include <QtCore/QString>

class QTextStream;

namespace morvek {

/*!
 * One Wi-Fi access point: found by a scan, or the one that the station is connected to.
 *
 * A default-constructed one is an open network with empty names. A copy shares nothing with its source; what was
 * moved from is as a new one.
 *
 * In what a scan finds, security that is not known adds nothing, and a network without any known protocol has the
 * flags of an open one. So a network is taken for open only when protocols, key management and ciphers are "none" and
 * nothing else. Even then it may be protected in a way that the daemon has described in words unknown here. In the
 * access point that the station is connected to, the three are 0 when they are not known.
 */
class MORVEK_NETWORK_EXPORT WifiAccessPoint
{
public:
    WifiAccessPoint();
    WifiAccessPoint(const WifiAccessPoint &other);
    WifiAccessPoint(WifiAccessPoint &&other) noexcept;
    ~WifiAccessPoint();
    WifiAccessPoint &operator=(const WifiAccessPoint &other);
    WifiAccessPoint &operator=(WifiAccessPoint &&other) noexcept;
    void swap(WifiAccessPoint &other) noexcept { d.swap(other.d); }

    /*! Equal in every field. */
    bool operator==(const WifiAccessPoint &other) const;
    bool operator!=(const WifiAccessPoint &other) const;

    /*! True when the BSSID is empty, whatever else is set. */
    bool isEmpty() const;

    /*! The hardware address as the Wi-Fi daemon writes it. */
    QString bssid() const;
    void setBssid(const QString &bssid);

    /*! The network's name. */
    QString ssid() const;
    void setSsid(const QString &ssid);

    /*! The signal level as the Wi-Fi daemon reports it, in dBm as a rule; 0 when it is not known. */
    int rssi() const;
    void setRssi(int rssi);

    /*! The channel's frequency as the Wi-Fi daemon reports it, in MHz as a rule; 0 when it is not known. */
    unsigned int frequency() const;
    void setFrequency(unsigned int frequency);

    /*! All pairwise ciphers that are offered. */
    QFlags<WifiCipher> ciphers() const;
    void setCiphers(const QFlags<WifiCipher> &ciphers);

    /*! All key management types that are offered. */
    QFlags<WifiKeyManagementType> keyManagementTypes() const;
    void setKeyManagementTypes(const QFlags<WifiKeyManagementType> &types);

    /*! All security protocols that are offered. */
    QFlags<WifiSecurityProtocol> securityProtocols() const;
    void setSecurityProtocols(const QFlags<WifiSecurityProtocol> &protocols);

    /*! Whether it is part of an infrastructure network. */
    WifiServiceSet serviceSet() const;
    void setServiceSet(WifiServiceSet serviceSet);

private:
    class Private;
    PrivatePart<Private> d;
};

inline void swap(WifiAccessPoint &left, WifiAccessPoint &right) noexcept
{
    left.swap(right);
}

/*! Writes one line that describes \a accessPoint. */
MORVEK_NETWORK_EXPORT QTextStream &operator<<(QTextStream &stream, WifiAccessPoint &accessPoint);

} // namespace morvek

Q_DECLARE_METATYPE(morvek::WifiAccessPoint)
Q_DECLARE_TYPEINFO(morvek::WifiAccessPoint, Q_MOVABLE_TYPE);

#endif
