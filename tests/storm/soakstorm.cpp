// SPDX-License-Identifier: Apache-2.0
#include "livelyworld.h"
#include "patience.h"
#include "processusage.h"
#include "storms.h"

#include <QtCore/QElapsedTimer>

namespace {

constexpr int Speed = 60;
constexpr int MinuteOfWorld = 60000;
constexpr int WorldStep = 1000;
constexpr int WarmUp = 3; // minutes of the world
constexpr int Pause = 4;  // in which is measured

/*! As many minutes of a lively world as there are rounds, and nothing may grow but finished commands. */
class SoakStorm : public Storm
{
protected:
    void rage(int rounds) override
    {
        demand(writeLivelyWorld(scratch("lively.json"), {WarmUp * MinuteOfWorld, rounds * MinuteOfWorld},
                                Pause * MinuteOfWorld, WorldStep, &generator()),
               QStringLiteral("no scenario"));
        startDaemons({QStringLiteral("--scenario"), scratch("lively.json")}, Speed);
        for (int i = 0; i < 3; ++i)
            startApplication();
        live(WarmUp);
        const qint64 cost = measure();
        std::vector<Usage> before;
        for (const Process &application : m_applications)
            before.push_back(usageOf(application));
        const int daemonsBefore = openDescriptors(m_daemons->processId());
        const qint64 memoryBefore = memoryOf(m_daemons);
        live(Pause + rounds);
        for (size_t i = 0; i < m_applications.size(); ++i)
            compare(before[i], usageOf(m_applications[i]), cost);
        const int daemonsAfter = openDescriptors(m_daemons->processId());
        demand(daemonsAfter <= daemonsBefore,
               QStringLiteral("morvek-hostd had %1 descriptors and has %2").arg(daemonsBefore).arg(daemonsAfter));
        const qint64 grown = memoryOf(m_daemons) - memoryBefore;
        demand(grown < 512 * 1024 || hasSanitizers(), QStringLiteral("morvek-hostd has grown by %1 bytes").arg(grown));
        count("minutes of the world", rounds);
        count("bytes more of morvek-hostd", grown);
    }

private:
    struct Usage
    {
        qint64 heap;
        qint64 descriptors;
        qint64 commands;
        qint64 told;
    };

    void live(int minutes)
    {
        for (const Process &application : m_applications)
            application->send(QStringLiteral("busy 15 %1").arg(random(1000000)));
        QElapsedTimer time;
        time.start();
        while (time.elapsed() < qint64(minutes) * MinuteOfWorld / Speed) {
            letPass(200);
            expectLife();
        }
        expectRest();
    }

    void expectRest()
    {
        for (const Process &application : m_applications) {
            demand(waitUntil([&] {
                       application->ask(QStringLiteral("rest"), QStringLiteral("rest"));
                       letPass(100);
                       return application->ask(QStringLiteral("open"), QStringLiteral("open "))
                           .startsWith(QLatin1String("0 "));
                   }),
                   application->name() + QStringLiteral(" waits for operations that do not end"));
        }
    }

    qint64 measure()
    {
        const QString bytes = m_applications.front()->ask(QStringLiteral("measure 500"), QStringLiteral("measured "));
        demand(bytes.toLongLong() > 0, QStringLiteral("a command costs \"%1\" bytes").arg(bytes));
        count("bytes of a finished command", bytes.toLongLong());
        return bytes.toLongLong();
    }

    /*! Whether it knows every interface, as each takes it descriptors: one comes and goes. */
    static bool knowsWholeWorld(const Process &application)
    {
        return application->ask(QStringLiteral("view"), QStringLiteral("view ")).contains(QLatin1String("cell0"));
    }

    /*! With every interface there. */
    Usage usageOf(const Process &application)
    {
        QStringList numbers;
        const bool isWhole = waitUntil([&] {
            if (!knowsWholeWorld(application))
                return false;
            numbers = application->ask(QStringLiteral("stats"), QStringLiteral("stats ")).split(QLatin1Char(' '));
            return knowsWholeWorld(application);
        });
        demand(isWhole, application->name() + QStringLiteral(" does not know every interface"));
        return {numbers.value(0).toLongLong(), numbers.value(1).toLongLong(), numbers.value(2).toLongLong(),
                numbers.value(3).toLongLong()};
    }

    qint64 memoryOf(const Process &process) { return anonymousMemory(process->processId()); }

    void compare(const Usage &before, const Usage &after, qint64 cost)
    {
        const qint64 commands = after.commands - before.commands;
        const qint64 grown = after.heap - before.heap;
        count("commands", commands);
        count("signals of services", after.told - before.told);
        count("bytes more of applications", grown);
        count("bytes of these for commands", commands * cost);
        demand(after.descriptors <= before.descriptors,
               QStringLiteral("an application had %1 descriptors and has %2")
                   .arg(before.descriptors)
                   .arg(after.descriptors));
        demand(grown < commands * cost * 11 / 10 + 32 * 1024,
               QStringLiteral("an application has grown by %1 bytes with %2 commands of %3 bytes and %4 signals")
                   .arg(grown)
                   .arg(commands)
                   .arg(cost)
                   .arg(after.told - before.told));
    }
};

} // namespace

std::unique_ptr<Storm> makeSoakStorm()
{
    return std::make_unique<SoakStorm>();
}
