// SPDX-License-Identifier: Apache-2.0
#include "ipv4form.h"

#include <networkinterfaceconfig.h>

#include <QtCore/QRegularExpression>

namespace morvek {

namespace {

// Stricter than QHostAddress, which takes "10.1" for 10.0.0.1 and reads a leading zero as octal.
bool readDotted(const QString &text, quint32 *value)
{
    static const QRegularExpression dotted(
        QStringLiteral("\\A(?:(?:25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])(?:\\.(?!\\z)|\\z)){4}\\z"));
    if (!dotted.match(text).hasMatch())
        return false;
    *value = QHostAddress(text).toIPv4Address();
    return true;
}

bool readLength(const QString &text, quint32 *mask)
{
    static const QRegularExpression number(QStringLiteral("\\A(?:[1-9]|[12][0-9]|3[01])\\z"));
    if (!number.match(text).hasMatch())
        return false;
    *mask = ~0u << (32 - text.toInt());
    return true;
}

Ipv4Form::Fault netmaskFaultOf(const QString &typed, quint32 *mask)
{
    const QString text = typed.trimmed();
    if (text.isEmpty())
        return Ipv4Form::Missing;
    if (readLength(text, mask))
        return Ipv4Form::NoFault;
    if (!readDotted(text, mask))
        return Ipv4Form::NotAnAddress;
    const quint32 hosts = ~*mask;
    const bool isMask = (hosts & (hosts + 1)) == 0 && *mask != 0 && hosts != 0;
    return isMask ? Ipv4Form::NoFault : Ipv4Form::NotANetmask;
}

Ipv4Form::Fault hostFaultOf(const QString &typed, quint32 *address)
{
    const QString text = typed.trimmed();
    if (text.isEmpty())
        return Ipv4Form::Missing;
    if (!readDotted(text, address))
        return Ipv4Form::NotAnAddress;
    const quint32 network = *address >> 24;
    return network == 0 || network == 127 || network >= 224 ? Ipv4Form::NotAHost : Ipv4Form::NoFault;
}

Ipv4Form::Fault faultInNetwork(quint32 address, quint32 mask)
{
    const quint32 host = address & ~mask;
    if (~mask == 1) // a network of two addresses has room for no others
        return Ipv4Form::NoFault;
    if (host == 0)
        return Ipv4Form::NetworkItself;
    return host == ~mask ? Ipv4Form::Broadcast : Ipv4Form::NoFault;
}

QString textOf(Ipv4Form::Fault fault)
{
    switch (fault) {
    case Ipv4Form::NoFault:
        break;
    case Ipv4Form::Missing:
        return Ipv4Form::tr("Missing.");
    case Ipv4Form::NotAnAddress:
        return Ipv4Form::tr("Not an address: four numbers from 0 to 255 with dots between them.");
    case Ipv4Form::NotANetmask:
        return Ipv4Form::tr("Not a netmask: one is like 255.255.255.0, or like 24.");
    case Ipv4Form::NotAHost:
        return Ipv4Form::tr("Not the address of a device in a network.");
    case Ipv4Form::NetworkItself:
        return Ipv4Form::tr("The first address of the network stands for the network itself.");
    case Ipv4Form::Broadcast:
        return Ipv4Form::tr("The last address of the network stands for all its devices.");
    case Ipv4Form::NotInNetwork:
        return Ipv4Form::tr("Not in the network of address and netmask.");
    case Ipv4Form::OwnAddress:
        return Ipv4Form::tr("This is the interface's own address: the router has another one.");
    }
    return QString();
}

QHostAddress hostOf(const QString &typed)
{
    return QHostAddress(typed.trimmed());
}

} // namespace

Ipv4Form::Ipv4Form(QObject *parent)
    : QObject(parent)
{
}

Ipv4Form::~Ipv4Form() = default;

void Ipv4Form::setAddress(const QString &address)
{
    set(address, m_netmask, m_gateway);
}

void Ipv4Form::setNetmask(const QString &netmask)
{
    set(m_address, netmask, m_gateway);
}

void Ipv4Form::setGateway(const QString &gateway)
{
    set(m_address, m_netmask, gateway);
}

int Ipv4Form::prefixLength() const
{
    return m_netmaskFault == NoFault ? int(qPopulationCount(m_mask)) : -1;
}

QString Ipv4Form::addressText() const
{
    return textOf(m_addressFault);
}

QString Ipv4Form::netmaskText() const
{
    return m_netmaskFault == NotAnAddress ? textOf(NotANetmask) : textOf(m_netmaskFault);
}

QString Ipv4Form::gatewayText() const
{
    return textOf(m_gatewayFault);
}

bool Ipv4Form::isValid() const
{
    return m_addressFault == NoFault && m_netmaskFault == NoFault && m_gatewayFault == NoFault;
}

void Ipv4Form::read(const NetworkInterfaceConfig &config)
{
    const QNetworkAddressEntry address = config.ipAddresses().value(0);
    set(address.ip().toString(), address.netmask().toString(), config.gatewayAddresses().value(0).toString());
}

NetworkInterfaceConfig Ipv4Form::configuration() const
{
    NetworkInterfaceConfig config;
    if (!isValid())
        return config;
    QNetworkAddressEntry entry;
    entry.setIp(hostOf(m_address));
    entry.setNetmask(QHostAddress(m_mask));
    config.setType(NetworkInterfaceConfig::Manual);
    config.addIpAddress(entry);
    config.addGatewayAddress(hostOf(m_gateway));
    return config;
}

void Ipv4Form::set(const QString &address, const QString &netmask, const QString &gateway)
{
    if (address == m_address && netmask == m_netmask && gateway == m_gateway)
        return;
    m_address = address;
    m_netmask = netmask;
    m_gateway = gateway;
    check();
    emit changed();
}

void Ipv4Form::check()
{
    quint32 address = 0;
    quint32 gateway = 0;
    m_addressFault = hostFaultOf(m_address, &address);
    m_netmaskFault = netmaskFaultOf(m_netmask, &m_mask);
    m_gatewayFault = hostFaultOf(m_gateway, &gateway);
    if (m_netmaskFault != NoFault)
        return;
    const bool hasAddress = m_addressFault == NoFault;
    if (hasAddress)
        m_addressFault = faultInNetwork(address, m_mask);
    if (m_gatewayFault != NoFault)
        return;
    if (hasAddress && (address & m_mask) != (gateway & m_mask))
        m_gatewayFault = NotInNetwork;
    else if (hasAddress && address == gateway)
        m_gatewayFault = OwnAddress;
    else
        m_gatewayFault = faultInNetwork(gateway, m_mask);
}

} // namespace morvek
