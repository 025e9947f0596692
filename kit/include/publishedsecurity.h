// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PUBLISHEDSECURITY_H
#define MORVEK_PUBLISHEDSECURITY_H

#include "networksecurity.h"

#include <QtCore/QHash>

namespace morvek {

/*!
 * A second look at what the Wi-Fi daemon publishes of the networks' protection: the library takes what is newer than
 * itself for open, or knows nothing of it. That of a network for WPA2 and WPA3 is WPA2 for it.
 */
class MORVEK_KIT_EXPORT PublishedSecurity
{
public:
    /*! Reads what is published at this moment. */
    PublishedSecurity();

    /*! That of \a accessPoint, a result of the last scan. */
    NetworkSecurity ofScanned(const WifiAccessPoint &accessPoint) const;
    /*! That of the present connection, to \a accessPoint. */
    NetworkSecurity ofConnected(const WifiAccessPoint &accessPoint) const;

private:
    QHash<QString, NetworkSecurity> m_scanned; //!< what the last scan has found, by hardware address
    QString m_connectedBssid;
    NetworkSecurity m_connection;
};

} // namespace morvek

#endif
