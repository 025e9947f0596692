// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_WORLDFIXTURE_H
#define MORVEK_TEST_WORLDFIXTURE_H

#include "networkingrequest.h"
#include "scenarioreader.h"
#include "simulatedhotspot.h"
#include "simulatednetwork.h"
#include "simulatedradio.h"
#include "world.h"

#include <QtTest/QtTest>

/*! What drives a world, without daemons, and all that the world has told. */
struct WorldFixture
{
    /*! Single quotes in \a text, a scenario, stand for double ones. */
    explicit WorldFixture(const char *text)
    {
        QString error;
        if (!morvek::readScenario(QByteArray(text).replace('\'', '"'), &scenario, &error))
            qFatal("%s", qPrintable(error));
        network = std::make_unique<morvek::SimulatedNetwork>(scenario, &world, &pace);
        if (!scenario.wifi.interface.isEmpty())
            radio = std::make_unique<morvek::SimulatedRadio>(scenario, &world, network.get(), &pace);
        if (!scenario.hotspot.profile.isEmpty())
            hotspot = std::make_unique<morvek::SimulatedHotspot>(scenario, &world, &pace);
        listen();
    }

    QString attribute(const char *interface, const char *name) const
    {
        return world.interfaceAttributes(QLatin1String(interface)).value(QLatin1String(name)).toString();
    }

    QString status(const char *name) const
    {
        return world.status(morvek::Service::Networking).value(QLatin1String(name)).toString();
    }
    QString wifi(const char *name) const
    {
        return world.status(morvek::Service::Wifi).value(QLatin1String(name)).toString();
    }

    /*! The refusal's code, or 0 when the request is being carried out. */
    int request(const char *message, const char *dat)
    {
        const auto request = morvek::NetworkingRequest::read(makeUpdate(message, dat));
        int code = request.refusal.code;
        if (!request.refusal)
            network->carryOut(request, [&code](const morvek::Answer &answer) { code = answer.refusal.code; });
        return code;
    }

    /*! The same for the radio. */
    int wifiRequest(const char *message, const char *dat = "")
    {
        const auto request = morvek::WifiRequest::read(makeUpdate(message, dat));
        int code = request.refusal.code;
        if (!request.refusal)
            radio->carryOut(request, [&code](const morvek::Answer &answer) { code = answer.refusal.code; });
        return code;
    }

    /*! Lets those things happen that are due. */
    void turn()
    {
        bool done = false;
        pace.after(0, &world, [&done] { done = true; });
        while (!done)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    /*! All that was told until everything that is under way is done: each step takes a turn of the event loop. */
    QStringList settle()
    {
        for (int i = 0; i < 20; ++i)
            turn();
        return take();
    }

    QStringList take()
    {
        QStringList result;
        result.swap(told);
        return result;
    }

    morvek::Scenario scenario;
    morvek::World world;
    morvek::Pace pace {10000, 1}; // every delay becomes 0, in the order in which they began
    std::unique_ptr<morvek::SimulatedNetwork> network;
    std::unique_ptr<morvek::SimulatedRadio> radio;
    std::unique_ptr<morvek::SimulatedHotspot> hotspot;
    QStringList told;

private:
    static morvek::ZopChangeset makeUpdate(const char *message, const char *dat)
    {
        morvek::ZopChangeset changes;
        changes.assignments.insert(QStringLiteral("msg"), QString::fromUtf8(message));
        changes.assignments.insert(QStringLiteral("dat"),
                                   QString::fromUtf8(dat).replace(QLatin1Char('\''), QLatin1Char('"')));
        return changes;
    }

    static QString toString(const morvek::ZopChangeset &changes)
    {
        QStringList words;
        for (auto it = changes.assignments.begin(); it != changes.assignments.end(); ++it)
            words += it.key() + QLatin1Char('=') + it.value().toString();
        for (const QString &name : changes.removals)
            words += QLatin1Char('-') + name;
        return words.join(QLatin1Char(' '));
    }

    void listen()
    {
        using morvek::Service;
        using morvek::World;
        using morvek::ZopChangeset;
        QObject::connect(&world, &World::interfaceAdded,
                         [this](const QString &name) { told += name + QStringLiteral(" added"); });
        QObject::connect(&world, &World::interfaceRemoved,
                         [this](const QString &name) { told += name + QStringLiteral(" removed"); });
        QObject::connect(&world, &World::interfaceChanged, [this](const QString &name, const ZopChangeset &changes) {
            told += name + QStringLiteral(": ") + toString(changes);
        });
        QObject::connect(&world, &World::statusChanged, [this](Service service, const ZopChangeset &changes) {
            const QMap<Service, QString> names {{Service::Networking, QStringLiteral("status: ")},
                                                {Service::Wifi, QStringLiteral("wifi: ")},
                                                {Service::Tethering, QStringLiteral("tethering: ")}};
            told += names[service] + toString(changes);
        });
    }
};

#endif
