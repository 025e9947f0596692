// SPDX-License-Identifier: Apache-2.0
#include "wifinetworkorder_p.h"

#include <algorithm>
#include <limits>

namespace morvek {

namespace {

constexpr int Hysteresis = 6;

/*! Any level that is known is stronger than one that is not, and by enough to pass it. */
qint64 strength(int level)
{
    return level == 0 ? qint64(std::numeric_limits<int>::min()) - Hysteresis : level;
}

} // namespace

bool WifiNetworkOrder::isStronger(int level, int other)
{
    return strength(level) > strength(other);
}

QVector<int> WifiNetworkOrder::settled(const QVector<int> &levels)
{
    QVector<int> order;
    order.reserve(levels.size());
    for (int row = 0; row < levels.size(); ++row) {
        const qint64 passed = strength(levels[row]) - Hysteresis;
        int place = row;
        while (place > 0 && strength(levels[order.at(place - 1)]) <= passed)
            --place;
        order.insert(place, row);
    }
    return order;
}

QVector<bool> WifiNetworkOrder::staying(const QVector<int> &places)
{
    // Of the ascending sequences of each length, the last row of the one that ends lowest; and the row before each in
    // the longest sequence that ends there.
    QVector<int> ends;
    QVector<int> before(places.size(), -1);
    for (int row = 0; row < places.size(); ++row) {
        const auto end = std::lower_bound(ends.begin(), ends.end(), row,
                                          [&places](int one, int other) { return places[one] < places[other]; });
        if (end != ends.begin())
            before[row] = end[-1];
        if (end == ends.end())
            ends.append(row);
        else
            *end = row;
    }
    QVector<bool> stays(places.size(), false);
    for (int row = ends.isEmpty() ? -1 : ends.constLast(); row != -1; row = before[row])
        stays[row] = true;
    return stays;
}

} // namespace morvek
