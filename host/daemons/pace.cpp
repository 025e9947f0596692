// SPDX-License-Identifier: Apache-2.0
#include "pace.h"

#include <QtCore/QtMath>

#include <limits>

namespace morvek {

Pace::Pace(double speed, quint32 seed)
    : m_random(seed),
      m_speed(speed)
{
}

int Pace::pick(int least, int most)
{
    // A range of one value draws too, so that narrowing a range does not shift the choices that come after it.
    return static_cast<int>(m_random.bounded(least, most + 1));
}

int Pace::draw(DelayRange range)
{
    return real(pick(range.from, range.to));
}

int Pace::real(int milliseconds) const
{
    return qRound(qMin(milliseconds / m_speed, double(std::numeric_limits<int>::max())));
}

} // namespace morvek
