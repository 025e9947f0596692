// SPDX-License-Identifier: Apache-2.0
// Addresses that are typed for a manual configuration: four lines, the address, which may have the length of its prefix
// behind it, the netmask, the length of the prefix and the gateway. An own reading says which are taken, and as what.
#include "addresssearch.h"
#include "ipv4.h"

using namespace morvek;

namespace {

bool readHost(const QString &text, quint32 *address)
{
    return AddressSearch::readPlain(text, address) && *address >> 24 != 0 && *address >> 24 != 127
        && *address >> 24 < 224;
}

bool readPrefix(const QString &text, quint32 *mask)
{
    for (int length = 1; length <= 31; ++length) {
        if (text == QString::number(length)) {
            *mask = quint32(0xffffffff00000000 >> length);
            return true;
        }
    }
    return false;
}

bool readNetmask(const QString &text, quint32 *mask)
{
    quint32 expected = 0;
    for (int length = 1; length <= 31; ++length) {
        if (AddressSearch::readPlain(text, mask) && readPrefix(QString::number(length), &expected) && *mask == expected)
            return true;
    }
    return false;
}

/*! All that is there must be a mask, and the same; only one of the options may be. */
bool readMasks(const QString &behind, bool hasBehind, const QString &netmask, const QString &prefix, quint32 *mask)
{
    quint32 first = 0;
    quint32 second = 0;
    if ((hasBehind && !readPrefix(behind, &first)) || (!netmask.isEmpty() && !readNetmask(netmask, &second))
        || (!prefix.isEmpty() && !readPrefix(prefix, &second)) || (!netmask.isEmpty() && !prefix.isEmpty()))
        return false;
    *mask = hasBehind ? first : second;
    return *mask != 0 && (first == second || first == 0 || second == 0);
}

bool isHostOf(quint32 address, quint32 mask)
{
    const quint32 host = address & ~mask;
    return mask == 0xfffffffe || (host != 0 && host != ~mask);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QStringList lines = Fuzz::text(Fuzz::bytes(data, size)).split(QLatin1Char('\n'));
    const ManualAddress typed {lines.value(0), lines.value(1), lines.value(2), lines.value(3)};
    const int slash = typed.address.indexOf(QLatin1Char('/'));
    const QString behind = slash < 0 ? QString() : typed.address.mid(slash + 1);
    quint32 address = 0;
    quint32 mask = 0;
    quint32 gateway = 0;
    const bool valid = readHost(typed.address.left(slash), &address)
        && readMasks(behind, slash >= 0, typed.netmask, typed.prefix, &mask) && readHost(typed.gateway, &gateway)
        && (address & mask) == (gateway & mask) && address != gateway && isHostOf(address, mask)
        && isHostOf(gateway, mask);

    NetworkInterfaceConfig config;
    QString error;
    Fuzz::expectEqual(manualConfiguration(typed, &config, &error), valid, "whether the addresses are taken");
    Fuzz::expectEqual(error.isEmpty(), valid, "whether there is a reason");
    if (!valid) {
        Fuzz::expect(config.isEmpty(), "what is wrong leaves the configuration alone");
        return 0;
    }
    QNetworkAddressEntry entry;
    entry.setIp(QHostAddress(address));
    entry.setNetmask(QHostAddress(mask));
    NetworkInterfaceConfig expected;
    expected.setType(NetworkInterfaceConfig::Manual);
    expected.addIpAddress(entry);
    expected.addGatewayAddress(QHostAddress(gateway));
    Fuzz::expect(config == expected, "the configuration");
    return 0;
}
