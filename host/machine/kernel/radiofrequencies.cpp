// SPDX-License-Identifier: Apache-2.0
#include "radiofrequencies.h"

#include "netlinkdump.h"

#include <linux/genetlink.h>
#include <linux/netlink.h>
#include <linux/nl80211.h>
#include <net/if.h>

namespace morvek {

namespace {

template<typename Number>
Number number(const QByteArray &bytes)
{
    Number result = 0;
    if (bytes.size() == int(sizeof result))
        std::memcpy(&result, bytes.constData(), sizeof result);
    return result;
}

template<typename Struct>
QByteArray bytesOf(const Struct &content)
{
    return QByteArray(reinterpret_cast<const char *>(&content), int(sizeof content));
}

QByteArray request(quint8 command)
{
    return bytesOf(genlmsghdr {command, 1, 0});
}

/*! 0 where the kernel has no Wi-Fi. */
quint16 familyOfRadios()
{
    quint16 family = 0;
    QString error;
    NetlinkDump::read(
        NETLINK_GENERIC, GENL_ID_CTRL, request(CTRL_CMD_GETFAMILY), &error, [&family](const QByteArray &body) {
            const QMap<int, QByteArray> attributes = NetlinkDump::attributes(body.mid(GENL_HDRLEN));
            if (attributes.value(CTRL_ATTR_FAMILY_NAME) == QByteArray(NL80211_GENL_NAME, sizeof NL80211_GENL_NAME))
                family = number<quint16>(attributes.value(CTRL_ATTR_FAMILY_ID));
        });
    return family;
}

} // namespace

QVector<quint32> RadioFrequencies::read(const QString &interface)
{
    QVector<quint32> frequencies;
    const quint32 index = if_nametoindex(interface.toUtf8().constData());
    const quint16 family = familyOfRadios();
    if (index == 0 || family == 0)
        return frequencies;
    const QByteArray attributes = bytesOf(nlattr {NLA_HDRLEN + sizeof index, NL80211_ATTR_IFINDEX}) + bytesOf(index)
        + bytesOf(nlattr {NLA_HDRLEN, NL80211_ATTR_SPLIT_WIPHY_DUMP}); // else it leaves out what does not fit
    QString error;
    NetlinkDump::read(NETLINK_GENERIC, family, request(NL80211_CMD_GET_WIPHY) + attributes, &error,
                      [&frequencies](const QByteArray &body) { frequencies += readMessage(body.mid(GENL_HDRLEN)); });
    return frequencies;
}

QVector<quint32> RadioFrequencies::readMessage(const QByteArray &attributes)
{
    QVector<quint32> frequencies;
    const QMap<int, QByteArray> bands =
        NetlinkDump::attributes(NetlinkDump::attributes(attributes).value(NL80211_ATTR_WIPHY_BANDS));
    for (const QByteArray &band : bands) {
        const QMap<int, QByteArray> all =
            NetlinkDump::attributes(NetlinkDump::attributes(band).value(NL80211_BAND_ATTR_FREQS));
        for (const QByteArray &one : all) {
            const QMap<int, QByteArray> frequency = NetlinkDump::attributes(one);
            if (!frequency.contains(NL80211_FREQUENCY_ATTR_DISABLED)
                && !frequency.contains(NL80211_FREQUENCY_ATTR_NO_IR)
                && !frequency.contains(NL80211_FREQUENCY_ATTR_RADAR))
                frequencies += number<quint32>(frequency.value(NL80211_FREQUENCY_ATTR_FREQ));
        }
    }
    return frequencies;
}

} // namespace morvek
