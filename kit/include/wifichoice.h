// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFICHOICE_H
#define MORVEK_WIFICHOICE_H

#include "networksecurity.h"

#include <wifiaccesspoint.h>

#include <QtCore/QList>

namespace morvek {

class PublishedSecurity;

/*!
 * Which of the access points of a name is to be joined; or why none can be. WifiController::join() chooses
 * like that.
 */
struct MORVEK_KIT_EXPORT WifiChoice
{
    enum Outcome {
        Joinable,
        NotInRange,
        NeedsPasskey, //!< and there is none
        TakesNone,    //!< it is open, and there is a passkey
        Unsupported,  //!< the library cannot join it
    };

    /*!
     * The strongest one of \a ssid among \a accessPoints that takes a passkey. Open ones are joined only when there is
     * no protected one of that name, and none at all \a withPasskey: whoever plays a protected network without
     * protection must not get its traffic. What is protected in a way that the library does not know is protected, too.
     */
    WifiChoice(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &published, const QString &ssid,
               bool withPasskey);

    Outcome outcome = NotInRange;
    WifiAccessPoint accessPoint; //!< the one to be joined, also when its passkey is missing
    NetworkSecurity security;    //!< its security; of all that are protected when the outcome is Unsupported
    bool hasOpenTwin = false;    //!< an open one has the same name, and was left out
};

} // namespace morvek

#endif
