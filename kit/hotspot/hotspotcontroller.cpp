// SPDX-License-Identifier: Apache-2.0
#include "hotspotcontroller.h"

#include "hotspotapply_p.h"
#include "hotspotfetch_p.h"
#include "hotspotswitch_p.h"
#include "networkservices.h"
#include "servicekeeper_p.h"

#include <hotspotservice.h>

#include <algorithm>
#include <tuple>

namespace morvek {

HotspotController::HotspotController(QObject *parent)
    : NetworkController(Tethering, parent),
      d(new Private(this))
{
}

HotspotController::HotspotController(NetworkServices *services, QObject *parent)
    : HotspotController(parent)
{
    setServices(services);
}

HotspotController::~HotspotController() = default;

HotspotController::State HotspotController::state() const
{
    return d->state;
}

QString HotspotController::stateText() const
{
    switch (d->state) {
    case SwitchingOn:
        return tr("The hotspot is being switched on.");
    case SwitchingOff:
        return tr("The hotspot is being switched off.");
    case On:
        return tr("The hotspot is on.");
    case Off:
        return tr("The hotspot is off.");
    case NotReady:
        break;
    }
    return availabilityText();
}

bool HotspotController::isOn() const
{
    return d->isOn;
}

bool HotspotController::isBusy() const
{
    return !d->running.isEmpty();
}

bool HotspotController::isProfileKnown() const
{
    return d->fields().isRead();
}

QString HotspotController::name() const
{
    return d->fields().profile().fields.name();
}

HotspotForm *HotspotController::form() const
{
    return d->form;
}

NetworkRequest *HotspotController::fetch()
{
    return d->take(new HotspotFetch(d.get()));
}

NetworkRequest *HotspotController::setOn(bool on)
{
    return d->take(new HotspotSwitch(d.get(), on));
}

NetworkRequest *HotspotController::apply()
{
    return d->take(new HotspotApply(d.get()));
}

QString HotspotController::reveal() const
{
    return d->fields().profile().passphrase.text();
}

void HotspotController::onServiceReplaced()
{
    if (!d->service())
        return;
    connect(d->service(), &HotSpotService::enabledChanged, this, [this](bool on) { d->onEnabledChanged(on); });
    connect(d->service(), &HotSpotService::configurationChanged, this,
            [this](const WifiHotspot &profile) { d->onRead(profile); });
}

void HotspotController::onAvailabilityChanged()
{
    if (availability() == Ready) {
        d->isOn = d->service()->enabled();
        d->readAgain.setInterval(services()->retryPause());
        d->readProfile();
    }
    d->update();
}

HotspotController::Private::Private(HotspotController *controller)
    : q(controller),
      form(new HotspotForm(controller))
{
    readAgain.setSingleShot(true);
    connect(&readAgain, &QTimer::timeout, q, [this] { readProfile(); });
}

HotSpotService *HotspotController::Private::service() const
{
    return static_cast<HotSpotService *>(q->service());
}

template<typename Request>
NetworkRequest *HotspotController::Private::take(Request *request)
{
    running.append(request);
    if (q->services())
        SharedHotspot::of(q->services())->add(request);
    const auto onGone = [this, request] {
        if (running.removeOne(request))
            update();
    };
    connect(request, &NetworkRequest::ending, q, onGone);
    connect(request, &QObject::destroyed, q, onGone);
    q->take(request);
    update();
    return request;
}

void HotspotController::Private::readProfile()
{
    const NetworkRequest *request = q->take(new HotspotFirstFetch(this));
    connect(request, &NetworkRequest::finished, q, [this, request] {
        if (request->isDone() || q->availability() != Ready)
            return;
        const int pause = readAgain.interval();
        readAgain.start();
        readAgain.setInterval(std::min(2 * pause, MostGrowth * q->services()->retryPause()));
    });
}

void HotspotController::Private::onRead(const WifiHotspot &profile)
{
    readAgain.stop();
    const bool isNews = !fields().isRead() || fields().profile() != KeptProfile(profile);
    const QPointer<HotspotController> self(q); // a slot may end it all
    form->read(profile);
    if (isNews && self)
        Q_EMIT q->profileChanged();
}

void HotspotController::Private::onEnabledChanged(bool on)
{
    isOn = on;
    for (HotspotRequest *request : qAsConst(running)) {
        if (auto *change = qobject_cast<HotspotSwitch *>(request))
            change->onEnabledChanged(on);
    }
    update();
}

void HotspotController::Private::update()
{
    const auto before = std::make_tuple(state, wasOn, wasBusy);
    state = present();
    wasOn = isOn;
    wasBusy = !running.isEmpty();
    if (std::make_tuple(state, wasOn, wasBusy) != before)
        Q_EMIT q->stateChanged();
}

HotspotController::State HotspotController::Private::present() const
{
    if (q->availability() != Ready)
        return NotReady;
    for (auto request = running.crbegin(); request != running.crend(); ++request) {
        const auto *change = qobject_cast<HotspotSwitch *>(*request);
        if (change && change->isUnderWay())
            return change->isOn() ? SwitchingOn : SwitchingOff;
    }
    return isOn ? On : Off;
}

} // namespace morvek
