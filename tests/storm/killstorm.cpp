// SPDX-License-Identifier: Apache-2.0
#include "patience.h"
#include "storms.h"

namespace {

/*! Daemons and applications die at any moment, and come back. */
class KillStorm : public Storm
{
protected:
    void rage(int rounds) override
    {
        startDaemons();
        for (int i = 0; i < 3; ++i)
            startBusy();
        for (int round = 0; round < rounds; ++round) {
            letPass(5 + random(120));
            if (chance(3))
                replaceApplication();
            else
                replaceDaemons();
            if (chance(3))
                expectLife();
        }
        expectLife();
        expectAgreement();
    }

private:
    void startBusy()
    {
        const Process application = startApplication();
        application->send(QStringLiteral("busy 7 %1").arg(random(1000000)));
    }

    void replaceApplication()
    {
        const int index = random(int(m_applications.size()));
        kill(&m_applications[size_t(index)]);
        m_applications.erase(m_applications.begin() + index);
        startBusy();
        count("applications killed");
    }

    void replaceDaemons()
    {
        kill(&m_daemons);
        count("daemons killed");
        letPass(random(40));
        if (chance(4)) {
            // While they start.
            m_daemons = start(StormProcess::Daemons, QStringLiteral("morvek-hostd"), {}, 20);
            letPass(random(30));
            kill(&m_daemons);
            count("daemons killed");
        }
        startDaemons();
    }
};

} // namespace

std::unique_ptr<Storm> makeKillStorm()
{
    return std::make_unique<KillStorm>();
}
