// SPDX-License-Identifier: Apache-2.0
#include "wifipower_p.h"

#include <QtCore/QTimer>

namespace morvek {

namespace {

constexpr int Deadline = 10000;
constexpr int FlipTime = 1000; // what was asked before has come true by then, or never will

} // namespace

WifiPower::WifiPower(NetworkController *controller, SharedStation *station, bool on)
    : WifiRequest(controller, station, QString(), Deadline),
      m_on(on),
      m_mayFlip(station && station->mayBecomePowered(!on))
{
}

void WifiPower::start()
{
    if (station().state().powered == m_on && !m_mayFlip) {
        succeed();
        return;
    }
    setUnderWay();
    connect(&station(), &SharedStation::changed, this, &WifiPower::compare);
    connect(&station(), &SharedStation::powerAsked, this, [this](bool on) {
        if (on != m_on)
            fail(Overtaken,
                 on ? tr("Switching Wi-Fi on was asked for meanwhile.")
                    : tr("Switching Wi-Fi off was asked for meanwhile."));
    });
    station().setPowered(m_on);
    QTimer::singleShot(FlipTime, this, [this] {
        m_mayFlip = false;
        compare();
    });
}

void WifiPower::compare()
{
    if (!hasStation())
        return;
    if (station().state().powered != m_on)
        m_mayFlip = false;
    else if (!m_mayFlip)
        succeed();
}

QString WifiPower::giveUp(Failure why)
{
    if (why == TimedOut)
        return m_on ? tr("Wi-Fi has not come on in time; the request may have been refused.")
                    : tr("Wi-Fi has not gone off in time; the request may have been refused.");
    if (why == Cancelled)
        return m_on ? tr("Cancelled. Wi-Fi may still be switched on.")
                    : tr("Cancelled. Wi-Fi may still be switched off, and its network be left.");
    return QString();
}

} // namespace morvek
