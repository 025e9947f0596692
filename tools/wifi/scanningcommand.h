// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SCANNINGCOMMAND_H
#define MORVEK_SCANNINGCOMMAND_H

#include "wificommand.h"

#include <memory>

namespace morvek {

class AsyncWifiScanOperation;
class PublishedSecurity;

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
    virtual void onScanned(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &security) = 0;

private:
    void run() override;
    void onSuccess();

    std::unique_ptr<AsyncWifiScanOperation> m_operation;
};

} // namespace morvek

#endif
