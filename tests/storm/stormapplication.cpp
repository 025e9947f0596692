// SPDX-License-Identifier: Apache-2.0
#include "commandlines.h"
#include "descriptorhoard.h"
#include "networkuser.h"
#include "processusage.h"
#include "zopcontrolcommand.h"
#include "zopobject.h"

#include <QtCore/QCoreApplication>

/*
 * An application that uses all three services, in the middle of a storm:
 *
 *   ping TEXT              "pong TEXT", from the event loop
 *   busy INTERVAL SEED     "busy": one request each INTERVAL milliseconds
 *   rest                   "rest": no more requests, and what waits for the radio is ended
 *   open                   "open N STARTED ENDED DOUBLE": how many operations must still end, and how all went
 *   view                   "view TEXT": what the services tell
 *   hoard, release         takes all file descriptors and whatever gets free, and gives them back
 *   limit N                "limited": this process may have N file descriptors
 *   stats                  "stats HEAP DESCRIPTORS COMMANDS TOLD"
 *   measure N              "measured BYTES": what a finished command costs, from N of them
 */

using namespace morvek;

namespace {

/*! Runs commands to their end and tells what one of them costs. */
class CommandCost : public QObject
{
public:
    explicit CommandCost(int count)
        : m_object(QStringLiteral("/zop/services/wifi/control"), ZopObject::ReadWrite, false),
          m_left(count),
          m_count(count)
    {
        ask();
    }

private:
    void ask()
    {
        if (m_left == m_count - 16) // by now the connection has what it needs
            m_before = heapInUse();
        if (m_left-- == 0) {
            CommandLines::say(QStringLiteral("measured %1").arg((heapInUse() - m_before) / (m_count - 16)));
            deleteLater();
            return;
        }
        auto *command = new ZopControlCommand(&m_object, this);
        command->setMessage(QStringLiteral("an unknown request of a usual length"));
        connect(command, &ZopControlCommand::finished, this, &CommandCost::ask);
        command->start();
    }

    ZopObject m_object;
    int m_left;
    int m_count;
    qint64 m_before = 0;
};

class StormApplication
{
public:
    StormApplication()
        : m_lines([this](const QStringList &words) { run(words); })
    {
        QObject::connect(&m_hoarding, &QTimer::timeout, [this] { m_hoard.takeAll(); });
    }

private:
    void run(const QStringList &words)
    {
        const QString command = words.at(0);
        if (command == QLatin1String("ping"))
            CommandLines::say(QStringLiteral("pong ") + words.at(1));
        else if (command == QLatin1String("busy"))
            m_user.startRequests(words.at(1).toInt(), words.at(2).toUInt());
        else if (command == QLatin1String("rest"))
            m_user.stopRequests();
        else if (command == QLatin1String("open"))
            CommandLines::say(QStringLiteral("open ") + m_user.openText());
        else if (command == QLatin1String("view"))
            CommandLines::say(QStringLiteral("view ") + m_user.view());
        else if (command == QLatin1String("hoard"))
            hoard();
        else if (command == QLatin1String("release"))
            release();
        else if (command == QLatin1String("limit"))
            limit(words.at(1).toUInt());
        else if (command == QLatin1String("stats"))
            stats();
        else if (command == QLatin1String("measure"))
            new CommandCost(words.at(1).toInt());
        if (command == QLatin1String("busy") || command == QLatin1String("rest") || command == QLatin1String("release"))
            CommandLines::say(command);
    }

    void hoard()
    {
        CommandLines::say(QStringLiteral("hoarded %1").arg(m_hoard.takeAll()));
        m_hoarding.start(1);
    }

    void release()
    {
        m_hoarding.stop();
        m_hoard.giveBack();
    }

    static void limit(rlim_t count)
    {
        DescriptorHoard::limit(count);
        CommandLines::say(QStringLiteral("limited"));
    }

    void stats() const
    {
        CommandLines::say(QStringLiteral("stats %1 %2 %3 %4")
                              .arg(heapInUse())
                              .arg(openDescriptors(QCoreApplication::applicationPid()))
                              .arg(m_user.commands())
                              .arg(m_user.told()));
    }

    NetworkUser m_user;
    DescriptorHoard m_hoard;
    QTimer m_hoarding;
    CommandLines m_lines;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const StormApplication storm;
    return QCoreApplication::exec();
}
