// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFICOMMAND_H
#define MORVEK_WIFICOMMAND_H

#include "servicecommand.h"

#include <networklibraryexports.h>
#include <wifiservice.h>

namespace morvek {

/*! A command that needs the Wi-Fi service. */
class WifiCommand : public CommandWith<WifiService, newWifiService, deleteWifiService>
{
    Q_OBJECT

public:
    explicit WifiCommand(const CommandLine &line);

protected:
    /*! False when the radio is off; that ends the command, with a complaint, now and whenever it happens later. */
    bool needRadio();
    /*! Ends the command well: with the station's state in JSON, or with \a sentence. */
    void tellState(const QString &sentence);
    /*! Stops what is under way, and ends the command with a complaint; both do nothing when it has ended. */
    void fail(const QString &sentence, ExitCode code = Failed);
};

/*! What is said when something that was asked for does not happen, after what has not. */
QString silenceReason();

} // namespace morvek

#endif
