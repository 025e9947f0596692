// SPDX-License-Identifier: Apache-2.0
#include "patience.h"
#include "storms.h"
#include "writers.h"

namespace {

constexpr int Updates = 20000;
constexpr int Requests = 2000;
constexpr qint64 Slack = 256 * 1024; // bytes, for what a process has got for good

/*! Objects are written as fast as can be. Loops go on, nothing is lost, and memory comes back. */
class FloodStorm : public WritingStorm
{
protected:
    void rage(int rounds) override
    {
        startDaemons();
        createObjects();
        for (int i = 0; i < 2; ++i)
            startReader();
        for (int i = 0; i < 2; ++i)
            startApplication();
        m_flooder = start(StormProcess::Peer, QStringLiteral("flooder"));
        expectAgreement();
        flood("networking/all/status_public", "priority", Updates); // warms up
        publishAnew();
        QMap<QString, qint64> before;
        for (const Process &application : m_applications)
            before.insert(application->name(), heapOf(application));
        for (int round = 0; round < rounds; ++round) {
            startWriter(0, 500);
            flood("networking/all/interfaces/eth0", "mtu", Updates);
            flood("networking/all/status_public", "priority", Updates);
            flood("tethering/status", "state", Updates);
            flood("wifi/status", "scan_results", Updates);
            flood("wifi/status", "last_event", Updates);
            flood("wifi/control", "msg", Requests);
            flood("tethering/control", "msg", Requests);
            killWriter();
        }
        expectAllSeen();
        publishAnew();
        for (const Process &application : m_applications) {
            const qint64 grown = heapOf(application) - before.value(application->name());
            demand(grown < Slack, QStringLiteral("%1 has kept %2 bytes").arg(application->name()).arg(grown));
        }
    }

private:
    /*! What was written over is the daemons' again. */
    void publishAnew()
    {
        kill(&m_daemons);
        startDaemons();
        expectAgreement();
    }

    void flood(const char *object, const char *attribute, int updates)
    {
        const int from = m_flooder->heard();
        m_flooder->send(QStringLiteral("flood /zop/services/%1 %2 %3")
                            .arg(QLatin1String(object), QLatin1String(attribute))
                            .arg(updates));
        QString done;
        do {
            for (const Process &application : m_applications)
                demand(application->answers(), application->name() + QStringLiteral(" drowns"));
            count("answers during floods");
        } while ((done = m_flooder->find(QStringLiteral("flooded "), from)).isNull() && m_flooder->trouble().isEmpty());
        demand(done.toInt() == updates, QStringLiteral("%1 updates of %2 were taken").arg(done, QLatin1String(object)));
        count("updates written", updates);
    }

    qint64 heapOf(const Process &process)
    {
        return process->ask(QStringLiteral("stats"), QStringLiteral("stats "))
            .section(QLatin1Char(' '), 0, 0)
            .toLongLong();
    }

    Process m_flooder;
};

} // namespace

std::unique_ptr<Storm> makeFloodStorm()
{
    return std::make_unique<FloodStorm>();
}
