// SPDX-License-Identifier: Apache-2.0
#include "patience.h"
#include "rawclient.h"
#include "storms.h"

#include <QtCore/QFile>

#include <csignal>
#include <cstring>

namespace {

const char *const Path = "/zop/storm/control";

constexpr int MiB = 1024 * 1024;
constexpr int MostConnections = 64;
constexpr qint64 MostHeld = 64 * MiB;
constexpr qint64 Slack = MiB;

/*!
 * Clients ask without end; the daemon dies, and other clients take from it whatever they can get. Each request ends
 * once, with its own reply or an error.
 */
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
            if (chance(2))
                flood();
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
        const qint64 before = heap();
        flood();
        expectLife();
        for (const Process &client : m_clients)
            expectEnds(client);
        demand(waitUntil([this, before] { return heap() < before + Slack; }),
               QStringLiteral("the daemon has kept %1 bytes").arg(heap() - before));
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

    qint64 heap()
    {
        return m_server->ask(QStringLiteral("stats"), QStringLiteral("stats "))
            .section(QLatin1Char(' '), 0, 0)
            .toLongLong();
    }

    /*! Takes up connections, time or memory of the daemon, while the others are answered. */
    void flood()
    {
        const QByteArray folder = QFile::encodeName(root() + QLatin1String(Path)).chopped(int(std::strlen("/control")));
        const int kind = random(3);
        const int clients = 1 + random(30);
        const QByteArray announced("\x01\0\0\0", 4);
        const QByteArray bytes[] = {
            QByteArray(),                                                    // connections only
            QByteArray("\0\0\0\x04\0\0\0\0", 8).repeated(MiB / 8 / clients), // the smallest requests
            announced + QByteArray((1 + random(15)) * MiB, 'x'),             // unfinished ones
        };
        RawClients greedy(kind == 0 ? 200 : clients, folder, bytes[kind]);
        for (bool done = false; !done;) {
            for (int i = 0; i < 50 && !done; ++i)
                done = greedy.sendMore();
            expectClients();
            demand(m_server->answers(), QStringLiteral("the daemon drowns"));
            demand(heap() < 2 * MostHeld + Slack, QStringLiteral("the daemon holds %1 bytes").arg(heap()));
        }
        demand(waitUntil([&greedy] { return greedy.open() <= MostConnections; }),
               QStringLiteral("one client has %1 connections").arg(greedy.open()));
        count("floods");
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
