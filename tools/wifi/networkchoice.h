// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKCHOICE_H
#define MORVEK_NETWORKCHOICE_H

#include "exitcode.h"

#include <publishedsecurity.h>
#include <wifiaccesspoint.h>

#include <QtCore/QList>

namespace morvek {

/*! What is to be joined; or why nothing can be. */
struct NetworkChoice
{
    WifiAccessPoint accessPoint;
    NetworkSecurity security;
    bool hasOpenTwin = false; //!< an open one has the same name, and was left out
    QString complaint;        //!< empty when there is something to join
    ExitCode code = Done;
};

/*! What is said when an open one has the same name. */
QString openTwinLeftOut();

/*!
 * The first one of \a ssid among \a accessPoints that takes a passkey. Open ones are joined only when there is no
 * protected one of that name, and none at all \a withPasskey: whoever plays a protected network without protection
 * must not get its traffic. What is protected in a way that the library does not know is protected, too.
 */
NetworkChoice chooseNetwork(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &published,
                            const QString &ssid, bool withPasskey);

} // namespace morvek

#endif
