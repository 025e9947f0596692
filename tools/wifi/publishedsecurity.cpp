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
    readScan(status.scanResults());
    const QJsonObject connection = status.connection();
    m_connectedBssid = connection.value(QLatin1String("bssid")).toString();
    m_connection = NetworkSecurity(QStringList(connection.value(QLatin1String("key_mgmt")).toString()));
}

void PublishedSecurity::readScan(const QJsonArray &results)
{
    for (const QJsonValue &result : results)
        // One that is listed twice has the protections of both: neither may pass for an open one.
        m_flags[result[QLatin1String("bssid")].toString()] += texts(result[QLatin1String("flags")]);
}

NetworkSecurity PublishedSecurity::ofScanned(const WifiAccessPoint &accessPoint) const
{
    if (m_flags.contains(accessPoint.bssid()))
        return NetworkSecurity(m_flags.value(accessPoint.bssid()));
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
    const NetworkSecurity scanned(m_flags.value(accessPoint.bssid()));
    return scanned.isOpen() ? known : scanned;
}

} // namespace morvek
