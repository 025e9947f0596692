// SPDX-License-Identifier: Apache-2.0
#include "kernelnetwork.h"

#include "netlinkdump.h"

#include <QtNetwork/QHostAddress>

#include <algorithm>
#include <cstring>

#include <arpa/inet.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace morvek {

namespace {

using NetlinkAttributes = QMap<int, QByteArray>;

template<typename Number>
Number number(const QByteArray &bytes)
{
    Number result = 0;
    if (bytes.size() == int(sizeof result))
        std::memcpy(&result, bytes.constData(), sizeof result);
    return result;
}

QByteArray text(const QByteArray &bytes)
{
    return bytes.left(bytes.indexOf('\0'));
}

KernelLink readLink(const NetlinkAttributes &attributes)
{
    KernelLink link;
    link.kind = text(NetlinkDump::attributes(attributes.value(IFLA_LINKINFO)).value(IFLA_INFO_KIND));
    link.bus = text(attributes.value(IFLA_PARENT_DEV_BUS_NAME));
    link.masterIndex = number<int>(attributes.value(IFLA_MASTER));
    // A parent in another namespace has an index of that one, and the other end of a veth pair is no parent.
    if (!attributes.contains(IFLA_LINK_NETNSID) && link.kind != "veth")
        link.parentIndex = number<int>(attributes.value(IFLA_LINK));
    return link;
}

QString ipv4Text(const QByteArray &bytes)
{
    return bytes.size() == 4 ? QHostAddress(ntohl(number<quint32>(bytes))).toString() : QString();
}

/*! A route over several ways at once: one after the other, as they are listed. */
QVector<KernelRoute> readWays(const QByteArray &bytes, quint32 metric)
{
    QVector<KernelRoute> routes;
    int offset = 0;
    while (offset + int(sizeof(rtnexthop)) <= bytes.size()) {
        rtnexthop way;
        std::memcpy(&way, bytes.constData() + offset, sizeof way);
        if (way.rtnh_len < sizeof way)
            break;
        const QByteArray nested = bytes.mid(offset + int(sizeof way), way.rtnh_len - int(sizeof way));
        if (!(way.rtnh_flags & (RTNH_F_DEAD | RTNH_F_LINKDOWN)))
            routes += {way.rtnh_ifindex, ipv4Text(NetlinkDump::attributes(nested).value(RTA_GATEWAY)), metric};
        offset += RTNH_ALIGN(way.rtnh_len);
    }
    return routes;
}

QVector<KernelRoute> readRoute(const rtmsg &route, const NetlinkAttributes &attributes)
{
    const bool works = !(route.rtm_flags & (RTNH_F_DEAD | RTNH_F_LINKDOWN));
    if (route.rtm_dst_len != 0 || route.rtm_type != RTN_UNICAST || route.rtm_table != RT_TABLE_MAIN || !works)
        return {};
    const auto metric = number<quint32>(attributes.value(RTA_PRIORITY));
    if (attributes.contains(RTA_MULTIPATH))
        return readWays(attributes.value(RTA_MULTIPATH), metric);
    return {{number<int>(attributes.value(RTA_OIF)), ipv4Text(attributes.value(RTA_GATEWAY)), metric}};
}

} // namespace

bool KernelNetwork::readLinks(QMap<int, KernelLink> *links, QString *error)
{
    links->clear();
    return NetlinkDump::read<ifinfomsg>(RTM_GETLINK, AF_UNSPEC, error,
                                        [links](const ifinfomsg &message, const NetlinkAttributes &attributes) {
                                            links->insert(message.ifi_index, readLink(attributes));
                                        });
}

bool KernelNetwork::readDefaultRoutes(QVector<KernelRoute> *routes, QString *error)
{
    routes->clear();
    for (const unsigned char family : {uchar(AF_INET), uchar(AF_INET6)}) {
        QVector<KernelRoute> found;
        const auto add = [&found, family](const rtmsg &route, const NetlinkAttributes &attributes) {
            if (route.rtm_family == family)
                found += readRoute(route, attributes);
        };
        if (!NetlinkDump::read<rtmsg>(RTM_GETROUTE, family, error, add))
            return false;
        std::stable_sort(found.begin(), found.end(),
                         [](const KernelRoute &a, const KernelRoute &b) { return a.metric < b.metric; });
        *routes += found;
    }
    return true;
}

} // namespace morvek
