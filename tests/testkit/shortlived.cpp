// SPDX-License-Identifier: Apache-2.0
#include "testunit.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QProcess>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

using namespace morvek;

/*!
 * A test that does not end as it should: in the way that its argument says, when it has told its unit's root, the
 * process that serves it, and a process of its own that outlives it.
 */
int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QString way = QCoreApplication::arguments().value(1);
    TestUnit unit;
    if (!unit.start())
        return 1;
    qint64 child = 0;
    if (way == QLatin1String("child"))
        QProcess::startDetached(QStringLiteral("sleep"), {QStringLiteral("600")}, QString(), &child);
    if (way == QLatin1String("deaf")) {
        // As one that is interrupted in a debugger: its unit goes on. It has heard what was before the first answer.
        ::signal(SIGINT, SIG_IGN);
        ::kill(0, SIGINT);
        if (!unit.pass(1) || !unit.pass(1))
            return 1;
    }
    std::printf("%s %lld %lld\n", qPrintable(unit.root()), unit.processId(), child);
    std::fflush(stdout);
    if (way == QLatin1String("abort"))
        std::abort();
    if (way == QLatin1String("exit"))
        _exit(0);
    if (way == QLatin1String("dead"))
        unit.kill();
    if (way == QLatin1String("stopped"))
        ::kill(pid_t(unit.processId()), SIGSTOP);
    if (way == QLatin1String("group"))
        ::kill(0, SIGKILL);
    if (way == QLatin1String("interrupt"))
        ::kill(0, SIGINT);
    if (way != QLatin1String("wait"))
        raise(SIGKILL);
    return QCoreApplication::exec();
}
