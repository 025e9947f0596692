// SPDX-License-Identifier: Apache-2.0
#include "lockholder.h"
#include "patience.h"
#include "storms.h"
#include "zopcontrolcommand.h"
#include "zopobject.h"

using namespace morvek;

namespace {

/*! Stopped processes hold the locks of objects and of folders. */
class LockStorm : public Storm
{
protected:
    void rage(int rounds) override
    {
        startDaemons();
        for (int i = 0; i < 2; ++i)
            startApplication()->send(QStringLiteral("busy 5 %1").arg(random(1000000)));
        for (int round = 0; round < rounds; ++round) {
            letPass(random(50));
            {
                std::vector<std::unique_ptr<LockHolder>> holders;
                for (int i = 1 + random(4); i > 0; --i)
                    hold(&holders);
                letPass(random(300));
                demand(daemonsAnswer(), QStringLiteral("the daemons do not answer while something is locked"));
                if (chance(3)) {
                    end(&m_daemons);
                    count("daemons ended");
                }
                expectLife();
            }
            if (!m_daemons)
                startDaemons();
            if (chance(2))
                expectAgreement();
        }
        expectAgreement();
    }

private:
    void hold(std::vector<std::unique_ptr<LockHolder>> *holders)
    {
        const QString entry = anyBelow(root() + QStringLiteral("/zop"), QDir::Files | QDir::Dirs);
        demand(!entry.isEmpty(), QStringLiteral("nothing is published"));
        // Some are locked already, or are being written.
        auto holder = std::make_unique<LockHolder>(entry);
        if (!holder->holds())
            return;
        holders->push_back(std::move(holder));
        count("locks held");
    }

    static bool daemonsAnswer()
    {
        ZopObject control(QStringLiteral("/zop/services/networking/control"), ZopObject::ReadWrite, true);
        ZopControlCommand command(&control);
        bool isAnswered = false;
        QObject::connect(&command, &ZopControlCommand::finished, [&isAnswered] { isAnswered = true; });
        command.setMessage(QStringLiteral("anything"));
        command.start();
        return waitUntil([&] { return isAnswered; }) && command.errorCode() != -1;
    }
};

} // namespace

std::unique_ptr<Storm> makeLockStorm()
{
    return std::make_unique<LockStorm>();
}
