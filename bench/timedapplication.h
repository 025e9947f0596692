// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TIMEDAPPLICATION_H
#define MORVEK_TIMEDAPPLICATION_H

#include <QtCore/QCoreApplication>

/*! An application that can tell for how long an event has kept the others waiting. */
class TimedApplication : public QCoreApplication
{
    Q_OBJECT

public:
    using QCoreApplication::QCoreApplication;

    static TimedApplication *instance();
    bool notify(QObject *receiver, QEvent *event) override;

    void startTiming() { m_isTiming = true; }
    /*! Nanoseconds of the longest event since the last call. */
    qint64 takeLongest();

private:
    bool m_isTiming = false;
    int m_depth = 0;
    qint64 m_longest = 0;
};

#endif
