// SPDX-License-Identifier: Apache-2.0
#include "simulatednetwork.h"

#include "networkingrequest.h"
#include "wirenames.h"
#include "world.h"

namespace morvek {

SimulatedNetwork::SimulatedNetwork(const Scenario &scenario, World *world, Pace *pace, QObject *parent)
    : QObject(parent),
      m_wifiInterface(scenario.wifi.interface),
      m_priority(scenario.priority),
      m_pinnedDefault(scenario.defaultInterface),
      m_pinsDefault(scenario.pinsDefault),
      m_delays(scenario.delays),
      m_world(world),
      m_pace(pace)
{
    const ScenarioAccessPoint *accessPoint = scenario.wifi.accessPoint(scenario.wifi.connected);
    for (const ScenarioInterface &interface : scenario.interfaces) {
        Station station;
        station.state = interface;
        station.link = interface.up;
        // What is up and not connected was left so on purpose; what lacks a link only waits for one.
        station.wanted = interface.connected || !interface.up || !interface.present;
        if (accessPoint && interface.name == m_wifiInterface)
            station.offered = accessPoint->lease;
        m_stations.insert(interface.name, station);
        if (interface.present)
            m_world->addInterface(interface.name, attributesOf(station));
    }
    updateStatus();
}

SimulatedNetwork::~SimulatedNetwork() = default;

void SimulatedNetwork::carryOut(const NetworkingRequest &request, const AnswerCall &answer)
{
    const Refusal refusal = refuses(request);
    answer({refusal, {}});
    if (!refusal)
        perform(request);
}

Refusal SimulatedNetwork::refuses(const NetworkingRequest &request) const
{
    const auto found = m_stations.find(request.interface);
    if (found == m_stations.end() || !found->state.present)
        return Refusal::noInterface(request.interface);
    if (request.kind == NetworkingRequest::Connect && !hasLink(*found))
        return Refusal::noLink(request.interface);
    return {};
}

void SimulatedNetwork::perform(const NetworkingRequest &request)
{
    Station &station = m_stations[request.interface];
    station.wanted = request.kind == NetworkingRequest::Connect;
    if (!station.wanted) {
        later(&station, m_delays.release, [this](Station *late) { release(late, late->state.up); });
        return;
    }
    const InterfaceSettings &settings = request.settings;
    station.state.manual = settings.manual;
    if (settings.manual)
        station.state.given = {{settings.address + QLatin1Char('/') + settings.netmask}, {settings.gateway}};
    connectLater(&station);
}

void SimulatedNetwork::vanish(const QString &interface)
{
    Station &station = m_stations[interface];
    ++station.step;
    station.state.present = false;
    station.state.connected = false;
    m_world->removeInterface(interface);
    settle();
}

void SimulatedNetwork::appear(const QString &interface)
{
    Station &station = m_stations[interface];
    if (interface != m_wifiInterface)
        station.link = true;
    station.state.present = true;
    station.state.up = hasLink(station);
    m_world->addInterface(interface, attributesOf(station));
    if (station.state.up)
        connectLater(&station);
    settle();
}

void SimulatedNetwork::setLink(const QString &interface, bool link)
{
    m_stations[interface].link = link;
    settle();
}

void SimulatedNetwork::offerLease(const QString &interface, const AddressSet &lease)
{
    m_stations[interface].offered = lease;
}

void SimulatedNetwork::pinDefault(const QString &interface)
{
    m_pinsDefault = true;
    m_pinnedDefault = interface;
    updateStatus();
}

void SimulatedNetwork::followDefault()
{
    m_pinsDefault = false;
    updateStatus();
}

void SimulatedNetwork::setPriority(const QStringList &order)
{
    m_priority = order;
    updateStatus();
}

const AddressSet &SimulatedNetwork::leaseOf(const Station &station)
{
    return station.offered.addresses.isEmpty() ? station.state.lease : station.offered;
}

Attributes SimulatedNetwork::attributesOf(const Station &station) const
{
    const ScenarioInterface &state = station.state;
    const AddressSet addresses = !state.connected ? AddressSet() : state.manual ? state.given : leaseOf(station);
    Attributes attributes;
    attributes.insert(Wire::Connected, truthValue(state.connected));
    attributes.insert(Wire::IpAddresses, textList(addresses.addresses));
    attributes.insert(Wire::IpGateway, textList(addresses.gateways));
    attributes.insert(Wire::Manual, yesOrNo(state.manual));
    attributes.insert(Wire::Type, state.type);
    attributes.insert(Wire::Up, truthValue(state.up));
    if (!state.linkAddress.isEmpty())
        attributes.insert(Wire::LinkAddress, state.linkAddress);
    if (state.mtu != 0)
        attributes.insert(Wire::Mtu, state.mtu);
    if (!state.parent.isEmpty())
        attributes.insert(Wire::ParentInterface, state.parent);
    return attributes;
}

bool SimulatedNetwork::hasLink(const Station &station) const
{
    // Only the parent is asked, never its parents: they may form a circle.
    const QString &parent = station.state.parent;
    return station.link && (parent.isEmpty() || m_stations.value(parent).state.connected);
}

void SimulatedNetwork::connectLater(Station *station)
{
    if (!station->wanted)
        return;
    later(station, station->state.manual ? m_delays.manual : m_delays.lease, [this](Station *late) {
        // Without a lease nobody has answered DHCP, and addresses that it had until now are not valid any more.
        late->state.connected = late->state.manual || !leaseOf(*late).addresses.isEmpty();
        tell(*late, {Wire::Connected, Wire::IpAddresses, Wire::IpGateway, Wire::Manual});
        settle();
    });
}

void SimulatedNetwork::release(Station *station, bool up)
{
    ++station->step;
    station->state.up = up;
    station->state.connected = false;
    // Told even when nothing changes: a client that asked for it waits for the addresses to go.
    tell(*station, {Wire::Connected, Wire::IpAddresses, Wire::IpGateway, Wire::Up});
    settle();
}

/*! Leaves every other attribute as it is: the scenario may have set it to something else. */
void SimulatedNetwork::tell(const Station &station, const QStringList &names)
{
    const Attributes attributes = attributesOf(station);
    ZopChangeset changes;
    for (const QString &name : names)
        changes.assignments.insert(name, attributes.value(name));
    m_world->changeInterface(station.state.name, changes);
}

void SimulatedNetwork::settle()
{
    followLinks();
    updateStatus();
}

void SimulatedNetwork::followLinks()
{
    for (Station &station : m_stations) {
        const bool link = hasLink(station);
        if (!station.state.present || station.state.up == link)
            continue;
        if (!link) {
            release(&station, false); // settles what stands on it in turn
            continue;
        }
        station.state.up = true;
        tell(station, {Wire::Up});
        connectLater(&station);
    }
}

void SimulatedNetwork::updateStatus()
{
    QStringList present;
    QString preferred = m_pinnedDefault;
    bool found = m_pinsDefault;
    for (const QString &name : qAsConst(m_priority)) {
        const ScenarioInterface &state = m_stations[name].state;
        if (!state.present)
            continue;
        present += name;
        if (!found && state.connected) {
            preferred = name;
            found = true;
        }
    }
    if (!found)
        preferred.clear();
    m_world->updateStatus(Service::Networking,
                          {{Wire::DefaultInterface, preferred}, {Wire::Priority, textList(present)}});
}

template<typename Function>
void SimulatedNetwork::later(Station *station, DelayRange delay, Function function)
{
    const QString name = station->state.name;
    const quint32 step = ++station->step;
    m_pace->after(delay, this, [this, name, step, function] {
        Station &late = m_stations[name];
        if (late.step == step)
            function(&late);
    });
}

} // namespace morvek
