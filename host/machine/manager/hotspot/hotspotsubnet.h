// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_HOTSPOTSUBNET_H
#define MORVEK_HOSTD_HOTSPOTSUBNET_H

#include <QtCore/QString>
#include <QtCore/QVector>

namespace morvek {

/*! An IPv4 address of a host, with the length of its network's prefix. */
struct HotspotSubnet
{
    quint32 address = 0;
    int prefix = 0;

    /*! False when the two are not an address and a netmask. */
    static bool read(const QString &address, const QString &netmask, HotspotSubnet *subnet);
    /*! \a asked or, when one of \a taken meets it, the first private network of 256 addresses that none does. */
    static HotspotSubnet choose(const HotspotSubnet &asked, const QVector<HotspotSubnet> &taken);

    bool meets(const HotspotSubnet &other) const;
    QString addressText() const;
    /*! "192.168.0.1/24" */
    QString toString() const;
};

} // namespace morvek

#endif
