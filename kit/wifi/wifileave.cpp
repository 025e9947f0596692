// SPDX-License-Identifier: Apache-2.0
#include "wifileave_p.h"

#include "wifitexts_p.h"

#include <wifiservice.h>

namespace morvek {

namespace {

constexpr int Deadline = 10000;

QString presentNetwork(const SharedStation *station)
{
    return station ? station->state().accessPoint.ssid() : QString();
}

} // namespace

WifiLeave::WifiLeave(NetworkController *controller, SharedStation *station)
    : WifiRequest(controller, station, presentNetwork(station), Deadline)
{
}

void WifiLeave::start()
{
    const bool isConnected = station().state().isConnected();
    // Also when it is not connected: the daemon may still be trying to join what was asked for.
    station().leave();
    if (!isConnected) {
        succeed();
        return;
    }
    setUnderWay();
    connect(&station(), &SharedStation::changed, this, &WifiLeave::compare);
    // It may be connected again before all of this turn of the event loop has been told.
    connect(station().service(), &WifiService::connectedChanged, this, [this](bool connected) {
        if (!connected)
            succeed();
    });
}

/*! The station may go to another network without a word of having left this one. */
void WifiLeave::compare()
{
    const SharedStation::State &now = station().state();
    if (now.isConnected() && now.accessPoint.ssid() != subject())
        fail(Overtaken, tr("The unit has connected to “%1” meanwhile.").arg(named(now.accessPoint.ssid())));
}

QString WifiLeave::giveUp(Failure why)
{
    if (why == TimedOut)
        return tr("“%1” has not been left in time; the request may have been refused.").arg(named(subject()));
    if (why == Cancelled)
        return tr("Cancelled. “%1” may still be left.").arg(named(subject()));
    return QString();
}

} // namespace morvek
