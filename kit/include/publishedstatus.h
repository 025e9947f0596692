// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PUBLISHEDSTATUS_H
#define MORVEK_PUBLISHEDSTATUS_H

#include "kitexport.h"

#include <zopobject.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

namespace morvek {

/*!
 * What the Wi-Fi daemon has published last, of which the library does not tell everything. It is only read: the daemon
 * is not asked. Whoever keeps one is told nothing anew.
 */
class MORVEK_KIT_EXPORT PublishedStatus
{
public:
    /*! Reads what is published at this moment. */
    PublishedStatus();

    /*! Where it is published. */
    static QString path();

    /*! What the last scan has found, as the library reads it. */
    QJsonArray scanResults() const;
    /*! The present connection. */
    QJsonObject connection() const;
    /*! That of the access point \a bssid in dBm, as the last scan has found it; 0 when it is not known. */
    int levelOf(const QString &bssid) const;

private:
    ZopObject m_object;
};

} // namespace morvek

#endif
