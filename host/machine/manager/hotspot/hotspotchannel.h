// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_HOTSPOTCHANNEL_H
#define MORVEK_HOSTD_HOTSPOTCHANNEL_H

#include <QtCore/QString>
#include <QtCore/QVector>

namespace morvek {

/*! What matters of a radio and of the air around it when it is to be an access point. Frequencies are in MHz. */
struct HotspotAir
{
    bool has2GHz = true;
    bool has5GHz = true;
    quint32 bound = 0; //!< where the hardware has to stay, as another interface of it is connected there; 0: free
    QVector<quint32> allowed; //!< where an access point may be; empty: nobody knows
    QVector<quint32> heard;   //!< of each network around
};

/*! Where an access point is put. */
struct HotspotChannel
{
    QString band; //!< "bg" or "a"; empty when there is no place for one
    quint32 number = 0;
    QString remark; //!< why it is not in the band that was asked for; empty when it is

    /*!
     * The least used of a few channels that everybody's devices know: of two that are used alike, the first. It is in
     * the other band where the one that was asked for has no place.
     */
    static HotspotChannel choose(bool asks5GHz, const HotspotAir &air);
};

} // namespace morvek

#endif
