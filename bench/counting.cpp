// SPDX-License-Identifier: Apache-2.0
#include "counting.h"

#include "asyncnetworkinterfaceoperation.h"
#include "measurement.h"
#include "networkinterfaceservice.h"
#include "networklibraryexports.h"
#include "process.h"
#include "report.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QRegularExpression>

#include <iostream>

#include <malloc.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

using namespace morvek;

namespace {

constexpr int CountedUpdates = 20;
constexpr int ManyRequests = 10000;

NetworkInterfaceService *readyService(int interfaces)
{
    NetworkInterfaceService *service = newNetworkInterfaceService();
    if (service->interfaces().size() != interfaces)
        qFatal("the service knows %d interfaces", int(service->interfaces().size()));
    return service;
}

void awaitEvent(const bool &happened)
{
    while (!happened)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

/*! Has the publisher, which reads this process's output, update once, and waits until the slot is called. */
void receiveUpdate(NetworkInterfaceService *service, int process)
{
    bool arrived = false;
    const auto connection = QObject::connect(service, &NetworkInterfaceService::interfaceConfigurationChanged, service,
                                             [&arrived] { arrived = true; });
    if (write(process, "u", 1) != 1)
        qFatal("the publisher is gone");
    awaitEvent(arrived);
    QObject::disconnect(connection);
}

void request(NetworkInterfaceService *service)
{
    const NetworkInterface target = service->interfaces().constFirst();
    NetworkInterfaceConfig config = target.configuration();
    config.setType(NetworkInterfaceConfig::Manual);
    bool ended = false;
    AsyncNetworkInterfaceOperation *operation = service->configure(target, config);
    QObject::connect(operation, &AsyncNetworkInterfaceOperation::success, service, [&ended] { ended = true; });
    awaitEvent(ended);
    delete operation;
}

/*! Runs one action under callgrind, which counts between the two marks only. */
int runCounted(const QString &what, int interfaces, int earlierRequests)
{
    if (what == QLatin1String("start-up")) {
        CALLGRIND_START_INSTRUMENTATION;
        NetworkInterfaceService *service = newNetworkInterfaceService();
        CALLGRIND_STOP_INSTRUMENTATION;
        const bool isComplete = service->interfaces().size() == interfaces;
        deleteNetworkInterfaceService(&service);
        return isComplete ? 0 : 1;
    }
    NetworkInterfaceService *service = readyService(interfaces);
    if (what == QLatin1String("update")) {
        receiveUpdate(service, STDOUT_FILENO);
        CALLGRIND_START_INSTRUMENTATION;
        for (int i = 0; i < CountedUpdates; ++i)
            receiveUpdate(service, STDOUT_FILENO);
        CALLGRIND_STOP_INSTRUMENTATION;
    } else {
        for (int i = 0; i <= earlierRequests; ++i)
            request(service);
        CALLGRIND_START_INSTRUMENTATION;
        for (int i = 0; i < CountedUpdates; ++i)
            request(service);
        CALLGRIND_STOP_INSTRUMENTATION;
    }
    deleteNetworkInterfaceService(&service);
    return 0;
}

int runCommandMemory()
{
    NetworkInterfaceService *service = readyService(1);
    for (int i = 0; i < 100; ++i)
        request(service);
    const size_t before = mallinfo2().uordblks;
    for (int i = 0; i < ManyRequests; ++i)
        request(service);
    const size_t after = mallinfo2().uordblks;
    std::cout << double(after - before) / ManyRequests << std::endl;
    deleteNetworkInterfaceService(&service);
    return 0;
}

/*! Prints the kibibytes of this process that no other one shares, with or without a service. */
int runResident(int interfaces)
{
    NetworkInterfaceService *service = interfaces ? readyService(interfaces) : nullptr;
    QCoreApplication::processEvents();
    QFile file(QStringLiteral("/proc/self/smaps_rollup"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read the memory of this process");
    const QString text = QString::fromLatin1(file.readAll());
    const QRegularExpression field(QStringLiteral("^(Rss|Private_Dirty): +(\\d+) kB"),
                                   QRegularExpression::MultilineOption);
    QRegularExpressionMatchIterator it = field.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        std::cout << qPrintable(match.captured(1)) << ' ' << qPrintable(match.captured(2)) << std::endl;
    }
    deleteNetworkInterfaceService(&service);
    return 0;
}

std::unique_ptr<Process> startPublisher(int interfaces)
{
    auto publisher = Process::role({QStringLiteral("publisher"), QString::number(interfaces)});
    publisher->readLine();
    return publisher;
}

/*! The instructions of one action, \a times times repeated, with that many interfaces and requests before it. */
double countAction(const QString &what, int interfaces, int times, int earlierRequests = 0)
{
    const Root root;
    const auto publisher = startPublisher(interfaces);
    const QStringList role {QStringLiteral("counted"), what, QString::number(interfaces),
                            QString::number(earlierRequests)};
    const double instructions = countInstructions(role, [&](Process *counted) {
        if (what != QLatin1String("update"))
            return;
        for (int i = 0; i < 1 + CountedUpdates; ++i) {
            counted->awaitOutput();
            publisher->writeLine("u");
        }
    });
    return instructions / times;
}

double residentKibibytes(int interfaces, const QByteArray &field)
{
    const Root root;
    const auto publisher = startPublisher(1);
    const QByteArray output = Process::role({QStringLiteral("resident"), QString::number(interfaces)})->finish();
    for (const QByteArray &line : output.split('\n')) {
        if (line.startsWith(field + ' '))
            return line.mid(field.size() + 1).toDouble();
    }
    qFatal("no figure for the memory");
}

} // namespace

void measureGrowth(Report *report)
{
    const QString instructions = QStringLiteral("instructions");
    double updateOfOne = 0;
    for (const int interfaces : {1, 10, 100, 1000}) {
        const double update = countAction(QStringLiteral("update"), interfaces, CountedUpdates);
        if (interfaces == 1)
            updateOfOne = update;
        report->compare(QStringLiteral("one update, %1 interfaces").arg(interfaces), update, instructions,
                        QStringLiteral("with one interface"), updateOfOne, 1.05);
    }
    double startOfOne = 0;
    for (const int interfaces : {1, 10, 100, 1000}) {
        const double start = countAction(QStringLiteral("start-up"), interfaces, 1);
        if (interfaces == 1)
            startOfOne = start;
        report->compare(QStringLiteral("start-up, %1 interfaces").arg(interfaces), start, instructions,
                        QStringLiteral("with one interface"), startOfOne);
    }
    report->compare(QStringLiteral("a request after %1").arg(ManyRequests),
                    countAction(QStringLiteral("request"), 1, CountedUpdates, ManyRequests), instructions,
                    QStringLiteral("the first ones"), countAction(QStringLiteral("request"), 1, CountedUpdates), 1.05);
    {
        const Root root;
        const auto publisher = startPublisher(1);
        const double bytes = Process::role({QStringLiteral("command-memory")})->finish().toDouble();
        report->compare(QStringLiteral("a finished command keeps"), bytes, QStringLiteral("bytes"),
                        QStringLiteral("1 KiB"), 1024, 1);
    }
    for (const char *field : {"Rss", "Private_Dirty"}) {
        report->compare(QStringLiteral("an application with the service, %1").arg(QLatin1String(field)),
                        residentKibibytes(1, field), QStringLiteral("KiB"), QStringLiteral("the same without it"),
                        residentKibibytes(0, field));
    }
}

int runGrowthRole(const QStringList &arguments)
{
    const QString role = arguments.value(0);
    if (role == QLatin1String("counted"))
        return runCounted(arguments.value(1), arguments.value(2).toInt(), arguments.value(3).toInt());
    if (role == QLatin1String("command-memory"))
        return runCommandMemory();
    if (role == QLatin1String("resident"))
        return runResident(arguments.value(1).toInt());
    return -1;
}
