// SPDX-License-Identifier: Apache-2.0
#include "managedradio.h"

#include "managerclient.h"
#include "managerrefusal.h"
#include "restoration.h"
#include "seenaccesspoint.h"
#include "stationtext.h"
#include "wirenames.h"
#include "world.h"

#include <chrono>

namespace morvek {

namespace {

// A client sends the second request as soon as the first one is answered.
constexpr std::chrono::seconds LongestSelection {2};

/*! The manager waits for a while whether an access point that is heard no more comes back. */
bool isStillActive(NMDevice *radio, const QByteArray &connection)
{
    NMActiveConnection *active = nm_device_get_active_connection(radio);
    return nm_device_get_state(radio) == NM_DEVICE_STATE_ACTIVATED && active
        && connection == nm_object_get_path(NM_OBJECT(active));
}

} // namespace

ManagedRadio::ManagedRadio(ManagerClient *client, Restoration *restoration, World *world, const EventLog *log,
                           bool remember, QObject *parent)
    : QObject(parent),
      m_client(client),
      m_restoration(restoration),
      m_world(world),
      m_scan(client, world),
      m_wanted(client, &m_scan, restoration, log, remember)
{
    connect(client, &ManagerClient::changed, this, &ManagedRadio::follow);
    connect(client, &ManagerClient::stateChanged, this,
            [this](NMDevice *device, NMDeviceState now, NMDeviceState, NMDeviceStateReason reason) {
                const bool isEnd = now == NM_DEVICE_STATE_FAILED || now == NM_DEVICE_STATE_DEACTIVATING;
                if (isEnd && device == NM_DEVICE(m_client->radio()))
                    m_isLost = reason == NM_DEVICE_STATE_REASON_SSID_NOT_FOUND;
            });
    m_selection.setSingleShot(true);
    connect(&m_selection, &QTimer::timeout, this, &ManagedRadio::follow);
    connect(&m_wanted, &WantedNetwork::notLetIn, this,
            [this](int identifier, const QString &ssid) { tellEvent(StationText::wrongKeyEvent(identifier, ssid)); });
    connect(&m_wanted, &WantedNetwork::notFound, this, [this] { tellEvent(StationText::NetworkNotFound); });
    connect(&m_wanted, &WantedNetwork::accepted, this, &ManagedRadio::follow);
    follow();
}

ManagedRadio::~ManagedRadio() = default;

void ManagedRadio::carryOut(const WifiRequest &request, const AnswerCall &answer)
{
    if (const Refusal refusal = refuses(request)) {
        answer({refusal, {}});
        return;
    }
    switch (request.kind) {
    case WifiRequest::Power:
        m_restoration->setPower(request.power, [answer](const GError *error) {
            answer({error ? refusalOf(error) : Refusal(), {}});
        });
        break;
    case WifiRequest::Scan:
        m_scan.ask(answer);
        break;
    case WifiRequest::NewNetwork:
        m_selection.start(LongestSelection);
        m_networks += request.network;
        answer({{}, QString::number(m_networks.size() - 1)});
        break;
    case WifiRequest::SelectNetwork: {
        const int network = networkOf(request.identifier);
        m_selection.stop();
        m_wanted.select(network, m_networks.at(network), answer);
        break;
    }
    case WifiRequest::DisableAll:
        m_wanted.leave(answer);
        break;
    case WifiRequest::Unknown:
        break;
    }
}

void ManagedRadio::lend(const QString &interface)
{
    if (m_client->radio() && ManagerClient::nameOf(NM_DEVICE(m_client->radio())) == interface)
        m_wanted.lend();
}

bool ManagedRadio::takeBack(const QString &)
{
    return m_wanted.takeBack();
}

Refusal ManagedRadio::refuses(const WifiRequest &request) const
{
    if (!m_client->isRunning())
        return managerGone();
    NMDevice *radio = NM_DEVICE(m_client->radio());
    switch (request.kind) {
    case WifiRequest::Power:
        if (!radio)
            return {Refusal::RadioOff, QStringLiteral("there is no radio")};
        if (request.power && !nm_client_wireless_hardware_get_enabled(m_client->get()))
            return {Refusal::RadioOff, QStringLiteral("the radio is switched off at the machine")};
        return m_client->refusesToTouchRadios();
    case WifiRequest::SelectNetwork:
        if (networkOf(request.identifier) == -1)
            return {Refusal::NotFound, QStringLiteral("no such network")};
        if (m_wanted.isLent())
            return {Refusal::ManagerRefused, QStringLiteral("the hotspot has the radio")};
        break;
    case WifiRequest::DisableAll:
        return radio ? m_client->refusesToTouch(radio) : Refusal();
    case WifiRequest::NewNetwork:
    case WifiRequest::Unknown:
        return {};
    case WifiRequest::Scan:
        break;
    }
    if (!isOn())
        return {Refusal::RadioOff, QStringLiteral("the radio is off")};
    if (nm_device_get_state(radio) == NM_DEVICE_STATE_UNMANAGED)
        return {Refusal::Unmanaged, QStringLiteral("the network manager leaves the radio alone")};
    return request.kind == WifiRequest::Scan ? Refusal() : m_client->refusesToTouch(radio);
}

bool ManagedRadio::isOn() const
{
    return nm_client_wireless_get_enabled(m_client->get()) && nm_client_wireless_hardware_get_enabled(m_client->get())
        && m_client->radio();
}

/*! The station is where it is as soon as it has been let in, whatever addresses it gets there. */
bool ManagedRadio::isConnected(SeenAccessPoint *accessPoint) const
{
    NMDeviceWifi *radio = isOn() ? m_client->radio() : nullptr;
    if (!radio || nm_device_wifi_get_mode(radio) == NM_802_11_MODE_AP)
        return false;
    NMAccessPoint *used = nm_device_wifi_get_active_access_point(radio);
    const NMDeviceState state = nm_device_get_state(NM_DEVICE(radio));
    if (!used || !nm_device_get_active_connection(NM_DEVICE(radio)) || state < NM_DEVICE_STATE_IP_CONFIG
        || state > NM_DEVICE_STATE_ACTIVATED)
        return false;
    *accessPoint = SeenAccessPoint::read(used);
    return true;
}

void ManagedRadio::follow()
{
    // The world stays as it was until the manager is back.
    if (!m_client->isRunning())
        return;
    m_wanted.look();
    ZopChangeset changes;
    const ZopVariant power = StationText::power(isOn());
    if (m_world->status(Service::Wifi).value(Wire::WifiPower) != power)
        changes.assignments.insert(Wire::WifiPower, power);
    SeenAccessPoint accessPoint;
    tell(isConnected(&accessPoint) ? &accessPoint : nullptr, changes);
    m_scan.look();
}

/*! Tells \a changes, and where the station is now: at \a accessPoint, or nowhere. */
void ManagedRadio::tell(const SeenAccessPoint *accessPoint, ZopChangeset changes)
{
    NMDevice *radio = NM_DEVICE(m_client->radio());
    const bool isFirst = m_world->status(Service::Wifi).isEmpty();
    if (accessPoint && m_wanted.isAwaited(radio) && !m_selection.isActive()) {
        const QByteArray connection = nm_object_get_path(NM_OBJECT(nm_device_get_active_connection(radio)));
        const QJsonObject status = StationText::status(accessPoint->bssid, accessPoint->ssid,
                                                       AccessPointText::keyManagement(accessPoint->security),
                                                       AccessPointText::cipher(accessPoint->security));
        // Whoever has joined a network anew waits to hear of it, also when it is the same one.
        if (status != m_status || connection != m_connection) {
            changes.assignments.insert(Wire::WifiStatus, status);
            if (!isFirst)
                changes.assignments.insert(
                    Wire::LastEvent, StationText::connectedEvent(accessPoint->bssid, m_wanted.identifierAt(radio)));
        }
        m_status = status;
        m_connection = connection;
        m_wanted.setJoined(radio);
    } else if (!accessPoint && !m_status.isEmpty()) {
        const bool isLost = m_isLost || (isOn() && isStillActive(radio, m_connection));
        changes.removals.insert(Wire::WifiStatus);
        changes.assignments.insert(
            Wire::LastEvent,
            StationText::disconnectedEvent(m_status.value(Wire::Bssid).toString(),
                                           isLost ? StationText::LostFromSight : StationText::LeftByItself));
        m_status = {};
        m_connection.clear();
    }
    if (!isEmpty(changes))
        m_world->changeStatus(Service::Wifi, changes);
}

void ManagedRadio::tellEvent(const QString &event)
{
    ZopChangeset changes;
    changes.assignments.insert(Wire::LastEvent, event);
    m_world->changeStatus(Service::Wifi, changes);
}

int ManagedRadio::networkOf(const QString &identifier) const
{
    bool ok = false;
    const int index = identifier.toInt(&ok);
    // An identifier has one spelling only.
    const bool known = ok && index >= 0 && index < m_networks.size() && identifier == QString::number(index);
    return known ? index : -1;
}

} // namespace morvek
