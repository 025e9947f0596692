// SPDX-License-Identifier: Apache-2.0
#include "managedhotspot.h"

#include "eventlog.h"
#include "firsthotspot.h"
#include "hotspotplace.h"
#include "hotspotsettings.h"
#include "managerrefusal.h"
#include "restoration.h"
#include "wirenames.h"
#include "world.h"

#include <QtCore/QSysInfo>
#include <QtCore/QVersionNumber>

#include <algorithm>
#include <utility>

namespace morvek {

namespace {

const QVersionNumber FirstWithIsolation {1, 28};

QString reasonText(NMDeviceStateReason reason)
{
    const std::unique_ptr<GEnumClass, decltype(&g_type_class_unref)> all(
        static_cast<GEnumClass *>(g_type_class_ref(NM_TYPE_DEVICE_STATE_REASON)), g_type_class_unref);
    const GEnumValue *value = g_enum_get_value(all.get(), reason);
    return value ? QString::fromUtf8(value->value_nick).replace(QLatin1Char('-'), QLatin1Char(' '))
                 : QStringLiteral("reason %1").arg(int(reason));
}

bool isActive(const ManagerClient &client, NMActiveConnection *active)
{
    const GPtrArray *all = nm_client_get_active_connections(client.get());
    return all && g_ptr_array_find(const_cast<GPtrArray *>(all), active, nullptr)
        && nm_active_connection_get_state(active) != NM_ACTIVE_CONNECTION_STATE_DEACTIVATED;
}

} // namespace

ManagedHotspot::ManagedHotspot(ManagerClient *client, Restoration *restoration, RadioLoan *loan, World *world,
                               const Pace *pace, const EventLog *log, QObject *parent, const QString &leases)
    : QObject(parent),
      m_profile(FirstHotspot::profile(QSysInfo::machineHostName())),
      m_client(client),
      m_world(world),
      m_log(log),
      m_restoration(restoration),
      m_radio(client, restoration, loan),
      m_inactivity(pace, log, leases)
{
    tell(false);
    connect(client, &ManagerClient::changed, this, &ManagedHotspot::look);
    connect(client, &ManagerClient::runningChanged, this, &ManagedHotspot::onManager);
    connect(client, &ManagerClient::stateChanged, this,
            [this](NMDevice *device, NMDeviceState now, NMDeviceState, NMDeviceStateReason reason) {
                onStateChanged(device, now, reason);
            });
    connect(&m_inactivity, &HotspotInactivity::expired, this, [this] {
        m_log->happened("hotspot", QStringLiteral("stops, as nobody has joined it"));
        stop([](const Answer &) {});
    });
}

ManagedHotspot::~ManagedHotspot() = default;

void ManagedHotspot::setProfile(const QJsonObject &profile)
{
    m_profile = profile;
    m_running = profile;
    if ((m_step == Starting || m_step == Up) && !isRight())
        deactivate();
    else if (m_step == Up)
        m_inactivity.begin(m_radio.interface(), HotspotProfile::inactivityTime(m_running));
}

void ManagedHotspot::start(const QJsonObject &profile, const AnswerCall &answer)
{
    if (!m_client->isRunning()) {
        answer({managerGone(), {}});
        return;
    }
    if (m_step == Up) {
        answer({});
        return;
    }
    m_starts += answer;
    if (!std::exchange(m_wanted, true) || m_step == Down)
        m_running = profile;
    if (m_step == Down)
        begin();
}

void ManagedHotspot::stop(const AnswerCall &answer)
{
    m_wanted = false;
    answerAll(&m_starts, {Refusal::ManagerRefused, QStringLiteral("stopped before it was up")});
    if (m_step == Down) {
        m_radio.giveBack();
        answer({m_client->isRunning() ? Refusal() : managerGone(), {}});
        return;
    }
    m_stops += answer;
    if (m_step == Starting || m_step == Up)
        deactivate();
}

void ManagedHotspot::begin()
{
    sayOnce(QStringLiteral("\"max_num_sta\", \"block_conn\", \"dhcp_lease_time\" and \"wantype\" of the hotspot's "
                           "profile are kept, and have no effect: the network manager knows nothing of the kind"));
    m_network = HotspotProfile::network(m_running);
    m_step = Asking;
    Refusal refusal;
    if (NMDeviceWifi *radio = takeRadio(&refusal))
        ask(radio);
    else
        onDown(refusal);
}

/*! The one that it has already, as long as that can be used. */
NMDeviceWifi *ManagedHotspot::takeRadio(Refusal *refusal)
{
    NMDeviceWifi *radio = m_radio.get();
    if (!radio || HotspotPlace::objection(*m_client, radio))
        radio = HotspotPlace::radio(*m_client, refusal);
    if (radio)
        m_radio.take(radio);
    return radio;
}

void ManagedHotspot::ask(NMDeviceWifi *radio)
{
    const HotspotChannel channel = HotspotChannel::choose(m_network.in5GHz, HotspotPlace::air(*m_client, radio));
    if (channel.number == 0) {
        onDown({Refusal::ManagerRefused, channel.remark});
        return;
    }
    if (!channel.remark.isEmpty())
        sayOnce(QStringLiteral("the hotspot is on channel %1: ").arg(channel.number) + channel.remark);
    HotspotSubnet asked;
    if (!HotspotSubnet::read(m_network.address, m_network.netmask, &asked)) {
        onDown({Refusal::BadValue, QStringLiteral("the profile has no address for the hotspot")});
        return;
    }
    const HotspotSubnet subnet = HotspotSubnet::choose(asked, HotspotPlace::takenSubnets(*m_client, radio));
    if (subnet.address != asked.address)
        sayOnce(QStringLiteral("the hotspot has the address %1: another interface is in the network of %2")
                    .arg(subnet.toString(), asked.toString()));
    const bool canIsolate =
        QVersionNumber::fromString(QString::fromUtf8(nm_client_get_version(m_client->get()))) >= FirstWithIsolation;
    if (m_network.isolated && !canIsolate)
        sayOnce(QStringLiteral("\"privacy\" of the hotspot's profile has no effect: network managers before %1 cannot "
                               "part clients from one another")
                    .arg(FirstWithIsolation.toString()));
    const std::unique_ptr<char, decltype(&g_free)> uuid(nm_utils_uuid_generate(), g_free);
    const GRef<NMConnection> settings =
        HotspotSettings::make(m_network, uuid.get(), m_radio.interface(), channel, subnet, canIsolate);
    const auto onEnd = [this, attempt = ++m_attempt](GObject *source, GAsyncResult *result) {
        GErrorKeeper error;
        const GRef<NMActiveConnection> active(
            nm_client_add_and_activate_connection2_finish(NM_CLIENT(source), result, nullptr, &error));
        if (attempt == m_attempt)
            onAsked(active.get(), active ? Refusal() : refusalOf(error.get()));
    };
    m_reason = NM_DEVICE_STATE_REASON_NONE;
    m_restoration->activates(NM_DEVICE(radio), QString::fromUtf8(uuid.get()));
    nm_client_add_and_activate_connection2(m_client->get(), settings.get(), NM_DEVICE(radio), nullptr,
                                           ManagerClient::volatileOptions(true), nullptr, AsyncCall::ready,
                                           AsyncCall::make(this, onEnd));
}

void ManagedHotspot::onAsked(NMActiveConnection *active, const Refusal &refusal)
{
    if (!active) { // it may have ended before it was seen
        onDown(m_reason == NM_DEVICE_STATE_REASON_NONE ? refusal : failure());
        return;
    }
    m_step = Starting;
    m_active = refTo(active);
    m_activeNotify = SignalConnection::make<GParamSpec *>(active, "notify::" NM_ACTIVE_CONNECTION_STATE,
                                                          [this](GParamSpec *) { look(); });
    if (isRight())
        look();
    else
        deactivate();
}

void ManagedHotspot::deactivate()
{
    m_step = Stopping;
    m_inactivity.end();
    const auto onEnd = [this, attempt = m_attempt](GObject *source, GAsyncResult *result) {
        GErrorKeeper error;
        nm_client_deactivate_connection_finish(NM_CLIENT(source), result, &error);
        if (error && attempt == m_attempt)
            onRefusedToStop(refusalOf(error.get()));
    };
    if (NMDeviceWifi *radio = m_radio.get())
        m_restoration->disconnects(NM_DEVICE(radio));
    nm_client_deactivate_connection_async(m_client->get(), m_active.get(), nullptr, AsyncCall::ready,
                                          AsyncCall::make(this, onEnd));
}

void ManagedHotspot::onRefusedToStop(const Refusal &refusal)
{
    m_log->trouble(QStringLiteral("the hotspot cannot be stopped: ") + refusal.text);
    m_wanted = true;
    m_step = Starting;
    answerAll(&m_stops, refusal);
    look();
}

/*! Whether the manager was asked for what is wanted. */
bool ManagedHotspot::isRight() const
{
    return m_wanted && m_network == HotspotProfile::network(m_running);
}

void ManagedHotspot::look()
{
    if (m_step == Down)
        takeUpAgain();
    if (!m_active)
        return;
    NMDeviceWifi *radio = m_radio.get();
    if (!isActive(*m_client, m_active.get()))
        onDown(failure());
    else if (m_step == Starting
             && nm_active_connection_get_state(m_active.get()) == NM_ACTIVE_CONNECTION_STATE_ACTIVATED && radio
             && nm_device_wifi_get_mode(radio) == NM_802_11_MODE_AP)
        onUp();
}

void ManagedHotspot::onUp()
{
    m_step = Up;
    tell(true);
    m_inactivity.begin(m_radio.interface(), HotspotProfile::inactivityTime(m_running));
    answerAll(&m_starts, {});
}

void ManagedHotspot::onDown(const Refusal &refusal)
{
    const Step step = std::exchange(m_step, Down);
    ++m_attempt;
    m_activeNotify = {};
    m_active.reset();
    m_inactivity.end();
    tell(false);
    const bool isGone = !m_client->isRunning();
    answerAll(&m_stops, isGone ? refusal : Refusal());
    if (m_wanted && step == Stopping && !isGone) {
        begin();
        return;
    }
    if (m_wanted) {
        m_log->trouble(
            (step == Up ? QStringLiteral("the hotspot has ended: ") : QStringLiteral("the hotspot does not start: "))
            + refusal.text);
        // Who was told of a failure has to start it again. What ran goes on when the radio can be used again.
        NMDeviceWifi *radio = m_radio.get();
        m_wanted = m_starts.isEmpty()
            && (!radio || m_reason == NM_DEVICE_STATE_REASON_SLEEPING || HotspotPlace::objection(*m_client, radio));
    }
    if (!m_wanted) {
        m_running = {}; // its passphrase is of no use any more
        m_network = {};
        m_radio.giveBack(m_reason == NM_DEVICE_STATE_REASON_NEW_ACTIVATION);
    }
    answerAll(&m_starts, refusal);
}

void ManagedHotspot::onManager(bool running)
{
    if (!running && m_step != Down)
        onDown(managerGone());
}

void ManagedHotspot::takeUpAgain()
{
    NMDeviceWifi *radio = m_radio.get(); // which it gives back as soon as nobody wants it
    if (radio && nm_device_get_state(NM_DEVICE(radio)) <= NM_DEVICE_STATE_ACTIVATED
        && !HotspotPlace::objection(*m_client, radio))
        begin();
}

void ManagedHotspot::onStateChanged(NMDevice *device, NMDeviceState now, NMDeviceStateReason reason)
{
    if (static_cast<void *>(device) != m_radio.get())
        return;
    if (now == NM_DEVICE_STATE_PREPARE) // what was there before has gone
        m_reason = NM_DEVICE_STATE_REASON_NONE;
    else if (m_reason == NM_DEVICE_STATE_REASON_NONE
             && (now <= NM_DEVICE_STATE_DISCONNECTED || now >= NM_DEVICE_STATE_DEACTIVATING))
        m_reason = reason; // that of the first step is the one that says why
}

Refusal ManagedHotspot::failure() const
{
    NMDeviceWifi *radio = m_radio.get();
    if (!m_client->isRunning())
        return managerGone();
    if (!radio)
        return {Refusal::ManagerRefused, QStringLiteral("the radio has gone")};
    if (Refusal objection = HotspotPlace::objection(*m_client, radio))
        return objection;
    return {Refusal::ManagerRefused, QStringLiteral("the network manager has ended it: ") + reasonText(m_reason)};
}

void ManagedHotspot::answerAll(QVector<AnswerCall> *answers, const Refusal &refusal) const
{
    const QVector<AnswerCall> waiting = std::exchange(*answers, {});
    for (const AnswerCall &answer : waiting)
        answer({refusal, {}});
}

void ManagedHotspot::sayOnce(const QString &text)
{
    if (m_said.contains(text))
        return;
    m_said += text;
    m_log->trouble(text);
}

void ManagedHotspot::tell(bool active)
{
    m_world->updateStatus(Service::Tethering, {{Wire::State, active ? Wire::Active : Wire::Inactive}});
}

} // namespace morvek
