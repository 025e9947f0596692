// SPDX-License-Identifier: Apache-2.0
#include "interfaceaddress.h"

namespace morvek {

namespace {

constexpr int Ipv4Bits = 32;
constexpr int Ipv6Bits = 128;

} // namespace

InterfaceAddress::InterfaceAddress(const QString &text)
    : InterfaceAddress(QHostAddress(text.section(QLatin1Char('/'), 0, 0)), QHostAddress::parseSubnet(text))
{
}

InterfaceAddress::InterfaceAddress(const QHostAddress &host, const QPair<QHostAddress, int> &network)
    : m_host(host),
      m_network(network)
{
}

bool InterfaceAddress::isNetwork() const
{
    return hasRoom() && m_host == m_network.first;
}

bool InterfaceAddress::isBroadcast() const
{
    if (!hasRoom() || m_host.protocol() != QAbstractSocket::IPv4Protocol)
        return false;
    const quint64 hosts = (quint64(1) << (Ipv4Bits - m_network.second)) - 1;
    return m_host.toIPv4Address() == (m_network.first.toIPv4Address() | hosts);
}

bool InterfaceAddress::hasNeighbour(const QHostAddress &other) const
{
    const InterfaceAddress neighbour(other, m_network);
    return other != m_host && other.isInSubnet(m_network) && !neighbour.isNetwork() && !neighbour.isBroadcast();
}

bool InterfaceAddress::hasRoom() const
{
    const int bits = m_network.first.protocol() == QAbstractSocket::IPv4Protocol ? Ipv4Bits : Ipv6Bits;
    return m_network.second >= 0 && m_network.second < bits - 1;
}

} // namespace morvek
