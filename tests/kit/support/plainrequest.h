// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_PLAINREQUEST_H
#define MORVEK_TEST_PLAINREQUEST_H

#include <networkcontroller.h>
#include <networkservices.h>

#include <QtCore/QStringList>

/*! A request that ends as its test wants, and tells what it is called for. */
class PlainRequest : public morvek::NetworkRequest
{
    Q_OBJECT

public:
    PlainRequest(morvek::NetworkController *controller, const QString &subject, int deadline, QStringList *called)
        : NetworkRequest(controller, subject, deadline),
          m_called(called)
    {
    }

    using NetworkRequest::fail;
    using NetworkRequest::hasEnded;
    using NetworkRequest::succeed;

    QString given; //!< the sentence of giveUp()

protected:
    void start() override { *m_called += QStringLiteral("start"); }
    QString giveUp(Failure why) override
    {
        *m_called += QStringLiteral("giveUp %1").arg(why);
        return given;
    }
    void release() override
    {
        *m_called += QStringLiteral("release");
        fail(Refused, QStringLiteral("What it has let go of refuses.")); // too late
    }

private:
    QStringList *m_called;
};

/*! Of another class. */
class OtherRequest : public PlainRequest
{
    Q_OBJECT

public:
    using PlainRequest::PlainRequest;
};

class PlainController : public morvek::NetworkController
{
    Q_OBJECT

public:
    using NetworkController::Daemon;
    using NetworkController::Networking;
    using NetworkController::Tethering;
    using NetworkController::Wifi;

    PlainController(Daemon daemon, morvek::NetworkServices *services)
        : NetworkController(daemon, nullptr)
    {
        setServices(services);
    }

    PlainRequest *ask(int deadline = -1, const QString &subject = QString())
    {
        return take(new PlainRequest(this, subject, deadline, &called));
    }
    PlainRequest *askFor(const QString &subject)
    {
        return takeForSubject(new PlainRequest(this, subject, -1, &called));
    }
    OtherRequest *askOther() { return take(new OtherRequest(this, QString(), -1, &called)); }

    using NetworkController::beginUninterruptible;
    using NetworkController::endUninterruptible;
    using NetworkController::service;

    QStringList called;

Q_SIGNALS:
    void heard();

protected:
    void onServiceReplaced() override { called += service() ? QStringLiteral("replaced") : QStringLiteral("none"); }
    void onAvailabilityChanged() override
    {
        called += QStringLiteral("availability %1").arg(availability());
        Q_EMIT heard();
    }
};

#endif
