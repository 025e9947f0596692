// SPDX-License-Identifier: Apache-2.0
#include "addresstext.h"

#include <QtCore/QRegularExpression>
#include <QtNetwork/QHostAddress>

namespace morvek {

namespace {

bool isIpv6(const QString &text)
{
    QHostAddress address;
    return !text.contains(QLatin1Char('%')) && text.contains(QLatin1Char(':')) && address.setAddress(text)
        && address.protocol() == QAbstractSocket::IPv6Protocol;
}

bool isPrefixLength(const QString &text, int most)
{
    static const QRegularExpression number(QStringLiteral("\\A(?:0|[1-9][0-9]{0,2})\\z"));
    return number.match(text).hasMatch() && text.toInt() <= most;
}

QString netmaskOf(int prefixLength)
{
    return QHostAddress(prefixLength == 0 ? 0 : ~0u << (32 - prefixLength)).toString();
}

} // namespace

bool AddressText::isIpv4(const QString &text, quint32 *address)
{
    static const QRegularExpression quad(QStringLiteral("\\A(?:(?:0|[1-9][0-9]{0,2})(?:\\.|\\z)){4}(?<!\\.)\\z"));
    if (!quad.match(text).hasMatch())
        return false;
    quint32 value = 0;
    for (const QString &part : text.split(QLatin1Char('.'))) {
        const uint number = part.toUInt();
        if (number > 255)
            return false;
        value = value << 8 | number;
    }
    if (address)
        *address = value;
    return true;
}

bool AddressText::isNetmask(const QString &text, quint32 *netmask)
{
    quint32 value = 0;
    if (!isIpv4(text, &value) || value == 0 || (~value & (~value + 1)) != 0)
        return false;
    if (netmask)
        *netmask = value;
    return true;
}

bool AddressText::isHostAddress(const QString &text, quint32 *address)
{
    quint32 value = 0;
    if (!isIpv4(text, &value))
        return false;
    const quint32 first = value >> 24;
    if (first == 0 || first == 127 || first >= 224)
        return false;
    if (address)
        *address = value;
    return true;
}

bool AddressText::isInterfaceAddress(const QString &text, QString *published)
{
    const int slash = text.indexOf(QLatin1Char('/'));
    const QString address = text.left(slash);
    QString netmask = text.mid(slash + 1);
    if (isIpv4(address) && isPrefixLength(netmask, 32))
        netmask = netmaskOf(netmask.toInt());
    if (published)
        *published = address + QLatin1Char('/') + netmask;
    return slash != -1
        && ((isIpv4(address) && isNetmask(netmask)) || (isIpv6(address) && isPrefixLength(netmask, 128)));
}

bool AddressText::isGateway(const QString &text)
{
    return isIpv4(text) || isIpv6(text);
}

} // namespace morvek
