// SPDX-License-Identifier: Apache-2.0
#include "patience.h"
#include "storms.h"

#include <csignal>

namespace {

/*! The daemons stand still for a while, or an application does. */
class StallStorm : public Storm
{
protected:
    void rage(int rounds) override
    {
        startDaemons();
        for (int i = 0; i < 3; ++i)
            startApplication()->send(QStringLiteral("busy 5 %1").arg(random(1000000)));
        for (int round = 0; round < rounds; ++round) {
            letPass(random(100));
            const bool daemons = !chance(3);
            const Process stalled = daemons ? m_daemons : m_applications[size_t(random(3))];
            stalled->signal(SIGSTOP);
            letPass(100 + random(300));
            for (const Process &application : m_applications)
                demand(application == stalled || application->answers(),
                       application->name() + QStringLiteral(" stands still with the daemons"));
            stalled->signal(SIGCONT);
            count(daemons ? "daemons stopped" : "applications stopped");
            expectLife();
        }
        expectAgreement();
    }
};

} // namespace

std::unique_ptr<Storm> makeStallStorm()
{
    return std::make_unique<StallStorm>();
}
