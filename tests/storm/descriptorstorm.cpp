// SPDX-License-Identifier: Apache-2.0
#include "livelyworld.h"
#include "patience.h"
#include "processusage.h"
#include "storms.h"

#include <sys/resource.h>

namespace {

constexpr int Speed = 20;
constexpr int WorldLength = 8000; // all of it happens while somebody starves
constexpr int WorldStep = 200;

/*! Applications and daemons have no file descriptor left, while the world goes on. */
class DescriptorStorm : public Storm
{
public:
    QString prepare() override
    {
        // Without them it takes sound pointers for wild ones.
        return hasSanitizers() ? QStringLiteral("a sanitizer needs file descriptors itself") : QString();
    }

protected:
    void rage(int rounds) override
    {
        demand(writeLivelyWorld(scratch("lively.json"), {WorldLength}, 0, WorldStep, &generator()),
               QStringLiteral("no scenario"));
        startWorld();
        for (int i = 0; i < 2; ++i) {
            demand(startApplication()->ask(QStringLiteral("limit 200"), QStringLiteral("limited")).isEmpty(),
                   QStringLiteral("no limit"));
        }
        for (int round = 0; round < rounds; ++round) {
            starveApplications();
            starveDaemons();
        }
    }

private:
    void startWorld() { startDaemons({QStringLiteral("--scenario"), scratch("lively.json")}, Speed); }

    void starveApplications()
    {
        for (const Process &application : m_applications) {
            application->send(QStringLiteral("busy 5 %1").arg(random(1000000)));
            count("descriptors taken",
                  application->ask(QStringLiteral("hoard"), QStringLiteral("hoarded ")).toLongLong());
        }
        letPass(random(200));
        kill(&m_daemons);
        count("daemons killed");
        letPass(random(50));
        startWorld();
        grow();
        letPass(800 + random(300));
        expectLife();
        for (const Process &application : m_applications)
            demand(!application->ask(QStringLiteral("release"), QStringLiteral("release")).isNull(),
                   application->name() + QStringLiteral(" does not answer"));
        expectAgreement();
    }

    /*! Lets the file of an object reach its next generation. */
    void grow()
    {
        const Process peer = start(StormProcess::Peer, QStringLiteral("writer"));
        const QString done =
            peer->ask(QStringLiteral("flood /zop/services/tethering/status storm 8000"), QStringLiteral("flooded "));
        count("updates written", done.toLongLong());
    }

    void starveDaemons()
    {
        const pid_t daemons = pid_t(m_daemons->processId());
        rlimit usual = {};
        demand(prlimit(daemons, RLIMIT_NOFILE, nullptr, &usual) == 0, QStringLiteral("no limits"));
        rlimit starved = usual;
        starved.rlim_cur = rlim_t(openDescriptors(daemons));
        keepBusy();
        demand(prlimit(daemons, RLIMIT_NOFILE, &starved, nullptr) == 0, QStringLiteral("no limits"));
        count("daemons starved");
        startApplication(); // which nobody accepts
        letPass(300 + random(300));
        expectLife();
        demand(prlimit(daemons, RLIMIT_NOFILE, &usual, nullptr) == 0, QStringLiteral("no limits"));
        expectAgreement();
        kill(&m_applications.back());
        m_applications.pop_back();
    }
};

} // namespace

std::unique_ptr<Storm> makeDescriptorStorm()
{
    return std::make_unique<DescriptorStorm>();
}
