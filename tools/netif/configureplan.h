// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_CONFIGUREPLAN_H
#define MORVEK_CONFIGUREPLAN_H

#include <networkinterface.h>

#include <QtCore/QJsonArray>
#include <QtCore/QVector>

namespace morvek {

/*! What the networking daemon is sent when an interface is configured. */
struct ControlRequest
{
    QString message;
    QJsonValue content;
};

/*! The requests that give \a networkInterface the configuration \a config; the second one is sent when its addresses
 * are gone. None when the library refuses to ask for that. */
QVector<ControlRequest> requestsFor(const NetworkInterface &networkInterface, const NetworkInterfaceConfig &config);

/*! The content of \a request as it is sent. */
QString contentText(const ControlRequest &request);

/*! How \a networkInterface gets addresses again when it has lost its own. */
QString wayOut(const NetworkInterface &networkInterface);

} // namespace morvek

#endif
