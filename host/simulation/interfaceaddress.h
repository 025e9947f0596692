// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_INTERFACEADDRESS_H
#define MORVEK_HOSTD_INTERFACEADDRESS_H

#include <QtNetwork/QHostAddress>

namespace morvek {

/*! An address with the network that it is in, of an interface: "10.0.0.5/255.0.0.0" or "fe80::1/64". */
class InterfaceAddress
{
public:
    /*! Of a text that is no such address it makes one that is nowhere. */
    explicit InterfaceAddress(const QString &text);

    QHostAddress host() const { return m_host; }
    /*! Whether it stands for the whole network, which no network of one or two addresses has room for. */
    bool isNetwork() const;
    /*! Whether it stands for everybody there, which there is in IPv4 only. */
    bool isBroadcast() const;
    /*! Whether \a other is another host of the network. */
    bool hasNeighbour(const QHostAddress &other) const;

private:
    InterfaceAddress(const QHostAddress &host, const QPair<QHostAddress, int> &network);
    bool hasRoom() const;

    QHostAddress m_host;
    QPair<QHostAddress, int> m_network; // its first address, and the length of its prefix
};

} // namespace morvek

#endif
