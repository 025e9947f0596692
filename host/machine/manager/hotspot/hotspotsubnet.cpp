// SPDX-License-Identifier: Apache-2.0
#include "hotspotsubnet.h"

#include "addresstext.h"

#include <QtCore/QtAlgorithms>
#include <QtNetwork/QHostAddress>

#include <algorithm>

namespace morvek {

namespace {

quint32 mask(int prefix)
{
    return prefix == 0 ? 0 : ~quint32(0) << (32 - prefix);
}

bool isFree(const HotspotSubnet &subnet, const QVector<HotspotSubnet> &taken)
{
    return std::none_of(taken.begin(), taken.end(),
                        [&subnet](const HotspotSubnet &other) { return subnet.meets(other); });
}

} // namespace

bool HotspotSubnet::read(const QString &address, const QString &netmask, HotspotSubnet *subnet)
{
    quint32 bits = 0;
    if (!AddressText::isHostAddress(address, &subnet->address) || !AddressText::isNetmask(netmask, &bits))
        return false;
    subnet->prefix = int(qPopulationCount(bits));
    return true;
}

HotspotSubnet HotspotSubnet::choose(const HotspotSubnet &asked, const QVector<HotspotSubnet> &taken)
{
    if (isFree(asked, taken))
        return asked;
    // 10.42.0.1 is where the manager itself begins; 192.168.0.1 and 172.31.0.1 are for who has all of 10/8.
    for (const quint32 first : {0x0a2a0001U, 0xc0a80001U, 0xac1f0001U}) {
        for (quint32 third = 0; third < 256; ++third) {
            const HotspotSubnet subnet {first + (third << 8), 24};
            if (isFree(subnet, taken))
                return subnet;
        }
    }
    return asked;
}

bool HotspotSubnet::meets(const HotspotSubnet &other) const
{
    const quint32 common = mask(std::min(prefix, other.prefix));
    return (address & common) == (other.address & common);
}

QString HotspotSubnet::addressText() const
{
    return QHostAddress(address).toString();
}

QString HotspotSubnet::toString() const
{
    return QStringLiteral("%1/%2").arg(addressText()).arg(prefix);
}

} // namespace morvek
