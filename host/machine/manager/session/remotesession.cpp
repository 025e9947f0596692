// SPDX-License-Identifier: Apache-2.0
#include "remotesession.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtNetwork/QNetworkInterface>

#include <algorithm>

namespace morvek {

namespace {

const QByteArray Variable = QByteArrayLiteral("SSH_CONNECTION=");

/*! What follows \a start in one of \a entries; null when there is none. */
QByteArray valueOf(const QByteArray &start, const QList<QByteArray> &entries)
{
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&start](const QByteArray &entry) { return entry.startsWith(start); });
    return found == entries.end() ? QByteArray() : found->mid(start.size()).trimmed();
}

/*! Empty when it is gone, or another user's. */
QByteArray contentOf(const QString &file)
{
    QFile opened(file);
    return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray();
}

/*! Addresses are compared without their scopes. */
bool has(int index, const RemoteSession::Interface &interface, const QHostAddress &address)
{
    const QString scope = address.scopeId();
    return interface.addresses.contains(address)
        && (scope.isEmpty() || scope == interface.name || scope == QString::number(index));
}

bool isTunnel(const RemoteSession::Interface &interface)
{
    return interface.link.kind == "wireguard" || interface.link.kind == "tun";
}

/*! The indexes of what carries the interface \a index, without what carries those. */
QList<int> carriersOf(int index, const QMap<int, RemoteSession::Interface> &interfaces,
                      const QVector<KernelRoute> &routes)
{
    const RemoteSession::Interface interface = interfaces.value(index);
    QList<int> carriers {interface.link.parentIndex};
    for (auto it = interfaces.begin(); it != interfaces.end(); ++it) {
        if (it->link.masterIndex == index)
            carriers += it.key();
    }
    for (const KernelRoute &route : routes) {
        if (isTunnel(interface))
            carriers += route.interfaceIndex;
    }
    return carriers;
}

} // namespace

QByteArray RemoteSession::connection(qint64 pid, const QString &processes)
{
    while (pid > 0) {
        const QString process = QStringLiteral("%1/%2/").arg(processes).arg(pid);
        QByteArray connection = valueOf(Variable, contentOf(process + QLatin1String("environ")).split('\0'));
        if (!connection.isEmpty())
            return connection;
        pid = valueOf("PPid:", contentOf(process + QLatin1String("status")).split('\n')).toLongLong();
    }
    return {};
}

QHostAddress RemoteSession::address(const QByteArray &connection)
{
    // Client, its port, server, its port.
    const QHostAddress address(QString::fromLatin1(connection.split(' ').value(2)));
    bool isIpv4 = false; // also when it is written as an IPv6 one
    const quint32 ipv4 = address.toIPv4Address(&isIpv4);
    return isIpv4 ? QHostAddress(ipv4) : address;
}

RemoteSession::Carriers RemoteSession::carriers(const QHostAddress &address, const QMap<int, Interface> &interfaces,
                                                const QVector<KernelRoute> &routes)
{
    QList<int> found;
    for (auto it = interfaces.begin(); it != interfaces.end(); ++it) {
        if (has(it.key(), *it, address))
            found += it.key();
    }
    Carriers result;
    result.isCertain = !found.isEmpty();
    for (const KernelRoute &route : routes) {
        if (!result.isCertain && interfaces.contains(route.interfaceIndex) && !found.contains(route.interfaceIndex))
            found += route.interfaceIndex;
    }
    for (int i = 0; i < found.size(); ++i) {
        result.names += interfaces.value(found.at(i)).name;
        const QList<int> below = carriersOf(found.at(i), interfaces, routes);
        for (const int carrier : below) {
            if (interfaces.contains(carrier) && !found.contains(carrier))
                found += carrier;
        }
    }
    return result;
}

bool RemoteSession::read(QHostAddress *own, Carriers *carried, QString *error)
{
    *own = address(connection(QCoreApplication::applicationPid()));
    *carried = {};
    QMap<int, KernelLink> links;
    QVector<KernelRoute> routes;
    if (own->isNull())
        return true;
    if (!KernelNetwork::readLinks(&links, error) || !KernelNetwork::readDefaultRoutes(&routes, error))
        return false;
    QMap<int, Interface> interfaces;
    const QList<QNetworkInterface> all = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface &one : all) {
        // Who comes in there has come to the machine in another way: by a tunnel of SSH's, perhaps.
        if (one.flags().testFlag(QNetworkInterface::IsLoopBack))
            continue;
        Interface interface {
            one.name(), {}, links.value(one.index())
        };
        const QList<QNetworkAddressEntry> entries = one.addressEntries();
        for (const QNetworkAddressEntry &entry : entries)
            interface.addresses += entry.ip();
        interfaces.insert(one.index(), interface);
    }
    *carried = carriers(*own, interfaces, routes);
    return true;
}

} // namespace morvek
