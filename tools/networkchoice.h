// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKCHOICE_H
#define MORVEK_NETWORKCHOICE_H

#include "exitcode.h"

#include <wifiaccesspoint.h>

#include <QtCore/QList>

namespace morvek {

/*! What is to be joined; or why nothing can be. */
struct NetworkChoice
{
    WifiAccessPoint accessPoint;
    QString complaint; //!< empty when there is something to join
    ExitCode code = Done;
};

/*!
 * The first one of \a ssid among \a accessPoints that can be joined. With \a withPasskey open ones are left out: a
 * passkey is given for a network that is protected, and whoever plays it without protection must not get its traffic.
 */
NetworkChoice chooseNetwork(const QList<WifiAccessPoint> &accessPoints, const QString &ssid, bool withPasskey);

} // namespace morvek

#endif
