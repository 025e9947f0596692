// SPDX-License-Identifier: Apache-2.0
#include "wifiscan_p.h"

namespace morvek {

namespace {

constexpr int Deadline = 15000;

} // namespace

WifiScan::WifiScan(NetworkController *controller, SharedStation *station)
    : WifiRequest(controller, station, QString(), Deadline)
{
}

void WifiScan::start()
{
    if (!needRadio())
        return;
    setUnderWay();
    connect(&station(), &SharedStation::changed, this, &WifiScan::onRadioOff);
    scan();
}

void WifiScan::onScanned(const QList<WifiAccessPoint> &, const PublishedSecurity &)
{
    succeed();
}

QString WifiScan::giveUp(Failure why)
{
    return why == TimedOut ? tr("The search for networks has not ended in time; it may have been refused.") : QString();
}

} // namespace morvek
