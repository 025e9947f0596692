// SPDX-License-Identifier: Apache-2.0
#include "tetheringdaemon.h"

#include "hotspotcontrol.h"
#include "hotspotstore.h"
#include "tetheringrequest.h"
#include "wirenames.h"
#include "world.h"

namespace morvek {

TetheringDaemon::TetheringDaemon(HotspotControl *control, const HotspotStore *store, const DaemonTools &tools,
                                 QObject *parent)
    : Daemon(QStringLiteral("tethering"), Wire::TetheringControlObject, ControlLast, tools, parent),
      m_control(control),
      m_store(store)
{
}

TetheringDaemon::~TetheringDaemon() = default;

Daemon::Task TetheringDaemon::read(const ZopChangeset &changes)
{
    const TetheringRequest request = TetheringRequest::read(changes);
    Task task;
    task.request = request;
    task.text = request.toString();
    task.judge = [this, request] { return judge(request); };
    task.perform = [this, request] { perform(request); };
    return task;
}

Daemon::Answer TetheringDaemon::judge(const TetheringRequest &request) const
{
    if (request.kind == TetheringRequest::RetrieveProfile)
        return {{}, m_control->profile()};
    // Who is told of a success can rely on it.
    QString error;
    if (request.kind == TetheringRequest::UpdateProfile && !m_store->save(request.profile, &error))
        return {{Refusal::NotStored, QStringLiteral("cannot store the profile: ") + error}, {}};
    return {};
}

void TetheringDaemon::perform(const TetheringRequest &request)
{
    switch (request.kind) {
    case TetheringRequest::UpdateProfile:
        m_control->setProfile(request.profile);
        break;
    case TetheringRequest::Start:
        m_control->start(request.profile);
        break;
    case TetheringRequest::Stop:
        m_control->stop();
        break;
    case TetheringRequest::RetrieveProfile:
    case TetheringRequest::Unknown:
        break;
    }
}

bool TetheringDaemon::publish(QString *error)
{
    return publishStatus(Service::Tethering, Wire::TetheringStatusObject, ObjectPublisher::TellDifference, error);
}

void TetheringDaemon::follow()
{
    followStatus(Service::Tethering, Wire::TetheringStatusObject);
}

} // namespace morvek
