// SPDX-License-Identifier: Apache-2.0
#include "publishedstatus.h"

#include "zoplook_p.h"

#include <QtCore/QJsonDocument>

#include <zopvariant.h>

namespace morvek {

PublishedStatus::PublishedStatus()
    : m_object(path(), ToRead, false, nullptr)
{
    m_object.setAttributeCacheEnabled(true);
}

QString PublishedStatus::path()
{
    return QStringLiteral("/zop/services/wifi/status");
}

QJsonArray PublishedStatus::scanResults() const
{
    // Read as the library reads it, so that the same text gives the same networks.
    const QByteArray results =
        m_object.attribute(QStringLiteral("scan_results"), ZopVariant()).toString().toLocal8Bit();
    return QJsonDocument::fromJson(results).array();
}

QJsonObject PublishedStatus::connection() const
{
    return m_object.attribute(QStringLiteral("wifi_status"), ZopVariant()).toJson(nullptr).object();
}

int PublishedStatus::levelOf(const QString &bssid) const
{
    const QJsonArray results = scanResults();
    for (const QJsonValue &result : results) {
        if (result[QLatin1String("bssid")].toString() == bssid)
            return result[QLatin1String("signal_level")].toString().toInt();
    }
    return 0;
}

} // namespace morvek
