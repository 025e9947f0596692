// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PUBLISHEDSTATUS_H
#define MORVEK_PUBLISHEDSTATUS_H

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <zopobject.h>

namespace morvek {

/*! What the Wi-Fi daemon has published last. It is only read: the daemon is not asked. */
class PublishedStatus
{
public:
    PublishedStatus();

    QJsonArray scanResults() const;
    QJsonObject connection() const;

private:
    ZopObject m_object;
};

} // namespace morvek

#endif
