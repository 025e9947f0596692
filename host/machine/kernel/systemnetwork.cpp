// SPDX-License-Identifier: Apache-2.0
#include "systemnetwork.h"

#include "eventlog.h"
#include "interfacemirror.h"
#include "kernelnetwork.h"
#include "networkingrequest.h"
#include "wirenames.h"
#include "world.h"
#include "zoppath.h"

#include <QtNetwork/QNetworkInterface>

namespace morvek {

namespace {

QString typeOf(const QNetworkInterface &interface, const KernelLink &link)
{
    if (link.kind == "wwan")
        return Wire::TypeCellular;
    if (link.kind == "wireguard" || link.kind == "tun")
        return Wire::TypeVpn;
    if (link.bus == "bluetooth")
        return Wire::TypeBluetooth;
    switch (interface.type()) {
    case QNetworkInterface::Wifi:
        return Wire::TypeWifi;
    case QNetworkInterface::Ethernet:
        return link.bus == "usb" ? Wire::TypeUsb : Wire::TypeWired;
    case QNetworkInterface::Loopback:
        return QStringLiteral("loopback");
    default:
        return Wire::TypeUnknown;
    }
}

/*! What its addresses say about an interface. */
struct AddressFacts
{
    QStringList addresses;
    bool manual = false;
    bool reachable = false; // has an address that reaches beyond the link
};

AddressFacts factsOf(const QNetworkInterface &interface)
{
    AddressFacts facts;
    const QList<QNetworkAddressEntry> entries = interface.addressEntries();
    for (const QNetworkAddressEntry &entry : entries) {
        QHostAddress address = entry.ip();
        address.setScopeId(QString());
        const bool ipv4 = address.protocol() == QAbstractSocket::IPv4Protocol;
        facts.addresses += address.toString() + QLatin1Char('/')
            + (ipv4 ? entry.netmask().toString() : QString::number(entry.prefixLength()));
        facts.reachable = facts.reachable || !address.isLinkLocal();
        // Clients keep the last IPv4 address; a lease gives it an end, a hand does not.
        if (ipv4)
            facts.manual = entry.isPermanent();
    }
    return facts;
}

QStringList gatewaysOf(int interfaceIndex, const QVector<KernelRoute> &routes)
{
    QStringList gateways;
    for (const KernelRoute &route : routes) {
        if (route.interfaceIndex == interfaceIndex && !route.gateway.isEmpty())
            gateways += route.gateway;
    }
    gateways.removeDuplicates();
    return gateways;
}

Attributes attributesOf(const QNetworkInterface &interface, const KernelLink &link, const QString &parent,
                        const QVector<KernelRoute> &routes)
{
    const AddressFacts facts = factsOf(interface);
    const bool up = interface.flags() & QNetworkInterface::IsUp;
    const bool running = interface.flags() & QNetworkInterface::IsRunning;
    Attributes attributes;
    attributes.insert(Wire::Connected, truthValue(up && running && facts.reachable));
    attributes.insert(Wire::IpAddresses, textList(facts.addresses));
    attributes.insert(Wire::IpGateway, textList(gatewaysOf(interface.index(), routes)));
    attributes.insert(Wire::LinkAddress, interface.hardwareAddress().toLower());
    attributes.insert(Wire::Manual, yesOrNo(facts.manual));
    attributes.insert(Wire::Mtu, interface.maximumTransmissionUnit());
    attributes.insert(Wire::Type, typeOf(interface, link));
    attributes.insert(Wire::Up, truthValue(up));
    if (!parent.isEmpty())
        attributes.insert(Wire::ParentInterface, parent);
    return attributes;
}

/*! Names by index, in order of index; without those that no object can have. */
QMap<int, QString> publishableNames(const QList<QNetworkInterface> &interfaces)
{
    QMap<int, QString> names;
    for (const QNetworkInterface &interface : interfaces) {
        if (interface.isValid() && ZopPath::isObjectName(interface.name().toUtf8()))
            names.insert(interface.index(), interface.name());
    }
    return names;
}

/*! The names of those that default routes lead to, the preferred one first. */
QStringList routed(const QMap<int, QString> &names, const QVector<KernelRoute> &routes)
{
    QStringList order;
    for (const KernelRoute &route : routes)
        order += names.value(route.interfaceIndex);
    order.removeAll(QString());
    return order;
}

} // namespace

SystemNetwork::SystemNetwork(World *world, const EventLog *log, QObject *parent)
    : QObject(parent),
      m_world(world),
      m_log(log)
{
    connect(&m_bell, &KernelBell::rang, this, &SystemNetwork::onBell);
}

SystemNetwork::~SystemNetwork() = default;

bool SystemNetwork::start(QString *error)
{
    // The bell first: a change between the two is then heard, not missed.
    return m_bell.hang(error) && mirror(error);
}

void SystemNetwork::carryOut(const NetworkingRequest &request, const AnswerCall &answer)
{
    Refusal refusal {Refusal::ReadOnly, QStringLiteral("the machine's own interfaces are only shown, not configured")};
    if (!m_world->hasInterface(request.interface))
        refusal = Refusal::noInterface(request.interface);
    answer({refusal, {}});
}

void SystemNetwork::onBell()
{
    QString error;
    if (!mirror(&error))
        m_log->trouble(error);
}

bool SystemNetwork::mirror(QString *error)
{
    QMap<int, KernelLink> links;
    QVector<KernelRoute> routes;
    if (!KernelNetwork::readLinks(&links, error) || !KernelNetwork::readDefaultRoutes(&routes, error))
        return false;
    const QList<QNetworkInterface> found = QNetworkInterface::allInterfaces();
    const QMap<int, QString> names = publishableNames(found);
    QMap<QString, Attributes> interfaces;
    for (const QNetworkInterface &interface : found) {
        const KernelLink link = links.value(interface.index());
        if (names.contains(interface.index()))
            interfaces.insert(interface.name(), attributesOf(interface, link, names.value(link.parentIndex), routes));
    }
    InterfaceMirror::show(interfaces, m_world, m_log);
    m_world->updateStatus(Service::Networking, InterfaceMirror::ranking(routed(names, routes), names.values()));
    return true;
}

} // namespace morvek
