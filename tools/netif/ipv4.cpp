// SPDX-License-Identifier: Apache-2.0
#include "ipv4.h"

#include <QtCore/QRegularExpression>

namespace morvek {

namespace {

bool fail(QString *error, const QString &sentence)
{
    *error = sentence;
    return false;
}

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

const QString PrefixRange = QStringLiteral("the prefix length is a number from 1 to 31");

bool readPrefix(const QString &text, quint32 *mask)
{
    static const QRegularExpression number(QStringLiteral("\\A(?:[1-9]|[12][0-9]|3[01])\\z"));
    if (!number.match(text).hasMatch())
        return false;
    *mask = ~0u << (32 - text.toInt());
    return true;
}

bool readMask(const ManualAddress &typed, quint32 *mask, QString *error)
{
    if (typed.netmask.isEmpty() == typed.prefix.isEmpty())
        return fail(
            error,
            typed.prefix.isEmpty()
                ? QStringLiteral("the netmask is missing: add it to the address, like /24, or --netmask 255.255.255.0")
                : QStringLiteral("--netmask and --prefix say the same: give only one of them"));

    if (typed.netmask.isEmpty())
        return readPrefix(typed.prefix, mask)
            || fail(error, QStringLiteral("--prefix \"%1\" does not fit: %2").arg(typed.prefix, PrefixRange));
    if (!readDotted(typed.netmask, mask))
        return fail(error,
                    QStringLiteral("--netmask \"%1\" is no netmask: write it like 255.255.255.0, or use --prefix")
                        .arg(typed.netmask));
    const quint32 hosts = ~*mask;
    if ((hosts & (hosts + 1)) != 0)
        return fail(error,
                    QStringLiteral("--netmask \"%1\" is no netmask: its ones must come before its zeros, like "
                                   "255.255.255.0")
                        .arg(typed.netmask));
    if (*mask == 0 || hosts == 0)
        return fail(error, QStringLiteral("--netmask \"%1\" does not fit: %2").arg(typed.netmask, PrefixRange));
    return true;
}

/*! Reads the mask of an address that has it behind itself; another one must be the same. */
bool readMaskBehind(const QString &behind, const ManualAddress &typed, quint32 *mask, QString *error)
{
    if (!readPrefix(behind, mask))
        return fail(error, QStringLiteral("--address \"%1\" does not fit: %2").arg(typed.address, PrefixRange));
    quint32 other = *mask;
    if ((!typed.netmask.isEmpty() || !typed.prefix.isEmpty()) && !readMask(typed, &other, error))
        return false;
    if (other == *mask)
        return true;
    const QString option = typed.prefix.isEmpty() ? QStringLiteral("--netmask ") + typed.netmask
                                                  : QStringLiteral("--prefix ") + typed.prefix;
    return fail(error,
                QStringLiteral("--address %1 and %2 contradict each other: leave %2 out, or \"/%3\"")
                    .arg(typed.address, option, behind));
}

bool readHost(const QString &option, const QString &text, quint32 *value, QString *error)
{
    if (text.isEmpty())
        return fail(error, QStringLiteral("the %1 is missing: add --%1 with an address like 192.168.0.1").arg(option));
    if (!readDotted(text, value))
        return fail(error,
                    QStringLiteral("--%1 \"%2\" is no IPv4 address: write it like 192.168.0.1").arg(option, text));
    const quint32 network = *value >> 24;
    if (network == 0 || network == 127 || network >= 224)
        return fail(error,
                    QStringLiteral("--%1 %2 is no address of a machine in a network: use one like 192.168.0.1")
                        .arg(option, text));
    return true;
}

// A network of two addresses has neither a network address nor one for broadcasts.
bool isHostOf(quint32 address, quint32 mask)
{
    const quint32 host = address & ~mask;
    return ~mask == 1 || (host != 0 && host != ~mask);
}

QString networkText(quint32 address, quint32 mask)
{
    return QStringLiteral("%1/%2").arg(QHostAddress(address & mask).toString()).arg(qPopulationCount(mask));
}

bool checkTogether(quint32 address, quint32 mask, quint32 gateway, QString *error)
{
    const QString network = networkText(address, mask);
    const QString hosts = QStringLiteral("the first and the last address of %1 stand for the network: use another");
    if (!isHostOf(address, mask))
        return fail(
            error,
            QStringLiteral("--address %1 does not fit: %2").arg(QHostAddress(address).toString(), hosts.arg(network)));
    if ((address & mask) != (gateway & mask))
        return fail(error,
                    QStringLiteral("--gateway %1 is outside of the network %2: use an address of that network")
                        .arg(QHostAddress(gateway).toString(), network));
    if (gateway == address)
        return fail(error,
                    QStringLiteral("--gateway %1 is the interface's own address: use the router's")
                        .arg(QHostAddress(gateway).toString()));
    if (!isHostOf(gateway, mask))
        return fail(
            error,
            QStringLiteral("--gateway %1 does not fit: %2").arg(QHostAddress(gateway).toString(), hosts.arg(network)));
    return true;
}

} // namespace

bool manualConfiguration(const ManualAddress &typed, NetworkInterfaceConfig *config, QString *error)
{
    quint32 address = 0;
    quint32 mask = 0;
    quint32 gateway = 0;
    const int slash = typed.address.indexOf(QLatin1Char('/'));
    if (!readHost(QStringLiteral("address"), typed.address.left(slash), &address, error)
        || !(slash < 0 ? readMask(typed, &mask, error)
                       : readMaskBehind(typed.address.mid(slash + 1), typed, &mask, error))
        || !readHost(QStringLiteral("gateway"), typed.gateway, &gateway, error)
        || !checkTogether(address, mask, gateway, error))
        return false;

    QNetworkAddressEntry entry;
    entry.setIp(QHostAddress(address));
    entry.setNetmask(QHostAddress(mask));
    config->setType(NetworkInterfaceConfig::Manual);
    config->setIpAddresses({entry});
    config->setGatewayAddresses({QHostAddress(gateway)});
    return true;
}

} // namespace morvek
