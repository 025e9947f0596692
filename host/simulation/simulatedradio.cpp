// SPDX-License-Identifier: Apache-2.0
#include "simulatedradio.h"

#include "simulatednetwork.h"
#include "stationtext.h"
#include "wirenames.h"
#include "world.h"

namespace morvek {

SimulatedRadio::SimulatedRadio(const Scenario &scenario, World *world, SimulatedNetwork *network, Pace *pace,
                               QObject *parent)
    : QObject(parent),
      m_air(scenario.wifi.accessPoints),
      m_interface(scenario.wifi.interface),
      m_power(scenario.wifi.power),
      m_current(scenario.wifi.connected),
      m_delays(scenario.delays),
      m_world(world),
      m_network(network),
      m_pace(pace)
{
    ZopChangeset start;
    start.assignments.insert(Wire::WifiPower, StationText::power(m_power));
    if (const SimulatedAccessPoint *current = m_air.find(m_current)) {
        m_networks += current->network();
        m_selected = 0;
        start.assignments.insert(Wire::WifiStatus, current->status());
    }
    m_world->changeStatus(Service::Wifi, start);
    connect(m_world, &World::interfaceAdded, this, &SimulatedRadio::onInterfaceAdded);
    connect(m_world, &World::interfaceRemoved, this, &SimulatedRadio::onInterfaceRemoved);
}

SimulatedRadio::~SimulatedRadio() = default;

void SimulatedRadio::carryOut(const WifiRequest &request, const AnswerCall &answer)
{
    const Refusal refusal = refuses(request);
    if (!refusal && request.kind == WifiRequest::NewNetwork)
        answer({{}, addNetwork(request.network)});
    else
        answer({refusal, {}});
    if (!refusal)
        perform(request);
}

Refusal SimulatedRadio::refuses(const WifiRequest &request) const
{
    const bool selects = request.kind == WifiRequest::SelectNetwork;
    if (selects && networkOf(request.identifier) == None)
        return {Refusal::NotFound, QStringLiteral("no such network")};
    if ((selects || request.kind == WifiRequest::Scan) && !m_power)
        return {Refusal::RadioOff, QStringLiteral("the radio is off")};
    return {};
}

QString SimulatedRadio::addNetwork(const WifiNetwork &network)
{
    m_networks += network;
    return QString::number(m_networks.size() - 1);
}

void SimulatedRadio::perform(const WifiRequest &request)
{
    switch (request.kind) {
    case WifiRequest::Power:
        setPower(request.power);
        break;
    case WifiRequest::Scan:
        scan();
        break;
    case WifiRequest::SelectNetwork:
        select(networkOf(request.identifier));
        break;
    case WifiRequest::DisableAll:
        select(None);
        break;
    case WifiRequest::NewNetwork:
    case WifiRequest::Unknown:
        break;
    }
}

void SimulatedRadio::setPower(bool power)
{
    if (m_power == power)
        return;
    m_power = power;
    ZopChangeset changes;
    changes.assignments.insert(Wire::WifiPower, StationText::power(power));
    if (power) {
        m_world->changeStatus(Service::Wifi, changes);
        join();
        return;
    }
    ++m_scan;
    m_scanning = false;
    leave(StationText::LeftByItself, changes);
}

void SimulatedRadio::setInRange(const QString &bssid, bool inRange)
{
    SimulatedAccessPoint *accessPoint = m_air.find(bssid);
    accessPoint->setInRange(inRange);
    if (inRange) {
        const bool waits = m_selected != None && m_current.isEmpty();
        if (waits && accessPoint->belongsTo(m_networks.at(m_selected)))
            join();
    } else if (m_current == bssid) {
        if (const SimulatedAccessPoint *other =
                m_air.strongest([this](const SimulatedAccessPoint &one) { return admits(one); }))
            associate(*other);
        else
            leave(StationText::LostFromSight);
    }
}

void SimulatedRadio::setLevel(const QString &bssid, int level)
{
    m_air.find(bssid)->setLevel(level);
}

void SimulatedRadio::roam(const QString &bssid)
{
    if (refusesToRoam(bssid).isEmpty())
        associate(*m_air.find(bssid));
}

QString SimulatedRadio::refusesToRoam(const QString &bssid) const
{
    if (!isConnected())
        return QStringLiteral("the station is not connected");
    if (m_current == bssid)
        return QStringLiteral("the station is connected to \"%1\" already").arg(bssid);
    const SimulatedAccessPoint *other = m_air.find(bssid);
    if (!other->isInRange() || !admits(*other))
        return QStringLiteral("the station is not welcome at \"%1\"").arg(bssid);
    return {};
}

void SimulatedRadio::drop(int reason)
{
    if (m_current.isEmpty())
        return;
    leave(reason);
    join();
}

void SimulatedRadio::tellEvent(const QString &event)
{
    ZopChangeset changes;
    changes.assignments.insert(Wire::LastEvent, event);
    m_world->changeStatus(Service::Wifi, changes);
}

void SimulatedRadio::scan()
{
    // Who asks while a scan is under way gets its results.
    if (m_scanning)
        return;
    m_scanning = true;
    tellEvent(StationText::ScanStarted);
    m_pace->after(m_delays.scan, this, [this, scan = ++m_scan] {
        if (scan == m_scan)
            finishScan();
    });
}

void SimulatedRadio::finishScan()
{
    m_scanning = false;
    // Without its interface the station hears nothing.
    const QJsonArray results = isUsable() ? m_air.scan(m_pace) : QJsonArray();
    ZopChangeset changes;
    changes.assignments.insert(Wire::LastEvent, StationText::ScanFinished);
    changes.assignments.insert(Wire::ScanResults, StationText::scanResults(results));
    m_world->changeStatus(Service::Wifi, changes);
}

void SimulatedRadio::select(int network)
{
    leave(StationText::LeftByItself);
    m_selected = network;
    join();
}

void SimulatedRadio::join()
{
    if (m_selected == None || !isUsable())
        return;
    m_pace->after(m_delays.associate, this, [this, attempt = ++m_attempt] {
        if (attempt == m_attempt)
            finishJoining();
    });
}

void SimulatedRadio::finishJoining()
{
    const WifiNetwork &network = m_networks.at(m_selected);
    const SimulatedAccessPoint *found =
        m_air.strongest([&network](const SimulatedAccessPoint &one) { return one.belongsTo(network); });
    if (!found) {
        tellEvent(StationText::NetworkNotFound);
    } else if (found->answers() && isRefused(*found, network)) {
        // Whoever wants to try this network again has to select it.
        const QString event = StationText::wrongKeyEvent(m_selected, network.ssid);
        m_selected = None;
        tellEvent(event);
    } else if (found->answers()) {
        associate(*found);
    }
}

bool SimulatedRadio::isRefused(const SimulatedAccessPoint &accessPoint, const WifiNetwork &network)
{
    return (!network.passkey.isEmpty() && m_wrongKeys.remove(network.ssid)) || !accessPoint.accepts(network);
}

void SimulatedRadio::associate(const SimulatedAccessPoint &accessPoint)
{
    m_current = accessPoint.bssid();
    ZopChangeset changes;
    changes.assignments.insert(Wire::LastEvent, StationText::connectedEvent(m_current, m_selected));
    changes.assignments.insert(Wire::WifiStatus, accessPoint.status());
    m_world->changeStatus(Service::Wifi, changes);
    // Whoever has roamed has its link already, and keeps its addresses.
    m_network->offerLease(m_interface, accessPoint.lease());
    m_network->setLink(m_interface, true);
}

/*! Ends the connection, or the attempt to get one, and tells that together with \a changes. */
void SimulatedRadio::leave(int reason, ZopChangeset changes)
{
    ++m_attempt;
    const bool connected = !m_current.isEmpty();
    if (connected) {
        changes.assignments.insert(Wire::LastEvent, StationText::disconnectedEvent(m_current, reason));
        changes.removals.insert(Wire::WifiStatus);
        m_current.clear();
    }
    if (!isEmpty(changes))
        m_world->changeStatus(Service::Wifi, changes);
    if (connected)
        m_network->setLink(m_interface, false);
}

void SimulatedRadio::onInterfaceAdded(const QString &name)
{
    if (name == m_interface)
        join();
}

void SimulatedRadio::onInterfaceRemoved(const QString &name)
{
    if (name == m_interface)
        leave(StationText::LeftByItself);
}

int SimulatedRadio::networkOf(const QString &identifier) const
{
    bool ok = false;
    const int index = identifier.toInt(&ok);
    // An identifier has one spelling only.
    const bool known = ok && index >= 0 && index < m_networks.size() && identifier == QString::number(index);
    return known ? index : None;
}

/*! True when the station, connected to the selected network, would be welcome there. */
bool SimulatedRadio::admits(const SimulatedAccessPoint &accessPoint) const
{
    const WifiNetwork &network = m_networks.at(m_selected);
    return accessPoint.answers() && accessPoint.belongsTo(network) && accessPoint.accepts(network);
}

bool SimulatedRadio::isUsable() const
{
    return m_power && m_world->hasInterface(m_interface);
}

} // namespace morvek
