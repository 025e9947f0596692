// SPDX-License-Identifier: Apache-2.0
#include "zopinterfaceconnection_p.h"

#include "dottedquad_p.h"
#include "networklog_p.h"
#include "zopobject.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QPointer>

namespace morvek {

namespace {

const QLatin1String IpAddressesAttribute("ip_addresses");
const QLatin1String ManualAttribute("manual");
const QLatin1String IpGatewayAttribute("ip_gateway");
const QLatin1String LinkAddressAttribute("link_address");
const QLatin1String MtuAttribute("mtu");
const QLatin1String TypeAttribute("type");
const QLatin1String UpAttribute("up");
const QLatin1String ConnectedAttribute("connected");
const QLatin1String ParentInterfaceAttribute("parent_interface");

const QLatin1String ManualYes("yes");
const QLatin1String ManualNo("no");

const char InvalidAddressText[] = "Not a valid IP4 Address and Netmask";
const char ManualNoText[] = "IPv4 is set to \"no\" but we don't support IPv6.";

const struct
{
    QLatin1String word;
    NetworkInterface::InterfaceType type;
} TypeWords[] = {
    {QLatin1String("wired"), NetworkInterface::Wired},
    {QLatin1String("wifi"), NetworkInterface::Wifi},
    {QLatin1String("usb"), NetworkInterface::Usb},
    {QLatin1String("cellular"), NetworkInterface::Cellular},
    {QLatin1String("bluetooth_dun"), NetworkInterface::Bluetooth},
    {QLatin1String("vpn"), NetworkInterface::Vpn},
    {QLatin1String("qv"), NetworkInterface::OrvanBridge},
};

// QHostAddress would stop at a zero and take what stands before it.
QHostAddress parseAddress(const QString &text)
{
    return text.contains(QChar(0)) ? QHostAddress() : QHostAddress(text);
}

/*! What stands in \a text from \a from to the next slash; nothing behind the end. */
QString partAt(const QString &text, int from)
{
    const int slash = text.indexOf(QLatin1Char('/'), from);
    return text.mid(from, slash == -1 ? -1 : slash - from);
}

} // namespace

NetworkInterfaceProviderZop::ZopInterfaceConnection::ZopInterfaceConnection(QObject *parent)
    : QObject(parent),
      interfaceData(new NetworkInterfaceData),
      m_provider(qobject_cast<NetworkInterfaceProviderZop *>(parent))
{
}

NetworkInterfaceProviderZop::ZopInterfaceConnection::~ZopInterfaceConnection() = default;

void NetworkInterfaceProviderZop::ZopInterfaceConnection::setZopInterface(const QString &name, ZopObject *object)
{
    zopObject = object;
    if (!zopObject)
        return;
    interfaceData->name = name;
    setIp4(attribute(IpAddressesAttribute).toJson(nullptr));
    setMode(attribute(ManualAttribute).toString());
    setGateway(attribute(IpGatewayAttribute).toJson(nullptr));
    interfaceData->macAddress = attribute(LinkAddressAttribute).toString();
    interfaceData->maxTransmissionUnit = attribute(MtuAttribute).toInt(nullptr);
    setType(attribute(TypeAttribute).toString());
    interfaceData->available = attribute(UpAttribute).toBool();
    interfaceData->connected = attribute(ConnectedAttribute).toBool();
    setVirtual(attribute(ParentInterfaceAttribute).toString());
}

QString NetworkInterfaceProviderZop::ZopInterfaceConnection::parentInterface() const
{
    return attribute(ParentInterfaceAttribute).toString();
}

// Whoever hears of a change may delete the service, and this connection with it.
void NetworkInterfaceProviderZop::ZopInterfaceConnection::onZopInterfaceAttributesChanged(const ZopChangeset &changes)
{
    const QPointer<ZopInterfaceConnection> self(this);
    const QMap<QString, ZopVariant> assignments = changes.assignments;
    if (m_provider && !changes.removals.isEmpty())
        m_provider->noteParentNames();
    bool changed = false;
    for (auto it = assignments.begin(); self && it != assignments.end(); ++it) {
        if (it.key() == ConnectedAttribute) {
            // The object holds all of the update already, and who hears of this may have parents linked.
            if (m_provider && assignments.contains(ParentInterfaceAttribute))
                m_provider->noteParentNames();
            applyConnected();
        } else if (applyAttribute(it.key(), it.value())) {
            changed = true;
        }
    }
    if (self && changed)
        emit interfaceAttributesChanged(*interfaceData);
}

ZopVariant NetworkInterfaceProviderZop::ZopInterfaceConnection::attribute(const QString &name) const
{
    return zopObject ? zopObject->attribute(name, ZopVariant()) : ZopVariant();
}

void NetworkInterfaceProviderZop::ZopInterfaceConnection::applyConnected()
{
    interfaceData->connected = attribute(ConnectedAttribute).toBool();
    if (interfaceData->connected)
        emit interfaceConnected(*interfaceData);
    else
        emit interfaceDisconnected(*interfaceData);
}

// What the daemon may have rewritten by now is read again from the object; the rest counts as the update told it.
bool NetworkInterfaceProviderZop::ZopInterfaceConnection::applyAttribute(const QString &name, const ZopVariant &value)
{
    if (name == IpAddressesAttribute) {
        setIp4(value.toJson(nullptr));
    } else if (name == ManualAttribute) {
        setMode(value.toString());
    } else if (name == IpGatewayAttribute) {
        setGateway(value.toJson(nullptr));
    } else if (name == ParentInterfaceAttribute) {
        setVirtual(value.toString());
        emit interfaceParentChanged();
    } else if (name == UpAttribute) {
        interfaceData->available = attribute(name).toBool();
    } else if (name == LinkAddressAttribute) {
        interfaceData->macAddress = attribute(name).toString();
    } else if (name == MtuAttribute) {
        interfaceData->maxTransmissionUnit = attribute(name).toInt(nullptr);
    } else if (name == TypeAttribute) {
        setType(value.toString());
    } else {
        return false;
    }
    return true;
}

void NetworkInterfaceProviderZop::ZopInterfaceConnection::setIp4(const QJsonDocument &addresses)
{
    interfaceData->configuration.setIpAddresses({});
    QString ip;
    QString netmask;
    findIpNetmask(addresses.array(), ip, netmask);
    if (ip.isEmpty() || netmask.isEmpty()) {
        NetworkLog::debug1(InvalidAddressText);
        return;
    }
    QNetworkAddressEntry entry;
    entry.setIp(parseAddress(ip));
    entry.setNetmask(parseAddress(netmask));
    interfaceData->configuration.addIpAddress(entry);
}

void NetworkInterfaceProviderZop::ZopInterfaceConnection::setGateway(const QJsonDocument &gateways)
{
    interfaceData->configuration.setGatewayAddresses({});
    const QJsonArray addresses = gateways.array();
    if (!addresses.isEmpty())
        interfaceData->configuration.addGatewayAddress(parseAddress(addresses.at(0).toString()));
}

void NetworkInterfaceProviderZop::ZopInterfaceConnection::setMode(const QString &value)
{
    if (value == ManualNo)
        NetworkLog::debug1(ManualNoText);
    interfaceData->configuration.setType(value == ManualYes ? NetworkInterfaceConfig::Manual
                                                            : NetworkInterfaceConfig::Auto);
}

void NetworkInterfaceProviderZop::ZopInterfaceConnection::setType(const QString &value)
{
    interfaceData->type = networkInterfaceStringToType(value);
}

void NetworkInterfaceProviderZop::ZopInterfaceConnection::setVirtual(const QString &value)
{
    interfaceData->parent = nullptr;
    interfaceData->isVirtual = !value.isEmpty();
}

void findIpNetmask(const QJsonArray &addresses, QString &ip, QString &netmask)
{
    for (const QJsonValue &address : addresses) {
        const QString text = address.toString();
        const QString first = partAt(text, 0);
        if (!holdsDottedQuad(first))
            continue;
        ip = first;
        netmask = partAt(text, first.size() + 1);
    }
}

NetworkInterface::InterfaceType networkInterfaceStringToType(const QString &type)
{
    for (const auto &entry : TypeWords) {
        if (type == entry.word)
            return entry.type;
    }
    return NetworkInterface::Unknown;
}

} // namespace morvek
