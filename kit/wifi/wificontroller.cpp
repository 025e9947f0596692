// SPDX-License-Identifier: Apache-2.0
#include "wificontroller.h"

#include "publishedsecurity.h"
#include "wificontroller_p.h"
#include "wifijoin_p.h"
#include "wifileave_p.h"
#include "wifipower_p.h"
#include "wifiscan_p.h"
#include "wifitexts_p.h"

#include <wifiservice.h>

#include <algorithm>
#include <utility>

namespace morvek {

namespace {

constexpr int LeastScanPause = 1000; // milliseconds

} // namespace

WifiController::WifiController(QObject *parent)
    : NetworkController(Wifi, parent),
      d(new Private(this))
{
}

WifiController::WifiController(NetworkServices *services, QObject *parent)
    : WifiController(parent)
{
    setServices(services);
}

WifiController::~WifiController() = default;

WifiController::State WifiController::state() const
{
    return d->shown.state;
}

QString WifiController::stateText() const
{
    return d->shown.text;
}

bool WifiController::isPowered() const
{
    return d->shown.powered;
}

bool WifiController::isConnected() const
{
    return !d->shown.accessPoint.isEmpty();
}

QString WifiController::ssid() const
{
    return d->shown.accessPoint.ssid();
}

QString WifiController::bssid() const
{
    return d->shown.accessPoint.bssid();
}

QString WifiController::joiningSsid() const
{
    return d->shown.joiningSsid;
}

bool WifiController::isLooking() const
{
    return d->isLooking;
}

void WifiController::setLooking(bool looking)
{
    if (std::exchange(d->isLooking, looking) == looking)
        return;
    d->update();
    Q_EMIT lookingChanged();
}

bool WifiController::isScanning() const
{
    return d->isScanning;
}

int WifiController::scanPause() const
{
    return d->scanPause;
}

void WifiController::setScanPause(int milliseconds)
{
    const int pause = std::max(milliseconds, LeastScanPause);
    if (std::exchange(d->scanPause, pause) == pause)
        return;
    d->update();
    Q_EMIT scanPauseChanged();
}

WifiNetworkModel *WifiController::networks() const
{
    return d->networks;
}

NetworkRequest *WifiController::setPowered(bool on)
{
    return d->ask(new WifiPower(this, d->station, on));
}

NetworkRequest *WifiController::scan()
{
    return d->ask(new WifiScan(this, d->station));
}

NetworkRequest *WifiController::join(const QString &ssid, const QString &passkey)
{
    return d->ask(new WifiJoin(this, d->station, ssid, passkey));
}

NetworkRequest *WifiController::leave()
{
    return d->ask(new WifiLeave(this, d->station));
}

void WifiController::onServiceReplaced()
{
    d->follow(static_cast<WifiService *>(service()));
}

void WifiController::onAvailabilityChanged()
{
    if (d->station)
        d->station->look();
    d->update();
}

WifiController::Private::Private(WifiController *controller)
    : q(controller),
      networks(new WifiNetworkModel(controller))
{
    m_lookTimer.setSingleShot(true);
    m_lookTimer.setTimerType(Qt::PreciseTimer); // never too early
    connect(&m_lookTimer, &QTimer::timeout, this, [this] {
        if (mayLook()) // another controller may have begun at the same moment
            ask(new WifiLook(q, station));
    });
    shown = present();
}

void WifiController::Private::follow(WifiService *service)
{
    if (station)
        disconnect(station, nullptr, this, nullptr);
    station = service ? SharedStation::of(service) : nullptr;
    if (station) {
        // Queued, so that the ends of requests are told before: what is shown changes once.
        connect(station, &SharedStation::settled, this, &Private::update, Qt::QueuedConnection);
        connect(station, &SharedStation::usageChanged, this, &Private::followUsage, Qt::QueuedConnection);
        connect(station, &SharedStation::foundChanged, this, &Private::showFound, Qt::QueuedConnection);
        showFound();
    }
    update();
}

void WifiController::Private::showFound()
{
    if (station)
        networks->setFound(station->found());
}

void WifiController::Private::update()
{
    const QPointer<Private> self(this);
    refresh();
    if (self)
        tell();
}

/*! What is shown is as it will stay before anybody hears of it. */
void WifiController::Private::refresh()
{
    requests.erase(std::remove_if(requests.begin(), requests.end(),
                                  [](WifiRequest *request) { return !request || !request->isRunning(); }),
                   requests.end());
    refreshUsage();
    show(present());
}

void WifiController::Private::refreshUsage()
{
    const bool scans = std::any_of(requests.cbegin(), requests.cend(),
                                   [](const WifiRequest *request) { return request && request->isScanning(); });
    m_hasScanningToTell |= std::exchange(isScanning, scans) != scans;
    planToLook();
}

/*! Leaves the state alone: a request that has ended is still shown until it tells so. */
void WifiController::Private::followUsage()
{
    refreshUsage();
    tell();
}

void WifiController::Private::tell()
{
    const QPointer<Private> self(this);
    if (std::exchange(m_hasStateToTell, false))
        Q_EMIT q->stateChanged();
    if (self && std::exchange(m_hasScanningToTell, false))
        Q_EMIT q->scanningChanged();
}

WifiController::Private::Shown WifiController::Private::present() const
{
    Shown now;
    if (station) {
        now.powered = station->state().powered;
        now.accessPoint = station->state().accessPoint;
    }
    now.state = presentState(now);
    if (now.state == Joining)
        now.joiningSsid = underWay<WifiJoin>()->subject();
    now.text = textOf(now);
    return now;
}

WifiController::State WifiController::Private::presentState(const Shown &now) const
{
    if (q->availability() != Ready)
        return NotReady;
    if (const auto *power = underWay<WifiPower>())
        return power->isOn() ? SwitchingOn : SwitchingOff;
    if (!now.powered)
        return Off;
    if (underWay<WifiJoin>())
        return Joining;
    if (underWay<WifiLeave>())
        return Leaving;
    return now.accessPoint.isEmpty() ? Disconnected : Connected;
}

QString WifiController::Private::textOf(const Shown &now) const
{
    switch (now.state) {
    case NotReady:
        return q->availabilityText();
    case SwitchingOn:
        return WifiController::tr("Wi-Fi is being switched on.");
    case SwitchingOff:
        return WifiController::tr("Wi-Fi is being switched off.");
    case Off:
        return WifiController::tr("Wi-Fi is off.");
    case Joining:
        return WifiController::tr("Connecting to “%1”.").arg(named(now.joiningSsid));
    case Leaving:
        return WifiController::tr("Leaving “%1”.").arg(named(now.accessPoint.ssid()));
    case Connected:
        return WifiController::tr("Connected to “%1”.").arg(named(now.accessPoint.ssid()));
    case Disconnected:
        return WifiController::tr("Not connected.");
    }
    return QString();
}

void WifiController::Private::show(const Shown &now)
{
    const Shown former = std::exchange(shown, now);
    const bool isOther = former.accessPoint != now.accessPoint;
    m_hasStateToTell |= isOther || former.state != now.state || former.text != now.text || former.powered != now.powered
        || former.joiningSsid != now.joiningSsid;
    const QPointer<WifiNetworkModel> model(networks);
    if (isOther && now.accessPoint.isEmpty())
        model->setInUse(QString(), NetworkSecurity());
    else if (isOther)
        model->setInUse(now.accessPoint.ssid(), PublishedSecurity().ofConnected(now.accessPoint));
    if (model && former.joiningSsid != now.joiningSsid)
        model->setJoining(now.joiningSsid);
}

/*! The latest one of this kind. */
template<typename Request>
const Request *WifiController::Private::underWay() const
{
    for (auto it = requests.crbegin(); it != requests.crend(); ++it) {
        const auto *request = qobject_cast<const Request *>(it->data());
        if (request && request->isUnderWay())
            return request;
    }
    return nullptr;
}

bool WifiController::Private::mayLook() const
{
    return isLooking && q->availability() == Ready && station && station->state().powered && !station->isJoining()
        && !station->isScanning();
}

void WifiController::Private::planToLook()
{
    if (!mayLook()) {
        m_lookTimer.stop();
        return;
    }
    const qint64 since = station->sinceScan();
    m_lookTimer.start(since < 0 ? 0 : int(std::max<qint64>(0, scanPause - since)));
}

} // namespace morvek
