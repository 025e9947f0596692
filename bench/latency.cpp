// SPDX-License-Identifier: Apache-2.0
#include "latency.h"

#include "asyncnetworkinterfaceoperation.h"
#include "bus.h"
#include "measurement.h"
#include "process.h"
#include "publisher.h"
#include "report.h"
#include "rounds.h"
#include "services.h"

#include <array>
#include <functional>
#include <iostream>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace morvek;

namespace {

constexpr double ToBareWakeUp = 4;
constexpr double ToDBus = 1.0 / 3;
constexpr int WarmUp = 200;
constexpr int Counted = 3000;

void must(bool done)
{
    if (!done)
        qFatal("a system call failed");
}

/*! A byte appended to a file, and a process that blocks in inotify until then. */
int runBareWakeUp(const QString &folder, Rounds *rounds)
{
    const int file = open(qPrintable(folder + QStringLiteral("/bell")), O_WRONLY | O_CREAT | O_APPEND, 0600);
    must(file != -1);
    const pid_t receiver = fork();
    if (receiver == 0) {
        const int events = inotify_init1(0);
        must(inotify_add_watch(events, qPrintable(folder), IN_MODIFY) != -1);
        rounds->setReady();
        std::array<char, 4096> buffer;
        do {
            must(read(events, buffer.data(), buffer.size()) > 0);
        } while (rounds->arrived());
        _exit(0);
    }
    rounds->awaitReady();
    while (rounds->next()) {
        must(write(file, "x", 1) == 1);
        rounds->awaitArrival();
    }
    waitpid(receiver, nullptr, 0);
    return 0;
}

/*! A request and a reply on a local socket, without anything around it. */
int runBareSocket(Rounds *rounds)
{
    std::array<int, 2> ends;
    must(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) == 0);
    std::array<char, 128> message = {};
    const pid_t daemon = fork();
    if (daemon == 0) {
        close(ends[0]);
        while (read(ends[1], message.data(), message.size()) > 0)
            must(write(ends[1], message.data(), message.size()) > 0);
        _exit(0);
    }
    close(ends[1]);
    while (rounds->next()) {
        must(write(ends[0], message.data(), message.size()) > 0);
        must(read(ends[0], message.data(), message.size()) > 0);
        rounds->arrived();
        rounds->awaitArrival();
    }
    close(ends[0]);
    waitpid(daemon, nullptr, 0);
    return 0;
}

int runObjectSender(Rounds *rounds)
{
    Publisher publisher(1);
    std::cout << "ready" << std::endl;
    rounds->awaitReady();
    while (rounds->next()) {
        publisher.update();
        rounds->awaitArrival();
    }
    return 0;
}

int runServiceReceiver(Rounds *rounds)
{
    NetworkInterfaceService *service = readyNetworkInterfaceService();
    QObject::connect(service, &NetworkInterfaceService::interfaceConfigurationChanged, service, [rounds] {
        if (!rounds->arrived())
            QCoreApplication::quit();
    });
    rounds->setReady();
    const int result = QCoreApplication::exec();
    deleteNetworkInterfaceService(&service);
    return result;
}

int runServiceRequester(Rounds *rounds)
{
    NetworkInterfaceService *service = readyNetworkInterfaceService();
    const NetworkInterface target = service->interfaces().constFirst();
    NetworkInterfaceConfig config = target.configuration();
    config.setType(NetworkInterfaceConfig::Manual);
    std::function<void()> request = [&] {
        if (!rounds->next()) {
            QCoreApplication::quit();
            return;
        }
        AsyncNetworkInterfaceOperation *operation = service->configure(target, config);
        QObject::connect(operation, &AsyncNetworkInterfaceOperation::failure,
                         [operation] { qFatal("a request failed: %s", qPrintable(operation->error().message())); });
        QObject::connect(operation, &AsyncNetworkInterfaceOperation::success, [&, operation] {
            operation->deleteLater();
            rounds->arrived();
            rounds->awaitArrival();
            request();
        });
    };
    request();
    const int result = QCoreApplication::exec();
    deleteNetworkInterfaceService(&service);
    return result;
}

Quantiles measureBareWakeUp()
{
    return measure(WarmUp, Counted, [](const QString &page, const QString &folder) {
        Process::role({QStringLiteral("bare-wake-up"), page, folder})->finish();
    });
}

Quantiles measureBareSocket()
{
    return measure(WarmUp, Counted, [](const QString &page, const QString &) {
        Process::role({QStringLiteral("bare-socket"), page})->finish();
    });
}

Quantiles measureUpdate()
{
    return measure(WarmUp, Counted, [](const QString &page, const QString &) {
        const auto sender = Process::role({QStringLiteral("object-sender"), page});
        sender->readLine();
        const auto receiver = Process::role({QStringLiteral("service-receiver"), page});
        sender->finish();
        receiver->finish();
    });
}

Quantiles measureRequest()
{
    return measure(WarmUp, Counted, [](const QString &page, const QString &) {
        const auto publisher = Process::role({QStringLiteral("publisher"), QStringLiteral("1")});
        publisher->readLine();
        Process::role({QStringLiteral("service-requester"), page})->finish();
    });
}

Quantiles measureBusSignal()
{
    return measure(WarmUp, Counted, [](const QString &page, const QString &) {
        QString address;
        const auto bus = startBus(&address);
        const auto sender = Process::role({QStringLiteral("bus-sender"), page, address});
        const auto receiver = Process::role({QStringLiteral("bus-receiver"), page, address});
        sender->finish();
        receiver->finish();
    });
}

Quantiles measureBusCall()
{
    return measure(WarmUp, Counted, [](const QString &page, const QString &) {
        QString address;
        const auto bus = startBus(&address);
        const auto daemon = Process::role({QStringLiteral("bus-daemon"), page, address});
        daemon->readLine();
        Process::role({QStringLiteral("bus-requester"), page, address})->finish();
    });
}

void compare(Report *report, const QString &name, const Quantiles &ours, const QString &yardstick,
             const Quantiles &theirs, double limit)
{
    report->compare(name + QStringLiteral(", median"), ours.median, QStringLiteral("us"), yardstick, theirs.median,
                    limit);
    report->compare(name + QStringLiteral(", 99th percentile"), ours.percentile99, QStringLiteral("us"), yardstick,
                    theirs.percentile99);
}

} // namespace

void measureLatency(Report *report)
{
    // Only on one core are the ratios steady enough to be judged: to wake an idle core takes longer than all else.
    for (const bool oneCore : {true, false}) {
        useOneCore(oneCore);
        const QString where = oneCore ? QStringLiteral(", one core") : QStringLiteral(", all cores");
        const QString update = QStringLiteral("update to slot") + where;
        const Quantiles updates = measureUpdate();
        compare(report, update, updates, QStringLiteral("bare inotify wake-up"), measureBareWakeUp(),
                oneCore ? ToBareWakeUp : 0);
        compare(report, update, updates, QStringLiteral("QtDBus signal"), measureBusSignal(), oneCore ? ToDBus : 0);
        const QString request = QStringLiteral("request to result") + where;
        const Quantiles requests = measureRequest();
        compare(report, request, requests, QStringLiteral("bare socket round trip"), measureBareSocket(), 0);
        compare(report, request, requests, QStringLiteral("QtDBus call"), measureBusCall(), 0);
    }
    useOneCore(false);
}

int runLatencyRole(const QStringList &arguments)
{
    const QString role = arguments.value(0);
    if (role == QLatin1String("publisher"))
        return runPublisher(arguments.mid(1));
    const QString page = arguments.value(1);
    const QString detail = arguments.value(2);
    if (page.isEmpty())
        return -1;
    Rounds rounds(page);
    if (role == QLatin1String("bare-wake-up"))
        return runBareWakeUp(detail, &rounds);
    if (role == QLatin1String("bare-socket"))
        return runBareSocket(&rounds);
    if (role == QLatin1String("object-sender"))
        return runObjectSender(&rounds);
    if (role == QLatin1String("service-receiver"))
        return runServiceReceiver(&rounds);
    if (role == QLatin1String("service-requester"))
        return runServiceRequester(&rounds);
    if (role == QLatin1String("bus-sender"))
        return runBusSender(detail, &rounds);
    if (role == QLatin1String("bus-receiver"))
        return runBusReceiver(detail, &rounds);
    if (role == QLatin1String("bus-daemon"))
        return runBusDaemon(detail);
    if (role == QLatin1String("bus-requester"))
        return runBusRequester(detail, &rounds);
    return -1;
}
