// SPDX-License-Identifier: Apache-2.0
#include "publishedsecurity.h"

#include <wifiaccesspoint.h>
#include <zopobject.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

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
    ZopObject status(QStringLiteral("/zop/services/wifi/status"), ZopObject::Subscribe, false);
    status.setAttributeCacheEnabled(true);
    // Read as the library reads it, so that the same text gives the same networks.
    readScan(status.attribute(QStringLiteral("scan_results")).toString().toLocal8Bit());
    const QJsonObject connection = status.attribute(QStringLiteral("wifi_status")).toJson(nullptr).object();
    m_connectedBssid = connection.value(QLatin1String("bssid")).toString();
    m_connection = NetworkSecurity(QStringList(connection.value(QLatin1String("key_mgmt")).toString()));
}

void PublishedSecurity::readScan(const QByteArray &results)
{
    const QJsonArray array = QJsonDocument::fromJson(results).array();
    for (const QJsonValue &result : array)
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
