// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKSECURITY_H
#define MORVEK_NETWORKSECURITY_H

#include <QtCore/QStringList>

namespace morvek {

class WifiAccessPoint;

/*! How a network is protected. */
class NetworkSecurity
{
public:
    /*! One of which nothing is known, not even whether it is open. */
    NetworkSecurity() = default;
    /*! What the library knows of \a accessPoint. It takes much of what it cannot read for open. */
    explicit NetworkSecurity(const WifiAccessPoint &accessPoint);
    /*!
     * What the daemon's \a flags of an access point tell, also of protections that are newer than the library. What is
     * a protection in any way is never taken for open.
     */
    explicit NetworkSecurity(const QStringList &flags);

    bool isOpen() const { return m_parts == 0; }
    /*! Whether the kind of protection is known; an open network has none that could be. */
    bool isKnown() const { return (m_parts & Kinds) != 0; }
    /*! Whether it has WPA or WPA2 with a passkey: of what is protected, the library joins nothing else. */
    bool takesPasskey() const { return (m_parts & (Wpa | Wpa2)) != 0; }
    bool hasWpa2() const { return (m_parts & Wpa2) != 0; }

    /*! "open", "WPA2/WPA3", "WPA2 Enterprise + WPS", "unknown protection", "unknown" and so on. */
    QString name() const;

private:
    enum Part : unsigned {
        Wep = 0x1,
        Wpa = 0x2,
        Wpa2 = 0x4,
        Wpa3 = 0x8,
        Owe = 0x10,
        WpaEnterprise = 0x20,
        Wpa2Enterprise = 0x40,
        Wpa3Enterprise = 0x80,
        Kinds = 0xff,
        UnknownKind = 0x100, //!< it is protected, nobody knows how
        Wps = 0x200,         //!< alone it tells nothing of the protection
        NotTold = 0x400,
    };

    static unsigned partsOf(const QString &flag);
    QString kinds() const;

    unsigned m_parts = NotTold;
};

} // namespace morvek

#endif
