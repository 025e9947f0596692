// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_PACE_H
#define MORVEK_HOSTD_PACE_H

#include <QtCore/QRandomGenerator>
#include <QtCore/QTimer>

namespace morvek {

/*! How long something takes, in milliseconds of the scenario: any time from the one to the other. */
struct DelayRange
{
    int from = 0;
    int to = 0;
};

/*! The one clock and the one source of chance: a factor on every delay, and a seed that repeats every choice. */
class Pace
{
public:
    Pace(double speed, quint32 seed);

    /*! Any number from \a least to \a most. */
    int pick(int least, int most);
    /*! A time of \a range in real milliseconds. */
    int draw(DelayRange range);
    /*! \a milliseconds of the scenario in real ones. */
    int real(int milliseconds) const;
    double speed() const { return m_speed; }

    /*! Calls \a function after \a milliseconds of the scenario, unless \a context is gone by then. */
    template<typename Function>
    void after(int milliseconds, QObject *context, Function function) const
    {
        QTimer::singleShot(real(milliseconds), Qt::PreciseTimer, context, function);
    }
    template<typename Function>
    void after(DelayRange range, QObject *context, Function function)
    {
        QTimer::singleShot(draw(range), Qt::PreciseTimer, context, function);
    }

private:
    QRandomGenerator m_random;
    double m_speed;
};

} // namespace morvek

#endif
