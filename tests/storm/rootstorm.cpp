// SPDX-License-Identifier: Apache-2.0
#include "patience.h"
#include "storms.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <csignal>

#include <sys/stat.h>

namespace {

constexpr int AlreadyRunning = 5; // as morvek-hostd says it

/*! The root is removed, or exchanged for another one, and so is what stands below it, under daemons that go on. */
class RootStorm : public Storm
{
protected:
    void rage(int rounds) override
    {
        startDaemons();
        for (int i = 0; i < 2; ++i)
            startApplication();
        for (int round = 0; round < rounds; ++round) {
            keepBusy();
            letPass(random(100));
            switch (random(4)) {
            case 0:
                remove(root());
                count("roots removed");
                break;
            case 1:
                remove(root() + QStringLiteral("/zop"));
                count("all objects removed");
                break;
            case 2:
                exchangeRoot();
                break;
            default:
                for (int i = 1 + random(5); i > 0; --i)
                    spoil();
            }
            letPass(random(300));
            expectLife();
            expectAgreement();
        }
    }

private:
    static void remove(const QString &folder)
    {
        // What the daemons make anew meanwhile is in the way.
        demand(waitUntil([&folder] { return QDir(folder).removeRecursively(); }), folder + QStringLiteral(" stays"));
    }

    /*! Other daemons publish below the root's path, and those of the former root end. */
    void exchangeRoot()
    {
        Process former = m_daemons;
        former->signal(SIGSTOP);
        const QString away = scratch("away");
        demand(QDir().rename(root(), away), QStringLiteral("the root stays"));
        startDaemons();
        if (chance(2))
            remove(away);
        former->signal(SIGCONT);
        expectEnd(&former, AlreadyRunning);
        remove(away);
        count("roots exchanged");
    }

    /*! Something goes, or gets what does not belong there; locks and profiles are the daemons' own affair. */
    void spoil()
    {
        const QString file = anyBelow(root() + QStringLiteral("/zop"), QDir::Files | QDir::System);
        if (file.isEmpty())
            return;
        const QByteArray path = QFile::encodeName(file);
        if (chance(3)) {
            QFile::resize(file, random(200)); // no socket can be
        } else {
            QFile::remove(file);
            switch (random(3)) {
            case 0:
                mkdir(path.constData(), 0700);
                break;
            case 1:
                mkfifo(path.constData(), 0600);
                break;
            default:
                break;
            }
        }
        count("files spoilt");
    }
};

} // namespace

std::unique_ptr<Storm> makeRootStorm()
{
    return std::make_unique<RootStorm>();
}
