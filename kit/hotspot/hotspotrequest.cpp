// SPDX-License-Identifier: Apache-2.0
#include "hotspotrequest_p.h"

#include "daemonwatch.h"

#include <asynchotspotconfigoperation.h>
#include <asynchotspotenableoperation.h>
#include <hotspotservice.h>

namespace morvek {

HotspotRequest::HotspotRequest(Hotspot *controller, int deadline)
    : NetworkRequest(controller->q, QString(), deadline),
      m_controller(controller)
{
}

void HotspotRequest::fetch(const Reader &reader)
{
    await<AsyncHotspotConfigOperation>(m_controller->service()->configuration(),
                                       [this, reader](AsyncHotspotConfigOperation *operation) {
                                           const QList<WifiHotspot> results = operation->results();
                                           if (results.isEmpty()) // it was another request's answer
                                               onRefused(AsyncOperationError());
                                           else
                                               reader(results.first());
                                       });
}

void HotspotRequest::write(const KeptProfile &profile, const Step &next)
{
    WifiHotspot whole = profile.whole();
    await<AsyncHotspotConfigOperation>(m_controller->service()->setConfiguration(whole),
                                       [next](AsyncHotspotConfigOperation *) { next(); });
    KeptProfile::wipe(&whole);
}

void HotspotRequest::switchTo(bool on, const Step &next)
{
    await<AsyncHotspotEnableOperation>(m_controller->service()->setEnabled(on),
                                       [next](AsyncHotspotEnableOperation *) { next(); });
}

void HotspotRequest::onRefused(const AsyncOperationError &error)
{
    fail(Refused, refusal(), error.code(), error.message());
}

QString HotspotRequest::early(Failure why, const QString &outlook)
{
    switch (why) {
    case Cancelled:
        return tr("Cancelled. %1").arg(outlook);
    case TimedOut:
        return tr("The hotspot service does not answer. %1").arg(outlook);
    default:
        return tr("The hotspot service has stopped. %1").arg(outlook);
    }
}

// Its end may be on the way already.
void HotspotRequest::release()
{
    if (!m_operation)
        return;
    m_operation->disconnect(this);
    m_operation->deleteLater();
}

template<typename Operation>
void HotspotRequest::await(Operation *operation, const std::function<void(Operation *operation)> &next)
{
    HotspotRequest::release(); // of what has led here
    m_operation = operation;
    operation->setParent(this);
    connect(operation, &Operation::success, this, [operation, next] { next(operation); });
    connect(operation, &Operation::failure, this, [this, operation] { onFailure(operation); });
}

// The library tells a refusal and the death of the daemon with the same words.
void HotspotRequest::onFailure(const AsyncOperationBase *operation)
{
    if (DaemonWatch::isServed(QStringLiteral("tethering")))
        onRefused(operation->error());
    else
        fail(Lost, giveUp(Lost));
}

} // namespace morvek
