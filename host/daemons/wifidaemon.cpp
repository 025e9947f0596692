// SPDX-License-Identifier: Apache-2.0
#include "wifidaemon.h"

#include "radiocontrol.h"
#include "wifirequest.h"
#include "wirenames.h"
#include "world.h"

namespace morvek {

WifiDaemon::WifiDaemon(RadioControl *control, const DaemonTools &tools, QObject *parent)
    : Daemon(QStringLiteral("wifi"), Wire::WifiControlObject, ControlFirst, tools, parent),
      m_control(control)
{
}

WifiDaemon::~WifiDaemon() = default;

Daemon::Task WifiDaemon::read(const ZopChangeset &changes)
{
    const WifiRequest request = WifiRequest::read(changes);
    Task task;
    task.request = request;
    task.text = request.toString();
    task.ssid = request.network.ssid;
    task.carryOut = [this, request](const AnswerCall &answer) { m_control->carryOut(request, answer); };
    return task;
}

bool WifiDaemon::publish(QString *error)
{
    // Only what differs: old scan results must not be told as new ones.
    return publishStatus(Service::Wifi, Wire::WifiStatusObject, ObjectPublisher::TellDifference, error);
}

void WifiDaemon::follow()
{
    followStatus(Service::Wifi, Wire::WifiStatusObject);
}

} // namespace morvek
