// SPDX-License-Identifier: Apache-2.0
#include "idle.h"

#include "report.h"
#include "restingapplication.h"

#include <QtCore/QDir>
#include <QtCore/QMap>
#include <QtCore/QThread>

namespace {

constexpr unsigned long SecondsToRest = 2;
constexpr unsigned long Seconds = 10;

/*! How often the threads of \a process have gone to sleep. */
double sleepsOf(const Process &process)
{
    const QDir threads(QStringLiteral("/proc/%1/task").arg(process.id()));
    const QByteArray field = "voluntary_ctxt_switches:";
    double sleeps = 0;
    for (const QString &thread : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile file(threads.filePath(thread + QStringLiteral("/status")));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("a resting process is gone");
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (line.startsWith(field))
                sleeps += line.mid(field.size()).trimmed().toDouble();
        }
    }
    return sleeps;
}

} // namespace

void measureIdle(Report *report)
{
    const Root root;
    const auto hostd = startHostd();
    std::vector<std::unique_ptr<Process>> applications;
    for (const QString &service : serviceNames())
        applications.push_back(startRestingApplication(service));

    QThread::sleep(SecondsToRest);
    const double daemonBefore = sleepsOf(*hostd);
    std::vector<double> before;
    for (const auto &application : applications)
        before.push_back(sleepsOf(*application));
    QThread::sleep(Seconds);
    const QString unit = QStringLiteral("wake-ups");
    for (size_t i = 0; i < applications.size(); ++i)
        report->bound(QStringLiteral("an idle application in 10 s, %1").arg(serviceNames().at(int(i))),
                      sleepsOf(*applications[i]) - before[i], unit, 0);
    // Between the ends of these seconds, one wake-up each.
    report->bound(QStringLiteral("an idle morvek-hostd in 10 s"), sleepsOf(*hostd) - daemonBefore, unit, Seconds + 1);
}
