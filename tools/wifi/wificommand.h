// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFICOMMAND_H
#define MORVEK_WIFICOMMAND_H

#include "librarylog.h"
#include "servicecommand.h"

#include <networklibraryexports.h>
#include <wifiservice.h>

#include <optional>

namespace morvek {

/*! How long is waited, in milliseconds: for scan results, for a network to be joined. */
constexpr int ScanTime = 15000;
constexpr int JoinTime = 30000;

/*! A command that needs the Wi-Fi service. */
class WifiCommand : public CommandWith<WifiService, newWifiService, deleteWifiService>
{
    Q_OBJECT

public:
    explicit WifiCommand(const CommandLine &line);

protected:
    /*! False when the radio is off; that ends the command, with a complaint, now and whenever it happens later. */
    bool needRadio();
    /*!
     * From now on the command ends when a request is refused, with a complaint that begins with \a failure. The library
     * tells refusals in its log only.
     */
    void hearRefusals(const QString &failure);
    void hearNoMore() { m_log.reset(); }
    /*! Ends the command well: with the station's state in JSON, or with \a sentence. */
    void tellState(const QString &sentence);

private:
    std::optional<LibraryLog> m_log;
};

/*! What is said when something that was asked for does not happen, after what has not. */
QString silenceReason();

} // namespace morvek

#endif
