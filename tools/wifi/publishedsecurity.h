// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PUBLISHEDSECURITY_H
#define MORVEK_PUBLISHEDSECURITY_H

#include "networksecurity.h"

#include <QtCore/QHash>
#include <QtCore/QJsonArray>

namespace morvek {

/*!
 * A second look at what the Wi-Fi daemon publishes of the networks' protection: the library takes those that are newer
 * than itself for open, or knows nothing of them.
 */
class PublishedSecurity
{
public:
    /*! Reads what is published at this moment. */
    PublishedSecurity();

    /*! That of \a accessPoint, a result of the last scan. */
    NetworkSecurity ofScanned(const WifiAccessPoint &accessPoint) const;
    /*! That of the present connection, to \a accessPoint. */
    NetworkSecurity ofConnected(const WifiAccessPoint &accessPoint) const;

private:
    void readScan(const QJsonArray &results);

    QHash<QString, QStringList> m_flags; //!< those of the last scan, by hardware address
    QString m_connectedBssid;
    NetworkSecurity m_connection;
};

} // namespace morvek

#endif
