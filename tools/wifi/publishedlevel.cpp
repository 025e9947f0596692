// SPDX-License-Identifier: Apache-2.0
#include "publishedlevel.h"

#include "wificommand.h"

#include <zopobject.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace morvek {

int publishedLevel(const QString &bssid)
{
    ZopObject status(StatusObject, ZopObject::Subscribe, false);
    status.setAttributeCacheEnabled(true);
    const QJsonArray results = status.attribute(QStringLiteral("scan_results")).toJson(nullptr).array();
    for (const QJsonValue &result : results) {
        if (result[QLatin1String("bssid")].toString() == bssid)
            return result[QLatin1String("signal_level")].toString().toInt();
    }
    return 0;
}

} // namespace morvek
