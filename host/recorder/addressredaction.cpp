// SPDX-License-Identifier: Apache-2.0
#include "addressredaction.h"

#include <algorithm>

#include <arpa/inet.h>

namespace morvek {

namespace {

constexpr int V4Size = 4;
constexpr int V6Size = 16;
constexpr int LeastPrefix = 8; // a shorter one would make one network of all
constexpr int TestBlocks = 512;

/*! The bytes of an address, in the network's order; empty when \a text is none. */
QByteArray read(const QString &text)
{
    for (const int size : {V4Size, V6Size}) {
        QByteArray bytes(size, 0);
        if (!text.contains(QChar()) // where inet_pton() would end
            && inet_pton(size == V4Size ? AF_INET : AF_INET6, text.toUtf8().constData(), bytes.data()) == 1)
            return bytes;
    }
    return {};
}

QString toText(const QByteArray &address)
{
    char text[INET6_ADDRSTRLEN] = {};
    inet_ntop(address.size() == V4Size ? AF_INET : AF_INET6, address.constData(), text, sizeof(text));
    return QString::fromLatin1(text);
}

bool bit(const QByteArray &bytes, int index)
{
    return (static_cast<uchar>(bytes.at(index / 8)) >> (7 - index % 8)) & 1;
}

/*! \a address without what follows the first \a prefix bits. */
QByteArray masked(QByteArray address, int prefix)
{
    for (int i = prefix / 8; i < address.size(); ++i)
        address[i] = char(static_cast<uchar>(address.at(i)) & (0xff00 >> std::clamp(prefix - 8 * i, 0, 8)));
    return address;
}

/*! Whether the first \a prefix bits of both are the same. */
bool areInOne(const QByteArray &address, const QByteArray &other, int prefix)
{
    const int bytes = prefix / 8;
    if (!std::equal(address.begin(), address.begin() + bytes, other.begin()))
        return false;
    return prefix % 8 == 0 || ((address.at(bytes) ^ other.at(bytes)) & (0xff00 >> (prefix % 8)) & 0xff) == 0;
}

/*! The length of the prefix that \a netmask stands for; -1 when it is none of \a size bytes. */
int prefixOf(const QString &netmask, int size)
{
    bool isNumber = false;
    const int length = netmask.toInt(&isNumber);
    if (isNumber)
        return length >= 0 && length <= 8 * size && netmask == QString::number(length) ? length : -1;
    const QByteArray bits = read(netmask);
    if (bits.size() != size)
        return -1;
    int prefix = 0;
    while (prefix < 8 * size && bit(bits, prefix))
        ++prefix;
    return masked(bits, prefix) == bits ? prefix : -1;
}

QByteArray fromText(const char *text)
{
    return read(QString::fromLatin1(text));
}

/*! What says nothing about anybody: no address, every address, this machine. */
bool isCommon(const QByteArray &address)
{
    return address == fromText("0.0.0.0") || address == fromText("255.255.255.255") || address == fromText("::")
        || address == fromText("::1") || masked(address, 8) == fromText("127.0.0.0");
}

/*! The network of addresses that are good on one link only; empty when \a address is not of that. */
QByteArray linkLocal(const QByteArray &address, int *prefix)
{
    *prefix = address.size() == V4Size ? 16 : 10;
    const QByteArray network = address.size() == V4Size ? fromText("169.254.0.0") : fromText("fe80::");
    return masked(address, *prefix) == network ? network : QByteArray();
}

/*! The block of that number of those for documentation, then of those for tests, which are of 24 bits each. */
QByteArray v4Block(int number)
{
    static const QVector<QByteArray> documentation {fromText("192.0.2.0"), fromText("198.51.100.0"),
                                                    fromText("203.0.113.0")};
    if (number < documentation.size())
        return documentation.at(number);
    number = (number - documentation.size()) % TestBlocks;
    QByteArray block = fromText("198.18.0.0");
    block[1] = char(18 + number / 256);
    block[2] = char(number % 256);
    return block;
}

/*! Of those for documentation: the first ones differ in their highest bits, so that short prefixes differ, too. */
QByteArray v6Block(int number)
{
    QByteArray block = fromText("2001:db8::");
    for (int i = 0; i < 16; ++i) {
        if ((number >> i) & 1)
            block[4 + i / 8] = char(static_cast<uchar>(block.at(4 + i / 8)) | (0x80 >> (i % 8)));
    }
    return block;
}

void setHost(QByteArray *address, int host)
{
    (*address)[address->size() - 1] = char(host & 0xff);
    if (address->size() == V6Size)
        (*address)[address->size() - 2] = char(host >> 8);
}

QByteArray block(int size, int number)
{
    return size == V4Size ? v4Block(number) : v6Block(number);
}

} // namespace

QString AddressRedaction::replace(const QString &text)
{
    const int slash = text.indexOf(QLatin1Char('/'));
    const QByteArray address = read(text.left(slash));
    if (address.isEmpty())
        return {};
    const QString netmask = slash == -1 ? QString() : text.mid(slash + 1);
    const int prefix = slash == -1 ? -1 : prefixOf(netmask, address.size());
    if (slash != -1 && prefix == -1)
        return {};
    return toText(substituteOf(address, prefix)) + (slash == -1 ? QString() : QLatin1Char('/') + netmask);
}

QByteArray AddressRedaction::substituteOf(const QByteArray &address, int prefix)
{
    if (isCommon(address))
        return address;
    QByteArray &substitute = m_substitutes[address];
    if (!substitute.isEmpty())
        return substitute;
    Network *network = networkOf(address, prefix);
    const int bits = 8 * address.size();
    substitute = network->substitute;
    if (bits - network->prefix < 8) {
        // A small network has no room for another order of its hosts.
        const int own = static_cast<uchar>(address.at(address.size() - 1)) & (0xff >> (8 - (bits - network->prefix)));
        setHost(&substitute, own | static_cast<uchar>(substitute.at(address.size() - 1)));
        return substitute;
    }
    const int mostHosts = address.size() == V4Size ? 254 : 65534;
    const QList<QByteArray> used = m_substitutes.values();
    for (int i = 0; i < mostHosts; ++i) {
        setHost(&substitute, network->hosts++ % mostHosts + 1);
        if (substitute != address && used.count(substitute) == 0)
            break;
    }
    return substitute;
}

AddressRedaction::Network *AddressRedaction::networkOf(const QByteArray &address, int prefix)
{
    int local = 0;
    const QByteArray linkNetwork = linkLocal(address, &local);
    const auto holds = [&address](const Network &one, int length) {
        return one.bits.size() == address.size() && areInOne(address, one.bits, length);
    };
    auto found = std::find_if(m_networks.begin(), m_networks.end(),
                              [&holds](const Network &one) { return holds(one, one.prefix); });
    if (found != m_networks.end())
        return &*found;
    // A netmask may show that a network is wider than it seemed.
    const bool isTold = prefix != -1;
    prefix = isTold ? std::max(prefix, LeastPrefix) : address.size() == V4Size ? 24 : 64;
    if (!linkNetwork.isEmpty())
        prefix = local;
    found = std::find_if(m_networks.begin(), m_networks.end(), [&holds, isTold, prefix](const Network &one) {
        return isTold && one.prefix > prefix && holds(one, prefix);
    });
    if (found != m_networks.end()) {
        found->prefix = prefix;
        return &*found;
    }
    const QByteArray bits = masked(address, prefix);
    m_networks.append({bits, prefix, linkNetwork.isEmpty() ? freeBlock(bits, prefix) : linkNetwork, 0});
    return &m_networks.last();
}

/*! A block that is neither the network itself nor, with this netmask, one with another network's. */
QByteArray AddressRedaction::freeBlock(const QByteArray &bits, int prefix) const
{
    const auto isFree = [this, &bits, prefix](const QByteArray &candidate) {
        if (areInOne(candidate, bits, prefix))
            return false;
        return std::none_of(m_networks.begin(), m_networks.end(), [&candidate, prefix](const Network &one) {
            const int shorter = std::min(one.prefix, prefix);
            return one.substitute.size() == candidate.size() && areInOne(one.substitute, candidate, shorter);
        });
    };
    for (int number = 0; number < TestBlocks; ++number) {
        if (isFree(block(bits.size(), number)))
            return block(bits.size(), number);
    }
    return block(bits.size(), m_networks.size());
}

} // namespace morvek
