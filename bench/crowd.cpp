// SPDX-License-Identifier: Apache-2.0
#include "crowd.h"

#include "bus.h"
#include "measurement.h"
#include "process.h"
#include "report.h"

#include <vector>

namespace {

constexpr double ToDBus = 0.17;
constexpr double ToJournalLoops = 1.4;
constexpr int Applications = 100;
constexpr int WarmUp = 10;
constexpr int Counted = 100;

std::vector<std::unique_ptr<Process>> startReceivers(const QStringList &role)
{
    std::vector<std::unique_ptr<Process>> receivers;
    for (int i = 0; i < Applications; ++i)
        receivers.push_back(Process::role(role));
    return receivers;
}

void finish(const std::vector<std::unique_ptr<Process>> &processes)
{
    for (const auto &process : processes)
        process->finish();
}

double measureReaders(const QString &reader)
{
    const auto run = [reader](const QString &page, const QString &) {
        const auto sender = Process::role({QStringLiteral("object-sender"), page});
        sender->readLine();
        finish(startReceivers({reader, page}));
    };
    return measure(WarmUp, Counted, run, Applications).median;
}

double measureBus()
{
    const auto run = [](const QString &page, const QString &) {
        QString address;
        const auto bus = startBus(&address);
        const auto sender = Process::role({QStringLiteral("bus-sender"), page, address});
        finish(startReceivers({QStringLiteral("bus-receiver"), page, address}));
    };
    return measure(WarmUp, Counted, run, Applications).median;
}

double measureBare()
{
    const auto run = [](const QString &page, const QString &folder) {
        Process::role({QStringLiteral("bare-wake-up"), page, folder, QString::number(Applications)})->finish();
    };
    return measure(WarmUp, Counted, run, Applications).median;
}

} // namespace

void measureCrowd(Report *report)
{
    const QString slowest = QStringLiteral("update to the slowest of %1 applications").arg(Applications);
    const QString bare = QStringLiteral("%1 bare inotify wake-ups").arg(Applications);
    const QString microseconds = QStringLiteral("us");
    useOneCore(true);
    const double applications = measureReaders(QStringLiteral("service-receiver"));
    const double loops = measureReaders(QStringLiteral("journal-loop"));
    const double wakeUps = measureBare();
    const double bus = measureBus();
    useOneCore(false);
    report->compare(slowest, applications, microseconds, QStringLiteral("QtDBus signal"), bus, ToDBus);
    report->compare(slowest, applications, microseconds,
                    QStringLiteral("%1 loops that only read the journal").arg(Applications), loops, ToJournalLoops);
    report->compare(slowest, applications, microseconds, bare, wakeUps);
    report->compare(bare, wakeUps, microseconds, QStringLiteral("QtDBus signal"), bus);
}
