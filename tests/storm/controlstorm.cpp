// SPDX-License-Identifier: Apache-2.0
#include "patience.h"
#include "storms.h"

#include <csignal>

namespace {

const char *const Path = "/zop/storm/control";

/*! Clients ask without end, and the daemon dies. Each request ends once, with its own reply or an error. */
class ControlStorm : public Storm
{
protected:
    void rage(int rounds) override
    {
        serve();
        for (int i = 0; i < 6; ++i) {
            m_clients.push_back(start(StormProcess::Peer, QStringLiteral("client")));
            ask(m_clients.back());
        }
        for (int round = 0; round < rounds; ++round) {
            letPass(20 + random(150));
            if (chance(4)) {
                m_server->signal(SIGSTOP);
                letPass(random(80));
                expectClients();
                count("daemons stopped");
            }
            kill(&m_server);
            count("daemons killed");
            letPass(random(50));
            serve();
            if (chance(4)) {
                kill(&m_clients.front());
                m_clients.erase(m_clients.begin());
                m_clients.push_back(start(StormProcess::Peer, QStringLiteral("client")));
                ask(m_clients.back());
                count("clients killed");
            }
        }
        expectLife();
        for (const Process &client : m_clients)
            expectEnds(client);
    }

private:
    void serve()
    {
        m_server = start(StormProcess::Peer, QStringLiteral("daemon"));
        const QString answer = m_server->ask(QStringLiteral("serve ") + QLatin1String(Path), QString());
        demand(answer == QLatin1String("serving"), answer);
    }

    static void ask(const Process &client)
    {
        demand(!client->ask(QStringLiteral("ask %1 1").arg(QLatin1String(Path)), QStringLiteral("asking")).isNull(),
               client->name() + QStringLiteral(" cannot ask"));
    }

    void expectClients()
    {
        for (const Process &client : m_clients)
            demand(client->answers(), client->name() + QStringLiteral(" waits for its daemon"));
    }

    void expectEnds(const Process &client)
    {
        client->ask(QStringLiteral("still"), QStringLiteral("still"));
        QString asked;
        const bool ended = waitUntil([&] {
            asked = client->ask(QStringLiteral("asked"), QStringLiteral("asked "));
            return asked.section(QLatin1Char(' '), 2, 2) == QLatin1String("0");
        });
        demand(ended && asked.section(QLatin1Char(' '), 3, 3) == QLatin1String("0"),
               QStringLiteral("%1: requests started, ended, open, wrong: %2").arg(client->name(), asked));
        count("requests ended", asked.section(QLatin1Char(' '), 1, 1).toLongLong());
    }

    Process m_server;
    std::vector<Process> m_clients;
};

} // namespace

std::unique_ptr<Storm> makeControlStorm()
{
    return std::make_unique<ControlStorm>();
}
