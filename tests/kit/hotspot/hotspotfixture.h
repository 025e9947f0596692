// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_HOTSPOTFIXTURE_H
#define MORVEK_TEST_HOTSPOTFIXTURE_H

#include "playedtethering.h"

#include <hotspotcontroller.h>
#include <hotspotform.h>
#include <networkrequest.h>
#include <networkservices.h>

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <algorithm>

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

/*! Waits until \a daemon has been requested \a request, which may be the beginning of it, for the \a nth time. */
inline bool waitForRequest(const PlayedTethering &daemon, const char *request, int nth = 1)
{
    return QTest::qWaitFor(
        [&] {
            const auto fits = [request](const QString &asked) { return asked.startsWith(QLatin1String(request)); };
            return std::count_if(daemon.requests.begin(), daemon.requests.end(), fits) >= nth;
        },
        10000);
}

/*! A root that the environment names. */
struct FreshRoot
{
    FreshRoot() { qputenv("ZOP_ROOT", QFile::encodeName(folder.path())); }

    QTemporaryDir folder;
};

/*! A controller, its services, and the daemon that they find, on a root of their own. */
struct HotspotFixture
{
    /*! Waits until the profile is read, and forgets the request for it. */
    bool waitForProfile()
    {
        const bool isKnown = QTest::qWaitFor([this] { return controller->isProfileKnown(); }, 10000);
        QCoreApplication::processEvents(); // the controller's own request ends
        daemon.requests.clear();
        return isKnown;
    }

    morvek::HotspotForm *form() const { return controller->form(); }

    FreshRoot root;
    PlayedTethering daemon;
    std::unique_ptr<morvek::NetworkServices> services {new morvek::NetworkServices};
    std::unique_ptr<morvek::HotspotController> controller {new morvek::HotspotController(services.get())};
};

#endif
