// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTREQUEST_P_H
#define MORVEK_HOTSPOTREQUEST_P_H

#include "hotspotcontroller_p.h"
#include "networkrequest.h"
#include "sharedhotspot_p.h"

#include <asyncoperationerror.h>

#include <QtCore/QPointer>

#include <functional>

namespace morvek {

class AsyncOperationBase;

/*! A request of the hotspot's controller, which asks the library for one operation after the other. */
class HotspotRequest : public NetworkRequest
{
    Q_OBJECT

public:
    using NetworkRequest::hasEnded;

protected:
    using Hotspot = HotspotController::Private;
    using Reader = std::function<void(const WifiHotspot &profile)>;
    using Step = std::function<void()>;

    HotspotRequest(Hotspot *controller, int deadline);

    Hotspot *controller() const { return m_controller; }

    /*! Reads the profile for \a reader. */
    void fetch(const Reader &reader);
    /*! Writes \a profile, and goes on with \a next when the daemon has taken it. */
    void write(const KeptProfile &profile, const Step &next);
    /*! Asks the daemon to switch, and goes on with \a next when it has accepted that. */
    void switchTo(bool on, const Step &next);

    /*! Ends it, since the daemon has refused what was asked of it last, as \a error tells. */
    virtual void onRefused(const AsyncOperationError &error);
    /*! The sentence for that. */
    virtual QString refusal() const = 0;
    /*! \a beginning of why it ends early, and \a outlook on what may still come of it. */
    static QString early(Failure why, const QString &outlook);

    void release() override;

private:
    template<typename Operation>
    void await(Operation *operation, const std::function<void(Operation *operation)> &next);
    void onFailure(const AsyncOperationBase *operation);

    Hotspot *m_controller;
    QPointer<AsyncOperationBase> m_operation;
};

template<typename Request>
QVector<Request *> HotspotController::Private::open() const
{
    QVector<Request *> found;
    const QVector<HotspotRequest *> requests = SharedHotspot::of(q->services())->open();
    for (HotspotRequest *request : requests) {
        if (auto *fitting = qobject_cast<Request *>(request))
            found += fitting;
    }
    return found;
}

} // namespace morvek

#endif
