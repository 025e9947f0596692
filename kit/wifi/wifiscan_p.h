// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFISCAN_P_H
#define MORVEK_WIFISCAN_P_H

#include "wifirequest_p.h"

namespace morvek {

/*! Looks for networks once. */
class WifiScan : public WifiRequest
{
    Q_OBJECT

public:
    WifiScan(NetworkController *controller, SharedStation *station);

protected:
    void start() override;
    QString giveUp(Failure why) override;
    void onScanned(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &security) override;
};

/*! The same while somebody looks at the networks: another kind, so that it takes no request away that was asked for. */
class WifiLook : public WifiScan
{
    Q_OBJECT

public:
    using WifiScan::WifiScan;
};

} // namespace morvek

#endif
