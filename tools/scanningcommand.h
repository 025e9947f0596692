// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SCANNINGCOMMAND_H
#define MORVEK_SCANNINGCOMMAND_H

#include "librarylog.h"
#include "wificommand.h"

#include <optional>

namespace morvek {

class AsyncWifiScanOperation;

/*! A command that begins with a scan. */
class ScanningCommand : public WifiCommand
{
    Q_OBJECT

public:
    explicit ScanningCommand(const CommandLine &line);
    ~ScanningCommand() override;

protected:
    virtual void onScanStarted() = 0;
    /*! Called once; the strongest of \a accessPoints comes first. */
    virtual void onScanned(const QList<WifiAccessPoint> &accessPoints) = 0;

    void withdraw() override;

private:
    void run() override;
    void onSuccess();

    std::unique_ptr<AsyncWifiScanOperation> m_operation;
    // What the library cannot read of an access point is no concern of the user's; why there are no results is.
    std::optional<LibraryLog> m_log;
};

} // namespace morvek

#endif
