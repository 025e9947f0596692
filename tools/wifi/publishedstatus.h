// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PUBLISHEDSTATUS_H
#define MORVEK_PUBLISHEDSTATUS_H

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <zopobject.h>

namespace morvek {

/*! Where the Wi-Fi daemon publishes its state, of which the library does not tell everything. */
inline const QString WifiStatusObject = QStringLiteral("/zop/services/wifi/status");

/*! What the Wi-Fi daemon has published last. It is only read: the daemon is not asked. */
class PublishedStatus
{
public:
    PublishedStatus();

    QJsonArray scanResults() const;
    QJsonObject connection() const;
    /*! That of the access point \a bssid in dBm, as the last scan has found it; 0 when it is not known. */
    int levelOf(const QString &bssid) const;

private:
    ZopObject m_object;
};

} // namespace morvek

#endif
