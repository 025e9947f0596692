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

int Pace::draw(DelayRange range)
{
    // A range of one value draws too, so that narrowing a range does not shift the choices that come after it.
    return real(static_cast<int>(m_random.bounded(range.from, range.to + 1)));
}

int Pace::real(int milliseconds) const
{
    return qRound(qMin(milliseconds / m_speed, double(std::numeric_limits<int>::max())));
}

} // namespace morvek
