// SPDX-License-Identifier: Apache-2.0
#include "hotspotchannel.h"

#include <algorithm>
#include <limits>

namespace morvek {

namespace {

struct Band
{
    QString word; // the manager's
    QString text;
    QVector<quint32> channels; // in order of preference
    quint32 firstFrequency;    // of the channel 0
    quint32 from;              // frequencies
    quint32 to;
    quint32 width; // nearer networks disturb one another

    quint32 frequency(quint32 channel) const { return firstFrequency + 5 * channel; }
    bool contains(quint32 mhz) const { return mhz >= from && mhz <= to; }
};

// Channels 1, 6 and 11 do not overlap. Those of the 5 GHz band are the ones that need not give way to radar.
const Band Low {QStringLiteral("bg"), QStringLiteral("2.4 GHz"), {6, 1, 11}, 2407, 2412, 2472, 25};
const Band High {QStringLiteral("a"), QStringLiteral("5 GHz"), {36, 40, 44, 48}, 5000, 5180, 5825, 20};

quint32 use(quint32 frequency, const Band &band, const HotspotAir &air)
{
    return quint32(std::count_if(air.heard.begin(), air.heard.end(), [&](quint32 heard) {
        return heard + band.width > frequency && heard < frequency + band.width;
    }));
}

bool isAllowed(quint32 frequency, const HotspotAir &air)
{
    return air.allowed.isEmpty() || air.allowed.contains(frequency);
}

/*! 0: there is none. */
quint32 bestChannel(const Band &band, const HotspotAir &air)
{
    if (air.bound != 0)
        return band.contains(air.bound) ? (air.bound - band.firstFrequency) / 5 : 0;
    quint32 best = 0;
    quint32 least = std::numeric_limits<quint32>::max();
    for (const quint32 channel : band.channels) {
        const quint32 frequency = band.frequency(channel);
        if (!isAllowed(frequency, air) || use(frequency, band, air) >= least)
            continue;
        least = use(frequency, band, air);
        best = channel;
    }
    return best;
}

QString objection(const Band &band, bool has, const HotspotAir &air)
{
    if (!has)
        return QStringLiteral("the radio has no %1 band").arg(band.text);
    if (air.bound != 0)
        return QStringLiteral("the radio is connected on %1 MHz, and can be nowhere else").arg(air.bound);
    return QStringLiteral("no access point is allowed in the %1 band").arg(band.text);
}

} // namespace

HotspotChannel HotspotChannel::choose(bool asks5GHz, const HotspotAir &air)
{
    const Band &asked = asks5GHz ? High : Low;
    const Band &other = asks5GHz ? Low : High;
    const bool hasAsked = asks5GHz ? air.has5GHz : air.has2GHz;
    const bool hasOther = asks5GHz ? air.has2GHz : air.has5GHz;
    if (const quint32 channel = hasAsked ? bestChannel(asked, air) : 0)
        return {asked.word, channel, {}};
    const QString reason = objection(asked, hasAsked, air);
    if (const quint32 channel = hasOther ? bestChannel(other, air) : 0)
        return {other.word, channel, reason};
    return {{}, 0, reason};
}

} // namespace morvek
