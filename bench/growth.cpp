// SPDX-License-Identifier: Apache-2.0
#include "growth.h"

#include "counts.h"
#include "measurement.h"
#include "process.h"
#include "report.h"
#include "services.h"
#include "tracing.h"

#include <algorithm>
#include <iostream>

#include <malloc.h>

using namespace morvek;

namespace {

constexpr int CountedRequests = 20;
constexpr double ToEmpty = 6;
constexpr int Openings = 25;
constexpr int ManyRequests = 10000;

int runCountedRequests(int earlierRequests)
{
    NetworkInterfaceService *service = readyNetworkInterfaceService();
    const ManualRequests requests(service);
    for (int i = 0; i <= earlierRequests; ++i)
        await(requests.next());
    markCounted();
    for (int i = 0; i < CountedRequests; ++i)
        await(requests.next());
    markCounted();
    deleteNetworkInterfaceService(&service);
    return 0;
}

int runCommandMemory()
{
    NetworkInterfaceService *service = readyNetworkInterfaceService();
    const ManualRequests requests(service);
    for (int i = 0; i < 100; ++i)
        await(requests.next());
    const size_t before = mallinfo2().uordblks;
    for (int i = 0; i < ManyRequests; ++i)
        await(requests.next());
    const size_t after = mallinfo2().uordblks;
    std::cout << double(after - before) / ManyRequests << std::endl;
    deleteNetworkInterfaceService(&service);
    return 0;
}

std::unique_ptr<Process> startPublisher()
{
    auto publisher = Process::role({QStringLiteral("publisher"), QStringLiteral("1")});
    publisher->readLine();
    return publisher;
}

double instructionsOfRequest(int earlierRequests)
{
    const Root root;
    const auto publisher = startPublisher();
    const QStringList role {QStringLiteral("counted-requests"), QString::number(earlierRequests)};
    return countInstructions(role).value(0).instructions / CountedRequests;
}

/*! Microseconds; of many the median. */
double timeOfOpening(const QString &what)
{
    const Root root;
    Process::role({QStringLiteral("filling"), what})->finish();
    QVector<double> samples;
    for (int i = 0; i < Openings; ++i)
        samples.append(Process::role({QStringLiteral("opening")})->finish().toDouble());
    std::sort(samples.begin(), samples.end());
    return quantiles(samples).median;
}

} // namespace

void measureGrowth(Report *report)
{
    const QString instructions = QStringLiteral("instructions");
    double updateOfOne = 0;
    for (const int interfaces : {1, 10, 100, 1000}) {
        const double update = instructionsOfUpdate(interfaces);
        if (interfaces == 1)
            updateOfOne = update;
        report->compare(QStringLiteral("one update, %1 interfaces").arg(interfaces), update, instructions,
                        QStringLiteral("with one interface"), updateOfOne, 1.05);
    }
    double startOfOne = 0;
    for (const int interfaces : {1, 10, 100, 1000}) {
        const double start = instructionsOfStart(interfaces);
        if (interfaces == 1)
            startOfOne = start;
        report->compare(QStringLiteral("start-up, %1 interfaces").arg(interfaces), start, instructions,
                        QStringLiteral("with one interface"), startOfOne);
    }
    useOneCore(true);
    report->compare(QStringLiteral("opening a full object"), timeOfOpening(QStringLiteral("full")),
                    QStringLiteral("us"), QStringLiteral("an empty one"), timeOfOpening(QStringLiteral("empty")),
                    ToEmpty);
    useOneCore(false);
    report->compare(QStringLiteral("a request after %1").arg(ManyRequests), instructionsOfRequest(ManyRequests),
                    instructions, QStringLiteral("the first ones"), instructionsOfRequest(0), 1.05);
    {
        const Root root;
        const auto publisher = startPublisher();
        const double bytes = Process::role({QStringLiteral("command-memory")})->finish().toDouble();
        report->compare(QStringLiteral("a finished command keeps"), bytes, QStringLiteral("bytes"),
                        QStringLiteral("1 KiB"), 1024, 1);
    }
}

int runGrowthRole(const QStringList &arguments)
{
    const QString role = arguments.value(0);
    if (role == QLatin1String("counted-requests"))
        return runCountedRequests(arguments.value(1).toInt());
    if (role == QLatin1String("command-memory"))
        return runCommandMemory();
    return -1;
}
