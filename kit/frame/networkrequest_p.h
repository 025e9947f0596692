// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKREQUEST_P_H
#define MORVEK_NETWORKREQUEST_P_H

#include "networkrequest.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QPointer>
#include <QtCore/QTimer>

namespace morvek {

class NetworkRequest::Private
{
public:
    void startTimer();
    /*! Ends it before it has come true. */
    void endEarly(Failure why);
    void end();

    NetworkRequest *q;
    QString subject;
    int deadline;
    QElapsedTimer age;
    QTimer timer;
    bool hasEnded = false;
    bool isTold = false;
    Failure failure = NoFailure;
    int code = 0;
    QString text;
    QString sentence;
};

} // namespace morvek

#endif
