// SPDX-License-Identifier: Apache-2.0
#include "wantednetwork.h"

#include "eventlog.h"
#include "managerclient.h"
#include "managerrefusal.h"
#include "radioscan.h"
#include "restoration.h"
#include "seenaccesspoint.h"
#include "stationprofile.h"
#include "supplicantwatch.h"
#include "wifitext.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace morvek {

namespace {

// A handshake also fails while one of the sides is not ready yet.
constexpr int MostFailures = 2;
// A scan is delayed by the manager when it comes soon after another one.
constexpr std::chrono::seconds LongestScan {15};
// A radio that has been switched on, or plugged in, takes a second or two.
constexpr std::chrono::seconds LongestStart {10};
// The manager itself scans ever more rarely.
constexpr std::chrono::seconds ScanInterval {20};

QVector<SeenAccessPoint> waysTo(NMDeviceWifi *radio, const WifiNetwork &network)
{
    QVector<SeenAccessPoint> all = SeenAccessPoint::readAll(radio);
    const auto unfit = [&network](const SeenAccessPoint &one) {
        return one.ssid != network.ssid || !one.infrastructure
            || AccessPointText::wayToJoin(one.security, !network.passkey.isEmpty()) == AccessPointText::Way::None;
    };
    all.erase(std::remove_if(all.begin(), all.end(), unfit), all.end());
    std::stable_sort(all.begin(), all.end(), [](const SeenAccessPoint &one, const SeenAccessPoint &other) {
        return one.percent > other.percent;
    });
    return all;
}

} // namespace

WantedNetwork::WantedNetwork(ManagerClient *client, RadioScan *scan, Restoration *restoration, const EventLog *log,
                             bool remember, QObject *parent)
    : QObject(parent),
      m_client(client),
      m_scan(scan),
      m_restoration(restoration),
      m_log(log),
      m_remembers(remember)
{
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, &WantedNetwork::onScanned);
    connect(scan, &RadioScan::finished, this, &WantedNetwork::onScanned);
    connect(client, &ManagerClient::runningChanged, this, [this](bool isRunning) {
        m_isBack = true;
        if (!isRunning && m_answer && !m_wish.attempt)
            refuse(managerGone());
    });
    connect(client, &ManagerClient::stateChanged, this,
            [this](NMDevice *device, NMDeviceState now, NMDeviceState, NMDeviceStateReason reason) {
                onStateChanged(device, now, reason);
            });
    connect(scan->supplicant(), &SupplicantWatch::refused, this, &WantedNetwork::onPasskeyRefused);
}

WantedNetwork::~WantedNetwork() = default;

void WantedNetwork::select(int identifier, const WifiNetwork &network, const AnswerCall &answer)
{
    overtake();
    if (m_wish.attempt && m_wish.attempt->isJoined())
        m_former = m_wish;
    else
        forget(&m_wish);
    m_wish = {identifier, network, nullptr};
    m_answer = answer;
    m_isPending = true;
    m_failures = 0;
    NMActiveConnection *before = nm_device_get_active_connection(NM_DEVICE(m_client->radio()));
    m_before = before ? nm_object_get_path(NM_OBJECT(before)) : "";
    m_wasHeld = !m_held.isEmpty();
    hold(true);
    await(Blocked);
    proceed();
}

void WantedNetwork::leave(const AnswerCall &answer)
{
    overtake();
    forget(&m_former);
    forget(&m_wish);
    m_isPending = false;
    await(Idle);
    hold(true);
    NMDevice *radio = NM_DEVICE(m_client->radio());
    if (!radio || m_isLent || !nm_device_get_active_connection(radio)) {
        answer({});
        return;
    }
    m_restoration->disconnects(radio);
    nm_device_disconnect_async(
        radio, nullptr, AsyncCall::ready, AsyncCall::make(this, [answer](GObject *source, GAsyncResult *result) {
            GErrorKeeper error;
            nm_device_disconnect_finish(NM_DEVICE(source), result, &error);
            // What is to be left may have ended by itself.
            const bool isLeft =
                !error || (error.get()->domain == NM_DEVICE_ERROR && error.get()->code == NM_DEVICE_ERROR_NOT_ACTIVE);
            answer({isLeft ? Refusal() : refusalOf(error.get()), {}});
        }));
}

bool WantedNetwork::takeBack()
{
    const bool isWanted = std::exchange(m_isLent, false) && m_step != Idle;
    if (isWanted && m_step != Joining) {
        await(Blocked);
        proceed();
    }
    return isWanted;
}

void WantedNetwork::look()
{
    if (!m_client->isRunning())
        return;
    NMDevice *radio = NM_DEVICE(m_client->radio());
    const bool isBack = std::exchange(m_isBack, false);
    if (!m_held.isEmpty() && radio && (isBack || m_held != nm_object_get_path(NM_OBJECT(radio))))
        hold(true);
    if (m_wish.attempt)
        m_wish.attempt->look();
    if (m_isPending && isTakenByOthers()) {
        giveUp();
        return;
    }
    // It is tried again as soon as the radio is back.
    if (m_step > Joining && (isBack || !isUsable()))
        await(Blocked);
    proceed();
}

void WantedNetwork::setJoined(NMDevice *radio)
{
    if (!isAt(radio) || m_wish.attempt->isJoined())
        return;
    m_wish.attempt->setJoined();
    m_isPending = false;
    m_failures = 0;
    if (m_remembers)
        m_wish.attempt->keep(m_log);
}

bool WantedNetwork::isUsable() const
{
    NMDevice *radio = NM_DEVICE(m_client->radio());
    return radio && nm_device_get_state(radio) >= NM_DEVICE_STATE_DISCONNECTED;
}

bool WantedNetwork::isFree() const
{
    NMDevice *radio = NM_DEVICE(m_client->radio());
    if (!radio || !m_client->isRunning() || m_isLent)
        return false;
    NMActiveConnection *active = nm_device_get_active_connection(radio);
    const NMDeviceState state = nm_device_get_state(radio);
    return state == NM_DEVICE_STATE_DISCONNECTED
        || (state > NM_DEVICE_STATE_DISCONNECTED && active && m_before == nm_object_get_path(NM_OBJECT(active)));
}

/*! Somebody else has had the radio join another network, which does not wait for this one. */
bool WantedNetwork::isTakenByOthers() const
{
    NMDevice *radio = NM_DEVICE(m_client->radio());
    NMActiveConnection *active = radio ? nm_device_get_active_connection(radio) : nullptr;
    const NMDeviceState state = radio ? nm_device_get_state(radio) : NM_DEVICE_STATE_UNKNOWN;
    return active && !m_wish.attempt && m_before != nm_object_get_path(NM_OBJECT(active))
        && state >= NM_DEVICE_STATE_IP_CONFIG && state <= NM_DEVICE_STATE_ACTIVATED;
}

bool WantedNetwork::isInSight() const
{
    return !waysTo(m_client->radio(), m_wish.network).isEmpty();
}

void WantedNetwork::proceed()
{
    if (m_step != Blocked || !isFree())
        return;
    if (isInSight())
        join();
    else
        await(Looking);
}

void WantedNetwork::await(Step step)
{
    m_step = step;
    if (step == Looking || step == Verifying) {
        m_scan->request(m_wish.network.ssid);
        m_patience.start(LongestScan);
    } else if (step == Blocked) {
        m_patience.start(LongestStart);
    } else if (step == Waiting) {
        m_patience.start(ScanInterval);
    } else {
        m_patience.stop();
    }
}

/*! The radio has scanned, or nobody waits for that any longer. */
void WantedNetwork::onScanned()
{
    const bool isOver = !m_patience.isActive();
    if (m_step == Blocked && m_answer && isOver)
        refuse({Refusal::RadioOff, QStringLiteral("the radio is not ready")});
    if (m_step <= Joining)
        return;
    if (!m_client->isRunning() || !m_client->radio()) {
        await(Blocked);
        return;
    }
    const bool inSight = isInSight();
    if (m_step == Verifying) {
        inSight && !isOver ? countFailure() : tellNotFound();
    } else if (!isFree()) {
        await(Blocked);
    } else if (inSight || (m_step == Looking && m_isPending)) {
        join();
    } else {
        if (m_step == Waiting && isOver)
            m_scan->request(m_wish.network.ssid);
        await(Waiting);
    }
}

/*! At the best access point in sight; without any it may be one that does not tell its name. */
void WantedNetwork::join()
{
    await(Joining);
    const WifiNetwork &network = m_wish.network;
    const QVector<SeenAccessPoint> ways = waysTo(m_client->radio(), network);
    const bool isHidden = ways.isEmpty();
    const bool hasPasskey = !network.passkey.isEmpty();
    const auto way = isHidden ? hasPasskey ? AccessPointText::Way::Psk : AccessPointText::Way::Open
                              : AccessPointText::wayToJoin(ways.first().security, hasPasskey);
    GRef<NMConnection> profile = StationProfile::make(network, way, isHidden);
    if (!m_remembers)
        m_restoration->activates(NM_DEVICE(m_client->radio()),
                                 QString::fromUtf8(nm_connection_get_uuid(profile.get())));
    auto *attempt = new JoinAttempt(m_client, m_restoration, std::move(profile), this);
    m_wish.attempt = attempt;
    connect(attempt, &JoinAttempt::answered, this,
            [this, attempt](const Refusal &refusal) { onAnswered(attempt, refusal); });
    connect(attempt, &JoinAttempt::failed, this,
            [this, attempt](JoinAttempt::Failure failure) { onFailed(attempt, failure); });
    attempt->start(isHidden ? nullptr : ways.first().path.constData(), m_remembers);
}

void WantedNetwork::onAnswered(JoinAttempt *attempt, const Refusal &refusal)
{
    if (!refusal) {
        m_before.clear();
        if (m_former.attempt)
            m_former.attempt->deleteLater();
        m_former = {};
        reply({});
        Q_EMIT accepted();
        return;
    }
    attempt->deleteLater();
    m_wish.attempt = nullptr;
    if (!m_answer) {
        m_log->trouble(QStringLiteral("the network manager does not join %1: %2")
                           .arg(WifiText::quoted(m_wish.network.ssid), refusal.text));
        tellNotFound();
        return;
    }
    refuse(refusal);
}

void WantedNetwork::onFailed(JoinAttempt *attempt, JoinAttempt::Failure failure)
{
    attempt->deleteLater();
    if (attempt == m_former.attempt) {
        m_former = {};
        return;
    }
    m_wish.attempt = nullptr;
    const bool hasPasskey = !m_wish.network.passkey.isEmpty();
    if (failure == JoinAttempt::NotLetIn && hasPasskey)
        countFailure();
    else if (failure == JoinAttempt::NotFound && hasPasskey && !attempt->isJoined())
        await(Verifying);
    else if (failure == JoinAttempt::Left)
        endWish(m_isPending);
    else if (failure == JoinAttempt::Ended)
        await(isUsable() ? Waiting : Blocked);
    else
        tellNotFound();
}

/*! With some kinds of protection it is known at once; the manager tries that for half a minute. */
void WantedNetwork::onPasskeyRefused()
{
    NMDevice *radio = NM_DEVICE(m_client->radio());
    if (m_step == Joining && radio && isAt(radio) && !m_wish.attempt->isJoined() && !m_wish.network.passkey.isEmpty())
        m_wish.attempt->giveUp();
}

/*! Who disconnects the radio by hand wants it to stay so, also when it was in another network. */
void WantedNetwork::onStateChanged(NMDevice *device, NMDeviceState now, NMDeviceStateReason reason)
{
    if (device == NM_DEVICE(m_client->radio()) && JoinAttempt::failureOf(now, reason) == JoinAttempt::Left
        && !m_wish.attempt && !m_isPending && !m_isLent)
        endWish(false);
}

void WantedNetwork::countFailure()
{
    if (++m_failures < MostFailures) {
        await(Blocked);
        proceed();
    } else {
        giveUp();
    }
}

void WantedNetwork::tellNotFound()
{
    m_failures = 0;
    await(Waiting);
    if (m_isPending)
        Q_EMIT notFound();
}

/*! Whoever wants this network again has to select it. */
void WantedNetwork::giveUp()
{
    // First, so that whoever has waited for the network hears of no other one that the manager joins now.
    endWish(true);
    hold(false);
}

void WantedNetwork::endWish(bool isTold)
{
    const Wish wish = std::exchange(m_wish, Wish());
    m_isPending = false;
    await(Idle);
    overtake();
    if (isTold)
        Q_EMIT notLetIn(wish.identifier, wish.network.ssid);
}

/*! The radio stays where it is, and joins by itself if it did so before. */
void WantedNetwork::refuse(const Refusal &refusal)
{
    m_wish = std::exchange(m_former, Wish());
    m_isPending = false;
    await(m_wish.attempt ? Joining : Idle);
    if (!m_wish.attempt && !m_wasHeld)
        hold(false);
    reply(refusal);
}

/*! A refusal would end what its client waits for, which may be another network by now. */
void WantedNetwork::overtake()
{
    reply({});
}

void WantedNetwork::reply(const Refusal &refusal)
{
    if (const AnswerCall answer = std::exchange(m_answer, nullptr))
        answer({refusal, {}});
}

void WantedNetwork::forget(Wish *wish)
{
    if (wish->attempt) {
        wish->attempt->disconnect(this);
        wish->attempt->abandon();
    }
    *wish = {};
}

/*! Keeps the radio from joining by itself, or lets it do that again, as before. */
void WantedNetwork::hold(bool holds)
{
    NMDevice *radio = NM_DEVICE(m_client->radio());
    const QByteArray path = radio ? nm_object_get_path(NM_OBJECT(radio)) : "";
    if (radio && holds && m_held != path)
        m_joinedByItself = m_client->autoconnect(radio);
    m_held = holds ? path : QByteArray();
    if (!radio)
        return;
    m_restoration->setAutoconnect(radio, !holds && m_joinedByItself);
}

} // namespace morvek
