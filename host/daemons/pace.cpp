// SPDX-License-Identifier: Apache-2.0
#include "pace.h"

#include <QtCore/QtMath>

#include <limits>
#include <utility>

namespace morvek {

Pace::Pace(double speed, quint32 seed)
    : m_random(seed),
      m_speed(speed)
{
}

void Pace::hold()
{
    m_held = std::make_unique<Held>();
    m_held->settle.setSingleShot(true);
    QObject::connect(&m_held->settle, &QTimer::timeout, &m_held->settle, [held = m_held.get()] { held->pass(0); });
}

void Pace::pass(int milliseconds)
{
    m_held->pass(milliseconds);
}

void Pace::Held::pass(int milliseconds)
{
    const qint64 end = now + milliseconds;
    while (!awaited.empty() && awaited.begin()->first <= end) {
        now = awaited.begin()->first;
        const Awaited next = std::move(awaited.begin()->second);
        awaited.erase(awaited.begin());
        if (next.context)
            next.function();
    }
    now = end;
}

void Pace::await(int milliseconds, QObject *context, std::function<void()> function) const
{
    m_held->awaited.insert({m_held->now + milliseconds, {context, std::move(function)}});
    if (milliseconds == 0)
        m_held->settle.start();
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
