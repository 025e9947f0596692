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

/*! As WifiChoice, with words about it; when a passkey is needed, it can still be asked for. */
NetworkChoice chooseNetwork(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &published,
                            const QString &ssid, bool withPasskey);

} // namespace morvek

#endif
