// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKSECURITY_H
#define MORVEK_NETWORKSECURITY_H

#include "kitexport.h"

#include <QtCore/QStringList>

namespace morvek {

class WifiAccessPoint;

/*! How a network is protected. */
class MORVEK_KIT_EXPORT NetworkSecurity
{
public:
    /*! One of which nothing is known, not even whether it is open. */
    NetworkSecurity();
    /*! What the library knows of \a accessPoint. It takes much of what it cannot read for open. */
    explicit NetworkSecurity(const WifiAccessPoint &accessPoint);
    /*!
     * What the daemon's \a flags of an access point tell, also of protections that are newer than the library. What is
     * a protection in any way is never taken for open.
     */
    explicit NetworkSecurity(const QStringList &flags);

    bool operator==(NetworkSecurity other) const { return m_parts == other.m_parts; }
    bool operator!=(NetworkSecurity other) const { return m_parts != other.m_parts; }
    /*! That of a network whose access points have \a other and this. */
    NetworkSecurity operator|(NetworkSecurity other) const;

    bool isOpen() const;
    /*! Whether the kind of protection is known; an open network has none that could be. */
    bool isKnown() const;
    /*! Whether it has WPA or WPA2 with a passkey: of what is protected, the library joins nothing else. */
    bool takesPasskey() const;
    bool hasWpa2() const;

    /*! "open", "open + WPS", "WPA2/WPA3", "WPA2 Enterprise + WPS", "unknown protection", "unknown" and so on. */
    QString name() const;

private:
    unsigned m_parts;
};

} // namespace morvek

#endif
