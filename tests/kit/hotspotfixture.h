// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_HOTSPOTFIXTURE_H
#define MORVEK_TEST_HOTSPOTFIXTURE_H

#include "playedtethering.h"

#include <hotspotcontroller.h>
#include <hotspotform.h>
#include <networkrequest.h>
#include <networkservices.h>

#include <QtTest/QtTest>

/*! How \a request ends: "done", its failure as "TimedOut", or "open" when it does not. */
inline QString endOf(const morvek::NetworkRequest *request)
{
    if (!QTest::qWaitFor([request] { return !request->isRunning(); }, 10000))
        return QStringLiteral("open");
    return request->isDone()
        ? QStringLiteral("done")
        : QLatin1String(QMetaEnum::fromType<morvek::NetworkRequest::Failure>().valueToKey(request->failure()));
}

/*! The fields of \a controller that its state has, on one line. */
inline QString stateOf(const morvek::HotspotController &controller)
{
    const auto states = QMetaEnum::fromType<morvek::HotspotController::State>();
    return QLatin1String(states.valueToKey(controller.state()))
        + (controller.isOn() ? QStringLiteral(", on") : QString())
        + (controller.isBusy() ? QStringLiteral(", busy") : QString());
}

/*! The changes of the state of \a controller, as they are told. */
class StateLog
{
public:
    explicit StateLog(const morvek::HotspotController *controller)
        : m_connection(QObject::connect(controller, &morvek::HotspotController::stateChanged,
                                        [this, controller] { states += stateOf(*controller); }))
    {
    }
    ~StateLog() { QObject::disconnect(m_connection); }

    QStringList states;

private:
    Q_DISABLE_COPY(StateLog)
    QMetaObject::Connection m_connection;
};

/*! A controller, its services, and the daemon that they find. */
struct HotspotFixture
{
    /*! Waits until the profile is read, unless the test has failed. */
    bool waitForProfile() const
    {
        return QTest::qWaitFor([this] { return controller.isProfileKnown(); }, 10000);
    }

    PlayedTethering daemon;
    morvek::NetworkServices services;
    morvek::HotspotController controller {&services};
};

#endif
