// SPDX-License-Identifier: Apache-2.0
#include "joinattempt.h"

#include "eventlog.h"
#include "managerclient.h"
#include "managerrefusal.h"
#include "restoration.h"
#include "stationprofile.h"
#include "wifitext.h"

#include <utility>

namespace morvek {

namespace {

void ignore(GObject *, GAsyncResult *, void *) { }

} // namespace

JoinAttempt::Failure JoinAttempt::failureOf(NMDeviceState state, NMDeviceStateReason reason)
{
    if (state == NM_DEVICE_STATE_DEACTIVATING && reason == NM_DEVICE_STATE_REASON_USER_REQUESTED)
        return Left;
    if (state != NM_DEVICE_STATE_FAILED)
        return Ended;
    switch (reason) {
    case NM_DEVICE_STATE_REASON_NO_SECRETS:
    case NM_DEVICE_STATE_REASON_SUPPLICANT_DISCONNECT:
    case NM_DEVICE_STATE_REASON_SUPPLICANT_CONFIG_FAILED:
    case NM_DEVICE_STATE_REASON_SUPPLICANT_FAILED:
    case NM_DEVICE_STATE_REASON_SUPPLICANT_TIMEOUT:
        return NotLetIn;
    case NM_DEVICE_STATE_REASON_SSID_NOT_FOUND:
        return NotFound;
    default:
        return Ended;
    }
}

JoinAttempt::JoinAttempt(ManagerClient *client, Restoration *restoration, GRef<NMConnection> profile, QObject *parent)
    : QObject(parent),
      m_client(client),
      m_restoration(restoration),
      m_profile(std::move(profile))
{
    connect(client, &ManagerClient::stateChanged, this, &JoinAttempt::onState);
}

JoinAttempt::~JoinAttempt() = default;

void JoinAttempt::start(const char *accessPoint, bool kept)
{
    m_isKept = kept;
    nm_client_add_and_activate_connection2(
        m_client->get(), m_profile.get(), NM_DEVICE(m_client->radio()), accessPoint,
        ManagerClient::volatileOptions(!kept), nullptr, AsyncCall::ready,
        AsyncCall::make(this, [this](GObject *source, GAsyncResult *result) {
            GErrorKeeper error;
            const GRef<NMActiveConnection> active(
                nm_client_add_and_activate_connection2_finish(NM_CLIENT(source), result, nullptr, &error));
            onAnswer(active.get(), error.get());
        }));
}

bool JoinAttempt::isAt(NMDevice *device) const
{
    return m_active && device && nm_device_get_active_connection(device) == m_active.get();
}

void JoinAttempt::onAnswer(NMActiveConnection *active, const GError *error)
{
    if (m_isAbandoned) {
        m_active = refTo(active);
        leave();
        return;
    }
    // The manager has taken it on, and it has failed before its objects could be read.
    const bool isOver =
        error && error->domain == NM_CLIENT_ERROR && error->code == NM_CLIENT_ERROR_OBJECT_CREATION_FAILED;
    m_hasFailed = error && !isOver;
    m_active = refTo(active);
    Q_EMIT answered(m_hasFailed ? refusalOf(error) : Refusal());
    if (isOver)
        fail();
    if (!active || m_isAbandoned)
        return;
    m_activeState = SignalConnection::make<GParamSpec *>(active, "notify::" NM_ACTIVE_CONNECTION_STATE,
                                                         [this](GParamSpec *) { look(); });
    if (m_failure == NotLetIn)
        leave();
    look();
}

void JoinAttempt::onState(NMDevice *device, NMDeviceState now, NMDeviceState, NMDeviceStateReason reason)
{
    if (device != NM_DEVICE(m_client->radio()))
        return;
    // What came before is of the radio's former connection.
    if (now == NM_DEVICE_STATE_PREPARE)
        m_failure = Ended;
    if (m_failure == Ended)
        m_failure = failureOf(now, reason);
    // With the passkey given it is asked for without a reason, on the way. Asked again, it was wrong; then the manager
    // would wait for somebody who types in another one.
    if (now == NM_DEVICE_STATE_NEED_AUTH && reason != NM_DEVICE_STATE_REASON_NONE)
        giveUp();
}

void JoinAttempt::look()
{
    if (!m_active)
        return;
    const bool isGone = !nm_object_get_client(NM_OBJECT(m_active.get())); // with the manager, perhaps
    if (isGone || nm_active_connection_get_state(m_active.get()) == NM_ACTIVE_CONNECTION_STATE_DEACTIVATED)
        fail();
}

void JoinAttempt::giveUp()
{
    if (std::exchange(m_failure, NotLetIn) != NotLetIn)
        leave();
}

void JoinAttempt::abandon()
{
    m_isAbandoned = true;
    m_client->disconnect(this);
    if (m_active || m_hasFailed)
        leave();
}

void JoinAttempt::leave()
{
    if (m_active && !m_hasFailed && m_client->isRunning()) {
        if (isAt(NM_DEVICE(m_client->radio())))
            m_restoration->disconnects(NM_DEVICE(m_client->radio()));
        nm_client_deactivate_connection_async(m_client->get(), m_active.get(), nullptr, ignore, nullptr);
    }
    if (m_isAbandoned)
        deleteLater();
}

void JoinAttempt::fail()
{
    if (!std::exchange(m_hasFailed, true) && !m_isAbandoned)
        Q_EMIT failed(m_failure);
}

void JoinAttempt::keep(const EventLog *log)
{
    NMRemoteConnection *stored = m_isKept && m_active ? nm_active_connection_get_connection(m_active.get()) : nullptr;
    if (!stored)
        return;
    StationProfile::setKept(m_profile.get());
    const auto ended = [this, log](GObject *source, GAsyncResult *result) {
        GErrorKeeper error;
        const Variant answer(nm_remote_connection_update2_finish(NM_REMOTE_CONNECTION(source), result, &error));
        if (error)
            log->trouble(
                QStringLiteral("the network manager does not remember %1: %2")
                    .arg(WifiText::quoted(StationProfile::ssidOf(m_profile.get())), refusalOf(error.get()).text));
        else
            removeFormer(NM_REMOTE_CONNECTION(source));
    };
    nm_remote_connection_update2(stored, nm_connection_to_dbus(m_profile.get(), NM_CONNECTION_SERIALIZE_ALL),
                                 NM_SETTINGS_UPDATE2_FLAG_TO_DISK, nullptr, nullptr, AsyncCall::ready,
                                 AsyncCall::make(this, ended));
}

void JoinAttempt::removeFormer(NMRemoteConnection *stored)
{
    const QString ssid = StationProfile::ssidOf(m_profile.get());
    const GPtrArray *all = nm_client_get_connections(m_client->get());
    for (guint i = 0; all && i < all->len; ++i) {
        auto *one = static_cast<NMRemoteConnection *>(all->pdata[i]);
        if (one != stored && StationProfile::isKept(NM_CONNECTION(one))
            && StationProfile::ssidOf(NM_CONNECTION(one)) == ssid)
            nm_remote_connection_delete_async(one, nullptr, ignore, nullptr);
    }
}

} // namespace morvek
