// SPDX-License-Identifier: Apache-2.0
#include "networkrequest.h"

#include "networkcontroller.h"
#include "networkrequest_p.h"

#include <algorithm>

namespace morvek {

NetworkRequest::NetworkRequest(NetworkController *controller, const QString &subject, int deadline)
    : QObject(controller),
      d(new Private)
{
    d->q = this;
    d->subject = subject;
    d->deadline = deadline;
    d->age.start();
    d->timer.setSingleShot(true);
    connect(&d->timer, &QTimer::timeout, this, [this] { d->endEarly(TimedOut); });
    d->startTimer();
}

NetworkRequest::~NetworkRequest() = default;

bool NetworkRequest::isRunning() const
{
    return !d->isTold;
}

bool NetworkRequest::isDone() const
{
    return d->isTold && d->failure == NoFailure;
}

NetworkRequest::Failure NetworkRequest::failure() const
{
    return d->isTold ? d->failure : NoFailure;
}

int NetworkRequest::code() const
{
    return d->isTold ? d->code : 0;
}

QString NetworkRequest::text() const
{
    return d->isTold ? d->text : QString();
}

QString NetworkRequest::sentence() const
{
    return d->isTold ? d->sentence : QString();
}

QString NetworkRequest::subject() const
{
    return d->subject;
}

int NetworkRequest::deadline() const
{
    return d->deadline;
}

void NetworkRequest::setDeadline(int milliseconds)
{
    if (milliseconds == d->deadline)
        return;
    d->deadline = milliseconds;
    d->startTimer();
    Q_EMIT deadlineChanged();
}

void NetworkRequest::cancel()
{
    d->endEarly(Cancelled);
}

QString NetworkRequest::giveUp(Failure)
{
    return QString();
}

void NetworkRequest::release() { }

void NetworkRequest::succeed()
{
    if (!d->hasEnded)
        d->end();
}

void NetworkRequest::fail(Failure failure, const QString &sentence, int code, const QString &text)
{
    if (d->hasEnded)
        return;
    d->failure = failure;
    d->sentence = sentence;
    d->code = code;
    d->text = text;
    d->end();
}

bool NetworkRequest::hasEnded() const
{
    return d->hasEnded;
}

void NetworkRequest::Private::startTimer()
{
    if (deadline < 0)
        timer.stop();
    else
        timer.start(int(std::max<qint64>(0, deadline - age.elapsed())));
}

void NetworkRequest::Private::endEarly(Failure why)
{
    if (hasEnded)
        return;
    QString told = q->giveUp(why);
    if (told.isEmpty()) {
        told = why == Cancelled ? tr("Cancelled.")
            : why == TimedOut   ? tr("No answer came in time.")
                                : tr("The service has stopped meanwhile.");
    }
    q->fail(why, told);
}

void NetworkRequest::Private::end()
{
    hasEnded = true;
    timer.stop();
    q->release();
    QMetaObject::invokeMethod(
        q,
        [this] {
            isTold = true;
            const QPointer<NetworkRequest> self(q);
            Q_EMIT q->ending();
            if (self)
                Q_EMIT self->finished();
        },
        Qt::QueuedConnection);
}

} // namespace morvek
