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
    task.carryOut = [this, request](const AnswerCall &answer) { carryOut(request, answer); };
    return task;
}

void TetheringDaemon::carryOut(const TetheringRequest &request, const AnswerCall &answer)
{
    switch (request.kind) {
    case TetheringRequest::RetrieveProfile:
        answer({{}, m_control->profile()});
        break;
    case TetheringRequest::UpdateProfile:
        setProfile(request.profile, answer);
        break;
    case TetheringRequest::Start:
        m_control->start(request.profile, answer);
        break;
    case TetheringRequest::Stop:
        m_control->stop(answer);
        break;
    case TetheringRequest::Unknown:
        break;
    }
}

void TetheringDaemon::setProfile(const QJsonObject &profile, const AnswerCall &answer)
{
    // Who is told of a success can rely on it.
    QString error;
    const bool stored = m_store->save(profile, &error);
    answer(
        {stored ? Refusal() : Refusal {Refusal::NotStored, QStringLiteral("cannot store the profile: ") + error}, {}});
    if (stored)
        m_control->setProfile(profile);
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
