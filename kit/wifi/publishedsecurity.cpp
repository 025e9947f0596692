// SPDX-License-Identifier: Apache-2.0
#include "publishedsecurity.h"

#include "publishedstatus.h"

#include <wifiaccesspoint.h>

namespace morvek {

namespace {

QStringList texts(const QJsonValue &array)
{
    QStringList texts;
    const QJsonArray values = array.toArray();
    for (const QJsonValue &value : values)
        texts += value.toString();
    return texts;
}

} // namespace

PublishedSecurity::PublishedSecurity()
{
    const PublishedStatus status;
    const QJsonArray results = status.scanResults();
    QHash<QStringList, NetworkSecurity> read; // most access points have the flags of others
    for (const QJsonValue &result : results) {
        const QStringList flags = texts(result[QLatin1String("flags")]);
        if (!read.contains(flags))
            read.insert(flags, NetworkSecurity(flags));
        const NetworkSecurity security = read.value(flags);
        // One that is listed twice has the protections of both: neither may pass for an open one.
        const auto scanned = m_scanned.find(result[QLatin1String("bssid")].toString());
        if (scanned == m_scanned.end())
            m_scanned.insert(result[QLatin1String("bssid")].toString(), security);
        else
            *scanned = *scanned | security;
    }
    const QJsonObject connection = status.connection();
    m_connectedBssid = connection.value(QLatin1String("bssid")).toString();
    m_connection = NetworkSecurity(QStringList(connection.value(QLatin1String("key_mgmt")).toString()));
}

NetworkSecurity PublishedSecurity::ofScanned(const WifiAccessPoint &accessPoint) const
{
    const auto scanned = m_scanned.constFind(accessPoint.bssid());
    if (scanned != m_scanned.constEnd())
        return *scanned;
    // Another scan has come between, and has not found it.
    const NetworkSecurity known(accessPoint);
    return known.isKnown() ? known : NetworkSecurity();
}

NetworkSecurity PublishedSecurity::ofConnected(const WifiAccessPoint &accessPoint) const
{
    const NetworkSecurity known(accessPoint);
    if (known.isOpen() || known.isKnown())
        return known;
    if (m_connectedBssid == accessPoint.bssid() && m_connection.isKnown())
        return m_connection;
    const NetworkSecurity scanned = m_scanned.value(accessPoint.bssid(), known);
    return scanned.isOpen() ? known : scanned;
}

} // namespace morvek
