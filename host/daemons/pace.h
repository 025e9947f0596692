// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_PACE_H
#define MORVEK_HOSTD_PACE_H

#include <QtCore/QPointer>
#include <QtCore/QRandomGenerator>
#include <QtCore/QTimer>

#include <functional>
#include <map>
#include <memory>

namespace morvek {

/*! How long something takes, in milliseconds of the scenario: any time from the one to the other. */
struct DelayRange
{
    int from = 0;
    int to = 0;
};

/*!
 * The one clock and the one source of chance: a factor on every delay, and a seed that repeats every choice.
 *
 * A held clock stands still. Then nothing takes any time: what would take some is done at once. What has its own time,
 * as an event of a timeline has, waits until somebody lets that time pass.
 */
class Pace
{
public:
    Pace(double speed, quint32 seed);

    /*! Has time stand still from now on. */
    void hold();
    bool isHeld() const { return m_held != nullptr; }
    /*! Does all that is due within \a milliseconds, in order of time; 0: what is due already. Only when held. */
    void pass(int milliseconds);

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
        if (isHeld())
            await(milliseconds, context, function);
        else
            QTimer::singleShot(real(milliseconds), Qt::PreciseTimer, context, function);
    }
    template<typename Function>
    void after(DelayRange range, QObject *context, Function function)
    {
        if (isHeld())
            await(0, context, function);
        else
            QTimer::singleShot(draw(range), Qt::PreciseTimer, context, function);
    }

private:
    struct Awaited
    {
        QPointer<QObject> context;
        std::function<void()> function;
    };

    struct Held
    {
        void pass(int milliseconds);

        qint64 now = 0;
        std::multimap<qint64, Awaited> awaited; // by their time; those of one time in the order in which they began
        QTimer settle;
    };

    void await(int milliseconds, QObject *context, std::function<void()> function) const;

    QRandomGenerator m_random;
    double m_speed;
    std::unique_ptr<Held> m_held;
};

} // namespace morvek

#endif
