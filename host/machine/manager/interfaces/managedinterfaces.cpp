// SPDX-License-Identifier: Apache-2.0
#include "managedinterfaces.h"

#include "deviceattributes.h"
#include "eventlog.h"
#include "interfacemirror.h"
#include "ipv4settings.h"
#include "managerclient.h"
#include "managerrefusal.h"
#include "restoration.h"
#include "wirenames.h"
#include "world.h"

#include <chrono>

namespace morvek {

namespace {

using namespace std::chrono_literals;

// So long the preferred interface may be without its address while it gets another one.
constexpr auto Grace = 1s;
// So long the manager may need to find its devices after it has come back.
constexpr auto Settling = 5s;
// Addresses that the manager still shows after this are not its own.
constexpr auto ReleaseTime = 1s;
// A manager that ends may need so long after it has taken the leases away.
constexpr auto EndingTime = 2s;

/*! Of the profiles that \a device can be connected with, the one that the manager would take; null when there is none.
 */
NMRemoteConnection *bestProfile(NMDevice *device)
{
    NMRemoteConnection *best = nullptr;
    std::pair<int, guint64> bestRank;
    const GPtrArray *all = nm_device_get_available_connections(device);
    for (guint i = 0; all && i < all->len; ++i) {
        auto *profile = static_cast<NMRemoteConnection *>(all->pdata[i]);
        NMSettingConnection *setting = nm_connection_get_setting_connection(NM_CONNECTION(profile));
        const std::pair<int, guint64> rank(nm_setting_connection_get_autoconnect_priority(setting),
                                           nm_setting_connection_get_timestamp(setting));
        if (!best || rank > bestRank) {
            best = profile;
            bestRank = rank;
        }
    }
    return best;
}

QByteArray connectionOf(NMDevice *device)
{
    NMActiveConnection *connection = nm_device_get_active_connection(device);
    return connection ? QByteArray(nm_active_connection_get_uuid(connection)) : QByteArray();
}

QString addressOf(const InterfaceSettings &settings)
{
    return settings.address + QLatin1Char('/') + settings.netmask;
}

} // namespace

ManagedInterfaces::ManagedInterfaces(ManagerClient *client, Restoration *restoration, World *world, const EventLog *log,
                                     QObject *parent)
    : QObject(parent),
      m_client(client),
      m_restoration(restoration),
      m_world(world),
      m_log(log)
{
    m_settling.setSingleShot(true);
    m_settling.setInterval(Settling);
    m_grace.setSingleShot(true);
    m_grace.setInterval(Grace);
    connect(&m_settling, &QTimer::timeout, this, &ManagedInterfaces::synchronise);
    connect(&m_grace, &QTimer::timeout, this, &ManagedInterfaces::synchronise);
    connect(client, &ManagerClient::changed, this, &ManagedInterfaces::synchronise);
    connect(client, &ManagerClient::runningChanged, this, &ManagedInterfaces::onRunningChanged);
    connect(client, &ManagerClient::stateChanged, this, &ManagedInterfaces::onStateChanged);
    synchronise();
}

ManagedInterfaces::~ManagedInterfaces() = default;

void ManagedInterfaces::carryOut(const NetworkingRequest &request, const AnswerCall &answer)
{
    const QString name = request.interface;
    // Nothing is kept of names that clients may have made up.
    if (!m_world->hasInterface(name)) {
        answer({Refusal::noInterface(name), {}});
        return;
    }
    Station &station = m_stations[name];
    station.orders.enqueue({request, answer});
    if (station.orders.size() == 1)
        begin(name);
}

void ManagedInterfaces::begin(const QString &name)
{
    if (name == preferred()) {
        m_spared = name;
        m_grace.start();
    }
    const bool connects = m_stations[name].orders.head().request.kind == NetworkingRequest::Connect;
    NMDevice *device = m_client->device(name);
    if (!m_client->isRunning())
        finish(name, managerGone());
    else if (!device)
        finish(name, Refusal::noInterface(name));
    else if (const Refusal refusal = m_client->refusesToTouch(device))
        finish(name, refusal);
    else if (nm_device_get_state(device) <= NM_DEVICE_STATE_UNMANAGED)
        finish(name, {Refusal::Unmanaged, QStringLiteral("the network manager leaves \"%1\" alone").arg(name)});
    else if (DeviceAttributes::isActive(device))
        readApplied(name);
    else if (!connects)
        finish(name, {}); // there is nothing to take: what comes by itself is taken
    else if (nm_device_get_state(device) < NM_DEVICE_STATE_DISCONNECTED)
        finish(name, Refusal::noLink(name));
    else
        activate(name, device);
}

void ManagedInterfaces::readApplied(const QString &name)
{
    const auto call = [this, name](GObject *device, GAsyncResult *result) {
        GErrorKeeper error;
        guint64 version = 0;
        const GRef<NMConnection> present(
            nm_device_get_applied_connection_finish(NM_DEVICE(device), result, &version, &error));
        if (present)
            reapply(name, present.get(), version);
        else
            finish(name, refusalOf(error.get()));
    };
    NMDevice *device = m_client->device(name);
    if (!device)
        return finish(name, Refusal::noInterface(name));
    nm_device_get_applied_connection_async(device, 0, nullptr, &AsyncCall::ready, AsyncCall::make(this, call));
}

void ManagedInterfaces::reapply(const QString &name, NMConnection *present, guint64 version)
{
    Station &station = m_stations[name];
    NMDevice *device = m_client->device(name);
    if (!device)
        return finish(name, Refusal::noInterface(name));
    if (Ipv4Settings::isShared(present))
        return finish(name, {Refusal::Protected, QStringLiteral("\"%1\" shares its addresses with others").arg(name)});
    const QByteArray uuid = nm_connection_get_uuid(present);
    if (!station.own || station.uuid != uuid) {
        station.own = Ipv4Settings::copyOf(present);
        station.isMade = station.isMade && station.uuid == uuid;
        station.uuid = uuid;
    }
    const std::shared_ptr<NMConnection> next =
        Ipv4Settings::applied(present, station.own.get(), station.orders.head().request);
    const auto call = [this, name, next](GObject *source, GAsyncResult *result) {
        GErrorKeeper error;
        if (nm_device_reapply_finish(NM_DEVICE(source), result, &error))
            return finish(name, {}, next.get());
        Station &late = m_stations[name];
        const bool changed = g_error_matches(error.get(), NM_DEVICE_ERROR, NM_DEVICE_ERROR_VERSION_ID_MISMATCH);
        if (!changed || late.isRetried)
            return finish(name, refusalOf(error.get()));
        late.isRetried = true;
        readApplied(name);
    };
    m_restoration->reapplies(device, present, next.get());
    nm_device_reapply_async(device, next.get(), version, 0, nullptr, &AsyncCall::ready, AsyncCall::make(this, call));
}

void ManagedInterfaces::activate(const QString &name, NMDevice *device)
{
    NMRemoteConnection *profile = bestProfile(device);
    if (NM_IS_DEVICE_WIFI(device) || (!profile && !NM_IS_DEVICE_ETHERNET(device) && !NM_IS_DEVICE_VETH(device)))
        return finish(name, Refusal::noLink(name));
    if (!profile)
        return make(name, device);
    const auto call = [this, name](GObject *client, GAsyncResult *result) {
        GErrorKeeper error;
        const GRef<NMActiveConnection> connection(
            nm_client_activate_connection_finish(NM_CLIENT(client), result, &error));
        if (!connection)
            return finish(name, refusalOf(error.get()));
        NMDevice *activated = m_client->device(name);
        if (!activated)
            return finish(name, Refusal::noInterface(name));
        m_stations[name].isActivating = true;
        // It may be on its way already, or at its end; its states tell how it goes on.
        const bool isOver = nm_device_get_state(activated) == NM_DEVICE_STATE_FAILED
            || nm_active_connection_get_state(connection.get()) >= NM_ACTIVE_CONNECTION_STATE_DEACTIVATING;
        followActivation(name, activated, isOver, nm_device_get_state_reason(activated));
    };
    if (!m_restoration->remembers())
        m_restoration->activates(device, QString::fromUtf8(nm_connection_get_uuid(NM_CONNECTION(profile))));
    nm_client_activate_connection_async(m_client->get(), NM_CONNECTION(profile), device, nullptr, nullptr,
                                        &AsyncCall::ready, AsyncCall::make(this, call));
}

void ManagedInterfaces::followActivation(const QString &name, NMDevice *device, bool isOver, NMDeviceStateReason reason)
{
    bool &isActivating = m_stations[name].isActivating;
    if (!isActivating)
        return;
    if (isOver) {
        const QString text = QStringLiteral("the network manager could not connect \"%1\" (reason %2)");
        finish(name, {Refusal::ManagerRefused, text.arg(name).arg(int(reason))});
    } else if (DeviceAttributes::isActive(device) && nm_device_get_state(device) >= NM_DEVICE_STATE_IP_CONFIG) {
        isActivating = false;
        readApplied(name);
    }
}

void ManagedInterfaces::make(const QString &name, NMDevice *device)
{
    const std::shared_ptr<NMConnection> made = Ipv4Settings::made(device, m_stations[name].orders.head().request);
    const auto call = [this, name, made](GObject *client, GAsyncResult *result) {
        GErrorKeeper error;
        const GRef<NMActiveConnection> connection(
            nm_client_add_and_activate_connection2_finish(NM_CLIENT(client), result, nullptr, &error));
        if (!connection)
            return finish(name, refusalOf(error.get()));
        Station &station = m_stations[name];
        station.uuid = nm_connection_get_uuid(made.get());
        station.isMade = true;
        finish(name, {}, made.get());
    };
    if (!m_restoration->remembers())
        m_restoration->activates(device, QString::fromUtf8(nm_connection_get_uuid(made.get())));
    nm_client_add_and_activate_connection2(m_client->get(), made.get(), device, nullptr,
                                           ManagerClient::volatileOptions(!m_restoration->remembers()), nullptr,
                                           &AsyncCall::ready, AsyncCall::make(this, call));
}

void ManagedInterfaces::finish(const QString &name, const Refusal &refusal, NMConnection *applied)
{
    Station &station = m_stations[name];
    const Order order = station.orders.dequeue();
    station.isActivating = false;
    station.isRetried = false;
    if (order.answer)
        order.answer({refusal, {}});
    else if (refusal)
        m_log->trouble(QStringLiteral("\"%1\" does not get again what it was given: %2").arg(name, refusal.text));
    if (!refusal) {
        // A network is joined with what it says, whatever was asked for before.
        station.hasWish = applied || !NM_IS_DEVICE_WIFI(m_client->device(name));
        station.isLost = applied == nullptr;
        if (!applied)
            station.uuid.clear();
        await(name, order.request, applied ? Ipv4Settings::dhcpTimeout(applied) : 0);
    } else if (order.request.kind == NetworkingRequest::Connect && station.uuid.isEmpty()) {
        station.hasWish = false; // it was disconnected to be connected anew
    }
    if (!station.orders.isEmpty())
        begin(name);
}

void ManagedInterfaces::await(const QString &name, const NetworkingRequest &request, int dhcpTimeout)
{
    Station &station = m_stations[name];
    station.wish = request;
    station.isAwaited = true;
    const int step = ++station.step;
    if (request.kind == NetworkingRequest::Disconnect) {
        QTimer::singleShot(ReleaseTime, this, [this, name, step] {
            if (m_stations[name].step == step && m_stations[name].isAwaited)
                tellRelease(name);
        });
    } else if (dhcpTimeout > 0) {
        QTimer::singleShot(std::chrono::seconds(dhcpTimeout), this, [this, name, step] { tellNoLease(name, step); });
    }
    synchronise();
}

/*! Tells it even when nothing changes: a client that asked for it waits for the addresses to go. */
void ManagedInterfaces::tellRelease(const QString &name)
{
    m_stations[name].isAwaited = false;
    NMDevice *device = m_client->device(name);
    if (!device)
        return;
    const Attributes attributes = DeviceAttributes::read(device);
    ZopChangeset changes;
    changes.assignments.insert(Wire::Connected, truthValue(false));
    changes.assignments.insert(Wire::IpAddresses, textList(DeviceAttributes::ipv6Addresses(device)));
    changes.assignments.insert(Wire::IpGateway, attributes.value(Wire::IpGateway));
    m_world->changeInterface(name, changes);
}

void ManagedInterfaces::tellNoLease(const QString &name, int step)
{
    Station &station = m_stations[name];
    const bool isAsked = station.wish.kind == NetworkingRequest::Connect && !station.wish.settings.manual;
    if (station.step != step || !station.isAwaited || !isAsked)
        return;
    ++station.step; // once
    m_log->trouble(QStringLiteral("nobody answers DHCP on \"%1\"").arg(name));
}

void ManagedInterfaces::onRunningChanged(bool running)
{
    if (running)
        m_settling.start();
    for (auto &[name, station] : m_stations) {
        lose(&station);
        if (!running && station.isActivating)
            finish(name, managerGone());
    }
}

void ManagedInterfaces::onStateChanged(NMDevice *device, NMDeviceState now, NMDeviceState before,
                                       NMDeviceStateReason reason)
{
    const QString name = ManagerClient::nameOf(device);
    const auto found = m_stations.find(name);
    if (found == m_stations.end())
        return;
    Station &station = found->second;
    if (now <= NM_DEVICE_STATE_DISCONNECTED)
        lose(&station);
    // Somebody has disconnected what was connected for the request only.
    if (station.isMade && now == NM_DEVICE_STATE_DEACTIVATING && reason == NM_DEVICE_STATE_REASON_USER_REQUESTED)
        station.hasWish = false;
    if (reason == NM_DEVICE_STATE_REASON_IP_CONFIG_UNAVAILABLE)
        tellNoLease(name, station.step);
    // What the end of an earlier connection leads to is no end of this one.
    const bool isQueued = before == NM_DEVICE_STATE_DEACTIVATING && now == NM_DEVICE_STATE_DISCONNECTED;
    followActivation(name, device, !DeviceAttributes::isActive(device) && !isQueued, reason);
}

void ManagedInterfaces::lose(Station *station)
{
    station->isLost = true;
    station->own.reset();
}

/*! What was applied is gone with the connection: an application's request counts until the next one. */
void ManagedInterfaces::takeUp(const QString &name, Station *station, NMDevice *device)
{
    if (!station->hasWish || !station->isLost || !station->orders.isEmpty())
        return;
    const NMDeviceState state = nm_device_get_state(device);
    const QByteArray present = connectionOf(device); // known later than the state
    const bool isBack = state == NM_DEVICE_STATE_ACTIVATED && !present.isEmpty();
    const bool canBeMade =
        station->isMade && station->wish.kind == NetworkingRequest::Connect && state == NM_DEVICE_STATE_DISCONNECTED;
    if (!isBack && !canBeMade)
        return;
    station->isLost = false;
    if (isBack && !station->uuid.isEmpty() && present != station->uuid) {
        station->hasWish = false; // somebody else has connected it with something else
        return;
    }
    m_log->happened("manager", name + QStringLiteral(" gets again what it was given"));
    station->orders.enqueue({station->wish, {}});
    begin(name);
}

void ManagedInterfaces::synchronise()
{
    if (!m_client->isRunning() || (m_settling.isActive() && nm_client_get_startup(m_client->get())))
        return; // the world stays as it was
    m_settling.stop();
    QMap<QString, Attributes> interfaces;
    const QVector<NMDevice *> devices = m_client->devices();
    for (NMDevice *device : devices) {
        const QString name = ManagerClient::nameOf(device);
        Attributes attributes = attributesOf(name, device);
        if (isLeaseKept(name, attributes))
            attributes.insert(Wire::Manual, yesOrNo(false));
        interfaces.insert(name, attributes);
    }
    InterfaceMirror::show(interfaces, m_world, m_log);
    rank();
    for (auto &[name, station] : m_stations) {
        NMDevice *device = m_client->device(name);
        if (device)
            takeUp(name, &station, device);
        else if (station.isActivating)
            finish(name, Refusal::noInterface(name));
    }
}

Attributes ManagedInterfaces::attributesOf(const QString &name, NMDevice *device)
{
    const auto found = m_stations.find(name);
    if (found == m_stations.end())
        return DeviceAttributes::read(device);
    Station &station = found->second;
    const QStringList addresses = DeviceAttributes::ipv4Addresses(device);
    if (station.wish.kind == NetworkingRequest::Disconnect) {
        if (station.isAwaited && addresses.isEmpty())
            tellRelease(name);
        else if (!station.isAwaited && !station.isLost && !addresses.isEmpty() && station.orders.isEmpty())
            station.hasWish = false; // somebody else has given it addresses
    } else if (station.isAwaited) {
        const InterfaceSettings &asked = station.wish.settings;
        station.isAwaited = asked.manual ? !addresses.contains(addressOf(asked))
                                         : addresses.isEmpty() || !DeviceAttributes::hasLease(device);
    }

    Attributes attributes = DeviceAttributes::read(device);
    const bool isReleased = station.wish.kind == NetworkingRequest::Disconnect && !station.isAwaited;
    const bool isComing = station.wish.kind == NetworkingRequest::Connect && station.isAwaited;
    if (station.hasWish && (isReleased || isComing))
        attributes.insert(Wire::Connected, truthValue(false));
    if (station.hasWish && isReleased)
        attributes.insert(Wire::Manual, m_world->interfaceAttributes(name).value(Wire::Manual));
    return attributes;
}

/*!
 * A manager that ends takes the leases away and leaves the addresses: the world is to stay as it was. Who asks for the
 * very address of the lease has it without one.
 */
bool ManagedInterfaces::isLeaseKept(const QString &name, const Attributes &now)
{
    const auto station = m_stations.find(name);
    const bool isAsked = station != m_stations.end() && station->second.hasWish && station->second.wish.settings.manual;
    const Attributes before = m_world->interfaceAttributes(name);
    const bool isMissing = !isAsked && before.value(Wire::Manual) == yesOrNo(false)
        && now.value(Wire::Manual) == yesOrNo(true) && before.value(Wire::IpAddresses) == now.value(Wire::IpAddresses);
    if (!isMissing) {
        m_keptLeases.remove(name);
        return false;
    }
    if (!m_keptLeases.contains(name)) {
        m_keptLeases.insert(name, QDeadlineTimer(EndingTime));
        QTimer::singleShot(EndingTime, Qt::PreciseTimer, this, &ManagedInterfaces::synchronise);
    }
    return !m_keptLeases.value(name).hasExpired();
}

QString ManagedInterfaces::preferred() const
{
    return m_world->status(Service::Networking).value(Wire::DefaultInterface).toString();
}

/*! The manager is without a default route for a moment when it applies other settings, which is no news. */
bool ManagedInterfaces::isSpared(const QString &interface) const
{
    NMDevice *device = m_client->device(interface);
    return m_grace.isActive() && m_spared == interface && device && DeviceAttributes::isActive(device);
}

void ManagedInterfaces::rank()
{
    const QStringList routed = DeviceAttributes::routed(m_client->devices());
    const QString present = preferred();
    if (routed.value(0) != present && isSpared(present))
        return;
    m_world->updateStatus(Service::Networking, InterfaceMirror::ranking(routed, m_world->interfaces()));
}

} // namespace morvek
